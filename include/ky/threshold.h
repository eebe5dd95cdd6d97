/// @file
/// @ingroup thresholds
/// Binarisation: two or three levels from grey levels, bits and colours.
#pragma once

#include "ky/auto_threshold.h"
#include "ky/color.h"
#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Thresholds a grey image: destination(x, y) = source(x, y) < threshold ? low : high. A threshold
/// above 255 is a mode of IMG_THRESHOLD_MODES, and the level is then chosen from the histogram of
/// the source; `relative` is the fraction of IMG_THRESHOLD_RELATIVE. Works in place. Errors:
/// `KY_ERROR_NO_IMAGE` (1400), `KY_ERROR_SIZE_MISMATCH` (1403), those of ImgHistogramThreshold,
/// with their traces; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgThreshold".
KY_API KY_ERRORS ImgThreshold(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                              unsigned int threshold, KyBW8 low = 0, KyBW8 high = 255,
                              float relative = 0.5f) noexcept;

/// Thresholds grey levels to bits: bit (x, y) of the destination = source(x, y) >= threshold. Bits
/// of shared bytes that lie outside the destination keep their values, but their bytes are written:
/// two threads must not write neighbouring one-bit ROIs. In this form and the ones below the
/// destination may be larger than the source; only the area of the source's size is written then. A
/// source that shares memory with the destination is read before that is written. Errors:
/// `KY_ERROR_NO_IMAGE` (1400), `KY_ERROR_SIZE_MISMATCH` (1403) for a smaller destination,
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgThreshold (BW8 to BW1)".
KY_API KY_ERRORS ImgThreshold(const KyROI<KyBW8>* source, KyROI<KyBW1>* destination,
                              unsigned int threshold) noexcept;

/// Turns bits to grey levels: destination(x, y) = bit (x, y) of the source ? one : zero. Errors:
/// `KY_ERROR_NO_IMAGE` (1400), `KY_ERROR_SIZE_MISMATCH` (1403) for a smaller destination,
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgThreshold (BW1 to BW8)".
KY_API KY_ERRORS ImgThreshold(const KyROI<KyBW1>* source, KyROI<KyBW8>* destination, KyBW8 zero = 0,
                              KyBW8 one = 255) noexcept;

/// Finds a range of colours: destination(x, y) = `inside` when each component of the source pixel
/// lies between those of `minimum` and `maximum`, both included, otherwise `outside`. With a
/// lookup, the components are those of the transformed source pixel. Errors: `KY_ERROR_NO_IMAGE`
/// (1400), `KY_ERROR_SIZE_MISMATCH` (1403) for a smaller destination, `KY_ERROR_NOT_ENOUGH_MEMORY`
/// (1303). Trace: "ImgThreshold (C24 to BW8)".
KY_API KY_ERRORS ImgThreshold(const KyROI<KyC24>* source, KyROI<KyBW8>* destination, KyC24 minimum,
                              KyC24 maximum, const KyColorLookup* lookup, KyBW8 outside = 0,
                              KyBW8 inside = 255) noexcept;
/// Does the same without a lookup: 0 outside, 255 inside.
KY_API KY_ERRORS ImgThreshold(const KyROI<KyC24>* source, KyROI<KyBW8>* destination, KyC24 minimum,
                              KyC24 maximum) noexcept;

/// Thresholds to three levels: destination(x, y) = `high` when source(x, y) > highThreshold;
/// otherwise `low` when it is < lowThreshold; otherwise `middle`. Works in place. Errors:
/// `KY_ERROR_NO_IMAGE` (1400), `KY_ERROR_SIZE_MISMATCH` (1403) for a smaller destination,
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgDoubleThreshold (BW8 to BW8)".
KY_API KY_ERRORS ImgDoubleThreshold(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                    unsigned int lowThreshold, unsigned int highThreshold,
                                    KyBW8 low = 0, KyBW8 middle = 128, KyBW8 high = 255) noexcept;
