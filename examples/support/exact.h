// Drawn parts whose edges are known exactly: every pixel has the mean level of its area.
#pragma once

#include <vector>

#include "ky/image.h"

namespace exact {

struct Point {
  double x, y;
};

struct Hole {
  Point center;
  double radius;
};

/// A plate with a convex outline, and round holes in it that do not overlap.
struct Part {
  std::vector<Point> outline;
  std::vector<Hole> holes;
};

/// How the camera sees it.
struct Look {
  double ground = 50, level = 190;
  double blur = 0;   ///< sigma of a Gaussian, in pixels
  double noise = 0;  ///< its standard deviation, in levels
  unsigned seed = 1;
};

/// Draws a part. The level of a pixel is right to 0.004 of the contrast. Throws when
/// there is no memory.
KyImage<KyBW8> Draw(const Part& part, int width, int height, const Look& look);

}  // namespace exact
