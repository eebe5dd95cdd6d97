/// @file
/// @ingroup geometry
/// Mirrors: an ROI reversed in place.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Reverses the order of the rows, in place: row y changes places with row height - 1 - y. Error:
/// `KY_ERROR_NO_IMAGE` (1400). Traces: "ImgVerticalMirror (gray-level)", "ImgVerticalMirror
/// (color)".
KY_API KY_ERRORS ImgVerticalMirror(KyROI<KyBW8>* image) noexcept;
KY_API KY_ERRORS ImgVerticalMirror(KyROI<KyC24>* image) noexcept;

/// Reverses the order of the pixels in each row, in place: column x changes places with column
/// width - 1 - x; colours stay whole. Error: `KY_ERROR_NO_IMAGE` (1400). Both leave the trace
/// "ImgHorizontalMirror (gray-level)".
KY_API KY_ERRORS ImgHorizontalMirror(KyROI<KyBW8>* image) noexcept;
KY_API KY_ERRORS ImgHorizontalMirror(KyROI<KyC24>* image) noexcept;
