/// @file
/// @ingroup vectors
/// Line segments of images as generic vectors, and back.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/vector.h"

/// Segments of generic vectors go through the same points as those of path_sampling.h, but their
/// ends may lie in the column just past the ROI and in the row just below it: 0 <= x <= width, 0 <=
/// y <= height. A position outside the ROI is read and written when it is a pixel of the root
/// image, or of the spare row below that; otherwise it is read as 0, and what is written to it is
/// dropped.

/// Writes the points of a segment to a vector as groups of three integers: level, x, y. The vector
/// gets type 4 and room for the points unless it has both, and use 5.
///
/// Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400) for a null source;
/// `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013), `KY_ERROR_PARAMETER_4_OUT_OF_RANGE` (1014),
/// `KY_ERROR_PARAMETER_5_OUT_OF_RANGE` (1015), `KY_ERROR_PARAMETER_6_OUT_OF_RANGE` (1016) when x0,
/// y0, x1, y1 is out of bounds; `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector;
/// `KY_ERROR_NO_IMAGE` (1400) for a source without pixels; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).
/// Trace: "ImgLineSegToVect".
KY_API KY_ERRORS ImgLineSegToVect(const KyROI<KyBW8>* source, KyVector* vector, int x0, int y0,
                                  int x1, int y1) noexcept;

/// Writes the groups of such a vector back to where they come from: 255 for a level below 255,
/// otherwise the low byte of the level. Column x is taken from the group; the row is that of the
/// first group, and moves up or down by one where y is smaller or greater than that of the group
/// before. From a vector without groups no pixel is written.
///
/// Errors, checked in this order: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector;
/// `KY_ERROR_VECTOR_1602` (1602) unless it has use 5 and type 4 in groups of three;
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) when it has no data; `KY_ERROR_NO_IMAGE` (1400) for a null
/// destination; `KY_ERROR_BAD_INTERVAL` (1007) when the first or the last group is out of bounds;
/// `KY_ERROR_NO_IMAGE` (1400) for a destination without pixels. Trace: "ImgVectToLineSeg".
KY_API KY_ERRORS ImgVectToLineSeg(const KyVector* vector, KyROI<KyBW8>* destination) noexcept;

/// Writes the levels of a vector of type 4 likewise, but to the points of a segment; the positions
/// in the groups are ignored.
///
/// Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400) for a null destination;
/// `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012), `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013),
/// `KY_ERROR_PARAMETER_4_OUT_OF_RANGE` (1014), `KY_ERROR_PARAMETER_5_OUT_OF_RANGE` (1015) when x0,
/// y0, x1, y1 is out of bounds; `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector;
/// `KY_ERROR_VECTOR_1602` (1602) unless it has type 4 in groups of three, and at least as many
/// groups as there are points; `KY_ERROR_BAD_VECTOR_TYPE` (1601) when it has no data or the
/// destination has no pixels. Trace: "ImgVectToLineSeg".
KY_API KY_ERRORS ImgVectToLineSeg(const KyVector* vector, int x0, int y0, int x1, int y1,
                                  KyROI<KyBW8>* destination) noexcept;
