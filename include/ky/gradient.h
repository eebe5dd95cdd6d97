/// @file
/// @ingroup gradients
/// Gradients of grey levels, their length and direction.
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
/// where the pixel itself stands in for a neighbour that lies outside the ROI. Both lie in
/// -255..255.

/// Stores the gradients: gx in the low and gy in the high 16 bits of a pixel, both signed. Errors:
/// `KY_ERROR_NO_IMAGE` (1400), `KY_ERROR_SIZE_MISMATCH` (1403), `KY_ERROR_NOT_ENOUGH_MEMORY`
/// (1303). Trace: "ImgGradientVector".
KY_API KY_ERRORS ImgGradientVector(const KyROI<KyBW8>* source, KyROI<KyBW32>* destination) noexcept;

/// Maps gradients to levels: destination(x, y) = lookup(256 + gx, 256 + gy), where the lookup is an
/// image of 512 x 512 pixels, as the functions below make it. The source is either a grey image,
/// which may be the destination, or stored gradients; of these the low 9 bits of 256 + gx and 256 +
/// gy count. A source or lookup that otherwise shares pixels with the destination is read first.
/// Errors, checked in this order before anything is written: `KY_ERROR_NO_IMAGE` (1400) and
/// `KY_ERROR_SIZE_MISMATCH` (1403) for source and destination; `KY_ERROR_NO_IMAGE` (1400) for a
/// null lookup; `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013) for one of another size, or without
/// pixels; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgGradientScalar".
KY_API KY_ERRORS ImgGradientScalar(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   const KyROI<KyBW8>* lookup) noexcept;
KY_API KY_ERRORS ImgGradientScalar(const KyROI<KyBW32>* source, KyROI<KyBW8>* destination,
                                   const KyROI<KyBW8>* lookup) noexcept;

/// Makes the lookup image for the length of gradients, of 512 x 512 pixels:
///
///     lookup(256 + gx, 256 + gy) = min(sqrt(gx^2 + gy^2) * gain + 1/2, 255), truncated,
///
/// computed in double precision; of negative values the low 8 bits are stored. Errors:
/// `KY_ERROR_NO_IMAGE` (1400) for null, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace:
/// "ImgModulusImage".
KY_API KY_ERRORS ImgModulusImage(KyImage<KyBW8>* lookup, float gain = 1) noexcept;

/// Makes the lookup image for the direction of gradients, of 512 x 512 pixels. An angle of
/// `angleSpan`, in the unit of KySetAngleUnit, makes 256 levels:
///
///     lookup(256 + gx, 256 + gy) = atan2(gy, gx) * 256 / angleSpan + origin + 256.5, truncated,
///
/// computed in double precision, of which the low 8 bits are stored; 0 where gx = gy = 0. A span of
/// 0 gives `origin` everywhere else. Errors: `KY_ERROR_NO_IMAGE` (1400) for null,
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgArgumentImage".
KY_API KY_ERRORS ImgArgumentImage(KyImage<KyBW8>* lookup, KyBW8 origin, float angleSpan) noexcept;
