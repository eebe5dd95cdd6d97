// Points of edges of exactly drawn pictures, and the checks of all functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <random>
#include <string>

#include "ky/ky.h"

namespace {

constexpr double kDegree = std::numbers::pi / 180;

struct Interval {
  double from, to;
};

// A picture of 200 x 160 pixels, level 40, with a shape of level 200: pixels have the mean level of
// their area, where `inside(y)` is the interval of x that lies in the shape.
KyImage<KyBW8> Draw(const std::function<Interval(double y)>& inside) {
  constexpr int kLines = 32;
  KyImage<KyBW8> image(200, 160);
  for (int y = 0; y < 160; ++y) {
    for (int x = 0; x < 200; ++x) {
      double area = 0;
      for (int i = 0; i < kLines; ++i) {
        const auto [from, to] = inside(y - 0.5 + (i + 0.5) / kLines);
        area += std::max(0.0, std::min(x + 0.5, to) - std::max(x - 0.5, from)) / kLines;
      }
      image.SetPixel(static_cast<KyBW8>(std::lround(40 + 160 * area)), x, y);
    }
  }
  return image;
}
KyImage<KyBW8> Disk(double x, double y, double radius) {
  return Draw([=](double row) {
    const double square = radius * radius - (row - y) * (row - y),
                 half = std::sqrt(std::max(square, 0.0));
    return Interval{x - half, x + half};
  });
}
// What lies to the right, as seen on the screen, of the line through (x, y) in a direction.
KyImage<KyBW8> HalfPlane(double x, double y, double c, double s) {
  return Draw([=](double row) {
    // Cross((c, s), (at - x, row - y)) > 0
    const double at = x + c * (row - y) / (s == 0 ? 1e-9 : s);
    return s > 0 ? Interval{-1e9, at} : Interval{at, 1e9};
  });
}

TEST(EdgePoints, OfLinesInEveryDirection) {
  for (int degrees = 1; degrees < 360; degrees += 17) {
    SCOPED_TRACE(degrees);
    const double c = std::cos(degrees * kDegree), s = std::sin(degrees * kDegree);
    const double x = 100.3, y = 80.2;
    const KyImage<KyBW8> image = HalfPlane(x, y, c, s);
    // The segment runs beside the edge, at a small angle to it.
    const double tilt = (degrees + 3) * kDegree;
    const auto end = [&](double t) {
      return KyPosition{static_cast<float>(x + t * std::cos(tilt) + 1.5 * s),
                        static_cast<float>(y + t * std::sin(tilt) - 1.5 * c)};
    };
    const KyPosition from = end(-50), to = end(50);
    for (const bool careful : {false, true}) {
      KyEdgePointsVector points;
      ASSERT_EQ(ImgFindEdgePoints(&image, from.x, from.y, to.x, to.y, 10, 40, careful ? 5 : 1,
                                  careful ? 2.0f : 1.0f, TRANS_SCAN_RISING, 10, &points),
                KY_OK);
      ASSERT_EQ(points.GetNumElements(), 40u);
      for (unsigned i = 0; i < 40; ++i) {
        EXPECT_EQ(points[i].caliper, static_cast<int>(i));
        EXPECT_NEAR(c * (points[i].y - y) - s * (points[i].x - x), 0, careful ? 0.02 : 0.05);
        // The caliper's own place: its foot on the segment is at the middle of piece i.
        const double along =
            (points[i].x - from.x) * std::cos(tilt) + (points[i].y - from.y) * std::sin(tilt);
        EXPECT_NEAR(along, (i + 0.5) * 100 / 40, 1e-3);
        EXPECT_GT(points[i].strength, 10);
      }
      KyLine line;
      ASSERT_EQ(KyFitLine(&points, 0, line), KY_OK);
      EXPECT_NEAR(KyDistance(line, x, y), 0, careful ? 0.02 : 0.045);
      EXPECT_NEAR(std::abs(line.directionX * s - line.directionY * c), 0, 0.001);
      // Looked at from the other side, the edge falls.
      ASSERT_EQ(ImgFindEdgePoints(&image, to.x, to.y, from.x, from.y, 10, 40, 0, 1,
                                  TRANS_SCAN_RISING, 10, &points),
                KY_OK);
      EXPECT_EQ(points.GetNumElements(), 0u);
    }
  }
}

// A caliper is a profile, smoothed, of which the strongest edge is taken.
TEST(EdgePoints, AreThoseOfProfiles) {
  std::mt19937 random(5);
  KyImage<KyBW8> image(60, 40);
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 60; ++x) image.SetPixel(static_cast<KyBW8>(random()), x, y);
  for (int i = 0; i < 200; ++i) {
    SCOPED_TRACE(i);
    const auto real = [&](double least, double most) {
      return static_cast<float>(least +
                                (most - least) * static_cast<double>(random() % 1000) / 999);
    };
    const float x = real(15, 45), y = real(10, 30), half = real(0.3, 12), sigma = real(0, 3);
    const float degrees = real(-180, 180);
    const auto thickness = static_cast<unsigned>(random() % 4);
    const double c = std::cos(degrees * kDegree), s = std::sin(degrees * kDegree);
    const auto polarity = static_cast<TRANS_SCAN_EDGE>(1 + i % 3);
    const float minStrength = i % 2 == 0 ? 0.0f : 12.0f;
    // One caliper about (x, y) in the direction (c, s): of a circle, and of a segment across it.
    const bool onCircle = i % 2 == 0;
    KyEdgePointsVector points;
    ASSERT_EQ(
        onCircle
            ? ImgFindEdgePointsOnCircle(&image, static_cast<float>(x - 5 * c),
                                        static_cast<float>(y - 5 * s), 5, degrees - 7, degrees + 7,
                                        half, 1, thickness, sigma, polarity, minStrength, &points)
            : ImgFindEdgePoints(&image, static_cast<float>(x - s), static_cast<float>(y + c),
                                static_cast<float>(x + s), static_cast<float>(y - c), half, 1,
                                thickness, sigma, polarity, minStrength, &points),
        KY_OK);
    const int intervals = 2 * static_cast<int>(std::ceil(2.0 * half));
    const double step = 2.0 * half / intervals;
    KyFloatVector profile;
    ASSERT_EQ(
        ImgSampleSegment(&image, static_cast<float>(x - half * c), static_cast<float>(y - half * s),
                         static_cast<float>(x + half * c), static_cast<float>(y + half * s),
                         static_cast<unsigned>(intervals + 1), thickness, &profile),
        KY_OK);
    ASSERT_EQ(KySmooth(&profile, static_cast<float>(sigma / step)), KY_OK);
    KyEdgesVector edges;
    ASSERT_EQ(KyFindEdges(&profile, polarity, static_cast<float>(minStrength * step), &edges),
              KY_OK);
    const KyEdge* const strongest = std::max_element(
        edges.begin(), edges.end(),
        [](KyEdge a, KyEdge b) { return std::abs(a.strength) < std::abs(b.strength); });
    ASSERT_EQ(points.GetNumElements(), edges.GetNumElements() > 0 ? 1u : 0u);
    if (edges.GetNumElements() == 0) continue;
    const double distance = strongest->position * step - half;
    EXPECT_NEAR(points[0].x, x + distance * c, 0.002);
    EXPECT_NEAR(points[0].y, y + distance * s, 0.002);
    EXPECT_NEAR(points[0].strength, strongest->strength / step, 0.02);
  }
}

TEST(EdgePoints, OfCircles) {
  KySetAngleUnit(KY_ANGLE_REVOLUTIONS);
  for (const double radius : {8.3, 25.0, 60.7}) {
    SCOPED_TRACE(radius);
    const double x = 99.6, y = 80.3;
    const double bend = 0.5 / radius;  // what the edge bends away within the thickness and a pixel
    const KyImage<KyBW8> image = Disk(x, y, radius);
    for (const auto& [start, end] : {Interval{0, 1}, {0.4, 0.6}, {0.5, -0.5}}) {
      KyEdgePointsVector points;
      ASSERT_EQ(ImgFindEdgePointsOnCircle(&image, 100, 80, static_cast<float>(radius + 1),
                                          static_cast<float>(start), static_cast<float>(end), 6, 64,
                                          1, 1, TRANS_SCAN_BOTH, 10, &points),
                KY_OK);
      ASSERT_EQ(points.GetNumElements(), 64u);
      for (const KyEdgePoint& p : points) {
        EXPECT_NEAR(std::hypot(p.x - x, p.y - y), radius, 0.05 + bend);
        EXPECT_LT(p.strength, -10);
        const double angle = (start + (end - start) * (p.caliper + 0.5) / 64) * 360 * kDegree;
        EXPECT_NEAR(std::remainder(std::atan2(p.y - 80, p.x - 100) - angle, 360 * kDegree), 0,
                    1e-3);
      }
      KyCircle circle;
      ASSERT_EQ(KyFitCircle(&points, 0, circle), KY_OK);
      const bool full = std::abs(end - start) == 1;
      EXPECT_NEAR(circle.x, x, full ? 0.01 : 0.2);
      EXPECT_NEAR(circle.y, y, full ? 0.01 : 0.1);
      EXPECT_NEAR(circle.radius, radius, full ? 0.01 + bend : 0.2);
    }
  }
  KySetAngleUnit(KY_ANGLE_DEGREES);
}

// A bar from x = 20.5 to 50.5 of level 100, right of which all is 60.
KyImage<KyBW8> Bar() {
  KyImage<KyBW8> image(100, 20);
  for (int y = 0; y < 20; ++y)
    for (int x = 21; x < 100; ++x) image.SetPixel(x <= 50 ? 100 : 60, x, y);
  return image;
}

TEST(EdgePoints, AreTheStrongestOfTheirPolarity) {
  const KyImage<KyBW8> image = Bar();
  const auto find = [&](TRANS_SCAN_EDGE polarity, float minStrength, float middle, float half) {
    KyEdgePointsVector points;
    // Upwards: calipers reach from left to right.
    EXPECT_EQ(ImgFindEdgePoints(&image, middle, 15, middle, 5, half, 1, 1, 0.5f, polarity,
                                minStrength, &points),
              KY_OK);
    return points.GetNumElements() == 1 ? points[0] : KyEdgePoint{-1, -1, 0, -1};
  };
  EXPECT_NEAR(find(TRANS_SCAN_RISING, 1, 40, 30).x, 20.5, 0.05);
  EXPECT_NEAR(find(TRANS_SCAN_FALLING, 1, 40, 30).x, 50.5, 0.05);
  EXPECT_NEAR(find(TRANS_SCAN_BOTH, 1, 40, 30).x, 20.5, 0.05);
  EXPECT_LT(find(TRANS_SCAN_FALLING, 1, 40, 30).strength, 0);
  EXPECT_EQ(find(TRANS_SCAN_FALLING, 60, 40, 30).caliper, -1);
  EXPECT_EQ(find(TRANS_SCAN_RISING, 1, 80, 15).caliper, -1);
  // The strength is that of a pixel, however dense the samples are.
  EXPECT_NEAR(find(TRANS_SCAN_RISING, 1, 20, 6).strength,
              find(TRANS_SCAN_RISING, 1, 20, 6.2f).strength, 2);
  // Of equally strong edges the first.
  KyImage<KyBW8> twins(60, 9);
  for (int y = 0; y < 9; ++y)
    for (int x = 20; x < 30; ++x) twins.SetPixel(90, x, y);
  KyEdgePointsVector points;
  ASSERT_EQ(ImgFindEdgePoints(&twins, 24.5f, 8, 24.5f, 0, 15, 3, 0, 1, TRANS_SCAN_BOTH, 1, &points),
            KY_OK);
  ASSERT_EQ(points.GetNumElements(), 3u);
  for (const KyEdgePoint& p : points) EXPECT_NEAR(p.x, 19.5, 0.02);
}

// Two steps upwards of 50 levels, and one column of 201 in which the lower one has a level more.
TEST(EdgePoints, AreTheStrongerOfNearlyEqualEdges) {
  KyImage<KyBW8> image(230, 100);
  for (int y = 0; y < 100; ++y)
    for (int x = 0; x < 230; ++x)
      image.SetPixel(static_cast<KyBW8>(y < 30 ? 50 : y < 70 ? 100 : x == 99 ? 151 : 150), x, y);
  KyEdgePointsVector points;
  ASSERT_EQ(ImgFindEdgePoints(&image, 110, 49.5f, 116, 49.5f, 45, 1, 100, 5, TRANS_SCAN_RISING, 0,
                              &points),
            KY_OK);
  ASSERT_EQ(points.GetNumElements(), 1u);
  EXPECT_NEAR(points[0].y, 69.5, 0.01);
}

// The slope of a plane is the same everywhere: its middle is that of the caliper, whatever the
// means of samples are summed up in.
TEST(EdgePoints, OfPlanesLieInTheMiddle) {
  KyImage<KyBW8> image(100, 90);
  for (int y = 0; y < 90; ++y)
    for (int x = 0; x < 100; ++x) image.SetPixel(static_cast<KyBW8>(120 + x - y), x, y);
  for (int degrees = 3; degrees < 360; degrees += 6) {
    SCOPED_TRACE(degrees);
    const double c = std::cos(degrees * kDegree), s = std::sin(degrees * kDegree);
    if (std::abs(s + c) < 0.05) continue;  // along the slope there is no edge
    const auto x0 = static_cast<float>(50 - 20 * c), y0 = static_cast<float>(45 - 20 * s);
    const auto x1 = static_cast<float>(50 + 20 * c), y1 = static_cast<float>(45 + 20 * s);
    for (const float sigma : {0.0f, 1.0f}) {
      KyEdgePointsVector points;
      ASSERT_EQ(ImgFindEdgePoints(&image, x0, y0, x1, y1, 10, 5, 1, sigma, TRANS_SCAN_BOTH, 0.01f,
                                  &points),
                KY_OK);
      ASSERT_EQ(points.GetNumElements(), 5u);
      for (const KyEdgePoint& p : points) {
        EXPECT_NEAR((p.x - 50) * s - (p.y - 45) * c, 0, 1e-3);
        EXPECT_NEAR(std::abs(p.strength), std::abs(s + c), 1e-3);
      }
    }
  }
}

// The samples outside repeat the border, so that calipers beside the picture see its edges.
TEST(EdgePoints, LieInsideThePicture) {
  const KyImage<KyBW8> image = Bar();
  KyEdgePointsVector points;
  ASSERT_EQ(
      ImgFindEdgePoints(&image, 20, 39.5f, 20, -20.5f, 10, 60, 0, 1, TRANS_SCAN_BOTH, 1, &points),
      KY_OK);
  ASSERT_EQ(points.GetNumElements(), 20u);
  for (const KyEdgePoint& p : points) EXPECT_TRUE(p.y >= 0 && p.y <= 19);
  // A caliper that meets the strong edge of the bar above the picture, and the weak one inside.
  const auto find = [&](TRANS_SCAN_EDGE polarity) {
    EXPECT_EQ(ImgFindEdgePoints(&image, 39.7f, 3.4545f, 40.3f, 1.5455f, 42, 1, 0, 1, polarity, 1,
                                &points),
              KY_OK);
    return points.GetNumElements();
  };
  EXPECT_EQ(find(TRANS_SCAN_FALLING), 1u);
  EXPECT_NEAR(points[0].x, 50.5, 0.1);
  EXPECT_EQ(find(TRANS_SCAN_BOTH), 0u);
}

// Smoothing that is wide beside the caliper, and calipers that are short beside a pixel.
TEST(EdgePoints, OfExtremeCalipers) {
  const KyImage<KyBW8> image = Bar();
  KyEdgePointsVector points;
  for (const float halfLength : {FLT_TRUE_MIN, 1e-20f, 0.4f, 3.0f}) {
    for (const float sigma : {0.0f, 1e-30f, 40.0f, 32768.0f}) {
      ASSERT_EQ(ImgFindEdgePoints(&image, 20.5f, 15, 20.5f, 5, halfLength, 5, 0, sigma,
                                  TRANS_SCAN_BOTH, 0, &points),
                KY_OK);
      EXPECT_TRUE(points.GetNumElements() == 5 || halfLength < 1 || sigma > 0);
      for (const KyEdgePoint& p : points) {
        EXPECT_NEAR(p.x, 20.5, halfLength);
        EXPECT_TRUE(p.strength > 0 && p.strength <= 100) << p.strength;
      }
    }
  }
  EXPECT_EQ(ImgFindEdgePointsOnCircle(&image, FLT_MAX, -FLT_MAX, FLT_MAX, FLT_MAX, -FLT_MAX, 20, 3,
                                      2, 1, TRANS_SCAN_BOTH, 0, &points),
            KY_OK);
}

TEST(Measuring, EmptyRoisHaveNothing) {
  KyImage<KyBW8> image(9, 9);
  for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}}) {
    const KyROI<KyBW8> roi(&image, 2, 2, width, height);
    KyFloatVector profile;
    profile.SetNumElements(3);
    ASSERT_EQ(ImgSampleSegment(&roi, 0, 0, 3, 3, 5, 0, &profile), KY_OK);
    EXPECT_EQ(profile.GetNumElements(), 0u);
    KyEdgePointsVector points;
    points.SetNumElements(3);
    ASSERT_EQ(ImgFindEdgePoints(&roi, 0, 0, 3, 3, 5, 1, 0, 1, TRANS_SCAN_BOTH, 1, &points), KY_OK);
    EXPECT_EQ(points.GetNumElements(), 0u);
    EXPECT_EQ(ImgSampleSegment(&roi, 0, 0, 3, 3, 0, 0, &profile),
              KY_ERROR_PARAMETER_5_OUT_OF_RANGE);
  }
}

// Every parameter beyond its range on its own, and the codes of several in order: the parameters
// after a bad one are bad, too.
TEST(Measuring, ParametersAreCheckedInOrder) {
  constexpr float kNone = std::numeric_limits<float>::quiet_NaN(), kOut = 40000, kMost = INFINITY;
  constexpr unsigned kMany = (1 << 24) + 1;
  const auto noEdge = static_cast<TRANS_SCAN_EDGE>(4);
  const KyImage<KyBW8> image(9, 9);
  KyFloatVector profile;
  KyEdgesVector edges;
  KyEdgePointsVector points;
  profile.SetNumElements(3);
  edges.SetNumElements(3);
  points.SetNumElements(3);
  const auto check = [&](KY_ERRORS status, int code) {
    EXPECT_EQ(status, code);
    EXPECT_EQ(profile.GetNumElements() + edges.GetNumElements() + points.GetNumElements(), 9u);
  };
  const auto segment = [&](float a, float b, float c, float d, unsigned n, unsigned t) {
    return ImgSampleSegment(&image, a, b, c, d, n, t, &profile);
  };
  const auto arc = [&](float a, float b, float r, float s, float e, unsigned n, unsigned t) {
    return ImgSampleArc(&image, a, b, r, s, e, n, t, &profile);
  };
  const auto line = [&](float d, float h, unsigned n, unsigned t, float sigma, TRANS_SCAN_EDGE p,
                        float m) {
    return ImgFindEdgePoints(&image, 1, 1, 5, d, h, n, t, sigma, p, m, &points);
  };
  const auto circle = [&](float r, float e, float h, unsigned n, unsigned t, float sigma,
                          TRANS_SCAN_EDGE p, float m) {
    return ImgFindEdgePointsOnCircle(&image, 4, 4, r, 0, e, h, n, t, sigma, p, m, &points);
  };
  check(segment(kNone, kNone, 1, 1, 1, 1), 1011);
  check(segment(1, kMost, kNone, 1, 1, 1), 1012);
  check(segment(1, 1, -kMost, kNone, 0, 1), 1013);
  check(segment(1, 1, 1, kNone, 0, 1), 1014);
  check(segment(1, 1, 1, 1, 0, 99999), 1015);
  check(segment(1, 1, 1, 1, kMany, 99999), 1015);
  check(segment(1, 1, 1, 1, 1, 32769), 1016);
  check(arc(1, kNone, -1, 1, 1, 1, 1), 1012);
  check(arc(1, 1, -0.1f, kNone, 1, 1, 1), 1013);
  check(arc(1, 1, 1, kNone, kNone, 1, 1), 1014);
  check(arc(1, 1, 1, 1, kNone, 0, 1), 1015);
  check(arc(1, 1, 1, 1, 1, 0, 1), 1016);
  check(arc(1, 1, 1, 1, 1, 1, 32769), 1016);
  check(line(kNone, 0, 1, 1, 1, TRANS_SCAN_BOTH, 1), 1014);
  for (const float half : {0.0f, -1.0f, kOut, kNone})
    check(line(5, half, 0, 1, 1, TRANS_SCAN_BOTH, 1), 1015);
  check(line(5, 3, 0, 1, 1, noEdge, 1), 1016);
  check(line(5, 3, (1 << 20) + 1, 1, 1, noEdge, 1), 1016);
  check(line(5, 3, 1, 32769, 1, noEdge, 1), 1016);
  for (const float sigma : {-1.0f, kOut, kNone}) check(line(5, 3, 1, 1, sigma, noEdge, 1), 1016);
  check(line(5, 3, 1, 1, 1, noEdge, kNone), 1003);
  check(line(5, 3, 1, 1, 1, static_cast<TRANS_SCAN_EDGE>(0), 1), 1003);
  check(line(5, 3, 1, 1, 1, TRANS_SCAN_BOTH, -1), 1016);
  check(circle(-1, kNone, 3, 1, 1, 1, TRANS_SCAN_BOTH, 1), 1013);
  check(circle(1, kNone, 3, 1, 1, 1, TRANS_SCAN_BOTH, 1), 1015);
  check(circle(1, 1, 0, 1, 1, 1, noEdge, 1), 1016);
  check(circle(1, 1, 3, 0, 1, 1, noEdge, 1), 1016);
  check(circle(1, 1, 3, 1, 1, 1, noEdge, -1), 1003);
  check(circle(1, 1, 3, 1, 1, 1, TRANS_SCAN_BOTH, kMost), 1016);
  for (const float sigma : {-1.0f, kOut, kNone}) check(KySmooth(&profile, sigma), 1011);
  check(KyFindEdges(&profile, noEdge, -1, &edges), 1003);
  check(KyFindEdges(&profile, TRANS_SCAN_BOTH, -1, &edges), 1012);
  check(KyFindEdges(&profile, TRANS_SCAN_BOTH, kNone, &edges), 1012);
}

}  // namespace
