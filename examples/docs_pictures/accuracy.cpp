// How far measured edges lie from drawn ones, over noise, blur, angle and radius.
#include <cmath>
#include <numbers>

#include "families.h"
#include "plot.h"
#include "support/exact.h"

namespace docs {
namespace {

constexpr int kPlotWidth = 400, kPlotHeight = 260;
constexpr KyC24 kPoints{40, 110, 190}, kFits{220, 120, 30}, kThird{60, 150, 80};
constexpr int kSide = 128;
constexpr double kMiddle = kSide / 2.0;

struct Setting {
  float sigma;
  unsigned halfThickness;
};

// Squares of errors, and the largest one.
struct Errors {
  double squares = 0, largest = 0;
  int count = 0;

  void Add(double error) {
    squares += error * error;
    largest = std::max(largest, std::abs(error));
    ++count;
  }
  double RootMeanSquare() const { return std::sqrt(squares / std::max(count, 1)); }
};
struct Result {
  Errors points, fits;
};

// Measures edges at an angle, or at many, that pass the middle at different fractions of a pixel.
Result MeasureEdges(double degrees, const exact::Look& look, Setting setting, int edges,
                    double turn) {
  constexpr double kHalf = 44, kFar = 400;
  Result result;
  for (int i = 0; i < edges; ++i) {
    const double angle = (degrees + i * turn) * std::numbers::pi / 180;
    const double c = std::cos(angle), s = std::sin(angle), shift = (i + 0.5) / edges;
    const double x = kMiddle - shift * s, y = kMiddle + shift * c;
    const auto at = [&](double along, double across) {
      return exact::Point{x + along * c - across * s, y + along * s + across * c};
    };
    exact::Look seen = look;
    seen.seed = static_cast<unsigned>(i) * 977 + 1;
    const Grey picture = exact::Draw(
        {{at(-kFar, 0), at(kFar, 0), at(kFar, kFar), at(-kFar, kFar)}, {}}, kSide, kSide, seen);
    const exact::Point from = at(-kHalf, 0.7), to = at(kHalf, -0.4);
    KyEdgePointsVector points;
    Must(ImgFindEdgePoints(&picture, static_cast<float>(from.x), static_cast<float>(from.y),
                           static_cast<float>(to.x), static_cast<float>(to.y), 8, 30,
                           setting.halfThickness, setting.sigma, TRANS_SCAN_RISING, 4, &points));
    for (const KyEdgePoint& p : points) result.points.Add(c * (p.y - y) - s * (p.x - x));
    KyLine line;
    Must(KyFitLine(&points, 1, line));
    for (const double end : {-kHalf, kHalf}) {
      const exact::Point p = at(end, 0);
      result.fits.Add(KyDistance(line, p.x, p.y));
    }
  }
  return result;
}

constexpr double kAll = 37;  // degrees from one edge to the next, to meet many angles
constexpr Setting kUsual{1, 2};

Color NoisePlot() {
  Curve points{{}, {}, kPoints}, fits{{}, {}, kFits};
  for (int noise = 0; noise <= 20; noise += 2) {
    const Result r = MeasureEdges(3, {.blur = 0.7, .noise = double(noise)}, kUsual, 8, kAll);
    points.x.push_back(noise), points.y.push_back(r.points.RootMeanSquare());
    fits.x.push_back(noise), fits.y.push_back(r.fits.RootMeanSquare());
  }
  return Plot(kPlotWidth, kPlotHeight, {20, 0.15, 4, 0.05, 1, 1000}, {points, fits});
}

Color BlurPlot() {
  Curve points{{}, {}, kPoints}, fits{{}, {}, kFits};
  for (int quarter = 0; quarter <= 12; ++quarter) {
    const double blur = quarter / 4.0;
    const Result r = MeasureEdges(3, {.blur = blur, .noise = 4}, kUsual, 8, kAll);
    points.x.push_back(blur), points.y.push_back(r.points.RootMeanSquare());
    fits.x.push_back(blur), fits.y.push_back(r.fits.RootMeanSquare());
  }
  return Plot(kPlotWidth, kPlotHeight, {3, 0.4, 1, 0.1, 1, 1000}, {points, fits});
}

Color AnglePlot() {
  Curve curves[] = {{{}, {}, kPoints}, {{}, {}, kFits}, {{}, {}, kThird}};
  constexpr Setting kSettings[] = {{1, 0}, {1, 2}, {2, 5}};
  for (int degrees = 0; degrees <= 90; degrees += 5) {
    for (int i = 0; i < 3; ++i) {
      const Result r = MeasureEdges(degrees, {}, kSettings[i], 5, 0);
      curves[i].x.push_back(degrees), curves[i].y.push_back(r.points.largest);
    }
  }
  return Plot(kPlotWidth, kPlotHeight, {90, 0.1, 15, 0.02, 1, 1000},
              {curves[0], curves[1], curves[2]});
}

Color RadiusPlot() {
  Curve curves[] = {{{}, {}, kPoints}, {{}, {}, kFits}};
  for (int radius = 6; radius <= 54; radius += 4) {
    for (int i = 0; i < 2; ++i) {
      const Grey picture = exact::Draw({{{0, 0}, {kSide, 0}, {kSide, kSide}, {0, kSide}},
                                        {{{kMiddle + 0.3, kMiddle + 0.4}, double(radius)}}},
                                       kSide, kSide, {});
      KyEdgePointsVector points;
      Must(ImgFindEdgePointsOnCircle(&picture, kMiddle, kMiddle, static_cast<float>(radius), 0, 360,
                                     5, 120, i == 0 ? 0 : 2, 1, TRANS_SCAN_RISING, 4, &points));
      KyCircle circle;
      Must(KyFitCircle(&points, 0, circle));
      curves[i].x.push_back(radius), curves[i].y.push_back(std::abs(circle.radius - radius));
    }
  }
  return Plot(kPlotWidth, kPlotHeight, {60, 0.1, 10, 0.02, 1, 1000}, {curves[0], curves[1]});
}

}  // namespace

void Accuracy(const std::string& folder) {
  const Color noise = NoisePlot(), blur = BlurPlot(), angle = AnglePlot(), radius = RadiusPlot();
  Write(folder, "accuracy", 2, {&noise, &blur, &angle, &radius});
}

}  // namespace docs
