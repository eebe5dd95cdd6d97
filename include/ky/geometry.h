/// @file
/// @ingroup geometry
/// Geometric transforms: affine resampling, registration, warps by table. (Mirrors: mirrors.h.)
#pragma once

#include "ky/export.h"
#include "ky/image.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// **Affine transforms see a source up to column and row 32767, and with interpolation the last
/// column and row of it come out as 0;** to change the size of an image take ImgResize or ImgShrink
/// (sizes.h), which have neither limit.
///
/// Positions in this file are pixel indices, counted from the origin of the ROI that they belong
/// to, x to the right and y downwards: pixel (0, 0) lies at (0, 0). Angles are in the unit of
/// KySetAngleUnit. Sources and destinations may have different sizes. A source that shares pixels
/// with the destination is copied first (`KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when memory runs out),
/// so that every function works in place.
///
/// `interpolation` is the number of fractional bits of a source position (U, V) that are used:
///
/// - 0: the pixel at (floor U, floor V); destination pixels whose source lies outside become 0.
/// - n = 4 or n = 8: with (x, y) = (floor U, floor V), fx and fy the fractions of U and V truncated
///   to n bits and counted in units of 2^-n, and p the source,
///
///       top    = 2^n p(x, y)     + fx (p(x + 1, y)     - p(x, y))
///       bottom = 2^n p(x, y + 1) + fx (p(x + 1, y + 1) - p(x, y + 1))
///       result = (2^n top + fy (bottom - top)) / 2^2n, truncated
///
///   and 0 where one of the four pixels lies outside: the last column and the last row of the
///   source are never (x, y).
/// - anything else: `KY_ERROR_BAD_INTERVAL` (1007).

/// Applies the affine transform x' = a x + b y + c, y' = d x + e y + f, which takes source
/// positions to destination positions. For every destination pixel the source position is computed:
/// with det = a e - b d in single precision, the inverse
///
///     U = ( e x' - b y') / det + u0        u0 = -( e/det c - b/det f)
///     V = (-d x' + a y') / det + v0        v0 = -(-d/det c + a/det f)
///
/// is computed in single precision, each operation rounded, and its six coefficients are truncated
/// to 16.16 fixed point. Positions are sums of them modulo 2^32, so source coordinates reach from
/// -32768 to 32767. Colours are interpolated component by component.
///
/// Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400) for a source without pixels and for a
/// null destination (a destination without pixels is no error, and nothing happens);
/// `KY_ERROR_TRANSFORM_LIMIT` (1411) when det is 0, infinite or not a number;
/// `KY_ERROR_BAD_INTERVAL` (1007); `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace:
/// "ImgLinearTransform".
KY_API KY_ERRORS ImgLinearTransform(const KyROI<KyBW8>* source, float a, float b, float c, float d,
                                    float e, float f, KyROI<KyBW8>* destination,
                                    int interpolation) noexcept;
KY_API KY_ERRORS ImgLinearTransform(const KyROI<KyC24>* source, float a, float b, float c, float d,
                                    float e, float f, KyROI<KyC24>* destination,
                                    int interpolation) noexcept;

/// Scales the source along its axes, rotates it by `angle`, and puts its pivot on the pivot of the
/// destination. A positive angle turns counter-clockwise as seen on the screen. This is
/// ImgLinearTransform with
///
///     a =  cos(angle) scaleX      b = sin(angle) scaleY
///     d = -sin(angle) scaleX      e = cos(angle) scaleY
///     c = destinationX - (a sourceX + b sourceY)
///     f = destinationY - (d sourceX + e sourceY)
///
/// Sines, cosines and their products are computed in double precision and rounded once; c and f are
/// computed in single precision. Errors: those of ImgLinearTransform. Trace: "ImgScaleRotate",
/// after "ImgLinearTransform".
KY_API KY_ERRORS ImgScaleRotate(const KyROI<KyBW8>* source, float sourceX, float sourceY,
                                float destinationX, float destinationY, float scaleX, float scaleY,
                                float angle, KyROI<KyBW8>* destination, int interpolation) noexcept;
KY_API KY_ERRORS ImgScaleRotate(const KyROI<KyC24>* source, float sourceX, float sourceY,
                                float destinationX, float destinationY, float scaleX, float scaleY,
                                float angle, KyROI<KyC24>* destination, int interpolation) noexcept;

/// Registers the source: puts given points of it, the pivots, on given points of the destination.
///
/// One pivot gives a translation: ImgScaleRotate with both scales 1 and angle 0, whose errors and
/// traces it has.
KY_API KY_ERRORS ImgRegister(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float sourceX,
                             float sourceY, float destinationX, float destinationY,
                             int interpolation) noexcept;
KY_API KY_ERRORS ImgRegister(const KyROI<KyC24>* source, KyROI<KyC24>* destination, float sourceX,
                             float sourceY, float destinationX, float destinationY,
                             int interpolation) noexcept;

/// Registers the source by two pivots, S1 and S2, and their places D1 and D2. The transform is the
/// similarity that carries S1 onto D1 and the direction of S1 S2 onto that of D1 D2 and, when
/// `scaling` is not 0, also S2 onto D2: ImgScaleRotate by the angle atan2(S2 - S1) - atan2(D2 - D1)
/// about the first pivots, with both scales |D2 - D1| / |S2 - S1|, or 1 without scaling. Angle and
/// scale are computed in double precision and rounded to single. Errors and traces are those of
/// ImgScaleRotate; with scaling, `KY_ERROR_TRANSFORM_LIMIT` (1411) when two pivots of the source or
/// of the destination coincide.
KY_API KY_ERRORS ImgRegister(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float source1X,
                             float source1Y, float source2X, float source2Y, float destination1X,
                             float destination1Y, float destination2X, float destination2Y,
                             int interpolation, int scaling) noexcept;
KY_API KY_ERRORS ImgRegister(const KyROI<KyC24>* source, KyROI<KyC24>* destination, float source1X,
                             float source1Y, float source2X, float source2Y, float destination1X,
                             float destination1Y, float destination2X, float destination2Y,
                             int interpolation, int scaling) noexcept;

/// Registers the source by three pivots, with the affine transform that carries each onto its own
/// place. It is the solution of
///
///     a Sk.x + b Sk.y + c = Dk.x      d Sk.x + e Sk.y + f = Dk.y      k = 1, 2, 3
///
/// by Cramer's rule, computed in double precision and rounded once. Errors:
/// `KY_ERROR_SINGULAR_SYSTEM` (1050) when the source pivots lie on one line; those of
/// ImgLinearTransform. Traces: "ImgRegister (BW8, 3 pivots)" and "ImgRegister (C24, 3 pivots)".
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

/// Warps the source. Each pixel is taken from the place that two tables give,
///
///     destination(x, y) = source(X(x, y) + shiftX, Y(x, y) + shiftY)
///
/// and 0 where that lies outside the source. Table entries are read as signed 16-bit integers; sums
/// are modulo 2^32. The tables have the size of the destination. Errors, checked in this order:
/// `KY_ERROR_NO_IMAGE` (1400) for a source, destination or table without pixels;
/// `KY_ERROR_SIZE_MISMATCH` (1403); `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgWarp".
KY_API KY_ERRORS ImgWarp(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                         const KyImage<KyBW16>* xTable, const KyImage<KyBW16>* yTable, int shiftX,
                         int shiftY) noexcept;
KY_API KY_ERRORS ImgWarp(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                         const KyImage<KyBW16>* xTable, const KyImage<KyBW16>* yTable, int shiftX,
                         int shiftY) noexcept;

/// Warps by one packed table, whose entries hold the column in their low and the row in their high
/// 16 bits, both unsigned. **This call may write before it fails:** the first entry that lies
/// outside the source ends it with `KY_ERROR_WARP_MAP` (1405), when the pixels before that entry,
/// row by row, have been written, and the rest keep their values. Source and destination have the
/// same size; the table may be larger. Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400)
/// for a null source or destination; `KY_ERROR_SIZE_MISMATCH` (1403) (`KY_ERROR_NO_IMAGE` (1400)
/// when one of them has no pixels); `KY_ERROR_NO_IMAGE` (1400) for a null table;
/// `KY_ERROR_WARP_2200` (2200) for a table that is narrower or lower than the destination;
/// `KY_ERROR_NO_IMAGE` (1400) for any of the three without pixels; `KY_ERROR_NO_RESULT` (1301) when
/// there is no memory for a table of the source's rows; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303); then,
/// while pixels are written, `KY_ERROR_WARP_MAP` (1405). Trace: "ImgWarp".
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
/// t starts at 0 and u at 1; 1 / (rows - 1) is added to t and subtracted from u after each row, in
/// single precision. An entry is the position truncated toward zero, limited to signed 32 bits, of
/// which the low 16 bits are stored. A single row lies on `radius2`, a single column at the start
/// angle. As y points downwards, growing angles turn clockwise on the screen. Both tables are
/// resized, also to no columns or rows. Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400)
/// for a null table; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303), also for a negative size. Trace:
/// "ImgSetCircleWarp".
KY_API KY_ERRORS ImgSetCircleWarp(float centerX, float centerY, int rows, float radius1,
                                  float radius2, int columns, float startAngle, float endAngle,
                                  KyImage<KyBW16>* xTable, KyImage<KyBW16>* yTable) noexcept;
