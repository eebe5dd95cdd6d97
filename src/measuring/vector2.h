// Positions and directions in double precision.
#pragma once

#include "foundation/elementary.h"

namespace ky {

struct Vector2 {
  double x = 0, y = 0;
};

inline Vector2 operator+(Vector2 a, Vector2 b) noexcept { return {a.x + b.x, a.y + b.y}; }
inline Vector2 operator-(Vector2 a, Vector2 b) noexcept { return {a.x - b.x, a.y - b.y}; }
inline Vector2 operator*(double factor, Vector2 a) noexcept { return {factor * a.x, factor * a.y}; }
inline double Dot(Vector2 a, Vector2 b) noexcept { return a.x * b.x + a.y * b.y; }
// Above 0 where b lies to the right of a, as seen on the screen.
inline double Cross(Vector2 a, Vector2 b) noexcept { return a.x * b.y - a.y * b.x; }
inline double Length(Vector2 a) noexcept { return ky::Hypot(a.x, a.y); }
// A quarter turn clockwise on the screen.
inline Vector2 Turned(Vector2 a) noexcept { return {-a.y, a.x}; }

}  // namespace ky
