// Transforms and shading correction against their formulas.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ky/transform.h"
#include "ky/uniformize.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

Picture<KyBW8> AllLevels() {
  Picture<KyBW8> levels(256, 1);
  for (int x = 0; x < 256; ++x) levels.At(x, 0) = static_cast<KyBW8>(x);
  return levels;
}

// In the widest type there is, by the formulas as they stand.
KyBW8 Transformed(KyBW8 level, int mode, long double p) {
  const long double t = level / 255.0L;
  const auto s = [p](long double at) { return 1 / (1 + std::exp(-p * (at - 0.5L))); };
  const long double f[] = {1 - t, std::pow(t, p), std::log(1 + p * t) / std::log(1 + p),
                           (std::exp(p * t) - 1) / (std::exp(p) - 1),
                           (s(t) - s(0)) / (s(1) - s(0))};
  return static_cast<KyBW8>(std::floor(255 * f[mode] + 0.5L));
}

TEST(Transform, EveryLevel) {
  const Picture<KyBW8> levels = AllLevels();
  for (int mode = 0; mode < 5; ++mode)
    for (const float p : {0.01f, 0.45f, 1.0f, 2.2f, 10.0f, 300.0f}) {
      SCOPED_TRACE(std::to_string(mode) + ", " + std::to_string(p));
      KyImage<KyBW8> image(256, 1);
      Random random(1);
      Canvas<KyBW8> in(levels, {}, random), out(256, 1, {}, random);
      ASSERT_EQ(ImgTransform(in.roi(), out.roi(), static_cast<IMG_TRANSFORM_MODES>(mode), p),
                KY_OK);
      Picture<KyBW8> expected = levels;
      for (KyBW8& level : expected.pixels) level = Transformed(level, mode, p);
      EXPECT_TRUE(Same(expected, out.Get()));
    }
}

// Parameters at the ends of their range: the curves keep their ends and rise.
TEST(Transform, Extremes) {
  const float least = std::numeric_limits<float>::denorm_min();
  const float most = std::numeric_limits<float>::max();
  const Picture<KyBW8> levels = AllLevels();
  for (const auto& [mode, p] :
       {std::pair{2, least}, {2, most}, {3, least}, {3, 700.0f}, {4, least}, {4, most}}) {
    SCOPED_TRACE(mode);
    Random random(1);
    Canvas<KyBW8> canvas(levels, {}, random);
    KyROI<KyBW8>* const roi = canvas.roi();
    ASSERT_EQ(ImgTransform(roi, roi, static_cast<IMG_TRANSFORM_MODES>(mode), p), KY_OK);
    const Picture<KyBW8> result = canvas.Get();
    EXPECT_EQ(result == levels, p == least);
    EXPECT_EQ(result.At(0, 0), 0);
    EXPECT_EQ(result.At(255, 0), 255);
    EXPECT_TRUE(std::is_sorted(result.pixels.begin(), result.pixels.end()));
  }
}

TEST(Transform, OnEveryPath) {
  const auto call = [](auto... roi) { return ImgTransform(roi..., IMG_TRANSFORM_POWER, 2); };
  KyBW8 levels[256];
  for (int v = 0; v < 256; ++v)
    levels[v] = Transformed(static_cast<KyBW8>(v), IMG_TRANSFORM_POWER, 2);
  const auto level = [&](KyBW8 v) { return levels[v]; };
  CheckOperation<KyBW8, KyBW8>(call, PerPixel([&](KyBW8, KyBW8 v) { return level(v); }));
  CheckOperation<KyC24, KyC24>(
      call, PerPixel([&](KyC24, KyC24 c) { return KyC24(level(c.c0), level(c.c1), level(c.c2)); }));
}

TEST(Transform, Refusals) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const struct {
    int mode;
    float parameter;
    KY_ERRORS code;
  } cases[] = {{-1, 1, KY_ERROR_UNSUPPORTED_OPERATION},
               {5, -1, KY_ERROR_UNSUPPORTED_OPERATION},
               {IMG_TRANSFORM_INVERT, NAN, KY_OK},
               {IMG_TRANSFORM_POWER, 0, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
               {IMG_TRANSFORM_POWER, NAN, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
               {IMG_TRANSFORM_LOGARITHM, -2, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
               {IMG_TRANSFORM_SIGMOID, kInfinity, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
               {IMG_TRANSFORM_EXPONENTIAL, 700.1f, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
               {IMG_TRANSFORM_SIGMOID, 701, KY_OK}};
  for (const auto& c : cases) {
    KyImage<KyBW8> image(2, 2);
    EXPECT_EQ(ImgTransform(&image, &image, static_cast<IMG_TRANSFORM_MODES>(c.mode), c.parameter),
              c.code);
  }
}

KyBW8 Uniform(int s, int l, int level) {
  return static_cast<KyBW8>(std::min(255, (2 * s * level + std::max(l, 1)) / (2 * std::max(l, 1))));
}
KyBW8 Uniform(int s, int l, int level, int k, int dark) {
  if (l <= k) return static_cast<KyBW8>(dark);
  const int twice = 2 * (s - k) * (level - dark) + (l - k), by = 2 * (l - k);
  const int quotient = twice >= 0 ? twice / by : -((-twice + by - 1) / by);
  return static_cast<KyBW8>(std::clamp(dark + quotient, 0, 255));
}

// All pixels over all references, for many levels.
TEST(Uniformize, EveryQuotient) {
  Picture<KyBW8> sources(256, 256), references(256, 256), expected(256, 256);
  for (int i = 0; i < 65536; ++i)  // with other references side by side, which share divisions
    sources.pixels[i] = static_cast<KyBW8>(i / 256), references.pixels[i] = static_cast<KyBW8>(i);
  ForEachPath([&](const std::string&) {
    Random random(1);
    Canvas<KyBW8> in(sources, {}, random), light(references, {}, random),
        dark(256, 256, {}, random), out(256, 256, {}, random);
    for (int level = 0; level < 256; level += level % 3 == 0 ? 1 : 3) {
      for (int i = 0; i < 65536; ++i)
        expected.pixels[i] = Uniform(sources.pixels[i], references.pixels[i], level);
      const auto lightLevel = static_cast<KyBW8>(level);
      ASSERT_EQ(ImgUniformize(in.roi(), light.roi(), lightLevel, out.roi()), KY_OK);
      ASSERT_TRUE(Same(expected, out.Get())) << level;
    }
    for (const int k : {0, 1, 50, 127, 200, 254, 255})
      for (const int level : {0, 1, 100, 200, 254, 255})
        for (const int darkLevel : {0, 7, 99, 255}) {
          dark.Put(Picture<KyBW8>(256, 256, static_cast<KyBW8>(k)));
          for (int i = 0; i < 65536; ++i)
            expected.pixels[i] =
                Uniform(sources.pixels[i], references.pixels[i], level, k, darkLevel);
          ASSERT_EQ(ImgUniformize(in.roi(), light.roi(), static_cast<KyBW8>(level), dark.roi(),
                                  static_cast<KyBW8>(darkLevel), out.roi()),
                    KY_OK);
          ASSERT_TRUE(Same(expected, out.Get())) << k << ", " << level << ", " << darkLevel;
        }
  });
}

TEST(Uniformize, OnEveryPath) {
  CheckOperation<KyBW8, KyBW8, KyBW8>(
      [](auto* source, auto* light, auto* out) { return ImgUniformize(source, light, 180, out); },
      PerPixel([](KyBW8, KyBW8 s, KyBW8 l) { return Uniform(s, l, 180); }));
  CheckOperation<KyC24, KyC24, KyC24>(
      [](auto* source, auto* light, auto* out) {
        return ImgUniformize(source, light, KyC24(180, 255, 3), out);
      },
      PerPixel([](KyC24, KyC24 s, KyC24 l) {
        return KyC24(Uniform(s.c0, l.c0, 180), Uniform(s.c1, l.c1, 255), Uniform(s.c2, l.c2, 3));
      }));
  CheckOperation<KyBW8, KyBW8, KyBW8, KyBW8>(
      [](auto* source, auto* light, auto* dark, auto* out) {
        return ImgUniformize(source, light, 200, dark, 20, out);
      },
      PerPixel([](KyBW8, KyBW8 s, KyBW8 l, KyBW8 k) { return Uniform(s, l, 200, k, 20); }));
  CheckOperation<KyC24, KyC24, KyC24, KyC24>(
      [](auto* source, auto* light, auto* dark, auto* out) {
        return ImgUniformize(source, light, KyC24(200, 10, 255), dark, KyC24(20, 100, 0), out);
      },
      PerPixel([](KyC24, KyC24 s, KyC24 l, KyC24 k) {
        return KyC24(Uniform(s.c0, l.c0, 200, k.c0, 20), Uniform(s.c1, l.c1, 10, k.c1, 100),
                     Uniform(s.c2, l.c2, 255, k.c2, 0));
      }));
}

}  // namespace
