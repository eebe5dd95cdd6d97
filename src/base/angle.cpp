#include "ky/angle.h"

#include <atomic>
#include <numbers>

#include "foundation/frame.h"

namespace {

std::atomic<int> unit{KY_ANGLE_DEGREES};

// The radians of one unit of angle.
double RadiansPerUnit() noexcept {
  switch (KyGetAngleUnit()) {
    case KY_ANGLE_RADIANS: return 1.0;
    case KY_ANGLE_REVOLUTIONS: return 2.0 * std::numbers::pi;
    case KY_ANGLE_GRADES: return std::numbers::pi / 200.0;
    default: return std::numbers::pi / 180.0;
  }
}

}  // namespace

KY_ERRORS KySetAngleUnit(KY_ANGLE_UNIT newUnit) noexcept {
  return ky::Call("KySetAngleUnit", [&] {
    if (newUnit < KY_ANGLE_DEGREES || newUnit > KY_ANGLE_GRADES)
      return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, "unit");
    unit.store(newUnit, std::memory_order_relaxed);
    return KY_OK;
  });
}

KY_ANGLE_UNIT KyGetAngleUnit() noexcept {
  return static_cast<KY_ANGLE_UNIT>(unit.load(std::memory_order_relaxed));
}

float KyToRadians(float angle) noexcept { return static_cast<float>(angle * RadiansPerUnit()); }

float KyFromRadians(float radians) noexcept {
  return static_cast<float>(radians * (1.0 / RadiansPerUnit()));
}
