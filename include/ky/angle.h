/// @file
/// @ingroup status
/// The unit of the angles that callers pass and receive.
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

/// Sets the unit for the whole process, which starts with degrees. Error:
/// `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for a value that is not in the enumeration; the unit
/// stays as it was. Trace: "KySetAngleUnit".
KY_API KY_ERRORS KySetAngleUnit(KY_ANGLE_UNIT unit) noexcept;

/// Returns the unit in force and leaves the status alone.
KY_API KY_ANGLE_UNIT KyGetAngleUnit() noexcept;

/// Converts an angle from the unit in force to radians, or from radians to that unit. The product
/// is computed in double precision and rounded once to single. Both leave the status alone.
KY_API float KyToRadians(float angle) noexcept;
KY_API float KyFromRadians(float radians) noexcept;
