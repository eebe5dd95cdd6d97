// Line segments whose ends may lie just past an ROI, and the groups of generic vectors that hold
// their points.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>

#include "foundation/point.h"
#include "foundation/rows.h"
#include "ky/vector.h"

namespace ky {

inline constexpr int kSegmentType = 4, kGroup = 3;
inline constexpr int kGroupBytes = kGroup * static_cast<int>(sizeof(std::int32_t));

// The checks of both ends, whose codes go up by one from `code`.
inline KY_ERRORS CheckEnds(const char* name, const KyGenericROI* roi, int x0, int y0, int x1,
                           int y1, KY_ERRORS code) noexcept {
  if (roi == nullptr) return Explain(KY_ERROR_NO_IMAGE, name);
  const int values[] = {x0, y0, x1, y1};
  constexpr const char* kNames[] = {"x0", "y0", "x1", "y1"};
  for (int i = 0; i < 4; ++i)
    if (values[i] < 0 || values[i] > (i % 2 == 0 ? roi->GetWidth() : roi->GetHeight()))
      return OutOfRange(static_cast<KY_ERRORS>(code + i), kNames[i]);
  return KY_OK;
}

// The rows of an ROI, with the column past it and the row below it where the root image owns these.
template <class Roi>
auto RowsWithEdges(Roi* roi) noexcept {
  auto rows = RowsOf(roi);
  if (roi->GetRootPixelPtr(roi->GetWidth(), 0) != nullptr) ++rows.width;
  if (roi->GetRootPixelPtr(0, roi->GetHeight()) != nullptr) ++rows.height;
  return rows;
}

// Points that are in bounds can leave the rows on two sides only.
template <class T>
bool Has(const Rows<T>& rows, Point at) noexcept {
  return at.x < rows.width && at.y < rows.height;
}

inline bool HasGroups(const KyVector& vector) noexcept {
  return vector.IsSameVectType(kSegmentType) && vector.GetGroupLength() == kGroup;
}
inline std::int32_t* GroupsOf(const KyVector& vector) noexcept {
  return static_cast<std::int32_t*>(vector.GetDataPtr());
}
inline KY_ERRORS MakeRoom(KyVector& vector, std::ptrdiff_t groups) noexcept {
  if (HasGroups(vector) && vector.GetAllocatedSize() >= groups * kGroupBytes) return KY_OK;
  if (groups > INT_MAX) return KY_ERROR_NOT_ENOUGH_MEMORY;
  return vector.SetType(kSegmentType, static_cast<int>(groups), kGroup);
}

}  // namespace ky
