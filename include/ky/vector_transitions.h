/// @file
/// @ingroup vectors
/// Where levels pass a threshold: along line segments of images, and in generic vectors.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/vector.h"

/// Which transitions through a threshold count.
enum TRANS_SCAN_EDGE : int {
  TRANS_SCAN_RISING = 1,   ///< from below it to it or above
  TRANS_SCAN_FALLING = 2,  ///< from above it to it or below
  TRANS_SCAN_BOTH = 3,     ///< either
};

/// Finds where the levels along a segment pass a threshold, and records the first point on its far
/// side as a group of three integers: x, y, and 1 for rising or 2 for falling. The vector gets type
/// 4 and room unless it has both. The scan ends with record number `maxCount`, which is written but
/// not counted; a count below 1 means no limit.
///
/// Errors, checked in this order: `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for an edge that is not
/// in the enumeration; `KY_ERROR_NO_IMAGE` (1400) for a null source;
/// `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012), `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013),
/// `KY_ERROR_PARAMETER_4_OUT_OF_RANGE` (1014), `KY_ERROR_PARAMETER_5_OUT_OF_RANGE` (1015) when x0,
/// y0, x1, y1 is out of bounds; `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector;
/// `KY_ERROR_NO_IMAGE` (1400) for a source without pixels; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).
/// Trace: "ImgTransitionScan".
KY_API KY_ERRORS ImgTransitionScan(TRANS_SCAN_EDGE edge, const KyROI<KyBW8>* source, int x0, int y0,
                                   int x1, int y1, int threshold, int maxCount,
                                   KyVector* transitions) noexcept;

/// Finds where the elements of a vector's first group, integers of any size, pass a threshold
/// either way: from the threshold or below to above it, or back. Records i and v[i + 1] - v[i]
/// (modulo 2^32) as groups of two integers. `transitions` gets use 7 and that structure, with room
/// for one group for every 8 bytes that it had allocated or, if it had none, for every 16 elements
/// of the first group.
///
/// Errors, checked in this order: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector or the same
/// one twice; `KY_ERROR_VECTOR_1604` (1604) for a vector without groups;
/// `KY_ERROR_VECTOR_DATA_TYPE` (1605) and `KY_ERROR_VECTOR_1606` (1606) for a data size and a data
/// type that are not those of signed integers or, with an unsigned threshold, of unsigned integers;
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) when there is room for no transition;
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303); `KY_ERROR_VECTOR_1608` (1608) when there are more
/// transitions than there is room for, of which none is counted then. Trace:
/// "ImgGetVectTransition".
KY_API KY_ERRORS ImgGetVectTransition(const KyVector* vector, KyVector* transitions,
                                      int threshold) noexcept;
KY_API KY_ERRORS ImgGetVectTransition(const KyVector* vector, KyVector* transitions,
                                      unsigned int threshold) noexcept;
