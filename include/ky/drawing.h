/// @file
/// @ingroup drawing
/// Pictures, paths, profiles, peaks and histograms on Cairo: on the screen, in picture files, PDF
/// and SVG. The functions are in a library of their own, ky::drawing.
#pragma once

#include "ky/export.h"
#include "ky/histogram_vector.h"
#include "ky/pixels.h"
#include "ky/records.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Cairo's context, as <cairo.h> declares it, which need not be included first.
using cairo_t = struct _cairo;  // NOLINT(bugprone-reserved-identifier): Cairo chose it

/// Everything is drawn on a context of Cairo, in its user space, where one unit is one pixel and
/// pixel (x, y) has its centre at (x + 1/2, y + 1/2); the transformation of the context zooms,
/// turns and places. Its source, line width, dashes, font, clip and operator apply where the
/// descriptions do not say otherwise. The context keeps its state and its current path.
///
/// Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400) for a context that is null or in an
/// error; those of the source; `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) and following for
/// numbers; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when Cairo fails while it draws, whatever its
/// reason (cairo_status tells), where a part may have been drawn and the context is in an error.
/// Contexts of different threads can be drawn on at the same time.

/// Draws a picture whose upper left corner lies at (x, y): each pixel is a square of one unit, in
/// its own colour (components red, green, blue), without smoothing at any scale. On windows and
/// images the cost is that of the pixels that show; a PDF or SVG holds those inside the context's
/// clip in full resolution.
///
/// Errors: those of every drawing, `KY_ERROR_NO_IMAGE` (1400) for the source too;
/// `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011), `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) when x or
/// y is not finite. Traces: "ImgDraw (BW8)", "ImgDraw (C24)".
KY_API KY_ERRORS ImgDraw(cairo_t* context, const KyROI<KyBW8>* source, double x, double y) noexcept;
KY_API KY_ERRORS ImgDraw(cairo_t* context, const KyROI<KyC24>* source, double x, double y) noexcept;

/// Draws a path as a poly-line through the centres of its pixels, in the context's colour, line
/// width, joins and dashes. The last point is joined to the first where the vector is closed. A
/// single point is a dot as wide as the line. An empty path draws nothing.
///
/// Errors: those of every drawing; `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null path. Trace:
/// "KyDraw (KyPathVector)".
KY_API KY_ERRORS KyDraw(cairo_t* context, const KyPathVector* path) noexcept;

/// Charts fill the rectangle from (0, 0) to (width, height), values growing upwards. Axes, with
/// ticks and numbers, stand to the left of it and below, in the context's colour and font. They
/// need about three times the size of the font to the left and twice that size below. There are
/// none when the font is larger than 4096 units of the device. Large numbers are written in
/// thousands (k), millions (M) and thousands of millions (G). Vectors without elements draw
/// nothing.
///
/// Errors: those of every drawing; `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector; then
/// `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) and following when a number is out of range. Width
/// and height lie in 0 to 2^22.

/// Draws the n levels along a path as a curve: level v of element i stands at ((i + 1/2) width / n,
/// height - v height / 255), and the curve runs level from the first and the last element to the
/// sides of the rectangle. With a width of n units it lies below the pixels of a picture row. The
/// levels of a KyBW8PathVector are one curve in the context's colour, the components of a
/// KyC24PathVector three, in red, green and blue. Positions and the closed flag of the path do not
/// matter.
///
/// Errors: those of every chart. Traces: "KyDraw (KyBW8PathVector)", "KyDraw (KyC24PathVector)".
KY_API KY_ERRORS KyDraw(cairo_t* context, const KyBW8PathVector* path, double width,
                        double height) noexcept;
KY_API KY_ERRORS KyDraw(cairo_t* context, const KyC24PathVector* path, double width,
                        double height) noexcept;

/// Marks peaks and valleys on the chart of a profile of `samples` elements, which has the same
/// width and height: a band over all its height, from start width / samples to (start + length)
/// width / samples, a quarter as opaque as the context's colour, and a line in the band at its
/// centre, (center + 1/2) width / samples. What lies outside the profile is left out. There are no
/// axes, which belong to the profile.
///
/// Errors: those of every chart; `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for a negative number
/// of samples. Trace: "KyDraw (KyPeaksVector)".
KY_API KY_ERRORS KyDraw(cairo_t* context, const KyPeaksVector* peaks, int samples, double width,
                        double height) noexcept;

/// Draws a histogram of n counts as bars without gaps, in the context's colour: bar i stands over i
/// width / n to (i + 1) width / n, and the highest one is as high as the rectangle.
///
/// Errors: those of every chart. Trace: "KyDraw (KyBW8HistogramVector)".
KY_API KY_ERRORS KyDraw(cairo_t* context, const KyBW8HistogramVector* histogram, double width,
                        double height) noexcept;
