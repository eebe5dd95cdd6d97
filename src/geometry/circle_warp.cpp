#include <cstdint>
#include <utility>

#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "foundation/resize.h"
#include "foundation/rows.h"
#include "ky/angle.h"
#include "ky/geometry.h"

namespace {

using ky::Rows;

// The low 16 bits of the position, truncated toward zero and limited to 32 bits first; what is not
// a number counts as the least of these.
KyBW16 ToEntry(float position) noexcept {
  if (!(position >= -2147483648.0f)) return static_cast<KyBW16>(INT32_MIN);
  if (position >= 2147483648.0f) return static_cast<KyBW16>(INT32_MAX);
  return static_cast<KyBW16>(static_cast<std::int32_t>(position));
}

// The weights of the first and of the second radius in a row.
struct Weights {
  float t, u;
};

void FillRow(KyBW16* entries, std::ptrdiff_t n, Weights weights, const float* first,
             const float* second) noexcept {
  for (std::ptrdiff_t i = 0; i < n; ++i)
    entries[i] = ToEntry(weights.t * first[i] + weights.u * second[i]);
}

// Resizes both tables, or neither.
KY_ERRORS ResizeBoth(KyImage<KyBW16>* first, KyImage<KyBW16>* second, int columns,
                     int rows) noexcept {
  if (first == second) return ky::Resize(first, columns, rows);
  KyImage<KyBW16> former = std::move(*first);
  KY_ERRORS error = ky::Resize(first, columns, rows);
  if (error == KY_OK && former.GetMaskOffsets() != nullptr)
    error = first->SetMask(former.GetMaskOffsets(), former.GetMaskCount(), former.IsMaskAbsolute());
  if (error == KY_OK) error = ky::Resize(second, columns, rows);
  if (error == KY_OK) return KY_OK;
  *first = std::move(former);
  KyOk();  // the function's own name stands in the trace, not that of a step
  return error;
}

}  // namespace

KY_ERRORS ImgSetCircleWarp(float centerX, float centerY, int rows, float radius1, float radius2,
                           int columns, float startAngle, float endAngle, KyImage<KyBW16>* xTable,
                           KyImage<KyBW16>* yTable) noexcept {
  return ky::Call("ImgSetCircleWarp", [&] {
    if (xTable == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "xTable");
    if (yTable == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "yTable");
    if (columns < 0 || rows < 0) return KY_ERROR_NOT_ENOUGH_MEMORY;
    // The points of each column on both circles.
    const std::ptrdiff_t n = columns;
    ky::Scratch<float> points;
    if (!points.Allocate(4 * n)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (const KY_ERRORS error = ResizeBoth(xTable, yTable, columns, rows)) return error;
    if (columns == 0 || rows == 0) return KY_OK;

    float *const x1 = points.get(), *const y1 = x1 + n, *const x2 = y1 + n, *const y2 = x2 + n;
    const double start = KyToRadians(startAngle), end = KyToRadians(endAngle);
    const int last = columns - 1;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      const auto turned = static_cast<double>(i);
      const double theta = last == 0 ? start : ((last - turned) * start + turned * end) / last;
      const double cosine = ky::Cos(theta), sine = ky::Sin(theta);
      x1[i] = static_cast<float>(cosine * radius1 + centerX);
      y1[i] = static_cast<float>(sine * radius1 + centerY);
      x2[i] = static_cast<float>(cosine * radius2 + centerX);
      y2[i] = static_cast<float>(sine * radius2 + centerY);
    }
    const Rows<KyBW16> xs = ky::RowsOf<KyBW16>(xTable), ys = ky::RowsOf<KyBW16>(yTable);
    const float step = rows == 1 ? 0.0f : static_cast<float>(1.0 / (rows - 1));
    Weights weights = {0.0f, 1.0f};
    for (std::ptrdiff_t j = 0; j < rows; ++j) {
      FillRow(xs.Row(j), n, weights, x1, x2);
      FillRow(ys.Row(j), n, weights, y1, y2);
      weights.t += step;
      weights.u -= step;
    }
    return KY_OK;
  });
}
