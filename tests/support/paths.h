// Every path that a call can take through the library on this machine.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ky::test {

struct Path {
  std::string name;     // KyGetPath's
  std::int64_t target;  // Highway's; 0 for the plain path
};

// The plain path and those of the instruction sets that the processor has and KY_PATH allows.
// KY_TEST_PATH=NAME in the environment leaves one.
std::vector<Path> Paths();

// While it lives, calls take this path.
class OnPath {
 public:
  explicit OnPath(const Path& path);
  OnPath(const OnPath&) = delete;
  OnPath& operator=(const OnPath&) = delete;
  ~OnPath();
  // Whether a call has chosen its kernels by the instruction set since.
  bool Dispatched() const;
};

// The longest vector of any of them, in bytes.
inline constexpr int kLongestVector = 64;

}  // namespace ky::test
