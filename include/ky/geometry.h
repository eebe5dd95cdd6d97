// Geometric transforms: affine resampling, registration, warps by table. (Mirrors: mirrors.h.)
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
/// Errors, in this order: 1400 for a source without pixels and a null destination; a destination
/// without pixels is no error, nothing happens; 1411 when det is 0, infinite or not a number; 1007;
/// 1303. Trace "ImgLinearTransform".
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

/// Registration: puts given points of the source, the pivots, on given points of the destination.
///
/// With one pivot, a translation: ImgScaleRotate with scales 1 and angle 0. Errors and traces are
/// its own.
KY_API KY_ERRORS ImgRegister(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float sourceX,
                             float sourceY, float destinationX, float destinationY,
                             int interpolation) noexcept;
KY_API KY_ERRORS ImgRegister(const KyROI<KyC24>* source, KyROI<KyC24>* destination, float sourceX,
                             float sourceY, float destinationX, float destinationY,
                             int interpolation) noexcept;

/// With two pivots S and D, a similarity that carries S1 onto D1 and the direction of S1 S2 onto
/// that of D1 D2, and with `scaling` not 0 also S2 onto D2: ImgScaleRotate by the angle
/// atan2(S2 - S1) - atan2(D2 - D1) about the first pivots, both scales |D2 - D1| / |S2 - S1|, or 1
/// without scaling. Computed in double precision, rounded to single when handed over. Errors and
/// traces are those of ImgScaleRotate; 1411 for a scaling between pivots of which two coincide.
KY_API KY_ERRORS ImgRegister(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float source1X,
                             float source1Y, float source2X, float source2Y, float destination1X,
                             float destination1Y, float destination2X, float destination2Y,
                             int interpolation, int scaling) noexcept;
KY_API KY_ERRORS ImgRegister(const KyROI<KyC24>* source, KyROI<KyC24>* destination, float source1X,
                             float source1Y, float source2X, float source2Y, float destination1X,
                             float destination1Y, float destination2X, float destination2Y,
                             int interpolation, int scaling) noexcept;

/// With three pivots, the affine transform that carries each onto its own: the solution of
///
///     a Sk.x + b Sk.y + c = Dk.x      d Sk.x + e Sk.y + f = Dk.y      k = 1, 2, 3
///
/// by Cramer's rule, in double precision, rounded once. Errors: 1050 when the source pivots lie on
/// one line; those of ImgLinearTransform. Traces "ImgRegister (BW8, 3 pivots)" and "ImgRegister
/// (C24, 3 pivots)".
KY_API KY_ERRORS ImgRegister(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float source1X,
                             float source1Y, float source2X, float source2Y, float source3X,
                             float source3Y, float destination1X, float destination1Y,
                             float destination2X, float destination2Y, float destination3X,
                             float destination3Y, int interpolation) noexcept;
KY_API KY_ERRORS ImgRegister(const KyROI<KyC24>* source, KyROI<KyC24>* destination, float source1X,
                             float source1Y, float source2X, float source2Y, float source3X,
                             float source3Y, float destination1X, float destination1Y,
                             float destination2X, float destination2Y, float destination3X,
                             float destination3Y, int interpolation) noexcept;

/// Takes each pixel from the place that two tables name:
///
///     destination(x, y) = source(X(x, y) + shiftX, Y(x, y) + shiftY)
///
/// and 0 where that lies outside the source. Table entries are read as signed 16-bit integers; sums
/// are modulo 2^32. The tables have the size of the destination. Errors, in this order: 1400 for
/// the source, the destination, a table without pixels; 1403; 1303. Trace "ImgWarp".
KY_API KY_ERRORS ImgWarp(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                         const KyImage<KyBW16>* xTable, const KyImage<KyBW16>* yTable, int shiftX,
                         int shiftY) noexcept;
KY_API KY_ERRORS ImgWarp(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                         const KyImage<KyBW16>* xTable, const KyImage<KyBW16>* yTable, int shiftX,
                         int shiftY) noexcept;

/// The same with one packed table, the column in the low and the row in the high 16 bits of an
/// entry, both unsigned. An entry outside the source ends the call with 1405: the pixels before it,
/// row by row, are written, the rest keep their values. Source and destination have the same size;
/// the table may be larger. Errors, in this order: 1403 (1400 when one of them has no pixels), 2200
/// for a table that is narrower or lower than the destination, 1400, 1301 when there is no memory
/// for a table of the source's rows, 1303, 1405. Trace "ImgWarp".
KY_API KY_ERRORS ImgWarp(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                         const KyImage<KyBW32>* table) noexcept;
KY_API KY_ERRORS ImgWarp(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                         const KyImage<KyBW32>* table) noexcept;

/// Makes the two tables that unroll a ring into a rectangle of `columns` x `rows` pixels. Column i
/// stands for the angle, turning from `startAngle` in the first column to `endAngle` in the last,
/// and row j for the radius, from `radius2` in the first row to `radius1` in the last:
///
///     P1 = centre + radius1 (cos, sin)      P2 = centre + radius2 (cos, sin)
///     X(i, j) = t P1.x + u P2.x             Y(i, j) = t P1.y + u P2.y
///
/// truncated toward zero and clamped to -32768..32767. t starts at 0 and u at 1; 1 / (rows - 1) is
/// added to t and subtracted from u after each row, in single precision. A single row lies on
/// `radius2`, a single column at the start angle. With y downwards angles turn clockwise on the
/// screen. Both tables are resized. Errors, in this order: 1013 for 0 or fewer rows, 1016 for
/// columns; 1400 for a missing table; 1303. Trace "ImgSetCircleWarp".
KY_API KY_ERRORS ImgSetCircleWarp(float centerX, float centerY, int rows, float radius1,
                                  float radius2, int columns, float startAngle, float endAngle,
                                  KyImage<KyBW16>* xTable, KyImage<KyBW16>* yTable) noexcept;
