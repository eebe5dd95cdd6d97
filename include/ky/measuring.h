/// @file
/// @ingroup measuring
/// Measuring: profiles across edges, edges to fractions of a pixel, and lines and circles fitted to
/// them.
#pragma once

#include <cstdint>

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/typed_vector.h"
#include "ky/vector_transitions.h"

/// Positions are real numbers: pixel (x, y) of the ROI has its centre at (x, y). Results are
/// computed in double precision and stored as declared. Angles are in the unit of KySetAngleUnit
/// and run clockwise on the screen: the direction of an angle is (cos, sin), and y points down.
///
/// The errors of every function are checked in this order: `KY_ERROR_NO_IMAGE` (1400) for a source
/// that is null or has no pixels; `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector; then the
/// other parameters in the order of the declaration: the first number that is not finite or not in
/// its range gives `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) to
/// `KY_ERROR_PARAMETER_6_OUT_OF_RANGE` (1016) by its position among these parameters, where a
/// polarity counts too and the seventh and later ones have 1016 as well; a polarity that is not in
/// the enumeration gives `KY_ERROR_UNSUPPORTED_OPERATION` (1003). Last comes
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Vectors and other results are as they were after any of
/// them. Unless stated otherwise, numbers may be any finite ones. A source without columns or rows
/// gives an empty vector. The trace is the function's name.

/// A position.
struct KY_API KyPosition {
  /// The position.
  float x, y;
  constexpr bool operator==(const KyPosition&) const noexcept = default;
};

/// An edge of a profile.
struct KY_API KyEdge {
  float position;  ///< where it is, in samples from the first one
  float strength;  ///< its slope in levels a sample, of the profile as it is; below 0 for a falling
                   ///< one
  constexpr bool operator==(const KyEdge&) const noexcept = default;
};

/// A point of an edge, found by a caliper.
struct KY_API KyEdgePoint {
  /// The position.
  float x, y;
  float strength;  ///< the slope after smoothing, in levels a pixel; below 0 for a falling edge
  std::int32_t caliper;  ///< which caliper has found it, counted from 0
  constexpr bool operator==(const KyEdgePoint&) const noexcept = default;
};

static_assert(sizeof(KyPosition) == 8 && sizeof(KyEdge) == 8 && sizeof(KyEdgePoint) == 16);

template <>
struct KyFileType<float> : KyFileTypeOf<12> {};
template <>
struct KyFileType<KyPosition> : KyFileTypeOf<13> {};
template <>
struct KyFileType<KyEdge> : KyFileTypeOf<14> {};
template <>
struct KyFileType<KyEdgePoint> : KyFileTypeOf<15> {};

/// The vectors of profiles, positions and edges.
using KyFloatVector = KyVectorTemplate<float>;
using KyPositionsVector = KyVectorTemplate<KyPosition>;
using KyEdgesVector = KyVectorTemplate<KyEdge>;
using KyEdgePointsVector = KyVectorTemplate<KyEdgePoint>;

extern template struct KyPlaceHolder<float>;
extern template struct KyPlaceHolder<KyPosition>;
extern template struct KyPlaceHolder<KyEdge>;
extern template struct KyPlaceHolder<KyEdgePoint>;
extern template class KyVectorTemplate<float>;
extern template class KyVectorTemplate<KyPosition>;
extern template class KyVectorTemplate<KyEdge>;
extern template class KyVectorTemplate<KyEdgePoint>;

/// Reads the profile along a segment: sample i of n stands at
///
///     (1 - t) P0 + t P1, t = i / (n - 1); a single sample stands at P0
///
/// Its value is interpolated linearly between the centres of the four nearest pixels (bilinear),
/// from coordinates limited to 0 ... width - 1 and 0 ... height - 1, so that the outermost pixels
/// go on outside. With a thickness it is the mean of the 2 halfThickness + 1 such values at
/// positions one pixel apart across the segment. A segment of no length has the direction (1, 0).
/// The vector is replaced.
///
/// Ranges: 1 <= samples <= 2^24, halfThickness <= 2^15.
KY_API KY_ERRORS ImgSampleSegment(const KyROI<KyBW8>* source, float x0, float y0, float x1,
                                  float y1, unsigned samples, unsigned halfThickness,
                                  KyFloatVector* profile) noexcept;

/// Reads the profile along an arc, as ImgSampleSegment does along a segment: sample i of n stands
/// at the angle (1 - t) startAngle + t endAngle, t = i / (n - 1), and its thickness lies along the
/// radius. Arcs of more than a turn, and those that run backwards, are what their angles say.
///
/// Ranges: radius >= 0, 1 <= samples <= 2^24, halfThickness <= 2^15.
KY_API KY_ERRORS ImgSampleArc(const KyROI<KyBW8>* source, float centerX, float centerY,
                              float radius, float startAngle, float endAngle, unsigned samples,
                              unsigned halfThickness, KyFloatVector* profile) noexcept;

/// Smooths a profile by a Gaussian: sample i becomes
///
///     sum of w(k) p(i + k) / sum of w(k), w(k) = exp(-(k / sigma)^2 / 2), |k| <= ceil(3 sigma)
///
/// where the first and the last sample go on outside. A sigma of 0 changes nothing. Range: 0 <=
/// sigma <= 2^15. The cost goes with samples times sigma.
KY_API KY_ERRORS KySmooth(KyFloatVector* profile, float sigma) noexcept;

/// Finds the edges of a profile p of n samples, to fractions of a sample: the extremes of its slope
///
///     d(i) = (p(i + 1) - p(i - 1)) / 2 for 0 < i < n - 1, 0 elsewhere
///
/// A rising edge is a run of equal d above 0, and at least `minStrength`, with a smaller d on both
/// sides; a falling edge is the same of -d. Values of d count as equal when they differ by at most
/// 10^-6 of the largest |d|. A run of one or two samples gives the vertex of the parabola through d
/// at its first sample and at the neighbours of that one as position and strength; a longer run
/// gives its middle, and its d. The vector is replaced by the edges of the polarity in order of
/// their positions. Parameters: polarity, minStrength >= 0.
KY_API KY_ERRORS KyFindEdges(const KyFloatVector* profile, TRANS_SCAN_EDGE polarity,
                             float minStrength, KyEdgesVector* edges) noexcept;

/// Measures the width of the edge of a profile p of n samples, in samples: how far it takes to get
/// from `share` to 1 - `share` of its step; a share of 0.1 gives the width from 10 % to 90 %. With
/// a and b as the means of the first and of the last n / 4 samples (rounded down),
///
///     q(i) = (p(i) - a) / (b - a)
///     width = u - l
///
/// where u is the first position, after the last sample of the first quarter with q <= share, at
/// which q, interpolated linearly, reaches 1 - share, and l the last one before it at which q
/// leaves share. The profile must hold one edge, of either direction, in its middle half.
///
/// **A width below 2 pixels tells only that the edge is sharp**: a perfect step measures 0.8 to 1.6
/// pixels from 10 % to 90 %, as pixels have an area and samples are interpolated between them. A
/// Gaussian edge of w pixels measures about sqrt(w^2 + 2), to 0.3 pixels at w = 2 and 0.1 at 4.
///
/// Errors: `KY_ERROR_BAD_VECTOR_TYPE` (1601); `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) unless
/// 0.01 <= share <= 0.49; `KY_ERROR_NO_PIXELS` (1051) for fewer than 4 samples;
/// `KY_ERROR_SINGULAR_SYSTEM` (1050) when a and b are equal, or samples are not finite.
KY_API KY_ERRORS KyEdgeWidth(const KyFloatVector* profile, float share, float& width) noexcept;

/// Finds points of an edge that lies along a segment, by calipers: profiles across the segment at
/// the middle of each of `calipers` equal pieces of it. A caliper reaches from -halfLength to
/// +halfLength pixels in the direction (-dy, dx), where (dx, dy) is that of the segment: for a
/// segment that runs to the right, down. It has 2 ceil(2 halfLength) + 1 samples, each the mean of
/// 2 halfThickness + 1 values one pixel apart along the segment, read as in ImgSampleSegment, and
/// is smoothed as by KySmooth with a sigma in pixels. Its strongest edge of the polarity, in either
/// direction for TRANS_SCAN_BOTH, and the first of equally strong ones, becomes a point of the
/// vector. A caliper gives no point when it has no edge of `minStrength` levels a pixel, or when
/// its strongest one lies outside of the pixels' centres, even if a weaker one lies inside.
///
/// Strengths, and so minStrength, are slopes **after smoothing**: a step of h levels that the
/// camera blurs by a Gaussian of b pixels has a strength of about 0.4 h / sqrt(b^2 + sigma^2 +
/// 0.4). A minStrength of a third of that leaves room for fainter places. KyEdgeWidth tells b: the
/// width from 10 % to 90 % is 2.56 b.
///
/// A sigma of 1 suits most pictures. Straight edges that are drawn exactly are found to 0.05 pixels
/// with it and a halfThickness of 1, and to 0.02 with a sigma of 2 and a halfThickness of 5.
///
/// Ranges: 0 < halfLength <= 2^15, 1 <= calipers <= 2^20, halfThickness <= 2^15, 0 <= sigma <=
/// 2^15, minStrength >= 0. The cost goes with calipers halfLength (halfThickness + sigma + 1).
KY_API KY_ERRORS ImgFindEdgePoints(const KyROI<KyBW8>* source, float x0, float y0, float x1,
                                   float y1, float halfLength, unsigned calipers,
                                   unsigned halfThickness, float sigma, TRANS_SCAN_EDGE polarity,
                                   float minStrength, KyEdgePointsVector* points) noexcept;

/// Finds points of an edge that lies along an arc, as ImgFindEdgePoints does along a segment. The
/// calipers stand at the middle of equal pieces of the arc and point outwards, from the centre; the
/// thickness lies along the tangent. Range: radius >= 0, and those of ImgFindEdgePoints.
KY_API KY_ERRORS ImgFindEdgePointsOnCircle(const KyROI<KyBW8>* source, float centerX, float centerY,
                                           float radius, float startAngle, float endAngle,
                                           float halfLength, unsigned calipers,
                                           unsigned halfThickness, float sigma,
                                           TRANS_SCAN_EDGE polarity, float minStrength,
                                           KyEdgePointsVector* points) noexcept;

/// A straight line, as it was fitted to points; before that, the row y = 0.
struct KY_API KyLine {
  double x = 0;           ///< the column of the centre of its points
  double y = 0;           ///< the row of that centre
  double directionX = 1;  ///< its direction, a unit vector with directionX > 0,
  double directionY = 0;  ///< or directionX = 0 and directionY > 0
  double residual = 0;    ///< the root of the mean squared distance of its points
  int used = 0;           ///< the number of its points
};

/// A circle, fitted to points.
struct KY_API KyCircle {
  double x = 0;         ///< the column of its centre
  double y = 0;         ///< the row of its centre
  double radius = 0;    ///< its radius
  double residual = 0;  ///< the root of the mean squared distance of its points
  int used = 0;         ///< the number of its points
};

/// Fits a line to points so that the sum of their squared distances from it is least (total least
/// squares; Pearson, 1901). When no direction is better than others it is (1, 0).
///
/// An outlier of 0 uses all points. Otherwise the fit is repeated with those of all points that lie
/// no further than that from the last fit, in pixels, until they stay the same, 20 times at most.
/// The trace is the same for all kinds of points. Errors: `KY_ERROR_BAD_VECTOR_TYPE` (1601),
/// `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for an outlier below 0, `KY_ERROR_NO_PIXELS` (1051)
/// for fewer than 2 points, also when so few are left, `KY_ERROR_SINGULAR_SYSTEM` (1050) when all
/// points are equal or one is not finite, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).
KY_API KY_ERRORS KyFitLine(const KyPositionsVector* points, float outlier, KyLine& line) noexcept;
KY_API KY_ERRORS KyFitLine(const KyEdgePointsVector* points, float outlier, KyLine& line) noexcept;

/// Fits a circle to points so that the sum of their squared distances from it is least: by steps of
/// Gauss and Newton from the circle of least algebraic distance, each halved while it makes the sum
/// larger, until they are below 10^-9 of the radius, 50 steps at most. Outliers are treated as in
/// KyFitLine.
///
/// Points that are no circle's, such as those of a cross or of two parallel lines, may lie so
/// evenly about the first circle that the steps end there, although others are better. The residual
/// tells.
///
/// Errors: those of KyFitLine, with `KY_ERROR_NO_PIXELS` (1051) for fewer than 3 points, and
/// `KY_ERROR_SINGULAR_SYSTEM` (1050) also when the points lie on a line: when their root mean
/// squared distance from the best line is at most 10^-6 of the largest distance from their centre.
KY_API KY_ERRORS KyFitCircle(const KyPositionsVector* points, float outlier,
                             KyCircle& circle) noexcept;
KY_API KY_ERRORS KyFitCircle(const KyEdgePointsVector* points, float outlier,
                             KyCircle& circle) noexcept;

/// Computes the point where two lines meet. Error: `KY_ERROR_SINGULAR_SYSTEM` (1050) for lines that
/// are parallel in double precision; x and y are then as they were.
KY_API KY_ERRORS KyIntersect(const KyLine& a, const KyLine& b, double& x, double& y) noexcept;

/// Returns the distance of a point from a line, above 0 where the point lies in the direction
/// (-directionY, directionX) from it: to the right of the direction, as seen on the screen. Leaves
/// the status alone.
KY_API double KyDistance(const KyLine& line, double x, double y) noexcept;

/// Returns the angle from line a to line b, clockwise on the screen, in the unit of KySetAngleUnit,
/// above -90 and up to 90 degrees. Leaves the status alone.
KY_API double KyAngleBetween(const KyLine& a, const KyLine& b) noexcept;
