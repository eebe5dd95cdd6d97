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
    {"ImgGainOffset (C24)",
     [](Pictures& p) {
       ImgGainOffset(&p.colorA, &p.colorOut, {1.5f, 1.2f, 1.1f}, {-20, 3, 0});
     },
     OPENCV(v.colorA.convertTo(v.colorOut, CV_8U, 1.5, -20)), Limit::kCopy, Pixel::kColor},
    {"ImgLut (BW8 to C24)",
     [](Pictures& p) {
       auto palette = std::make_shared<KyC24Vector>(256u, KyC24(1, 2, 3));
       for (int i = 0; i < 256; ++i) (*palette)[i] = KyC24(TableLevel(i), TableLevel(i + 7), 9);
       return [&p, palette] { ImgLut(&p.a, &p.colorOut, palette.get()); };
     },
     nullptr, Limit::kFill, Pixel::kColor},
    {"ImgLut (BW16), 12 bits",
     [](Pictures& p) {
       auto table = std::make_shared<KyBW8Vector>(4096u, KyBW8{0});
       for (int i = 0; i < 4096; ++i) (*table)[i] = TableLevel(i);
       return [&p, table] { ImgLut(&p.deepA, &p.out, table.get(), 4); };
     }},
    {"ImgTransform", [](Pictures& p) { ImgTransform(&p.a, &p.out, IMG_TRANSFORM_POWER, 2.2f); },
     nullptr, Limit::kCopy},
    {"ImgUniformize, light", [](Pictures& p) { ImgUniformize(&p.a, &p.b, 200, &p.out); },
     OPENCV(cv::divide(v.a, v.b, v.out, 200)), Limit::kTwoStreams},
    {"ImgUniformize, light and dark",
     [](Pictures& p) { ImgUniformize(&p.a, &p.b, 200, &p.a, 10, &p.out); }, nullptr,
     Limit::kTwoStreams},
    {"ImgUniformize, light (C24)",
     [](Pictures& p) { ImgUniformize(&p.colorA, &p.colorB, KyC24(200, 190, 210), &p.colorOut); },
     OPENCV(cv::divide(v.colorA, v.colorB, v.colorOut, 200)), Limit::kTwoStreams, Pixel::kColor},
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
