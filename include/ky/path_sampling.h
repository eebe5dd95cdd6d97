/// @file
/// @ingroup paths
/// Pixels along paths and line segments, into vectors and back.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/records.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/typed_vector.h"

/// Reads the pixel at the place of every path element into that element, or writes the value of
/// every element to its pixel, in order, so that the last element at a place wins. Elements outside
/// the ROI are skipped, and the call then returns `KY_ERROR_PATH_STOPPED` (106) after all others
/// have been processed.
///
/// Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400); `KY_ERROR_BAD_VECTOR_TYPE` (1601) for
/// a null path; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) for a source in the memory of the path, which
/// is copied first; `KY_ERROR_PATH_STOPPED` (106), which leaves no trace. Traces:
/// "ImgImageToPath (BW8)", "ImgImageToPath (C24)", "ImgPathToImage (BW8)", "ImgPathToImage (C24)".
KY_API KY_ERRORS ImgImageToPath(const KyROI<KyBW8>* source, KyBW8PathVector* path) noexcept;
KY_API KY_ERRORS ImgImageToPath(const KyROI<KyC24>* source, KyC24PathVector* path) noexcept;
KY_API KY_ERRORS ImgPathToImage(KyROI<KyBW8>* destination, const KyBW8PathVector* path) noexcept;
KY_API KY_ERRORS ImgPathToImage(KyROI<KyC24>* destination, const KyC24PathVector* path) noexcept;

/// Draws a path of bare positions, such as ImgContour finds, in one level or colour. Elements
/// outside the ROI are skipped, and errors are as above. Traces: "ImgPathToImage (BW8, const)",
/// "ImgPathToImage (C24, const)".
KY_API KY_ERRORS ImgPathToImage(KyROI<KyBW8>* destination, const KyPathVector* path,
                                KyBW8 level) noexcept;
KY_API KY_ERRORS ImgPathToImage(KyROI<KyC24>* destination, const KyPathVector* path,
                                KyC24 color) noexcept;

/// Line segments run from (x0, y0) to (x1, y1), both included, through max(|x1 - x0|, |y1 - y0|) +
/// 1 points, each a neighbour of the previous one (Bresenham). Let `major` be the greater and
/// `minor` the smaller of the two differences, the one of the columns being `major` when they are
/// equal. Then point i lies
///
///     i steps along the major axis, (major / 2 + i minor) / major steps along the other
///
/// from (x0, y0), where divisions truncate. Both ends lie inside the ROI: 0 <= x < width, 0 <= y <
/// height.

/// Writes the pixels of a segment to a vector, in order. The vector gets room for exactly that many
/// elements.
///
/// Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400); `KY_ERROR_PARAMETER_3_OUT_OF_RANGE`
/// (1013), `KY_ERROR_PARAMETER_4_OUT_OF_RANGE` (1014), `KY_ERROR_PARAMETER_5_OUT_OF_RANGE` (1015),
/// `KY_ERROR_PARAMETER_6_OUT_OF_RANGE` (1016) when x0, y0, x1, y1 lies outside;
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).
/// Traces: "ImgImageToLineSegment (BW8)", "... (C24)", "... (BW16)".
KY_API KY_ERRORS ImgImageToLineSegment(const KyROI<KyBW8>* source, KyBW8Vector* levels, int x0,
                                       int y0, int x1, int y1) noexcept;
KY_API KY_ERRORS ImgImageToLineSegment(const KyROI<KyC24>* source, KyC24Vector* colors, int x0,
                                       int y0, int x1, int y1) noexcept;
KY_API KY_ERRORS ImgImageToLineSegment(const KyROI<KyBW16>* source, KyBW16Vector* levels, int x0,
                                       int y0, int x1, int y1) noexcept;

/// Writes the elements of a vector, or a constant, to the pixels of a segment.
///
/// Errors: those of ImgImageToLineSegment without `KY_ERROR_NOT_ENOUGH_MEMORY` (1303), and
/// `KY_ERROR_NOT_256_ENTRIES` (1613) when the vector does not have exactly one element for each
/// point. Traces: "ImgLineSegmentToImage (BW8, vector)", "... (BW8, const)", "... (C24, vector)",
/// "... (C24, const)".
KY_API KY_ERRORS ImgLineSegmentToImage(KyROI<KyBW8>* destination, const KyBW8Vector* levels, int x0,
                                       int y0, int x1, int y1) noexcept;
KY_API KY_ERRORS ImgLineSegmentToImage(KyROI<KyBW8>* destination, KyBW8 level, int x0, int y0,
                                       int x1, int y1) noexcept;
KY_API KY_ERRORS ImgLineSegmentToImage(KyROI<KyC24>* destination, const KyC24Vector* colors, int x0,
                                       int y0, int x1, int y1) noexcept;
KY_API KY_ERRORS ImgLineSegmentToImage(KyROI<KyC24>* destination, KyC24 color, int x0, int y0,
                                       int x1, int y1) noexcept;
