// Runs example programs as their users do.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

namespace ky::test {

struct ProgramOutcome {
  int exitCode;
  std::string text;  // of both streams
};

inline ProgramOutcome RunProgram(const std::string& command) {
  std::FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
  ProgramOutcome outcome;
  std::array<char, 4096> chunk;
  while (const std::size_t size = std::fread(chunk.data(), 1, chunk.size(), pipe))
    outcome.text.append(chunk.data(), size);
  const int status = pclose(pipe);
  outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return outcome;
}

// A folder of the test's own.
inline std::string TestFolder() {
  const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
  const std::string folder =
      testing::TempDir() + "ky_" + test->test_suite_name() + "_" + test->name();
  std::filesystem::create_directories(folder);
  return folder;
}

}  // namespace ky::test
