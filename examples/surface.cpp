// Scratches on a structured surface. A fixed threshold fails on it: light falls from one side, and
// the grain is nearly as strong as the scratches. The local average follows the light, and the
// local deviation tells how strong the grain is around a pixel; a scratch is what stands out from
// both over some length.
//
//   surface [FOLDER]
//
// draws a ground surface with three scratches, finds them, prints how much of each it has found,
// and writes surface.png to FOLDER (demo): the surface, its local average, its local deviation
// (eight times as bright), and the scratches.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>

#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/program.h"

namespace {

using Grey = KyImage<KyBW8>;

constexpr int kWidth = 400, kHeight = 300;
// Windows wider than a scratch, and smaller than what the light changes over.
constexpr unsigned kHalf = 12;
// How much darker than its surroundings a scratch is: at least this, and so many quarters of the
// local deviation more.
constexpr int kLeast = 4, kQuarters = 6;

struct Scratch {
  double x, y, right, down;
  int length;
};
constexpr std::array<Scratch, 3> kScratches = {
    {{60, 60, 0.8, 0.6, 140}, {230, 240, 0.94, -0.34, 150}, {330, 30, -0.2, 0.98, 110}}};

// Visits the pixels of a scratch, which is two wide.
template <class Visit>
void Along(const Scratch& scratch, const Visit& visit) {
  for (int i = 0; i < scratch.length; ++i) {
    const int x = static_cast<int>(scratch.x + scratch.right * i);
    const int y = static_cast<int>(scratch.y + scratch.down * i);
    visit(x, y);
    visit(x + 1, y);
  }
}

// Grinding marks down the columns, rougher in the right half, under light from the left.
Grey Surface() {
  std::mt19937 random(1);
  std::normal_distribution<double> noise(0, 1);
  std::array<double, kWidth> marks;
  for (double& mark : marks) mark = noise(random);
  Grey surface = NewImage<KyBW8>(kWidth, kHeight);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const double light = 200 - 0.28 * x - 0.1 * y, rough = x < kWidth / 2 ? 3 : 7;
      const double grain = rough * (marks[static_cast<std::size_t>(x)] + noise(random) / 2);
      surface.SetPixel(static_cast<KyBW8>(std::clamp(std::lround(light + grain), 0l, 255l)), x, y);
    }
  Grey ground = SameSize<KyBW8>(surface);
  Must(ImgCopy(&surface, &ground));
  for (const Scratch& scratch : kScratches)
    Along(scratch, [&](int x, int y) {
      surface.SetPixel(static_cast<KyBW8>(std::max(ground.GetPixel(x, y) - 40, 0)), x, y);
    });
  return surface;
}

// Levels by a law.
template <class Law>
void Apply(const KyROI<KyBW8>& source, KyROI<KyBW8>& destination, const Law& law) {
  KyBW8Vector table(256);
  for (int level = 0; level < 256; ++level)
    table[static_cast<unsigned>(level)] = static_cast<KyBW8>(std::min(law(level), 255));
  Must(ImgLut(&source, &destination, &table));
}

void Find(const Grey& surface, const KyROI<KyBW8>& average, const KyROI<KyBW8>& deviation,
          KyROI<KyBW8>& found) {
  Grey below = SameSize<KyBW8>(surface), least = SameSize<KyBW8>(surface);
  Must(ImgOper(KY_OPER_SUBTRACT, &average, &surface, &below));
  Apply(deviation, least, [](int level) { return kLeast + kQuarters * level / 4; });
  Must(ImgOper(KY_OPER_GREATER, &below, &least, &found));
  // A scratch goes on; grain does not.
  Must(ImgConvolUniform(&found, &found, 3u));
  Must(ImgThreshold(&found, &found, 35));
}

void Report(const KyROI<KyBW8>& found) {
  Grey rest = SameSize<KyBW8>(found);
  Must(ImgCopy(&found, &rest));
  std::printf("scratch  found\n");
  int number = 0;
  for (const Scratch& scratch : kScratches) {
    int seen = 0;
    Along(scratch, [&](int x, int y) {
      if (found.GetPixel(x, y) != 0) ++seen;
      KyROI<KyBW8> around(&rest, x - 6, y - 6, 13, 13);
      Must(ImgCopy(KyBW8{0}, &around));
    });
    std::printf("%7d  %4d %%\n", ++number, 100 * seen / (2 * scratch.length));
  }
  int wrong = 0;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) wrong += rest.GetPixel(x, y) != 0;
  std::printf("found elsewhere: %d of %d pixels\n", wrong, kWidth * kHeight);
}

void Run(const std::string& folder) {
  const Grey surface = Surface();
  Grey sheet = NewImage<KyBW8>(2 * kWidth, 2 * kHeight);
  KyROI<KyBW8> source(&sheet, 0, 0, kWidth, kHeight), average(&sheet, kWidth, 0, kWidth, kHeight),
      deviation(&sheet, 0, kHeight, kWidth, kHeight),
      found(&sheet, kWidth, kHeight, kWidth, kHeight);
  Must(ImgCopy(&surface, &source));
  Must(ImgLocalAverage(&surface, &average, kHalf));
  Must(ImgLocalDeviation(&surface, &deviation, kHalf));
  Find(surface, average, deviation, found);
  Apply(deviation, deviation, [](int level) { return 8 * level; });
  Report(found);
  std::filesystem::create_directories(folder);
  const std::string path = folder + "/surface.png";
  picture::Write(sheet, path);
  std::printf("%s\n", path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}
