// Prints one line for every call of the registry: a hash of all that it gives on fixed arguments,
// how many of these succeed, and its declaration. Two builds that print the same lines compute the
// same.
//
//     ky_hash                     prints them, of the path that KyGetPath() names
//     ky_hash --compare=FILE      compares them with those in a file, and fails when one differs or
//                                 is in one of them only
//     ky_hash --only=TEXT         leaves calls out whose declarations do not hold the text
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <set>
#include <string>

#include "tests/registry/arguments.h"

namespace {

using namespace ky::test;  // NOLINT

class Hash {
 public:
  void Add(const Bytes& bytes) {
    for (const unsigned char byte : bytes) Add(byte);
    Add(bytes.size());
  }
  void Add(std::uint64_t value) { hash_ = (hash_ ^ value) * 1099511628211u; }
  std::uint64_t value() const { return hash_ ^ hash_ >> 32; }

 private:
  std::uint64_t hash_ = 14695981039346656037u;
};

std::string LineOf(const Call& call) {
  Hash hash;
  int succeeded = 0;
  constexpr int kTrials = 32;
  for (int trial = 0; trial < kTrials; ++trial) {
    SeededDraw draw(static_cast<unsigned>(trial));
    // Many awkward sizes, and one that is larger.
    const bool large = trial == 30;
    Plan plan = DrawPlan(call, draw,
                         large            ? 1100
                         : trial % 2 == 0 ? 150
                                          : 40,
                         large            ? 400
                         : trial % 3 == 0 ? 40
                                          : 15);
    plan.hostile = trial % 4 == 3;
    const Arguments arguments(call, draw, plan);
    const Outcome outcome = arguments.Run();
    succeeded += outcome.status == KY_OK;
    hash.Add(static_cast<std::uint64_t>(outcome.status));
    hash.Add(outcome.result);
    for (const std::string& name : outcome.trace) hash.Add(Bytes(name.begin(), name.end()));
    for (const Bytes& bytes : arguments.State()) hash.Add(bytes);
  }
  char line[64];
  std::snprintf(line, sizeof line, "%016llx %2d of %d ",
                static_cast<unsigned long long>(hash.value()), succeeded, kTrials);
  return line + call.Declaration();
}

// What FFTW or Cairo computes is theirs, and may differ from one of their versions to the next.
bool IsOurs(const Call& call) {
  const std::string declaration = call.Declaration();
  return declaration.find("DFT") == std::string::npos &&
         declaration.find("cairo_t") == std::string::npos;
}

}  // namespace

int main(int argc, char** argv) {
  std::string file, only;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument.starts_with("--compare=")) {
      file = argument.substr(10);
    } else if (argument.starts_with("--only=")) {
      only = argument.substr(7);
    } else {
      std::fprintf(stderr, "ky_hash: unknown argument '%s'\n", argv[i]);
      return 2;
    }
  }
  std::set<std::string> expected;
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);)
    if (!line.starts_with("#") && line.find(only) != std::string::npos) expected.insert(line);
  if (!file.empty() && expected.empty()) {
    std::fprintf(stderr, "ky_hash: %s has no lines\n", file.c_str());
    return 2;
  }
  if (file.empty())
    std::printf(
        "# What every call gives on the arguments of tests/hash/hash.cpp, on every path of every\n"
        "# processor. After a change of results that is meant to be: ky_hash >tests/hashes.txt\n");
  int computed = 0, differing = 0;
  for (const Call* const call : Callable()) {
    if (!IsOurs(*call) || call->Declaration().find(only) == std::string::npos) continue;
    const std::string line = LineOf(*call);
    ++computed;
    const bool isExpected = expected.erase(line) != 0;
    if (file.empty() || !isExpected) std::printf("%s\n", line.c_str());
    std::fflush(stdout);
    differing += !isExpected;
  }
  if (file.empty()) return 0;
#ifndef KY_HAS_FREQUENCY
  std::erase_if(expected,
                [](const std::string& line) { return line.find("Complex64") != line.npos; });
#endif
  for (const std::string& line : expected) std::printf("missing: %s\n", line.c_str());
  std::printf("%s path: %d calls, %d hashes differ from %s\n", KyGetPath(), computed, differing,
              file.c_str());
  return differing == 0 && expected.empty() ? 0 : 1;
}
