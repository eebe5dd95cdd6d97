// Averages of any size, extremes, counts and level statistics against their definitions.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "ky/statistics.h"
#include "tests/support/reading.h"

namespace {

using namespace ky::test;  // NOLINT

constexpr KyBW8 kLow = 90, kHigh = 200, kThreshold = 250;

// What the calls give, as numbers, and their statuses.
using Numbers = std::vector<double>;

Numbers Measure(const KyROI<KyBW8>* roi) {
  float average = -7, variance = -7, mean = -7;
  KyBW8 minimum = 77, maximum = 77, smallest = 77, largest = 77;
  KyBW32 level = 7, below = 7, between = 7, above = 7, area = 7, range = 7;
  const KY_ERRORS status[] = {
      ImgAverage(roi, average),         ImgVariance(roi, variance, mean),
      ImgPixelMin(roi, minimum),        ImgPixelMax(roi, maximum),
      ImgMinimum(roi, smallest),        ImgMaximum(roi, largest),
      ImgCount(roi, kThreshold, level), ImgPixelCount(roi, kLow, kHigh, below, between, above),
      ImgArea(roi, kThreshold, area),   ImgAreaDoubleThreshold(roi, kLow, kHigh, range)};
  Numbers numbers = {
      average,          variance,        mean,          double(minimum), double(maximum),
      double(smallest), double(largest), double(level), double(below),   double(between),
      double(above),    double(area),    double(range)};
  for (const KY_ERRORS each : status) numbers.push_back(each);
  return numbers;
}

Numbers Model(const Picture<KyBW8>& picture) {
  if (picture.pixels.empty()) {
    Numbers numbers = {-7, -7, -7, 77, 77, 77, 77, 7, 7, 7, 7, 7, 7};
    numbers.insert(numbers.end(), 10, KY_ERROR_NO_PIXELS);
    return numbers;
  }
  double n = 0, sum = 0, squares = 0, least = 255, most = 0, level = 0, below = 0, above = 0,
         area = 0;
  for (const KyBW8 p : picture.pixels) {
    ++n, sum += p, squares += p * p;
    least = std::min<double>(least, p), most = std::max<double>(most, p);
    level += p == kThreshold, area += p >= kThreshold, below += p<kLow, above += p> kHigh;
  }
  const float mean = static_cast<float>(sum / n);
  const float variance = static_cast<float>((squares * n - sum * sum) / (n * n));
  Numbers numbers = {mean,
                     variance,
                     mean,
                     least,
                     most,
                     least,
                     most,
                     level,
                     below,
                     n - below - above,
                     above,
                     area,
                     n - below - above};
  numbers.insert(numbers.end(), 10, KY_OK);
  return numbers;
}

TEST(Counts, AsDefined) {
  std::vector<Size> sizes = AwkwardSizes();
  sizes.push_back({301, 257});
  sizes.push_back({70000, 3});
  CheckReading<KyBW8>(Measure, Model, sizes);
}

TEST(Counts, DeepExtremes) {
  CheckReading<KyBW16>(
      [](const KyROI<KyBW16>* roi) {
        KyBW16 minimum = 77, maximum = 77;
        const KY_ERRORS status[] = {ImgPixelMin(roi, minimum), ImgPixelMax(roi, maximum)};
        return std::array<int, 4>{minimum, maximum, status[0], status[1]};
      },
      [](const Picture<KyBW16>& picture) {
        const auto& all = picture.pixels;
        if (all.empty()) return std::array<int, 4>{77, 77, KY_ERROR_NO_PIXELS, KY_ERROR_NO_PIXELS};
        const auto [least, most] = std::minmax_element(all.begin(), all.end());
        return std::array<int, 4>{*least, *most, KY_OK, KY_OK};
      });
}

// Colours are what grey levels are, component by component.
TEST(Counts, ComponentsAsGrey) {
  std::vector<Size> sizes = AwkwardSizes();
  sizes.push_back({70000, 3});
  CheckReading<KyC24>(
      [](const KyROI<KyC24>* roi) {
        float average[3] = {-7, -7, -7}, variance[3] = {-7, -7, -7}, deviation[3] = {-7, -7, -7},
              mean[3] = {-7, -7, -7}, meanOfDeviation[3] = {-7, -7, -7};
        ImgPixelAverage(roi, average);
        ImgPixelVariance(roi, variance, mean);
        ImgPixelStdDev(roi, deviation, meanOfDeviation);
        std::vector<float> numbers;
        for (const auto* const three : {average, variance, mean, deviation, meanOfDeviation})
          numbers.insert(numbers.end(), three, three + 3);
        return numbers;
      },
      [](const Picture<KyC24>& picture) {
        std::vector<float> numbers(15, -7.0f);
        for (std::size_t i = 0; i < 3 && !picture.pixels.empty(); ++i) {
          KyImage<KyBW8> grey(picture.width, picture.height);
          for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x) grey.SetPixel((&picture.At(x, y).c0)[i], x, y);
          ImgPixelAverage(&grey, numbers[i]);
          ImgPixelVariance(&grey, numbers[3 + i], numbers[6 + i]);
          ImgPixelStdDev(&grey, numbers[9 + i], numbers[12 + i]);
        }
        return numbers;
      },
      sizes);
}

template <class T>
void CheckCompare() {
  ForEachPath([](const std::string&) {
    Random random(3);
    int turn = 0;
    for (const Size size : SizesToTry(AwkwardSizes())) {
      const Picture<T> a = RandomPicture<T>(size.width, size.height, random);
      Picture<T> b = a;
      KyBW32 expected = 0;
      for (T& pixel : b.pixels)
        if (random() % 3 == 0) {
          // One bit of one byte.
          auto* const bytes = reinterpret_cast<unsigned char*>(&pixel);
          bytes[random() % sizeof(T)] ^= static_cast<unsigned char>(1u << random() % 8);
          ++expected;
        }
      Canvas<T> inA(a, kPlacements[turn % 3], random), inB(b, kPlacements[(turn + 1) % 3], random);
      KyBW32 different = 77;
      const bool some = !a.pixels.empty();
      EXPECT_EQ(ImgPixelCompare(inA.roi(), inB.roi(), different),
                some ? KY_OK : KY_ERROR_NO_PIXELS);
      EXPECT_EQ(different, some ? expected : 77) << size.width << " x " << size.height;
      ++turn;
    }
  });
}
TEST(Counts, Compare) {
  CheckCompare<KyBW8>();
  CheckCompare<KyBW16>();
  CheckCompare<KyC24>();
}

// Sums that do not fit 32 bits: a mean of so many white pixels is white.
TEST(Counts, LargeWhiteImages) {
  std::vector<KyBW8> memory(4200 * 4100, 255);
  KyImage<KyBW8> image;
  for (const Size size : {Size{4200, 4100}, Size{16843100, 1}}) {
    ASSERT_EQ(image.Attach(memory.data(), size.width, size.height, size.width), KY_OK);
    ForEachPath([&](const std::string&) {
      float mean = 0, again = 0, variance = -1;
      ImgAverage(&image, mean);
      ImgVariance(&image, variance, again);
      EXPECT_EQ(mean, 255);
      EXPECT_EQ(again, 255);
      EXPECT_EQ(variance, 0);
    });
  }
}

TEST(Counts, RefusedIntervals) {
  KyImage<KyBW8> image(4, 4), empty(4, 4);
  const KyROI<KyBW8> none(&empty, 0, 0, 0, 4);
  KyBW32 a = 7, b = 7, c = 7;
  EXPECT_EQ(ImgPixelCount(&image, 5, 4, a, b, c), KY_ERROR_BAD_INTERVAL);
  EXPECT_EQ(ImgAreaDoubleThreshold(&none, 5, 4, a), KY_ERROR_BAD_INTERVAL);
  EXPECT_EQ(ImgAreaDoubleThreshold(&none, 4, 5, a), KY_ERROR_NO_PIXELS);
  EXPECT_EQ(ImgPixelCount(nullptr, 5, 4, a, b, c), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(a + b + c, 21u);
  EXPECT_EQ(ImgPixelCount(&image, 0, 0, a, b, c), KY_OK);
  EXPECT_EQ(std::make_tuple(a, b, c), std::make_tuple(0u, 16u, 0u));
}

TEST(LevelStatistics, AsDefined) {
  struct Case {
    std::vector<std::pair<int, unsigned>> counts;
    int first, last;
    KyLevelStatistics expected;
  };
  const unsigned most = ~0u;
  const Case cases[] = {
      {{{10, 3}, {20, 5}, {30, 5}, {40, 1}}, 0, 255, {14, 10, 40, 20, 0, 20, 320 / 14.0, 0}},
      {{{10, 3}, {20, 5}, {30, 5}, {40, 1}}, 30, 40, {6, 30, 40, 30, 31, 30, 190 / 6.0, 0}},
      {{{0, 2}, {1, 2}}, 0, 1, {4, 0, 1, 0, 0, 0, 0.5, 0.5}},
      {{{254, 1}, {255, 1}}, 255, 255, {1, 255, 255, 255, 255, 255, 255, 0}},
      {{{0, most}, {255, most}}, 0, 255, {2 * std::uint64_t{most}, 0, 255, 0, 1, 0, 127.5, 127.5}},
  };
  for (const Case& each : cases) {
    KyBW8HistogramVector histogram(256);
    histogram.SetNumElements(256);
    histogram.Clear();
    double n = 0, squares = 0;
    for (const auto& [level, count] : each.counts) {
      histogram[static_cast<unsigned>(level)] = count;
      if (level < each.first || level > each.last) continue;
      n += count;
      squares += count * (level - each.expected.mean) * (level - each.expected.mean);
    }
    KyLevelStatistics s{};
    ASSERT_EQ(ImgLevelStatistics(&histogram, each.first, each.last, s), KY_OK);
    EXPECT_EQ(s.count, each.expected.count);
    EXPECT_EQ(s.lowest, each.expected.lowest);
    EXPECT_EQ(s.highest, each.expected.highest);
    EXPECT_EQ(s.mostFrequent, each.expected.mostFrequent);
    EXPECT_EQ(s.leastFrequent, each.expected.leastFrequent);
    EXPECT_EQ(s.median, each.expected.median);
    EXPECT_DOUBLE_EQ(s.mean, each.expected.mean);
    EXPECT_NEAR(s.deviation, std::sqrt(squares / n), 1e-12);
    for (const auto& [first, last, error] :
         {std::tuple{-1, 5, KY_ERROR_BAD_INTERVAL}, std::tuple{5, 4, KY_ERROR_BAD_INTERVAL},
          std::tuple{5, 256, KY_ERROR_BAD_INTERVAL}, std::tuple{50, 60, KY_ERROR_NO_PIXELS}})
      EXPECT_EQ(ImgLevelStatistics(&histogram, first, last, s), error) << first << " " << last;
    histogram.SetNumElements(255);
    EXPECT_EQ(ImgLevelStatistics(&histogram, 5, 4, s), KY_ERROR_NOT_256_ENTRIES);
  }
}

}  // namespace
