// What histograms tell, against the definitions read literally.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <set>
#include <utility>

#include "ky/histogram.h"
#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT
using Numbers = std::vector<std::uint32_t>;

// Both kinds of vector with the same counts.
struct Histogram {
  explicit Histogram(const Numbers& counts) {
    typed.SetNumElements(256);
    generic.SetType(2, 256, 0);
    std::copy(counts.begin(), counts.end(), typed.begin());
    std::copy(counts.begin(), counts.end(), static_cast<std::uint32_t*>(generic.GetDataPtr()));
  }
  KyBW8HistogramVector typed;
  KyVector generic;
};

// The ranges asked for reach beyond the histogram by some hundred bins at most.
std::uint32_t At(const Numbers& h, std::int64_t bin) {
  return bin >= 0 && bin < 256 ? h[static_cast<std::size_t>(bin)] : 0;
}

// Features 0 to 6.
std::int64_t Integer(const Numbers& h, unsigned feature, int first, int last) {
  std::int64_t level = 0;
  std::uint32_t best = feature < 2 ? 0 : UINT32_MAX, sum = 0;
  switch (feature) {
    case 0:
    case 1:
    case 2:
    case 3:
      for (std::int64_t k = first; k <= last; ++k) {
        const std::uint32_t count = At(h, k - first);
        if (feature < 2 ? count <= best : count >= best) continue;
        best = count;
        level = k;
      }
      return feature % 2 == 0 ? level : static_cast<std::int32_t>(best);
    case 4:
      if (last < first) return first;
      for (std::int64_t k = first; k <= last; ++k)
        if (At(h, k - first) != 0) return k;
      return last + 1;
    case 5:
      if (first < last) return last;
      for (std::int64_t k = last; k > 0; --k)
        if (At(h, k) != 0) return k;
      return 0;
    default:
      for (std::int64_t k = first; k <= last; ++k) sum += At(h, k);
      return static_cast<std::int32_t>(sum);
  }
}

float Mean(const Numbers& h, int first, int last) {
  std::uint32_t n = 0, s = 0;
  for (int k = first; k <= last; ++k) {
    n += At(h, k);
    s += At(h, k) * static_cast<std::uint32_t>(k);
  }
  return n == 0 ? 0 : static_cast<float>(static_cast<double>(s) / static_cast<double>(n));
}

float Deviation(const Numbers& h, int first, int last) {
  std::uint32_t count = 0;
  int levels = 0;
  float a = 0, b = 0;
  for (int j = 0; j <= last - first; ++j) {
    const float n = static_cast<float>(At(h, j)), d = static_cast<float>(last - j);
    count += At(h, j);
    levels += At(h, j) != 0;
    a += n * d;
    b += n * d * d;
  }
  if (count == 0 || levels == 1) return 0;
  const double n = count, mean = static_cast<double>(a) / n;
  return static_cast<float>(std::sqrt(std::fabs(static_cast<double>(b) / n - mean * mean)));
}

std::vector<Numbers> ManyHistograms() {
  Random generator(11);
  const auto random = [&] { return static_cast<std::uint32_t>(generator()); };
  std::vector<Numbers> all(7, Numbers(256));
  for (std::uint32_t& count : all[1]) count = random() % 1000;
  for (std::uint32_t& count : all[2]) count = random();
  for (int i = 0; i < 9; ++i) all[3][random() % 256] = random() % 3;
  all[4][0] = 77;
  all[5][255] = 1;
  all[6] = Numbers(256, UINT32_MAX);
  return all;
}

TEST(Analysis, EveryFeatureOverManyRanges) {
  constexpr int kRanges[][2] = {{0, 255},    {10, 20}, {0, 0},   {255, 255}, {200, 300}, {-40, 30},
                                {-400, 300}, {20, 10}, {255, 0}, {400, 290}, {300, 600}, {5, -9}};
  for (const Numbers& counts : ManyHistograms()) {
    Histogram h(counts);
    for (const auto& [first, last] : kRanges) {
      SCOPED_TRACE(std::to_string(first) + " to " + std::to_string(last));
      for (unsigned feature = 0; feature <= 6; ++feature) {
        SCOPED_TRACE(feature);
        const std::int64_t expected = Integer(counts, feature, first, last);
        int result = -12345;
        EXPECT_EQ(ImgAnalyseHistogram(&h.generic, first, last, feature, result), KY_OK);
        EXPECT_EQ(result, expected);
        const auto selector = static_cast<IMG_HISTOGRAM_FEATURE>(feature);
        EXPECT_EQ(ImgAnalyseHistogram(&h.typed, selector, first, last),
                  static_cast<float>(expected));
      }
      float mean = -1, deviation = -1;
      EXPECT_EQ(ImgAnalyseHistogram(&h.generic, first, last, 7, mean), KY_OK);
      EXPECT_EQ(ImgAnalyseHistogram(&h.generic, first, last, 8, deviation), KY_OK);
      EXPECT_EQ(mean, Mean(counts, first, last));
      EXPECT_EQ(deviation, Deviation(counts, first, last));
      EXPECT_EQ(ImgAnalyseHistogram(&h.typed, IMG_HISTOGRAM_MEAN, first, last), mean);
      EXPECT_EQ(ImgAnalyseHistogram(&h.typed, IMG_HISTOGRAM_STD_DEV, first, last), deviation);
    }
    // The ends of the integers.
    for (const int first : {INT_MIN, 0, INT_MAX})
      for (const int last : {INT_MIN, 0, INT_MAX})
        for (int feature = 0; feature <= 8; ++feature)
          ImgAnalyseHistogram(&h.typed, static_cast<IMG_HISTOGRAM_FEATURE>(feature), first, last);
  }
}

// Sums of so few pixels are exact in single precision, and so is what follows from them.
TEST(Analysis, DeviationOfFewPixels) {
  const auto deviation = [](std::initializer_list<std::pair<int, std::uint32_t>> bins) {
    Numbers counts(256);
    for (const auto& [level, count] : bins) counts[level] = count;
    const Histogram h(counts);
    return ImgAnalyseHistogram(&h.typed, IMG_HISTOGRAM_STD_DEV, 0, 255);
  };
  EXPECT_FLOAT_EQ(deviation({{1, 1}, {2, 1}, {3, 1}}), std::sqrt(2.0f / 3));
  EXPECT_FLOAT_EQ(deviation({{10, 1}, {20, 2}, {30, 3}}), std::sqrt(500.0f / 9));
  EXPECT_FLOAT_EQ(deviation({{0, 70}, {1, 30}}), std::sqrt(0.21f));
  for (const std::uint32_t count : {3u, 1003u, 307201u}) EXPECT_EQ(deviation({{7, count}}), 0);
}

TEST(Analysis, OtherFeaturesAndRefusals) {
  Histogram h(Numbers(256, 3));
  int i = -7;
  float f = -7;
  EXPECT_EQ(ImgAnalyseHistogram(&h.generic, 0, 255, 7, i), KY_OK);
  EXPECT_EQ(ImgAnalyseHistogram(&h.generic, 0, 255, ~0u, i), KY_OK);
  EXPECT_EQ(ImgAnalyseHistogram(&h.generic, 0, 255, 6, f), KY_OK);
  EXPECT_EQ(ImgAnalyseHistogram(&h.generic, 0, 255, 9, f), KY_OK);
  for (const int feature : {-1, 9})
    EXPECT_EQ(ImgAnalyseHistogram(&h.typed, static_cast<IMG_HISTOGRAM_FEATURE>(feature), 0, 255),
              0);
  EXPECT_EQ(KyGetError(), KY_OK);

  KyVector v;
  EXPECT_EQ(ImgAnalyseHistogram(&v, 0, 255, 0, i), KY_ERROR_VECTOR_1602);
  ASSERT_EQ(v.SetType(2, 255, 0), KY_OK);
  EXPECT_EQ(ImgAnalyseHistogram(&v, 0, 255, 8, f), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(ImgAnalyseHistogram(nullptr, 0, 255, 8, f), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_STREQ(KyGetTrace(0), "ImgAnalyseHistogram (KyVector)");
  EXPECT_EQ(i, -7);
  EXPECT_EQ(f, -7);
  ASSERT_EQ(h.typed.SetNumElements(255), KY_OK);
  EXPECT_EQ(ImgAnalyseHistogram(&h.typed, IMG_HISTOGRAM_PIXEL_COUNT, 0, 255), 0);
  EXPECT_EQ(KyGetError(), KY_ERROR_NOT_256_ENTRIES);
  EXPECT_STREQ(KyGetTrace(0), "ImgAnalyseHistogram");
}

TEST(Entropy, OfPartsOfHistograms) {
  for (const Numbers& counts : ManyHistograms()) {
    Histogram h(counts);
    for (const auto& [first, last] : {std::pair(0u, ~0u), {0, 255}, {17, 90}, {200, 100}}) {
      std::uint32_t n = 0;
      std::uint64_t levels = 0;
      std::set<std::uint32_t> differing;
      float l = 0;
      for (std::size_t k = first; k <= std::min(last, 255u); ++k) {
        if (counts[k] == 0) continue;
        n += counts[k];
        ++levels;
        differing.insert(counts[k]);
        l += static_cast<float>(counts[k]) * std::log(static_cast<float>(counts[k]));
      }
      const double total = n;
      const bool equal = differing.size() == 1 && levels * *differing.begin() == n;
      const double bits = n == 0 ? 0
                          : equal
                              ? std::log2(static_cast<double>(levels))
                              : (std::log(total) - static_cast<double>(l) / total) / std::log(2.0);
      EXPECT_EQ(h.typed.Entropy(first, last), static_cast<float>(bits));
    }
  }
  // Equally frequent levels: rounding of sums leaves no trace.
  for (const unsigned count : {10u, 500u, 77777u}) {
    for (const int levels : {1, 2, 4, 256}) {
      Numbers equal(256);
      std::fill_n(equal.begin(), levels, count);
      EXPECT_EQ(Histogram(equal).typed.Entropy(), std::log2(levels)) << levels << " x " << count;
    }
  }
  Histogram h(Numbers(256, 1000));
  EXPECT_EQ(h.typed.Entropy(256), 0);
  EXPECT_EQ(KyGetError(), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(h.typed.Entropy(0, 256), 0);
  EXPECT_EQ(KyGetError(), KY_ERROR_PARAMETER_2_OUT_OF_RANGE);
  EXPECT_STREQ(KyGetTrace(0), "KyBW8HistogramVector::Entropy");
}

}  // namespace
