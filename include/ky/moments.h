/// @file
/// @ingroup moments
/// Moments of a rectangle of pixels: area, centre, axes.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Coordinates x and y count from the ROI's own first pixel. Binary functions regard the pixels at
/// the threshold and above, each with the weight 1; weighed ones regard all pixels, each with its
/// level as the weight. Sums are exact integers. Errors, which leave the outputs as they were:
/// `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels, `KY_ERROR_NO_PIXELS` (1051) for one of no
/// columns or rows.

/// The moments up to the third order: mpq is the sum of weight x^p y^q.
struct KyMoments {
  double m00;  ///< the area, or the sum of the levels
  double m10;  ///< m10 / m00 is the x of the centre
  double m01;  ///< m01 / m00 is the y of the centre
  double m20;  ///< of x^2
  double m11;  ///< of x y
  double m02;  ///< of y^2
  double m30;  ///< of x^3
  double m21;  ///< of x^2 y
  double m12;  ///< of x y^2
  double m03;  ///< of y^3
};

/// Writes the moments, which are exact as far as they are below 2^53, and otherwise within 2^-50 of
/// their value. Traces: "ImgBinaryMoments", "ImgWeighedMoments".
KY_API KY_ERRORS ImgBinaryMoments(const KyROI<KyBW8>* source, KyBW8 threshold,
                                  KyMoments& moments) noexcept;
KY_API KY_ERRORS ImgWeighedMoments(const KyROI<KyBW8>* source, KyMoments& moments) noexcept;

/// Writes the centre (m10 / m00, m01 / m00) of the pixels at the threshold and above. Error:
/// `KY_ERROR_NO_PIXELS` (1051) also when there are none. Trace: "ImgGravityCenter".
KY_API KY_ERRORS ImgGravityCenter(const KyROI<KyBW8>* source, KyBW8 threshold, float& x,
                                  float& y) noexcept;

/// Writes the centre of all pixels, weighed by their levels. Error: `KY_ERROR_NO_PIXELS` (1051)
/// also when all levels are 0. Trace: "ImgCentroid".
KY_API KY_ERRORS ImgCentroid(const KyROI<KyBW8>* source, float& x, float& y) noexcept;

/// Writes the **variances** along the axes of the pixels at the threshold and above (an ellipse is
/// 4 sqrt(major) pixels long), and the direction of the long axis. With (x0, y0) as the centre, and
/// upq as the sum of (x - x0)^p (y - y0)^q divided by the area, `major` and `minor` are the
/// eigenvalues of the matrix (u20 u11; u11 u02), and `angle` is atan2(2 u11, u20 - u02) / 2,
/// counted from the x axis towards the y axis, which points down, in the unit of KySetAngleUnit and
/// above -90 to 90 degrees; 0 where no direction is longer. Pixels count as points, without an
/// extent of their own. The numerators are exact, and `minor` is the determinant divided by
/// `major`, so that lines give exactly 0. Error: `KY_ERROR_NO_PIXELS` (1051) also when there are
/// none. Trace: "ImgInertia".
KY_API KY_ERRORS ImgInertia(const KyROI<KyBW8>* source, KyBW8 threshold, float& major, float& minor,
                            float& angle) noexcept;
