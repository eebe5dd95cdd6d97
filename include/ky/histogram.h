// Histograms, what they tell, equalisation, and projections.
#pragma once

#include "ky/export.h"
#include "ky/histogram_vector.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/typed_vector.h"
#include "ky/vector.h"

/// A histogram h holds one 32-bit count a grey level: h[k] pixels have level k. Counts, and sums of
/// counts and levels, are taken modulo 2^32. Histograms and projections come as typed vectors or as
/// generic ones of type 2; histograms of 8-bit images have 256 bins.
///
/// Errors, unless stated otherwise: 1400 for an ROI without pixels, then 1601 for a null vector;
/// 1613 for a typed histogram that has not exactly 256 bins. Outputs are untouched then.

// Histograms

/// Counts every pixel of the source or, if it has a mask (KyGenericROI::SetMask), those of its runs
/// that lie in the ROI; a pixel counts once for every run that holds it. The vector is given 256
/// elements. Error 1303. Trace "ImgHistogram".
KY_API KY_ERRORS ImgHistogram(const KyROI<KyBW8>* source, KyBW8HistogramVector* histogram) noexcept;

/// Counts a pixel p in bin p >> (mostSignificantBit + 1 - bits), of 2^bits. A pixel with bits above
/// the most significant one is counted in the last bin when `saturate` is not 0, and not at all
/// otherwise. Masks do not matter. Errors: 1013 for a most significant bit above 15, 1014 for more
/// bits than lie below and at it, before the others; 1303. Trace "ImgHistogram (KyBW16)".
KY_API KY_ERRORS ImgHistogram(const KyROI<KyBW16>* source, KyBW8HistogramVector* histogram,
                              unsigned int mostSignificantBit, unsigned int bits,
                              int saturate) noexcept;

/// The first form into a generic vector of type 2 that has room for 256 counts; further elements
/// keep their values. Error 1601 for one without room. A vector of another type becomes one of type
/// 2 without elements, and then fails so. Trace "ImgHistogram (KyVector)".
KY_API KY_ERRORS ImgHistogram(const KyROI<KyBW8>* source, KyVector* histogram) noexcept;

// Equalisation

/// The table that spreads the levels evenly: table[k] = 255 (h[0] + ... + h[k - 1]) / total, all
/// modulo 2^32, of which the low 8 bits are kept; 0 everywhere when the total is 0 or all of it
/// lies in bin 0. The table is given 256 elements. Error 1303. Trace "ImgSetupEqualize
/// (KyBW8HistogramVector)".
KY_API KY_ERRORS ImgSetupEqualize(KyBW8HistogramVector* histogram, KyBW8Vector* table) noexcept;

/// The same with 256 in the place of 255, so that levels above all others in the image become 0,
/// and without the exception for bin 0. The table becomes a vector of type 3 with 256 elements if
/// it is none or has no room for them. Errors: 1603 for a histogram that is not of type 2, 1601 for
/// one without room for 256 counts or a null vector, 1303. Trace "ImgSetupEqualize (KyVector)".
KY_API KY_ERRORS ImgSetupEqualize(KyVector* histogram, KyVector* table) noexcept;

/// Maps the source through the equalising table (the first form) of its own histogram, masks
/// included. Source and destination may be the same rectangle; one that overlaps the other is
/// copied first. Errors: 1400, 1403 for different sizes, 1303. Trace "ImgEqualize".
KY_API KY_ERRORS ImgEqualize(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;

// Projections

/// The sum of each column, from left to right, in a vector of as many elements as the ROI is wide.
/// Error 1303. Traces "ImgProjectOnARow (BW8 Image)", "ImgProjectOnARow (BW16 Image)",
/// "ImgProjectOnARow (KyVector)".
KY_API KY_ERRORS ImgProjectOnARow(const KyROI<KyBW8>* source, KyBW32Vector* sums) noexcept;
KY_API KY_ERRORS ImgProjectOnARow(const KyROI<KyBW16>* source, KyBW32Vector* sums) noexcept;
KY_API KY_ERRORS ImgProjectOnARow(const KyROI<KyBW8>* source, KyVector* sums) noexcept;

/// The sum of each row, from top to bottom, in a vector of as many elements as the ROI is high.
/// Error 1303. Traces "ImgProjectOnAColumn (BW8 Image)", "ImgProjectOnAColumn (BW16 Image)",
/// "ImgProjectOnAColumn".
KY_API KY_ERRORS ImgProjectOnAColumn(const KyROI<KyBW8>* source, KyBW32Vector* sums) noexcept;
KY_API KY_ERRORS ImgProjectOnAColumn(const KyROI<KyBW16>* source, KyBW32Vector* sums) noexcept;
KY_API KY_ERRORS ImgProjectOnAColumn(const KyROI<KyBW8>* source, KyVector* sums) noexcept;

// Analysis

/// What ImgAnalyseHistogram can tell about the levels from `first` to `last`. Features 0 to 4 and 8
/// read bins 0 to last - first in their place, and report bin j as level first + j: they are right
/// when first is 0. Bins outside 0..255 count as empty.
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
  IMG_HISTOGRAM_STD_DEV = 8,        ///< the population deviation, all in single precision:
                              ///< sqrt(|B / N - (A / N) (A / N)|) with A and B the sums of d h[j]
                              ///< and d d h[j], d = last - j; 0 when N is 0
};

/// Any feature. Counts pass through signed 32 bits: 2^32 - 1 is -1. Returns 0 on failure, and for a
/// feature outside the list, which is no failure. Trace "ImgAnalyseHistogram".
KY_API float ImgAnalyseHistogram(KyBW8HistogramVector* histogram, IMG_HISTOGRAM_FEATURE feature,
                                 int first, int last) noexcept;

/// The features 0 to 6 of a generic vector as integers, and 7 and 8 as floating point. Any other
/// feature changes nothing, and is no failure. Errors: 1602 for a vector that is not of type 2,
/// 1601 for a null one or one without room for 256 counts. Trace "ImgAnalyseHistogram (KyVector)".
KY_API KY_ERRORS ImgAnalyseHistogram(KyVector* histogram, int first, int last, unsigned int feature,
                                     int& result) noexcept;
KY_API KY_ERRORS ImgAnalyseHistogram(KyVector* histogram, int first, int last, unsigned int feature,
                                     float& result) noexcept;
