#pragma once

#include <cstddef>

namespace ky {

// A position in pixels.
struct Point {
  std::ptrdiff_t x, y;
  bool operator==(const Point&) const = default;
};

}  // namespace ky
