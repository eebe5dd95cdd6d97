/// @file
/// @ingroup levels
/// Grey-level transforms.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// The law f of a transform, for levels t = level / 255 of 0 to 1 and a parameter p above 0. All of
/// them map 0 to 0 and 1 to 1, but for the inversion, which exchanges the two.
enum IMG_TRANSFORM_MODES : int {
  IMG_TRANSFORM_INVERT,       ///< 1 - t; ignores p
  IMG_TRANSFORM_POWER,        ///< t^p: darkens for p above 1, brightens below
  IMG_TRANSFORM_LOGARITHM,    ///< ln(1 + p t) / ln(1 + p): spreads dark levels
  IMG_TRANSFORM_EXPONENTIAL,  ///< (e^(p t) - 1) / (e^p - 1): spreads bright levels
  /// (s(t) - s(0)) / (s(1) - s(0)), s(t) = 1 / (1 + e^(-p (t - 1/2))): spreads medium levels
  IMG_TRANSFORM_SIGMOID,
};

/// Changes the levels, of colours those of each component: a level becomes
/// floor(255 f(level / 255) + 1/2), computed in double precision. Source and destination may be the
/// same rectangle; a source that overlaps the destination otherwise is copied first. Errors,
/// checked in this order before the destination is written: `KY_ERROR_NO_IMAGE` (1400) for an ROI
/// without pixels, `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes,
/// `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for another mode, `KY_ERROR_PARAMETER_2_OUT_OF_RANGE`
/// (1012) for a parameter that is not finite and above 0, and for an exponential with one above
/// 700, then `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Traces: "ImgTransform (BW8)", "ImgTransform
/// (C24)".
KY_API KY_ERRORS ImgTransform(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                              IMG_TRANSFORM_MODES mode, float parameter = 1) noexcept;
KY_API KY_ERRORS ImgTransform(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                              IMG_TRANSFORM_MODES mode, float parameter = 1) noexcept;
