// Row kernels of separable smoothing in fixed point. Rows of intermediate values are kept in pairs,
// as products are added up in pairs.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/window.h"
#include "ky/pixels.h"

namespace ky {

// The weights of a window, which add up to 2^bits: those of taps 2 k and 2 k + 1 in the lower and
// the upper half of pairs[k].
struct WeightPairs {
  const std::int32_t* pairs;
  std::ptrdiff_t count;
  int bits;
};

// Rows of pairs, those of even and of odd places apart.
struct PairRow {
  std::uint32_t *even, *odd;
};

struct GaussianKernels {
  // out[i] = in[i]
  void (*widen)(std::int16_t* out, std::size_t n, const KyBW8* in);
  // The value at place x of row r of two is the sum of weights[k] rows[r][x + k], rounded to 7 bits
  // after the point. The values of the first row become the lower halves of `out`, those of the
  // second the upper ones. All rows are readable and writable for kGaussianSlack elements more.
  void (*along)(const PairRow& out, std::size_t n, const std::int16_t* const rows[2],
                const WeightPairs& weights);
  // Two rows of results, each of its weights[r], from the values of the rows that are paired in
  // `in`: the sum of weights[r][k] (half k % 2 of in[k / 2]), rounded to levels.
  void (*across)(KyBW8* const out[2], std::size_t n, const PairRow* in,
                 const WeightPairs weights[2]);
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
