#include "scene.h"

#include <algorithm>
#include <cmath>

#include "noise.h"

namespace scene {
namespace {

struct Point {
  float x, y;
};

Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
float Length(Point p) { return std::hypot(p.x, p.y); }

// Shapes are signed distances: below 0 inside, in pixels. The larger of two is their intersection,
// the smaller their union, and a hole is cut out by the larger of the outside and the negated hole.
float Disk(Point p, Point centre, float radius) { return Length(p - centre) - radius; }
float Box(Point p, Point centre, Point half) {
  const Point q{std::abs(p.x - centre.x) - half.x, std::abs(p.y - centre.y) - half.y};
  return Length({std::max(q.x, 0.0f), std::max(q.y, 0.0f)}) + std::min(std::max(q.x, q.y), 0.0f);
}

float Washer(const Part& part, Point p) {
  const Point hole{part.faulty ? part.size * 0.2f : 0.0f, 0.0f};
  return std::max(Disk(p, {0, 0}, part.size), -Disk(p, hole, part.size / 2));
}

float Bolt(const Part& part, Point p) {
  const float s = part.size;
  const float end = part.faulty ? 1.2f * s : 2 * s;
  const float head = Box(p, {-1.6f * s, 0}, {0.4f * s, s});
  const float thread = 0.05f * s * std::abs(std::remainder(p.x, 0.25f * s)) / (0.125f * s);
  const float middle = (end - 1.2f * s) / 2;
  return std::min(head, Box(p, {middle, 0}, {end - middle, 0.5f * s - thread}));
}

float Plate(const Part& part, Point p) {
  const float s = part.size;
  constexpr float kCorner = 0.2f;
  float d = Box(p, {0, 0}, {(2 - kCorner) * s, (1.4f - kCorner) * s}) - kCorner * s;
  d = std::max(d, -Disk(p, {0, 0}, 0.55f * s));
  for (const float x : {-1.5f, 1.5f}) {
    for (const float y : {-0.9f, 0.9f}) {
      if (part.faulty && x > 0 && y > 0) continue;
      d = std::max(d, -Disk(p, {x * s, y * s}, 0.25f * s));
    }
  }
  return d;
}

float Distance(const Part& part, Point at) {
  const float c = std::cos(part.angle), s = std::sin(part.angle);
  const Point q = at - Point{part.x, part.y};
  const Point p{c * q.x + s * q.y, c * q.y - s * q.x};
  switch (part.kind) {
    case Kind::kWasher: return Washer(part, p);
    case Kind::kBolt: return Bolt(part, p);
    case Kind::kPlate: return Plate(part, p);
  }
  return INFINITY;
}

// The share of a pixel or shadow that a shape covers, its edge being `softness` pixels wide.
float Covered(float distance, float softness) {
  return std::clamp(0.5f - distance / softness, 0.0f, 1.0f);
}

// One part over what is drawn already at `at`.
float Paint(const Part& part, Point at, float level) {
  if (Length(at - Point{part.x, part.y}) > 3 * part.size) return level;
  constexpr Point kShadow{5, 6};
  level *= 1 - 0.35f * Covered(Distance(part, at - kShadow), 8);

  const float d = Distance(part, at);
  if (d > 0.5f) return level;
  // The light comes from above and from the left: edges that fall that way shine.
  constexpr float kBevel = 3;
  const float slopeX = Distance(part, {at.x + 0.5f, at.y}) - Distance(part, {at.x - 0.5f, at.y});
  const float slopeY = Distance(part, {at.x, at.y + 0.5f}) - Distance(part, {at.x, at.y - 0.5f});
  const float edge = std::clamp(1 + d / kBevel, 0.0f, 1.0f);
  const float surface = 165 - 30 * edge * (0.6f * slopeX + 0.8f * slopeY);
  return level + (surface - level) * Covered(d, 1);
}

// How bright the light is at a place, 1 at the brightest: a lamp at the upper left.
float Light(const Scene& scene, Point at) {
  const Point lamp{0.3f * static_cast<float>(scene.width),
                   0.25f * static_cast<float>(scene.height)};
  const float reach = static_cast<float>(std::max(scene.width, scene.height));
  const float distance = Length(at - lamp) / reach;
  return 1 / (1 + 1.1f * distance * distance);
}

}  // namespace

Scene Bundled(bool faults) {
  return {.parts = {{Kind::kPlate, 130, 110, 45, 0.2f},
                    {Kind::kPlate, 520, 100, 38, -0.5f, faults},
                    {Kind::kPlate, 335, 365, 40, 1.3f},
                    {Kind::kWasher, 300, 70, 38, 0},
                    {Kind::kWasher, 390, 150, 28, 0.7f, faults},
                    {Kind::kWasher, 80, 400, 40, 0},
                    {Kind::kWasher, 590, 410, 32, 0},
                    {Kind::kBolt, 270, 205, 24, 0.35f},
                    {Kind::kBolt, 95, 270, 28, -0.6f},
                    {Kind::kBolt, 190, 390, 26, 1.9f, faults},
                    {Kind::kBolt, 495, 285, 30, 0.8f}}};
}

KyImage<KyBW8> Draw(const Scene& scene) {
  KyImage<KyBW8> image(scene.width, scene.height);
  if (KyGetError() != KY_OK) return image;
  Noise noise(scene.seed);
  for (int y = 0; y < scene.height; ++y) {
    const auto row = static_cast<KyBW8*>(image.GetPixelPtr(0, y));
    for (int x = 0; x < scene.width; ++x) {
      const Point at{static_cast<float>(x), static_cast<float>(y)};
      float level = 70;
      for (const Part& part : scene.parts) level = Paint(part, at, level);
      level = 1.35f * level * Light(scene, at) + noise.Next();
      row[x] = static_cast<KyBW8>(std::clamp(std::lround(level), 0L, 255L));
    }
  }
  return image;
}

}  // namespace scene
