// Lines and circles through points.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include "ky/ky.h"

namespace {

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();

KyPositionsVector Positions(const std::vector<KyPosition>& points) {
  KyPositionsVector vector;
  for (const KyPosition& p : points) vector.AddElement(p);
  return vector;
}

double MeanSquare(const std::vector<KyPosition>& points, auto distance) {
  double sum = 0;
  for (const KyPosition& p : points) sum += distance(p) * distance(p);
  return sum / static_cast<double>(points.size());
}

TEST(FitLine, OfLinesInEveryDirection) {
  constexpr double kDegree = std::numbers::pi / 180;
  for (int degrees = -180; degrees <= 180; degrees += 15) {
    SCOPED_TRACE(degrees);
    const double c = std::cos(degrees * kDegree), s = std::sin(degrees * kDegree);
    std::vector<KyPosition> points;
    KyEdgePointsVector edgePoints;
    for (const double t : {-40.0, -3.0, 0.0, 10.0, 33.0}) {
      points.push_back({static_cast<float>(500 + t * c), static_cast<float>(300 + t * s)});
      edgePoints.AddElement({points.back().x, points.back().y, 9, 0});
    }
    KyLine line, same;
    const KyPositionsVector vector = Positions(points);
    ASSERT_EQ(KyFitLine(&vector, 0, line), KY_OK);
    ASSERT_EQ(KyFitLine(&edgePoints, 0, same), KY_OK);
    EXPECT_NEAR(line.x, 500, 1e-4);
    EXPECT_NEAR(line.y, 300, 1e-4);
    EXPECT_NEAR(std::abs(line.directionX * s - line.directionY * c), 0, 1e-5);
    EXPECT_NEAR(std::hypot(line.directionX, line.directionY), 1, 1e-12);
    EXPECT_TRUE(line.directionX > 0 || (line.directionX == 0 && line.directionY > 0));
    EXPECT_NEAR(line.residual, 0, 1e-4);
    EXPECT_EQ(line.used, 5);
    EXPECT_EQ(same.directionX, line.directionX);
    EXPECT_EQ(same.used, 5);
  }
}

TEST(FitLine, HasTheLeastSquaresOfAllLines) {
  std::mt19937 random(1);
  for (int i = 0; i < 200; ++i) {
    std::vector<KyPosition> points(2 + random() % 9);
    for (KyPosition& p : points)
      p = {static_cast<float>(random() % 50), static_cast<float>(random() % (i % 2 == 0 ? 50 : 4))};
    if (points[0] == points[1]) points[1].x += 1;
    const KyPositionsVector vector = Positions(points);
    KyLine line;
    ASSERT_EQ(KyFitLine(&vector, 0, line), KY_OK);
    const double least = MeanSquare(points, [&](auto p) { return KyDistance(line, p.x, p.y); });
    EXPECT_NEAR(line.residual, std::sqrt(least), 1e-9);
    for (const double turn : {-1e-3, 1e-3}) {
      for (const double shift : {-1e-3, 0.0, 1e-3}) {
        KyLine other = line;
        other.directionX -= turn * line.directionY;
        other.directionY += turn * line.directionX;
        other.x -= shift * line.directionY;
        other.y += shift * line.directionX;
        EXPECT_GE(MeanSquare(points, [&](auto p) { return KyDistance(other, p.x, p.y); }),
                  least * (1 - 1e-12));
      }
    }
  }
}

TEST(FitLine, WithoutABestDirection) {
  const KyPositionsVector square = Positions({{1, 1}, {3, 1}, {1, 3}, {3, 3}});
  KyLine line;
  ASSERT_EQ(KyFitLine(&square, 0, line), KY_OK);
  EXPECT_EQ(line.directionX, 1);
  EXPECT_EQ(line.directionY, 0);
  EXPECT_EQ(line.residual, 1);
}

std::vector<KyPosition> ArcPoints(double x, double y, double radius, double start, double end,
                                  int count, double noise) {
  std::mt19937 random(7);
  std::normal_distribution<double> distance(radius, noise);
  std::vector<KyPosition> points;
  for (int i = 0; i < count; ++i) {
    const double angle = (start + (end - start) * i / (count - 1)) * std::numbers::pi / 180;
    const double r = noise > 0 ? distance(random) : radius;
    points.push_back(
        {static_cast<float>(x + r * std::cos(angle)), static_cast<float>(y + r * std::sin(angle))});
  }
  return points;
}

TEST(FitCircle, OfFullCirclesAndShortArcs) {
  const struct {
    double start, end, noise, tolerance;
  } cases[] = {{0, 330, 0, 1e-4},   {170, 190, 0, 0.02},  {-190, -170, 0, 0.02}, {40, 41.5, 0, 4},
               {0, 350, 0.1, 0.05}, {100, 190, 0.1, 0.2}, {100, 130, 0.05, 0.7}};
  for (const auto& one : cases) {
    SCOPED_TRACE(std::to_string(one.start) + " to " + std::to_string(one.end));
    const auto points = ArcPoints(320, 200, 80, one.start, one.end, 60, one.noise);
    const KyPositionsVector vector = Positions(points);
    KyCircle circle;
    ASSERT_EQ(KyFitCircle(&vector, 0, circle), KY_OK);
    EXPECT_NEAR(circle.x, 320, one.tolerance);
    EXPECT_NEAR(circle.y, 200, one.tolerance);
    EXPECT_NEAR(circle.radius, 80, one.tolerance);
    EXPECT_EQ(circle.used, 60);
    // No circle nearby is better.
    const auto squares = [&](double dx, double dy, double dr) {
      return MeanSquare(points, [&](auto p) {
        return std::hypot(p.x - circle.x - dx, p.y - circle.y - dy) - circle.radius - dr;
      });
    };
    const double least = squares(0, 0, 0);
    EXPECT_NEAR(circle.residual, std::sqrt(least), 1e-6);
    for (int k = 0; k < 27; ++k)
      EXPECT_GE(squares((k % 3 - 1) * 1e-3, (k / 3 % 3 - 1) * 1e-3, (k / 9 - 1) * 1e-3),
                least * (1 - 1e-6))
          << k;
  }
}

// An arc so short that its noise hides most of its height: the fit ends, near a best one.
TEST(FitCircle, OfNoisyNearlyStraightPoints) {
  for (const double noise : {0.001, 0.01, 0.1, 0.5}) {
    const auto points = ArcPoints(0, 0, 1000, 88, 92, 100, noise);
    const KyPositionsVector vector = Positions(points);
    KyCircle circle;
    ASSERT_EQ(KyFitCircle(&vector, 0, circle), KY_OK);
    const double least = MeanSquare(
        points, [&](auto p) { return std::hypot(p.x - circle.x, p.y - circle.y) - circle.radius; });
    EXPECT_LE(least, MeanSquare(points, [&](auto p) { return std::hypot(p.x, p.y) - 1000.0; }));
  }
}

TEST(Fits, LeaveOutliersOut) {
  std::vector<KyPosition> onLine, onCircle = ArcPoints(50, 60, 30, 0, 340, 40, 0);
  for (int i = 0; i < 40; ++i) onLine.push_back({static_cast<float>(i), static_cast<float>(2 * i)});
  onLine[3].y += 9, onLine[20].y -= 12, onLine[38].x += 7;
  onCircle[5].x += 9, onCircle[30].y -= 14;
  const KyPositionsVector lines = Positions(onLine), circles = Positions(onCircle);
  KyLine line;
  ASSERT_EQ(KyFitLine(&lines, 0, line), KY_OK);
  EXPECT_EQ(line.used, 40);
  EXPECT_GT(line.residual, 0.5);
  ASSERT_EQ(KyFitLine(&lines, 1, line), KY_OK);
  EXPECT_EQ(line.used, 37);
  EXPECT_NEAR(line.directionY / line.directionX, 2, 1e-9);
  EXPECT_NEAR(line.residual, 0, 1e-9);
  KyCircle circle;
  ASSERT_EQ(KyFitCircle(&circles, 1.5f, circle), KY_OK);
  EXPECT_EQ(circle.used, 38);
  EXPECT_NEAR(circle.x, 50, 1e-4);
  EXPECT_NEAR(circle.radius, 30, 1e-4);
}

TEST(Fits, TellWhatIsWrongAndChangeNothing) {
  const struct {
    std::vector<KyPosition> points;
    float outlier;
    KY_ERRORS line, circle;
  } cases[] = {
      {{}, 0, KY_ERROR_NO_PIXELS, KY_ERROR_NO_PIXELS},
      {{{1, 2}}, 0, KY_ERROR_NO_PIXELS, KY_ERROR_NO_PIXELS},
      {{{1, 2}, {3, 4}}, 0, KY_OK, KY_ERROR_NO_PIXELS},
      {{{1, 2}, {1, 2}, {1, 2}}, 0, KY_ERROR_SINGULAR_SYSTEM, KY_ERROR_SINGULAR_SYSTEM},
      {{{1, 2}, {2, 4}, {5, 10}}, 0, KY_OK, KY_ERROR_SINGULAR_SYSTEM},
      {{{0, 0}, {1e6f, 0.5f}, {2e6f, 0}}, 0, KY_OK, KY_ERROR_SINGULAR_SYSTEM},
      {{{1, 2}, {3, kNone}, {5, 7}}, 0, KY_ERROR_SINGULAR_SYSTEM, KY_ERROR_SINGULAR_SYSTEM},
      {{{1, 2}, {3, 4}, {1, 1}},
       -1,
       KY_ERROR_PARAMETER_1_OUT_OF_RANGE,
       KY_ERROR_PARAMETER_1_OUT_OF_RANGE},
      {{{1, 2}, {3, 4}, {1, 1}},
       kNone,
       KY_ERROR_PARAMETER_1_OUT_OF_RANGE,
       KY_ERROR_PARAMETER_1_OUT_OF_RANGE},
      // No point lies near the fit through all.
      {{{0, 0}, {4, 0}, {0, 5}, {4, 5}, {1, 2}, {3, 3}},
       0.1f,
       KY_ERROR_NO_PIXELS,
       KY_ERROR_NO_PIXELS},
      {{{3e38f, 3e38f}, {-3e38f, 3e38f}, {1, -3e38f}}, 0, KY_OK, KY_OK},
      {{{1e-45f, 0}, {0, 1e-45f}, {0, 0}}, 0, KY_OK, KY_OK},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(&one - cases);
    const KyPositionsVector points = Positions(one.points);
    const KyLine lineBefore{1, 2, 3, 4, 5, 6};
    const KyCircle circleBefore{1, 2, 3, 4, 5};
    KyLine line = lineBefore;
    KyCircle circle = circleBefore;
    EXPECT_EQ(KyFitLine(&points, one.outlier, line), one.line);
    EXPECT_EQ(line.used == lineBefore.used && line.x == lineBefore.x, one.line != KY_OK);
    EXPECT_EQ(KyFitCircle(&points, one.outlier, circle), one.circle);
    EXPECT_EQ(circle.used == circleBefore.used && circle.x == circleBefore.x, one.circle != KY_OK);
    EXPECT_TRUE(std::isfinite(circle.radius));
  }
  KyCircle circle;
  EXPECT_EQ(KyFitCircle(static_cast<KyEdgePointsVector*>(nullptr), 0, circle),
            KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_STREQ(KyGetTrace(0), "KyFitCircle");
}

TEST(Lines, MeetAtAPoint) {
  const KyLine a{0, 10, 1, 0, 0, 2}, b{7, 0, 0, 1, 0, 2}, c{0, 0, 0.6, 0.8, 0, 2};
  double x = -1, y = -1;
  EXPECT_EQ(KyIntersect(a, KyLine{5, 99, 1, 0, 0, 2}, x, y), KY_ERROR_SINGULAR_SYSTEM);
  EXPECT_STREQ(KyGetTrace(0), "KyIntersect");
  EXPECT_EQ(x, -1);
  EXPECT_EQ(y, -1);
  ASSERT_EQ(KyIntersect(a, b, x, y), KY_OK);
  EXPECT_EQ(x, 7);
  EXPECT_EQ(y, 10);
  ASSERT_EQ(KyIntersect(a, c, x, y), KY_OK);
  EXPECT_NEAR(x, 7.5, 1e-12);
  EXPECT_NEAR(y, 10, 1e-12);
}

TEST(Lines, HaveDistancesAndAngles) {
  KySetError(KY_ERROR_NO_IMAGE);
  const KyLine right{3, 10, 1, 0, 0, 2};
  EXPECT_EQ(KyDistance(right, 99, 12), 2);  // below: to the right of the direction
  EXPECT_EQ(KyDistance(right, -5, 9.5), -0.5);
  const auto lineAt = [](double degrees) {
    const double radians = degrees * std::numbers::pi / 180;
    return KyLine{0, 0, std::cos(radians), std::sin(radians), 0, 2};
  };
  const KyLine down{0, 0, 0, 1, 0, 2};
  EXPECT_EQ(KyAngleBetween(right, right), 0);
  EXPECT_EQ(KyAngleBetween(right, down), 90);
  EXPECT_EQ(KyAngleBetween(down, right), 90);
  EXPECT_NEAR(KyAngleBetween(right, lineAt(89)), 89, 1e-9);
  EXPECT_NEAR(KyAngleBetween(lineAt(-80), lineAt(80)), -20, 1e-9);
  EXPECT_NEAR(KyAngleBetween(lineAt(80), lineAt(-80)), 20, 1e-9);
  EXPECT_NEAR(KyAngleBetween(lineAt(89), lineAt(-89)), 2, 1e-9);
  KySetAngleUnit(KY_ANGLE_GRADES);
  EXPECT_NEAR(KyAngleBetween(right, lineAt(45)), 50, 1e-9);
  KySetAngleUnit(KY_ANGLE_DEGREES);
  KySetError(KY_ERROR_NO_IMAGE);
  KyAngleBetween(right, down);
  KyDistance(right, 1, 2);
  EXPECT_EQ(KyGetError(), KY_ERROR_NO_IMAGE);
}

}  // namespace
