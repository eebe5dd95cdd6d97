// Generic vectors: line segments, transitions, arithmetic.
#pragma once

#include "ky/export.h"
#include "ky/operators.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/vector.h"

/// Segments in this file go through the same points as those of path_sampling.h, but their ends may
/// lie in the column just past the ROI and in the row just below it: 0 <= x <= width, 0 <= y <=
/// height. A position outside the ROI is read and written when it is a pixel of the root image, or
/// of the spare row below that; otherwise it is read as 0, and what is written to it is dropped.

/// The points of a segment as groups of three integers: level, x, y. The vector gets type 4 and
/// room for them unless it has both, and use 5.
///
/// Errors, in this order: 1400 for a missing source, 1013, 1014, 1015, 1016 when x0, y0, x1, y1 is
/// out of bounds, 1601 for a missing vector, 1400, 1303. Trace "ImgLineSegToVect".
KY_API KY_ERRORS ImgLineSegToVect(const KyROI<KyBW8>* source, KyVector* vector, int x0, int y0,
                                  int x1, int y1) noexcept;

/// Writes the groups of such a vector to where they come from: 255 for a level below 255, else the
/// low byte of the level. Column x is taken from the group; the row is that of the first group, and
/// moves up or down by one where y is smaller or greater than that of the group before. No groups,
/// no pixels.
///
/// Errors, in this order: 1601 for a missing vector; 1602 when it has not use 5 and type 4 in
/// groups of three; 1601 when it has no data; 1400 for a missing destination; 1007 when the first
/// or the last group is out of bounds; 1400. Trace "ImgVectToLineSeg".
KY_API KY_ERRORS ImgVectToLineSeg(KyVector* vector, KyROI<KyBW8>* destination) noexcept;

/// Writes the levels of a vector of type 4, likewise, to the points of a segment; where the groups
/// say they lie does not matter.
///
/// Errors, in this order: 1400 for a missing destination, 1012, 1013, 1014, 1015 when x0, y0, x1,
/// y1 is out of bounds, 1601 for a missing vector, 1602 when it has not type 4 in groups of three
/// or fewer groups than points, 1601 when it has no data or the destination no pixels. Trace
/// "ImgVectToLineSeg".
KY_API KY_ERRORS ImgVectToLineSeg(KyVector* vector, int x0, int y0, int x1, int y1,
                                  KyROI<KyBW8>* destination) noexcept;

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

/// Combines the elements a number `first` to `last`, both included, of a vector's groups in use
/// with a constant b and puts the results into a second vector at the same places. The operations
/// are 0 to 30 and 33 of ImgOper, with the greatest value of the elements' type in place of 255 and
/// one more in place of 256; results are limited to the type, but for the shifts and 29 and 30,
/// which wrap. Divisions truncate. The constant is taken modulo the size of the elements. The
/// second vector may be the first. One without data gets the structure of the first; its groups in
/// use reach at least to the last result.
///
/// Errors, in this order: 1003 for another operation, 1601 for a missing vector, 1605, 1606 for a
/// data size or type of no integers, 1602 when the second vector has others, 1010 unless 0 <= first
/// <= last and both vectors reach that far, 1303. Trace "ImgVect1c2".
KY_API KY_ERRORS ImgVect1c2(ARITH_LOGIC_OPERATIONS operation, KyVector* vector, int constant,
                            KyVector* result, int first, int last) noexcept;

/// There are no operations with floating-point constants: 1601 for a missing vector, 1605 for one
/// of floating-point elements (data type 4), 1606 for any other. Trace "ImgVect1c2".
KY_API KY_ERRORS ImgVect1c2(ARITH_LOGIC_OPERATIONS operation, KyVector* vector, double constant,
                            KyVector* result) noexcept;
