// Pixels along paths and line segments, into vectors and back.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/records.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/typed_vector.h"

/// Reads the pixel at every element of a path into that element, respectively writes every
/// element's value to its pixel, in order, so that the last element at a place wins. Elements
/// outside the ROI are passed over, and 106 is returned in the end.
///
/// Errors: 1400, 1601 for a missing path, with the traces "ImgImageToPath (BW8)", "ImgImageToPath
/// (C24)", "ImgPathToImage (BW8)", "ImgPathToImage (C24)"; 106 leaves no trace.
KY_API KY_ERRORS ImgImageToPath(const KyROI<KyBW8>* source, KyBW8PathVector* path) noexcept;
KY_API KY_ERRORS ImgImageToPath(const KyROI<KyC24>* source, KyC24PathVector* path) noexcept;
KY_API KY_ERRORS ImgPathToImage(KyROI<KyBW8>* destination, KyBW8PathVector* path) noexcept;
KY_API KY_ERRORS ImgPathToImage(KyROI<KyC24>* destination, KyC24PathVector* path) noexcept;

/// Line segments run from (x0, y0) to (x1, y1), both included, through max(|x1 - x0|, |y1 - y0|) +
/// 1 points, each a neighbour of the one before (Bresenham). With `major` the greater and `minor`
/// the smaller of the two differences, the columns' being the major one of equals, point i lies
///
///     i steps along the major axis, (major / 2 + i minor) / major steps along the other
///
/// from (x0, y0), the divisions truncated. Both ends lie inside the ROI: 0 <= x < width, 0 <= y <
/// height.

/// The pixels of a segment in order. The vector gets room for exactly that many elements.
///
/// Errors, in this order: 1400; 1013, 1014, 1015, 1016 when x0, y0, x1, y1 lies outside; 1601 for a
/// missing vector; 1303. Traces "ImgImageToLineSegment (BW8)", "... (C24)", "... (BW16)".
KY_API KY_ERRORS ImgImageToLineSegment(const KyROI<KyBW8>* source, KyBW8Vector* levels, int x0,
                                       int y0, int x1, int y1) noexcept;
KY_API KY_ERRORS ImgImageToLineSegment(const KyROI<KyC24>* source, KyC24Vector* colors, int x0,
                                       int y0, int x1, int y1) noexcept;
KY_API KY_ERRORS ImgImageToLineSegment(const KyROI<KyBW16>* source, KyBW16Vector* levels, int x0,
                                       int y0, int x1, int y1) noexcept;

/// Writes the elements of a vector, or a constant, to the pixels of a segment.
///
/// Errors: as above, without 1303; 1613 when the vector has not exactly one element a point. Traces
/// "ImgLineSegmentToImage (BW8, vector)", "... (BW8, const)", "... (C24, vector)", "... (C24,
/// const)".
KY_API KY_ERRORS ImgLineSegmentToImage(KyROI<KyBW8>* destination, KyBW8Vector* levels, int x0,
                                       int y0, int x1, int y1) noexcept;
KY_API KY_ERRORS ImgLineSegmentToImage(KyROI<KyBW8>* destination, KyBW8 level, int x0, int y0,
                                       int x1, int y1) noexcept;
KY_API KY_ERRORS ImgLineSegmentToImage(KyROI<KyC24>* destination, KyC24Vector* colors, int x0,
                                       int y0, int x1, int y1) noexcept;
KY_API KY_ERRORS ImgLineSegmentToImage(KyROI<KyC24>* destination, KyC24 color, int x0, int y0,
                                       int x1, int y1) noexcept;
