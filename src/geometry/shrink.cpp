#include "geometry/shrink.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>

#include "foundation/scratch.h"
#include "geometry/shrink_rows.h"

namespace ky {
namespace {

Side SideOf(std::ptrdiff_t from, std::ptrdiff_t to) noexcept {
  const std::ptrdiff_t common = std::gcd(from, to);
  return {from / common, to / common};
}

// The longest sides: one row of results at a time, in 64 bits, which hold the sums of any image
// that memory can.
KY_ERRORS ShrinkWide(ShrinkBand band) noexcept {
  const std::ptrdiff_t columns = band.source.width;
  Scratch<std::uint64_t> sums;
  if (!sums.Allocate(columns)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const auto area =
      static_cast<std::uint64_t>(band.across.total) * static_cast<std::uint64_t>(band.down.total);
  const auto weightOf = [](const Cover& cover, std::ptrdiff_t i, const Side& side) {
    return i == 0                 ? cover.first
           : i == cover.count - 1 ? cover.last
                                  : static_cast<std::uint64_t>(side.middle);
  };
  for (std::ptrdiff_t y = 0; y < band.destination.height; ++y) {
    const Cover down = band.down.At(y);
    std::fill_n(sums.get(), columns, 0);
    for (std::ptrdiff_t i = 0; i < down.count; ++i) {
      const KyBW8* const row = band.source.Row(down.start + i);
      const std::uint64_t weight = weightOf(down, i, band.down);
      for (std::ptrdiff_t x = 0; x < columns; ++x) sums[x] += weight * row[x];
    }
    for (std::ptrdiff_t x = 0; x < band.destination.width; ++x) {
      const Cover across = band.covers[x / band.step];
      std::uint64_t sum = area / 2;
      for (std::ptrdiff_t i = 0; i < across.count; ++i)
        sum +=
            weightOf(across, i, band.across) * sums[(across.start + i) * band.step + x % band.step];
      band.destination.Row(y)[x] = static_cast<KyBW8>(sum / area);
    }
  }
  return KY_OK;
}

KY_ERRORS Shrink(const Rows<KyBW8>& out, const Rows<const KyBW8>& in,
                 std::ptrdiff_t step) noexcept {
  const std::ptrdiff_t width = out.width / step;
  Scratch<Cover> covers;
  if (!covers.Allocate(width)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  ShrinkBand band = {};
  band.destination = out;
  band.source = in;
  band.across = SideOf(in.width / step, width);
  band.down = SideOf(in.height, out.height);
  band.step = step;
  band.covers = covers.get();
  for (std::ptrdiff_t x = 0; x < width; ++x) covers[x] = band.across.At(x);

  constexpr std::ptrdiff_t kLongest = 1 << 16, kMost16 = 256, kMost32 = 1 << 23;
  if (std::max(band.across.total, band.down.total) > kLongest) return ShrinkWide(band);
  const std::ptrdiff_t area = band.across.total * band.down.total;
  const ShrinkKernels& kernels = ChooseShrinkKernels();
  const auto [kernel, rowsAtOnce] = area <= kMost16   ? std::pair(kernels.sums16, kernels.rows16)
                                    : area <= kMost32 ? std::pair(kernels.sums32, kernels.rows32)
                                                      : std::pair(kernels.sums53, kernels.rows53);

  // Strips whose sums stay in a first cache: of so many source columns, or of one pixel.
  constexpr std::ptrdiff_t kColumnsAtOnce = 512;
  const std::ptrdiff_t covered = band.across.total / band.across.middle + 2;
  const std::ptrdiff_t most = std::clamp<std::ptrdiff_t>(
      kColumnsAtOnce / step * band.across.middle / band.across.total, 1, width);
  // All of about the same width, in whole blocks.
  constexpr std::ptrdiff_t kBlock = 8;
  const std::ptrdiff_t strips = (width - 1) / most + 1;
  const std::ptrdiff_t pixelsAtOnce = std::min(((width - 1) / strips / kBlock + 1) * kBlock, most);
  const std::ptrdiff_t mostColumns = (pixelsAtOnce + 1) * covered * step;
  Scratch<std::uint32_t> scratch;
  if (!scratch.Allocate((2 * mostColumns + pixelsAtOnce * step) * kMostShrinkRows))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  band.scratch = scratch.get();
  for (band.row = 0; band.row < out.height; band.row += band.rows) {
    band.rows = std::min(rowsAtOnce, out.height - band.row);
    for (std::ptrdiff_t x = 0; x < width;) {
      const std::ptrdiff_t pixels = std::min(pixelsAtOnce, width - x);
      const Cover& last = covers[x + pixels - 1];
      band.from = covers[x].start * step;
      band.columns = (last.start + last.count) * step - band.from;
      band.to = x * step;
      band.results = pixels * step;
      kernel(band);
      x += pixels;
    }
  }
  return KY_OK;
}

// Rows of pixels as rows of components.
template <class T>
Rows<const KyBW8> ComponentsOf(const Rows<const T>& rows) noexcept {
  return {reinterpret_cast<const KyBW8*>(rows.first), rows.pitch, rows.RowBytes(), rows.height};
}
template <class T>
Rows<KyBW8> ComponentsOf(const Rows<T>& rows) noexcept {
  return {reinterpret_cast<KyBW8*>(rows.first), rows.pitch, rows.RowBytes(), rows.height};
}

}  // namespace

KY_ERRORS ShrinkRows(const Rows<KyBW8>& destination, const Rows<const KyBW8>& source) noexcept {
  return Shrink(destination, source, 1);
}
KY_ERRORS ShrinkRows(const Rows<KyC24>& destination, const Rows<const KyC24>& source) noexcept {
  return Shrink(ComponentsOf(destination), ComponentsOf(source), 3);
}

}  // namespace ky
