#include "exact.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "noise.h"
#include "program.h"

namespace exact {
namespace {

constexpr int kLines = 128;  // in a row of pixels

// Levels as real numbers.
struct Plane {
  int width, height;
  std::vector<double> levels;

  Plane(int w, int h)
      : width(w), height(h), levels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
  double& At(int x, int y) {
    return levels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(x)];
  }
};

// Adds `weight` times the length of a piece of a line in each pixel of a row.
void AddPiece(Plane& plane, int row, double from, double to, double weight) {
  const double last = plane.width - 0.5;
  from = std::clamp(from, -0.5, last), to = std::clamp(to, -0.5, last);
  if (from >= to) return;
  const int end = std::min(static_cast<int>(std::floor(to + 0.5)), plane.width - 1);
  for (int x = static_cast<int>(std::floor(from + 0.5)); x <= end; ++x)
    plane.At(x, row) += weight * std::max(0.0, std::min(x + 0.5, to) - std::max(x - 0.5, from));
}

void AddOutline(Plane& plane, int row, double y, const std::vector<Point>& outline) {
  double from = INFINITY, to = -INFINITY;
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const Point a = outline[i], b = outline[(i + 1) % outline.size()];
    if ((a.y <= y) == (b.y <= y)) continue;
    const double x = a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x);
    from = std::min(from, x), to = std::max(to, x);
  }
  AddPiece(plane, row, from, to, 1.0 / kLines);
}

void RemoveHole(Plane& plane, int row, double y, const Hole& hole) {
  const double square = hole.radius * hole.radius - (y - hole.center.y) * (y - hole.center.y);
  if (square <= 0) return;
  const double half = std::sqrt(square);
  AddPiece(plane, row, hole.center.x - half, hole.center.x + half, -1.0 / kLines);
}

// Along rows (stepX 1) or columns (stepY 1); the outermost pixels go on outside.
Plane Blurred(Plane& plane, double sigma, int stepX, int stepY) {
  const int radius = static_cast<int>(std::ceil(4 * sigma));
  Plane blurred(plane.width, plane.height);
  double sum = 0;
  for (int k = -radius; k <= radius; ++k) sum += std::exp(-0.5 * k * k / (sigma * sigma));
  for (int k = -radius; k <= radius; ++k) {
    const double weight = std::exp(-0.5 * k * k / (sigma * sigma)) / sum;
    for (int y = 0; y < plane.height; ++y)
      for (int x = 0; x < plane.width; ++x)
        blurred.At(x, y) += weight * plane.At(std::clamp(x + k * stepX, 0, plane.width - 1),
                                              std::clamp(y + k * stepY, 0, plane.height - 1));
  }
  return blurred;
}

}  // namespace

KyImage<KyBW8> Draw(const Part& part, int width, int height, const Look& look) {
  Plane plane(width, height);
  for (int row = 0; row < height; ++row) {
    for (int i = 0; i < kLines; ++i) {
      const double y = row - 0.5 + (i + 0.5) / kLines;
      AddOutline(plane, row, y, part.outline);
      for (const Hole& hole : part.holes) RemoveHole(plane, row, y, hole);
    }
  }
  if (look.blur > 0) {
    plane = Blurred(plane, look.blur, 1, 0);
    plane = Blurred(plane, look.blur, 0, 1);
  }
  auto image = NewImage<KyBW8>(width, height);
  Noise noise(look.seed);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double level = look.ground + (look.level - look.ground) * plane.At(x, y) +
                           look.noise / Noise::kDeviation * noise.Next();
      image.SetPixel(static_cast<KyBW8>(std::clamp(std::lround(level), 0L, 255L)), x, y);
    }
  }
  return image;
}

}  // namespace exact
