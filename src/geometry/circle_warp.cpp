#include <cmath>

#include "foundation/frame.h"
#include "foundation/rows.h"
#include "ky/angle.h"
#include "ky/geometry.h"

namespace {

using ky::Rows;

// Truncated, and clamped to what a table entry holds; what is not a number lies far outside.
KyBW16 ToEntry(float position) noexcept {
  if (!(position > -32768.0f)) position = -32768.0f;
  if (position > 32767.0f) position = 32767.0f;
  return static_cast<KyBW16>(static_cast<int>(position));
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

}  // namespace

KY_ERRORS ImgSetCircleWarp(float centerX, float centerY, int rows, float radius1, float radius2,
                           int columns, float startAngle, float endAngle, KyImage<KyBW16>* xTable,
                           KyImage<KyBW16>* yTable) noexcept {
  return ky::Call("ImgSetCircleWarp", [&] {
    if (rows <= 0) return KY_ERROR_PARAMETER_3_OUT_OF_RANGE;
    if (columns <= 0) return KY_ERROR_PARAMETER_6_OUT_OF_RANGE;
    if (xTable == nullptr || yTable == nullptr) return KY_ERROR_NO_IMAGE;
    // The points of each column on both circles.
    const std::ptrdiff_t n = columns;
    ky::Scratch<float> points;
    if (!points.Allocate(4 * n)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    for (KyImage<KyBW16>* table : {xTable, yTable}) {
      table->SetSize(columns, rows);
      if (const KY_ERRORS error = KyGetError()) return error;
    }

    float *const x1 = points.get(), *const y1 = x1 + n, *const x2 = y1 + n, *const y2 = x2 + n;
    const double start = KyToRadians(startAngle), end = KyToRadians(endAngle);
    const int last = columns - 1;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      const auto turned = static_cast<double>(i);
      const double theta = last == 0 ? start : ((last - turned) * start + turned * end) / last;
      const double cosine = std::cos(theta), sine = std::sin(theta);
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
