/// @file
/// @ingroup quality
/// The quality of images: noise, the relation of two images, sharpness.
#pragma once

#include "ky/export.h"
#include "ky/image.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Sums are exact integers, and results are computed from them in double precision. Errors, which
/// leave the outputs as they were: `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels,
/// `KY_ERROR_SIZE_MISMATCH` (1403) for ROIs of different sizes, `KY_ERROR_NO_PIXELS` (1051) for
/// ROIs of no columns or rows, in this order.

/// Writes the noise of a source, which is the root of the mean of (s - r)^2 over the pixels s of
/// the source and r of the reference; of colours, over all components. A reference of 16 bits for a
/// source of 8 is in 1/256 levels, as sums over time give it: its pixels count as r / 256. Traces:
/// "ImgRmsNoise (BW8)", "ImgRmsNoise (BW16)", "ImgRmsNoise (C24)", "ImgRmsNoise (BW8 source and
/// BW16 reference)".
KY_API KY_ERRORS ImgRmsNoise(const KyROI<KyBW8>* source, const KyROI<KyBW8>* reference,
                             float& noise) noexcept;
KY_API KY_ERRORS ImgRmsNoise(const KyROI<KyBW16>* source, const KyROI<KyBW16>* reference,
                             float& noise) noexcept;
KY_API KY_ERRORS ImgRmsNoise(const KyROI<KyC24>* source, const KyROI<KyC24>* reference,
                             float& noise) noexcept;
KY_API KY_ERRORS ImgRmsNoise(const KyROI<KyBW8>* source, const KyROI<KyBW16>* reference,
                             float& noise) noexcept;

/// Writes the ratio of signal and noise, 10 log10(sum of r^2 / sum of (s - r)^2), in decibels.
/// Equal images give +infinity, a reference of zeros and another source -infinity. The ratio is
/// that of energies, and not the peak ratio, which has 255^2 in place of r^2 and is larger. Traces:
/// "ImgSignalNoiseRatio (BW8)", "ImgSignalNoiseRatio (BW16)", "ImgSignalNoiseRatio (C24)",
/// "ImgSignalNoiseRatio (BW8 source and BW16 reference)".
KY_API KY_ERRORS ImgSignalNoiseRatio(const KyROI<KyBW8>* source, const KyROI<KyBW8>* reference,
                                     float& decibels) noexcept;
KY_API KY_ERRORS ImgSignalNoiseRatio(const KyROI<KyBW16>* source, const KyROI<KyBW16>* reference,
                                     float& decibels) noexcept;
KY_API KY_ERRORS ImgSignalNoiseRatio(const KyROI<KyC24>* source, const KyROI<KyC24>* reference,
                                     float& decibels) noexcept;
KY_API KY_ERRORS ImgSignalNoiseRatio(const KyROI<KyBW8>* source, const KyROI<KyBW16>* reference,
                                     float& decibels) noexcept;

/// Counts pairs of levels: `counts` gets 256 x 256 pixels, of which (x, y) is the number of places
/// where a is x and b is y, at most 2^32 - 1. ROIs of no columns or rows give zeros. Errors:
/// `KY_ERROR_NO_IMAGE` (1400) also when `counts` is null, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).
/// Trace: "ImgCorrelogram".
KY_API KY_ERRORS ImgCorrelogram(const KyROI<KyBW8>* a, const KyROI<KyBW8>* b,
                                KyImage<KyBW32>* counts) noexcept;

/// Fits b = gain a + offset to the pixels of two images by least squares. With N the number of
/// pixels and A, B, AA, BB, AB the sums of a, b and their products, V = N AA - A A and
/// W = N BB - B B, the gain is (N AB - A B) / V, the offset (AA B - A AB) / V, and the correlation
/// (N AB - A B) / sqrt(V W), which is -1 to 1, and 0 when all b are equal. Error:
/// `KY_ERROR_SINGULAR_SYSTEM` (1050), checked last, when all a are equal. Trace:
/// "ImgLinearRegression".
KY_API KY_ERRORS ImgLinearRegression(const KyROI<KyBW8>* a, const KyROI<KyBW8>* b, float& gain,
                                     float& offset, float& correlation) noexcept;

/// Writes how sharp an image is: the mean of (right - p)^2 + (lower - p)^2 over the pixels p that
/// have a right and a lower neighbour. Compare images of the same scene. Error:
/// `KY_ERROR_NO_PIXELS` (1051) when no pixel has. Trace: "ImgFocusing".
KY_API KY_ERRORS ImgFocusing(const KyROI<KyBW8>* source, float& sharpness) noexcept;
