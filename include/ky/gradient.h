// Gradients of grey levels, their length and direction.
#pragma once

#include "ky/export.h"
#include "ky/image.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// The gradient of a source v at a pixel is the pair of central differences, not halved,
///
///     gx = v(x - 1, y) - v(x + 1, y),    gy = v(x, y - 1) - v(x, y + 1),
///
/// where the pixel itself replaces a neighbour that the ROI does not have. Both lie in -255..255.

/// Stores the gradients: gx in the low and gy in the high 16 bits of a pixel, both signed. Errors:
/// 1400, 1403, 1303. Trace "ImgGradientVector".
KY_API KY_ERRORS ImgGradientVector(const KyROI<KyBW8>* source, KyROI<KyBW32>* destination) noexcept;

/// Maps gradients to levels: destination(x, y) = lookup(256 + gx, 256 + gy), for a lookup image of
/// 512 x 512 pixels such as the functions below make. The source is an image, and may be the
/// destination; or it is stored gradients, of which the low 9 bits of 256 + gx and 256 + gy count.
/// A source or lookup that otherwise shares pixels with the destination is read first. Errors, in
/// this order, nothing written: 1400 and 1403 for source and destination; 1400 for a lookup without
/// pixels, 1013 for one of another size; 1303. Trace "ImgGradientScalar".
KY_API KY_ERRORS ImgGradientScalar(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   const KyROI<KyBW8>* lookup) noexcept;
KY_API KY_ERRORS ImgGradientScalar(const KyROI<KyBW32>* source, KyROI<KyBW8>* destination,
                                   const KyROI<KyBW8>* lookup) noexcept;

/// Makes the lookup image of the length of gradients. It gets 512 x 512 pixels:
///
///     lookup(256 + gx, 256 + gy) = min(sqrt(gx^2 + gy^2) * gain + 1/2, 255), truncated,
///
/// in double precision, and the low 8 bits of negative values. Errors: 1400 for null, 1303. Trace
/// "ImgModulusImage".
KY_API KY_ERRORS ImgModulusImage(KyImage<KyBW8>* lookup, float gain = 1) noexcept;

/// Makes the lookup image of the direction of gradients, a full `angleSpan`, in the user's angle
/// unit, being 256 levels. It gets 512 x 512 pixels:
///
///     lookup(256 + gx, 256 + gy) = atan2(gy, gx) * 256 / angleSpan + origin + 256.5, truncated,
///
/// in double precision, of which the low 8 bits count; 0 where gx = gy = 0. A span of 0 gives
/// `origin` everywhere else. Errors: 1400 for null, 1303. Trace "ImgArgumentImage".
KY_API KY_ERRORS ImgArgumentImage(KyImage<KyBW8>* lookup, KyBW8 origin, float angleSpan) noexcept;
