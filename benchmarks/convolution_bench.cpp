#include <algorithm>
#include <cstdlib>
#include <memory>
#include <numeric>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

using Filter = KY_ERRORS (*)(const KyROI<KyBW8>*, KyROI<KyBW8>*) noexcept;

#if KY_BENCH_OPENCV
using OnMatrices = void (*)(Views& v);
void SobelAlong(Views& v, int x, int y, cv::Mat& gradient) {
  cv::Sobel(v.a, gradient, CV_16S, x, y, 3, 1, 0, cv::BORDER_REPLICATE);
}
void Gradient(Views& v, int x, int y) {
  SobelAlong(v, x, y, v.work[0]);
  cv::convertScaleAbs(v.work[0], v.out);
}
// The modulus is measured against the gradient along x alone.
void GradientX(Views& v) { Gradient(v, 1, 0); }
void GradientY(Views& v) { Gradient(v, 0, 1); }
void Blur(Views& v) { cv::blur(v.a, v.out, {3, 3}, {-1, -1}, cv::BORDER_REPLICATE); }
void Gaussian(Views& v) { cv::GaussianBlur(v.a, v.out, {3, 3}, 0, 0, cv::BORDER_REPLICATE); }
void Laplacian(Views& v) { cv::Laplacian(v.a, v.out, CV_8U, 3, 1, 0, cv::BORDER_REPLICATE); }
Contender Nearest(OnMatrices f) {
  return [f](Pictures& p) { f(p.views); };
}
#else
enum OnMatrices { GradientX, GradientY, Blur, Gaussian, Laplacian };
Contender Nearest(OnMatrices) { return nullptr; }
#endif

std::vector<Operation> Filters() {
  const struct {
    const char* name;
    Filter filter;
    OnMatrices opencv;
  } kFilters[] = {
      {"uniform 3x3", ImgConvolUniform3x3, Blur},
      {"uniform 3x3, by 932067", ImgConvolUniform3x3Plain, Blur},
      {"binomial 3x3", ImgConvolGaussian3x3, Gaussian},
      {"ring 3x3", ImgConvolLowpass2, GradientX},
      {"sharpen by 4", ImgConvolHighpass1, GradientX},
      {"sharpen by 8", ImgConvolHighpass2, GradientX},
      {"Sobel x", ImgConvolSobelX, GradientX},
      {"Sobel y", ImgConvolSobelY, GradientY},
      {"Sobel modulus", ImgConvolSobel, GradientX},
      {"Prewitt x", ImgConvolPrewittX, GradientX},
      {"Prewitt y", ImgConvolPrewittY, GradientY},
      {"Prewitt modulus", ImgConvolPrewitt, GradientX},
      {"Laplacian 4", ImgConvolLaplacian4, Laplacian},
      {"Laplacian 8", ImgConvolLaplacian8, Laplacian},
  };
  std::vector<Operation> table;
  for (const auto& f : kFilters)
    table.push_back({f.name, [call = f.filter](Pictures& p) { call(&p.a, &p.out); },
                     Nearest(f.opencv), Limit::kCopy});
  for (const auto& f : {kFilters[0], kFilters[8]})
    table.push_back({std::string(f.name) + ", in place",
                     [call = f.filter](Pictures& p) {
                       ImgCopy(&p.a, &p.out);
                       return [call, &p] { call(&p.out, nullptr); };
                     },
                     Nearest(f.opencv), Limit::kCopy});
  return table;
}

// Smoothing coefficients, with or without symmetry.
std::vector<float> Coefficients(int size, bool symmetric) {
  std::vector<float> all;
  for (int y = 0; y < size; ++y)
    for (int x = 0; x < size; ++x) {
      const int right = std::abs(x - size / 2), down = std::abs(y - size / 2);
      const float fall = 1.0f / static_cast<float>(1 + right * right + down * down);
      all.push_back(symmetric ? fall : fall + 0.01f * static_cast<float>(x + 2 * y));
    }
  return all;
}

#if KY_BENCH_OPENCV
Contender Filter2D(int size, bool symmetric) {
  return [=](Pictures& p) {
    std::vector<float> all = Coefficients(size, symmetric);
    const float sum = std::accumulate(all.begin(), all.end(), 0.0f);
    for (float& c : all) c /= sum;
    const cv::Mat kernel = cv::Mat(all, true).reshape(1, size);
    return [kernel, &p] {
      cv::filter2D(p.views.a, p.views.out, -1, kernel, {-1, -1}, 0, cv::BORDER_REPLICATE);
    };
  };
}
#else
Contender Filter2D(int, bool) { return nullptr; }
#endif

using Convolve = KY_ERRORS (*)(const KyROI<KyBW8>*, KyROI<KyBW8>*, const KyKernel*) noexcept;

Contender Ours(Convolve convolve, int size, bool symmetric, std::int16_t rectifier, float gain,
               bool inPlace) {
  return [=](Pictures& p) {
    const auto kernel = std::make_shared<KyKernel>();
    const std::int16_t columns = static_cast<std::int16_t>(size);
    kernel->SetSizeX(columns);
    kernel->SetSizeY(columns);
    const std::vector<float> all = Coefficients(size, symmetric);
    std::copy(all.begin(), all.end(), kernel->GetDataPtr());
    kernel->SetRectifier(rectifier);
    kernel->SetGain(gain);
    if (inPlace) ImgCopy(&p.a, &p.out);
    return [=, &p] { convolve(inPlace ? &p.out : &p.a, &p.out, kernel.get()); };
  };
}

std::vector<Operation> Kernels() {
  std::vector<Operation> table;
  const auto add = [&](const std::string& name, Convolve convolve, int size, bool symmetric,
                       std::int16_t rectifier, float gain = 1, bool inPlace = false) {
    table.push_back({name, Ours(convolve, size, symmetric, rectifier, gain, inPlace),
                     Filter2D(size, symmetric), Limit::kCopy});
  };
  add("kernel 3x3, positive", ImgConvolKernel, 3, false, 2);
  add("kernel 3x3, positive, in place", ImgConvolKernel, 3, false, 2, 1, true);
  add("kernel 3x3, positive, gain 3", ImgConvolKernel, 3, false, 2, 3);
  for (const int size : {3, 5, 7}) {
    const std::string name = "kernel " + std::to_string(size) + "x" + std::to_string(size);
    add(name, ImgConvolKernel, size, false, 3);
    add(name + ", gain 50", ImgConvolKernel, size, false, 3, 50);
    add(name + ", in place", ImgConvolKernel, size, false, 3, 1, true);
    add(name + ", symmetric", ImgConvolSymmetricKernel, size, true, 3);
    add(name + ", float", ImgConvolKernel, size, false, 0);
  }
  return table;
}

const bool filters = Register(Filters());
const bool kernels = Register(Kernels());

}  // namespace
}  // namespace ky::bench
