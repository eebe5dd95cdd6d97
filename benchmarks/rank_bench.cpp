// Medians of several sizes, and distances.
#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

#define MEDIAN(half) OPENCV(cv::medianBlur(v.a, v.out, 2 * (half) + 1))

template <unsigned kHalf>
Operation Median() {
  return {"median " + std::to_string(2 * kHalf + 1),
          [](Pictures& p) { ImgMedian(&p.a, &p.out, kHalf); }, MEDIAN(kHalf), Limit::kCopy};
}

// Disks as bright objects, with noise of the given rarity in them.
void DrawDisks(Pictures& p, int oneIn) {
  for (int y = 0; y < p.b.GetHeight(); ++y)
    for (int x = 0; x < p.b.GetWidth(); ++x) {
      const int i = x % 200 - 100, j = y % 180 - 90;
      const bool hole = oneIn != 0 && (x * 7919 + y * 104729 + x * y * 31) % oneIn == 0;
      p.b.SetPixel(i * i + j * j < 80 * 80 && !hole ? 255 : 0, x, y);
    }
}

Operation Distance(const char* name, IMG_DISTANCE_MODES mode, [[maybe_unused]] int type,
                   int oneIn) {
  return {
    std::string("distance ") + name,
        [=](Pictures& p) {
          DrawDisks(p, oneIn);
          return [=, &p] { ImgDistance(&p.b, &p.deepOut, mode); };
        },
#if KY_BENCH_OPENCV
        [=](Pictures& p) {
          DrawDisks(p, oneIn);
          return [=, &p] {
            cv::distanceTransform(p.views.b, p.views.work[0], type,
                                  type == cv::DIST_L2 ? cv::DIST_MASK_PRECISE : cv::DIST_MASK_3);
          };
        },
#else
        nullptr,
#endif
        Limit::kNone, Pixel::kDeep
  };
}

const bool kRegistered = Register({
    Median<1>(),
    Median<2>(),
    Median<3>(),
    Median<7>(),
    Median<25>(),
    {"median 3, colour", [](Pictures& p) { ImgMedian(&p.colorA, &p.colorOut, 1u); },
     OPENCV(cv::medianBlur(v.colorA, v.colorOut, 3)), Limit::kCopy, Pixel::kColor},
    {"median 15, colour", [](Pictures& p) { ImgMedian(&p.colorA, &p.colorOut, 7u); },
     OPENCV(cv::medianBlur(v.colorA, v.colorOut, 15)), Limit::kCopy, Pixel::kColor},
    {"rank 3 of 3x3", [](Pictures& p) { ImgRank(&p.a, &p.out, 1, 1, 3); }, nullptr, Limit::kCopy},
    Distance("Euclidean", IMG_DISTANCE_EUCLIDEAN, 2, 0),
    Distance("Euclidean, noise", IMG_DISTANCE_EUCLIDEAN, 2, 50),
    Distance("city block", IMG_DISTANCE_CITY_BLOCK, 1, 0),
    Distance("chessboard", IMG_DISTANCE_CHESSBOARD, 3, 0),
});

}  // namespace
}  // namespace ky::bench
