// Line segments of images as generic vectors, and back.
#pragma once

#include "ky/export.h"
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
