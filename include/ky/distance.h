/// @file
/// @ingroup distance
/// Distance transforms.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// How the distance of two pixels that are i columns and j rows apart is measured.
enum IMG_DISTANCE_MODES : int {
  IMG_DISTANCE_EUCLIDEAN,   ///< sqrt(i^2 + j^2)
  IMG_DISTANCE_CITY_BLOCK,  ///< |i| + |j|
  IMG_DISTANCE_CHESSBOARD   ///< max(|i|, |j|)
};

/// A distance transform gives every pixel that is not 0 its distance d from the nearest pixel of
/// the ROI that is 0, and 0 to the others.
///
/// - What lies outside the ROI is no pixel: the border is not at a distance of its own.
/// - The time is proportional to the number of pixels, whatever they are.
/// - A destination that shares memory with the source is written as if the source were a copy.
/// - Errors, which leave the destination as it was: `KY_ERROR_NO_IMAGE` (1400) for an ROI without
///   pixels; `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes; `KY_ERROR_NOT_ENOUGH_MEMORY`
///   (1303). An ROI of no columns or rows is no error.
///
/// The Euclidean distance is computed column by column and then from the lower envelopes of the
/// rows, as described by A. Meijster, J. Roerdink, W. Hesselink, "A general algorithm for computing
/// distance transforms in linear time", Mathematical Morphology and its Applications to Image and
/// Signal Processing, 2000.

/// The distance times the scale, min(65535, floor(scale * d + 1/2)), exact for all modes; 65535
/// everywhere when no pixel is 0. A scale of 16 gives four bits after the point. Further errors:
/// `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for another mode, `KY_ERROR_PARAMETER_2_OUT_OF_RANGE`
/// (1012) for a scale that is not finite or not above 0. Trace: "ImgDistance (BW8 to BW16)".
KY_API KY_ERRORS ImgDistance(const KyROI<KyBW8>* source, KyROI<KyBW16>* destination,
                             IMG_DISTANCE_MODES mode = IMG_DISTANCE_EUCLIDEAN,
                             float scale = 1) noexcept;

/// The square of the Euclidean distance, i^2 + j^2, exact up to the limit of 2^32 - 1; this is also
/// what all pixels become when none is 0. Trace: "ImgDistance (BW8 to BW32)".
KY_API KY_ERRORS ImgDistance(const KyROI<KyBW8>* source, KyROI<KyBW32>* destination) noexcept;
