// Points, angles and distances of lines.
#include <cmath>
#include <numbers>

#include "foundation/angle.h"
#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "ky/measuring.h"
#include "measuring/vector2.h"

namespace {

using ky::Vector2;

Vector2 DirectionOf(const KyLine& line) noexcept { return {line.directionX, line.directionY}; }

}  // namespace

KY_ERRORS KyIntersect(const KyLine& a, const KyLine& b, double& x, double& y) noexcept {
  return ky::Call("KyIntersect", [&] {
    const double cross = Cross(DirectionOf(a), DirectionOf(b));
    if (!(std::abs(cross) > 0))
      return ky::Explain(KY_ERROR_SINGULAR_SYSTEM, "the lines are parallel");
    const double along = Cross(Vector2{b.x - a.x, b.y - a.y}, DirectionOf(b)) / cross;
    x = a.x + along * a.directionX;
    y = a.y + along * a.directionY;
    return KY_OK;
  });
}

double KyDistance(const KyLine& line, double x, double y) noexcept {
  return Cross(DirectionOf(line), {x - line.x, y - line.y});
}

double KyAngleBetween(const KyLine& a, const KyLine& b) noexcept {
  const double cross = Cross(DirectionOf(a), DirectionOf(b)),
               dot = Dot(DirectionOf(a), DirectionOf(b));
  // Lines have no sense of direction: the one with an acute angle is taken.
  const double angle = dot < 0 ? ky::Atan2(-cross, -dot) : ky::Atan2(cross, dot);
  return ky::FromRadians(angle <= -std::numbers::pi / 2 ? std::numbers::pi / 2 : angle);
}
