/// @file
/// @ingroup lookup
/// Lookup tables, and the linear laws that are made into one.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/typed_vector.h"

/// These functions map every level of the source through a table of 256 levels: destination(x, y) =
/// table[source(x, y)]. Source and destination may be the same rectangle; a source that overlaps
/// the destination otherwise is copied first. Errors, checked in this order before the destination
/// is written: `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels, `KY_ERROR_SIZE_MISMATCH`
/// (1403) for different sizes, then those of the function, then `KY_ERROR_NOT_ENOUGH_MEMORY`
/// (1303).

/// Maps the source through 256 levels, which may lie anywhere, also in the destination. Error:
/// `KY_ERROR_NOT_256_ENTRIES` (1613) for null. Failures leave no trace.
KY_API KY_ERRORS ImgLut(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                        const KyBW8* table) noexcept;
/// Maps the source through a vector. Error: `KY_ERROR_NOT_256_ENTRIES` (1613) for one that is null
/// or does not have exactly 256 elements. Trace: "ImgLut".
KY_API KY_ERRORS ImgLut(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                        const KyBW8Vector* table) noexcept;

/// Gives an image of up to 16,843,009 pixels a new mean and a new standard deviation: level i
/// becomes i r + (newMean - r mean), truncated and limited to 0..255, where r = newDeviation /
/// deviation, or 0 when the deviation is 0, and mean and deviation are those of ImgPixelStdDev.
/// Each operation is rounded to single precision; an image that has this mean and this deviation
/// stays as it is. Error: `KY_ERROR_NO_PIXELS` (1051) for ROIs of no columns or rows. Trace:
/// "ImgNormalize", after those of ImgPixelStdDev when that fails.
KY_API KY_ERRORS ImgNormalize(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float newMean,
                              float newDeviation) noexcept;

/// Applies a gain, **which counts in steps of 1/32**, and an offset (ImgLut with a table of your
/// own has no such steps): level i becomes (g i >> 5) + o, where g = 32 gain and o = offset, both
/// truncated to signed 32 bits (saturated beyond them). The product is an unsigned 32-bit number,
/// shifted logically; the sum, modulo 2^32, is kept when it is at most 255, is 0 when it is
/// negative as a signed number, and 255 otherwise. A gain of -1/32 or below therefore gives 255 for
/// every level except 0. Trace: "ImgGainOffset".
KY_API KY_ERRORS ImgGainOffset(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float gain,
                               float offset) noexcept;
/// Applies a gain and an offset to each component, component i by the grey law with gain[i] and
/// offset[i]. Trace: "ImgGainOffset (C24)".
KY_API KY_ERRORS ImgGainOffset(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                               const float (&gain)[3], const float (&offset)[3]) noexcept;

/// Maps grey pixels of 16 bits to 8 bits: destination(x, y) = table[min(source(x, y) >> bitOffset,
/// n - 1)] for a table of n elements. Errors: `KY_ERROR_NOT_256_ENTRIES` (1613) for a null or empty
/// table, `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for a bit offset above 15. Trace:
/// "ImgLut (BW16)".
KY_API KY_ERRORS ImgLut(const KyROI<KyBW16>* source, KyROI<KyBW8>* destination,
                        const KyBW8Vector* table, unsigned int bitOffset) noexcept;
/// Shows levels in false colours: destination(x, y) = palette[source(x, y)]. Error:
/// `KY_ERROR_NOT_256_ENTRIES` (1613) for a palette that is null or does not have exactly 256
/// elements. Trace: "ImgLut (BW8 to C24)".
KY_API KY_ERRORS ImgLut(const KyROI<KyBW8>* source, KyROI<KyC24>* destination,
                        const KyC24Vector* palette) noexcept;
