#include "ky/vector_segments.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "foundation/arrays.h"
#include "foundation/frame.h"
#include "vectors/line_segment.h"
#include "vectors/segment_groups.h"

namespace {

using ky::Call;
using ky::GroupsOf;
using ky::Has;
using ky::HasGroups;
using ky::kGroup;
using ky::LineSegment;
using ky::Point;
using ky::RowsOf;
using std::ptrdiff_t;

constexpr int kUse = 5;

bool InBounds(const KyGenericROI& roi, Point at) {
  return at.x >= 0 && at.x <= roi.GetWidth() && at.y >= 0 && at.y <= roi.GetHeight();
}

// A level below 255 is written as 255, any other by its low byte. This is no clamp, and is so by
// definition.
KyBW8 WrittenLevel(std::int32_t level) { return level < 255 ? 255 : static_cast<KyBW8>(level); }

}  // namespace

KY_ERRORS ImgLineSegToVect(const KyROI<KyBW8>* source, KyVector* vector, int x0, int y0, int x1,
                           int y1) noexcept {
  return Call("ImgLineSegToVect", [&] {
    if (const auto error =
            ky::CheckEnds("source", source, x0, y0, x1, y1, KY_ERROR_PARAMETER_3_OUT_OF_RANGE))
      return error;
    if (vector == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = ky::CheckImage(source, "source")) return error;
    const LineSegment line({x0, y0}, {x1, y1});
    ky::Input<KyBW8> in;
    if (!in.OpenApart(ky::RowsWithEdges(source), ky::ArrayOf(*vector)))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (const KY_ERRORS error = ky::MakeRoom(*vector, line.Count())) return error;
    const auto& rows = in.rows();
    std::int32_t* next = GroupsOf(*vector);
    ky::TraceLineSegment(line, 0, line.Count(), [&](ptrdiff_t x, ptrdiff_t y) {
      *next++ = Has(rows, {x, y}) ? rows.Row(y)[x] : 0;
      *next++ = static_cast<std::int32_t>(x);
      *next++ = static_cast<std::int32_t>(y);
    });
    vector->SetUse(kUse);
    return vector->SetNbGroup(static_cast<int>(line.Count()));
  });
}

KY_ERRORS ImgVectToLineSeg(const KyVector* vector, KyROI<KyBW8>* destination) noexcept {
  return Call("ImgVectToLineSeg", [&] {
    if (vector == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (vector->GetUse() != kUse || !HasGroups(*vector)) return KY_ERROR_VECTOR_1602;
    const std::int32_t* const groups = GroupsOf(*vector);
    if (groups == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (destination == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "destination");
    const ptrdiff_t count = vector->GetNbGroup();
    const auto at = [&](ptrdiff_t i) {
      return Point{groups[i * kGroup + 1], groups[i * kGroup + 2]};
    };
    if (count > 0 && !(InBounds(*destination, at(0)) && InBounds(*destination, at(count - 1))))
      return ky::Explain(KY_ERROR_BAD_INTERVAL,
                         "the first or last group of vector lies outside destination");
    if (const KY_ERRORS error = ky::CheckImage(destination, "destination")) return error;
    const auto rows = RowsOf(destination);
    ptrdiff_t row = count > 0 ? at(0).y : 0;
    for (ptrdiff_t i = 0; i < count; ++i) {
      const auto [x, y] = at(i);
      const ptrdiff_t before = at(std::max<ptrdiff_t>(i - 1, 0)).y;
      row += y > before ? 1 : y < before ? -1 : 0;
      const KyBW8 level = WrittenLevel(groups[i * kGroup]);
      if (x >= 0 && x < rows.width && row >= 0 && row < rows.height)
        rows.Row(row)[x] = level;
      else if (row >= INT_MIN && row <= INT_MAX)
        if (void* pixel = destination->GetRootPixelPtr(static_cast<int>(x), static_cast<int>(row)))
          *static_cast<KyBW8*>(pixel) = level;
    }
    return KY_OK;
  });
}

KY_ERRORS ImgVectToLineSeg(const KyVector* vector, int x0, int y0, int x1, int y1,
                           KyROI<KyBW8>* destination) noexcept {
  return Call("ImgVectToLineSeg", [&] {
    if (const auto error = ky::CheckEnds("destination", destination, x0, y0, x1, y1,
                                         KY_ERROR_PARAMETER_2_OUT_OF_RANGE))
      return error;
    if (vector == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    const LineSegment line({x0, y0}, {x1, y1});
    if (!HasGroups(*vector) || vector->GetNbGroup() < line.Count()) return KY_ERROR_VECTOR_1602;
    if (GroupsOf(*vector) == nullptr || destination->GetPixelPtr(0, 0) == nullptr)
      return KY_ERROR_BAD_VECTOR_TYPE;
    const auto rows = ky::RowsWithEdges(destination);
    const std::int32_t* group = GroupsOf(*vector);
    ky::TraceLineSegment(line, 0, line.Count(), [&](ptrdiff_t x, ptrdiff_t y) {
      if (Has(rows, {x, y})) rows.Row(y)[x] = WrittenLevel(*group);
      group += kGroup;
    });
    return KY_OK;
  });
}
