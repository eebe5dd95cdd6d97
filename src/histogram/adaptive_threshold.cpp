#include <algorithm>
#include <climits>
#include <cstdint>

#include "foundation/frame.h"
#include "foundation/kernels/choose_threshold.h"
#include "foundation/resize.h"
#include "ky/auto_threshold.h"
#include "ky/geometry.h"
#include "ky/image.h"

namespace {

// ceil(length / tile), the quotient in single precision.
std::int64_t Steps(int length, int tile) noexcept {
  const float quotient = static_cast<float>(length) / static_cast<float>(tile);
  const std::int64_t whole = static_cast<std::int64_t>(quotient);
  return whole + (static_cast<float>(whole) < quotient ? 1 : 0);
}

// The stretch of a tile around node `index` of `steps`.
struct Stretch {
  int start, length;
};
Stretch StretchAt(int index, int steps, int length, int tile) noexcept {
  const std::int64_t center = std::int64_t{index} * length / steps;
  const std::int64_t start = std::max<std::int64_t>(0, center - tile / 2);
  const std::int64_t end = std::min<std::int64_t>(length, center + tile / 2);
  return {static_cast<int>(start), static_cast<int>(end - start)};
}

// The isodata threshold of a tile. That of a small one, of which there are many, follows from its
// pixels: the histogram would cost more than all of them.
int ThresholdOf(const KyROI<KyBW8>* tile) noexcept {
  constexpr std::ptrdiff_t kFewPixels = 32;
  const ky::Rows<const KyBW8> rows = ky::RowsOf(tile);
  if (rows.width * rows.height <= kFewPixels) {
    KyBW8 pixels[kFewPixels];
    for (std::ptrdiff_t y = 0; y < rows.height; ++y)
      std::copy_n(rows.Row(y), rows.width, pixels + y * rows.width);
    return ky::IsodataLevel(pixels, rows.width * rows.height);
  }
  ky::Counts counts;
  ky::CountLevels(tile, counts);
  return ky::IsodataLevel(counts, {});
}

// The isodata thresholds of the tiles around all nodes.
void FillNodes(const KyROI<KyBW8>* source, int tileWidth, int tileHeight,
               KyImage<KyBW8>& nodes) noexcept {
  const ky::Rows<KyBW8> out = ky::RowsOf(&nodes);
  const int nx = nodes.GetWidth() - 1, ny = nodes.GetHeight() - 1;
  KyROI<KyBW8> tile(source, 0, 0, 0, 0);
  for (int j = 0; j <= ny; ++j) {
    const Stretch rows = StretchAt(j, ny, source->GetHeight(), tileHeight);
    for (int i = 0; i <= nx; ++i) {
      const Stretch columns = StretchAt(i, nx, source->GetWidth(), tileWidth);
      tile.SetPlacement(columns.start, rows.start, columns.length, rows.length);
      out.Row(j)[i] = static_cast<KyBW8>(ThresholdOf(&tile));
    }
  }
}

// Gives the destination a size; one that cannot have it keeps its own.
KY_ERRORS FitDestination(KyROI<KyBW8>* destination, int width, int height) noexcept {
  const int oldWidth = destination->GetWidth(), oldHeight = destination->GetHeight();
  if (oldWidth == width && oldHeight == height) return KY_OK;
  KyOk();
  destination->SetSize(width, height);
  if (const KY_ERRORS error = KyGetError()) return error;
  const KY_ERRORS error = ky::CheckImage(destination, "destination");
  if (error != KY_OK) destination->SetSize(oldWidth, oldHeight);
  return error;
}

}  // namespace

KY_ERRORS ImgAutoAdaptiveThreshold(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   IMG_THRESHOLD_MODES, int tileWidth, int tileHeight) noexcept {
  return ky::Call("ImgAutoAdaptiveThreshold", [&] {
    if (const KY_ERRORS error = ky::CheckImage(source, "source")) return error;
    if (const KY_ERRORS error = ky::CheckImage(destination, "destination")) return error;
    if (tileHeight == 0) tileHeight = tileWidth;
    if (tileWidth < 1) return ky::OutOfRange(KY_ERROR_PARAMETER_4_OUT_OF_RANGE, "tileWidth");
    if (tileHeight < 1) return ky::OutOfRange(KY_ERROR_PARAMETER_5_OUT_OF_RANGE, "tileHeight");
    const int width = source->GetWidth(), height = source->GetHeight();
    if (width == 0 || height == 0) return KY_OK;
    const std::int64_t nx = Steps(width, tileWidth), ny = Steps(height, tileHeight);
    if (std::max(nx, ny) >= INT_MAX) return KY_ERROR_NOT_ENOUGH_MEMORY;
    KyImage<KyBW8> nodes;
    if (const KY_ERRORS error =
            ky::Resize(&nodes, static_cast<int>(nx + 1), static_cast<int>(ny + 1)))
      return error;
    FillNodes(source, tileWidth, tileHeight, nodes);
    // The source may lie on the destination's own pixels: it is not read any more from here on.
    if (const KY_ERRORS error = FitDestination(destination, width, height)) return error;
    return ImgScaleRotate(
        &nodes, 0.0f, 0.0f, 0.0f, 0.0f, static_cast<float>(width) / static_cast<float>(nx),
        static_cast<float>(height) / static_cast<float>(ny), 0.0f, destination, 8);
  });
}
