/// @file
/// @ingroup paths
/// Profiles: rows of grey levels, such as those along a line segment.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/records.h"
#include "ky/status.h"
#include "ky/typed_vector.h"

/// Finds the peaks of a profile, unbroken runs of levels above highThreshold, and its valleys, runs
/// of levels below lowThreshold. Runs that touch an end of the profile are left out. For a run of
/// the elements s to e - 1, with d = level - highThreshold in a peak and d = level - lowThreshold
/// (negative) in a valley, the record holds
///
///     start = s, length = e - s
///     amplitude: the d farthest from 0
///     area = sum of all d
///     center = sum of i d / area in double precision, (s + e - 1) / 2 when the area is 0
///
/// It is kept when neither |amplitude| nor |area| lies below its minimum. Amplitude and area are
/// limited to 32 bits in the record. Profiles of 32 bits are those that ImgProjectOnARow and
/// ImgProjectOnAColumn make. Errors: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector,
/// `KY_ERROR_BAD_INTERVAL` (1007) when lowThreshold > highThreshold, `KY_ERROR_NOT_ENOUGH_MEMORY`
/// (1303). Trace: "ImgGetProfilePeaks".
KY_API KY_ERRORS ImgGetProfilePeaks(const KyBW8Vector* profile, KyPeaksVector* peaks,
                                    unsigned int lowThreshold, unsigned int highThreshold,
                                    unsigned int minAmplitude, unsigned int minArea) noexcept;
KY_API KY_ERRORS ImgGetProfilePeaks(const KyBW32Vector* profile, KyPeaksVector* peaks,
                                    unsigned int lowThreshold, unsigned int highThreshold,
                                    unsigned int minAmplitude, unsigned int minArea) noexcept;

/// Unless stated otherwise, the filters of profiles resize the destination to the number n of
/// elements of the source v, and continue v at its ends by v[-1] = v[0] and v[n] = v[n - 1]. Source
/// and destination may be the same vector. Errors: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null
/// vector, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). The trace is the function's name;
/// ImgConvolBinomial, ImgDilate and ImgErode add " (KyBW8Vector)".

/// Writes the slope, raised by 128: floor((v[i + 1] - v[i - 1]) / 2) + 128. At each end it is the
/// whole difference of the outermost two elements plus 128, limited to 0..255. A single element
/// gives 128.
KY_API KY_ERRORS ImgProfileDerivative(const KyBW8Vector* source, KyBW8Vector* destination) noexcept;

/// Writes the mean of the 2 halfWidth + 1 elements around each, truncated; the first and the last
/// element are repeated beyond the ends. The destination is not resized. Error:
/// `KY_ERROR_NOT_256_ENTRIES` (1613) when the source has fewer than 2 halfWidth + 1 elements, or
/// the destination not as many as the source. Sums have 32 bits.
KY_API KY_ERRORS ImgConvolUniform(const KyBW8Vector* source, KyBW8Vector* destination,
                                  unsigned int halfWidth) noexcept;

/// Smooths `passes` times by (v[i - 1] + 2 v[i] + v[i + 1]) / 4, truncated. With 0 passes the
/// elements of the destination stay as they were, and new ones are unspecified. A pass costs what
/// the one before has changed, in blocks of 1024 elements; after about n passes, where n is the
/// number of elements, a profile changes no more, and neither do further passes cost anything.
KY_API KY_ERRORS ImgConvolBinomial(const KyBW8Vector* source, KyBW8Vector* destination,
                                   unsigned int passes) noexcept;

/// Replaces every element by the greatest (ImgDilate) or the smallest (ImgErode) of v[i - 1], v[i],
/// v[i + 1], `passes` times; 0 passes act as in ImgConvolBinomial. The cost grows with the
/// logarithm of the passes.
KY_API KY_ERRORS ImgDilate(const KyBW8Vector* source, KyBW8Vector* destination,
                           unsigned int passes) noexcept;
KY_API KY_ERRORS ImgErode(const KyBW8Vector* source, KyBW8Vector* destination,
                          unsigned int passes) noexcept;
