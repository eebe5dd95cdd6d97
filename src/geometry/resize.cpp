#include "geometry/resize.h"

#include <algorithm>
#include <cstdint>

#include "foundation/scratch.h"
#include "geometry/sizes_rows.h"

namespace ky {
namespace {

// A position between a pixel and its next: floor(u), and the weight of the next in units of
// 1 / kWeightOne.
struct Between {
  std::int64_t pixel;
  std::int32_t weight;
};
// The position of pixel x of a side of `to` pixels in a side of `from` pixels. u is in units of
// 1 / (2 to) pixels; no product reaches 2^63.
Between PositionOf(std::int64_t x, std::int64_t from, std::int64_t to) noexcept {
  const std::int64_t unit = 2 * to;
  const std::int64_t u = std::clamp<std::int64_t>((2 * x + 1) * from - to, 0, unit * (from - 1));
  const std::int64_t rest = u % unit;
  return {u / unit, static_cast<std::int32_t>((kWeightOne * rest + to) / unit)};
}

// The positions of the results along a row, of `kStep` elements a pixel.
template <int kStep>
class Columns {
 public:
  // False when there is no memory.
  bool Allocate(std::ptrdiff_t from, std::ptrdiff_t to, std::size_t group) noexcept {
    constexpr auto kAtOnce = static_cast<std::ptrdiff_t>(kMostAtOnce);
    const std::ptrdiff_t n = to * kStep;
    group_ = static_cast<std::ptrdiff_t>(group);
    padded_ = (n + kAtOnce - 1) / kAtOnce * kAtOnce;
    if (!left_.Allocate(padded_) || !pairs_.Allocate(padded_) ||
        !starts_.Allocate(padded_ / group_) || !picks_.Allocate(padded_ * kBytes))
      return false;
    for (std::ptrdiff_t x = 0; x < to; ++x) {
      const Between at = PositionOf(x, from, to);
      for (std::ptrdiff_t c = 0; c < kStep; ++c)
        Put(x * kStep + c, at.pixel * kStep + c, static_cast<std::uint32_t>(at.weight));
    }
    for (std::ptrdiff_t i = n; i < padded_; ++i) Put(i, left_[n - 1], 0);
    const bool grouped = MakeGroups(from * kStep);
    view_ = {static_cast<std::size_t>(n),       kStep,       left_.get(), pairs_.get(),
             grouped ? starts_.get() : nullptr, picks_.get()};
    return true;
  }
  const PairsOfElements& View() const noexcept { return view_; }
  std::ptrdiff_t Padded() const noexcept { return padded_; }

 private:
  static constexpr auto kBytes = static_cast<std::ptrdiff_t>(kPairBytes);

  void Put(std::ptrdiff_t i, std::ptrdiff_t left, std::uint32_t weight) noexcept {
    left_[i] = left;
    pairs_[i] = (kWeightOne - weight) | weight << 16;
  }

  // False when the pixels of a group do not fit the bytes that it may have within the row.
  bool MakeGroups(std::ptrdiff_t elements) noexcept {
    constexpr std::uint8_t kZero = 0x80;
    const std::ptrdiff_t bytes = group_ * kBytes;
    if (elements < bytes) return false;
    for (std::ptrdiff_t group = 0; group < padded_ / group_; ++group) {
      const std::ptrdiff_t first = group * group_;
      const std::ptrdiff_t* const left = left_.get() + first;
      const std::ptrdiff_t start =
          std::min(*std::min_element(left, left + group_), elements - bytes);
      starts_[group] = start;
      for (std::ptrdiff_t i = 0; i < group_; ++i) {
        const std::ptrdiff_t one = left[i] - start;
        const std::ptrdiff_t other = pairs_[first + i] >> 16 != 0 ? one + kStep : one;
        if (other >= bytes) return false;
        std::uint8_t* const pick = picks_.get() + (first + i) * kBytes;
        pick[0] = static_cast<std::uint8_t>(one);
        pick[2] = static_cast<std::uint8_t>(other);
        pick[1] = pick[3] = kZero;
      }
    }
    return true;
  }

  std::ptrdiff_t group_ = 0, padded_ = 0;
  Scratch<std::ptrdiff_t> left_, starts_;
  Scratch<std::uint32_t> pairs_;
  Scratch<std::uint8_t> picks_;
  PairsOfElements view_ = {};
};

template <class T>
KY_ERRORS Resize(const Rows<T>& out, const Rows<const T>& in) noexcept {
  constexpr int kStep = sizeof(T);
  Columns<kStep> columns;
  Scratch<std::int32_t> memory;
  const SizeKernels& kernels = ChooseSizeKernels();
  if (!columns.Allocate(in.width, out.width, kernels.group) ||
      !memory.Allocate(2 * columns.Padded()))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  // Interpolated rows of the source: the even ones in one slot, the odd ones in the other.
  std::ptrdiff_t rows[2] = {-1, -1}, ahead = 0;
  const auto interpolated = [&](std::ptrdiff_t y) {
    std::int32_t* const slot = memory.get() + y % 2 * columns.Padded();
    if (rows[y % 2] != y)
      kernels.interpolate(slot, reinterpret_cast<const KyBW8*>(in.Row(y)), columns.View(), ahead);
    rows[y % 2] = y;
    return slot;
  };
  constexpr std::ptrdiff_t kLarge = 8 << 20;
  const bool prefetches = in.height * in.RowBytes() > kLarge;
  for (std::ptrdiff_t y = 0; y < out.height; ++y) {
    const Between at = PositionOf(y, in.height, out.height);
    // Processors do not see by themselves which rows are left out.
    const std::int64_t step = PositionOf(y + 1, in.height, out.height).pixel - at.pixel;
    ahead = prefetches && step > 1 ? step * in.pitch : 0;
    const std::int32_t* const upper = interpolated(at.pixel);
    const std::int32_t* const lower = at.weight != 0 ? interpolated(at.pixel + 1) : upper;
    kernels.blend(reinterpret_cast<KyBW8*>(out.Row(y)), columns.View().n, upper, lower, at.weight);
  }
  return KY_OK;
}

}  // namespace

KY_ERRORS ResizeRows(const Rows<KyBW8>& destination, const Rows<const KyBW8>& source) noexcept {
  return Resize(destination, source);
}
KY_ERRORS ResizeRows(const Rows<KyC24>& destination, const Rows<const KyC24>& source) noexcept {
  return Resize(destination, source);
}

}  // namespace ky
