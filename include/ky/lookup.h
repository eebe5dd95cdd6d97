// Lookup tables, and the linear laws that are made into one.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/typed_vector.h"

/// All of them map every level of the source through a table of 256 levels:
/// destination(x, y) = table[source(x, y)]. Source and destination may be the same rectangle; one
/// that overlaps the other is copied first. Errors, in this order, the destination untouched: 1400
/// for an ROI without pixels, 1403 for different sizes, then those of the function, then 1303.

/// The table is 256 levels, which may be anywhere, the destination included. Error 1613 for null.
/// Leaves no trace.
KY_API KY_ERRORS ImgLut(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                        const KyBW8* table) noexcept;
/// Error 1613 for a vector that is null or has not exactly 256 elements. Trace "ImgLut".
KY_API KY_ERRORS ImgLut(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                        KyBW8Vector* table) noexcept;

/// Gives the levels a new mean m and a new standard deviation: level i becomes i r + m - r mean,
/// truncated and limited to 0..255, where r = new deviation / deviation, 0 when the deviation is 0,
/// and mean and deviation are those of ImgPixelStdDev. Each operation is rounded to single
/// precision. Error 1051 for ROIs of no pixels. Trace "ImgNormalize", after those of ImgPixelStdDev
/// when that fails.
KY_API KY_ERRORS ImgNormalize(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float newMean,
                              float newDeviation) noexcept;

/// Level i becomes (g i >> 5) + o, where g = 32 gain and o = offset, both truncated to signed 32
/// bits (saturated beyond them): the gain counts in steps of 1/32. The product is an unsigned
/// 32-bit number, shifted logically; the sum, modulo 2^32, is kept when it is at most 255, is 0
/// when it is negative as a signed number, and 255 otherwise. So gains of -1/32 and below give 255
/// for all levels but 0. Trace "ImgGainOffset".
KY_API KY_ERRORS ImgGainOffset(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float gain,
                               float offset) noexcept;
