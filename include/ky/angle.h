// The unit of the angles that callers pass and receive.
#pragma once

#include "ky/export.h"
#include "ky/status.h"

/// Units of angle.
enum KY_ANGLE_UNIT : int {
  KY_ANGLE_DEGREES = 0,      ///< 360 a turn
  KY_ANGLE_RADIANS = 1,      ///< 2 pi
  KY_ANGLE_REVOLUTIONS = 2,  ///< 1
  KY_ANGLE_GRADES = 3,       ///< 400
};

/// Sets the unit for the whole process; degrees at first. Any other value: 1003, nothing changes.
KY_API KY_ERRORS KySetAngleUnit(KY_ANGLE_UNIT unit) noexcept;

/// The unit in force. Does not touch the status.
KY_API KY_ANGLE_UNIT KyGetAngleUnit() noexcept;

/// Converts an angle from the unit in force to radians, and back: a product in double precision,
/// rounded once to single. Neither touches the status.
KY_API float KyToRadians(float angle) noexcept;
KY_API float KyFromRadians(float radians) noexcept;
