/// @file
/// @ingroup sizes
/// Images of other sizes: halved, shrunk by means of areas, resized by interpolation.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// The destination's size says what an image is scaled to; W x H are the columns and rows of the
/// source, w x h those of the destination. All results are exact: computed in integers and rounded
/// once. Colours are scaled component by component. A source that shares pixels with the
/// destination is copied first (`KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when memory runs out).

/// Halves an image by the mean of every 2 x 2 pixels:
///
///     destination(x, y) = (p(2x, 2y) + p(2x + 1, 2y) + p(2x, 2y + 1) + p(2x + 1, 2y + 1) + 2) >> 2
///
/// An odd last column or row is not used. Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400)
/// for a source or destination without pixels; `KY_ERROR_SIZE_MISMATCH` (1403) unless the
/// destination has floor(W / 2) x floor(H / 2) pixels; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Traces:
/// "ImgHalve (BW8)", "ImgHalve (C24)".
KY_API KY_ERRORS ImgHalve(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgHalve(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;

/// Shrinks an image by the means of areas, which leaves no aliasing and loses no pixel. Destination
/// pixel (x, y) covers the source from x W / w to (x + 1) W / w across and from y H / h to
/// (y + 1) H / h down, where pixels that it covers in part count in part; the result is
/// floor(mean + 1/2) of the exact mean. With the size of the source the result is a copy. Errors,
/// checked in this order: `KY_ERROR_NO_IMAGE` (1400) for a source or destination without pixels;
/// `KY_ERROR_SIZE_MISMATCH` (1403) unless 0 < w <= W and 0 < h <= H; `KY_ERROR_NOT_ENOUGH_MEMORY`
/// (1303). Traces: "ImgShrink (BW8)", "ImgShrink (C24)".
KY_API KY_ERRORS ImgShrink(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgShrink(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;

/// Resizes an image to any size by bilinear interpolation. Destination column x lies at
///
///     u = (x + 1/2) W / w - 1/2,  limited to 0..W - 1
///
/// in the source, so that the centres of pixels correspond and the borders of both images meet; v
/// likewise for rows. With i = floor(u), f = floor(2048 (u - i) + 1/2) in exact rational
/// arithmetic, j and g likewise from v,
///
///     h(y)   = p(i, y) (2048 - f) + p(i + 1, y) f
///     result = (h(j) (2048 - g) + h(j + 1) g + 2^21) >> 22
///
/// Where an image becomes smaller than half, pixels are skipped and fine patterns alias: shrink
/// those. Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400) for a source or destination
/// without pixels; `KY_ERROR_SIZE_MISMATCH` (1403) for a source of no columns or rows and a
/// destination of some; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Traces: "ImgResize (BW8)", "ImgResize
/// (C24)".
KY_API KY_ERRORS ImgResize(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgResize(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
