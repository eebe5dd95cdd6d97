/// @file
/// @ingroup frequency
/// Fourier transforms of images, and images of complex numbers.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/vector.h"

/// A library of its own, ky::frequency, which is linked with FFTW, and which `ky/ky.h` does not
/// include. Errors of all functions: `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels,
/// `KY_ERROR_SIZE_MISMATCH` (1403) for ROIs of different sizes; then those of the function;
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Nothing is written then. Sources may overlap the
/// destination as they like.

/// The direction of a transform.
enum IMG_DFT_DIRECTION : int {
  IMG_DFT_FORWARD,  ///< from pixels to frequencies
  IMG_DFT_INVERSE   ///< from frequencies to pixels
};

/// The discrete Fourier transform of an image of W x H pixels of any size:
/// F(u, v) = sum of f(x, y) e^(-2 pi i (u x / W + v y / H)). The inverse transform has + in the
/// exponent and divides by W H, so that both together restore the source; an image of 8 bits is
/// exact again after rounding. Frequency (0, 0) stands at (0, 0), and negative ones wrap: -1 is
/// W - 1. The spectrum of grey pixels is symmetric: F(W - u, H - v) is the conjugate of F(u, v).
///
/// Computed by FFTW in single precision, in O(W H log(W H)) operations; sizes whose prime factors
/// are small, such as 1000 or 1920, take little longer than powers of two. The root mean square of
/// the error, relative to that of the result, is below 10^-6 sqrt(log2(W H)). Results do not depend
/// on where the pixels lie in memory; they may differ in the last bits between versions of FFTW and
/// between processors. Each thread may transform at any time. What FFTW prepares for a size is kept
/// for the 32 lengths of rows and columns that were used last.
///
/// In place where source and destination are the same complex pixels. Error:
/// `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for an unknown direction. Traces: "ImgSlowDFT (BW8)",
/// "ImgSlowDFT (Complex64)".
KY_API KY_ERRORS ImgSlowDFT(const KyROI<KyBW8>* source, KyROI<KyComplex64>* destination) noexcept;
KY_API KY_ERRORS ImgSlowDFT(const KyROI<KyComplex64>* source, KyROI<KyComplex64>* destination,
                            IMG_DFT_DIRECTION direction) noexcept;

/// The same for images whose width and height are powers of two. Error:
/// `KY_ERROR_NOT_POWER_OF_TWO` (2600) for any other size, 0 among them, before 1003. Traces:
/// "ImgFastDFT (BW8)", "ImgFastDFT (Complex64)".
KY_API KY_ERRORS ImgFastDFT(const KyROI<KyBW8>* source, KyROI<KyComplex64>* destination) noexcept;
KY_API KY_ERRORS ImgFastDFT(const KyROI<KyComplex64>* source, KyROI<KyComplex64>* destination,
                            IMG_DFT_DIRECTION direction) noexcept;

/// The modulus: min(255, round(|z|)). Ties are rounded up; what is not a number gives 0. Trace: the
/// function's name, here and below.
KY_API KY_ERRORS ImgComplexModulus(const KyROI<KyComplex64>* source,
                                   KyROI<KyBW8>* destination) noexcept;

/// The modulus, scaled so that the largest one, M, becomes 255: round(255 |z| / M), or
/// round(255 ln(1 + |z|) / ln(1 + M)) when `logarithmic`, which shows the weak frequencies of a
/// spectrum beside the strong ones. All 0 when M is 0. Where M is infinite, it becomes 255 and the
/// rest 0.
KY_API KY_ERRORS ImgComplexRescaledModulus(const KyROI<KyComplex64>* source,
                                           KyROI<KyBW8>* destination,
                                           bool logarithmic = false) noexcept;

/// The argument, 256 steps to the circle: round(256 arg(z) / (2 pi)) modulo 256. 0 for z = 0 and
/// for what is not a number.
KY_API KY_ERRORS ImgComplexArgument(const KyROI<KyComplex64>* source,
                                    KyROI<KyBW8>* destination) noexcept;

/// The real part, round(re), limited to 0 to 255: what an inverse transform has restored. Ties are
/// rounded up; what is not a number gives 0.
KY_API KY_ERRORS ImgComplexReal(const KyROI<KyComplex64>* source,
                                KyROI<KyBW8>* destination) noexcept;

/// The product a b, or a conj(b) when `conjugate`, computed in single precision: with spectra of
/// two images, the one of their convolution, or of their correlation. A part that is not a number
/// has the same bits on every processor. The destination may be a, b or both.
KY_API KY_ERRORS ImgComplexMultiply(const KyROI<KyComplex64>* a, const KyROI<KyComplex64>* b,
                                    KyROI<KyComplex64>* destination,
                                    bool conjugate = false) noexcept;

/// The energy of a spectrum within discs about frequency (0, 0): group i becomes the sum of |z|^2
/// over all u^2 + v^2 <= i^2, where u and v are signed frequencies, -W/2 to W/2. With
/// R = ceil(sqrt(floor(W/2)^2 + floor(H/2)^2)) there are R + 1 radii, and the last sum is that of
/// all. `energies` is a vector of 32-bit floats in groups of one (`SetStructure(8, n, 1, 4)`), of
/// which min(n, R + 1) come into use. Sums are computed in double precision. Error:
/// `KY_ERROR_VECTOR_1611` (1611) for a vector that is null, of another structure, or without room.
KY_API KY_ERRORS ImgComplexDiscEnergy(const KyROI<KyComplex64>* source,
                                      KyVector* energies) noexcept;
