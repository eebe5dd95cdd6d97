// Filters over windows of any size.
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "families.h"
#include "sheet.h"

namespace docs {
namespace {

// Three grounds under uneven light: smooth, fine gravel and coarse gravel.
Grey Gravel() {
  std::mt19937 random(1);
  Grey gravel = Panel();
  const auto light = [](int x, int y) { return 150 - x / 4 - y / 5; };
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const int noise = static_cast<int>(random() % 120) - 60;
      const int level = light(x, y) + (x < kWidth / 3 ? noise / 30 : noise);
      gravel.SetPixel(static_cast<KyBW8>(std::clamp(level, 0, 255)), x, y);
    }
  for (int i = 0; i < 260; ++i) {
    const int left = kWidth * 2 / 3 + static_cast<int>(random() % (kWidth / 3));
    const int top = static_cast<int>(random() % kHeight);
    const int level = light(left, top) + static_cast<int>(random() % 160) - 80;
    KyROI<KyBW8> stone(&gravel, left, top, std::min(7, kWidth - left), std::min(6, kHeight - top));
    Must(ImgCopy(static_cast<KyBW8>(std::clamp(level, 0, 255)), &stone));
  }
  return gravel;
}

void Brighten(Grey& picture, int factor) {
  KyBW8Vector table(256);
  for (int level = 0; level < 256; ++level)
    table[static_cast<unsigned>(level)] = static_cast<KyBW8>(std::min(factor * level, 255));
  Must(ImgLut(&picture, &picture, &table));
}

// Ink that is darker than its paper, not darker than all of it.
Grey Print() {
  Grey print = Panel();
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const int light = 230 - 3 * x / 4 - y / 3, ink = (x / 6 + y / 10) % 3 == 0 ? light / 3 : 0;
      print.SetPixel(static_cast<KyBW8>(std::clamp(light - ink, 0, 255)), x, y);
    }
  return print;
}

// Gaussian weights, exact and in fixed point; and what the latter lose at most, of any image,
// before the result is rounded.
struct Weights {
  std::vector<double> exact, fixed;
};
Weights WeightsOf(int half) {
  const double sigma = 0.3 * (half - 1) + 0.8;
  Weights w;
  double sum = 0;
  for (int i = -half; i <= half; ++i) w.exact.push_back(std::exp(-i * i / (2 * sigma * sigma)));
  for (const double bell : w.exact) sum += bell;
  for (double& bell : w.exact) bell /= sum;
  w.fixed.assign(w.exact.size(), 0);
  double tail = 0, rounded = 0, all = 0;
  for (int i = 0; i < half; ++i) {
    tail += w.exact[static_cast<std::size_t>(i)];
    const double next = std::floor(32768 * tail + 0.5);
    w.fixed[static_cast<std::size_t>(i)] = w.fixed[static_cast<std::size_t>(2 * half - i)] =
        (next - rounded) / 32768;
    all += 2 * (next - rounded) / 32768;
    rounded = next;
  }
  w.fixed[static_cast<std::size_t>(half)] = 1 - all;
  return w;
}
double LossOf(int half) {
  const Weights w = WeightsOf(half);
  double more = 0;
  for (std::size_t i = 0; i < w.exact.size(); ++i) more += std::max(w.fixed[i] - w.exact[i], 0.0);
  return 2 * 255 * more + 1.0 / 256;
}

}  // namespace

void Windows(const std::string& folder) {
  const Grey gravel = Gravel(), print = Print();
  Grey average = Panel(), smooth = Panel(), deviation = Panel(), ink = Panel();
  Must(ImgLocalAverage(&gravel, &average, 10));
  Must(ImgConvolGaussian(&gravel, &smooth, 5));
  Must(ImgLocalDeviation(&gravel, &deviation, 6));
  Brighten(deviation, 5);
  Must(ImgLocalThreshold(&print, &ink, 15, KY_HALF_HEIGHT_AS_WIDTH, -8));
  Write(folder, "windows", 3, {&gravel, &average, &smooth, &deviation, &print, &ink});

  const Weights w = WeightsOf(15);
  KyBW32Vector weights(31), losses(50);
  for (unsigned i = 0; i < 31; ++i) weights[i] = static_cast<KyBW32>(32768 * w.fixed[i]);
  for (unsigned half = 1; half <= 50; ++half)
    losses[half - 1] = static_cast<KyBW32>(100000 * LossOf(static_cast<int>(half)));
  const Grey weightChart = Chart(weights), lossChart = Chart(losses);
  Write(folder, "gaussian", 2, {&weightChart, &lossChart});
}

}  // namespace docs
