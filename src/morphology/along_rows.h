// The row kernels of erosion and dilation along a row.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

// Bytes that are readable and writable in front of the scratch `row`, and the elements that it has
// room for even when there are fewer.
inline constexpr std::ptrdiff_t kRowFront = 384, kLeastRow = 128;

// out[x] = extreme(in[x - half step], ..., in[x + half step]) for n places, of every step-th of the
// elements that there are, where a pixel has `step` of them. `row` and `spare` are scratch of
// n + 2 half step elements, and `out` is scratch too, perhaps `row` or in front of it; each has
// kRowSlack bytes after it. The n elements at `soon` are about to be stored to: windows that are
// long enough prefetch them.
using AlongKernel = void (*)(KyBW8* out, std::ptrdiff_t n, const KyBW8* in, KyBW8* row,
                             KyBW8* spare, std::ptrdiff_t half, const KyBW8* soon);

struct AlongKernels {
  struct Extremes {
    AlongKernel maximum, minimum;
  } grey, color;  // a pixel's elements: one, or three
};

// The kernels of the instruction set that this call may use.
const AlongKernels& ChooseAlongKernels() noexcept;

}  // namespace ky
