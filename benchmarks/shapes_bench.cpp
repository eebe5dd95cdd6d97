// Elements of any shape, boxes of colours, and thinning.
#include <algorithm>
#include <cmath>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

// Members of a grid of `size` x `size`.
bool InCross(int i, int j, int size) { return i == size / 2 || j == size / 2; }
bool InEllipse(int i, int j, int size) {
  const double radius = size / 2, down = j - radius;
  return std::abs(i - radius) <= std::round(std::sqrt(radius * radius - down * down));
}
bool InRing(int i, int j, int size) {
  const int inner = size / 2;
  const int from = size / 4;
  return InEllipse(i, j, size) && (i < from || j < from || i >= from + inner || j >= from + inner ||
                                   !InEllipse(i - from, j - from, inner | 1));
}
using Members = bool (*)(int i, int j, int size);

std::shared_ptr<KyKernel> KernelOf(Members has, int size) {
  auto kernel = std::make_shared<KyKernel>();
  kernel->SetSizeX(static_cast<std::int16_t>(size));
  kernel->SetSizeY(static_cast<std::int16_t>(size));
  for (int j = 0; j < size; ++j)
    for (int i = 0; i < size; ++i) kernel->SetKernelData(i, j, has(i, j, size) ? 1.0F : 0.0F);
  return kernel;
}

Operation ByShape(const std::string& name, Members has, int size) {
  Contender nearest = nullptr;
#if KY_BENCH_OPENCV
  nearest = [=](Pictures& p) {
    cv::Mat element(size, size, CV_8U);
    for (int j = 0; j < size; ++j)
      for (int i = 0; i < size; ++i) element.at<unsigned char>(j, i) = has(i, j, size);
    return [=, &p] { cv::dilate(p.views.a, p.views.out, element); };
  };
#endif
  const auto ours = [=](Pictures& p) {
    return [=, &p, kernel = KernelOf(has, size)] { ImgDilate(&p.a, &p.out, kernel.get()); };
  };
  return {"dilate " + name + " " + std::to_string(size), ours, nearest, Limit::kCopy};
}

using ColorBox = KY_ERRORS (*)(const KyROI<KyC24>*, KyROI<KyC24>*, unsigned, unsigned) noexcept;

// Compared with OpenCV's operation number `opencv`.
Operation ByColorBox(const std::string& name, ColorBox box, [[maybe_unused]] int opencv,
                     unsigned half) {
  Contender nearest = nullptr;
#if KY_BENCH_OPENCV
  nearest = [=](Pictures& p) {
    const int size = 2 * static_cast<int>(half) + 1;
    const cv::Mat element = cv::getStructuringElement(cv::MORPH_RECT, {size, size});
    return [=, &p] { cv::morphologyEx(p.views.colorA, p.views.colorOut, opencv, element); };
  };
#endif
  return {name + " box " + std::to_string(half) + ", colour",
          [=](Pictures& p) { box(&p.colorA, &p.colorOut, half, half); }, nearest, Limit::kCopy,
          Pixel::kColor};
}

// Strokes as of handwriting, about 9 pixels wide, in lines some 60 pixels apart.
void WritePage(KyImage<KyBW8>& page) {
  const int width = page.GetWidth(), height = page.GetHeight();
  const auto row = [&](int y) { return static_cast<KyBW8*>(page.GetPixelPtr(0, y)); };
  for (int y = 0; y < height; ++y) std::fill_n(row(y), width, KyBW8{0});
  const auto dot = [&](double x, double y) {
    constexpr double kRadius = 4.5;
    for (int j = static_cast<int>(y - kRadius); j <= y + kRadius; ++j)
      for (int i = static_cast<int>(x - kRadius); i <= x + kRadius; ++i)
        if (i >= 0 && i < width && j >= 0 && j < height &&
            (i - x) * (i - x) + (j - y) * (j - y) <= kRadius * kRadius)
          row(j)[i] = 255;
  };
  for (int line = 40; line < height; line += 60)
    for (double t = 0; t < width - 40; t += 0.5)
      if (std::fmod(t, 170) < 140)
        dot(20 + t + 9 * std::sin(t / 7), line + 18 * std::sin(t / 11) * std::cos(t / 31));
}

Operation OnPage(const char* name, KY_ERRORS (*call)(const KyROI<KyBW8>*, KyROI<KyBW8>*)) {
  return {name,
          [=](Pictures& p) {
            const auto page = std::make_shared<KyImage<KyBW8>>(p.out.GetWidth(), p.out.GetHeight());
            WritePage(*page);
            return [=, &p] { call(page.get(), &p.out); };
          },
          nullptr, Limit::kCopy};
}

const bool kRegistered = Register({
    ByShape("cross", InCross, 3),
    ByShape("cross", InCross, 15),
    ByShape("ellipse", InEllipse, 5),
    ByShape("ellipse", InEllipse, 15),
    ByShape("ellipse", InEllipse, 51),
    ByShape("ring", InRing, 15),
    ByColorBox("dilate", ImgDilateBox, 1, 1),
    ByColorBox("dilate", ImgDilateBox, 1, 3),
    ByColorBox("dilate", ImgDilateBox, 1, 7),
    ByColorBox("dilate", ImgDilateBox, 1, 50),
    ByColorBox("erode", ImgErodeBox, 0, 7),
    ByColorBox("open", ImgOpenBox, 2, 1),
    ByColorBox("open", ImgOpenBox, 2, 7),
    ByColorBox("open", ImgOpenBox, 2, 50),
    ByColorBox("close", ImgCloseBox, 3, 3),
    ByColorBox("gradient", ImgMorphoGradient, 4, 3),
    ByColorBox("white top-hat", ImgWhiteTopHat, 5, 3),
    ByColorBox("black top-hat", ImgBlackTopHat, 6, 3),
    OnPage("skeleton",
           [](const KyROI<KyBW8>* in, KyROI<KyBW8>* out) { return ImgSkeleton(in, out); }),
    {"skeleton of noise", [](Pictures& p) { ImgSkeleton(&p.a, &p.out); }, nullptr, Limit::kCopy},
    OnPage("thin, one iteration",
           [](const KyROI<KyBW8>* in, KyROI<KyBW8>* out) {
             const KyKernel pattern(KERNEL_PATTERN_1);
             return ImgThin(in, out, &pattern, KERNEL_ROTATION_CLOCKWISE, 1);
           }),
});

}  // namespace
}  // namespace ky::bench
