// Measures what a plan asks for.
#pragma once

#include <string>
#include <vector>

#include "gauge/plan.h"
#include "ky/ky.h"

namespace gauge {

/// An edge or a circle: its points, and the fit of its kind.
struct Fit {
  KyEdgePointsVector points;
  bool found = false;  ///< whether there were enough of them
  KyLine line{};
  KyCircle circle{};

  double Residual(Kind kind) const { return kind == Kind::kEdge ? line.residual : circle.residual; }
  /// Whether the fit has used the point.
  bool Uses(const Task& task, const KyEdgePoint& point) const;
};

/// A number of the report.
struct Measure {
  std::size_t task;
  std::string what;  ///< such as "diameter"
  double value;      ///< in pixels or degrees
  double residual;   ///< the root of the mean squared distance of the points
  unsigned used, points;
};

struct Measurement {
  std::vector<Fit> fits;  ///< one a task, empty for distances and angles
  std::vector<Measure> measures;
  std::vector<std::string> missing;  ///< names of the tasks that cannot be measured
};

/// Throws when there is no memory.
Measurement Run(const KyROI<KyBW8>& picture, const std::vector<Task>& plan);

}  // namespace gauge
