// Contours. The scenes are combs whose teeth are a pixel wide and a pixel apart: the one contour
// passes every pixel of a tooth twice and so has about as many points as the picture has pixels.
// OpenCV searches the picture for contours before it follows them.
#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

enum class Teeth { kDown, kRight };

void DrawComb(KyImage<KyBW8>& image, Teeth teeth) {
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) {
      const int along = teeth == Teeth::kDown ? x : y, back = teeth == Teeth::kDown ? y : x;
      image.SetPixel(along % 2 == 0 || back == 0 ? 200 : 0, x, y);
    }
  }
}

Contender Ours(Teeth teeth, CONNEXITY connexity) {
  return [=](Pictures& p) {
    DrawComb(p.a, teeth);
    return [&p, connexity] {
      static KyPathVector path;
      ImgContour(&p.a, KY_CONTOUR_CW_ALONG_BORDER, 0, 0, KY_CONTOUR_ABOVE_THRESHOLD, 128, connexity,
                 &path);
    };
  };
}
#if KY_BENCH_OPENCV
Contender Theirs(Teeth teeth) {
  return [=](Pictures& p) {
    DrawComb(p.a, teeth);
    return [&p] {
      static std::vector<std::vector<cv::Point>> contours;
      cv::findContours(p.views.a, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
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
