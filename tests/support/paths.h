// Every path that a call can take through the library on this machine.
#pragma once

#include <functional>
#include <string>

namespace ky::test {

// Runs `body` once on the plain path and once on every instruction set that the processor has, and
// gives it the path's name.
void ForEachPath(const std::function<void(const std::string& path)>& body);

// The longest vector of any of them, in bytes.
inline constexpr int kLongestVector = 64;

}  // namespace ky::test
