// Profiles: rows of grey levels, such as those along a line segment.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/records.h"
#include "ky/status.h"
#include "ky/typed_vector.h"

/// Finds the peaks of a profile, unbroken runs of levels above `high`, and its valleys, runs below
/// `low`. Runs that touch an end of the profile are left out. Of the run from element s to before
/// element e, with d = level - high in a peak and d = level - low (negative) in a valley, the
/// record holds
///
///     start = s, length = e - s
///     amplitude: the d farthest from 0
///     area = sum of all d
///     center = sum of i d / area in double precision, (s + e - 1) / 2 when the area is 0
///
/// It is kept when neither |amplitude| nor |area| lies below its minimum. Errors: 1601 for a
/// missing vector, 1007 when low > high, 1303. Trace "ImgGetProfilePeaks".
KY_API KY_ERRORS ImgGetProfilePeaks(KyBW8Vector* profile, KyPeaksVector* peaks,
                                    unsigned int lowThreshold, unsigned int highThreshold,
                                    unsigned int minAmplitude, unsigned int minArea) noexcept;

/// The filters below give the destination as many elements as the source v has, n, unless they say
/// otherwise. Source and destination may be the same vector. Errors: 1601 for a missing vector,
/// 1303. At the ends, v[-1] = v[0] and v[n] = v[n - 1], unless they say otherwise. The traces are
/// the functions' names, with "(KyBW8Vector)" after a blank for the last three.

/// The slope around 128: floor((v[i + 1] - v[i - 1]) / 2) + 128; at the ends the whole difference
/// of the last two elements, 128 added, limited to 0..255. 128 for a single element.
KY_API KY_ERRORS ImgProfileDerivative(KyBW8Vector* source, KyBW8Vector* destination) noexcept;

/// The mean of the 2 halfWidth + 1 elements around each, truncated; beyond the ends the first and
/// the last element go on. The source must have that many elements, and the destination as many as
/// the source: 1613. Sums are 32 bits wide.
KY_API KY_ERRORS ImgConvolUniform(KyBW8Vector* source, KyBW8Vector* destination,
                                  unsigned int halfWidth) noexcept;

/// (v[i - 1] + 2 v[i] + v[i + 1]) / 4, truncated, so many times. No pass leaves the elements of the
/// destination as they are, or unspecified where they are new.
KY_API KY_ERRORS ImgConvolBinomial(KyBW8Vector* source, KyBW8Vector* destination,
                                   unsigned int passes) noexcept;

/// The greatest, respectively the smallest, of v[i - 1], v[i], v[i + 1], so many times; no pass as
/// above. The cost grows with the logarithm of the passes (van Herk's and Gil and Werman's window
/// extremes, by doubling).
KY_API KY_ERRORS ImgDilate(KyBW8Vector* source, KyBW8Vector* destination,
                           unsigned int passes) noexcept;
KY_API KY_ERRORS ImgErode(KyBW8Vector* source, KyBW8Vector* destination,
                          unsigned int passes) noexcept;
