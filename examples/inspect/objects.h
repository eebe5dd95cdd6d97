// Objects: connected areas of a mask, found by following their contours.
#pragma once

#include <vector>

#include "ky/ky.h"
#include "support/drawing.h"

namespace inspect {

using draw::Box;

struct Object {
  KyPathVector contour;     ///< the outer one, clockwise
  std::vector<KyRun> runs;  ///< the object's pixels, row by row; those of holes are not among them
  Box box;
  double area = 0;  ///< enclosed by the contour, in pixels, holes included
};

/// Finds the objects of at least `minArea` pixels, from top to bottom, and erases all from the
/// mask, which is 255 in objects and 0 elsewhere. Pixels that share an edge or a corner are
/// connected; what lies in the hole of an object is part of it. Throws when there is no memory.
std::vector<Object> TakeObjects(KyImage<KyBW8>& mask, double minArea);

}  // namespace inspect
