// Noise, correlograms, regression and sharpness against their definitions.
#include "ky/quality.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/reading.h"

namespace {

using namespace ky::test;  // NOLINT

constexpr float kInfinity = std::numeric_limits<float>::infinity();

// check(a, b as pictures, ROIs of them) on every path, at awkward sizes and places.
template <class A, class B, class Check>
void OnPairs(Check check) {
  std::vector<Size> sizes = AwkwardSizes();
  sizes.push_back({70000, 3});  // beyond what is added up at once
  ForEachPath([&](const std::string&) {
    Random random(1);
    int turn = 0;
    for (const Size size : SizesToTry(sizes)) {
      if (::testing::Test::HasFailure()) return;
      SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
      const auto a = RandomPicture<A>(size.width, size.height, random);
      const auto b = RandomPicture<B>(size.width, size.height, random);
      Canvas<A> inA(a, kPlacements[turn % 3], random);
      Canvas<B> inB(b, kPlacements[(turn + turn / 3) % 3], random);
      check(a, b, inA.roi(), inB.roi());
      EXPECT_TRUE(inA.Unchanged() && inB.Unchanged());
      ++turn;
    }
  });
}

std::vector<double> ElementsOf(const Picture<KyC24>& picture) {
  std::vector<double> elements;
  for (const KyC24 c : picture.pixels)
    elements.insert(elements.end(), {c.c0 + 0., c.c1 + 0., c.c2 + 0.});
  return elements;
}
template <class T>
std::vector<double> ElementsOf(const Picture<T>& picture) {
  return {picture.pixels.begin(), picture.pixels.end()};
}

template <class A, class B>
void CheckNoise() {
  constexpr double kUnit = sizeof(A) == sizeof(B) ? 1 : 256;
  OnPairs<A, B>([](const auto& a, const auto& b, auto* roiA, auto* roiB) {
    const std::vector<double> s = ElementsOf(a), r = ElementsOf(b);
    double signal = 0, error = 0;  // exact integers below 2^53
    for (std::size_t i = 0; i < s.size(); ++i)
      signal += r[i] * r[i], error += (kUnit * s[i] - r[i]) * (kUnit * s[i] - r[i]);
    float noise = -7, decibels = -7;
    const KY_ERRORS status = s.empty() ? KY_ERROR_NO_PIXELS : KY_OK;
    EXPECT_EQ(ImgRmsNoise(roiA, roiB, noise), status);
    EXPECT_EQ(ImgSignalNoiseRatio(roiA, roiB, decibels), status);
    if (s.empty()) {
      EXPECT_EQ(noise, -7);
      EXPECT_EQ(decibels, -7);
      return;
    }
    EXPECT_FLOAT_EQ(noise, static_cast<float>(std::sqrt(error / double(s.size())) / kUnit));
    const float expected =
        error == 0 ? kInfinity : static_cast<float>(10 * std::log10(signal / error));
    EXPECT_FLOAT_EQ(decibels, expected);
  });
}
TEST(Noise, AsDefined) {
  CheckNoise<KyBW8, KyBW8>();
  CheckNoise<KyBW16, KyBW16>();
  CheckNoise<KyC24, KyC24>();
  CheckNoise<KyBW8, KyBW16>();
}

TEST(Noise, Extremes) {
  ForEachPath([](const std::string&) {
    KyImage<KyBW16> white(70000, 3), black(70000, 3);
    for (int y = 0; y < 3; ++y)
      std::fill_n(static_cast<KyBW16*>(white.GetPixelPtr(0, y)), 70000, KyBW16(65535));
    float noise = 0, decibels = 0;
    ImgRmsNoise(&white, &black, noise);
    EXPECT_EQ(noise, 65535);
    ImgSignalNoiseRatio(&white, &black, decibels);
    EXPECT_EQ(decibels, -kInfinity);
    ImgSignalNoiseRatio(&black, &white, decibels);
    EXPECT_EQ(decibels, 0);
    ImgSignalNoiseRatio(&black, &black, decibels);
    EXPECT_EQ(decibels, kInfinity);
  });
}

TEST(Correlogram, CountsPairs) {
  KyImage<KyBW32> counts(3, 900);
  OnPairs<KyBW8, KyBW8>([&](const auto& a, const auto& b, auto* roiA, auto* roiB) {
    std::vector<KyBW32> expected(256 * 256, 0u);
    for (std::size_t i = 0; i < a.pixels.size(); ++i) ++expected[b.pixels[i] * 256u + a.pixels[i]];
    ASSERT_EQ(ImgCorrelogram(roiA, roiB, &counts), KY_OK);
    EXPECT_EQ(Canvas<KyBW32>::Get(counts).pixels, expected);
    EXPECT_EQ(counts.GetWidth(), 256);
  });
  KyImage<KyBW8> one(2, 2), other(2, 3);
  EXPECT_EQ(ImgCorrelogram(&one, &other, nullptr), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(ImgCorrelogram(&one, &other, &counts), KY_ERROR_SIZE_MISMATCH);
}

TEST(LinearRegression, AsDefined) {
  OnPairs<KyBW8, KyBW8>([](const auto& a, const auto& b, auto* roiA, auto* roiB) {
    long double n = 0, sa = 0, sb = 0, aa = 0, bb = 0, ab = 0;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) {
      const int p = a.pixels[i], q = b.pixels[i];
      ++n, sa += p, sb += q, aa += p * p, bb += q * q, ab += p * q;
    }
    const long double v = n * aa - sa * sa, w = n * bb - sb * sb, common = n * ab - sa * sb;
    float gain = -7, offset = -7, correlation = -7;
    const KY_ERRORS status = ImgLinearRegression(roiA, roiB, gain, offset, correlation);
    EXPECT_EQ(status, n == 0 ? KY_ERROR_NO_PIXELS : v == 0 ? KY_ERROR_SINGULAR_SYSTEM : KY_OK);
    const bool fits = status == KY_OK;
    EXPECT_FLOAT_EQ(gain, fits ? static_cast<float>(common / v) : -7);
    EXPECT_FLOAT_EQ(offset, fits ? static_cast<float>((aa * sb - sa * ab) / v) : -7);
    EXPECT_FLOAT_EQ(correlation, !fits    ? -7
                                 : w == 0 ? 0
                                          : static_cast<float>(common / std::sqrt(v * w)));
  });
}

TEST(Focusing, AsDefined) {
  OnPairs<KyBW8, KyBW8>([](const auto& a, const auto&, auto* roi, auto*) {
    double sum = 0;
    for (int y = 0; y + 1 < a.height; ++y)
      for (int x = 0; x + 1 < a.width; ++x) {
        const int across = a.At(x + 1, y) - a.At(x, y), down = a.At(x, y + 1) - a.At(x, y);
        sum += across * across + down * down;
      }
    float sharpness = -7;
    const bool some = a.width > 1 && a.height > 1;
    EXPECT_EQ(ImgFocusing(roi, sharpness), some ? KY_OK : KY_ERROR_NO_PIXELS);
    const double pixels = double(a.width - 1) * double(a.height - 1);
    EXPECT_EQ(sharpness, some ? static_cast<float>(sum / pixels) : -7);
  });
}

}  // namespace
