// Interlaced frames.
#include <memory>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

// A call on a whole image and one of its frames; nanoseconds are for a pixel of the whole.
template <class Call>
Contender OnFrame(Call call) {
  return [call](Pictures& p) {
    const auto frame =
        std::make_shared<KyROI<KyBW8>>(&p.b, 0, 0, p.b.GetWidth(), p.b.GetHeight() / 2);
    return [&p, call, frame] { call(p, frame.get()); };
  };
}

// OpenCV copies rows of twice the pitch.
#if KY_BENCH_OPENCV
cv::Mat EvenRows(const cv::Mat& m) {
  return cv::Mat(m.rows / 2, m.cols, m.type(), m.data, 2 * m.step);
}
cv::Mat UpperHalf(const cv::Mat& m) { return m.rowRange(0, m.rows / 2); }
#endif

const bool frames = Register({
    {"get frame", OnFrame([](Pictures& p, auto* frame) { ImgGetFrame(&p.a, frame, 0); }),
     OPENCV(EvenRows(v.a).copyTo(UpperHalf(v.b)))},
    {"set frame", OnFrame([](Pictures& p, auto* frame) { ImgSetFrame(frame, &p.out, 0); }),
     OPENCV(UpperHalf(v.b).copyTo(EvenRows(v.out)))},
    {"realign frame", [](Pictures& p) { ImgRealignFrame(&p.a, &p.out, 5, 0); }},
    {"rebuild frame", [](Pictures& p) { ImgRebuildFrame(&p.a, &p.out, 0); }},
    {"swap frames", [](Pictures& p) { ImgSwapFrames(&p.a, &p.out); }, nullptr, Limit::kCopy},
    {"swap frames in place", [](Pictures& p) { ImgSwapFrames(&p.out, &p.out); }, nullptr,
     Limit::kCopy},
    {"C24 swap frames", [](Pictures& p) { ImgSwapFrames(&p.colorA, &p.colorOut); }, nullptr,
     Limit::kCopy, Pixel::kColor},
});

}  // namespace
}  // namespace ky::bench
