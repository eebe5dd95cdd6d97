// Windows of any size, against OpenCV's box filter, Gaussian, adaptive threshold and, for
// deviations, its usual way: means of levels and squares, subtracted, and the root.
#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

#if KY_BENCH_OPENCV
cv::Size WindowOf(unsigned half) {
  const int side = 2 * static_cast<int>(half) + 1;
  return {side, side};
}
using OnWindow = void (*)(Views& v, unsigned half);
void Blur(Views& v, unsigned half) {
  cv::blur(v.a, v.out, WindowOf(half), {-1, -1}, cv::BORDER_REPLICATE);
}
void ColorBlur(Views& v, unsigned half) {
  cv::blur(v.colorA, v.colorOut, WindowOf(half), {-1, -1}, cv::BORDER_REPLICATE);
}
void Gaussian(Views& v, unsigned half) {
  cv::GaussianBlur(v.a, v.out, WindowOf(half), 0, 0, cv::BORDER_REPLICATE);
}
void ColorGaussian(Views& v, unsigned half) {
  cv::GaussianBlur(v.colorA, v.colorOut, WindowOf(half), 0, 0, cv::BORDER_REPLICATE);
}
void Deviation(Views& v, unsigned half) {
  cv::Mat &mean = v.work[0], &squares = v.work[1];
  cv::boxFilter(v.a, mean, CV_32F, WindowOf(half));
  cv::sqrBoxFilter(v.a, squares, CV_32F, WindowOf(half));
  cv::multiply(mean, mean, mean);
  cv::subtract(squares, mean, squares);
  cv::max(squares, 0, squares);
  cv::sqrt(squares, squares);
  squares.convertTo(v.out, CV_8U);
}
void Threshold(Views& v, unsigned half) {
  cv::adaptiveThreshold(v.a, v.out, 255, cv::ADAPTIVE_THRESH_MEAN_C, cv::THRESH_BINARY,
                        WindowOf(half).width, 0);
}
Contender Nearest(OnWindow f, unsigned half) {
  return [=](Pictures& p) { f(p.views, half); };
}
#else
enum OnWindow { Blur, ColorBlur, Gaussian, ColorGaussian, Deviation, Threshold };
Contender Nearest(OnWindow, unsigned) { return nullptr; }
#endif

std::vector<Operation> Table() {
  std::vector<Operation> table;
  const auto add = [&](const std::string& name, unsigned half, Contender ours, OnWindow opencv,
                       Pixel pixel = Pixel::kGrey) {
    table.push_back({name + ", half " + std::to_string(half), ours, Nearest(opencv, half),
                     Limit::kCopy, pixel});
  };
  for (const unsigned half : {2u, 10u, 50u, 200u})
    add(
        "uniform", half, [=](Pictures& p) { ImgConvolUniform(&p.a, &p.out, half); }, Blur);
  add(
      "uniform in place", 10, [](Pictures& p) { ImgConvolUniform(&p.out, nullptr, 10); }, Blur);
  add(
      "colour uniform", 10, [](Pictures& p) { ImgConvolUniform(&p.colorA, &p.colorOut, 10); },
      ColorBlur, Pixel::kColor);
  for (const unsigned half : {1u, 5u, 15u})
    add(
        "Gaussian", half, [=](Pictures& p) { ImgConvolGaussian(&p.a, &p.out, half); }, Gaussian);
  add(
      "colour Gaussian", 5, [](Pictures& p) { ImgConvolGaussian(&p.colorA, &p.colorOut, 5); },
      ColorGaussian, Pixel::kColor);
  for (const unsigned half : {10u, 50u})
    add(
        "local average", half, [=](Pictures& p) { ImgLocalAverage(&p.a, &p.out, half); }, Blur);
  for (const unsigned half : {10u, 50u, 150u})
    add(
        "local deviation", half, [=](Pictures& p) { ImgLocalDeviation(&p.a, &p.out, half); },
        Deviation);
  add(
      "local threshold", 15, [](Pictures& p) { ImgLocalThreshold(&p.a, &p.out, 15); }, Threshold);
  return table;
}

const bool kRegistered = Register(Table());

}  // namespace
}  // namespace ky::bench
