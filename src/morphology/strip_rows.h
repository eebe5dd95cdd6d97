// The row kernels of ranks in strips of an image, whose columns have histograms in two levels: how
// many pixels are below each multiple of 32, and cumulative counts between two of these.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

// One strip of results, `half` columns wider on either side. The memory is the caller's.
struct RankStrip {
  // A column's counts between two bounds. Those of the next column follow, as neighbours mostly
  // need the same.
  static constexpr std::ptrdiff_t kColumn = 32;
  static constexpr std::ptrdiff_t kBounds = 7;
  // Columns beyond the last one that may be read, in vain.
  static constexpr std::ptrdiff_t kBeyond = 8;
  // Rows are whole vectors.
  static constexpr std::ptrdiff_t PitchOf(std::ptrdiff_t columns) noexcept {
    return (columns + 31) / 32 * 32;
  }

  // From the counts between two bounds to those between the next two, a multiple of 8 bytes. Planes
  // that were whole pages apart would compete for the same places in a first cache.
  static constexpr std::ptrdiff_t PlaneOf(std::ptrdiff_t pitch) noexcept {
    return ((1 + pitch + kBeyond) * kColumn + 4095) / 4096 * 4096 + 320;
  }
  static constexpr std::ptrdiff_t WorkOf(std::ptrdiff_t pitch) noexcept {
    return 2 * (pitch + 32) + (1 + kBounds) * (pitch + 64);
  }
  static constexpr std::ptrdiff_t BelowOf(std::ptrdiff_t pitch) noexcept {
    return kBounds * pitch + 64;
  }
  static constexpr std::ptrdiff_t RangesOf(std::ptrdiff_t pitch) noexcept { return pitch / 16; }

  std::ptrdiff_t width, half, columns, pitch;
  std::ptrdiff_t plane;      // PlaneOf(pitch)
  std::ptrdiff_t rows;       // of a window
  std::uint8_t* histograms;  // kBounds + 1 planes, each after a column of zeros and before kBeyond
  std::uint8_t* below;       // kBounds rows, after which 64 bytes may be read, in vain
  // At first zeros, RangesOf(pitch) bytes that the kernels keep from one row to the next.
  std::uint8_t* ranges;
};

struct StripKernels {
  // Whether this is faster than without strips; the others are null where it is not.
  bool isFast;
  // A row's pixels come to the columns so many times.
  void (*add)(const RankStrip& strip, const KyBW8* row, std::uint8_t times);
  // One row leaves them and another comes.
  void (*slide)(const RankStrip& strip, const KyBW8* leaving, const KyBW8* coming);
  // The results, for whose whole vectors there must be room. `work` is RankStrip::WorkOf(pitch)
  // bytes of scratch, aligned. Small windows have up to 255 pixels and ranks below 128 from either
  // end, others up to 127 rows and ranks below 2^15 from either end.
  using Run = void (*)(const RankStrip& strip, int rank, std::uint8_t* work, KyBW8* results);
  Run runSmall, run;
};

// The kernels of the instruction set that this call may use.
const StripKernels& ChooseStripKernels() noexcept;

}  // namespace ky
