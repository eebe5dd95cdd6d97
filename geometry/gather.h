// Which sources vector kernels can take scattered pixels from.
#pragma once

#include <cstdint>

#include "foundation/rows.h"

namespace ky {

// Accelerated kernels read four bytes at a 32-bit distance from the first pixel. Narrower and
// larger sources are left to the plain path, which has no such limits.
template <class T>
bool CanGather(const Rows<const T>& source) noexcept {
  return source.RowBytes() >= 4 && source.height * source.pitch <= std::ptrdiff_t{INT32_MAX};
}

}  // namespace ky
