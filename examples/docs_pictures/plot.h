// Curves over numbered axes.
#pragma once

#include <vector>

#include "sheet.h"
#include "support/drawing.h"

namespace docs {

struct Curve {
  std::vector<double> x, y;
  KyC24 color;
  bool dots = false;  ///< marks instead of a line
};

/// What the axes show: from 0 to `mostX` and `mostY`, numbered every so often. The numbers are
/// those of the values times a factor, as only whole ones can be drawn.
struct Axes {
  double mostX, mostY;
  double stepX, stepY;
  double factorX = 1, factorY = 1;
};

/// Draws curves; those that leave the axes are cut off at the border.
Color Plot(int width, int height, const Axes& axes, const std::vector<Curve>& curves);

}  // namespace docs
