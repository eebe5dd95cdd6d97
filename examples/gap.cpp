// The width of a printed track along its skeleton: smallest, mean, and where.
//
//   gap [FOLDER]
//
// draws a track that has a neck, finds its width at every pixel of its skeleton from the distance
// to the ground, prints the smallest and the mean, and writes gap.png to FOLDER (demo): the track,
// and the distances in colours with the skeleton in white and a frame around the narrowest place.
// The width of a gap is found in the same way, on the inverted picture.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>

#include "ky/ky.h"
#include "support/drawing.h"
#include "support/picture_file.h"
#include "support/program.h"

namespace {

using Grey = KyImage<KyBW8>;

constexpr int kWidth = 420, kHeight = 180, kNeck = 262;
constexpr KyBW8 kGround = 60, kTrack = 190;
constexpr float kScale = 16;  // distances have four bits after the point

// The width that the track is drawn with, across its direction.
double Drawn(double x) {
  const double neck = (x - kNeck) / 14;
  return 25 + 5 * std::sin(x / 31) - 11 * std::exp(-neck * neck);
}

Grey Track() {
  Grey picture = NewImage<KyBW8>(kWidth, kHeight);
  std::mt19937 random(1);
  std::normal_distribution<double> noise(0, 9);
  for (int x = 0; x < kWidth; ++x) {
    const double centre = kHeight / 2.0 + 38 * std::sin(x / 52.0),
                 slope = std::cos(x / 52.0) * 38 / 52;
    for (int y = 0; y < kHeight; ++y) {
      const double across = std::abs(y - centre) / std::hypot(1, slope);
      const double covered = std::clamp(Drawn(x) / 2 - across + 0.5, 0.0, 1.0);
      const double level = kGround + (kTrack - kGround) * covered + noise(random);
      picture.SetPixel(static_cast<KyBW8>(std::clamp(std::lround(level), 0l, 255l)), x, y);
    }
  }
  return picture;
}

struct Place {
  int x, y;
  double width;
};

// The nearest ground pixel lies up to a pixel beyond the edge, and the skeleton up to half a pixel
// beside the middle, so that twice the distance is the width, give or take a pixel.
double WidthAt(KyBW16 distance) { return 2 * (distance / double{kScale}); }

KyC24 FalseColor(double width) {
  const auto ramp = [&](double centre) {
    return static_cast<KyBW8>(230 * std::clamp(1.6 - std::abs(width - centre) / 8, 0.0, 1.0));
  };
  return {ramp(26), ramp(16), ramp(6)};
}

void Run(const std::string& folder) {
  const Grey track = Track();
  Grey objects = SameSize<KyBW8>(track), skeleton = SameSize<KyBW8>(track);
  KyImage<KyBW16> distances = SameSize<KyBW16>(track);
  Must(ImgMedian(&track, &objects, 2));
  Must(ImgThreshold(&objects, &objects, (kGround + kTrack) / 2));
  Must(ImgDistance(&objects, &distances, IMG_DISTANCE_EUCLIDEAN, kScale));
  Must(ImgSkeleton(&objects, &skeleton));
  // Ends of lines, which are worn off pixel by pixel: those of short twigs to the edges, and of the
  // track itself, which the picture cuts off.
  KyKernel end;
  Must(end.SetKernelData(0, 0, 0, -1, 1, -1, -1, -1, -1));
  Must(ImgThin(&skeleton, nullptr, &end, KERNEL_ROTATION_CLOCKWISE, 20));

  KyImage<KyC24> result = NewImage<KyC24>(kWidth, 2 * kHeight);
  KyROI<KyC24> above(&result, 0, 0, kWidth, kHeight), below(&result, 0, kHeight, kWidth, kHeight);
  Place narrowest = {0, 0, kHeight};
  double sum = 0;
  int count = 0;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const KyBW8 level = track.GetPixel(x, y);
      above.SetPixel({level, level, level}, x, y);
      if (objects.GetPixel(x, y) == 0) continue;
      const double width = WidthAt(distances.GetPixel(x, y));
      below.SetPixel(FalseColor(width), x, y);
      if (skeleton.GetPixel(x, y) == 0) continue;
      below.SetPixel({255, 255, 255}, x, y);
      sum += width;
      ++count;
      if (width < narrowest.width) narrowest = {x, y, width};
    }
  if (count == 0) throw std::runtime_error("there is no track");
  for (KyROI<KyC24>* const picture : {&above, &below})
    draw::Frame(*picture, {narrowest.x - 14, narrowest.y - 14, 29, 29}, {255, 230, 0});

  std::filesystem::create_directories(folder);
  const std::string path = folder + "/gap.png";
  picture::Write(result, path);
  std::printf("mean width      %5.1f pixels along %d pixels of skeleton\n", sum / count, count);
  std::printf("smallest width  %5.1f pixels at (%d, %d); drawn with %.1f\n", narrowest.width,
              narrowest.x, narrowest.y, Drawn(narrowest.x));
  std::printf("%s\n", path.c_str());
  if (std::abs(narrowest.x - kNeck) > 8 || std::abs(narrowest.width - Drawn(narrowest.x)) > 2)
    throw std::runtime_error("the neck has not been found");
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}
