// The paths that samples and calipers stand along: segments and arcs.
#pragma once

#include "foundation/angle.h"
#include "foundation/elementary.h"
#include "measuring/vector2.h"

namespace ky {

// A place of a path. `across` points to the right of a segment, and away from the centre of an arc.
struct Station {
  Vector2 at, across;
};

class Segment {
 public:
  Segment(Vector2 from, Vector2 to) noexcept : from_(from), to_(to) {
    const double length = Length(to - from);
    across_ = length > 0 ? Turned((1 / length) * (to - from)) : Vector2{0, 1};
  }
  // 0 <= t <= 1.
  Station At(double t) const noexcept { return {(1 - t) * from_ + t * to_, across_}; }

 private:
  Vector2 from_, to_, across_;
};

class Arc {
 public:
  Arc(Vector2 center, double radius, double startAngle, double endAngle) noexcept
      : center_(center),
        radius_(radius),
        start_(ToRadians(startAngle)),
        end_(ToRadians(endAngle)) {}
  Station At(double t) const noexcept {
    const double angle = (1 - t) * start_ + t * end_;
    const Vector2 outwards{ky::Cos(angle), ky::Sin(angle)};
    return {center_ + radius_ * outwards, outwards};
  }

 private:
  Vector2 center_;
  double radius_, start_, end_;
};

}  // namespace ky
