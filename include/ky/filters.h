/// @file
/// @ingroup filters
/// Named filters of grey and of colour images.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// These filters compute every pixel from its fixed neighbourhood, in integer arithmetic. It has
/// 3x3 pixels unless the name says otherwise:
///
///     a-1 a0 a+1
///     b-1 b0 b+1     destination(x, y) = formula of the source's pixels around b0 = source(x, y)
///     c-1 c0 c+1
///
/// - Each component of a colour is filtered as a grey level of its own.
/// - A magnitude is an absolute value; magnitudes and positive parts are limited to 255. Shifts and
///   divisions truncate.
/// - Border rule, one of two. "Nearest": a position outside the source has the value of the nearest
///   pixel inside. "Zero": it has the value 0, **so that smoothing darkens the outermost pixels,
///   and edge filters draw a bright frame there**: measure inside of it.
/// - In place: with a null destination, or one that is the source's own rectangle, the source
///   itself is filtered. An area that overlaps the source otherwise is read before it is written.
/// - Errors, which leave the destination as it was: `KY_ERROR_NO_IMAGE` (1400) for a source or a
///   destination without pixels; `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes;
///   `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Unless stated otherwise, the trace is the function's name
///   followed by the type of the pixels, as in "ImgConvolSobelX (BW8)" or "ImgConvolSobelX (C24)".

/// Uniform smoothing **that darkens slightly**, 255 to 251 (ImgConvolUniform does not): (14 * (sum
/// of the 9 pixels)) >> 7, where 14/128 stands for 1/9. Border: nearest.
KY_API KY_ERRORS ImgConvolUniform3x3(const KyROI<KyBW8>* source,
                                     KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolUniform3x3(const KyROI<KyC24>* source,
                                     KyROI<KyC24>* destination) noexcept;
/// The same as ImgConvolUniform3x3.
KY_API KY_ERRORS ImgConvolLowpass1(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolLowpass1(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
/// Uniform smoothing: (932067 * (sum of the 9 pixels)) >> 23, which is just below a ninth: 255
/// gives 254, and 1 gives 0. Border: nearest. Trace on grey images: "ImgConvolUniform3x3".
KY_API KY_ERRORS ImgConvolUniform3x3Plain(const KyROI<KyBW8>* source,
                                          KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolUniform3x3Plain(const KyROI<KyC24>* source,
                                          KyROI<KyC24>* destination) noexcept;

/// Binomial smoothing: the sum under the weights 1 2 1, 2 4 2, 1 2 1, >> 4. Border: nearest.
KY_API KY_ERRORS ImgConvolGaussian3x3(const KyROI<KyBW8>* source,
                                      KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolGaussian3x3(const KyROI<KyC24>* source,
                                      KyROI<KyC24>* destination) noexcept;
/// The same as ImgConvolGaussian3x3.
KY_API KY_ERRORS ImgConvolLowpass3(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolLowpass3(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
/// The same as ImgConvolGaussian3x3, with the trace "ImgConvolGaussian3x3" on grey images.
KY_API KY_ERRORS ImgConvolGaussian3x3Plain(const KyROI<KyBW8>* source,
                                           KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolGaussian3x3Plain(const KyROI<KyC24>* source,
                                           KyROI<KyC24>* destination) noexcept;

/// Uniform smoothing by 5x5 pixels: their sum / 25, rounded to the nearest. Border: nearest.
KY_API KY_ERRORS ImgConvolUniform5x5(const KyROI<KyBW8>* source,
                                     KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolUniform5x5(const KyROI<KyC24>* source,
                                     KyROI<KyC24>* destination) noexcept;
/// Uniform smoothing by 7x7 pixels: their sum / 49, rounded to the nearest. Border: nearest.
KY_API KY_ERRORS ImgConvolUniform7x7(const KyROI<KyBW8>* source,
                                     KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolUniform7x7(const KyROI<KyC24>* source,
                                     KyROI<KyC24>* destination) noexcept;

/// Binomial smoothing by 5x5 pixels, close to a Gaussian of sigma 1: (sum + 128) >> 8, where a
/// pixel's weight is the product of 1 4 6 4 1 in its row and in its column. Border: nearest.
KY_API KY_ERRORS ImgConvolGaussian5x5(const KyROI<KyBW8>* source,
                                      KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolGaussian5x5(const KyROI<KyC24>* source,
                                      KyROI<KyC24>* destination) noexcept;
/// Binomial smoothing by 7x7 pixels, close to a Gaussian of sigma 1.22: (sum + 2048) >> 12, with
/// the weights 1 6 15 20 15 6 1 in rows and columns. Border: nearest.
KY_API KY_ERRORS ImgConvolGaussian7x7(const KyROI<KyBW8>* source,
                                      KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolGaussian7x7(const KyROI<KyC24>* source,
                                      KyROI<KyC24>* destination) noexcept;

/// Mean of the ring: (sum of the 8 neighbours, without b0) >> 3. Border: zero.
KY_API KY_ERRORS ImgConvolLowpass2(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolLowpass2(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;

/// Sharpening by 4 neighbours: magnitude of 5 b0 - a0 - b-1 - b+1 - c0. Border: zero.
KY_API KY_ERRORS ImgConvolHighpass1(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolHighpass1(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
/// Sharpening by 8 neighbours: positive part of 9 b0 - (sum of the 8 neighbours); in the first and
/// last rows and columns its magnitude. Border: zero.
KY_API KY_ERRORS ImgConvolHighpass2(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolHighpass2(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;

/// Sobel's gradient along x: magnitude of (a+1 - a-1) + 2 (b+1 - b-1) + (c+1 - c-1). Border: zero.
KY_API KY_ERRORS ImgConvolSobelX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolSobelX(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
/// Sobel's gradient along y: magnitude of (c-1 + 2 c0 + c+1) - (a-1 + 2 a0 + a+1). Border: zero.
KY_API KY_ERRORS ImgConvolSobelY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolSobelY(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
/// Sobel's gradient: the sum of the magnitudes along x and y, limited to 255. Border: zero.
KY_API KY_ERRORS ImgConvolSobel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolSobel(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;

/// Prewitt's gradient along x: magnitude of (a+1 + b+1 + c+1) - (a-1 + b-1 + c-1). Border: nearest.
KY_API KY_ERRORS ImgConvolPrewittX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolPrewittX(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
/// Prewitt's gradient along y: magnitude of (c-1 + c0 + c+1) - (a-1 + a0 + a+1). Border: zero.
KY_API KY_ERRORS ImgConvolPrewittY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolPrewittY(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
/// Prewitt's gradient: the sum of the magnitudes along x and y, limited to 255. Border: zero, along
/// x too.
KY_API KY_ERRORS ImgConvolPrewitt(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolPrewitt(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;

/// Central difference along x: magnitude of b+1 - b-1. Border: zero.
KY_API KY_ERRORS ImgConvolGradientX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolGradientX(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
/// Central difference along y: magnitude of c0 - a0. Border: zero.
KY_API KY_ERRORS ImgConvolGradientY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolGradientY(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
/// Central differences: the sum of the magnitudes along x and y, limited to 255. Border: zero.
KY_API KY_ERRORS ImgConvolGradient(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolGradient(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;
/// Roberts' cross: the sum of the magnitudes of b0 - c+1 and b+1 - c0, limited to 255. Border:
/// zero.
KY_API KY_ERRORS ImgConvolRoberts(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolRoberts(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept;

/// Second difference along x: magnitude of 2 b0 - b-1 - b+1. Border: zero.
KY_API KY_ERRORS ImgConvolLaplacianX(const KyROI<KyBW8>* source,
                                     KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolLaplacianX(const KyROI<KyC24>* source,
                                     KyROI<KyC24>* destination) noexcept;
/// Second difference along y: magnitude of 2 b0 - a0 - c0. Border: zero.
KY_API KY_ERRORS ImgConvolLaplacianY(const KyROI<KyBW8>* source,
                                     KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolLaplacianY(const KyROI<KyC24>* source,
                                     KyROI<KyC24>* destination) noexcept;
/// Laplacian of 4 neighbours: magnitude of a0 + b-1 + b+1 + c0 - 4 b0. Border: zero.
KY_API KY_ERRORS ImgConvolLaplacian4(const KyROI<KyBW8>* source,
                                     KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolLaplacian4(const KyROI<KyC24>* source,
                                     KyROI<KyC24>* destination) noexcept;
/// Laplacian of 8 neighbours: magnitude of (sum of the 8 neighbours) - 8 b0. Border: zero.
KY_API KY_ERRORS ImgConvolLaplacian8(const KyROI<KyBW8>* source,
                                     KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvolLaplacian8(const KyROI<KyC24>* source,
                                     KyROI<KyC24>* destination) noexcept;
