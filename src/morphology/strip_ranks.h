// Ranks of windows of up to 255 pixels or 127 rows, a strip of the image at a time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/kernels/planes_rows.h"
#include "foundation/rows.h"
#include "foundation/scratch.h"
#include "morphology/strip_rows.h"

namespace ky {

// Histograms of columns go down a strip, one row after the other, and sums of them along it. (After
// S. Perreault and P. Hebert, "Median filtering in constant time", IEEE Transactions on Image
// Processing 16, 2007.) Columns beyond the image have histograms too.
//
// Pixels are `step` elements apart, and each component is a picture of its own.
class StripRanks {
 public:
  // With fast kernels.
  StripRanks(const StripKernels& kernels, Rows<const KyBW8> in, Rows<KyBW8> out,
             std::ptrdiff_t step) noexcept
      : kernels_(kernels), in_(in), out_(out), step_(step), pixels_(in.width / step) {}

  // Whether windows are such, the rank having so many pixels below and above it. Wide ones would
  // have margins that cost more than their strip.
  static bool Fits(std::ptrdiff_t halfWidth, std::ptrdiff_t halfHeight, std::int64_t rank,
                   std::int64_t above) noexcept {
    const bool isMedium =
        halfWidth <= kMostHalfWidth && halfHeight < 64 && rank < 1 << 15 && above < 1 << 15;
    return IsSmall(rank, above) || isMedium;
  }

  bool Run(std::ptrdiff_t halfWidth, std::ptrdiff_t halfHeight, int rank, int above) noexcept {
    const StripKernels::Run run = IsSmall(rank, above) ? kernels_.runSmall : kernels_.run;
    strip_.half = halfWidth;
    strip_.rows = 2 * halfHeight + 1;
    halfHeight_ = halfHeight;
    if (!Allocate()) return false;
    for (first_ = 0; first_ < pixels_; first_ += kWidth) {
      Resize(std::min(kWidth, pixels_ - first_));
      for (component_ = 0; component_ < step_; ++component_) {
        Start();
        for (std::ptrdiff_t y = 0; y < in_.height; ++y) {
          if (y > 0) kernels_.slide(strip_, Row(0, y - 1 - halfHeight_), Row(1, y + halfHeight_));
          run(strip_, rank, work_.get(), results_.get());
          Put(y);
        }
      }
    }
    return true;
  }

 private:
  static constexpr std::ptrdiff_t kMostHalfWidth = 255;

  static bool IsSmall(std::int64_t rank, std::int64_t above) noexcept {
    return rank < 128 && above < 128;
  }

  // So many results that the margins cost little and the histograms stay in a second cache.
  static constexpr std::ptrdiff_t kWidth = 960;
  // Kernels count in units of 8 bytes from the first plane, in 16 bits.
  static_assert(RankStrip::kBounds * RankStrip::PlaneOf(kWidth + 2 * kMostHalfWidth + 64) / 8 <
                60000);

  void Resize(std::ptrdiff_t width) noexcept {
    strip_.width = width;
    strip_.columns = width + 2 * strip_.half;
    strip_.pitch = RankStrip::PitchOf(strip_.columns);
    strip_.plane = RankStrip::PlaneOf(strip_.pitch);
  }
  std::ptrdiff_t HistogramBytes() const noexcept { return (RankStrip::kBounds + 1) * strip_.plane; }
  bool Allocate() noexcept {
    Resize(std::min(kWidth, pixels_));
    if (!histograms_.Allocate(HistogramBytes()) ||
        !below_.Allocate(RankStrip::BelowOf(strip_.pitch)) ||
        !ranges_.Allocate(RankStrip::RangesOf(strip_.pitch)) ||
        !work_.Allocate(RankStrip::WorkOf(strip_.pitch)) || !results_.Allocate(strip_.pitch) ||
        !rows_.Allocate(2 * strip_.pitch))
      return false;
    strip_.histograms = histograms_.get() + RankStrip::kColumn;
    strip_.below = below_.get();
    strip_.ranges = ranges_.get();
    std::memset(rows_.get(), 0, static_cast<std::size_t>(2 * strip_.pitch));
    return true;
  }

  // The columns of the first row of windows.
  void Start() noexcept {
    const std::ptrdiff_t last = in_.height - 1, end = std::min(halfHeight_, last);
    std::memset(histograms_.get(), 0, static_cast<std::size_t>(HistogramBytes()));
    std::memset(below_.get(), 0, static_cast<std::size_t>(RankStrip::BelowOf(strip_.pitch)));
    std::memset(ranges_.get(), 0, static_cast<std::size_t>(RankStrip::RangesOf(strip_.pitch)));
    kernels_.add(strip_, Row(0, 0), static_cast<std::uint8_t>(halfHeight_ + 1));
    for (std::ptrdiff_t y = 1; y <= end; ++y) kernels_.add(strip_, Row(0, y), 1);
    kernels_.add(strip_, Row(0, last), static_cast<std::uint8_t>(halfHeight_ - end));
  }

  // A row of the columns' pixels, made in one of two places.
  const KyBW8* Row(int place, std::ptrdiff_t y) const noexcept {
    KyBW8* const row = rows_.get() + place * strip_.pitch;
    const KyBW8* const from = in_.Row(std::clamp<std::ptrdiff_t>(y, 0, in_.height - 1));
    const std::ptrdiff_t left = first_ - strip_.half;  // may lie before the image
    const std::ptrdiff_t begin = std::max<std::ptrdiff_t>(-left, 0);
    const std::ptrdiff_t end = std::min(strip_.columns, pixels_ - left);
    std::fill_n(row, begin, from[component_]);
    if (step_ == 1)
      std::memcpy(row + begin, from + (left + begin), static_cast<std::size_t>(end - begin));
    else
      planes_.take[component_](row + begin, static_cast<std::size_t>(end - begin),
                               reinterpret_cast<const KyC24*>(from) + (left + begin));
    std::fill(row + end, row + strip_.columns, from[(pixels_ - 1) * step_ + component_]);
    return row;
  }
  void Put(std::ptrdiff_t y) const noexcept {
    KyBW8* const to = out_.Row(y) + first_ * step_;
    if (step_ == 1)
      std::memcpy(to, results_.get(), static_cast<std::size_t>(strip_.width));
    else
      planes_.put[component_](reinterpret_cast<KyC24*>(to), static_cast<std::size_t>(strip_.width),
                              results_.get());
  }

  const StripKernels& kernels_;
  const PlaneKernels& planes_ = ChoosePlaneKernels();
  Rows<const KyBW8> in_;
  Rows<KyBW8> out_;
  std::ptrdiff_t step_, pixels_, halfHeight_ = 0;
  std::ptrdiff_t first_ = 0, component_ = 0;  // of the strip's results
  RankStrip strip_ = {};
  Scratch<std::uint8_t> histograms_, below_, ranges_, work_;
  Scratch<KyBW8> results_, rows_;
};

}  // namespace ky
