/// @file
/// @ingroup frames
/// Interlaced images: the even rows are one frame, the odd rows another, exposed at another time.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// An interlaced image holds two interlaced frames, the even rows and the odd rows, which were
/// exposed at different times. The functions split, merge, compare and repair them by whole rows; W
/// and H are the width and height of the interlaced image. A source that overlaps the destination
/// without being in place is read before anything is written, through a copy. Errors, checked in
/// this order before anything is written: those that a function names; `KY_ERROR_NO_IMAGE` (1400)
/// for an ROI without pixels; `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes;
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).

/// Copies one frame out of an interlaced image: destination(x, r / 2) = source(x, r) for r = f, f +
/// 2, ... below H, where f is 0 for frame 0 and 1 for any other. The destination has W columns and
/// (H + f) / 2 rows; otherwise the call fails with `KY_ERROR_SIZE_MISMATCH` (1403). For an odd H
/// and frame 0 the destination therefore lacks the last row of the frame, which lands just below
/// it: **outside the ROI**, the row is written where the destination's root image or its spare row
/// has it, and dropped elsewhere. For an odd H and frame 1 the last row of the destination stays as
/// it was. Trace: "ImgGetFrame (KyBW8)".
KY_API KY_ERRORS ImgGetFrame(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                             int frame) noexcept;

/// Copies one frame into an interlaced image, the inverse of ImgGetFrame: destination(x, r) =
/// source(x, r / 2) for the same rows r; the others stay as they were. The source has W columns and
/// (H + f) / 2 rows; otherwise the call fails with `KY_ERROR_SIZE_MISMATCH` (1403). For an odd H
/// and frame 0 the row just below the source is needed too: it is read where the source's root
/// image or its spare row has it, and is 0 elsewhere. Trace: "ImgSetFrame (KyBW8)".
KY_API KY_ERRORS ImgSetFrame(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                             int frame) noexcept;

/// Moves the rows of the frame opposite to the one named (the odd rows for an even `frame`, the
/// even rows for an odd one) by `shift` columns to the right: destination(x, r) = source(x - shift,
/// r), and the nearest end of the source's row where x - shift lies outside. The other rows stay as
/// they were. Works in place. Traces: "ImgRealignFrame (KyBW8)", "ImgRealignFrame (KyC24)".
KY_API KY_ERRORS ImgRealignFrame(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, int shift,
                                 int frame) noexcept;
KY_API KY_ERRORS ImgRealignFrame(const KyROI<KyC24>* source, KyROI<KyC24>* destination, int shift,
                                 int frame) noexcept;

/// Finds the shift between two neighbouring rows. It is the lowest offset o in minimum..maximum
/// with the least
///
///     sum over x of (roi(x, line) - roi(x - o, line + 1))^2     (components added up)
///
/// modulo 2^32, over the same columns for every o: x from max(maximum, 0) to W + min(minimum, 0) -
/// 1. An offset whose sum is 2^32 - 1 is never found; if there is no other, the result is
/// `minimum`. ImgRealignFrame of the frame of `line` by the offset found brings the rows into line.
/// Errors: `KY_ERROR_NO_IMAGE` (1400); `KY_ERROR_BAD_INTERVAL` (1007) when minimum > maximum or W <
/// maximum - minimum; `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) unless line >= 0 and line + 1 < H.
/// `bestOffset` is written on success only. Traces: "ImgMatchFrames (KyBW8)", "ImgMatchFrames
/// (KyC24)".
KY_API KY_ERRORS ImgMatchFrames(const KyROI<KyBW8>* roi, int line, int minimum, int maximum,
                                int& bestOffset) noexcept;
KY_API KY_ERRORS ImgMatchFrames(const KyROI<KyC24>* roi, int line, int minimum, int maximum,
                                int& bestOffset) noexcept;

/// Recomputes the rows of the frame opposite to the one named (see ImgRealignFrame) from their
/// neighbours: destination(x, r) = (source(x, r - 1) + source(x, r + 1)) / 2, rounded down. A
/// neighbour that the source does not have is replaced by the other, and a row without neighbours
/// is copied. The other rows stay as they were. Works in place. Traces: "ImgRebuildFrame (KyBW8)",
/// "ImgRebuildFrame (KyC24)".
KY_API KY_ERRORS ImgRebuildFrame(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                 int frame) noexcept;
KY_API KY_ERRORS ImgRebuildFrame(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                 int frame) noexcept;

/// Exchanges the frames: rows 2k and 2k + 1 of the destination are rows 2k + 1 and 2k of the
/// source. The last row of an odd height stays as it was. Works in place. Traces: "ImgSwapFrames
/// (KyBW8)", "ImgSwapFrames (KyC24)".
KY_API KY_ERRORS ImgSwapFrames(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgSwapFrames(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
