// Halves, means of areas, bilinear resizing, pyramids.
#include <memory>

#include "benchmarks/bench.h"
#include "ky/pyramid.h"
#include "ky/sizes.h"

namespace ky::bench {
namespace {

KyImage<KyBW8>& In(Pictures& p, KyBW8) { return p.a; }
KyImage<KyC24>& In(Pictures& p, KyC24) { return p.colorA; }
KyImage<KyBW8>& Out(Pictures& p, KyBW8) { return p.out; }
KyImage<KyC24>& Out(Pictures& p, KyC24) { return p.colorOut; }

// To part / whole of the picture's sides.
struct Ratio {
  int part, whole;
};
template <class T>
Contender Ours(Ratio r, KY_ERRORS (*scale)(const KyROI<T>*, KyROI<T>*) noexcept) {
  return [=](Pictures& p) {
    const int width = p.a.GetWidth() * r.part / r.whole;
    const int height = p.a.GetHeight() * r.part / r.whole;
    KyROI<T> out(&Out(p, T()), 0, 0, width, height);
    scale(&In(p, T()), &out);
  };
}
#if KY_BENCH_OPENCV
Contender Theirs(Ratio r, int method, bool color) {
  return [=](Pictures& p) {
    const cv::Mat& in = color ? p.views.colorA : p.views.a;
    cv::Mat& out = p.views.work[0];
    cv::resize(in, out, {in.cols * r.part / r.whole, in.rows * r.part / r.whole}, 0, 0, method);
  };
}
constexpr int kArea = cv::INTER_AREA, kLinear = cv::INTER_LINEAR;
#else
Contender Theirs(Ratio, int, bool) { return nullptr; }
constexpr int kArea = 0, kLinear = 1;
#endif

template <class T>
std::vector<Operation> Sizes(const std::string& type) {
  constexpr bool kColor = sizeof(T) == 3;
  constexpr Pixel kPixel = kColor ? Pixel::kColor : Pixel::kGrey;
  constexpr Ratio kHalf = {1, 2}, kThird = {1, 3}, kThreeQuarters = {3, 4}, kFine = {611, 977};
  return {
      {type + "halve", Ours<T>(kHalf, &ImgHalve), Theirs(kHalf, kArea, kColor), Limit::kNone,
       kPixel},
      {type + "shrink to a third", Ours<T>(kThird, &ImgShrink), Theirs(kThird, kArea, kColor),
       Limit::kNone, kPixel},
      {type + "shrink to three quarters", Ours<T>(kThreeQuarters, &ImgShrink),
       Theirs(kThreeQuarters, kArea, kColor), Limit::kNone, kPixel},
      {type + "shrink to 611 / 977", Ours<T>(kFine, &ImgShrink), Theirs(kFine, kArea, kColor),
       Limit::kNone, kPixel},
      {type + "resize to three quarters", Ours<T>(kThreeQuarters, &ImgResize),
       Theirs(kThreeQuarters, kLinear, kColor), Limit::kNone, kPixel},
      {type + "resize to a third", Ours<T>(kThird, &ImgResize), Theirs(kThird, kLinear, kColor),
       Limit::kNone, kPixel},
  };
}

const bool grey = Register(Sizes<KyBW8>(""));
const bool color = Register(Sizes<KyC24>("C24 "));
const bool pyramids = Register({{"pyramid of 5 levels", [](Pictures& p) {
                                   auto pyramid = std::make_shared<KyPyramid>();
                                   pyramid->SetNumLevels(5);
                                   return [&p, pyramid] { pyramid->Build(&p.a); };
                                 }}});

}  // namespace
}  // namespace ky::bench
