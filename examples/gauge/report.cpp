#include "gauge/report.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "support/drawing.h"
#include "support/program.h"
#include "support/text.h"

namespace gauge {
namespace {

constexpr KyC24 kCaliper{70, 130, 180}, kPoint{90, 220, 90}, kOutlier{240, 60, 60},
    kFit{255, 200, 60}, kPlate{20, 40, 60}, kInk{255, 255, 255};

constexpr int kZoom = 2;

// A picture that is drawn on in the coordinates of the one that it enlarges.
class Sheet {
 public:
  explicit Sheet(const KyROI<KyBW8>& picture)
      : image_(NewImage<KyC24>(kZoom * picture.GetWidth(), kZoom * picture.GetHeight())) {
    auto color = SameSize<KyC24>(picture);
    Must(ImgOper(KY_OPER_COPY, &picture, &color));
    Must(ImgResize(&color, &image_));
  }
  static draw::Point Place(double x, double y) {
    const auto zoomed = [](double v) {
      return static_cast<int>(std::lround(kZoom * (v + 0.5) - 0.5));
    };
    return {zoomed(x), zoomed(y)};
  }
  void Line(double x0, double y0, double x1, double y1, KyC24 color) {
    draw::Line(image_, Place(x0, y0), Place(x1, y1), color);
  }
  void Cross(double x, double y, KyC24 color) {
    const auto [px, py] = Place(x, y);
    draw::Line(image_, {px - 2, py}, {px + 2, py}, color);
    draw::Line(image_, {px, py - 2}, {px, py + 2}, color);
  }
  void Label(double x, double y, std::size_t number) {
    draw::Label(image_, static_cast<unsigned>(number), Place(x, y), kPlate, kInk);
  }
  KyImage<KyC24>& image() { return image_; }

 private:
  KyImage<KyC24> image_;
};

double Radians(double degrees) { return degrees * std::numbers::pi / 180; }

void DrawEdge(Sheet& sheet, const Task& task, const Fit& fit) {
  const double x0 = task.numbers[0], y0 = task.numbers[1];
  const double dx = task.numbers[2] - x0, dy = task.numbers[3] - y0;
  const double length = std::max(std::hypot(dx, dy), 1e-9), reach = task.calipers.reach;
  for (unsigned i = 0; i < task.calipers.count; ++i) {
    const double t = (i + 0.5) / task.calipers.count, x = x0 + t * dx, y = y0 + t * dy;
    const double ux = -dy / length * reach, uy = dx / length * reach;
    sheet.Line(x - ux, y - uy, x + ux, y + uy, kCaliper);
  }
  if (!fit.found) return;
  const KyLine& line = fit.line;
  const double half = length / 2;
  sheet.Line(line.x - half * line.directionX, line.y - half * line.directionY,
             line.x + half * line.directionX, line.y + half * line.directionY, kFit);
}

void DrawCircle(Sheet& sheet, const Task& task, const Fit& fit) {
  constexpr int kPieces = 180;
  const Calipers& c = task.calipers;
  const auto angleAt = [&](double t) { return Radians((1 - t) * c.from + t * c.to); };
  for (unsigned i = 0; i < c.count; ++i) {
    const double angle = angleAt((i + 0.5) / c.count);
    const auto at = [&](double distance) {
      const double radius = task.numbers[2] + distance;
      return std::pair{task.numbers[0] + radius * std::cos(angle),
                       task.numbers[1] + radius * std::sin(angle)};
    };
    const auto [x0, y0] = at(-c.reach);
    const auto [x1, y1] = at(c.reach);
    sheet.Line(x0, y0, x1, y1, kCaliper);
  }
  if (!fit.found) return;
  const auto& [x, y, radius, residual, used] = fit.circle;
  for (int i = 0; i < kPieces; ++i) {
    const double a = angleAt(i / double{kPieces}), b = angleAt((i + 1) / double{kPieces});
    sheet.Line(x + radius * std::cos(a), y + radius * std::sin(a), x + radius * std::cos(b),
               y + radius * std::sin(b), kFit);
  }
  sheet.Cross(x, y, kFit);
}

std::optional<double> TrueValue(const std::vector<Task>& plan, const Measure& measure,
                                const Truth& truth) {
  const Task& task = plan[measure.task];
  const bool isFeature = task.kind == Kind::kEdge || task.kind == Kind::kCircle;
  const auto found = truth.find(isFeature ? task.name + ' ' + measure.what : task.name);
  return found != truth.end() ? std::optional(found->second) : std::nullopt;
}

// How far a value lies from its true one. Angles of lines are the same after half a turn.
double ErrorOf(const Measure& measure, double truth) {
  const double error = measure.value - truth;
  return measure.what == "angle" ? std::remainder(error, 180) : error;
}

}  // namespace

KyImage<KyC24> Annotate(const KyROI<KyBW8>& picture, const std::vector<Task>& plan,
                        const Measurement& measurement) {
  Sheet sheet(picture);
  for (std::size_t i = 0; i < plan.size(); ++i) {
    const Fit& fit = measurement.fits[i];
    if (plan[i].kind == Kind::kEdge) DrawEdge(sheet, plan[i], fit);
    if (plan[i].kind == Kind::kCircle) DrawCircle(sheet, plan[i], fit);
    for (const KyEdgePoint& p : fit.points)
      sheet.Cross(p.x, p.y, fit.Uses(plan[i], p) ? kPoint : kOutlier);
  }
  for (std::size_t i = 0; i < plan.size(); ++i) {
    const std::vector<float>& n = plan[i].numbers;
    const float inwards = plan[i].calipers.reach + 3;
    if (plan[i].kind == Kind::kEdge)
      sheet.Label((n[0] + n[2]) / 2 + inwards, (n[1] + n[3]) / 2 + inwards, i + 1);
    if (plan[i].kind == Kind::kCircle) sheet.Label(n[0] + 4, n[1] + 4, i + 1);
  }
  return std::move(sheet.image());
}

std::string Csv(const std::vector<Task>& plan, const Measurement& measurement, const Truth& truth) {
  std::string lines = "task,name,measure,value,residual,used,points,truth,error\n";
  for (const Measure& m : measurement.measures) {
    lines += text::Format("%zu,%s,%s,%.5f,%.5f,%u,%u,", m.task + 1, plan[m.task].name.c_str(),
                          m.what.c_str(), m.value, m.residual, m.used, m.points);
    const auto known = TrueValue(plan, m, truth);
    lines += known ? text::Format("%.5f,%.5f\n", *known, ErrorOf(m, *known)) : ",\n";
  }
  return lines;
}

std::string Table(const std::vector<Task>& plan, const Measurement& measurement,
                  const Truth& truth) {
  std::string lines = text::Format("%4s %-10s %-9s %10s %9s %6s %6s", "task", "name", "measure",
                                   "value", "residual", "used", "points");
  lines += truth.empty() ? "\n" : text::Format(" %10s %8s\n", "truth", "error");
  for (const Measure& m : measurement.measures) {
    lines +=
        text::Format("%4zu %-10s %-9s %10.3f %9.3f %6u %6u", m.task + 1, plan[m.task].name.c_str(),
                     m.what.c_str(), m.value, m.residual, m.used, m.points);
    const auto known = TrueValue(plan, m, truth);
    lines += known ? text::Format(" %10.3f %8.4f\n", *known, ErrorOf(m, *known)) : "\n";
  }
  for (const std::string& name : measurement.missing) lines += name + ": no edge found\n";
  return lines;
}

double LargestError(const std::vector<Task>& plan, const Measurement& measurement,
                    const Truth& truth) {
  double largest = 0;
  for (const Measure& m : measurement.measures)
    if (const auto known = TrueValue(plan, m, truth))
      largest = std::max(largest, std::abs(ErrorOf(m, *known)));
  return largest;
}

}  // namespace gauge
