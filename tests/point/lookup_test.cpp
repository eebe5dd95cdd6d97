// Lookup tables against their definitions, level by level.
#include "ky/lookup.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ky/statistics.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

std::vector<KyBW8> RandomTable(Random& random) {
  std::vector<KyBW8> table(256);
  for (KyBW8& level : table) level = static_cast<KyBW8>(random());
  return table;
}

TEST(Lookup, TablesOnEveryPath) {
  Random random(5);
  const std::vector<KyBW8> table = RandomTable(random);
  KyBW8Vector vector(256, 0);
  std::copy(table.begin(), table.end(), vector.begin());
  const auto model = PerPixel([&](KyBW8, KyBW8 v) { return table[v]; });
  CheckOperation<KyBW8, KyBW8>([&](auto... roi) { return ImgLut(roi..., table.data()); }, model);
  CheckOperation<KyBW8, KyBW8>([&](auto... roi) { return ImgLut(roi..., &vector); }, model);
}

// All levels in all lanes, and a table that lies in the destination.
TEST(Lookup, EveryLevelAndATableThatIsOverwritten) {
  Random random(6);
  Picture<KyBW8> levels(257, 256);
  for (int y = 0; y < 256; ++y)
    for (int x = 0; x < 257; ++x) levels.At(x, y) = static_cast<KyBW8>(x + y);
  const std::vector<KyBW8> table = RandomTable(random);
  Picture<KyBW8> expected = levels;
  for (KyBW8& level : expected.pixels) level = table[level];
  ForEachPath([&](const std::string&) {
    Canvas<KyBW8> in(levels, {}, random), out(257, 256, {}, random);
    auto* const inside = static_cast<KyBW8*>(out.roi()->GetPixelPtr(1, 0));
    std::copy(table.begin(), table.end(), inside);
    ASSERT_EQ(ImgLut(in.roi(), out.roi(), inside), KY_OK);
    EXPECT_TRUE(Same(expected, out.Get()));
  });
}

TEST(Lookup, TablesOfOtherLengthsAreRefused) {
  KyImage<KyBW8> image(3, 2);
  for (const unsigned length : {0u, 255u, 257u}) {
    KyBW8Vector vector(length, 9);
    EXPECT_EQ(ImgLut(&image, &image, &vector), KY_ERROR_NOT_256_ENTRIES);
    EXPECT_STREQ(KyGetTrace(0), "ImgLut");
  }
  EXPECT_EQ(ImgLut(&image, &image, static_cast<KyBW8Vector*>(nullptr)), KY_ERROR_NOT_256_ENTRIES);
  EXPECT_EQ(ImgLut(&image, &image, static_cast<KyBW8*>(nullptr)), KY_ERROR_NOT_256_ENTRIES);
  EXPECT_EQ(KyGetTraceCount(), 0);
  EXPECT_EQ(image.GetPixel(0, 0), 0);
}

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(Normalize, AsDefined) {
  struct {
    float mean, deviation;
  } const wanted[] = {{128, 40},  {0, 10},         {127.3f, 0},
                      {300, -20}, {-1e30f, 3e38f}, {20, kInfinity}};
  for (const auto& target : wanted) {
    const float mean = target.mean, deviation = target.deviation;
    SCOPED_TRACE(mean);
    const auto call = [&](auto... roi) { return ImgNormalize(roi..., mean, deviation); };
    const auto model = [&](const Picture<KyBW8>& in, Picture<KyBW8>& out) {
      // The statistics have a test of their own.
      Random random(7);
      Canvas<KyBW8> canvas(in, {}, random);
      float sigma, mu;
      ImgPixelStdDev(canvas.roi(), sigma, mu);
      const float ratio = sigma == 0 ? 0 : deviation / sigma;
      for (int i = 0; i < in.width * in.height; ++i) {
        const float scaled = static_cast<float>(in.pixels[i]) * ratio, base = ratio * mu;
        const float offset = mean - base, v = scaled + offset;
        out.pixels[i] = std::isnan(v) || v < 0 ? 0 : v > 255 ? 255 : static_cast<KyBW8>(v);
      }
    };
    std::vector<Size> sizes = {{1, 1}, {9, 5}, {64, 3}, {131, 17}};
    CheckOperation<KyBW8, KyBW8>(call, model, sizes);
  }

  // What has the mean and the deviation already stays as it is, also where the mean is rounded.
  const KyBW8 levels[] = {25, 75, 175};
  KyImage<KyBW8> image(3, 1);
  for (int x = 0; x < 3; ++x) image.SetPixel(levels[x], x, 0);
  float deviation, mean;
  ASSERT_EQ(ImgPixelStdDev(&image, deviation, mean), KY_OK);
  ASSERT_EQ(ImgNormalize(&image, &image, mean, deviation), KY_OK);
  for (int x = 0; x < 3; ++x) EXPECT_EQ(image.GetPixel(x, 0), levels[x]);

  const auto call = [](auto... roi) { return ImgNormalize(roi..., 1, 1); };
  KyImage<KyBW8> none(0, 4);
  EXPECT_EQ(call(&none, &none), KY_ERROR_NO_PIXELS);
  EXPECT_EQ(KyGetTraceCount(), 3);
}

KyBW8 GainOffsetModel(KyBW8 level, float gain, float offset) {
  const auto truncate = [](double v) {
    return static_cast<std::int32_t>(std::isnan(v) ? 0
                                                   : std::clamp(v, -2147483648.0, 2147483647.0));
  };
  const std::int32_t g = truncate(gain * 32.0f), o = truncate(offset);
  const std::uint32_t product = static_cast<std::uint32_t>(g) * level;
  const std::uint32_t s = (product >> 5) + static_cast<std::uint32_t>(o);
  return s <= 255 ? static_cast<KyBW8>(s) : static_cast<std::int32_t>(s) < 0 ? 0 : 255;
}

TEST(GainOffset, EveryLevelUnderManyLaws) {
  Picture<KyBW8> levels(259, 1);
  for (int x = 0; x < 259; ++x) levels.At(x, 0) = static_cast<KyBW8>(x);
  const float gains[] = {0,     1,      0.5f, 1.01f, 7.9f,     8.03f, 8.1f,   255.95f,   255.97f,
                         256.f, -0.03f, -1,   2e5f,  67108864, 1e30f, -1e30f, kInfinity, NAN};
  const float offsets[] = {
      0,     0.9f,       -0.9f,     17,     -40,           255,        256,
      -255,  -65272,     -65273,    -65280, -70000,        2147418112, 2147483520,
      -2e9f, -kInfinity, kInfinity, NAN,    -2147483648.0f};
  ForEachPath([&](const std::string&) {
    Random random(8);
    for (const float gain : gains)
      for (const float offset : offsets) {
        SCOPED_TRACE(std::to_string(gain) + " and " + std::to_string(offset));
        Canvas<KyBW8> in(levels, {}, random), out(259, 1, {}, random);
        ASSERT_EQ(ImgGainOffset(in.roi(), out.roi(), gain, offset), KY_OK);
        Picture<KyBW8> expected = levels;
        for (KyBW8& level : expected.pixels) level = GainOffsetModel(level, gain, offset);
        ASSERT_TRUE(Same(expected, out.Get()));
      }
  });
}

TEST(GainOffset, OnEveryPath) {
  const auto check = [](float gain, float offset) {
    CheckOperation<KyBW8, KyBW8>(
        [=](auto... roi) { return ImgGainOffset(roi..., gain, offset); },
        PerPixel([=](KyBW8, KyBW8 v) { return GainOffsetModel(v, gain, offset); }));
  };
  check(1.7f, -33);
  check(-1, 100);
}

TEST(GainOffset, EachComponentByItsLaw) {
  const struct {
    float gain[3], offset[3];
  } cases[] = {{{1.7f, 0.5f, 1}, {-33, 100, 0}}, {{1.7f, -1, 1e30f}, {-33, 100, NAN}}};
  for (const auto& law : cases)
    CheckOperation<KyC24, KyC24>(
        [&](auto... roi) { return ImgGainOffset(roi..., law.gain, law.offset); },
        PerPixel([&](KyC24, KyC24 c) {
          return KyC24(GainOffsetModel(c.c0, law.gain[0], law.offset[0]),
                       GainOffsetModel(c.c1, law.gain[1], law.offset[1]),
                       GainOffsetModel(c.c2, law.gain[2], law.offset[2]));
        }));
}

TEST(Lookup, FalseColors) {
  Random random(9);
  KyC24Vector palette(256, KyC24());
  for (KyC24& color : palette)
    color = KyC24(static_cast<KyBW8>(random()), static_cast<KyBW8>(random()),
                  static_cast<KyBW8>(random()));
  CheckOperation<KyC24, KyBW8>([&](auto... roi) { return ImgLut(roi..., &palette); },
                               PerPixel([&](KyC24, KyBW8 v) { return palette[v]; }));
  KyImage<KyBW8> grey(3, 2);
  KyImage<KyC24> colors(3, 2);
  palette.SetNumElements(255);
  EXPECT_EQ(ImgLut(&grey, &colors, &palette), KY_ERROR_NOT_256_ENTRIES);
}

TEST(Lookup, LevelsOf16Bits) {
  Random random(10);
  const std::vector<Size> sizes = {{1, 2}, {31, 2}, {64, 3}, {129, 4}, {2100, 2}};
  for (const unsigned elements : {1u, 256u, 257u, 4096u, 70000u})
    for (const unsigned bitOffset : {0u, 4u, 7u, 8u, 15u}) {
      SCOPED_TRACE(std::to_string(elements) + " elements, " + std::to_string(bitOffset));
      KyBW8Vector table(elements, 0);
      for (KyBW8& level : table) level = static_cast<KyBW8>(random());
      CheckOperation<KyBW8, KyBW16>(
          [&](auto... roi) { return ImgLut(roi..., &table, bitOffset); },
          PerPixel([&](KyBW8, KyBW16 v) {
            return table[std::min<unsigned>(v >> bitOffset, elements - 1)];
          }),
          sizes);
    }
  // A table that is the destination.
  KyBW8Vector table(300, 0);
  for (unsigned i = 0; i < 300; ++i) table[i] = static_cast<KyBW8>(7 * i);
  KyImage<KyBW16> deep(300, 1);
  KyImage<KyBW8> grey;
  grey.Attach(table.GetDataPtr(), 300, 1, 300);
  for (int x = 0; x < 300; ++x) deep.SetPixel(static_cast<KyBW16>(299 - x), x, 0);
  ASSERT_EQ(ImgLut(&deep, &grey, &table, 0), KY_OK);
  for (int x = 0; x < 300; ++x) ASSERT_EQ(grey.GetPixel(x, 0), static_cast<KyBW8>(7 * (299 - x)));
  KyBW8Vector empty;
  EXPECT_EQ(ImgLut(&deep, &grey, &empty, 16), KY_ERROR_NOT_256_ENTRIES);
  EXPECT_EQ(ImgLut(&deep, &grey, &table, 16), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
}

}  // namespace
