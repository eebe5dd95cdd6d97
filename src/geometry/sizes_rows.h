// The row kernels of halving and of bilinear resizing.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

// n results from 2 n pixels of two neighbouring rows.
template <class T>
using HalveKernel = void (*)(T* out, std::size_t n, const T* upper, const T* lower);

// Weights of interpolation have 11 bits.
inline constexpr int kWeightBits = 11;
inline constexpr std::int32_t kWeightOne = 1 << kWeightBits;

// Where results along a row come from: element left[x], weighed with the low 16 bits of pairs[x],
// and the element `step` further right, weighed with the high 16 bits. Both weights make
// kWeightOne; where the second is 0 its element may be missing.
struct PairsOfElements {
  std::size_t n;
  std::ptrdiff_t step;
  const std::ptrdiff_t* left;
  const std::uint32_t* pairs;
  // The same in groups of results. From starts[i] on, kPairBytes bytes for each result hold all
  // that group i needs, and `picks` tells which of them, or zeros, make the pairs of 16 bits.
  // `starts` is null where a group needs more bytes. There is room for a multiple of kMostAtOnce
  // results.
  const std::ptrdiff_t* starts;
  const std::uint8_t* picks;
};
inline constexpr std::size_t kMostAtOnce = 16, kPairBytes = 4;

struct SizeKernels {
  std::size_t group;  // results
  HalveKernel<KyBW8> halve;
  HalveKernel<KyC24> halveColors;
  // out[x] = the weighed sum of pair x. `out` has room for whole groups. What stands `ahead` bytes
  // further on is prefetched, unless that is 0.
  void (*interpolate)(std::int32_t* out, const KyBW8* row, const PairsOfElements& pairs,
                      std::ptrdiff_t ahead);
  // out[x] = (upper[x] (kWeightOne - g) + lower[x] g) / kWeightOne^2, rounded.
  void (*blend)(KyBW8* out, std::size_t n, const std::int32_t* upper, const std::int32_t* lower,
                std::int32_t g);
};

// The kernels of the instruction set that this call may use.
const SizeKernels& ChooseSizeKernels() noexcept;

}  // namespace ky
