// Averages over the frames of a sequence: still things lose their noise; what moves shows the
// difference between the filters.
//
//   denoise [FOLDER]
//
// draws a sequence in which a bolt passes between parts at rest, before a noisy camera, filters it
// in three ways, prints how much noise is left, and writes denoise.png to FOLDER (demo): the last
// frame, its moving average, and its linear and its motion-adaptive recursive average.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>

#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

using Grey = KyImage<KyBW8>;

constexpr int kWidth = 320, kHeight = 240, kFrames = 40;
constexpr float kReduction = 3;  // of the noise's deviation
constexpr unsigned kPeriod = 9;  // which reduces it as much

Grey Frame(int time, std::mt19937& random) {
  scene::Scene parts{kWidth, kHeight, {}, static_cast<unsigned>(time + 1)};
  parts.parts = {{scene::Kind::kWasher, 70, 70, 34, 0},
                 {scene::Kind::kPlate, 235, 65, 24, 0.3f},
                 {scene::Kind::kBolt, 60 + 5.0f * static_cast<float>(time), 175, 22, 0.1f}};
  Grey frame = scene::Draw(parts);
  Must(KyGetError());
  std::normal_distribution<double> noise(0, 12);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const double level = frame.GetPixel(x, y) + noise(random);
      frame.SetPixel(static_cast<KyBW8>(std::clamp(std::lround(level), 0l, 255l)), x, y);
    }
  return frame;
}

// A recursive average with a state of its own, which the first frame starts.
class Recursive {
 public:
  Recursive(float noise, const Grey& first) : state_(kWidth, kHeight) {
    Must(KyGetError());
    Must(ImgSetRecursiveAverageLUT(&table_, kReduction, noise));
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x)
        state_.SetPixel(static_cast<KyBW16>(16 * first.GetPixel(x, y)), x, y);
  }
  void Step(const Grey& frame, KyROI<KyBW8>* destination) {
    Must(ImgRecursiveAverage(&frame, &state_, destination, &table_));
  }

 private:
  KyBW16Vector table_;
  KyImage<KyBW16> state_;
};

// The standard deviation of noise, from the differences between neighbours on the background.
double Noise(const KyROI<KyBW8>& picture) {
  constexpr int kSide = 40, kLeft = (kWidth - kSide) / 2;
  double squares = 0;
  for (int y = 0; y < kSide; ++y)
    for (int x = kLeft; x < kLeft + kSide; ++x) {
      const int difference = picture.GetPixel(x, y) - picture.GetPixel(x + 1, y);
      squares += difference * difference;
    }
  return std::sqrt(squares / (2 * kSide * kSide));
}

void Run(const std::string& folder) {
  Grey result = NewImage<KyBW8>(2 * kWidth, 2 * kHeight);
  KyROI<KyBW8> last(&result, 0, 0, kWidth, kHeight), moving(&result, kWidth, 0, kWidth, kHeight),
      linear(&result, 0, kHeight, kWidth, kHeight),
      adaptive(&result, kWidth, kHeight, kWidth, kHeight);

  std::mt19937 random(1);
  KyMovingAverage average(kPeriod, kWidth, kHeight, 0);
  Must(KyGetError());
  const Grey first = Frame(0, random);
  Recursive linearFilter(0, first), adaptiveFilter(18, first);
  for (int time = 0; time < kFrames; ++time) {
    const Grey frame = Frame(time, random);
    Must(ImgCopy(&frame, &last));
    Must(average.Average(&frame, &moving));
    linearFilter.Step(frame, &linear);
    adaptiveFilter.Step(frame, &adaptive);
  }

  std::filesystem::create_directories(folder);
  const std::string path = folder + "/denoise.png";
  picture::Write(result, path);
  std::printf("%-34s %s\n", "", "noise");
  const auto row = [](const char* name, const KyROI<KyBW8>& picture) {
    std::printf("%-34s %5.2f\n", name, Noise(picture));
  };
  row("upper left: the last frame", last);
  row("upper right: moving average", moving);
  row("lower left: linear recursive", linear);
  row("lower right: adaptive recursive", adaptive);
  std::printf("%s\n", path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}
