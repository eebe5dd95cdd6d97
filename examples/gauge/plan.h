// What to measure where.
#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

#include "ky/ky.h"

namespace gauge {

/// The calipers of a feature, and what its fit leaves out.
struct Calipers {
  float reach = 8;  ///< to either side, in pixels
  unsigned count = 40;
  unsigned thickness = 2;  ///< values to either side of the middle one
  float sigma = 1;
  TRANS_SCAN_EDGE polarity = TRANS_SCAN_BOTH;
  float strength = 8;        ///< of the weakest edge, in levels a pixel
  float outlier = 0.5f;      ///< points further away are left out, in pixels; 0 for none
  float from = 0, to = 360;  ///< the arc of a circle, in degrees
};

enum class Kind {
  kEdge,      ///< a line along a segment
  kCircle,    ///< a circle
  kDistance,  ///< between two features
  kAngle,     ///< from one edge to another
};

/// One line of a plan.
struct Task {
  Kind kind;
  std::string name;
  std::vector<float> numbers;  ///< x0 y0 x1 y1 of an edge, x y radius of a circle
  Calipers calipers;
  std::size_t first = 0, second = 0;  ///< the tasks that a distance or an angle stands between
};

/// Reads a plan. Throws std::runtime_error, which begins with `name` and the number of the line.
std::vector<Task> ReadPlan(std::istream& file, const std::string& name);

/// What a plan is written like, for --help.
extern const char* const kPlanHelp;

}  // namespace gauge
