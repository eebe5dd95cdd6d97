// Where levels pass a threshold: along line segments of images, and in generic vectors.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/vector.h"

/// Which ways through a threshold count.
enum TRANS_SCAN_EDGE : int {
  TRANS_SCAN_RISING = 1,   ///< from below it to it or above
  TRANS_SCAN_FALLING = 2,  ///< from above it to it or below
  TRANS_SCAN_BOTH = 3,     ///< either
};

/// Finds where the levels along a segment pass a threshold, and records the first point on its far
/// side as groups of three integers: x, y, 1 for rising or 2 for falling. The vector gets type 4
/// and room unless it has both. The scan ends with the record that makes `maxCount`, which is then
/// not counted; a count below 1 means no limit.
///
/// Errors, in this order: 1003 for another edge, 1400 for a missing source, 1012, 1013, 1014, 1015
/// when x0, y0, x1, y1 is out of bounds, 1601 for a missing vector, 1400, 1303. Trace
/// "ImgTransitionScan".
KY_API KY_ERRORS ImgTransitionScan(TRANS_SCAN_EDGE edge, const KyROI<KyBW8>* source, int x0, int y0,
                                   int x1, int y1, int threshold, int maxCount,
                                   KyVector* transitions) noexcept;

/// Finds where the elements of a vector's first group, signed integers of any size, pass a
/// threshold either way: from threshold or below to above it, or back. Records i and v[i + 1] -
/// v[i] (modulo 2^32) as groups of two integers; `transitions` gets that structure, with room for
/// an eighth of the bytes that it had allocated or, if it had none, of half the elements; and
/// use 7.
///
/// Errors, in this order: 1601 for a missing vector or the same one twice, 1604 for a vector
/// without groups, 1605, 1606 for a data size or type of other elements, 1601 when there is room
/// for none, 1303; 1608 for more transitions than there is room for, none is counted then. Trace
/// "ImgGetVectTransition".
KY_API KY_ERRORS ImgGetVectTransition(KyVector* vector, KyVector* transitions,
                                      int threshold) noexcept;
