// What is measured of an object.
#pragma once

#include "inspect/objects.h"
#include "ky/ky.h"

namespace inspect {

/// Lengths in pixels, levels in grey levels.
struct Measures {
  double x = 0, y = 0;  ///< centre of gravity of the object's pixels
  Box box;
  double area = 0;                ///< enclosed by the contour
  double perimeter = 0;           ///< of the polygon through the contour's pixels
  float mean = 0, deviation = 0;  ///< of the levels of the object's pixels
  unsigned int strips = 0;        ///< how often a line across its middle enters the object
};

/// Levels are read from `grey`, the strips from `even`, where objects are those from `level` on.
Measures Measure(const Object& object, KyImage<KyBW8>& grey, const KyROI<KyBW8>& even,
                 unsigned int level);

}  // namespace inspect
