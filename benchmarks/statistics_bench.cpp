// Pixel statistics, moments, noise.
#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

const bool registered = Register({
    {"ImgPixelAverage",
     [](Pictures& p) {
       float mean = 0;
       ImgPixelAverage(&p.a, mean);
       p.numbers = {mean};
     },
     OPENCV(pictures.numbers = {cv::mean(v.a)[0]})},
    {"ImgPixelVariance",
     [](Pictures& p) {
       float variance = 0, mean = 0;
       ImgPixelVariance(&p.a, variance, mean);
       p.numbers = {variance, mean};
     },
     OPENCV(cv::Scalar mean, deviation; cv::meanStdDev(v.a, mean, deviation);
            pictures.numbers = {mean[0], deviation[0]})},
    {"ImgPixelStdDev",
     [](Pictures& p) {
       float deviation = 0, mean = 0;
       ImgPixelStdDev(&p.a, deviation, mean);
       p.numbers = {deviation, mean};
     },
     OPENCV(cv::Scalar mean, deviation; cv::meanStdDev(v.a, mean, deviation);
            pictures.numbers = {mean[0], deviation[0]})},
    {"ImgPixelStat",
     [](Pictures& p) {
       KyBW8 minimum = 0, maximum = 0;
       float mean = 0;
       ImgPixelStat(&p.a, minimum, maximum, mean);
       p.numbers = {double{mean}, double(minimum), double(maximum)};
     },
     OPENCV(double minimum, maximum; cv::minMaxLoc(v.a, &minimum, &maximum);
            pictures.numbers = {minimum, maximum})},
    {"ImgPixelAverage (C24)",
     [](Pictures& p) {
       float mean[3] = {};
       ImgPixelAverage(&p.colorA, mean);
       p.numbers = {mean[0], mean[1], mean[2]};
     },
     OPENCV(pictures.numbers = {cv::mean(v.colorA)[0]}), Limit::kNone, Pixel::kColor},
    {"ImgPixelVariance (C24)",
     [](Pictures& p) {
       float variance[3] = {}, mean[3] = {};
       ImgPixelVariance(&p.colorA, variance, mean);
       p.numbers = {variance[0], mean[0]};
     },
     OPENCV(cv::Scalar mean, deviation; cv::meanStdDev(v.colorA, mean, deviation);
            pictures.numbers = {mean[0], deviation[0]}),
     Limit::kNone, Pixel::kColor},
    {"ImgVariance",
     [](Pictures& p) {
       float variance = 0, mean = 0;
       ImgVariance(&p.a, variance, mean);
       p.numbers = {variance, mean};
     },
     OPENCV(cv::Scalar mean, deviation; cv::meanStdDev(v.a, mean, deviation);
            pictures.numbers = {mean[0], deviation[0]})},
    {"ImgPixelMax",
     [](Pictures& p) {
       KyBW8 maximum = 0;
       ImgPixelMax(&p.a, maximum);
       p.numbers = {double(maximum)};
     },
     OPENCV(double minimum, maximum; cv::minMaxLoc(v.a, &minimum, &maximum);
            pictures.numbers = {minimum, maximum})},
    {"ImgPixelMax (BW16)",
     [](Pictures& p) {
       KyBW16 maximum = 0;
       ImgPixelMax(&p.deepA, maximum);
       p.numbers = {double(maximum)};
     },
     OPENCV(double minimum, maximum; cv::minMaxLoc(v.deepA, &minimum, &maximum);
            pictures.numbers = {minimum, maximum}),
     Limit::kNone, Pixel::kDeep},
    {"ImgArea",
     [](Pictures& p) {
       KyBW32 area = 0;
       ImgArea(&p.a, 100, area);
       p.numbers = {double(area)};
     },
     OPENCV(pictures.numbers = {double(cv::countNonZero(v.a))})},
    {"ImgPixelCount",
     [](Pictures& p) {
       KyBW32 below = 0, between = 0, above = 0;
       ImgPixelCount(&p.a, 50, 180, below, between, above);
       p.numbers = {double(below), double(between), double(above)};
     }},
    {"ImgPixelCompare",
     [](Pictures& p) {
       KyBW32 different = 0;
       ImgPixelCompare(&p.a, &p.b, different);
       p.numbers = {double(different)};
     },
     OPENCV(cv::compare(v.a, v.b, v.work[0], cv::CMP_NE);
            pictures.numbers = {double(cv::countNonZero(v.work[0]))})},
    {"ImgWeighedMoments",
     [](Pictures& p) {
       KyMoments m{};
       ImgWeighedMoments(&p.a, m);
       p.numbers = {m.m00, m.m30, m.m21};
     },
     OPENCV(const cv::Moments m = cv::moments(v.a); pictures.numbers = {m.m00, m.m30, m.m21})},
    {"ImgBinaryMoments",
     [](Pictures& p) {
       KyMoments m{};
       ImgBinaryMoments(&p.a, 1, m);
       p.numbers = {m.m00, m.m30, m.m21};
     },
     OPENCV(const cv::Moments m = cv::moments(v.a, true);
            pictures.numbers = {m.m00, m.m30, m.m21})},
    {"ImgRmsNoise",
     [](Pictures& p) {
       float noise = 0;
       ImgRmsNoise(&p.a, &p.b, noise);
       p.numbers = {noise};
     },
     OPENCV(pictures.numbers = {cv::norm(v.a, v.b, cv::NORM_L2)})},
    {"ImgSignalNoiseRatio",
     [](Pictures& p) {
       float decibels = 0;
       ImgSignalNoiseRatio(&p.a, &p.b, decibels);
       p.numbers = {decibels};
     },
     OPENCV(pictures.numbers = {cv::PSNR(v.a, v.b)})},
    {"ImgRmsNoise (BW16)",
     [](Pictures& p) {
       float noise = 0;
       ImgRmsNoise(&p.deepA, &p.deepB, noise);
       p.numbers = {noise};
     },
     OPENCV(pictures.numbers = {cv::norm(v.deepA, v.deepB, cv::NORM_L2)}), Limit::kNone,
     Pixel::kDeep},
    {"ImgCorrelogram",
     [](Pictures& p) {
       return [&p, counts = std::make_shared<KyImage<KyBW32>>()] {
         ImgCorrelogram(&p.a, &p.b, counts.get());
         p.numbers = {double(counts->GetPixel(100, 100))};
       };
     }},
    {"ImgCorrelogram of equal images",
     [](Pictures& p) {
       return [&p, counts = std::make_shared<KyImage<KyBW32>>()] {
         ImgCorrelogram(&p.a, &p.a, counts.get());
         p.numbers = {double(counts->GetPixel(100, 100))};
       };
     }},
    {"ImgLinearRegression",
     [](Pictures& p) {
       float gain = 0, offset = 0, correlation = 0;
       ImgLinearRegression(&p.a, &p.b, gain, offset, correlation);
       p.numbers = {gain, offset, correlation};
     }},
    {"ImgFocusing",
     [](Pictures& p) {
       float sharpness = 0;
       ImgFocusing(&p.a, sharpness);
       p.numbers = {sharpness};
     }},
});

}  // namespace
}  // namespace ky::bench
