// What the statistics of whole images share.
#pragma once

#include <algorithm>
#include <cstdint>

#include "foundation/frame.h"
#include "foundation/reduce.h"

namespace ky {

// Rows without gaps as one row, where a kernel may add up so many of them; otherwise as they are.
template <class T>
Rows<const T> Joined(const Rows<const T>& rows) noexcept {
  return rows.Joined() && rows.width * rows.height <= INT32_MAX ? rows.AsOneRow() : rows;
}

inline constexpr const char* kNoColumnsOrRows = "an ROI of no columns or rows has no statistics";
inline constexpr RoiNames kPair = {{"a", "b"}, "a and b differ in size"};

// KY_ERROR_NO_PIXELS (1051) for rows without elements.
template <class T>
KY_ERRORS CheckPixels(const Rows<const T>& rows) noexcept {
  return rows.Empty() ? Explain(KY_ERROR_NO_PIXELS, kNoColumnsOrRows) : KY_OK;
}
template <class Roi, class T>
KY_ERRORS OpenSome(const Roi* roi, Rows<const T>& rows) noexcept {
  const KY_ERRORS error = Open(roi, rows);
  return error != KY_OK ? error : CheckPixels(rows);
}
// The same of two ROIs of one size.
template <class RoiA, class A, class RoiB, class B>
KY_ERRORS OpenSome(const RoiNames& names, const RoiA* a, Rows<const A>& inA, const RoiB* b,
                   Rows<const B>& inB) noexcept {
  const KY_ERRORS error = OpenAll(names, a, inA, b, inB);
  return error != KY_OK ? error : CheckPixels(inA);
}

// take(kernel of the elements of both rows y) for all rows, joined where both are.
template <class A, class B, class Kernel, class Take>
void ReducePairs(Kernel kernel, const Rows<const A>& a, const Rows<const B>& b,
                 Take&& take) noexcept {
  const bool join = Joined(a).height == 1 && Joined(b).height == 1;
  const Rows<const A> rowsA = join ? a.AsOneRow() : a;
  const Rows<const B> rowsB = join ? b.AsOneRow() : b;
  for (std::ptrdiff_t y = 0; y < rowsA.height; ++y)
    take(kernel(rowsA.Row(y), rowsB.Row(y), static_cast<std::size_t>(rowsA.width)));
}

// A count as far as 32 bits can hold it.
inline KyBW32 LimitedCount(std::uint64_t count) noexcept {
  return static_cast<KyBW32>(std::min<std::uint64_t>(count, UINT32_MAX));
}

}  // namespace ky
