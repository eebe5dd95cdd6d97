// Levels, products and energies of complex numbers against their definitions in double precision.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "tests/frequency/numbers.h"

namespace {

using namespace ky::test;  // NOLINT

KyBW8 Level(double x) {
  return static_cast<KyBW8>(std::isnan(x) ? 0 : std::clamp(std::floor(x + 0.5), 0.0, 255.0));
}
double Modulus(KyComplex64 z) { return std::sqrt(double{z.re} * z.re + double{z.im} * z.im); }
KyBW8 ModulusLevel(KyComplex64 z) { return Level(Modulus(z)); }
KyBW8 RealLevel(KyComplex64 z) { return Level(z.re); }
KyBW8 ArgumentLevel(KyComplex64 z) {
  if (z.re == 0 && z.im == 0) return 0;
  const double turn = std::atan2(double{z.im}, double{z.re}) / (2 * std::numbers::pi);
  return std::isnan(turn) ? KyBW8{0} : static_cast<KyBW8>(int(std::floor(256 * turn + 0.5)) & 255);
}
Picture<KyBW8> Rescaled(const Picture<KyComplex64>& in, bool logarithmic) {
  const auto law = [=](double x) { return logarithmic ? std::log1p(x) : x; };
  double most = 0;
  for (const KyComplex64 z : in.pixels) most = std::fmax(most, Modulus(z));
  Picture<KyBW8> out(in.width, in.height);
  for (std::size_t i = 0; i < in.pixels.size(); ++i) {
    const double modulus = Modulus(in.pixels[i]);
    out.pixels[i] = std::isinf(most) ? KyBW8(std::isinf(modulus) ? 255 : 0)
                    : most == 0      ? KyBW8{0}
                                     : Level(255 * law(modulus) / law(most));
  }
  return out;
}

const struct {
  const char* name;
  KY_ERRORS (*call)(const KyROI<KyComplex64>*, KyROI<KyBW8>*) noexcept;
  KyBW8 (*level)(KyComplex64);
} kLevels[] = {{"modulus", ImgComplexModulus, ModulusLevel},
               {"argument", ImgComplexArgument, ArgumentLevel},
               {"real", ImgComplexReal, RealLevel}};

TEST(Complex, Levels) {
  for (const auto& c : kLevels) {
    SCOPED_TRACE(c.name);
    CheckOperation<KyBW8, KyComplex64>(c.call,
                                       PerPixel([&](KyBW8, KyComplex64 z) { return c.level(z); }));
  }
}

TEST(Complex, RescaledModulus) {
  for (const bool logarithmic : {false, true})
    CheckOperation<KyBW8, KyComplex64>(
        [=](auto* in, auto* out) { return ImgComplexRescaledModulus(in, out, logarithmic); },
        [=](const Picture<KyComplex64>& in, Picture<KyBW8>& out) {
          out = Rescaled(in, logarithmic);
        });
}

// Levels halfway between two are rounded up, although the moduli are no numbers of double
// precision.
TEST(Complex, RescaledModulusOfHalves) {
  Random random(1);
  for (const auto& [re, im] : {std::pair{1, 1}, {1, 2}, {2, 3}}) {
    Picture<KyComplex64> picture(511, 1);
    for (int k = 0; k <= 510; ++k)
      picture.pixels[static_cast<std::size_t>(k)] = {float(re * k), float(im * k)};
    Canvas<KyComplex64> in(picture, {}, random);
    ForEachPath([&](const std::string&) {
      Canvas<KyBW8> out(511, 1, {}, random);
      ASSERT_EQ(ImgComplexRescaledModulus(in.roi(), out.roi(), false), KY_OK);
      for (int k = 0; k <= 510; ++k) ASSERT_EQ(out.roi()->GetPixel(k, 0), (k + 1) / 2) << k;
    });
  }
}

TEST(Complex, Products) {
  for (const bool conjugate : {false, true}) {
    const auto call = [=](auto* a, auto* b, auto* out) {
      return ImgComplexMultiply(a, b, out, conjugate);
    };
    CheckOperation<KyComplex64, KyComplex64, KyComplex64>(
        call, PerPixel([=](KyComplex64, KyComplex64 a, KyComplex64 b) {
          return conjugate ? KyComplex64{a.re * b.re + a.im * b.im, a.im * b.re - a.re * b.im}
                           : KyComplex64{a.re * b.re - a.im * b.im, a.im * b.re + a.re * b.im};
        }),
        AwkwardSizes(), Aliasing::kNone);

    // Wherever the destination lies on the sources, the product is that of copies.
    Random random(4);
    const auto picture = RandomPicture<KyComplex64>(90, 9, random);
    for (const auto& [right, down] : {std::pair{0, 0}, {1, 0}, {-1, 1}, {30, 2}, {31, 2}}) {
      Canvas<KyComplex64> shared(picture, {}, random), apart(50, 4, {}, random);
      const KyROI<KyComplex64> a(shared.image(), 5, 2, 50, 4), b(shared.image(), 35, 4, 50, 4);
      KyROI<KyComplex64> out(shared.image(), 5 + right, 2 + down, 50, 4);
      ASSERT_EQ(call(&a, &b, apart.roi()), KY_OK);
      ASSERT_EQ(call(&a, &b, &out), KY_OK);
      EXPECT_TRUE(Same(apart.Get(), Canvas<KyComplex64>::Get(out)));
    }
  }
}

// What is neither zero nor of a usual size, next to what is, on every path.
TEST(Complex, LevelsOfUnusualNumbers) {
  using Limits = std::numeric_limits<float>;
  std::vector<float> parts = {0,      -0.0f,  1,     -1,          0.5f,   127.5f,
                              254.5f, 255.5f, -0.5f, 0.49999997f, 3e-30f, Limits::denorm_min(),
                              1e30f};
  const std::vector<float> worse = {Limits::max(), Limits::infinity(), -Limits::infinity(),
                                    Limits::quiet_NaN(), Limits::signaling_NaN()};
  for (const std::size_t count : {std::size_t{0}, std::size_t{1}, worse.size()}) {
    if (count > 0) parts.insert(parts.end(), worse.begin(), worse.begin() + std::ptrdiff_t(count));
    Picture<KyComplex64> picture;
    for (const float re : parts)
      for (const float im : parts) picture.pixels.push_back({re, im});
    picture.width = static_cast<int>(picture.pixels.size());
    picture.height = 1;
    ForEachPath([&](const std::string&) {
      Random random(1);
      Canvas<KyComplex64> in(picture, {}, random);
      Canvas<KyBW8> out(picture.width, 1, {}, random);
      for (const auto& c : kLevels) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(c.call(in.roi(), out.roi()), KY_OK);
        for (int x = 0; x < picture.width; ++x)
          EXPECT_EQ(out.Get().At(x, 0), c.level(picture.At(x, 0))) << picture.At(x, 0);
      }
      for (const bool logarithmic : {false, true}) {
        ASSERT_EQ(ImgComplexRescaledModulus(in.roi(), out.roi(), logarithmic), KY_OK);
        EXPECT_TRUE(Same(Rescaled(picture, logarithmic), out.Get()));
      }
    });
  }
}

// Angles close to the middle between two levels, and on the axes and diagonals.
TEST(Complex, ArgumentsAllAround) {
  Random random(1);
  Picture<KyComplex64> picture(16 * 1024, 1);
  for (int i = 0; i < picture.width; ++i) {
    const double angle = 2 * std::numbers::pi * (i % 1024) / 512 + (i / 1024 - 8) * 1e-7;
    const double modulus = std::exp2(static_cast<int>(random() % 60) - 30);
    picture.At(i, 0) = {float(modulus * std::cos(angle)), float(modulus * std::sin(angle))};
  }
  ForEachPath([&](const std::string&) {
    Canvas<KyComplex64> in(picture, {}, random);
    Canvas<KyBW8> out(picture.width, 1, {}, random);
    ASSERT_EQ(ImgComplexArgument(in.roi(), out.roi()), KY_OK);
    const auto levels = out.Get();
    for (int i = 0; i < picture.width; ++i)
      ASSERT_EQ(levels.At(i, 0), ArgumentLevel(picture.At(i, 0))) << picture.At(i, 0);
  });
}

std::vector<double> Energies(const Picture<KyComplex64>& picture) {
  const int halfWidth = picture.width / 2, halfHeight = picture.height / 2;
  const int most = static_cast<int>(std::ceil(std::hypot(halfWidth, halfHeight)));
  std::vector<double> energies;
  for (int radius = 0; radius <= most; ++radius) {
    double sum = 0;
    for (int y = 0; y < picture.height; ++y)
      for (int x = 0; x < picture.width; ++x) {
        const int u = x > halfWidth ? x - picture.width : x;
        const int v = y > halfHeight ? y - picture.height : y;
        if (u * u + v * v > radius * radius) continue;
        const KyComplex64 z = picture.At(x, y);
        sum += double{z.re} * z.re + double{z.im} * z.im;
      }
    energies.push_back(sum);
  }
  return energies;
}

TEST(Complex, EnergyOfDiscs) {
  Random random(1);
  for (const Size size :
       SizesToTry({{1, 1}, {2, 1}, {5, 4}, {6, 8}, {31, 1}, {1, 32}, {40, 30}, {0, 9}})) {
    SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
    const auto picture = RandomPicture<KyComplex64>(size.width, size.height, random);
    Canvas<KyComplex64> canvas(picture, {1, 1, 1}, random);
    const std::vector<double> expected = Energies(picture);
    for (const int room : {1, 3, 60, 400}) {
      KyVector energies;
      ASSERT_EQ(energies.SetStructure(8, room, 1, 4), KY_OK);
      ASSERT_EQ(ImgComplexDiscEnergy(canvas.roi(), &energies), KY_OK);
      ASSERT_EQ(energies.GetNbGroup(), std::min(room, static_cast<int>(expected.size())));
      for (int i = 0; i < energies.GetNbGroup(); ++i)
        EXPECT_FLOAT_EQ(static_cast<float*>(energies.GetDataPtr())[i],
                        static_cast<float>(expected[std::size_t(i)]));
    }
  }
}

TEST(Complex, EnergyNeedsAVectorOfFloats) {
  KyImage<KyComplex64> image(4, 4);
  EXPECT_EQ(ImgComplexDiscEnergy(&image, nullptr), KY_ERROR_VECTOR_1611);
  constexpr int kOthers[][4] = {
      {4, 9, 1, 1}, {8, 9, 1, 1}, {8, 9, 1, 2}, {8, 9, 2, 4}, {8, 0, 1, 4}};
  for (const auto& [size, groups, length, type] : kOthers) {
    KyVector other;
    ASSERT_EQ(other.SetStructure(size, groups, length, type), KY_OK);
    EXPECT_EQ(ImgComplexDiscEnergy(&image, &other), KY_ERROR_VECTOR_1611);
    EXPECT_EQ(other.GetNbGroup(), 0);
  }
}

}  // namespace
