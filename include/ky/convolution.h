// Convolution of grey images with kernels.
#pragma once

#include "ky/kernel.h"
#include "ky/pixels.h"
#include "ky/roi.h"

/// destination(x, y) = level of the sum over the kernel of coefficient (i, j) * source(x - sizeX/2
/// + i, y - sizeY/2 + j). The grid is used as stored, not mirrored.
///
/// - Gain: with S the sum of the coefficients and A the sum of their magnitudes, coefficients are
///   multiplied by g = gain / S when |S| > 0.00001 A, else by g = gain, in single precision. A
///   coefficient that is not a number counts as 0.
/// - Rectifier 0, or a size other than 3x3, 5x5 and 7x7: in single precision, products added row by
///   row from 0 on, with the outside value for pixels outside the source. The sum is truncated to
///   r, which is rectified (a rectifier outside 0..3 acts like 0); then the offset is added and the
///   result limited to 0..255. A size of 0 or less makes an empty sum.
/// - 3x3 with rectifier 2: coefficients k = trunc(256 g c), cut to 16 bits; the sum of k * pixel is
///   shifted right by 8 and limited to 0..255. The nearest pixel stands outside the source. Offset
///   and outside value are not used.
/// - 3x3 with any other rectifier, 5x5, 7x7: k = trunc(32768 g c); v = (sum of k * pixel + 32768
///   offset) >> 15, where rectifier 1 negates g and the offset. Rectifier 1 and 2 limit v to
///   0..255, rectifier 3 gives min(|v|, 255), and any other leaves the destination as it is, with
///   success. The nearest pixel stands outside the source.
/// - In place, or onto an area that overlaps the source otherwise, with the same result.
/// - Errors, in this order, the destination untouched: 1400 for an ROI without pixels, 1403 for
///   different sizes, 1700 for a null kernel or one without coefficients, 1303. Trace
///   "ImgConvolKernel"; before it, for a 1303 of the last kind of kernels, "ConvolKernel3x3",
///   "ConvolKernel5x5" or "ConvolKernel7x7".
KY_API KY_ERRORS ImgConvolKernel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                 const KyKernel* kernel) noexcept;

/// The same for kernels of 3x3, 5x5 and 7x7 that are symmetric under mirroring and the quarter
/// turn, with rectifier 1 to 3, in the arithmetic of the last kind above. Only one coefficient of
/// each set of positions that are equal under the symmetry is read, the first in storage order:
/// those of the upper left triangle c(i, j), j <= i <= size / 2. S and A count each as often as it
/// stands in the grid.
///
/// Errors, in this order: 1700 for a null kernel; 1702 for rectifier 0; 1703 for another size;
/// then, with the trace "ConvolKernelS3xS3", "ConvolKernelS5xS5" or "ConvolKernelS7xS7" first,
/// 1400, 1403, 1700 for a kernel without coefficients, 1303. Trace "ImgConvolSymmetricKernel".
KY_API KY_ERRORS ImgConvolSymmetricKernel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                          const KyKernel* kernel) noexcept;
