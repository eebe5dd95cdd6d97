/// @file
/// @ingroup convolution
/// Convolution of grey and of colour images with kernels.
#pragma once

#include "ky/kernel.h"
#include "ky/pixels.h"
#include "ky/roi.h"

/// Convolves the source with a kernel: destination(x, y) is the level made, as described below, of
/// the sum over the kernel of coefficient (i, j) * source(x - sizeX/2 + i, y - sizeY/2 + j). The
/// grid is used as stored, not mirrored. Each component of a colour is a level of its own.
///
/// - Gain: with S the sum of the coefficients and A the sum of their magnitudes, coefficients are
///   multiplied by g = gain / S when |S| > 0.00001 A, else by g = gain, in single precision. A
///   coefficient that is not a number counts as 0.
/// - Rectifier 0 or below, or a size other than 3x3, 5x5 and 7x7: the sum is computed in single
///   precision, starting from 0 and adding the products row by row, with the outside value for
///   pixels outside the source. The sum is truncated to r, which is rectified (a rectifier outside
///   0..3 acts like 0); then the offset is added and the result is limited to 0..255. The sum of a
///   size of 0 or less is empty.
/// - 3x3 with rectifier 2: coefficients k = trunc(256 g c), reduced to their low 16 bits; the sum
///   of k * pixel is shifted right by 8 and limited to 0..255. The nearest pixel stands outside the
///   source. Offset and outside value are not used.
/// - 3x3 with rectifier 1, 3 or above, and 5x5 and 7x7 with rectifier 1 or above: k is 32768 g c,
///   truncated; v = (sum of k * pixel + 32768 offset) >> 15, where rectifier 1 negates g and the
///   offset. Rectifiers 1 and 2 limit v to 0..255, and rectifier 3 gives min(|v|, 255). **With
///   rectifiers above 3 the call succeeds and writes nothing.** The nearest pixel stands outside
///   the source.
/// - In place, and onto an area that overlaps the source otherwise, the result is the same.
/// - Errors, checked in this order before the destination is written: `KY_ERROR_NO_IMAGE` (1400)
///   for an ROI without pixels, `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes,
///   `KY_ERROR_KERNEL_SIZE` (1700) for a null kernel or one without coefficients,
///   `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgConvolKernel"; a `KY_ERROR_NOT_ENOUGH_MEMORY`
///   (1303) of the last kind of kernels is first traced as "ConvolKernel3x3", "ConvolKernel5x5" or
///   "ConvolKernel7x7". On colour images the trace is "ImgConvolKernel (C24)" alone.
KY_API KY_ERRORS ImgConvolKernel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                 const KyKernel* kernel) noexcept;
KY_API KY_ERRORS ImgConvolKernel(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                 const KyKernel* kernel) noexcept;

/// Convolves with kernels of 3x3, 5x5 and 7x7 that are symmetric under mirroring and under the
/// quarter turn, and have a rectifier from 1 to 3, in the arithmetic of the last kind above. Of
/// each set of positions that are equal under the symmetry only the first coefficient in storage
/// order is read, so that the upper left triangle c(i, j), j <= i <= size / 2, is enough. S and A
/// count each coefficient as often as it stands in the grid.
///
/// Errors, checked in this order: `KY_ERROR_KERNEL_SIZE` (1700) for a null kernel;
/// `KY_ERROR_KERNEL_1702` (1702) for a rectifier of 0 or below; `KY_ERROR_KERNEL_1703` (1703) for
/// another size; then, with the trace "ConvolKernelS3xS3", "ConvolKernelS5xS5" or
/// "ConvolKernelS7xS7" first, `KY_ERROR_NO_IMAGE` (1400), `KY_ERROR_SIZE_MISMATCH` (1403),
/// `KY_ERROR_KERNEL_SIZE` (1700) for a kernel without coefficients, `KY_ERROR_NOT_ENOUGH_MEMORY`
/// (1303). Trace: "ImgConvolSymmetricKernel". On colour images the trace is
/// "ImgConvolSymmetricKernel (C24)" alone.
KY_API KY_ERRORS ImgConvolSymmetricKernel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                          const KyKernel* kernel) noexcept;
KY_API KY_ERRORS ImgConvolSymmetricKernel(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                          const KyKernel* kernel) noexcept;
