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

const bool filters = Register(Filters());

}  // namespace
}  // namespace ky::bench
