#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

// Images with a given pitch start a page, as those of cameras do.
constexpr std::size_t kPage = 4096;

// Waves under noise, strong enough that both ends of the range are reached.
template <class Sample, class T>
void FillWithTexture(KyImage<T>& image, std::uint64_t seed) {
  constexpr double kHighest = static_cast<Sample>(~Sample{0});
  const int samples = image.GetWidth() * static_cast<int>(sizeof(T) / sizeof(Sample));
  std::vector<double> wave(static_cast<std::size_t>(samples));
  for (std::size_t x = 0; x < wave.size(); ++x)
    wave[x] = std::sin(static_cast<double>(x + seed) / 23);
  for (int y = 0; y < image.GetHeight(); ++y) {
    auto* const row = static_cast<Sample*>(image.GetPixelPtr(0, y));
    const double slope = std::cos(y / 17.0);
    for (std::size_t x = 0; x < wave.size(); ++x) {
      seed = seed * 6364136223846793005u + 1442695040888963407u;
      const double noise = static_cast<double>(seed >> 40) / (1 << 24) - 0.5;
      const double level = 0.5 + 0.4 * wave[x] * slope + 0.6 * noise;
      row[x] = static_cast<Sample>(kHighest * std::clamp(level, 0.0, 1.0));
    }
  }
}

#if KY_BENCH_OPENCV
template <class T>
cv::Mat View(const KyImage<T>& image, int type) {
  return cv::Mat(image.GetHeight(), image.GetWidth(), type, image.GetPixelPtr(0, 0),
                 static_cast<std::size_t>(image.GetPitch()));
}
#endif

}  // namespace

Pictures::Pictures(int width, int height, int pitch)
    : a(width, height),
      b(width, height),
      out(width, height),
      colorA(width, height),
      colorB(width, height),
      colorOut(width, height),
      deepA(width, height),
      deepB(width, height),
      deepOut(width, height) {
  const auto spread = [&]<class T>(KyImage<T>& image) {
    if (pitch == 0) return;
    const std::size_t rowBytes = static_cast<std::size_t>(pitch) * sizeof(T);
    const std::size_t bytes = rowBytes * static_cast<std::size_t>(height);
    memory.push_back(std::make_unique<KyBW8[]>(bytes + kPage));
    void* first = memory.back().get();
    std::size_t space = bytes + kPage;
    std::align(kPage, bytes, first, space);
    image.Attach(static_cast<T*>(first), width, height, static_cast<int>(rowBytes));
  };
  spread(a), spread(b), spread(out);
  spread(colorA), spread(colorB), spread(colorOut);
  spread(deepA), spread(deepB), spread(deepOut);
  FillWithTexture<KyBW8>(a, 1);
  FillWithTexture<KyBW8>(b, 2);
  FillWithTexture<KyBW8>(colorA, 3);
  FillWithTexture<KyBW8>(colorB, 4);
  FillWithTexture<KyBW16>(deepA, 5);
  FillWithTexture<KyBW16>(deepB, 6);
#if KY_BENCH_OPENCV
  views = {View(a, CV_8UC1),        View(b, CV_8UC1),
           View(out, CV_8UC1),      View(colorA, CV_8UC3),
           View(colorB, CV_8UC3),   View(colorOut, CV_8UC3),
           View(deepA, CV_16UC1),   View(deepB, CV_16UC1),
           View(deepOut, CV_16UC1), {}};
#endif
}

}  // namespace ky::bench
