// Moments, centres and inertia against sums over the pixels.
#include "ky/moments.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tests/support/reading.h"

namespace {

using namespace ky::test;  // NOLINT

__extension__ using Wide = unsigned __int128;

constexpr KyBW8 kThreshold = 128;

std::vector<double> AsNumbers(const KyMoments& m) {
  return {m.m00, m.m10, m.m01, m.m20, m.m11, m.m02, m.m30, m.m21, m.m12, m.m03};
}

template <class At>
std::vector<double> Sums(int width, int height, At weight) {
  constexpr int kPowers[10][2] = {{0, 0}, {1, 0}, {0, 1}, {2, 0}, {1, 1},
                                  {0, 2}, {3, 0}, {2, 1}, {1, 2}, {0, 3}};
  Wide sums[10] = {};
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const Wide w = weight(x, y);
      for (int i = 0; i < 10 && w != 0; ++i) {
        Wide product = w;
        for (int p = 0; p < kPowers[i][0]; ++p) product *= static_cast<unsigned>(x);
        for (int q = 0; q < kPowers[i][1]; ++q) product *= static_cast<unsigned>(y);
        sums[i] += product;
      }
    }
  return std::vector<double>(sums, sums + 10);
}

std::vector<double> Measure(const KyROI<KyBW8>* roi) {
  KyMoments binary{}, weighed{};
  float x = -7, y = -7, weighedX = -7, weighedY = -7;
  const KY_ERRORS status[] = {
      ImgBinaryMoments(roi, kThreshold, binary), ImgWeighedMoments(roi, weighed),
      ImgGravityCenter(roi, kThreshold, x, y), ImgCentroid(roi, weighedX, weighedY)};
  std::vector<double> numbers = AsNumbers(binary);
  for (const double m : AsNumbers(weighed)) numbers.push_back(m);
  for (const float centre : {x, y, weighedX, weighedY}) numbers.push_back(centre);
  numbers.insert(numbers.end(), status, status + 4);
  return numbers;
}

std::vector<double> Model(const Picture<KyBW8>& picture) {
  const int w = picture.width, h = picture.height;
  std::vector<double> numbers =
      Sums(w, h, [&](int x, int y) { return picture.At(x, y) >= kThreshold; });
  for (const double m : Sums(w, h, [&](int x, int y) { return picture.At(x, y); }))
    numbers.push_back(m);
  std::vector<double> status(2, picture.pixels.empty() ? KY_ERROR_NO_PIXELS : KY_OK);
  for (const std::size_t from : {0, 10}) {
    const bool some = numbers[from] != 0;
    for (const std::size_t i : {1, 2})
      numbers.push_back(some ? static_cast<float>(numbers[from + i] / numbers[from]) : -7);
    status.push_back(some ? KY_OK : KY_ERROR_NO_PIXELS);
  }
  numbers.insert(numbers.end(), status.begin(), status.end());
  return numbers;
}

TEST(Moments, AsDefined) {
  std::vector<Size> sizes = AwkwardSizes();
  for (const Size size : {Size{301, 257}, Size{2049, 20}, Size{65, 2100}, Size{5000, 1}})
    sizes.push_back(size);  // beyond what is added up at once
  CheckReading<KyBW8>(Measure, Model, sizes);
}

// The largest sums that there are, by the formulas of sums of powers; they stay exact below 2^53.
TEST(Moments, LargeWhiteImages) {
  std::vector<KyBW8> memory(1 << 24, 255);
  for (const Size size : {Size{4096, 4096}, Size{1 << 24, 1}, Size{2, 1 << 20}}) {
    KyImage<KyBW8> image;
    ASSERT_EQ(image.Attach(memory.data(), size.width, size.height, size.width), KY_OK);
    const auto powers = [](int length, double sums[4]) {
      const Wide n = static_cast<unsigned>(length);
      const Wide s1 = n * (n - 1) / 2;
      sums[0] = double(n), sums[1] = double(s1);
      sums[2] = double(n * (n - 1) * (2 * n - 1) / 6), sums[3] = double(s1 * s1);
    };
    double x[4], y[4];
    powers(size.width, x), powers(size.height, y);
    const std::vector<double> expected = {x[0] * y[0], x[1] * y[0], x[0] * y[1], x[2] * y[0],
                                          x[1] * y[1], x[0] * y[2], x[3] * y[0], x[2] * y[1],
                                          x[1] * y[2], x[0] * y[3]};
    ForEachPath([&](const std::string& path) {
      if (path != "plain" && path != Paths().back().name) return;
      KyMoments binary{}, weighed{};
      ImgBinaryMoments(&image, 255, binary);
      ImgWeighedMoments(&image, weighed);
      for (std::size_t i = 0; i < 10; ++i) {
        const double most = expected[i] * 4e-15;  // the rounding of the model
        EXPECT_NEAR(AsNumbers(binary)[i], expected[i], expected[i] < 9e15 ? 0 : most) << i;
        EXPECT_NEAR(AsNumbers(weighed)[i], 255 * expected[i], 255 * most) << i;
      }
    });
  }
}

struct Inertia {
  float major = -7, minor = -7, angle = -7;
  KY_ERRORS status = KY_OK;
  bool operator==(const Inertia&) const = default;
};
Inertia InertiaOf(const KyROI<KyBW8>* roi) {
  Inertia i;
  i.status = ImgInertia(roi, kThreshold, i.major, i.minor, i.angle);
  return i;
}

TEST(Inertia, OfShapes) {
  struct Case {
    const char* name;
    bool (*inside)(int x, int y);
    float major, minor, angle;
  };
  const Case cases[] = {
      {"a point", [](int x, int y) { return x == 7 && y == 9; }, 0, 0, 0},
      {"a row", [](int x, int y) { return x < 5 && y == 3; }, 2, 0, 0},
      {"a column", [](int x, int y) { return x == 3 && y < 5; }, 2, 0, 90},
      {"a square", [](int x, int y) { return x < 5 && y < 5; }, 2, 2, 0},
      {"5 x 3", [](int x, int y) { return x < 5 && y < 3; }, 2, 2 / 3.0f, 0},
      {"a diagonal", [](int x, int y) { return x == y && x < 5; }, 4, 0, 45},
      {"the other one", [](int x, int y) { return x + y == 4; }, 4, 0, -45},
      {"a steep line", [](int x, int y) { return y == 3 * x && x < 5; }, 20, 0,
       static_cast<float>(std::atan(3.0) * 180 / std::numbers::pi)},
  };
  ForEachPath([&](const std::string&) {
    for (const Case& each : cases) {
      KyImage<KyBW8> image(40, 30);
      KyROI<KyBW8> roi(&image, 3, 2, 37, 28);
      for (int y = 0; y < 28; ++y)
        for (int x = 0; x < 37; ++x) roi.SetPixel(each.inside(x, y) ? 200 : 20, x, y);
      const Inertia i = InertiaOf(&roi);
      EXPECT_EQ(i.status, KY_OK);
      EXPECT_FLOAT_EQ(i.major, each.major) << each.name;
      EXPECT_EQ(i.minor, each.minor) << each.name;
      EXPECT_FLOAT_EQ(i.angle, each.angle) << each.name;
      KySetAngleUnit(KY_ANGLE_REVOLUTIONS);
      EXPECT_FLOAT_EQ(InertiaOf(&roi).angle, each.angle / 360) << each.name;
      KySetAngleUnit(KY_ANGLE_DEGREES);
    }
  });
  KyImage<KyBW8> tall(3, 20000);  // leans by 10^-8, to the left or to the right
  for (int y = 0; y < 20000; ++y) tall.SetPixel(255, 1, y);
  for (const int x : {0, 2}) {
    KyROI<KyBW8> leaning(&tall, x / 2, 0, 2, 20000);
    tall.SetPixel(255, x, 19999);
    EXPECT_EQ(InertiaOf(&leaning).angle, 90);
  }
  KyImage<KyBW8> dark(9, 9);
  EXPECT_EQ(InertiaOf(&dark), (Inertia{-7, -7, -7, KY_ERROR_NO_PIXELS}));
}

// Against deviations from the centre, in long double.
TEST(Inertia, OfNoise) {
  Random random(5);
  for (int turn = 0; turn < 20; ++turn) {
    const Picture<KyBW8> picture = RandomPicture<KyBW8>(90, 70, random);
    long double n = 0, x0 = 0, y0 = 0, u20 = 0, u11 = 0, u02 = 0;
    const auto each = [&](auto take) {
      for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
          if (picture.At(x, y) >= kThreshold) take(x, y);
    };
    each([&](int x, int y) { ++n, x0 += x, y0 += y; });
    if (n == 0) continue;
    each([&](int x, int y) {
      const long double dx = x - x0 / n, dy = y - y0 / n;
      u20 += dx * dx / n, u11 += dx * dy / n, u02 += dy * dy / n;
    });
    const long double root = std::hypot(u20 - u02, 2 * u11);
    Canvas<KyBW8> canvas(picture, kPlacements[turn % 3], random);
    const Inertia i = InertiaOf(canvas.roi());
    EXPECT_FLOAT_EQ(i.major, static_cast<float>((u20 + u02 + root) / 2));
    EXPECT_FLOAT_EQ(i.minor, static_cast<float>((u20 + u02 - root) / 2));
    if (root > 1e-9L) {
      EXPECT_NEAR(i.angle, double(std::atan2(2 * u11, u20 - u02)) * 90 / std::numbers::pi, 1e-4);
    }
  }
}

}  // namespace
