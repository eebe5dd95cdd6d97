// What a moving average gains, in decibels, and how the measure of sharpness falls along a series
// of blurs:
//
//   noise
//
// draws parts under a camera, adds noise to the frames, and prints two tables.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

#include "ky/ky.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

using Grey = KyImage<KyBW8>;

constexpr double kDeviation = 10;

Grey Noisy(const Grey& clean, std::mt19937& random) {
  std::normal_distribution<double> noise(0, kDeviation);
  auto frame = SameSize<KyBW8>(clean);
  for (int y = 0; y < clean.GetHeight(); ++y)
    for (int x = 0; x < clean.GetWidth(); ++x) {
      const double level = clean.GetPixel(x, y) + noise(random);
      frame.SetPixel(static_cast<KyBW8>(std::clamp(std::lround(level), 0l, 255l)), x, y);
    }
  return frame;
}

void PrintNoise(const Grey& clean) {
  std::mt19937 random(1);
  std::printf("frames   noise, levels   ratio, dB   gain, dB   10 log10(frames)\n");
  float first = 0;
  for (unsigned frames = 1; frames <= 32; frames *= 2) {
    KyMovingAverage average(frames, clean.GetWidth(), clean.GetHeight(), 0);
    auto mean = SameSize<KyBW8>(clean);
    for (unsigned i = 0; i < frames; ++i) {
      const Grey frame = Noisy(clean, random);
      Must(average.Average(&frame, &mean));
    }
    float noise = 0, decibels = 0;
    Must(ImgRmsNoise(&mean, &clean, noise));
    Must(ImgSignalNoiseRatio(&mean, &clean, decibels));
    if (frames == 1) first = decibels;
    std::printf("%6u %15.2f %11.1f %10.1f %18.1f\n", frames, double{noise}, double{decibels},
                double{decibels - first}, 10 * std::log10(frames));
  }
}

void PrintSharpness(const Grey& clean) {
  std::printf("\nblurs   sharpness\n");
  auto blurred = SameSize<KyBW8>(clean);
  Must(ImgCopy(&clean, &blurred));
  for (unsigned blurs = 0; blurs <= 6; ++blurs) {
    float sharpness = 0;
    Must(ImgFocusing(&blurred, sharpness));
    std::printf("%5u %11.1f\n", blurs, double{sharpness});
    Must(ImgConvolGaussian3x3(&blurred, &blurred));
  }
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 0, "", [] {
    const Grey clean = scene::Draw(scene::Bundled(false));
    Must(KyGetError());
    PrintNoise(clean);
    PrintSharpness(clean);
  });
}
