// Contours. The scenes are combs whose teeth are a pixel wide and a pixel apart: the one contour
// passes every pixel of a tooth twice and so has about as many points as the picture has pixels.
// OpenCV searches the picture for contours before it follows them.
#include <memory>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

enum class Teeth { kDown, kRight };

std::shared_ptr<KyImage<KyBW8>> Comb(const Pictures& p, Teeth teeth) {
  auto image = std::make_shared<KyImage<KyBW8>>(p.a.GetWidth(), p.a.GetHeight());
  for (int y = 0; y < image->GetHeight(); ++y) {
    for (int x = 0; x < image->GetWidth(); ++x) {
      const int along = teeth == Teeth::kDown ? x : y, back = teeth == Teeth::kDown ? y : x;
      image->SetPixel(along % 2 == 0 || back == 0 ? 200 : 0, x, y);
    }
  }
  return image;
}

Contender Ours(Teeth teeth, CONNEXITY connexity) {
  return [=](Pictures& p) {
    return [comb = Comb(p, teeth), connexity] {
      static KyPathVector path;
      ImgContour(comb.get(), KY_CONTOUR_CW_ALONG_BORDER, 0, 0, KY_CONTOUR_ABOVE_THRESHOLD, 128,
                 connexity, &path);
    };
  };
}
#if KY_BENCH_OPENCV
Contender Theirs(Teeth teeth) {
  return [=](Pictures& p) {
    return [comb = Comb(p, teeth)] {
      static std::vector<std::vector<cv::Point>> contours;
      const cv::Mat view(comb->GetHeight(), comb->GetWidth(), CV_8U, comb->GetPixelPtr(0, 0),
                         static_cast<std::size_t>(comb->GetPitch()));
      cv::findContours(view, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    };
  };
}
#else
Contender Theirs(Teeth) { return nullptr; }
#endif

const bool registered = Register({
    {"contour, comb with teeth to the right", Ours(Teeth::kRight, KY_CONNEXITY_8),
     Theirs(Teeth::kRight)},
    {"contour, comb with teeth downwards", Ours(Teeth::kDown, KY_CONNEXITY_8),
     Theirs(Teeth::kDown)},
    {"contour, comb downwards, 4-connected", Ours(Teeth::kDown, KY_CONNEXITY_4)},
});

}  // namespace
}  // namespace ky::bench
