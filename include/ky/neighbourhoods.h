/// @file
/// @ingroup windows
/// Means, deviations and Gaussian smoothing over windows of any size.
#pragma once

#include "ky/export.h"
#include "ky/morphology.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// These filters compute every pixel from a window of (2 halfWidth + 1) x (2 halfHeight + 1) source
/// pixels centred on it. A halfHeight of `KY_HALF_HEIGHT_AS_WIDTH` stands for halfWidth.
///
/// - Results are exact: round(x) is floor(x + 1/2) of the exact quotient or root.
/// - Colours: each component is filtered as a grey image of its own.
/// - Border rule, one of two. "Nearest": a position outside the source has the value of the nearest
///   pixel inside. "Inside": only the pixels of the window that lie inside the ROI count.
/// - In place: with a null destination, or one on the source's own pixels, the source itself is
///   filtered. An area that overlaps the source otherwise is written as if the source were a copy.
/// - Cost: that of a pixel does not depend on the size of the window, except that of
///   ImgConvolGaussian, which grows with halfWidth + halfHeight. Windows of more than eight million
///   pixels, and of four million where deviations are computed, take several times as long.
///   Scratch memory is some rows, 2 halfHeight + 2 of them for colours and in place.
/// - Errors, which leave the destination as it was, in this order: `KY_ERROR_NO_IMAGE` (1400) for a
///   source or a destination without pixels; `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes;
///   `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) and `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) for
///   a halfWidth and a halfHeight above 2^20; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). An ROI of no
///   columns or rows is no error.
/// - Trace: unless stated otherwise, the function's name followed by " (BW8)" or " (C24)".

/// Uniform smoothing: round((sum of the window) / (its number of positions)). Border: nearest.
KY_API KY_ERRORS ImgConvolUniform(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                  unsigned halfWidth,
                                  unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgConvolUniform(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                  unsigned halfWidth,
                                  unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;

/// Gaussian smoothing, along the rows and then along the columns, in fixed point:
///
///     m(x, y)           = (sum over i of w_i source(x + i, y) + 128) >> 8
///     destination(x, y) = (sum over j of v_j m(x, y + j) + 2^21) >> 22
///
/// The weights w of sigmaX and v of sigmaY are integers that add up to 32768. They come from
/// g_i = e^(-i^2 / (2 sigma^2)) / (sum of all) and C_i = g_i + ... + g_half by
/// w_i = round(32768 C_i) - round(32768 C_(i+1)) and w_0 = 32768 - 2 round(32768 C_1). Before
/// the last shift, the rounding of weights and sums has cost less than half a level for halves up
/// to 80, with the sigma that 0 stands for.
///
/// - A sigmaX of 0 stands for 0.3 (halfWidth - 1) + 0.8. A sigmaY of 0 stands for sigmaX if that is
///   not 0, else for 0.3 (halfHeight - 1) + 0.8.
/// - Border: nearest.
/// - Errors: the halves are limited to 1024, with the same codes;
///   `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013) and `KY_ERROR_PARAMETER_4_OUT_OF_RANGE` (1014) for
///   a sigmaX and a sigmaY that is negative or not finite.
KY_API KY_ERRORS ImgConvolGaussian(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   unsigned halfWidth,
                                   unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH, float sigmaX = 0,
                                   float sigmaY = 0) noexcept;
KY_API KY_ERRORS ImgConvolGaussian(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                   unsigned halfWidth,
                                   unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH, float sigmaX = 0,
                                   float sigmaY = 0) noexcept;

/// The local average: round(S / n), where S is the sum of the n pixels of the window that lie
/// inside the ROI. Border: inside.
KY_API KY_ERRORS ImgLocalAverage(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                 unsigned halfWidth,
                                 unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgLocalAverage(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                 unsigned halfWidth,
                                 unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;

/// The local standard deviation: round(sqrt(n Q - S^2) / n), where S is the sum and Q the sum of
/// the squares of the n pixels of the window that lie inside the ROI. It is 0 to 128. Border:
/// inside.
KY_API KY_ERRORS ImgLocalDeviation(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   unsigned halfWidth,
                                   unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgLocalDeviation(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                   unsigned halfWidth,
                                   unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;

/// Thresholds by the surroundings, the usual answer to uneven light: `high` where
/// source >= (local average) + offset, else `low`. The local average is that of ImgLocalAverage;
/// the offset may be any number. Border: inside. Trace: "ImgLocalThreshold".
KY_API KY_ERRORS ImgLocalThreshold(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   unsigned halfWidth,
                                   unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH, int offset = 0,
                                   KyBW8 low = 0, KyBW8 high = 255) noexcept;
