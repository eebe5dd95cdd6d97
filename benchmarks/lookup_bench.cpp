// Lookup tables and the laws that are made into one.
#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

// No regularity in the table that anybody could profit from.
KyBW8 TableLevel(int i) { return static_cast<KyBW8>(i * i * 37 / 11 + 5 * i); }

const bool registered = Register({
    {"ImgLut",
     [](Pictures& p) {
       std::vector<KyBW8> table(256);
       for (int i = 0; i < 256; ++i) table[i] = TableLevel(i);
       return [&p, table] { ImgLut(&p.a, &p.out, table.data()); };
     },
#if KY_BENCH_OPENCV
     [](Pictures& p) {
       cv::Mat table(1, 256, CV_8UC1);
       for (int i = 0; i < 256; ++i) table.at<KyBW8>(i) = TableLevel(i);
       return [&p, table] { cv::LUT(p.views.a, table, p.views.out); };
     },
#else
     nullptr,
#endif
     Limit::kCopy},
    {"ImgGainOffset", [](Pictures& p) { ImgGainOffset(&p.a, &p.out, 1.5f, -20); },
     OPENCV(v.a.convertTo(v.out, CV_8U, 1.5, -20)), Limit::kCopy},
    {"ImgGainOffset, negative", [](Pictures& p) { ImgGainOffset(&p.a, &p.out, -1, 255); }, nullptr,
     Limit::kCopy},
    {"ImgNormalize", [](Pictures& p) { ImgNormalize(&p.a, &p.out, 128, 40); },
     OPENCV(cv::Scalar mean, deviation; cv::meanStdDev(v.a, mean, deviation);
            const double ratio = 40 / deviation[0];
            v.a.convertTo(v.out, CV_8U, ratio, 128 - ratio * mean[0])),
     Limit::kCopy},
});

}  // namespace
}  // namespace ky::bench
