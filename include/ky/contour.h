// Contours of thresholded objects.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/records.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/vector.h"

/// Which way a contour is followed, as seen on the screen, and what happens at the ROI's border:
/// it stops the contour; or pixels outside the ROI count as background, so that the contour goes
/// on along the border; or the contour is followed again, the other way, from where the border
/// stopped it, so that the whole open contour from border to border results.
enum CONTOUR_MODE : int {
  KY_CONTOUR_CW_STOP_AT_BORDER = 0,   ///< clockwise; stops
  KY_CONTOUR_CW_ALONG_BORDER = 1,     ///< clockwise; goes on along the border
  KY_CONTOUR_CW_BOTH_WAYS = 2,        ///< clockwise; followed again, the other way
  KY_CONTOUR_CCW_STOP_AT_BORDER = 3,  ///< counter-clockwise; stops
  KY_CONTOUR_CCW_BOTH_WAYS = 4,       ///< counter-clockwise; followed again, the other way
  KY_CONTOUR_CCW_ALONG_BORDER = 5,    ///< counter-clockwise; goes on along the border
};

/// Which pixels belong to an object. Any value but 0 acts as 1.
enum CONTOUR_THRESHOLD : int {
  KY_CONTOUR_ABOVE_THRESHOLD = 0,  ///< level >= threshold
  KY_CONTOUR_BELOW_THRESHOLD = 1,  ///< level <= threshold
};

/// Which neighbours of a pixel are connected with it. Any other value acts as KY_CONNEXITY_4, but
/// for a stricter choice of the first step.
enum CONNEXITY : int {
  KY_CONNEXITY_4 = 0,  ///< those that share an edge
  KY_CONNEXITY_8 = 1,  ///< those that share an edge or a corner
};

/// Follows the border between an object and its background, from pixel (x, y) of the object on, and
/// records the object's pixels in order (Moore neighbour tracing). The start should lie on that
/// border. Steps are coded 0 to 7: 0 to the right, then counter-clockwise by 45 degrees (1 up and
/// right, 2 up ...); 4-connected contours have even codes only.
///
/// The first step: the neighbours are visited in the sense of the contour, from the third one on
/// (counted from the right one), and the first that belongs to the object after one of the
/// background is taken; 8-connected, an even step needs two of the background before it. The
/// following steps: to the first object pixel met when turning in that sense from the last
/// background pixel. The contour is complete when the first step is about to be taken again. A
/// pixel is recorded once for each passage.
///
/// What is recorded: x and y; or x, y and the grey level, respectively the code of the step that
/// leads on (`storeSteps` not 0); or groups of three integers, x, y and that code, in a vector that
/// gets type 1 and room for 2000 groups of three unless it has that type, and grows. Coordinates in
/// paths are 16 bits wide and wrap beyond.
///
/// The closed flag of a path tells afterwards whether the contour is closed: 0 after 106 and when
/// it was followed a second time, else 1. The output is emptied first; after a failure it holds
/// what was recorded so far. The cost follows the length of the contour. Calls may run at the same
/// time.
///
/// Errors, in this order: 1009 for a mode above 5; 1400, the output stays as it is but for the
/// closed flag; 1601 for a missing vector, or a generic one without data; 1500 when (x, y) is not a
/// pixel of an object in the ROI; no first step found, 1502 when the last neighbour looked at is
/// background and 1501 when not; 106 when the border of the ROI stopped the contour (where it was
/// followed again: the second time), the pixel where it stopped is not recorded; 1303, or for the
/// generic vector 1504 before more than width * height / 8 records. Traces "ImgContour
/// (KyPathVector)", "ImgContour (KyBW8PathVector)", "ImgContour (KyVector)".
KY_API KY_ERRORS ImgContour(const KyROI<KyBW8>* source, CONTOUR_MODE mode, int x, int y,
                            CONTOUR_THRESHOLD sense, unsigned int threshold, CONNEXITY connexity,
                            KyPathVector* path) noexcept;
KY_API KY_ERRORS ImgContour(const KyROI<KyBW8>* source, CONTOUR_MODE mode, int x, int y,
                            CONTOUR_THRESHOLD sense, unsigned int threshold, CONNEXITY connexity,
                            KyBW8PathVector* path, int storeSteps) noexcept;
KY_API KY_ERRORS ImgContour(const KyROI<KyBW8>* source, CONTOUR_MODE mode, int x, int y,
                            CONTOUR_THRESHOLD sense, unsigned int threshold, CONNEXITY connexity,
                            KyVector* contour) noexcept;
