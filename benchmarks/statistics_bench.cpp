// Pixel statistics.
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
});

}  // namespace
}  // namespace ky::bench
