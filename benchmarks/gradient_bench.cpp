// Gradients as pairs, and as their length through a lookup image.
#include <memory>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

Contender Pairs() {
  return [](Pictures& p) {
    const auto out = std::make_shared<KyImage<KyBW32>>(p.a.GetWidth(), p.a.GetHeight());
    return [&p, out] { ImgGradientVector(&p.a, out.get()); };
  };
}

Contender Lengths(bool stored) {
  return [stored](Pictures& p) {
    const auto lookup = std::make_shared<KyImage<KyBW8>>();
    ImgModulusImage(lookup.get(), 0.7f);
    const auto pairs = std::make_shared<KyImage<KyBW32>>(p.a.GetWidth(), p.a.GetHeight());
    ImgGradientVector(&p.a, pairs.get());
    return [&p, stored, lookup, pairs] {
      stored ? ImgGradientScalar(pairs.get(), &p.out, lookup.get())
             : ImgGradientScalar(&p.a, &p.out, lookup.get());
    };
  };
}

const bool gradients = Register({
    {"gradient pair", Pairs(),
     OPENCV(cv::spatialGradient(v.a, v.work[0], v.work[1], 3, cv::BORDER_REPLICATE))},
    {"gradient length", Lengths(false),
     OPENCV(cv::spatialGradient(v.a, v.work[0], v.work[1], 3, cv::BORDER_REPLICATE);
            v.work[0].convertTo(v.work[2], CV_32F); v.work[1].convertTo(v.work[3], CV_32F);
            cv::magnitude(v.work[2], v.work[3], v.work[2]); v.work[2].convertTo(v.out, CV_8U)),
     Limit::kCopy},
    {"gradient length of pairs", Lengths(true),
     OPENCV(cv::spatialGradient(v.a, v.work[0], v.work[1], 3, cv::BORDER_REPLICATE);
            v.work[0].convertTo(v.work[2], CV_32F); v.work[1].convertTo(v.work[3], CV_32F);
            cv::magnitude(v.work[2], v.work[3], v.work[2]); v.work[2].convertTo(v.out, CV_8U)),
     Limit::kCopy},
});

}  // namespace
}  // namespace ky::bench
