// Affine resampling against a per-pixel model, on every path.
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

#include "tests/support/harness.h"

namespace ky::test {
namespace {

struct Affine {
  const char* name;
  float a, b, c, d, e, f;
};

std::int32_t Fixed(float value) {
  const double scaled = std::trunc(double{value} * 65536.0);
  if (!(std::abs(scaled) < 0x1p62)) return 0;
  return static_cast<std::int32_t>(static_cast<std::int64_t>(scaled) & 0xFFFFFFFF);
}
std::int32_t Wrap(std::int64_t value) { return static_cast<std::int32_t>(value & 0xFFFFFFFF); }

int Blend(int n, int p00, int p01, int p10, int p11, int fx, int fy) {
  const int top = (p00 << n) + fx * (p01 - p00), bottom = (p10 << n) + fx * (p11 - p10);
  return ((top << n) + fy * (bottom - top)) >> (2 * n);
}
KyBW8 Blend(int n, KyBW8 p00, KyBW8 p01, KyBW8 p10, KyBW8 p11, int fx, int fy) {
  return static_cast<KyBW8>(Blend(n, int{p00}, int{p01}, int{p10}, int{p11}, fx, fy));
}
KyC24 Blend(int n, KyC24 p00, KyC24 p01, KyC24 p10, KyC24 p11, int fx, int fy) {
  return {Blend(n, p00.c0, p01.c0, p10.c0, p11.c0, fx, fy),
          Blend(n, p00.c1, p01.c1, p10.c1, p11.c1, fx, fy),
          Blend(n, p00.c2, p01.c2, p10.c2, p11.c2, fx, fy)};
}

// The definition, pixel by pixel.
auto Model(const Affine& t, int n) {
  return [=](const auto& in, auto& out) {
    using T = std::remove_cvref_t<decltype(out.At(0, 0))>;
    const float det = t.a * t.e - t.b * t.d;
    const float ia = t.e / det, ib = -t.b / det, id = -t.d / det, ie = t.a / det;
    const float ic = -(ia * t.c + ib * t.f), jf = -(id * t.c + ie * t.f);
    const std::int64_t ux = Fixed(ia), uy = Fixed(ib), u0 = Fixed(ic);
    const std::int64_t vx = Fixed(id), vy = Fixed(ie), v0 = Fixed(jf);
    const int margin = n == 0 ? 0 : 1;
    for (int y = 0; y < out.height; ++y) {
      for (int x = 0; x < out.width; ++x) {
        const std::int32_t u = Wrap(ux * x + uy * y + u0), v = Wrap(vx * x + vy * y + v0);
        const int ix = u >> 16, iy = v >> 16;
        T& pixel = out.At(x, y);
        std::memset(static_cast<void*>(&pixel), 0, sizeof pixel);
        if (ix < 0 || ix >= in.width - margin || iy < 0 || iy >= in.height - margin) continue;
        if (n == 0)
          pixel = in.At(ix, iy);
        else
          pixel = Blend(n, in.At(ix, iy), in.At(ix + 1, iy), in.At(ix, iy + 1),
                        in.At(ix + 1, iy + 1), (u & 0xFFFF) >> (16 - n), (v & 0xFFFF) >> (16 - n));
      }
    }
  };
}

// Every sampler with every transform of a list.
void CheckTransforms(const std::vector<Affine>& transforms, const std::vector<Size>& sizes) {
  const auto bigger = [](Size s) { return Size{s.width + s.width / 3, s.height + 2}; };
  const auto narrow = [](Size s) { return Size{1 + s.width % 3, s.height}; };
  for (const Affine& t : transforms) {
    for (const int n : {0, 4, 8}) {
      SCOPED_TRACE(std::string(t.name) + ", interpolation " + std::to_string(n));
      const auto call = [&](auto* in, auto* out) {
        return ImgLinearTransform(in, t.a, t.b, t.c, t.d, t.e, t.f, out, n);
      };
      const auto model = Model(t, n);
      constexpr auto kShared = Aliasing::kInPlaceAndOverlap, kApart = Aliasing::kNone;
      CheckOperation<KyBW8, KyBW8>(call, model, sizes, kShared, bigger);
      CheckOperation<KyC24, KyC24>(call, model, sizes, kShared, bigger);
      CheckOperation<KyBW8, KyBW8>(call, model, sizes, kApart, narrow);
      CheckOperation<KyC24, KyC24>(call, model, sizes, kApart, narrow);
    }
  }
}

Affine Rotation(const char* name, double degrees, double scale, float c, float f) {
  const double angle = degrees * std::numbers::pi / 180;
  const auto cosine = static_cast<float>(std::cos(angle) * scale);
  const auto sine = static_cast<float>(std::sin(angle) * scale);
  return {name, cosine, sine, c, -sine, cosine, f};
}

TEST(Affine, EveryWidth) {
  CheckTransforms({Rotation("by 15 degrees", 15, 1.0, 2.5f, 1.25f),
                   {"shift by a part of a pixel", 1, 0, -1.3f, 0, 1, 0.4f},
                   {"enlarged", 2.3f, 0, 0.2f, 0, 1.7f, -0.6f},
                   {"identity", 1, 0, 0, 0, 1, 0}},
                  AwkwardSizes());
}

TEST(Affine, Transforms) {
  constexpr float kHuge = 3e38f, kTiny = 1e-38f;
  CheckTransforms({Rotation("by 90 degrees", 90, 1.0, 3, 20),
                   Rotation("by 100 degrees, reduced", 100, 0.3, 20, 9),
                   Rotation("by -170 degrees, enlarged", -170, 3.0, 90, 30),
                   {"whole pixels", 1, 0, 3, 0, 1, -2},
                   {"far away", 1, 0, 30000, 0, 1, 0},
                   {"mirrored", -1, 0, 60, 0, -1, 8.5f},
                   {"reduced", 0.41f, 0, 3.7f, 0, 0.77f, 1.2f},
                   {"mirrored and enlarged", -1.9f, 0, 100.3f, 0, -3.1f, 20},
                   {"sheared", 1, 0.7f, 0, 0, 1, 0},
                   {"sheared along columns", 1, 0, 0.5f, 0.3f, 1, 0},
                   {"transposed", 0, 1, 0, 1, 0, 0},
                   {"wraps around along a row", 1.0f / 9001, 0, 3.5f, 0, 1, 0},
                   {"wraps around from row to row", 1, 0, 0, 1e-5f, 1.0f / 40000, 0},
                   {"wraps around everywhere", 1e-4f, 3e-5f, 7, -2e-5f, 1e-4f, 3},
                   {"source wraps to itself", 1, 0, 65536, 0, 1, -131072},
                   {"beyond 64 bits", 1, 0, kHuge, 0, 1, -kHuge},
                   {"inverse is infinite", kTiny, 0, 1, 0, 1, 1}},
                  {{131, 17}, {37, 40}, {5, 3}});
}

// Large enough to be done in strips of columns, from a source whose pixels are fetched ahead.
TEST(Affine, LargeTurned) {
  Random random(7);
  const Picture<KyBW8> picture = RandomPicture<KyBW8>(2300, 2000, random);
  Canvas<KyBW8> in(picture, {1, 1, 3}, random);
  for (const Affine& t : {Rotation("", 75, 1.0, -900, 1200), Rotation("", -20, 1.0, -1000, 300)}) {
    Picture<KyBW8> expected(700, 311);
    Model(t, 8)(picture, expected);
    ForEachPath([&](const std::string&) {
      Canvas<KyBW8> out(700, 311, {1, 1, 3}, random);
      ASSERT_EQ(ImgLinearTransform(in.roi(), t.a, t.b, t.c, t.d, t.e, t.f, out.roi(), 8), KY_OK);
      EXPECT_TRUE(Same(expected, out.Get()));
      EXPECT_TRUE(out.OnlyChanged(*out.roi()));
    });
  }
}

TEST(Affine, ScaleRotateMeetsItsPivots) {
  Random random(3);
  const Picture<KyBW8> picture = RandomPicture<KyBW8>(40, 30, random);
  Canvas<KyBW8> in(picture, {1, 1, 3}, random), out(33, 41, {1, 1, 3}, random);
  for (const float angle : {0.0f, 30.0f, -110.0f, 180.0f}) {
    SCOPED_TRACE(angle);
    ASSERT_EQ(
        ImgScaleRotate(in.roi(), 21.5f, 17.25f, 12.5f, 20.5f, 1.5f, 0.75f, angle, out.roi(), 8),
        KY_OK);
    const double radians = double{static_cast<float>(angle * (std::numbers::pi / 180))};
    const auto a = static_cast<float>(std::cos(radians) * 1.5);
    const auto b = static_cast<float>(std::sin(radians) * 0.75);
    const auto d = static_cast<float>(-std::sin(radians) * 1.5);
    const auto e = static_cast<float>(std::cos(radians) * 0.75);
    Picture<KyBW8> expected(33, 41);
    Model({"", a, b, 12.5f - (a * 21.5f + b * 17.25f), d, e, 20.5f - (d * 21.5f + e * 17.25f)}, 8)(
        picture, expected);
    EXPECT_TRUE(Same(expected, out.Get()));
  }
  // Counter-clockwise on the screen: what is right of the pivot comes to lie above it.
  Canvas<KyBW8> dot(Picture<KyBW8>(9, 9), {}, random), turned(9, 9, {}, random);
  dot.roi()->SetPixel(200, 7, 4);
  ASSERT_EQ(ImgScaleRotate(dot.roi(), 4, 4, 4, 4, 1, 1, 90, turned.roi(), 0), KY_OK);
  EXPECT_EQ(turned.roi()->GetPixel(4, 1), 200);
}

TEST(Affine, Refusals) {
  Random random(4);
  Canvas<KyBW8> in(9, 5, kPlacements[1], random), out(7, 6, kPlacements[1], random);
  Canvas<KyC24> colorIn(9, 5, kPlacements[1], random), colorOut(7, 6, kPlacements[1], random);
  KyROI<KyBW8> nowhere;
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  using ImageHarness = Harness<KyBW8>;
  const auto linear = [&](auto* from, auto* to, float a, float e, int bits) {
    return ImgLinearTransform(from, a, 0, 0, 0, e, 0, to, bits);
  };
  const struct {
    KY_ERRORS status, expected;
  } calls[] = {
      {linear(&nowhere, &nowhere, 0, 0, 3), KY_ERROR_NO_IMAGE},
      {linear(in.roi(), out.roi(), 0, 1, 3), KY_ERROR_TRANSFORM_LIMIT},
      {linear(in.roi(), out.roi(), kNaN, 1, 0), KY_ERROR_TRANSFORM_LIMIT},
      {linear(in.roi(), out.roi(), 3e38f, 3e38f, 0), KY_ERROR_TRANSFORM_LIMIT},
      {linear(in.roi(), out.roi(), 1, 1, 3), KY_ERROR_BAD_INTERVAL},
      {linear(in.roi(), out.roi(), 1, 1, -4), KY_ERROR_BAD_INTERVAL},
      {linear(colorIn.roi(), colorOut.roi(), 0, 1, 0), KY_ERROR_TRANSFORM_LIMIT},
  };
  for (const auto& call : calls) EXPECT_EQ(call.status, call.expected);
  ImageHarness::ExpectTrace(KY_ERROR_TRANSFORM_LIMIT, {"ImgLinearTransform"});
  // A destination without pixels is no error, whatever else is wrong.
  EXPECT_EQ(linear(in.roi(), &nowhere, 0, 0, 3), KY_OK);

  EXPECT_EQ(ImgScaleRotate(in.roi(), 0, 0, 0, 0, 0, 1, 10, out.roi(), 8), KY_ERROR_TRANSFORM_LIMIT);
  ImageHarness::ExpectTrace(KY_ERROR_TRANSFORM_LIMIT, {"ImgLinearTransform", "ImgScaleRotate"});
  EXPECT_EQ(ImgScaleRotate(colorIn.roi(), 0, 0, 0, 0, 1, 1, kNaN, colorOut.roi(), 8),
            KY_ERROR_TRANSFORM_LIMIT);
  ImageHarness::ExpectTrace(KY_ERROR_TRANSFORM_LIMIT, {"ImgLinearTransform", "ImgScaleRotate"});
  EXPECT_TRUE(in.Unchanged() && out.Unchanged() && colorOut.Unchanged());
}

}  // namespace
}  // namespace ky::test
