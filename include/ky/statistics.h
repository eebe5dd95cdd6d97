/// @file
/// @ingroup histogram
/// Statistics of the grey levels of a rectangle of pixels.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// These functions read every pixel p of the ROI once. N is the number of pixels, width * height,
/// as a signed 32-bit integer. S, the sum of p, is kept modulo 2^32: means and deviations are right
/// for images of up to 16,843,009 pixels, and wrong for larger ones that are bright enough. Errors,
/// which leave the outputs as they were: `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels,
/// `KY_ERROR_NO_PIXELS` (1051) when N is 0.

/// Writes the mean S / N, divided in extended precision and rounded to single. Extended precision
/// is that of `long double`: the last bits are the same everywhere only among builds where it is
/// wider than double, as on x86-64. Trace: "ImgPixelAverage (BW8)".
KY_API KY_ERRORS ImgPixelAverage(const KyROI<KyBW8>* source, float& mean) noexcept;

/// Writes the population variance (Q N - S S) / (N N), evaluated in extended precision and at least
/// 0, and the mean S / N, divided in single precision. Q is the sum of the squares, in double
/// precision, of rows whose own sums are kept modulo 2^32, which holds the squares of 66,051 white
/// pixels. Trace: "ImgPixelVariance (BW8)".
KY_API KY_ERRORS ImgPixelVariance(const KyROI<KyBW8>* source, float& variance,
                                  float& mean) noexcept;

/// Writes the standard deviation, the square root of the variance, and the same mean. Traces:
/// "ImgPixelVariance (BW8)", then "ImgPixelStdDev".
KY_API KY_ERRORS ImgPixelStdDev(const KyROI<KyBW8>* source, float& deviation, float& mean) noexcept;

/// Writes the smallest and the largest level, and the mean of the means of the rows, added up from
/// top to bottom in single precision. Only the sum of a row is kept modulo 2^32, so that the mean
/// is right for images of any height; it may differ from the mean above in its last bits. Trace:
/// "ImgPixelStat".
KY_API KY_ERRORS ImgPixelStat(const KyROI<KyBW8>* source, KyBW8& minimum, KyBW8& maximum,
                              float& mean) noexcept;
