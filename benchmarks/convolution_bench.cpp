#include <algorithm>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <tuple>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

template <class Pixel>
using Filter = KY_ERRORS (*)(const KyROI<Pixel>*, KyROI<Pixel>*) noexcept;

#if KY_BENCH_OPENCV
using OnMatrices = void (*)(const cv::Mat& in, cv::Mat& out, cv::Mat& work);
void Gradient(const cv::Mat& in, cv::Mat& out, cv::Mat& work, int x, int y) {
  cv::Sobel(in, work, CV_16S, x, y, 3, 1, 0, cv::BORDER_REPLICATE);
  cv::convertScaleAbs(work, out);
}
// The modulus is measured against the gradient along x alone.
void GradientX(const cv::Mat& in, cv::Mat& out, cv::Mat& work) { Gradient(in, out, work, 1, 0); }
void GradientY(const cv::Mat& in, cv::Mat& out, cv::Mat& work) { Gradient(in, out, work, 0, 1); }
template <int kSize>
void Blur(const cv::Mat& in, cv::Mat& out, cv::Mat&) {
  cv::blur(in, out, {kSize, kSize}, {-1, -1}, cv::BORDER_REPLICATE);
}
template <int kSize>
void Gaussian(const cv::Mat& in, cv::Mat& out, cv::Mat&) {
  cv::GaussianBlur(in, out, {kSize, kSize}, 0, 0, cv::BORDER_REPLICATE);
}
void Laplacian(const cv::Mat& in, cv::Mat& out, cv::Mat&) {
  cv::Laplacian(in, out, CV_8U, 3, 1, 0, cv::BORDER_REPLICATE);
}
Contender Nearest(OnMatrices f) {
  return [f](Pictures& p) { f(p.views.a, p.views.out, p.views.work[0]); };
}
Contender NearestOfColors(OnMatrices f) {
  return [f](Pictures& p) { f(p.views.colorA, p.views.colorOut, p.views.work[1]); };
}
#else
enum OnMatrices { GradientX, GradientY, Laplacian };
template <int kSize>
constexpr OnMatrices Blur = GradientX,
                     Gaussian = GradientX;
Contender Nearest(OnMatrices) { return nullptr; }
Contender NearestOfColors(OnMatrices) { return nullptr; }
#endif

std::vector<Operation> Filters() {
  const struct {
    const char* name;
    Filter<KyBW8> filter;
    Filter<KyC24> color;
    OnMatrices opencv;
  } kFilters[] = {
      {"uniform 3x3", ImgConvolUniform3x3, ImgConvolUniform3x3, Blur<3>},
      {"uniform 3x3, by 932067", ImgConvolUniform3x3Plain, ImgConvolUniform3x3Plain, Blur<3>},
      {"uniform 5x5", ImgConvolUniform5x5, ImgConvolUniform5x5, Blur<5>},
      {"uniform 7x7", ImgConvolUniform7x7, ImgConvolUniform7x7, Blur<7>},
      {"binomial 3x3", ImgConvolGaussian3x3, ImgConvolGaussian3x3, Gaussian<3>},
      {"binomial 5x5", ImgConvolGaussian5x5, ImgConvolGaussian5x5, Gaussian<5>},
      {"binomial 7x7", ImgConvolGaussian7x7, ImgConvolGaussian7x7, Gaussian<7>},
      {"ring 3x3", ImgConvolLowpass2, ImgConvolLowpass2, GradientX},
      {"sharpen by 4", ImgConvolHighpass1, ImgConvolHighpass1, GradientX},
      {"sharpen by 8", ImgConvolHighpass2, ImgConvolHighpass2, GradientX},
      {"Sobel x", ImgConvolSobelX, ImgConvolSobelX, GradientX},
      {"Sobel y", ImgConvolSobelY, ImgConvolSobelY, GradientY},
      {"Sobel modulus", ImgConvolSobel, ImgConvolSobel, GradientX},
      {"Prewitt x", ImgConvolPrewittX, ImgConvolPrewittX, GradientX},
      {"Prewitt y", ImgConvolPrewittY, ImgConvolPrewittY, GradientY},
      {"Prewitt modulus", ImgConvolPrewitt, ImgConvolPrewitt, GradientX},
      {"difference x", ImgConvolGradientX, ImgConvolGradientX, GradientX},
      {"differences", ImgConvolGradient, ImgConvolGradient, GradientX},
      {"Roberts", ImgConvolRoberts, ImgConvolRoberts, GradientX},
      {"Laplacian 4", ImgConvolLaplacian4, ImgConvolLaplacian4, Laplacian},
      {"Laplacian 8", ImgConvolLaplacian8, ImgConvolLaplacian8, Laplacian},
      {"Laplacian x", ImgConvolLaplacianX, ImgConvolLaplacianX, Laplacian},
  };
  std::vector<Operation> table;
  for (const auto& f : kFilters) {
    table.push_back({f.name, [call = f.filter](Pictures& p) { call(&p.a, &p.out); },
                     Nearest(f.opencv), Limit::kCopy});
    table.push_back({std::string("C24 ") + f.name,
                     [call = f.color](Pictures& p) { call(&p.colorA, &p.colorOut); },
                     NearestOfColors(f.opencv), Limit::kCopy, Pixel::kColor});
  }
  for (const auto& f : kFilters) {
    if (f.filter != Filter<KyBW8>{ImgConvolUniform3x3} && f.filter != Filter<KyBW8>{ImgConvolSobel})
      continue;
    table.push_back({std::string(f.name) + ", in place",
                     [call = f.filter](Pictures& p) {
                       ImgCopy(&p.a, &p.out);
                       return [call, &p] { call(&p.out, nullptr); };
                     },
                     Nearest(f.opencv), Limit::kCopy});
  }
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

std::shared_ptr<KyKernel> MakeKernel(int size, bool symmetric, std::int16_t rectifier, float gain) {
  const auto kernel = std::make_shared<KyKernel>();
  const std::int16_t columns = static_cast<std::int16_t>(size);
  kernel->SetSizeX(columns);
  kernel->SetSizeY(columns);
  const std::vector<float> all = Coefficients(size, symmetric);
  std::copy(all.begin(), all.end(), kernel->GetDataPtr());
  kernel->SetRectifier(rectifier);
  kernel->SetGain(gain);
  return kernel;
}

Contender Ours(Convolve convolve, int size, bool symmetric, std::int16_t rectifier, float gain,
               bool inPlace) {
  return [=](Pictures& p) {
    const auto kernel = MakeKernel(size, symmetric, rectifier, gain);
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
  // Coefficients whose sums are not rounded.
  const auto binomial = [](Pictures& p) {
    const auto kernel = std::make_shared<KyKernel>(KERNEL_BINOMIAL_3X3);
    kernel->SetRectifier(0);
    return [=, &p] { ImgConvolKernel(&p.a, &p.out, kernel.get()); };
  };
  table.push_back({"kernel 3x3, float, binomial", binomial, Filter2D(3, true), Limit::kCopy});
  return table;
}

// Kernels on colours.
std::vector<Operation> ColorKernels() {
  std::vector<Operation> table;
  for (const auto& [name, size, symmetric, rectifier] :
       {std::tuple{"C24 kernel 3x3, positive", 3, false, std::int16_t{2}},
        {"C24 kernel 5x5", 5, false, std::int16_t{3}},
        {"C24 kernel 5x5, symmetric", 5, true, std::int16_t{3}},
        {"C24 kernel 5x5, float", 5, false, std::int16_t{0}}}) {
    const auto ours = [=, size = size, symmetric = symmetric, rectifier = rectifier](Pictures& p) {
      const auto kernel = MakeKernel(size, symmetric, rectifier, 1);
      return [=, &p] { ImgConvolKernel(&p.colorA, &p.colorOut, kernel.get()); };
    };
    table.push_back({name, ours, nullptr, Limit::kCopy, Pixel::kColor});
  }
  return table;
}

const bool colorKernels = Register(ColorKernels());
const bool filters = Register(Filters());
const bool kernels = Register(Kernels());

}  // namespace
}  // namespace ky::bench
