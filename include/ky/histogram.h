/// @file
/// @ingroup histogram
/// Histograms, what they tell, equalisation, and projections.
#pragma once

#include "ky/export.h"
#include "ky/histogram_vector.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/typed_vector.h"
#include "ky/vector.h"

/// A histogram h holds one 32-bit count for each grey level: h[k] pixels have level k. Counts, and
/// sums of counts and of levels, are taken modulo 2^32. Histograms and projections come as typed
/// vectors or as generic ones of type 2; histograms of 8-bit images have 256 bins.
///
/// Errors, unless stated otherwise: `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels, then
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector; `KY_ERROR_NOT_256_ENTRIES` (1613) for a
/// typed histogram that does not have exactly 256 bins. They leave the outputs as they were.

// Histograms

/// Counts every pixel of the source or, if it has a mask (KyGenericROI::SetMask), the pixels of its
/// runs that lie in the ROI; a pixel counts once for every run that contains it. The vector is
/// resized to 256 elements. Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgHistogram".
KY_API KY_ERRORS ImgHistogram(const KyROI<KyBW8>* source, KyBW8HistogramVector* histogram) noexcept;

/// Counts a pixel p in bin p >> (mostSignificantBit + 1 - bits) of a histogram of 2^bits bins. A
/// pixel with bits above the most significant one is counted in the last bin when `saturate` is not
/// 0, and not at all otherwise. Masks are ignored. Errors, checked before the others:
/// `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013) for a most significant bit above 15,
/// `KY_ERROR_PARAMETER_4_OUT_OF_RANGE` (1014) for `bits` above mostSignificantBit + 1; then also
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgHistogram (KyBW16)".
KY_API KY_ERRORS ImgHistogram(const KyROI<KyBW16>* source, KyBW8HistogramVector* histogram,
                              unsigned int mostSignificantBit, unsigned int bits,
                              int saturate) noexcept;

/// Counts like the first form, into a generic vector of type 2 that has room for 256 counts;
/// further elements keep their values. Error: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a vector
/// without that room. A vector of another type becomes one of type 2 without elements, and the call
/// then fails with `KY_ERROR_BAD_VECTOR_TYPE` (1601). Trace: "ImgHistogram (KyVector)".
KY_API KY_ERRORS ImgHistogram(const KyROI<KyBW8>* source, KyVector* histogram) noexcept;

// Equalisation

/// Makes the table that spreads the levels evenly: table[k] = 255 (h[0] + ... + h[k - 1]) / total,
/// all modulo 2^32, of which the low 8 bits are kept; 0 everywhere when the total is 0 or all of it
/// lies in bin 0. The table is resized to 256 elements. Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).
/// Trace: "ImgSetupEqualize (KyBW8HistogramVector)".
KY_API KY_ERRORS ImgSetupEqualize(const KyBW8HistogramVector* histogram,
                                  KyBW8Vector* table) noexcept;

/// **Turns levels above all others in the image to 0**, unlike the form above: makes the same table
/// with 256 in place of 255, and without the exception for bin 0. The table becomes a vector of
/// type 3 with 256 elements unless it is one that has room for them. Errors: `KY_ERROR_VECTOR_1603`
/// (1603) for a histogram that is not of type 2; `KY_ERROR_BAD_VECTOR_TYPE` (1601) for one without
/// room for 256 counts, or a null vector; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace:
/// "ImgSetupEqualize (KyVector)".
KY_API KY_ERRORS ImgSetupEqualize(const KyVector* histogram, KyVector* table) noexcept;

/// Equalises the source: maps it through the table of the first form, made of its own histogram,
/// for which its mask counts. Source and destination may be the same rectangle; a source that
/// overlaps the destination otherwise is copied first. Errors: `KY_ERROR_NO_IMAGE` (1400),
/// `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace:
/// "ImgEqualize", after "ImgHistogram" or "ImgLut" when that step fails.
KY_API KY_ERRORS ImgEqualize(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;

// Projections

/// Writes the sum of each column, from left to right, to a vector that gets as many elements as the
/// ROI has columns. Sums are exact for up to 16,843,009 pixels of 8 bits a column, and 65,537 of
/// 16. Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Traces: "ImgProjectOnARow (BW8 Image)",
/// "ImgProjectOnARow (BW16 Image)", "ImgProjectOnARow (KyVector)".
KY_API KY_ERRORS ImgProjectOnARow(const KyROI<KyBW8>* source, KyBW32Vector* sums) noexcept;
KY_API KY_ERRORS ImgProjectOnARow(const KyROI<KyBW16>* source, KyBW32Vector* sums) noexcept;
KY_API KY_ERRORS ImgProjectOnARow(const KyROI<KyBW8>* source, KyVector* sums) noexcept;

/// Writes the sum of each row, from top to bottom, to a vector that gets as many elements as the
/// ROI has rows. Sums are exact for rows of up to 16,843,009 pixels of 8 bits, and 65,537 of 16.
/// Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Traces: "ImgProjectOnAColumn (BW8 Image)",
/// "ImgProjectOnAColumn (BW16 Image)", "ImgProjectOnAColumn".
KY_API KY_ERRORS ImgProjectOnAColumn(const KyROI<KyBW8>* source, KyBW32Vector* sums) noexcept;
KY_API KY_ERRORS ImgProjectOnAColumn(const KyROI<KyBW16>* source, KyBW32Vector* sums) noexcept;
KY_API KY_ERRORS ImgProjectOnAColumn(const KyROI<KyBW8>* source, KyVector* sums) noexcept;

// Analysis

/// What ImgAnalyseHistogram can tell about the levels from `first` to `last`. **Features 0 to 4 and
/// 8 are right only when `first` is 0, and the highest level is `last` itself;** ImgLevelStatistics
/// (statistics.h) is right for any range. With another `first` they read bins 0 to last - first
/// instead, and report bin j as level first + j. Bins outside 0..255 count as empty.
enum IMG_HISTOGRAM_FEATURE : int {
  IMG_HISTOGRAM_MOST_FREQUENT_LEVEL = 0,   ///< of the fullest bin, the lowest of equals; 0 if none
  IMG_HISTOGRAM_MOST_FREQUENT_COUNT = 1,   ///< its count; 0 if all are empty
  IMG_HISTOGRAM_LEAST_FREQUENT_LEVEL = 2,  ///< of the emptiest bin, the lowest of equals; 0 if none
  IMG_HISTOGRAM_LEAST_FREQUENT_COUNT = 3,  ///< its count; 2^32 - 1 if there is none
  IMG_HISTOGRAM_LOWEST_LEVEL = 4,   ///< the first that is not empty, else last + 1; first if there
                                    ///< are no levels
  IMG_HISTOGRAM_HIGHEST_LEVEL = 5,  ///< last when first < last; otherwise the highest that is not
                                    ///< empty from last down to 0, or 0
  IMG_HISTOGRAM_PIXEL_COUNT = 6,    ///< N, the sum of h[k]
  IMG_HISTOGRAM_MEAN = 7,           ///< the sum of k h[k], divided by N; 0 when N is 0
  IMG_HISTOGRAM_STD_DEV = 8,        ///< the population deviation sqrt(|B / N - (A / N) (A / N)|) in
                                    ///< double precision, A and B being the sums of d h[j] and of
                                    ///< d d h[j] in single precision, d = last - j; 0 when N is 0,
                                    ///< and for a single level
};

/// Returns a feature of a typed histogram. Counts pass through signed 32 bits, so that 2^32 - 1
/// becomes -1. Returns 0 on failure, and for a feature that is not in the list, which is no
/// failure. Trace: "ImgAnalyseHistogram".
KY_API float ImgAnalyseHistogram(const KyBW8HistogramVector* histogram,
                                 IMG_HISTOGRAM_FEATURE feature, int first, int last) noexcept;

/// Writes a feature of a generic vector: the form with an integer result serves features 0 to 6,
/// the one with a floating-point result 7 and 8. Any other feature leaves the result as it was, and
/// is no failure. Errors: `KY_ERROR_VECTOR_1602` (1602) for a vector that is not of type 2;
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null one, or one without room for 256 counts. Trace:
/// "ImgAnalyseHistogram (KyVector)".
KY_API KY_ERRORS ImgAnalyseHistogram(const KyVector* histogram, int first, int last,
                                     unsigned int feature, int& result) noexcept;
KY_API KY_ERRORS ImgAnalyseHistogram(const KyVector* histogram, int first, int last,
                                     unsigned int feature, float& result) noexcept;
