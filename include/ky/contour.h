/// @file
/// @ingroup contours
/// Contours of thresholded objects.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/records.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/vector.h"

/// Which way a contour is followed, as seen on the screen, and what the border of the ROI does to
/// it. The border may stop the contour. Pixels outside the ROI may count as background, so that the
/// contour goes on along the border. Or the contour may be followed a second time, the other way,
/// from where the border stopped it, which gives the whole open contour from border to border.
enum CONTOUR_MODE : int {
  KY_CONTOUR_CW_STOP_AT_BORDER = 0,   ///< clockwise; stops
  KY_CONTOUR_CW_ALONG_BORDER = 1,     ///< clockwise; goes on along the border
  KY_CONTOUR_CW_BOTH_WAYS = 2,        ///< clockwise; followed again, the other way
  KY_CONTOUR_CCW_STOP_AT_BORDER = 3,  ///< counter-clockwise; stops
  KY_CONTOUR_CCW_BOTH_WAYS = 4,       ///< counter-clockwise; followed again, the other way
  KY_CONTOUR_CCW_ALONG_BORDER = 5,    ///< counter-clockwise; goes on along the border
};

/// Which pixels belong to an object. Any value other than 0 acts like 1.
enum CONTOUR_THRESHOLD : int {
  KY_CONTOUR_ABOVE_THRESHOLD = 0,  ///< level >= threshold
  KY_CONTOUR_BELOW_THRESHOLD = 1,  ///< level <= threshold
};

/// Which neighbours of a pixel are connected to it. Any other value acts like KY_CONNEXITY_4,
/// except that the first step is chosen more strictly.
enum CONNEXITY : int {
  KY_CONNEXITY_4 = 0,  ///< those that share an edge
  KY_CONNEXITY_8 = 1,  ///< those that share an edge or a corner
};

/// Follows the border between an object and its background, from pixel (x, y) of the object on, and
/// records the object's pixels in order (Moore neighbour tracing). **Paths hold coordinates of 16
/// bits, which wrap beyond 32767; a KyVector holds them as they are.** The start should lie on that
/// border. Steps have the codes 0 to 7: 0 goes to the right, and each following code turns
/// counter-clockwise by 45 degrees (1 up and right, 2 up, ...); 4-connected contours have even
/// codes only.
///
/// The first step: starting with the third neighbour, counted from the one to the right, the
/// neighbours are visited in the sense of the contour, and the first one that belongs to the object
/// and follows one of the background is taken; in 8-connected contours an even step needs two of
/// the background before it. Each following step goes to the first object pixel met when turning in
/// that sense from the last background pixel. The contour is complete when the first step is about
/// to be taken again. A pixel is recorded once for each passage.
///
/// A KyPathVector records x and y. A KyBW8PathVector records x, y and the grey level or, when
/// `storeSteps` is not 0, the code of the step that leads on. A KyVector records groups of three
/// integers, x, y and that code; unless it has type 1 already it gets that type and room for 2000
/// groups, and it grows as needed.
///
/// The closed flag of a path tells afterwards whether the contour is closed: it is 0 after
/// `KY_ERROR_PATH_STOPPED` (106) and when the contour was followed a second time, otherwise 1. The
/// output is emptied first; after a failure it holds what was recorded so far. A source in the
/// memory of the output is read before that is written. The cost follows the length of the contour.
///
/// Errors, checked in this order: `KY_ERROR_BAD_MODE` (1009) for a mode that is not in the
/// enumeration; `KY_ERROR_NO_IMAGE` (1400), which changes nothing in the output except the closed
/// flag; `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector, or a generic one without data;
/// `KY_ERROR_CONTOUR_START` (1500) when (x, y) is not a pixel of an object in the ROI; when there
/// is no first step, `KY_ERROR_CONTOUR_ISOLATED` (1502) if the last neighbour visited is background
/// and `KY_ERROR_CONTOUR_NO_DIRECTION` (1501) if not; `KY_ERROR_PATH_STOPPED` (106) when the border
/// of the ROI stopped the contour (in the modes that follow it twice: the second time), where the
/// pixel at which it stopped is not recorded; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303), or
/// `KY_ERROR_CONTOUR_TOO_LONG` (1504) when a generic vector would get more than width * height / 8
/// records. Traces: "ImgContour (KyPathVector)", "ImgContour (KyBW8PathVector)", "ImgContour
/// (KyVector)".
KY_API KY_ERRORS ImgContour(const KyROI<KyBW8>* source, CONTOUR_MODE mode, int x, int y,
                            CONTOUR_THRESHOLD sense, unsigned int threshold, CONNEXITY connexity,
                            KyPathVector* path) noexcept;
KY_API KY_ERRORS ImgContour(const KyROI<KyBW8>* source, CONTOUR_MODE mode, int x, int y,
                            CONTOUR_THRESHOLD sense, unsigned int threshold, CONNEXITY connexity,
                            KyBW8PathVector* path, int storeSteps) noexcept;
KY_API KY_ERRORS ImgContour(const KyROI<KyBW8>* source, CONTOUR_MODE mode, int x, int y,
                            CONTOUR_THRESHOLD sense, unsigned int threshold, CONNEXITY connexity,
                            KyVector* contour) noexcept;
