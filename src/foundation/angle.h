// Angles in the unit of KySetAngleUnit, in double precision.
#pragma once

#include <numbers>

#include "ky/angle.h"

namespace ky {

inline double UnitsPerTurn() noexcept {
  constexpr double kUnits[] = {360, 2 * std::numbers::pi, 1, 400};
  return kUnits[KyGetAngleUnit()];
}

inline double FromRadians(double radians) noexcept {
  return radians * UnitsPerTurn() / (2 * std::numbers::pi);
}
inline double ToRadians(double angle) noexcept {
  return angle * (2 * std::numbers::pi) / UnitsPerTurn();
}

}  // namespace ky
