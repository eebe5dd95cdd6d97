// Calipers, their profiles, and what is fitted to their points.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "families.h"
#include "plot.h"
#include "support/exact.h"

namespace docs {
namespace {

constexpr int kBig = 400, kHigh = 300, kZoom = 2;
constexpr KyC24 kCaliper{70, 130, 180}, kPoint{90, 220, 90}, kLeftOut{240, 60, 60},
    kFit{255, 200, 60};
constexpr KyC24 kSamples{150, 150, 150}, kSmooth{40, 110, 190}, kSlope{220, 120, 30};

// A corner of a plate with a hole, and dirt on one of its edges.
Grey Corner() {
  Grey picture =
      exact::Draw({{{30, 25}, {260, 45}, {260, 260}, {10, 260}}, {{{112, 92}, 34}}}, kBig / kZoom,
                  kHigh / kZoom, {.ground = 50, .level = 190, .blur = 0.8, .noise = 3});
  KyROI<KyBW8> dirt(&picture, 88, 23, 11, 9);
  Must(ImgCopy(KyBW8{185}, &dirt));
  return picture;
}

class Enlarged {
 public:
  explicit Enlarged(const Grey& picture)
      : image_(NewImage<KyC24>(kZoom * picture.GetWidth(), kZoom * picture.GetHeight())) {
    const Color color = InColor(picture);
    Must(ImgResize(&color, &image_));
  }
  static int Place(double v) { return static_cast<int>(std::lround(kZoom * (v + 0.5) - 0.5)); }
  void Line(double x0, double y0, double x1, double y1, KyC24 color) {
    draw::Line(image_, {Place(x0), Place(y0)}, {Place(x1), Place(y1)}, color);
  }
  void Dot(double x, double y, KyC24 color) { Mark(image_, Place(x), Place(y), color, 5); }
  const Color& image() const { return image_; }

 private:
  Color image_;
};

constexpr float kX0 = 42, kY0 = 26, kX1 = 186, kY1 = 40;  // beside the upper edge
constexpr float kHoleX = 113, kHoleY = 91, kRadius = 36;  // near the hole
constexpr float kReach = 9;
constexpr unsigned kCalipers = 24;

void DrawCalipers(Enlarged& sheet) {
  const double dx = kX1 - kX0, dy = kY1 - kY0, length = std::hypot(dx, dy);
  for (unsigned i = 0; i < kCalipers; ++i) {
    const double t = (i + 0.5) / kCalipers, x = kX0 + t * dx, y = kY0 + t * dy;
    const double ux = -dy / length * kReach, uy = dx / length * kReach;
    sheet.Line(x - ux, y - uy, x + ux, y + uy, kCaliper);
    const double angle = t * 2 * std::numbers::pi, c = std::cos(angle), s = std::sin(angle);
    sheet.Line(kHoleX + (kRadius - kReach) * c, kHoleY + (kRadius - kReach) * s,
               kHoleX + (kRadius + kReach) * c, kHoleY + (kRadius + kReach) * s, kCaliper);
  }
}

// The profile of the caliper in the middle of the segment, its slope, and its edge.
Color ProfilePlot(const Grey& picture) {
  constexpr unsigned kSamplesOf = 2 * 18 + 1;
  const double dx = kX1 - kX0, dy = kY1 - kY0, length = std::hypot(dx, dy);
  const double x = (kX0 + kX1) / 2, y = (kY0 + kY1) / 2, ux = -dy / length * kReach,
               uy = dx / length * kReach;
  KyFloatVector profile;
  Must(ImgSampleSegment(&picture, static_cast<float>(x - ux), static_cast<float>(y - uy),
                        static_cast<float>(x + ux), static_cast<float>(y + uy), kSamplesOf, 2,
                        &profile));
  Curve samples{{}, {}, kSamples, true}, smooth{{}, {}, kSmooth}, slope{{}, {}, kSlope};
  for (unsigned i = 0; i < kSamplesOf; ++i) samples.x.push_back(i), samples.y.push_back(profile[i]);
  Must(KySmooth(&profile, 2));
  for (unsigned i = 0; i < kSamplesOf; ++i) {
    smooth.x.push_back(i), smooth.y.push_back(profile[i]);
    if (i == 0 || i == kSamplesOf - 1) continue;
    slope.x.push_back(i),
        slope.y.push_back(4 * std::max(0.0f, profile[i + 1] - profile[i - 1]) / 2);
  }
  KyEdgesVector edges;
  Must(KyFindEdges(&profile, TRANS_SCAN_RISING, 5, &edges));
  std::vector<Curve> curves = {samples, smooth, slope};
  for (const KyEdge& edge : edges)
    curves.push_back({{edge.position, edge.position}, {0, 4.0 * edge.strength}, {60, 150, 80}});
  return Plot(kBig, kHigh, {36, 200, 6, 50}, curves);
}

}  // namespace

void Measuring(const std::string& folder) {
  const Grey picture = Corner();
  Enlarged calipers(picture), fits(picture), arc(picture);
  DrawCalipers(calipers);

  KyEdgePointsVector onEdge, onHole, onArc;
  Must(ImgFindEdgePoints(&picture, kX0, kY0, kX1, kY1, kReach, kCalipers, 2, 1, TRANS_SCAN_RISING,
                         8, &onEdge));
  Must(ImgFindEdgePointsOnCircle(&picture, kHoleX, kHoleY, kRadius, 0, 360, kReach, 2 * kCalipers,
                                 0, 1, TRANS_SCAN_BOTH, 8, &onHole));
  Must(ImgFindEdgePointsOnCircle(&picture, kHoleX, kHoleY, kRadius, 200, 270, kReach, kCalipers, 0,
                                 1, TRANS_SCAN_BOTH, 8, &onArc));
  constexpr float kOutlier = 0.5f;
  KyLine line;
  Must(KyFitLine(&onEdge, kOutlier, line));
  fits.Line(line.x - 76 * line.directionX, line.y - 76 * line.directionY,
            line.x + 80 * line.directionX, line.y + 80 * line.directionY, kFit);
  for (const KyEdgePoint& p : onEdge)
    fits.Dot(p.x, p.y, std::abs(KyDistance(line, p.x, p.y)) <= kOutlier ? kPoint : kLeftOut);

  const auto drawCircle = [&](Enlarged& sheet, const KyEdgePointsVector& points) {
    constexpr int kPieces = 90;
    KyCircle circle;
    Must(KyFitCircle(&points, kOutlier, circle));
    const auto at = [&](int i) {
      const double angle = i * 2 * std::numbers::pi / kPieces;
      return exact::Point{circle.x + circle.radius * std::cos(angle),
                          circle.y + circle.radius * std::sin(angle)};
    };
    for (int i = 0; i < kPieces; ++i) sheet.Line(at(i).x, at(i).y, at(i + 1).x, at(i + 1).y, kFit);
    for (const KyEdgePoint& p : points) sheet.Dot(p.x, p.y, kPoint);
    sheet.Dot(circle.x, circle.y, kFit);
  };
  drawCircle(fits, onHole);
  drawCircle(arc, onArc);
  const Color profile = ProfilePlot(picture);
  Write(folder, "measuring", 2, {&calipers.image(), &profile, &fits.image(), &arc.image()});
}

}  // namespace docs
