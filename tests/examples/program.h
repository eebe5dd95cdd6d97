// Runs example programs as their users do.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

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

// A folder of this run of the test, which is gone after the process.
inline std::string TestFolder() {
  struct Folders {
    const std::filesystem::path path =
        std::filesystem::path(testing::TempDir()) / ("ky_examples_" + std::to_string(getpid()));
    ~Folders() {
      std::error_code error;
      std::filesystem::remove_all(path, error);
    }
  };
  static const Folders folders;
  const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
  const auto folder = folders.path / (std::string(test->test_suite_name()) + "_" + test->name());
  std::filesystem::create_directories(folder);
  return folder.string();
}

}  // namespace ky::test
