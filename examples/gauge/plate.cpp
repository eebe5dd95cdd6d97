#include "gauge/plate.h"

#include <cmath>
#include <cstddef>
#include <iterator>
#include <numbers>

#include "support/exact.h"

namespace gauge::plate {
namespace {

using exact::Point;

constexpr double kTurn = 7.4;  // degrees, clockwise
constexpr Point kMiddle{320.3, 240.7};

// The outline from the upper left corner on, clockwise: top, right, chamfer, bottom, left. All in
// pixels from the middle of the plate.
constexpr Point kOutline[] = {{-220, -150}, {220, -150}, {220, 60}, {130, 150}, {-220, 150}};
constexpr const char* kEdges[] = {"top", "right", "chamfer", "bottom", "left"};
constexpr exact::Hole kHoles[] = {
    {{10, 0}, 70}, {{-160, -90}, 38}, {{160, -90}, 38}, {{-155, 88}, 42}};
constexpr const char* kHoleNames[] = {"bore", "first", "second", "third"};

Point InPicture(Point p) {
  const double c = std::cos(kTurn * std::numbers::pi / 180),
               s = std::sin(kTurn * std::numbers::pi / 180);
  return {kMiddle.x + c * p.x - s * p.y, kMiddle.y + s * p.x + c * p.y};
}

// In degrees, above -90 to 90.
double AngleOf(Point from, Point to) {
  const double degrees = std::atan2(to.y - from.y, to.x - from.x) * 180 / std::numbers::pi;
  return degrees - 180 * std::ceil((degrees - 90) / 180);
}

}  // namespace

KyImage<KyBW8> Draw() {
  exact::Part part;
  for (const Point p : kOutline) part.outline.push_back(InPicture(p));
  for (const exact::Hole& hole : kHoles)
    part.holes.push_back({InPicture(hole.center), hole.radius});
  return exact::Draw(part, 640, 480, {.ground = 45, .level = 195, .blur = 0.4, .noise = 1});
}

const char* const kPlan =
    "# The edges, along segments, and the holes.\n"
    "edge top      150  74  520 121\n"
    "edge right    556 137  532 310\n"
    "edge chamfer  515 336  448 393  calipers=24\n"
    "edge bottom   415 403   95 362\n"
    "edge left      89 343  123  82\n"
    "circle bore   330 242   69  thickness=0 calipers=160 sigma=1.5\n"
    "circle first  173 131   37  thickness=0 calipers=160 sigma=1.5\n"
    "circle second 491 173   39  thickness=0 calipers=160 sigma=1.5\n"
    "circle third  155 309   43  thickness=0 calipers=160 sigma=1.5\n"
    "\n"
    "distance width    left right\n"
    "distance height   top bottom\n"
    "distance pitch    first second\n"
    "distance margin   third left\n"
    "angle    corner   top left\n"
    "angle    bevel    bottom chamfer\n";

std::map<std::string, double> Truth() {
  std::map<std::string, double> truth = {{"width", 440}, {"height", 300}, {"pitch", 320},
                                         {"margin", 65}, {"corner", 90},  {"bevel", -45}};
  for (std::size_t i = 0; i < std::size(kEdges); ++i)
    truth[std::string(kEdges[i]) + " angle"] =
        AngleOf(InPicture(kOutline[i]), InPicture(kOutline[(i + 1) % std::size(kOutline)]));
  for (std::size_t i = 0; i < std::size(kHoles); ++i) {
    const Point center = InPicture(kHoles[i].center);
    const std::string name = kHoleNames[i];
    truth[name + " x"] = center.x;
    truth[name + " y"] = center.y;
    truth[name + " diameter"] = 2 * kHoles[i].radius;
  }
  return truth;
}

}  // namespace gauge::plate
