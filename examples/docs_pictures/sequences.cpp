// Frames of interlaced images, and averages over the frames of a sequence.
#include <algorithm>
#include <cmath>
#include <random>

#include "families.h"
#include "sheet.h"
#include "support/scene.h"

namespace docs {
namespace {

// A bolt that moves past parts at rest, under noise of the given deviation.
Grey At(float time, double deviation, std::mt19937& random) {
  scene::Scene parts{kWidth, kHeight, {}, 7};
  parts.parts = {{scene::Kind::kWasher, 44, 44, 24, 0},
                 {scene::Kind::kPlate, 146, 44, 16, 0.3f},
                 {scene::Kind::kBolt, 40 + 4 * time, 112, 16, 0.1f}};
  Grey frame = scene::Draw(parts);
  Must(KyGetError());
  std::normal_distribution<double> noise(0, deviation);
  for (int y = 0; deviation > 0 && y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      frame.SetPixel(static_cast<KyBW8>(
                         std::clamp(std::lround(frame.GetPixel(x, y) + noise(random)), 0l, 255l)),
                     x, y);
  return frame;
}

}  // namespace

void Frames(const std::string& folder) {
  // What the camera sees moves by 6 pixels between the frames.
  constexpr int kShift = 6;
  const Grey source = Parts();
  Grey moved = Panel(), half = NewImage<KyBW8>(kWidth, kHeight / 2), interlaced = Panel();
  KyROI<KyBW8> from(&moved, 0, 0, kWidth - kShift, kHeight);
  KyROI<KyBW8> to(&moved, kShift, 0, kWidth - kShift, kHeight);
  Must(ImgCopy(&source, &moved));
  Must(ImgCopy(&from, &to));
  Must(ImgCopy(&source, &interlaced));
  Must(ImgGetFrame(&moved, &half, 1));
  Must(ImgSetFrame(&half, &interlaced, 1));

  int offset = 0;
  Must(ImgMatchFrames(&interlaced, 46, -10, 10, offset));
  Grey realigned = Panel(), rebuilt = Panel();
  Must(ImgCopy(&interlaced, &realigned));
  Must(ImgRealignFrame(&interlaced, &realigned, offset, 0));
  Must(ImgCopy(&interlaced, &rebuilt));
  Must(ImgRebuildFrame(&interlaced, &rebuilt, 0));
  Write(folder, "frames", 3, {&interlaced, &realigned, &rebuilt});
}

void Temporal(const std::string& folder) {
  constexpr int kFrames = 25;
  constexpr float kReduction = 3;
  std::mt19937 random(1);
  KyMovingAverage average(9, kWidth, kHeight, 0);
  KyBW16Vector linear, adaptive;
  Must(ImgSetRecursiveAverageLUT(&linear, kReduction));
  Must(ImgSetRecursiveAverageLUT(&adaptive, kReduction, 18));
  auto linearState = Panel<KyBW16>(), adaptiveState = Panel<KyBW16>();
  Grey last = Panel(), moving = Panel(), slow = Panel(), quick = Panel();
  for (int time = 0; time < kFrames; ++time) {
    last = At(static_cast<float>(time), 10, random);
    if (time == 0)
      for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
          const auto level = static_cast<KyBW16>(16 * last.GetPixel(x, y));
          linearState.SetPixel(level, x, y);
          adaptiveState.SetPixel(level, x, y);
        }
    Must(average.Average(&last, &moving));
    Must(ImgRecursiveAverage(&last, &linearState, &slow, &linear));
    Must(ImgRecursiveAverage(&last, &adaptiveState, &quick, &adaptive));
  }
  Write(folder, "temporal", 2, {&last, &moving, &slow, &quick});
}

}  // namespace docs
