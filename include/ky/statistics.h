/// @file
/// @ingroup histogram
/// Statistics of the pixels of a rectangle: means, deviations, extremes, counts.
#pragma once

#include <cstdint>

#include "ky/export.h"
#include "ky/histogram_vector.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// These functions read every pixel p of the ROI; nothing is written unless they succeed. Errors:
/// `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels, `KY_ERROR_SIZE_MISMATCH` (1403) for two of
/// different sizes, `KY_ERROR_NO_PIXELS` (1051) for one of no columns or rows, in this order.

/// Means and deviations. **Those named ImgPixel... are right for images of up to 16,843,009 pixels;
/// ImgAverage and ImgVariance are for images of any size.** The former keep S, the sum of p, modulo
/// 2^32, which larger images exceed if they are bright enough, and take N, the number of pixels,
/// width * height, as a signed 32-bit integer: `KY_ERROR_NO_PIXELS` (1051) also when N wraps to 0.
/// Colours have their components treated as grey levels, each on its own.

/// Writes the mean S / N, divided in extended precision and rounded to single. In extended
/// precision each result is rounded to 64 significant bits. Traces: "ImgPixelAverage (BW8)",
/// "ImgPixelAverage (C24)".
KY_API KY_ERRORS ImgPixelAverage(const KyROI<KyBW8>* source, float& mean) noexcept;
KY_API KY_ERRORS ImgPixelAverage(const KyROI<KyC24>* source, float (&mean)[3]) noexcept;

/// Writes the population variance (Q N - S S) / (N N), evaluated in extended precision and at least
/// 0, and the mean S / N, divided in single precision. Q is the sum of the squares, in double
/// precision, of rows whose own sums are kept modulo 2^32, which holds the squares of 66,051 white
/// pixels. Traces: "ImgPixelVariance (BW8)", "ImgPixelVariance (C24)".
KY_API KY_ERRORS ImgPixelVariance(const KyROI<KyBW8>* source, float& variance,
                                  float& mean) noexcept;
KY_API KY_ERRORS ImgPixelVariance(const KyROI<KyC24>* source, float (&variance)[3],
                                  float (&mean)[3]) noexcept;

/// Writes the standard deviation, the square root of the variance, and the same mean. Traces:
/// "ImgPixelVariance (BW8)" then "ImgPixelStdDev"; "ImgPixelStdDev (C24)".
KY_API KY_ERRORS ImgPixelStdDev(const KyROI<KyBW8>* source, float& deviation, float& mean) noexcept;
KY_API KY_ERRORS ImgPixelStdDev(const KyROI<KyC24>* source, float (&deviation)[3],
                                float (&mean)[3]) noexcept;

/// Writes the mean S / N of an image of any size: S and N are exact, and divided in double
/// precision. Trace: "ImgAverage".
KY_API KY_ERRORS ImgAverage(const KyROI<KyBW8>* source, float& mean) noexcept;

/// Writes the population variance (Q N - S S) / (N N) of an image of any size, where Q is the sum
/// of the squares, and the mean S / N. The integers are exact, and divided in double precision.
/// Trace: "ImgVariance".
KY_API KY_ERRORS ImgVariance(const KyROI<KyBW8>* source, float& variance, float& mean) noexcept;

/// Writes the smallest and the largest level, and the mean of the means of the rows, added up from
/// top to bottom in single precision. Only the sum of a row is kept modulo 2^32, so that the mean
/// is right for images of any height, to the rounding of that sum: usually to six digits, and to
/// four for 70,000 rows of white. Trace: "ImgPixelStat".
KY_API KY_ERRORS ImgPixelStat(const KyROI<KyBW8>* source, KyBW8& minimum, KyBW8& maximum,
                              float& mean) noexcept;

/// Writes the smallest level. ImgMinimum is another name of the first form. Traces: "ImgPixelMin
/// (BW8)", "ImgPixelMin (BW16)", "ImgMinimum".
KY_API KY_ERRORS ImgPixelMin(const KyROI<KyBW8>* source, KyBW8& minimum) noexcept;
KY_API KY_ERRORS ImgPixelMin(const KyROI<KyBW16>* source, KyBW16& minimum) noexcept;
KY_API KY_ERRORS ImgMinimum(const KyROI<KyBW8>* source, KyBW8& minimum) noexcept;

/// Writes the largest level. ImgMaximum is another name of the first form. Traces: "ImgPixelMax
/// (BW8)", "ImgPixelMax (BW16)", "ImgMaximum".
KY_API KY_ERRORS ImgPixelMax(const KyROI<KyBW8>* source, KyBW8& maximum) noexcept;
KY_API KY_ERRORS ImgPixelMax(const KyROI<KyBW16>* source, KyBW16& maximum) noexcept;
KY_API KY_ERRORS ImgMaximum(const KyROI<KyBW8>* source, KyBW8& maximum) noexcept;

/// The functions below count pixels. A count of 2^32 or more is written as 2^32 - 1.

/// Writes the number of pixels in which two images differ; a colour differs when a component does.
/// Traces: "ImgPixelCompare (BW8)", "ImgPixelCompare (BW16)", "ImgPixelCompare (C24)".
KY_API KY_ERRORS ImgPixelCompare(const KyROI<KyBW8>* a, const KyROI<KyBW8>* b,
                                 KyBW32& different) noexcept;
KY_API KY_ERRORS ImgPixelCompare(const KyROI<KyBW16>* a, const KyROI<KyBW16>* b,
                                 KyBW32& different) noexcept;
KY_API KY_ERRORS ImgPixelCompare(const KyROI<KyC24>* a, const KyROI<KyC24>* b,
                                 KyBW32& different) noexcept;

/// Writes the number of pixels that have the level. Trace: "ImgCount".
KY_API KY_ERRORS ImgCount(const KyROI<KyBW8>* source, KyBW8 level, KyBW32& count) noexcept;

/// Writes the numbers of pixels below `low`, from `low` to `high`, and above `high`. Error:
/// `KY_ERROR_BAD_INTERVAL` (1007) when `low` exceeds `high`, checked before 1051. Trace:
/// "ImgPixelCount".
KY_API KY_ERRORS ImgPixelCount(const KyROI<KyBW8>* source, KyBW8 low, KyBW8 high, KyBW32& below,
                               KyBW32& between, KyBW32& above) noexcept;

/// Writes the number of pixels at the threshold and above. Trace: "ImgArea".
KY_API KY_ERRORS ImgArea(const KyROI<KyBW8>* source, KyBW8 threshold, KyBW32& area) noexcept;

/// Writes the number of pixels from `low` to `high`. Error: `KY_ERROR_BAD_INTERVAL` (1007) when
/// `low` exceeds `high`, checked before 1051. Trace: "ImgAreaDoubleThreshold".
KY_API KY_ERRORS ImgAreaDoubleThreshold(const KyROI<KyBW8>* source, KyBW8 low, KyBW8 high,
                                        KyBW32& area) noexcept;

/// What a histogram tells about a range of levels.
struct KyLevelStatistics {
  std::uint64_t count;  ///< the number of pixels, N
  int lowest;           ///< the lowest level that occurs
  int highest;          ///< the highest level that occurs
  int mostFrequent;     ///< the level of the largest count, the lowest of equals
  int leastFrequent;    ///< the level of the smallest count, 0 included, the lowest of equals
  int median;           ///< the smallest level with at least N / 2 pixels at or below it
  double mean;          ///< S / N, where S is the sum of the levels
  double deviation;     ///< sqrt((Q N - S S) / (N N)), where Q is the sum of their squares
};

/// Writes the statistics of the levels `first` to `last` of a histogram of 256 counts. All integers
/// are exact. Errors: `KY_ERROR_NOT_256_ENTRIES` (1613) for a null histogram or another number of
/// bins; `KY_ERROR_BAD_INTERVAL` (1007) unless 0 <= first <= last <= 255; `KY_ERROR_NO_PIXELS`
/// (1051) when the range has no pixels. Trace: "ImgLevelStatistics".
KY_API KY_ERRORS ImgLevelStatistics(const KyBW8HistogramVector* histogram, int first, int last,
                                    KyLevelStatistics& statistics) noexcept;
