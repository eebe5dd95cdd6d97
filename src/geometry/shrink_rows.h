// The kernels of shrinking by means of areas.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/rows.h"

namespace ky {

// The source pixels that a result covers along one axis: `count` from `start` on. The weight of the
// first one is `first`, and that of the last one is `last`, which is 0 where there is only one. The
// others have the weight `middle` of the Side, and all weights add up to its `total`.
struct Cover {
  std::ptrdiff_t start, count;
  std::uint32_t first, last;
};

// How a side of `from` pixels shrinks to `to`: from / to = total / middle in lowest terms.
struct Side {
  std::ptrdiff_t total, middle;

  Cover At(std::ptrdiff_t x) const noexcept {
    const std::ptrdiff_t begin = x * total, end = begin + total;
    const std::ptrdiff_t start = begin / middle, stop = (end - 1) / middle;
    const std::ptrdiff_t first = (start < stop ? (start + 1) * middle : end) - begin;
    const std::ptrdiff_t last = start < stop ? end - stop * middle : 0;
    return {start, stop - start + 1, static_cast<std::uint32_t>(first),
            static_cast<std::uint32_t>(last)};
  }
};

// Some rows of results and the elements of the source and of the destination that are worked on at
// once: `columns` from `from` on give `results` from `to` on.
struct ShrinkBand {
  Rows<KyBW8> destination;
  Rows<const KyBW8> source;
  Side across, down;
  std::ptrdiff_t step;  // elements of a pixel
  std::ptrdiff_t row, rows;
  std::ptrdiff_t from, columns, to, results;
  // The covers of the results' pixels, counted from the left border.
  const Cover* covers;
  // Room for (2 columns + results) * kMostShrinkRows numbers of 32 bits.
  void* scratch;
};
inline constexpr std::ptrdiff_t kMostShrinkRows = 32;

using ShrinkKernel = void (*)(const ShrinkBand& band);

// Kernels by the sums that they can hold; each does up to `rows` rows at once.
struct ShrinkKernels {
  // Sums below 2^16: areas of up to 256 parts.
  ShrinkKernel sums16;
  std::ptrdiff_t rows16;
  // Sums below 2^31: areas of up to 2^23 parts.
  ShrinkKernel sums32;
  std::ptrdiff_t rows32;
  // Sums down the columns below 2^31, those across below 2^53.
  ShrinkKernel sums53;
  std::ptrdiff_t rows53;
};

// The kernels of the instruction set that this call may use.
const ShrinkKernels& ChooseShrinkKernels() noexcept;

}  // namespace ky
