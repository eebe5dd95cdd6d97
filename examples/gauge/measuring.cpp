#include "gauge/measuring.h"

#include <cmath>

#include "support/program.h"

namespace gauge {
namespace {

// A line along the x axis: the angle to it is that of the other line.
constexpr KyLine kHorizontal{0, 0, 1, 0, 0, 0};

bool IsFeature(const Task& task) { return task.kind == Kind::kEdge || task.kind == Kind::kCircle; }

Fit FitFeature(const KyROI<KyBW8>& picture, const Task& task) {
  const Calipers& c = task.calipers;
  const std::vector<float>& n = task.numbers;
  Fit fit;
  Must(task.kind == Kind::kEdge
           ? ImgFindEdgePoints(&picture, n[0], n[1], n[2], n[3], c.reach, c.count, c.thickness,
                               c.sigma, c.polarity, c.strength, &fit.points)
           : ImgFindEdgePointsOnCircle(&picture, n[0], n[1], n[2], c.from, c.to, c.reach, c.count,
                                       c.thickness, c.sigma, c.polarity, c.strength, &fit.points));
  const KY_ERRORS error = task.kind == Kind::kEdge
                              ? KyFitLine(&fit.points, c.outlier, fit.line)
                              : KyFitCircle(&fit.points, c.outlier, fit.circle);
  if (error != KY_ERROR_NO_PIXELS && error != KY_ERROR_SINGULAR_SYSTEM) Must(error);
  fit.found = error == KY_OK;
  return fit;
}

// Between edges: the mean of the distances of the centre of each from the other.
double DistanceBetween(const Task& a, const Fit& fitA, const Task& b, const Fit& fitB) {
  const auto from = [](const KyLine& line, const auto& place) {
    return std::abs(KyDistance(line, place.x, place.y));
  };
  if (a.kind == Kind::kEdge && b.kind == Kind::kEdge)
    return (from(fitA.line, fitB.line) + from(fitB.line, fitA.line)) / 2;
  if (a.kind == Kind::kEdge) return from(fitA.line, fitB.circle);
  if (b.kind == Kind::kEdge) return from(fitB.line, fitA.circle);
  return std::hypot(fitA.circle.x - fitB.circle.x, fitA.circle.y - fitB.circle.y);
}

class Report {
 public:
  Report(const std::vector<Task>& plan, Measurement& measurement)
      : plan_(plan), measurement_(measurement) {}

  void Add(std::size_t i) {
    const Task& task = plan_[i];
    if (IsFeature(task))
      AddFeature(i, measurement_.fits[i]);
    else
      AddRelation(i, task);
  }

 private:
  void AddFeature(std::size_t i, const Fit& fit) {
    const auto points = fit.points.GetNumElements();
    const auto add = [&](const char* what, double value, double residual, int used) {
      measurement_.measures.push_back(
          {i, what, value, residual, static_cast<unsigned>(used), points});
    };
    if (!fit.found) {
      measurement_.missing.push_back(plan_[i].name);
    } else if (plan_[i].kind == Kind::kEdge) {
      add("angle", KyAngleBetween(kHorizontal, fit.line), fit.line.residual, fit.line.used);
    } else {
      const KyCircle& circle = fit.circle;
      add("x", circle.x, circle.residual, circle.used);
      add("y", circle.y, circle.residual, circle.used);
      add("diameter", 2 * circle.radius, circle.residual, circle.used);
    }
  }

  void AddRelation(std::size_t i, const Task& task) {
    const Task &a = plan_[task.first], &b = plan_[task.second];
    const Fit &fitA = measurement_.fits[task.first], &fitB = measurement_.fits[task.second];
    if (!fitA.found || !fitB.found) {
      measurement_.missing.push_back(task.name);
      return;
    }
    const bool isAngle = task.kind == Kind::kAngle;
    const auto used = [](const Task& of, const Fit& fit) {
      return static_cast<unsigned>(of.kind == Kind::kEdge ? fit.line.used : fit.circle.used);
    };
    measurement_.measures.push_back(
        {i, isAngle ? "angle" : "distance",
         isAngle ? KyAngleBetween(fitA.line, fitB.line) : DistanceBetween(a, fitA, b, fitB),
         std::hypot(fitA.Residual(a.kind), fitB.Residual(b.kind)), used(a, fitA) + used(b, fitB),
         fitA.points.GetNumElements() + fitB.points.GetNumElements()});
  }

  const std::vector<Task>& plan_;
  Measurement& measurement_;
};

}  // namespace

bool Fit::Uses(const Task& task, const KyEdgePoint& point) const {
  if (!found) return false;
  const double distance = task.kind == Kind::kEdge
                              ? KyDistance(line, point.x, point.y)
                              : std::hypot(point.x - circle.x, point.y - circle.y) - circle.radius;
  return task.calipers.outlier == 0 || std::abs(distance) <= task.calipers.outlier;
}

Measurement Run(const KyROI<KyBW8>& picture, const std::vector<Task>& plan) {
  Measurement measurement;
  for (const Task& task : plan)
    measurement.fits.push_back(IsFeature(task) ? FitFeature(picture, task) : Fit{});
  Report report(plan, measurement);
  for (std::size_t i = 0; i < plan.size(); ++i) report.Add(i);
  return measurement;
}

}  // namespace gauge
