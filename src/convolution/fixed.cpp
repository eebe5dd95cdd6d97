#include "convolution/fixed.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "convolution/fixed_rows.h"

namespace ky {
namespace {

int SizeOf(const FixedWeights& w) { return 2 * w.radius + 1; }
int CountOf(const FixedWeights& w) { return SizeOf(w) * SizeOf(w); }

// The largest sums that pixels can make on either side of 0.
struct Reach {
  std::int64_t below = 0, above = 0, largestWeight = 0;

  explicit Reach(const FixedWeights& w) {
    for (int i = 0; i < CountOf(w); ++i) {
      const std::int64_t weight = w.weights[i];
      (weight < 0 ? below : above) += 255 * std::abs(weight);
      largestWeight = std::max(largestWeight, std::abs(weight));
    }
  }
  std::int64_t Largest() const { return std::max(below, above); }
};

// Without the zero bits that all weights end in; what they weigh stays the same.
FixedWeights Reduced(FixedWeights w) {
  const auto allAreEven = [&] {
    return std::all_of(w.weights, w.weights + CountOf(w), [](int k) { return k % 2 == 0; });
  };
  for (; w.fraction > 0 && allAreEven(); --w.fraction)
    for (int i = 0; i < CountOf(w); ++i) w.weights[i] /= 2;
  return w;
}

// Under mirroring and the quarter turn.
bool IsSymmetric(const FixedWeights& w) {
  const int size = SizeOf(w);
  const auto at = [&](int x, int y) { return w.weights[y * size + x]; };
  for (int y = 0; y < size; ++y)
    for (int x = 0; x < size; ++x)
      if (at(x, y) != at(y, x) || at(x, y) != at(size - 1 - x, y)) return false;
  return true;
}

FixedKernel KernelOf(const FixedWeights& w) {
  FixedKernel kernel = {};
  kernel.radius = w.radius;
  kernel.shift = w.fraction;
  kernel.offset = static_cast<std::int32_t>(w.offset);
  kernel.magnitude = w.magnitude;
  std::copy_n(w.weights, CountOf(w), kernel.weights);
  return kernel;
}

// Two weights for a pair of lanes, whole or in halves.
void SetPair(FixedKernel& kernel, int i, std::int32_t first, std::int32_t second, bool split) {
  const auto pack = [](std::int32_t low, std::int32_t high) {
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(high) << 16) |
                                     (static_cast<std::uint32_t>(low) & 0xFFFF));
  };
  kernel.pairs[0][i] = split ? pack(first & 0x7FFF, second & 0x7FFF) : pack(first, second);
  kernel.pairs[1][i] = pack(first >> 15, second >> 15);
}
void PairWeights(FixedKernel& kernel, bool split) {
  const int r = kernel.radius, size = 2 * r + 1;
  for (int row = 0, i = 0; row < size; ++row) {
    const std::int32_t* const centre = kernel.weights + row * size + r;
    for (int pair = 0; pair < r; ++pair, ++i) {
      const int tap = kFirstTaps[r][pair];
      SetPair(kernel, i, centre[tap], centre[tap + 2], split);
    }
    SetPair(kernel, i++, centre[kSingleTap[r]], 0, split);
    SetPair(kernel, i++, 0, centre[kSingleTap[r]], split);
  }
}
void PairWeightsInOrder(FixedKernel& kernel, bool split) {
  const int size = 2 * kernel.radius + 1, count = size * size;
  for (int i = 0; i < count; i += 2)
    SetPair(kernel, i / 2, kernel.weights[i], i + 1 < count ? kernel.weights[i + 1] : 0, split);
}
void PairSymmetricWeights(FixedKernel& kernel, bool split) {
  const int r = kernel.radius, size = 2 * r + 1;
  std::int32_t sets[kLargestGrid + 1] = {};
  int n = 0;
  for (int y = 0; y <= r; ++y)
    for (int x = y; x <= r; ++x) sets[n++] = kernel.weights[y * size + x];
  if (r == 1) {  // corners and edges, edges and centre
    SetPair(kernel, 0, sets[0], sets[1], split);
    SetPair(kernel, 1, sets[1], sets[2], split);
    return;
  }
  for (int i = 0; 2 * i < n; ++i) SetPair(kernel, i, sets[2 * i], sets[2 * i + 1], split);
}

// For weights so large that sums need 64 bits, and for offsets that go as far: one pixel at a time.
void WeighWide(const FixedWeights& w, int step, Rows<KyBW8> out, const KyBW8* const* rows) {
  const int size = SizeOf(w);
  for (std::ptrdiff_t y = 0; y < out.height; ++y)
    for (std::ptrdiff_t x = 0; x < out.width; ++x) {
      std::int64_t sum = 0;
      for (int i = 0; i < CountOf(w); ++i)
        sum += std::int64_t{w.weights[i]} * rows[y + i / size][x + step * (i % size - w.radius)];
      const std::int64_t v = (sum >> w.fraction) + w.offset;
      out.Row(y)[x] =
          static_cast<KyBW8>(std::clamp<std::int64_t>(w.magnitude ? std::abs(v) : v, 0, 255));
    }
}

// The least kernel that holds the sums, and in `kernel` the weights as it wants them.
FixedRowKernel ChooseRowKernel(const FixedRowKernels& kernels, const FixedWeights& w,
                               const Reach& reach, bool isGrey, FixedKernel& kernel) {
  // Narrow sums stay in 16 bits; signed ones leave room for another level.
  constexpr std::int64_t kMostSigned = INT16_MAX - 255, kMostUnsigned = UINT16_MAX;
  constexpr std::int64_t kMostBytePair = 64;  // the largest weight of which two fit MulAddBytes
  const bool fitsSigned = reach.Largest() <= kMostSigned;
  const bool fitsUnsigned = w.fraction > 0 && reach.below == 0 && reach.above <= kMostUnsigned;
  if (w.radius == 1 && (fitsSigned || fitsUnsigned))
    return kernels.narrow[reach.largestWeight <= kMostBytePair][!fitsSigned];
  const bool split = reach.largestWeight > INT16_MAX;
  if (IsSymmetric(w)) {
    PairSymmetricWeights(kernel, split);
    return kernels.symmetric[w.radius][split];
  }
  if (isGrey)
    PairWeights(kernel, split);
  else
    PairWeightsInOrder(kernel, split);
  return kernels.paired[w.radius][split];
}

}  // namespace

KY_ERRORS ConvolveFixed(Rows<KyBW8> destination, Rows<const KyBW8> source, int step,
                        const FixedWeights& weights, const Border& border) noexcept {
  const FixedWeights w = Reduced(weights);
  const Reach reach(w);
  const auto run = [&](std::size_t lanes, std::ptrdiff_t shortestWithEnds, const auto& rowsOf) {
    return FilterWindows(destination, source, border,
                         WindowKernel<decltype(rowsOf)>{.radius = w.radius,
                                                        .lanes = lanes,
                                                        .run = rowsOf,
                                                        .step = step,
                                                        .shortestWithEnds = shortestWithEnds});
  };
  constexpr std::int64_t kMostSum = 1 << 30;  // see FixedKernel
  if (reach.below + reach.above > kMostSum || std::abs(w.offset) > kFurthestOffset)
    return run(1, kNoRowsWithEnds,
               [&](Rows<KyBW8> out, const KyBW8* const* rows) { WeighWide(w, step, out, rows); });

  const bool isGrey = step == 1;
  const FixedRowKernels& kernels = isGrey ? ChooseFixedRowKernels() : ChooseFixedColorRowKernels();
  FixedKernel kernel = KernelOf(w);
  const FixedRowKernel rowKernel = ChooseRowKernel(kernels, w, reach, isGrey, kernel);
  return run(kernels.lanes, w.radius == 1 ? kernels.shortestWithEnds : kNoRowsWithEnds,
             [&](Rows<KyBW8> out, const KyBW8* const* rows, const Layout& layout) {
               rowKernel(kernel, out, rows, layout);
             });
}

}  // namespace ky
