// The searches over histograms against their definitions, class sums made afresh for every level.
#include "ky/auto_threshold.h"

#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>

#include "ky/geometry.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT
using Bins = std::vector<std::uint32_t>;

KyBW8HistogramVector VectorOf(const Bins& bins) {
  KyBW8HistogramVector vector;
  vector.SetNumElements(static_cast<unsigned>(bins.size()));
  for (unsigned i = 0; i < bins.size(); ++i) vector[i] = bins[i];
  return vector;
}
Bins Peaks(std::initializer_list<std::pair<int, unsigned>> peaks) {
  Bins bins(256);
  for (const auto& [level, count] : peaks) bins[static_cast<std::size_t>(level)] = count;
  return bins;
}

struct Sums {
  std::uint32_t count = 0, sum = 0;
};
template <class Weight>
Sums Over(const Bins& bins, int first, int last, Weight weight) {
  Sums sums;
  for (int k = first; k <= last; ++k) {
    sums.count += bins[static_cast<std::size_t>(k)];
    sums.sum += static_cast<std::uint32_t>(weight(k)) * bins[static_cast<std::size_t>(k)];
  }
  return sums;
}
Sums Levels(const Bins& bins, int first, int last) {
  return Over(bins, first, last, [](int k) { return k; });
}
float F(std::uint32_t v) { return static_cast<float>(v); }
float Ln(std::uint32_t v) { return static_cast<float>(std::log(static_cast<double>(v))); }
float LnTerm(std::uint32_t h) { return h > 0 ? F(h) * Ln(h) : 0.0f; }

struct Result {
  unsigned threshold = 0;
  float below = 0, above = 0;
};
float Mean(Sums s, int empty) {
  return s.count == 0 ? static_cast<float>(empty) : F(s.sum) / F(s.count);
}

Result Model(const Bins& bins, int mode, float relative, int min, int max) {
  Sums lower, upper;
  unsigned threshold = 0;
  if (mode == IMG_THRESHOLD_QUADRATIC_BLACK_WHITE || mode == IMG_THRESHOLD_LINEAR_BLACK_WHITE) {
    const bool squared = mode == IMG_THRESHOLD_QUADRATIC_BLACK_WHITE;
    const auto power = [&](int v) { return squared ? v * v : v; };
    const std::uint32_t extra =
        squared ? static_cast<std::uint32_t>(min * min) * Levels(bins, min, max).count : 0;
    std::uint32_t best = 0xFFFFFFFF;
    for (int t = max; t >= min; --t) {
      Sums low = Over(bins, min, t, power);
      // The whole lower cost less what has moved.
      low.sum += extra;
      const Sums high = Over(bins, t + 1, max, [&](int k) { return power(255 - k); });
      if (low.sum + high.sum < best) {
        best = low.sum + high.sum;
        threshold = static_cast<unsigned>(t);
        lower = low;
        upper = high;
      }
    }
  } else if (mode == IMG_THRESHOLD_RELATIVE) {
    const std::uint32_t n = Levels(bins, min, max).count;
    // Never more pixels than there are, although the product may round up.
    const float below = relative * F(n);
    const std::uint32_t target = below >= F(n) ? 0 : n - static_cast<std::uint32_t>(below);
    int t = max + 1;
    while (t > min && Levels(bins, t, max).count < target) --t;
    threshold = static_cast<unsigned>(t);
    lower = Levels(bins, min, t - 1);
    upper = Levels(bins, t, max);
  } else if (mode >= 0) {
    threshold = static_cast<unsigned>(mode);
    lower = Levels(bins, min, std::min(min + mode - 1, max));
    upper = Over(bins, std::min(min + mode, 256), max, [&](int k) { return k - min; });
  } else {
    float best = FLT_MAX, l1 = 0, l2 = 0;
    for (int k = max; k >= min; --k) l2 += LnTerm(bins[static_cast<std::size_t>(k)]);
    for (int t = min; t <= max; ++t) {
      const Sums low = Levels(bins, min, t - 1), high = Levels(bins, t, max);
      if (low.count > 0 && high.count > 0) {
        float f = 0;
        if (mode == IMG_THRESHOLD_ISODATA)
          f = std::abs(0.5f * F(high.sum) / F(high.count) + 0.5f * F(low.sum) / F(low.count) -
                       static_cast<float>(t));
        else if (mode == IMG_THRESHOLD_MAX_ENTROPY)
          f = l2 / F(high.count) + l1 / F(low.count) - Ln(low.count) - Ln(high.count);
        else
          f = -(F(low.sum) * F(low.sum) / F(low.count)) - F(high.sum) * F(high.sum) / F(high.count);
        if (f < best) {
          best = f;
          threshold = static_cast<unsigned>(t);
          lower = low;
          upper = high;
        }
      }
      l1 += LnTerm(bins[static_cast<std::size_t>(t)]);
      l2 -= LnTerm(bins[static_cast<std::size_t>(t)]);
    }
  }
  return {threshold, Mean(lower, min), Mean(upper, max + 1)};
}

// Noise, two peaks, few bins, sums that wrap, nothing at all.
Bins RandomBins(Random& generator) {
  const auto random = [&] { return static_cast<std::uint32_t>(generator()); };
  Bins bins(256);
  const unsigned kind = random() % 5;
  for (int k = 0; k < 256; ++k) {
    std::uint32_t& h = bins[static_cast<std::size_t>(k)];
    switch (kind) {
      case 0: h = random() % 1000; break;
      case 1:
        h = (std::abs(k - 60) < 20 || std::abs(k - 190) < 30) ? random() % 5000 : random() % 3;
        break;
      case 2: h = random() % 16 == 0 ? random() % 100 : 0; break;
      case 3: h = random(); break;
      default: h = 0;
    }
  }
  return bins;
}

void ExpectResult(const Result& expected, KyBW8HistogramVector& vector, unsigned mode,
                  float relative, unsigned min, unsigned max) {
  unsigned threshold = mode;
  float below = -1, above = -1;
  ASSERT_EQ(ImgHistogramThreshold(&vector, threshold, below, above, relative, min, max), KY_OK);
  EXPECT_EQ(threshold, expected.threshold);
  EXPECT_EQ(below, expected.below);
  EXPECT_EQ(above, expected.above);
}

TEST(HistogramThreshold, EveryModeOnRandomHistograms) {
  Random random(1);
  for (int round = 0; round < 60; ++round) {
    const Bins bins = RandomBins(random);
    KyBW8HistogramVector vector = VectorOf(bins);
    int min = 0, max = 255;
    if (round % 2 == 1) {
      min = static_cast<int>(random() % 200);
      max = min + 1 + static_cast<int>(random() % static_cast<unsigned>(255 - min));
    }
    for (int mode = -8; mode <= -3; ++mode) {
      const float relative = static_cast<float>(random() % 5) / 4.0f;
      SCOPED_TRACE(testing::Message() << "round " << round << ", mode " << mode << ", " << min
                                      << ".." << max << ", relative " << relative);
      ExpectResult(Model(bins, mode, relative, min, max), vector, static_cast<unsigned>(mode),
                   relative, static_cast<unsigned>(min), static_cast<unsigned>(max));
    }
    const int level = min + static_cast<int>(random() % static_cast<unsigned>(max - min + 1));
    ExpectResult(Model(bins, level, 0, min, max), vector, static_cast<unsigned>(level), 0.5f,
                 static_cast<unsigned>(min), static_cast<unsigned>(max));
  }
}

TEST(HistogramThreshold, WorkedExamples) {
  const struct {
    Bins bins;
    int mode;
    float relative;
    Result result;
  } cases[] = {
      {Peaks({{100, 9}}), IMG_THRESHOLD_MIN_RESIDUE, 0, {0, 0, 256}},
      {Peaks({{100, 9}}), IMG_THRESHOLD_MAX_ENTROPY, 0, {0, 0, 256}},
      {Peaks({{100, 9}}), IMG_THRESHOLD_ISODATA, 0, {0, 0, 256}},
      {Peaks({{50, 7}, {200, 7}}), IMG_THRESHOLD_MIN_RESIDUE, 0, {51, 50, 200}},
      {Peaks({{50, 7}, {200, 7}}), IMG_THRESHOLD_ISODATA, 0, {125, 50, 200}},
      {Peaks({{50, 7}, {200, 7}}), IMG_THRESHOLD_QUADRATIC_BLACK_WHITE, 0, {199, 2500, 3025}},
      {Peaks({{50, 7}, {200, 7}}), IMG_THRESHOLD_LINEAR_BLACK_WHITE, 0, {199, 50, 55}},
      {Peaks({{50, 7}, {200, 7}}), IMG_THRESHOLD_RELATIVE, 1.0f, {256, 125, 256}},
      {Peaks({{50, 7}, {200, 7}}), IMG_THRESHOLD_RELATIVE, 0.0f, {50, 0, 125}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("mode " + std::to_string(c.mode));
    KyBW8HistogramVector vector = VectorOf(c.bins);
    ExpectResult(c.result, vector, static_cast<unsigned>(c.mode), c.relative, 0, 255);
  }
  Bins even(256);
  std::fill_n(even.begin(), 100, 10u);
  KyBW8HistogramVector vector = VectorOf(even);
  ExpectResult({25, 12, 62}, vector, static_cast<unsigned>(IMG_THRESHOLD_RELATIVE), 0.25f, 0, 255);
}

TEST(HistogramThreshold, Refusals) {
  KyBW8HistogramVector good = VectorOf(Peaks({{9, 9}})), small(256);
  small.SetNumElements(255);
  const unsigned kRelative = static_cast<unsigned>(IMG_THRESHOLD_RELATIVE);
  const struct {
    KyBW8HistogramVector* vector;
    unsigned threshold;
    float relative;
    unsigned min, max;
    KY_ERRORS error;
  } cases[] = {{nullptr, 0, 0, 0, 255, KY_ERROR_BAD_VECTOR_TYPE},
               {&small, 0, 0, 300, 300, KY_ERROR_NOT_256_ENTRIES},
               {&good, 300, 0, 256, 300, KY_ERROR_PARAMETER_5_OUT_OF_RANGE},
               {&good, 300, 0, 255, 256, KY_ERROR_PARAMETER_6_OUT_OF_RANGE},
               {&good, 300, 0, 8, 8, KY_ERROR_BAD_INTERVAL},
               {&good, 300, 0, 0, 255, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
               {&good, 5, 0, 6, 255, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
               {&good, static_cast<unsigned>(-9), 0, 0, 255, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
               {&good, static_cast<unsigned>(-2), 0, 0, 255, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
               {&good, kRelative, 1.01f, 0, 255, KY_ERROR_PARAMETER_5_OUT_OF_RANGE},
               {&good, kRelative, -0.01f, 0, 255, KY_ERROR_PARAMETER_5_OUT_OF_RANGE},
               {&good, kRelative, NAN, 0, 255, KY_ERROR_PARAMETER_5_OUT_OF_RANGE}};
  for (const auto& c : cases) {
    unsigned threshold = c.threshold;
    float below = 3, above = 4;
    EXPECT_EQ(ImgHistogramThreshold(c.vector, threshold, below, above, c.relative, c.min, c.max),
              c.error);
    EXPECT_STREQ(KyGetTrace(0), "ImgHistogramThreshold");
    EXPECT_TRUE(threshold == c.threshold && below == 3 && above == 4);
  }
}

TEST(IsodataThreshold, StepsOfTheIteration) {
  Random random(2);
  for (int round = 0; round < 60; ++round) {
    const Bins bins = RandomBins(random);
    if (Levels(bins, 0, 255).count > 100'000'000)
      continue;  // means of wrapped sums leave the range
    KyBW8HistogramVector vector = VectorOf(bins);
    const int min = static_cast<int>(random() % 100), max = 150 + static_cast<int>(random() % 100);
    int t = (min + max + 1) / 2;
    for (int step = 0; step < 16; ++step) {
      const Sums low = Levels(bins, min, t), high = Levels(bins, t + 1, max);
      const int m1 = low.count > 0 ? static_cast<int>(low.sum / low.count) : (min + t) / 2;
      const int m2 = high.count > 0 ? static_cast<int>(high.sum / high.count) : (max + 1 + t) / 2;
      if ((m1 + m2) / 2 == t) break;
      t = (m1 + m2) / 2;
    }
    EXPECT_EQ(ImgIsodataThreshold(&vector, static_cast<unsigned>(min), static_cast<unsigned>(max)),
              t);
    EXPECT_EQ(KyGetError(), KY_OK);
    KyVector generic;
    ASSERT_EQ(generic.SetType(2, 256, 0), KY_OK);
    std::copy(bins.begin(), bins.end(), static_cast<unsigned*>(generic.GetDataPtr()));
    EXPECT_EQ(ImgIsodataThreshold(&generic, static_cast<unsigned>(min), static_cast<unsigned>(max)),
              t);
  }
  KyBW8HistogramVector peak = VectorOf(Peaks({{100, 9}}));
  EXPECT_EQ(ImgIsodataThreshold(&peak), 151);
  KyBW8HistogramVector wrapped = VectorOf(Bins(256, 0xFFFFFFF1));
  for (unsigned min = 0; min < 255; min += 7) {
    const int t = ImgIsodataThreshold(&wrapped, min, 255);
    EXPECT_TRUE(t >= static_cast<int>(min) && t <= 255);
  }
}

TEST(IsodataThreshold, Refusals) {
  KyBW8HistogramVector vector = VectorOf(Bins(256, 1)), small = VectorOf(Bins(255, 1));
  KyVector generic, empty, other;
  generic.SetType(2, 256, 0);
  empty.SetType(2, 255, 0);
  other.SetType(3, 2000, 0);
  const auto expect = [](int level, KY_ERRORS error, const char* trace) {
    EXPECT_EQ(level, 0);
    EXPECT_EQ(KyGetError(), error);
    EXPECT_STREQ(KyGetTrace(0), trace);
  };
  const char* const typed = "ImgIsodataThreshold (KyBW8HistogramVector)";
  const char* const untyped = "ImgIsodataThreshold (KyVector)";
  expect(ImgIsodataThreshold(&small, 256, 256), KY_ERROR_NOT_256_ENTRIES, typed);
  expect(ImgIsodataThreshold(&vector, 256, 256), KY_ERROR_PARAMETER_2_OUT_OF_RANGE, typed);
  expect(ImgIsodataThreshold(&vector, 9, 256), KY_ERROR_PARAMETER_3_OUT_OF_RANGE, typed);
  expect(ImgIsodataThreshold(&vector, 9, 9), KY_ERROR_BAD_INTERVAL, typed);
  expect(ImgIsodataThreshold(&other), KY_ERROR_VECTOR_1602, untyped);
  expect(ImgIsodataThreshold(&empty), KY_ERROR_BAD_VECTOR_TYPE, untyped);
  expect(ImgIsodataThreshold(&generic, 256, 256), KY_ERROR_PARAMETER_2_OUT_OF_RANGE, untyped);
  expect(ImgIsodataThreshold(&generic, 0, 256), KY_ERROR_PARAMETER_3_OUT_OF_RANGE, untyped);
  expect(ImgIsodataThreshold(&generic, 5, 4), KY_ERROR_BAD_INTERVAL, untyped);
}

TEST(StandAloneThresholds, BestSplitOfAllLevels) {
  Random random(3);
  for (int round = 0; round < 60; ++round) {
    const Bins bins = RandomBins(random);
    KyBW8HistogramVector vector = VectorOf(bins);
    const Sums all = Levels(bins, 0, 255);
    for (const bool entropy : {false, true}) {
      SCOPED_TRACE(testing::Message() << "round " << round << ", entropy " << entropy);
      float l1 = 0, l2 = 0;
      for (int k = 255; k >= 0; --k) l2 += LnTerm(bins[static_cast<std::size_t>(k)]);
      const auto score = [&](Sums s, float l) {
        return entropy ? Ln(s.count) - l / F(s.count) : F(s.sum) * F(s.sum) / F(s.count);
      };
      Result expected{0, -1, -1};
      float best = score(all, l2);
      for (int t = 0; t < 256 && all.count > 0; ++t) {
        const Sums low = Levels(bins, 0, t - 1), high = Levels(bins, t, 255);
        if (low.count > 0 && high.count > 0 && score(low, l1) + score(high, l2) > best) {
          best = score(low, l1) + score(high, l2);
          expected = {static_cast<unsigned>(t), Mean(low, 0), Mean(high, 0)};
        }
        l1 += LnTerm(bins[static_cast<std::size_t>(t)]);
        l2 -= LnTerm(bins[static_cast<std::size_t>(t)]);
      }
      float below = -1, above = -1;
      const KyBW8 level = entropy ? ImgMaxEntropyThreshold(&vector, below, above)
                                  : ImgMinResidueThreshold(&vector, below, above);
      EXPECT_EQ(KyGetError(), KY_OK);
      EXPECT_EQ(level, expected.threshold);
      EXPECT_EQ(below, expected.below);
      EXPECT_EQ(above, expected.above);
    }
  }
  KyBW8HistogramVector small = VectorOf(Bins(257, 1));
  float below = -1, above = -1;
  EXPECT_EQ(ImgMinResidueThreshold(&small, below, above), 0);
  EXPECT_EQ(KyGetError(), KY_ERROR_NOT_256_ENTRIES);
  EXPECT_EQ(ImgMaxEntropyThreshold(nullptr, below, above), 0);
  EXPECT_EQ(KyGetError(), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_STREQ(KyGetTrace(0), "ImgMaxEntropyThreshold");
}

TEST(AutoThreshold, SplitsTwoKindsOfPixelsAtTheValley) {
  Random random(4);
  Picture<KyBW8> picture(80, 60);
  for (KyBW8& v : picture.pixels)
    v = static_cast<KyBW8>((random() % 2 ? 60 : 190) + random() % 21 - 10);
  Canvas<KyBW8> canvas(picture, {3, 2, 1}, random);
  for (int mode = -8; mode <= -4; ++mode) {
    const KyBW8 level = ImgAutoThreshold(canvas.roi(), static_cast<IMG_THRESHOLD_MODES>(mode));
    EXPECT_GE(level, 70) << "mode " << mode;
    EXPECT_LE(level, 180) << "mode " << mode;
  }
  EXPECT_EQ(ImgAutoThreshold(canvas.roi(), IMG_THRESHOLD_RELATIVE, 1.0f),
            0);  // the low 8 bits of 256
  EXPECT_EQ(KyGetError(), KY_OK);
  EXPECT_EQ(ImgAutoThreshold(nullptr, IMG_THRESHOLD_ISODATA), 0);
  EXPECT_EQ(KyGetError(), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(ImgAutoThreshold(canvas.roi(), static_cast<IMG_THRESHOLD_MODES>(-9)), 0);
  EXPECT_EQ(KyGetError(), KY_ERROR_PARAMETER_2_OUT_OF_RANGE);
  EXPECT_EQ(KyGetTraceCount(), 1);
}

TEST(AdaptiveThreshold, NodesHoldTheThresholdsOfTheirTiles) {
  // Each half is of two levels; a node far from the border between them has its own half's
  // threshold.
  KyImage<KyBW8> source(128, 64), surface(128, 64);
  for (int y = 0; y < 64; ++y)
    for (int x = 0; x < 128; ++x)
      source.SetPixel(static_cast<KyBW8>((x < 64 ? 20 : 120) + ((x + y) % 2 == 0 ? 120 : 0)), x, y);
  ASSERT_EQ(ImgAutoAdaptiveThreshold(&source, &surface, IMG_THRESHOLD_ISODATA, 32), KY_OK);
  EXPECT_EQ(surface.GetPixel(32, 32), 80);
  EXPECT_EQ(surface.GetPixel(96, 32), 180);
  for (int x = 33; x <= 96; ++x) EXPECT_GE(surface.GetPixel(x, 32), surface.GetPixel(x - 1, 32));

  // Another size is brought to the source's, also of the image that the source lies on.
  KyImage<KyBW8> other(3, 3);
  ASSERT_EQ(ImgAutoAdaptiveThreshold(&source, &other, IMG_THRESHOLD_ISODATA, 32, 0), KY_OK);
  EXPECT_TRUE(Same(Canvas<KyBW8>::Get(surface), Canvas<KyBW8>::Get(other)));
  KyROI<KyBW8> part(&source, 64, 0, 64, 64);
  ASSERT_EQ(ImgAutoAdaptiveThreshold(&part, &source, IMG_THRESHOLD_ISODATA, 64), KY_OK);
  EXPECT_EQ(source.GetWidth(), 64);
  EXPECT_EQ(source.GetPixel(30, 30), 180);
}

// Tiles that do not divide the picture, of odd sizes, of few pixels and larger than the picture.
TEST(AdaptiveThreshold, NodesOfTilesThatAreCutOff) {
  Random random(5);
  for (const auto& [width, height, tileWidth, tileHeight] : {std::array{70, 41, 16, 0},
                                                             {64, 33, 21, 8},
                                                             {37, 50, 5, 50},
                                                             {29, 12, 90, 7},
                                                             {23, 17, 1, 0},
                                                             {24, 19, 2, 3},
                                                             {31, 30, 6, 5},
                                                             {41, 9, 8, 4}}) {
    SCOPED_TRACE(testing::Message() << width << " x " << height << ", tiles of " << tileWidth);
    const Picture<KyBW8> picture = RandomPicture<KyBW8>(width, height, random);
    Canvas<KyBW8> source(picture, kPlacements[1], random);
    const int tileY = tileHeight != 0 ? tileHeight : tileWidth;
    const int nx = (width + tileWidth - 1) / tileWidth, ny = (height + tileY - 1) / tileY;
    const auto scale = [](int size, int steps) {
      return static_cast<float>(size) / static_cast<float>(steps);
    };
    KyImage<KyBW8> nodes(nx + 1, ny + 1), expected(width, height), surface(width, height);
    for (int j = 0; j <= ny; ++j)
      for (int i = 0; i <= nx; ++i) {
        Bins bins(256);
        for (int y = 0; y < height; ++y)
          for (int x = 0; x < width; ++x) {
            const int right = x - i * width / nx, down = y - j * height / ny;
            if (right >= -(tileWidth / 2) && right < tileWidth / 2 && down >= -(tileY / 2) &&
                down < tileY / 2)
              ++bins[picture.At(x, y)];
          }
        KyBW8HistogramVector histogram = VectorOf(bins);
        nodes.SetPixel(static_cast<KyBW8>(ImgIsodataThreshold(&histogram)), i, j);
      }
    ASSERT_EQ(
        ImgScaleRotate(&nodes, 0, 0, 0, 0, scale(width, nx), scale(height, ny), 0, &expected, 8),
        KY_OK);
    ASSERT_EQ(ImgAutoAdaptiveThreshold(source.roi(), &surface, IMG_THRESHOLD_MIN_RESIDUE, tileWidth,
                                       tileHeight),
              KY_OK);
    EXPECT_TRUE(Same(Canvas<KyBW8>::Get(expected), Canvas<KyBW8>::Get(surface)));
  }
}

TEST(AdaptiveThreshold, RefusalsAndTinyTiles) {
  KyImage<KyBW8> source(9, 7), out(9, 7), small(4, 4);
  const auto mode = IMG_THRESHOLD_ISODATA;
  EXPECT_EQ(ImgAutoAdaptiveThreshold(&source, &out, mode, 0), KY_ERROR_PARAMETER_4_OUT_OF_RANGE);
  EXPECT_EQ(ImgAutoAdaptiveThreshold(&source, &out, mode, -5, 3),
            KY_ERROR_PARAMETER_4_OUT_OF_RANGE);
  EXPECT_EQ(ImgAutoAdaptiveThreshold(&source, &out, mode, 3, -1),
            KY_ERROR_PARAMETER_5_OUT_OF_RANGE);
  EXPECT_STREQ(KyGetTrace(0), "ImgAutoAdaptiveThreshold");
  // An ROI that would leave its parent cannot be sized and stays.
  KyROI<KyBW8> cannot(&small, 0, 0, 2, 2);
  EXPECT_EQ(ImgAutoAdaptiveThreshold(&source, &cannot, mode, 3), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(cannot.GetWidth(), 2);
  for (const int tile : {1, 2, 100, INT_MAX})
    EXPECT_EQ(ImgAutoAdaptiveThreshold(&source, &out, mode, tile, 1), KY_OK);
  KyROI<KyBW8> empty(&source, 0, 0, 0, 7);
  EXPECT_EQ(ImgAutoAdaptiveThreshold(&empty, &out, mode, 3), KY_OK);
}

}  // namespace
