// Medians and distances.
#include <algorithm>
#include <cmath>
#include <random>

#include "families.h"
#include "sheet.h"

namespace docs {
namespace {

// Blue near 0 to red at 1, over green.
KyC24 FalseColor(double part) {
  const auto ramp = [&](double centre) {
    const double level = 1.6 - 4 * std::abs(part - centre);
    return static_cast<KyBW8>(255 * std::clamp(level, 0.0, 1.0));
  };
  return {ramp(0.8), ramp(0.5), ramp(0.2)};
}

Color Distances(const Grey& objects, IMG_DISTANCE_MODES mode) {
  auto distances = Panel<KyBW16>();
  Color picture = Panel<KyC24>();
  Must(ImgDistance(&objects, &distances, mode));
  KyBW16 most = 1;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) most = std::max(most, distances.GetPixel(x, y));
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const KyBW16 distance = distances.GetPixel(x, y);
      const bool isLine = distance % 8 == 0;
      if (distance != 0 && !isLine)
        picture.SetPixel(FalseColor(static_cast<double>(distance) / most), x, y);
    }
  return picture;
}

}  // namespace

void Medians(const std::string& folder) {
  Grey noisy = Parts(), small = Panel(), middle = Panel(), large = Panel();
  std::mt19937 random(7);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      if (const auto any = random() % 100; any < 24) noisy.SetPixel(any < 12 ? 0 : 255, x, y);
  Must(ImgMedian(&noisy, &small));
  Must(ImgMedian(&noisy, &middle, 2));
  Must(ImgMedian(&noisy, &large, 5));
  Write(folder, "median", 2, {&noisy, &small, &middle, &large});
}

void DistanceMaps(const std::string& folder) {
  Grey objects = Panel();
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const int i = x - 60, j = y - 75, k = x - 140, l = y - 62;
      const bool disk = i * i + j * j < 52 * 52;
      const bool plate = std::abs(k + l / 3) < 46 && std::abs(l - k / 3) < 28;
      const bool hole = (x - 62) * (x - 62) + (y - 78) * (y - 78) < 10 * 10;
      objects.SetPixel((disk || plate) && !hole ? 255 : 0, x, y);
    }
  const Color source = InColor(objects), euclidean = Distances(objects, IMG_DISTANCE_EUCLIDEAN),
              cityBlock = Distances(objects, IMG_DISTANCE_CITY_BLOCK),
              chessboard = Distances(objects, IMG_DISTANCE_CHESSBOARD);
  Write(folder, "distance", 2, {&source, &euclidean, &cityBlock, &chessboard});
}

}  // namespace docs
