// Row kernels of separable smoothing in fixed point. Sums arise two at a time, at neighbours, as
// their windows mirror each other. With weights w[k] = w[-k] and values v, twice the sums of
// w[k] v[k] and of w[k] v[1 + k] are s + d and s - d, where for all k >= 0
//   s = sum of (w[k] + w[k + 1]) (v[-k] + v[1 + k]),
//   d = sum of (w[k] - w[k + 1]) (v[-k] - v[1 + k]),
// which takes half of the products. These are added up in pairs, k and k + 1. Levels have 128 taken
// off, so that 16 bits hold sums of two values.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/window.h"
#include "ky/pixels.h"

namespace ky {

// The weights of sums and of differences, where w adds up to 2^bits: those of k = 2 i + 1 and of
// 2 i in the lower and the upper half of *Sums(i) and of *Differences(i), and of three more.
struct WeightPairs {
  const std::int32_t *sums, *differences;
  std::ptrdiff_t count;
  int bits;

  const std::int32_t* Sums(std::ptrdiff_t i) const noexcept { return sums + kCopies * i; }
  const std::int32_t* Differences(std::ptrdiff_t i) const noexcept {
    return differences + kCopies * i;
  }

  static constexpr std::ptrdiff_t kCopies = 4;
};

// A row with 2 count - 1 places before the first one, and the same with the two of each pair of
// places swapped.
struct WideRow {
  const std::int16_t *places, *swapped;

  // Where the places -2 k - 1 and -2 k begin, and what mirrors them, 2 k + 2 and 2 k + 1.
  const std::int16_t* Before(std::ptrdiff_t count, std::ptrdiff_t k) const noexcept {
    return places + 2 * (count - 1 - k);
  }
  const std::int16_t* After(std::ptrdiff_t count, std::ptrdiff_t k) const noexcept {
    return swapped + 2 * (count + k);
  }
};

// Places of a row around its pixels.
struct Margins {
  std::size_t before, after;
};

// Pairs of rows, the one above in the lower halves: those of even places, and those of odd ones
// `phase` further on.
struct PairRows {
  std::int32_t* const* pairs;
  std::ptrdiff_t phase;

  std::int32_t* Places(std::ptrdiff_t pair, std::size_t isOdd) const noexcept {
    return pairs[pair] + static_cast<std::ptrdiff_t>(isOdd) * phase;
  }
};

// Kernels for so many pairs of weights, which are unrolled, and one for any other number.
inline constexpr std::ptrdiff_t kLeastUnrolled = 2, kMostUnrolled = 8;
template <class Kernel>
struct ByPairsKernels {
  Kernel any, unrolled[kMostUnrolled - kLeastUnrolled + 1];

  Kernel For(std::ptrdiff_t count) const noexcept {
    return count < kLeastUnrolled || count > kMostUnrolled ? any : unrolled[count - kLeastUnrolled];
  }
};

// All rows but those of results are readable, and writable, for kGaussianSlack elements more.
struct GaussianKernels {
  // places[before + i] = 128 (in[i] - 128), with the first and the last of n pixels for the margins
  // too, and the same in `swapped`, with the two of each pair swapped.
  void (*widen)(std::int16_t* places, std::int16_t* swapped, const Margins& margins, std::size_t n,
                const KyBW8* in);
  // out.pairs[0] gets the weighed means of two rows in units of 1/128 level, rounded, less 128
  // levels and plus half a level.
  ByPairsKernels<void (*)(const PairRows& out, std::size_t n, const WideRow rows[2],
                          const WeightPairs& weights)>
      along;
  // Two rows of results from those of 2 weights.count pairs of rows. They are where the lower row
  // of in.pairs[weights.count - 1] and the upper one of in.pairs[weights.count] are.
  ByPairsKernels<void (*)(KyBW8* const out[2], std::size_t n, const PairRows& in,
                          const WeightPairs& weights)>
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
  std::ptrdiff_t shortestWithEnds;
  void (*grey)(const ThreeTaps& taps, Rows<KyBW8> out, const KyBW8* const* rows,
               const Layout& layout);
  void (*color)(const ThreeTaps& taps, Rows<KyBW8> out, const KyBW8* const* rows,
                const Layout& layout);
};
const SmallGaussianKernels& ChooseSmallGaussianKernels() noexcept;

}  // namespace ky
