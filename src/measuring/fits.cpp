// Lines and circles through points.
#include <algorithm>
#include <cmath>

#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "ky/measuring.h"
#include "measuring/parameters.h"
#include "measuring/vector2.h"

namespace {

using ky::Scratch;
using ky::Vector2;
using std::ptrdiff_t;

struct Points {
  const Vector2* first;
  ptrdiff_t count;

  const Vector2* begin() const noexcept { return first; }
  const Vector2* end() const noexcept { return first + count; }
  // The mean of `value` over all points.
  template <class Value>
  double Mean(const Value& value) const noexcept {
    double sum = 0;
    for (const Vector2 p : *this) sum += value(p);
    return sum / static_cast<double>(count);
  }
};

// The second moments of points about their centre, and the largest distance from it.
struct Spread {
  Vector2 center;
  double xx = 0, xy = 0, yy = 0, reach = 0;

  explicit Spread(const Points& points) noexcept {
    const Vector2 origin = *points.first;  // nearby, so that sums lose nothing
    center = origin + Vector2{points.Mean([&](Vector2 p) { return p.x - origin.x; }),
                              points.Mean([&](Vector2 p) { return p.y - origin.y; })};
    for (const Vector2 p : points) {
      const Vector2 d = p - center;
      xx += d.x * d.x, xy += d.x * d.y, yy += d.y * d.y;
      reach = std::max(reach, Length(d));
    }
  }
};

// A unit vector with x > 0, or x = 0 and y > 0, along which the points spread most.
Vector2 DirectionOf(const Spread& spread) noexcept {
  constexpr double kRounding = 1e-13;
  const double difference = spread.xx - spread.yy, product = 2 * spread.xy,
               anisotropy = ky::Hypot(difference, product);
  if (!(anisotropy > kRounding * (spread.xx + spread.yy))) return {1, 0};
  // Half of the angle of (difference, product), from the sum that does not cancel.
  Vector2 direction = difference >= 0 ? Vector2{anisotropy + difference, product}
                                      : Vector2{product, anisotropy - difference};
  direction = (1 / Length(direction)) * direction;
  if (direction.x < 0) direction = -1.0 * direction;
  if (direction.x == 0) return {0, 1};
  return direction;
}

KY_ERRORS Fit(const Points& points, KyLine& line) noexcept {
  const bool equal = std::all_of(points.begin(), points.end(), [&](Vector2 p) {
    return p.x == points.first->x && p.y == points.first->y;
  });
  if (equal) return ky::Explain(KY_ERROR_SINGULAR_SYSTEM, "all points are equal");
  const Spread spread(points);
  const Vector2 direction = DirectionOf(spread);
  line.x = spread.center.x;
  line.y = spread.center.y;
  line.directionX = direction.x;
  line.directionY = direction.y;
  line.used = static_cast<int>(points.count);
  line.residual = std::sqrt(points.Mean([&](Vector2 p) {
    const double distance = KyDistance(line, p.x, p.y);
    return distance * distance;
  }));
  return KY_OK;
}

double DistanceFrom(const KyLine& line, Vector2 p) noexcept {
  return std::abs(KyDistance(line, p.x, p.y));
}
double DistanceFrom(const KyCircle& circle, Vector2 p) noexcept {
  return std::abs(Length(p - Vector2{circle.x, circle.y}) - circle.radius);
}

// The centre of the circle of least algebraic distance from points about (0, 0): that of the sum of
// (|p|^2 - 2 p c + |c|^2 - r^2)^2.
Vector2 AlgebraicCenter(const Points& points) noexcept {
  const auto mean = [&](const auto& value) { return points.Mean(value); };
  const double xx = mean([](Vector2 p) { return p.x * p.x; }),
               xy = mean([](Vector2 p) { return p.x * p.y; }),
               yy = mean([](Vector2 p) { return p.y * p.y; }),
               xz = mean([](Vector2 p) { return p.x * Dot(p, p); }),
               yz = mean([](Vector2 p) { return p.y * Dot(p, p); });
  const double determinant = 2 * (xx * yy - xy * xy);
  return {(xz * yy - yz * xy) / determinant, (yz * xx - xz * xy) / determinant};
}

// The best circle about a centre.
struct Circle {
  Vector2 center;
  double radius, meanSquare;  // of the distances from it

  Circle(const Points& points, Vector2 at) noexcept
      : center(at),
        radius(points.Mean([&](Vector2 p) { return Length(p - at); })),
        meanSquare(points.Mean([&](Vector2 p) {
          const double distance = Length(p - at) - radius;
          return distance * distance;
        })) {}
};

// The step of Gauss and Newton from a circle's centre. With unit vectors u from it to the points,
// moving it by s shortens distances by u s, and the best radius by the mean of that.
Vector2 StepFrom(const Circle& circle, const Points& points) noexcept {
  const auto towards = [&](Vector2 p) {
    const Vector2 d = p - circle.center;
    const double length = Length(d);
    return length > 0 ? (1 / length) * d : Vector2{};
  };
  const Vector2 mean{points.Mean([&](Vector2 p) { return towards(p).x; }),
                     points.Mean([&](Vector2 p) { return towards(p).y; })};
  double xx = 0, xy = 0, yy = 0;
  Vector2 right;
  for (const Vector2 p : points) {
    const Vector2 u = towards(p) - mean;
    xx += u.x * u.x, xy += u.x * u.y, yy += u.y * u.y;
    right = right + (Length(p - circle.center) - circle.radius) * u;
  }
  const double determinant = xx * yy - xy * xy;
  return (1 / determinant) * Vector2{right.x * yy - right.y * xy, right.y * xx - right.x * xy};
}

// The circle of least squared distances from points about (0, 0) that reach to 1.
Circle BestCircle(const Points& points) noexcept {
  constexpr int kMostSteps = 50;
  constexpr double kSmallest = 1e-9;
  Circle best(points, AlgebraicCenter(points));
  for (int i = 0; i < kMostSteps; ++i) {
    Vector2 step = StepFrom(best, points);
    if (!std::isfinite(step.x) || !std::isfinite(step.y)) break;
    for (;; step = 0.5 * step) {
      if (Length(step) < kSmallest * best.radius) return best;
      const Circle next(points, best.center + step);
      if (next.meanSquare <= best.meanSquare) {
        best = next;
        break;
      }
    }
  }
  return best;
}

KY_ERRORS Fit(const Points& points, KyCircle& circle) noexcept {
  constexpr double kStraight = 1e-6;
  KyLine line{};
  if (const KY_ERRORS error = Fit(points, line)) return error;
  const Spread spread(points);
  if (line.residual <= kStraight * spread.reach)
    return ky::Explain(KY_ERROR_SINGULAR_SYSTEM, "the points lie on a line");
  Scratch<Vector2> scaled;
  if (!scaled.Allocate(points.count)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  std::transform(points.begin(), points.end(), scaled.get(),
                 [&](Vector2 p) { return (1 / spread.reach) * (p - spread.center); });
  const Circle best = BestCircle({scaled.get(), points.count});
  const Vector2 center = spread.center + spread.reach * best.center;
  circle.x = center.x;
  circle.y = center.y;
  circle.radius = spread.reach * best.radius;
  circle.residual = spread.reach * std::sqrt(best.meanSquare);
  circle.used = static_cast<int>(points.count);
  return KY_OK;
}

// Fits a model, which needs `least` points, to all points, and again to those that lie no further
// than `outlier` from it.
template <class Vector, class Model>
KY_ERRORS FitWithoutOutliers(const char* name, const Vector* vector, float outlier, unsigned least,
                             Model& result) noexcept {
  return ky::Call(name, [&] {
    constexpr int kMostRounds = 20;
    if (vector == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = ky::Parameters().Real("outlier", outlier, 0).Error()) return error;
    const ptrdiff_t n = vector->GetNumElements();
    if (n < least) return ky::Explain(KY_ERROR_NO_PIXELS, "points holds too few points");
    Scratch<Vector2> all, near;
    Scratch<bool> isNear;
    if (!all.Allocate(n) || !near.Allocate(n) || !isNear.Allocate(n))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
    std::transform(vector->begin(), vector->end(), all.get(), [](const auto& point) {
      return Vector2{point.x, point.y};
    });
    for (const Vector2 p : Points{all.get(), n})
      if (!std::isfinite(p.x) || !std::isfinite(p.y))
        return ky::Explain(KY_ERROR_SINGULAR_SYSTEM, "a point is not finite");
    Model model = result;  // with its padding
    if (const KY_ERRORS error = Fit({all.get(), n}, model)) return error;
    std::fill_n(isNear.get(), n, true);
    for (int round = 0; outlier > 0 && round < kMostRounds; ++round) {
      bool changed = false;
      ptrdiff_t count = 0;
      for (ptrdiff_t i = 0; i < n; ++i) {
        const bool wasNear = isNear[i];
        isNear[i] = DistanceFrom(model, all[i]) <= outlier;
        changed = changed || isNear[i] != wasNear;
        if (isNear[i]) near[count++] = all[i];
      }
      if (!changed) break;
      if (count < least)
        return ky::Explain(KY_ERROR_NO_PIXELS, "too few points lie within outlier of the fit");
      if (const KY_ERRORS error = Fit({near.get(), count}, model)) return error;
    }
    result = model;
    return KY_OK;
  });
}

template <class Vector>
KY_ERRORS FitLine(const Vector* points, float outlier, KyLine& line) noexcept {
  return FitWithoutOutliers("KyFitLine", points, outlier, 2, line);
}
template <class Vector>
KY_ERRORS FitCircle(const Vector* points, float outlier, KyCircle& circle) noexcept {
  return FitWithoutOutliers("KyFitCircle", points, outlier, 3, circle);
}

}  // namespace

KY_ERRORS KyFitLine(const KyPositionsVector* points, float outlier, KyLine& line) noexcept {
  return FitLine(points, outlier, line);
}
KY_ERRORS KyFitLine(const KyEdgePointsVector* points, float outlier, KyLine& line) noexcept {
  return FitLine(points, outlier, line);
}
KY_ERRORS KyFitCircle(const KyPositionsVector* points, float outlier, KyCircle& circle) noexcept {
  return FitCircle(points, outlier, circle);
}
KY_ERRORS KyFitCircle(const KyEdgePointsVector* points, float outlier, KyCircle& circle) noexcept {
  return FitCircle(points, outlier, circle);
}
