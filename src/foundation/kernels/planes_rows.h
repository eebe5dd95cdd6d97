// Rows of colours as rows of each component, and back.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

struct PlaneKernels {
  // planes[k * pitch + i] = component k of in[i]
  void (*split)(KyBW8* planes, std::size_t pitch, std::size_t n, const KyC24* in);
  void (*join)(KyC24* out, std::size_t n, const KyBW8* planes, std::size_t pitch);
  // The same of one component, 0 to 2; the others of `out` stay as they are.
  void (*take[3])(KyBW8* plane, std::size_t n, const KyC24* in);
  void (*put[3])(KyC24* out, std::size_t n, const KyBW8* plane);
};
const PlaneKernels& ChoosePlaneKernels() noexcept;

}  // namespace ky
