// Row kernels of separable smoothing in fixed point. Rows of intermediate values are kept in pairs,
// as products are added up in pairs.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/window.h"
#include "ky/pixels.h"

namespace ky {

// The weights of a window, which add up to 2^bits: those of taps 2 k and 2 k + 1 in the lower and
// the upper half of *At(k), and of three more.
struct WeightPairs {
  const std::int32_t* first;
  std::ptrdiff_t count;
  int bits;

  const std::int32_t* At(std::ptrdiff_t k) const noexcept { return first + kCopies * k; }

  static constexpr std::ptrdiff_t kCopies = 4;
};

// Rows of pairs, those of even places, and those of odd ones `phase` pairs further on.
struct PairRows {
  std::uint32_t* const* rows;
  std::ptrdiff_t phase;
};

// Kernels for sums of so many pairs of weights, which are unrolled, and one for any other number.
inline constexpr std::ptrdiff_t kLeastUnrolled = 3, kMostUnrolled = 8;
template <class Kernel>
struct BySumKernels {
  Kernel any, unrolled[kMostUnrolled - kLeastUnrolled + 1];

  Kernel For(std::ptrdiff_t count) const noexcept {
    return count < kLeastUnrolled || count > kMostUnrolled ? any : unrolled[count - kLeastUnrolled];
  }
};

struct GaussianKernels {
  // out[i] = in[i]
  void (*widen)(std::int16_t* out, std::size_t n, const KyBW8* in);
  // The value at place x of row r of two is the sum of the products of weights and rows[r][x...],
  // rounded to 7 bits after the point, where even places have weights[0]. Those of odd places are
  // weights[1], and begin a place to the left. The values of the first row become the lower halves
  // of out.rows[0], those of the second the upper ones. All rows are readable and writable for
  // kGaussianSlack elements more.
  BySumKernels<void (*)(const PairRows& out, std::size_t n, const std::int16_t* const rows[2],
                        const WeightPairs weights[2])>
      along;
  // Four rows of results from the values of the rows that are paired in `in`: the sum of
  // weights[r][k] (half k % 2 of in.rows[k / 2]), rounded to levels, for the first two rows. The
  // other two have the same weights from in.rows[1] on.
  BySumKernels<void (*)(KyBW8* const out[4], std::size_t n, const PairRows& in,
                        const WeightPairs weights[2])>
      across;
};
inline constexpr std::ptrdiff_t kGaussianSlack = 160;
const GaussianKernels& ChooseGaussianKernels() noexcept;

// The weights of three taps, of which the outer ones weigh the same and all add up to 32768. An
// outer one is not more than the centre, and so below 2^14.
struct ThreeTaps {
  std::int16_t outerX, outerY;
};
// Windows of 3 x 3 pixels, in rows of grey pixels and of the components of colours.
struct SmallGaussianKernels {
  std::size_t lanes;
  void (*grey)(const ThreeTaps& taps, Rows<KyBW8> out, const KyBW8* const* rows,
               const Layout& layout);
  void (*color)(const ThreeTaps& taps, Rows<KyBW8> out, const KyBW8* const* rows,
                const Layout& layout);
};
const SmallGaussianKernels& ChooseSmallGaussianKernels() noexcept;

}  // namespace ky
