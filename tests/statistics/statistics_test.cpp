// Pixel statistics against their definitions, to the last bit.
#include "ky/statistics.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <tuple>

#include "statistics/extended.h"
#include "tests/support/reading.h"

namespace {

using namespace ky::test;  // NOLINT
using ky::Extended;

constexpr float kUntouched = -7;

struct Numbers {
  KY_ERRORS status[4] = {};
  float average = kUntouched, variance = kUntouched, varianceMean = kUntouched;
  float deviation = kUntouched, deviationMean = kUntouched, statMean = kUntouched;
  KyBW8 minimum = 77, maximum = 77;
  bool operator==(const Numbers&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Numbers& n) {
  out.precision(9);
  return out << n.status[0] << ": average " << n.average << ", variance " << n.variance << " and "
             << n.varianceMean << ", deviation " << n.deviation << ", extremes " << int{n.minimum}
             << " to " << int{n.maximum} << " and " << n.statMean;
}

Numbers Measure(const KyROI<KyBW8>* roi) {
  Numbers n;
  n.status[0] = ImgPixelAverage(roi, n.average);
  n.status[1] = ImgPixelVariance(roi, n.variance, n.varianceMean);
  n.status[2] = ImgPixelStdDev(roi, n.deviation, n.deviationMean);
  n.status[3] = ImgPixelStat(roi, n.minimum, n.maximum, n.statMean);
  return n;
}

// Literally, of an image given row by row.
Numbers Model(int width, int height, const std::function<KyBW8(int x, int y)>& at) {
  Numbers n;
  if (width == 0 || height == 0) {
    for (KY_ERRORS& status : n.status) status = KY_ERROR_NO_PIXELS;
    return n;
  }
  std::uint32_t sum = 0;
  double squares = 0;
  float rowMeans = 0;
  n.minimum = n.maximum = at(0, 0);
  for (int y = 0; y < height; ++y) {
    std::uint32_t rowSum = 0, rowSquares = 0;
    for (int x = 0; x < width; ++x) {
      const KyBW8 p = at(x, y);
      n.minimum = std::min(n.minimum, p);
      n.maximum = std::max(n.maximum, p);
      rowSum += p;
      rowSquares += p * p;
    }
    sum += rowSum;
    squares += rowSquares;
    const float rowMean = static_cast<float>(rowSum) / static_cast<float>(width);
    rowMeans = rowMeans + rowMean;
  }
  const int pixels = width * height;
  const long double s = sum, q = squares, all = pixels;
  n.average = static_cast<float>(s / all);
  n.varianceMean = n.deviationMean = static_cast<float>(sum) / static_cast<float>(pixels);
  n.variance = static_cast<float>((q * all - s * s) / (all * all));
  if (n.variance < 0) n.variance = 0;
  n.deviation = static_cast<float>(std::sqrt(static_cast<double>(n.variance)));
  n.statMean = rowMeans / static_cast<float>(height);
  return n;
}

TEST(Statistics, AsDefined) {
  std::vector<Size> sizes = AwkwardSizes();
  sizes.push_back({301, 257});
  sizes.push_back({70000, 3});  // wider than a row's sum of squares
  CheckReading<KyBW8>(
      Measure,
      [](const Picture<KyBW8>& picture) {
        return Model(picture.width, picture.height, [&](int x, int y) { return picture.At(x, y); });
      },
      sizes);
}

// Sums that wrap, over many rows and over one long row.
TEST(Statistics, WhiteBeyond32Bits) {
  std::vector<KyBW8> memory(4200 * 4100, 255);
  for (const Size size : {Size{4200, 4100}, Size{16843100, 1}}) {
    KyImage<KyBW8> image;
    ASSERT_EQ(image.Attach(memory.data(), size.width, size.height, size.width), KY_OK);
    const Numbers expected = Model(size.width, size.height, [](int, int) { return KyBW8(255); });
    ForEachPath([&](const std::string&) { EXPECT_EQ(Measure(&image), expected); });
  }
}

// More than the part of a cache that a core may count on.
TEST(Statistics, LargePictures) {
  constexpr int kWidth = 2219, kHeight = 1931;
  const auto at = [](int x, int y) { return static_cast<KyBW8>(3 + (x * 7 + y * y * 13) % 251); };
  KyImage<KyBW8> image(kWidth, kHeight);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) image.SetPixel(at(x, y), x, y);
  const Numbers expected = Model(kWidth, kHeight, at);
  ForEachPath([&](const std::string&) { EXPECT_EQ(Measure(&image), expected); });
}

// Where long double is what x86 calls so, for operands whose results need more bits than there are.
TEST(Extended, RoundsAsX87Does) {
  if (LDBL_MANT_DIG != 64) GTEST_SKIP() << "long double has another width here";
  std::uint64_t state = 1;
  const auto draw = [&] {
    state = state * 6364136223846793005u + 1442695040888963407u;
    return state >> 13 % 64;
  };
  for (int i = 0; i < 100000; ++i) {
    // Halves of sums, so that ties occur.
    const std::uint64_t a = draw() >> i % 63, b = draw() >> i % 61 | 1, c = i % 3 ? draw() : a + 1;
    const auto n = static_cast<std::int32_t>(draw() >> 20);
    const Extended x(a), y(b), z(c), m(n != 0 ? n : 1);
    const long double lx = a, ly = b, lz = c, lm = n != 0 ? n : 1;
    ASSERT_EQ((x / y).ToFloat(), static_cast<float>(lx / ly)) << a << " " << b;
    ASSERT_EQ((x * m - z * y).ToFloat(), static_cast<float>(lx * lm - lz * ly)) << a << " " << n;
    ASSERT_EQ(((x / y - x / m) * y - x).ToFloat(),
              static_cast<float>((lx / ly - lx / lm) * ly - lx));
    ASSERT_EQ((x * z / y - x / y).ToFloat(), static_cast<float>(lx * lz / ly - lx / ly));
  }
}

TEST(Statistics, SmallExamples) {
  KyImage<KyBW8> two(2, 1);
  two.SetPixel(255, 1, 0);
  const Numbers n = Measure(&two);
  EXPECT_EQ(n.average, 127.5f);
  EXPECT_EQ(n.variance, 16256.25f);
  EXPECT_EQ(n.deviation, 127.5f);
  EXPECT_EQ(n.minimum, 0);
  EXPECT_EQ(n.maximum, 255);
}

}  // namespace
