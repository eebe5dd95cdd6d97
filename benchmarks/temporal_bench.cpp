// Averages over time, in their steady state.
#include <algorithm>
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

// Steps through two frames in turn, which differ by noise of up to four levels.
Contender Recursive(float noise) {
  return [noise](Pictures& p) {
    struct Sequence {
      KyBW16Vector table;
      KyImage<KyBW16> state;
      KyImage<KyBW8> other;
      bool isOther = false;
    };
    const auto sequence = std::make_shared<Sequence>();
    const int width = p.a.GetWidth(), height = p.a.GetHeight();
    sequence->state.SetSize(width, height);
    sequence->other.SetSize(width, height);
    ImgSetRecursiveAverageLUT(&sequence->table, 3, noise);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        const int level = p.a.GetPixel(x, y), different = level + p.b.GetPixel(x, y) % 9 - 4;
        sequence->state.SetPixel(static_cast<KyBW16>(16 * level), x, y);
        sequence->other.SetPixel(static_cast<KyBW8>(std::clamp(different, 0, 255)), x, y);
      }
    return [&p, sequence] {
      auto& [table, state, other, isOther] = *sequence;
      isOther = !isOther;
      ImgRecursiveAverage(isOther ? &other : &p.a, &state, &p.out, &table);
    };
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
