// Averages over time, in their steady state.
#include <memory>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

// OpenCV's running average and its conversion to levels.
#if KY_BENCH_OPENCV
Contender RunningAverage() {
  return [](Pictures& p) {
    cv::Mat average;
    p.views.a.convertTo(average, CV_32F);
    return [&v = p.views, average]() mutable {
      cv::accumulateWeighted(v.a, average, 0.25);
      average.convertTo(v.out, CV_8U);
    };
  };
}
#else
Contender RunningAverage() { return nullptr; }
#endif

Contender Moving(unsigned period, bool keep) {
  return [period, keep](Pictures& p) {
    const auto average =
        std::make_shared<KyMovingAverage>(period, p.a.GetWidth(), p.a.GetHeight(), keep);
    const auto work = [&p, keep, average] {
      keep ? average->Average(&p.out) : average->Average(&p.a, &p.out);
    };
    for (unsigned t = 0; t < period; ++t) {
      if (keep) ImgCopy(&p.a, average->GetSrcImage());
      work();
    }
    return work;
  };
}

// A step from a state that is about as far from the frame as noise.
Contender Recursive(float noise) {
  return [noise](Pictures& p) {
    const auto table = std::make_shared<KyBW16Vector>();
    ImgSetRecursiveAverageLUT(table.get(), 3, noise);
    const auto state = std::make_shared<KyImage<KyBW16>>(p.a.GetWidth(), p.a.GetHeight());
    for (int y = 0; y < p.a.GetHeight(); ++y)
      for (int x = 0; x < p.a.GetWidth(); ++x)
        state->SetPixel(static_cast<KyBW16>(16 * p.b.GetPixel(x, y)), x, y);
    return [&p, table, state] { ImgRecursiveAverage(&p.a, state.get(), &p.out, table.get()); };
  };
}

const bool averages = Register({
    {"moving average of 4", Moving(4, false), RunningAverage(), Limit::kTwoStreams},
    {"moving average of 16", Moving(16, false), RunningAverage(), Limit::kTwoStreams},
    {"moving average of 3", Moving(3, false), RunningAverage(), Limit::kTwoStreams},
    {"moving average of 10", Moving(10, false), RunningAverage(), Limit::kTwoStreams},
    {"moving average of 4, kept", Moving(4, true), RunningAverage(), Limit::kTwoStreams},
    {"moving average of 10, kept", Moving(10, true), RunningAverage(), Limit::kTwoStreams},
    {"recursive average", Recursive(0), RunningAverage(), Limit::kTwoStreams},
    {"recursive average, adaptive", Recursive(8), RunningAverage(), Limit::kTwoStreams},
});

}  // namespace
}  // namespace ky::bench
