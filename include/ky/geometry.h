// Geometric transforms: affine resampling, registration, warps by table.
#pragma once

#include "ky/export.h"
#include "ky/image.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Positions in this file are pixel indices, counted from the origin of the ROI that they belong
/// to, x to the right and y downwards: pixel (0, 0) lies at (0, 0). Angles are in the unit of
/// KySetAngleUnit. Sources and destinations may have different sizes. A source that shares pixels
/// with the destination is copied first (1303 when there is no memory for that), so every function
/// works in place.
///
/// The interpolation argument is the number of fractional bits of a source position (U, V) that
/// are used:
///
/// - 0: the pixel at (floor U, floor V); destination pixels whose source lies outside become 0.
/// - n = 4 or n = 8: with (x, y) = (floor U, floor V), fx and fy the fractions of U and V
///   truncated to n bits and counted in units of 2^-n, and p the source,
///
///       top    = 2^n p(x, y)     + fx (p(x + 1, y)     - p(x, y))
///       bottom = 2^n p(x, y + 1) + fx (p(x + 1, y + 1) - p(x, y + 1))
///       result = (2^n top + fy (bottom - top)) / 2^2n, truncated
///
///   and 0 where one of the four pixels lies outside: the last column and the last row of the
///   source are never (x, y).
/// - anything else: 1007.

/// Applies the affine transform x' = a x + b y + c, y' = d x + e y + f, which takes source
/// positions to destination positions. The destination is walked: with det = a e - b d in single
/// precision, the inverse
///
///     U = ( e x' - b y') / det + u0        u0 = -( e/det c - b/det f)
///     V = (-d x' + a y') / det + v0        v0 = -(-d/det c + a/det f)
///
/// is computed in single precision, each operation rounded, and its six coefficients are truncated
/// to 16.16 fixed point. Positions are sums of them modulo 2^32, so source coordinates reach from
/// -32768 to 32767. Colours are interpolated component by component.
///
/// Errors, in this order: 1400 for a source without pixels; a destination without pixels is no
/// error, nothing happens; 1411 when det is 0, infinite or not a number; 1007; 1303. Trace
/// "ImgLinearTransform".
KY_API KY_ERRORS ImgLinearTransform(const KyROI<KyBW8>* source, float a, float b, float c, float d,
                                    float e, float f, KyROI<KyBW8>* destination,
                                    int interpolation) noexcept;
KY_API KY_ERRORS ImgLinearTransform(const KyROI<KyC24>* source, float a, float b, float c, float d,
                                    float e, float f, KyROI<KyC24>* destination,
                                    int interpolation) noexcept;

/// Scales the source along its axes, turns it by `angle`, and puts its pivot on the pivot of the
/// destination. A positive angle turns counter-clockwise as seen on the screen. It is
/// ImgLinearTransform with
///
///     a =  cos(angle) scaleX      b = sin(angle) scaleY
///     d = -sin(angle) scaleX      e = cos(angle) scaleY
///     c = destinationX - (a sourceX + b sourceY)
///     f = destinationY - (d sourceX + e sourceY)
///
/// Sines, cosines and their products are computed in double precision and rounded once; c and f in
/// single precision. Errors: those of ImgLinearTransform. Trace "ImgScaleRotate", after
/// "ImgLinearTransform".
KY_API KY_ERRORS ImgScaleRotate(const KyROI<KyBW8>* source, float sourceX, float sourceY,
                                float destinationX, float destinationY, float scaleX, float scaleY,
                                float angle, KyROI<KyBW8>* destination, int interpolation) noexcept;
KY_API KY_ERRORS ImgScaleRotate(const KyROI<KyC24>* source, float sourceX, float sourceY,
                                float destinationX, float destinationY, float scaleX, float scaleY,
                                float angle, KyROI<KyC24>* destination, int interpolation) noexcept;
