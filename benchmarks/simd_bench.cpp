// The Simd library's equivalents of our operations.
#include <cmath>
#include <numbers>

#include "benchmarks/bench.h"
#if KY_BENCH_SIMD
#include <Simd/SimdLib.h>
#endif

namespace ky::bench {

#if KY_BENCH_SIMD
namespace {

struct Plane {
  template <class T>
  explicit Plane(const KyImage<T>& image)
      : data(static_cast<std::uint8_t*>(image.GetPixelPtr(0, 0))),
        pitch(static_cast<std::size_t>(image.GetPitch())) {}
  std::uint8_t* data;
  std::size_t pitch;
};
// The pictures as their functions want them.
struct Planes {
  explicit Planes(Pictures& p)
      : a(p.a),
        b(p.b),
        out(p.out),
        colorA(p.colorA),
        colorOut(p.colorOut),
        deepOut(p.deepOut),
        width(static_cast<std::size_t>(p.a.GetWidth())),
        height(static_cast<std::size_t>(p.a.GetHeight())) {}
  Plane a, b, out, colorA, colorOut, deepOut;
  std::size_t width, height;
};
template <class Call>
Contender On(const Call& call) {
  return [call](Pictures& pictures) { call(Planes(pictures)); };
}

Contender Binary(SimdOperationBinary8uType type) {
  return On([=](const Planes& p) {
    SimdOperationBinary8u(p.a.data, p.a.pitch, p.b.data, p.b.pitch, p.width, p.height, 1,
                          p.out.data, p.out.pitch, type);
  });
}
// A filter of one channel, and one of several, with a destination of its own type.
Contender Filter(void (*filter)(const std::uint8_t*, std::size_t, std::size_t, std::size_t,
                                std::size_t, std::uint8_t*, std::size_t)) {
  return On([=](const Planes& p) {
    filter(p.a.data, p.a.pitch, p.width, p.height, 1, p.out.data, p.out.pitch);
  });
}
Contender DeepFilter(void (*filter)(const std::uint8_t*, std::size_t, std::size_t, std::size_t,
                                    std::uint8_t*, std::size_t)) {
  return On([=](const Planes& p) {
    filter(p.a.data, p.a.pitch, p.width, p.height, p.deepOut.data, p.deepOut.pitch);
  });
}
// By 15 degrees about the middle, bilinear.
Contender Turn() {
  return [](Pictures& pictures) {
    const Planes p(pictures);
    const auto width = static_cast<float>(p.width), height = static_cast<float>(p.height);
    const float c = std::cos(std::numbers::pi_v<float> / 12);
    const float s = std::sin(std::numbers::pi_v<float> / 12);
    const float matrix[6] = {c,  s, (width - c * width - s * height) / 2,
                             -s, c, (height + s * width - c * height) / 2};
    const auto flags = static_cast<SimdWarpAffineFlags>(
        SimdWarpAffineChannelByte | SimdWarpAffineInterpBilinear | SimdWarpAffineBorderConstant);
    const std::shared_ptr<void> context(
        SimdWarpAffineInit(p.width, p.height, p.a.pitch, p.width, p.height, p.out.pitch, 1, matrix,
                           flags, nullptr),
        SimdRelease);
    return [=] { SimdWarpAffineRun(context.get(), p.a.data, p.out.data); };
  };
}

// A whole image to numbers.
template <class Measure>
Contender Measured(const Measure& measure) {
  return On([=](const Planes& p) { measure(p.a.data, p.a.pitch, p.width, p.height); });
}
Contender Sums(void (*sums)(const std::uint8_t*, std::size_t, std::size_t, std::size_t,
                            std::uint32_t*)) {
  return [=](Pictures& pictures) {
    const Planes p(pictures);
    const auto results = std::make_shared<std::vector<std::uint32_t>>(std::max(p.width, p.height));
    return [=] { sums(p.a.data, p.a.pitch, p.width, p.height, results->data()); };
  };
}

std::uint64_t sum, sumOfSquares;
std::uint8_t least, most, average;
std::uint32_t histogram[256];
std::uint8_t levels[256];

}  // namespace

std::map<std::string, Contender> SimdContenders() {
  SimdSetThreadNumber(1);
  return {
      {"copy", On([](const Planes& p) {
         SimdCopy(p.a.data, p.a.pitch, p.width, p.height, 1, p.out.data, p.out.pitch);
       })},
      {"add", Binary(SimdOperationBinary8uSaturatedAddition)},
      {"subtract", Binary(SimdOperationBinary8uSaturatedSubtraction)},
      {"average", Binary(SimdOperationBinary8uAverage)},
      {"and", Binary(SimdOperationBinary8uAnd)},
      {"or", Binary(SimdOperationBinary8uOr)},
      {"max", Binary(SimdOperationBinary8uMaximum)},
      {"min", Binary(SimdOperationBinary8uMinimum)},
      {"absolute difference", On([](const Planes& p) {
         SimdAbsDifference(p.a.data, p.a.pitch, p.b.data, p.b.pitch, p.out.data, p.out.pitch,
                           p.width, p.height);
       })},
      {"threshold", On([](const Planes& p) {
         SimdBinarization(p.a.data, p.a.pitch, p.width, p.height, 127, 255, 0, p.out.data,
                          p.out.pitch, SimdCompareGreater);
       })},
      {"ImgLut", On([](const Planes& p) {
         SimdChangeColors(p.a.data, p.a.pitch, p.width, p.height, levels, p.out.data, p.out.pitch);
       })},
      {"ImgHistogram, noise", On([](const Planes& p) {
         SimdHistogram(p.a.data, p.width, p.height, p.a.pitch, histogram);
       })},
      {"ImgEqualize", On([](const Planes& p) {
         SimdNormalizeHistogram(p.a.data, p.a.pitch, p.width, p.height, p.out.data, p.out.pitch);
       })},
      {"ImgPixelAverage", Measured([](auto... image) { SimdValueSum(image..., &sum); })},
      {"ImgPixelStdDev",
       Measured([](auto... image) { SimdValueSquareSum(image..., &sum, &sumOfSquares); })},
      {"ImgPixelStat",
       Measured([](auto... image) { SimdGetStatistic(image..., &least, &most, &average); })},
      {"ImgRmsNoise", On([](const Planes& p) {
         SimdSquaredDifferenceSum(p.a.data, p.a.pitch, p.b.data, p.b.pitch, p.width, p.height,
                                  &sum);
       })},
      {"ImgProjectOnARow", Sums(SimdGetColSums)},
      {"ImgProjectOnAColumn", Sums(SimdGetRowSums)},
      {"uniform 3x3", Filter(SimdMeanFilter3x3)},
      {"binomial 3x3", Filter(SimdGaussianBlur3x3)},
      {"C24 binomial 3x3", On([](const Planes& p) {
         SimdGaussianBlur3x3(p.colorA.data, p.colorA.pitch, p.width, p.height, 3, p.colorOut.data,
                             p.colorOut.pitch);
       })},
      {"median 3", Filter(SimdMedianFilterSquare3x3)},
      {"median 5", Filter(SimdMedianFilterSquare5x5)},
      {"Sobel x", DeepFilter(SimdSobelDxAbs)},
      {"Sobel modulus", DeepFilter(SimdContourMetrics)},
      {"Laplacian 8", DeepFilter(SimdLaplaceAbs)},
      {"dilate box 1", On([](const Planes& p) {
         SimdMaxFilterSquare3x3(p.a.data, p.a.pitch, p.width, p.height, 1, p.out.data, p.out.pitch,
                                0);
       })},
      {"turn by 15, 8 bits", Turn()},
      {"halve", On([](const Planes& p) {
         SimdReduceGray2x2(p.a.data, p.width, p.height, p.a.pitch, p.out.data, p.width / 2,
                           p.height / 2, p.out.pitch);
       })},
      {"ImgConvert C24 to BW8", On([](const Planes& p) {
         SimdRgbToGray(p.colorA.data, p.width, p.height, p.colorA.pitch, p.out.data, p.out.pitch);
       })},
      {"ImgConvert BW8 to C24", On([](const Planes& p) {
         SimdGrayToBgr(p.a.data, p.width, p.height, p.a.pitch, p.colorOut.data, p.colorOut.pitch);
       })},
  };
}
#else
std::map<std::string, Contender> SimdContenders() { return {}; }
#endif

}  // namespace ky::bench
