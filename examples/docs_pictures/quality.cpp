// Noise, sharpness, and the axes of objects.
#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "families.h"
#include "sheet.h"
#include "support/drawing.h"

namespace docs {
namespace {

struct Bar {
  unsigned label;
  float value;
};

constexpr KyC24 kInk{40, 40, 40}, kAccent{200, 40, 40};

// Bars with their values above them and their labels below.
Color Bars(std::initializer_list<Bar> bars) {
  constexpr int kBottom = kHeight - 18, kHighest = kHeight - 46;
  auto chart = Panel<KyC24>();
  Must(ImgOper(KY_OPER_COPY, KyC24{232, 232, 232}, &chart));
  float most = 1;
  for (const Bar& bar : bars) most = std::max(most, bar.value);
  const int step = kWidth / static_cast<int>(bars.size());
  int left = 0;
  for (const Bar& bar : bars) {
    const auto value = static_cast<unsigned>(std::lround(bar.value));
    const int height = static_cast<int>(bar.value / most * kHighest);
    draw::Fill(chart, {left + 5, kBottom - height, step - 10, height}, {96, 96, 160});
    const auto center = [&](unsigned n) { return left + (step - draw::NumberWidth(n)) / 2; };
    draw::Number(chart, value, {center(value), kBottom - height - draw::kNumberHeight - 3},
                 kAccent);
    draw::Number(chart, bar.label, {center(bar.label), kBottom + 5}, kInk);
    left += step;
  }
  return chart;
}

Color MeanOf(const Grey& clean, unsigned frames, float& decibels) {
  std::mt19937 random(frames);
  std::normal_distribution<double> noise(0, 24);
  KyMovingAverage average(frames, kWidth, kHeight, 0);
  Grey frame = Panel(), mean = Panel();
  for (unsigned i = 0; i < frames; ++i) {
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x)
        frame.SetPixel(static_cast<KyBW8>(
                           std::clamp(std::lround(clean.GetPixel(x, y) + noise(random)), 0l, 255l)),
                       x, y);
    Must(average.Average(&frame, &mean));
  }
  Must(ImgSignalNoiseRatio(&mean, &clean, decibels));
  return InColor(mean);
}

Color Blurred(const Grey& sharp, unsigned times, float& sharpness) {
  Grey blurred = Panel();
  Must(ImgCopy(&sharp, &blurred));
  for (unsigned i = 0; i < times; ++i) Must(ImgConvolGaussian3x3(&blurred, &blurred));
  Must(ImgFocusing(&blurred, sharpness));
  return InColor(blurred);
}

}  // namespace

void Noise(const std::string& folder) {
  const Grey clean = Parts();
  float of1, of2, of4, of8, of16, of32;
  const Color one = MeanOf(clean, 1, of1), four = MeanOf(clean, 4, of4);
  const Color sixteen = MeanOf(clean, 16, of16);
  MeanOf(clean, 2, of2), MeanOf(clean, 8, of8), MeanOf(clean, 32, of32);
  const Color chart = Bars({{1, of1}, {2, of2}, {4, of4}, {8, of8}, {16, of16}, {32, of32}});
  Write(folder, "noise", 2, {&one, &four, &sixteen, &chart});
}

void Focus(const std::string& folder) {
  const Grey sharp = Parts();
  std::array<float, 7> values{};
  for (unsigned i = 0; i < values.size(); ++i) Blurred(sharp, i, values[i]);
  const Color zero = Blurred(sharp, 0, values[0]), two = Blurred(sharp, 2, values[2]);
  const Color six = Blurred(sharp, 6, values[6]);
  const Color chart = Bars({{0, values[0]},
                            {1, values[1]},
                            {2, values[2]},
                            {3, values[3]},
                            {4, values[4]},
                            {5, values[5]},
                            {6, values[6]}});
  Write(folder, "focus", 2, {&zero, &two, &six, &chart});
}

void Moments(const std::string& folder) {
  constexpr KyBW8 kThreshold = 110;
  constexpr int kWindows[3][4] = {{10, 10, 76, 74}, {92, 8, 104, 80}, {30, 92, 124, 56}};
  Grey source = Parts();
  Color marked = InColor(source);
  for (const auto& place : kWindows) {
    const int x = place[0], y = place[1], width = place[2], height = place[3];
    const KyROI<KyBW8> window(&source, x, y, width, height);
    float centerX, centerY, major, minor, angle;
    Must(ImgGravityCenter(&window, kThreshold, centerX, centerY));
    Must(ImgInertia(&window, kThreshold, major, minor, angle));
    draw::Frame(marked, {x, y, width, height}, {64, 96, 255});
    const auto axis = [&](float moment, float radians, KyC24 color) {
      const float dx = 2 * std::sqrt(moment) * std::cos(radians),
                  dy = 2 * std::sqrt(moment) * std::sin(radians);
      const auto at = [&](float sign) {
        return draw::Point{static_cast<int>(std::lround(float(x) + centerX + sign * dx)),
                           static_cast<int>(std::lround(float(y) + centerY + sign * dy))};
      };
      draw::Line(marked, at(-1), at(1), color);
    };
    const float direction = KyToRadians(angle);
    axis(major, direction, {255, 48, 48});
    axis(minor, direction + 1.5707964f, {255, 200, 0});
  }
  Color large = NewImage<KyC24>(2 * kWidth, 2 * kHeight);
  for (int y = 0; y < 2 * kHeight; ++y)
    for (int x = 0; x < 2 * kWidth; ++x) large.SetPixel(marked.GetPixel(x / 2, y / 2), x, y);
  Write(folder, "moments", 1, {&large});
}

}  // namespace docs
