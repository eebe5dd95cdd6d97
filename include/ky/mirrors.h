// Mirrors: an ROI reversed in place.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Reverses the order of the rows, in place: row y changes places with row height - 1 - y. Errors:
/// 1400. Traces "ImgVerticalMirror (gray-level)" and "ImgVerticalMirror (color)".
KY_API KY_ERRORS ImgVerticalMirror(KyROI<KyBW8>* image) noexcept;
KY_API KY_ERRORS ImgVerticalMirror(KyROI<KyC24>* image) noexcept;

/// Reverses the order of the pixels in each row, in place: column x changes places with column
/// width - 1 - x; colours stay whole. Errors: 1400. Trace of both "ImgHorizontalMirror
/// (gray-level)".
KY_API KY_ERRORS ImgHorizontalMirror(KyROI<KyBW8>* image) noexcept;
KY_API KY_ERRORS ImgHorizontalMirror(KyROI<KyC24>* image) noexcept;
