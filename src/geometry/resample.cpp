#include "geometry/resample.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "geometry/affine_rows.h"

namespace ky {
namespace {

template <class T>
void Clear(T* out, std::ptrdiff_t n) noexcept {
  std::memset(static_cast<void*>(out), 0, static_cast<std::size_t>(n) * sizeof(T));
}

template <class T>
SampleKernel<T> KernelOf(const SampleKernels<T>& kernels, Interpolation interpolation) noexcept {
  switch (interpolation) {
    case Interpolation::kBilinear4: return kernels.bilinear4;
    case Interpolation::kBilinear8: return kernels.bilinear8;
    default: return kernels.nearest;
  }
}

// Places that follow each other along a row of the source.
template <class T>
void CopyPixels(T* out, std::size_t n, const Rows<const T>& source, const SourceLine& line) {
  const Position from = line.Pixel();
  std::memcpy(static_cast<void*>(out), source.Row(from.y) + from.x, n * sizeof(T));
}

// Columns to take at a time: a steep line crosses many source rows, and those of one strip of the
// destination should still be in the cache when its next row comes to them.
std::ptrdiff_t StripWidth(const InverseMap& map) noexcept {
  constexpr std::int64_t kRowsAtHand = 256, kNarrowest = 64;
  const std::int64_t steep = std::abs(std::int64_t{static_cast<std::int32_t>(map.vx)});
  if (steep == 0) return PTRDIFF_MAX;
  return std::max(kNarrowest, kRowsAtHand * kOnePixel / steep);
}

template <class T>
KY_ERRORS ResampleRows(const Rows<T>& destination, const Rows<const T>& original,
                       const InverseMap& map, Interpolation interpolation) noexcept {
  Input<T> input;
  if (!input.OpenApart(original, destination)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const Rows<const T>& source = input.rows();
  // The last column and row have no right and lower neighbours to interpolate with.
  const std::ptrdiff_t margin = interpolation == Interpolation::kNearest ? 0 : 1;
  if (map.OnPixels()) interpolation = Interpolation::kNearest;
  const bool isCopy =
      interpolation == Interpolation::kNearest && map.ux == kOnePixel && map.vx == 0;
  const SampleKernel<T> kernel =
      isCopy ? &CopyPixels<T> : KernelOf(KernelsFor(source), interpolation);
  const std::ptrdiff_t strip = StripWidth(map);
  const bool fetches = map.vx != 0 && IsWorthFetching(source);
  for (std::ptrdiff_t left = 0; left < destination.width;) {
    const std::ptrdiff_t columns = std::min(strip, destination.width - left);
    for (std::ptrdiff_t y = 0; y < destination.height; ++y) {
      T* const out = destination.Row(y) + left;
      if (fetches) {
        const SourceLine line = map.At(left, y + kFetchRows);
        FetchAhead(source, columns, [&](std::ptrdiff_t x) { return line.Advance(x).Pixel(); });
      }
      SplitLine(
          map.At(left, y), columns, source.width - margin, source.height - margin,
          [&](std::ptrdiff_t first, std::ptrdiff_t n, const SourceLine& line) {
            kernel(out + first, static_cast<std::size_t>(n), source, line);
          },
          [&](std::ptrdiff_t first, std::ptrdiff_t n) { Clear(out + first, n); });
    }
    left += columns;
  }
  return KY_OK;
}

}  // namespace

KY_ERRORS Resample(Rows<KyBW8> destination, Rows<const KyBW8> source, const InverseMap& map,
                   Interpolation interpolation) noexcept {
  return ResampleRows(destination, source, map, interpolation);
}
KY_ERRORS Resample(Rows<KyC24> destination, Rows<const KyC24> source, const InverseMap& map,
                   Interpolation interpolation) noexcept {
  return ResampleRows(destination, source, map, interpolation);
}

}  // namespace ky
