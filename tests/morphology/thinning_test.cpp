// Thinning, thickening and skeletons, against patterns that are compared pixel by pixel, step by
// step.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT
using Grey = Picture<KyBW8>;
using Roi = KyROI<KyBW8>;
using Coefficients = std::array<float, 9>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr Coefficients kEdge = {-1, -1, -1, 0, 1, 0, 1, 1, 1};
constexpr Coefficients kCorner = {0, -1, -1, 1, 1, -1, 0, 1, 0};

Coefficients TurnedRight(const Coefficients& c) {
  return {c[3], c[0], c[1], c[6], c[4], c[2], c[7], c[8], c[5]};
}

bool Matches(const Grey& picture, int x, int y, const Coefficients& coefficients) {
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i < 3; ++i) {
      const float c = coefficients[static_cast<std::size_t>(3 * j + i)];
      const int right = x + i - 1, down = y + j - 1;
      const bool object = picture.Has(right, down) && picture.At(right, down) != 0;
      if (!std::isnan(c) && c != 0 && object != (c > 0)) return false;
    }
  return true;
}

// One step; true when it changed something.
bool Step(Grey& picture, bool thick, const Coefficients& coefficients) {
  const Grey before = picture;
  for (int y = 0; y < picture.height; ++y)
    for (int x = 0; x < picture.width; ++x)
      if ((before.At(x, y) == 0) == thick && Matches(before, x, y, coefficients))
        picture.At(x, y) = thick ? 255 : 0;
  return !(picture == before);
}

Grey Changed(Grey picture, bool thick, const Coefficients& pattern, KERNEL_ROTATION rotation,
             int iterations) {
  const int steps = rotation == KERNEL_ROTATION_NONE ? 1 : 8;
  bool changes = true;
  for (int i = 0; changes && (iterations == 0 || i < iterations); ++i) {
    changes = false;
    Coefficients turned = pattern;
    for (int step = 0; step < steps; ++step) {
      changes |= Step(picture, thick, turned);
      for (int turn = 0; turn < (rotation == KERNEL_ROTATION_CLOCKWISE ? 1 : 7); ++turn)
        turned = TurnedRight(turned);
    }
  }
  return picture;
}

Grey Skeleton(Grey picture) {
  Coefficients patterns[] = {kEdge, kCorner};
  for (int unchanged = 0, step = 0; unchanged < 8; ++step) {
    Coefficients& pattern = patterns[step % 2];
    unchanged = Step(picture, false, pattern) ? 0 : unchanged + 1;
    pattern = TurnedRight(TurnedRight(pattern));
  }
  return picture;
}

// Objects thick enough for many steps: some discs, bars and holes of random levels, and specks.
Grey Objects(int width, int height, Random& random) {
  Grey picture(width, height, 0);
  for (int i = 0; i < 8; ++i) {
    const int x = static_cast<int>(random() % static_cast<unsigned>(width));
    const int y = static_cast<int>(random() % static_cast<unsigned>(height));
    const int a = 1 + static_cast<int>(random() % 30), b = 1 + static_cast<int>(random() % 12);
    const KyBW8 level = i % 4 == 3 ? 0 : static_cast<KyBW8>(1 + random() % 255);
    for (int v = 0; v < height; ++v)
      for (int u = 0; u < width; ++u)
        if (i % 2 == 0 ? std::abs(u - x) <= a && std::abs(v - y) <= b
                       : (u - x) * (u - x) + (v - y) * (v - y) <= a * b)
          picture.At(u, v) = level;
  }
  for (std::size_t i = 0; i < picture.pixels.size() / 50; ++i)
    picture.pixels[random() % picture.pixels.size()] ^= 255;
  return picture;
}

// On every path, in place and not.
template <class Call, class Model>
void CheckOnObjects(const Call& call, const Model& model) {
  Random random(3);
  for (const Size size : {Size{70, 50}, {129, 33}, {64, 16}, {1, 40}, {200, 1}, {150, 130}}) {
    const Grey picture = Objects(size.width, size.height, random), expected = model(picture);
    ForEachPath([&](const std::string&) {
      Canvas<KyBW8> in(picture, {3, 1, 2}, random), out(size.width, size.height, {}, random);
      ASSERT_EQ(call(in.roi(), out.roi()), KY_OK);
      ASSERT_TRUE(Same(expected, out.Get()));
      ASSERT_EQ(call(in.roi(), nullptr), KY_OK);
      ASSERT_TRUE(Same(expected, in.Get()));
      ASSERT_TRUE(in.OnlyChanged(*in.roi()));
    });
  }
}

const std::vector<Size> kSizes = {{1, 1},  {2, 3},   {17, 5},  {63, 4},   {64, 3}, {65, 2}, {9, 16},
                                  {5, 17}, {131, 9}, {200, 2}, {128, 33}, {0, 3},  {3, 0}};

struct Case {
  Coefficients pattern;
  KERNEL_ROTATION rotation;
  int iterations;
};
const Case kCases[] = {
    {{0, -1, 0, 0, 1, 0, 0, 0, 0}, KERNEL_ROTATION_NONE, 1},
    {{0, -1, 0, 0, 0, 0, 0, 0, 0}, KERNEL_ROTATION_CLOCKWISE, 1},
    {{0, 0, 0, 1, 0, 0, 0, 0, -1}, KERNEL_ROTATION_NONE, 0},
    {kEdge, KERNEL_ROTATION_CLOCKWISE, 2},
    {kEdge, KERNEL_ROTATION_ANTICLOCKWISE, 0},
    {kCorner, KERNEL_ROTATION_CLOCKWISE, 0},
    {{kNan, 1e-30F, -0.0F, kNan, kNan, kNan, -1e30F, kNan, 0}, KERNEL_ROTATION_ANTICLOCKWISE, 3},
    {{1, 1, 0, 1, -1, 0, 1, 0, -1}, KERNEL_ROTATION_CLOCKWISE, 0},
    {{-1, -1, -1, -1, -1, -1, 1, 0, 0}, KERNEL_ROTATION_ANTICLOCKWISE, 0},
    {{0, 0, 0, 0, 0, 0, 0, 0, 0}, KERNEL_ROTATION_NONE, 1},
    {{0, 0, 0, 0, 0, 1, 0, 0, 0}, KERNEL_ROTATION_NONE, 2147483647},
};

TEST(Thinning, ThinAndThickMatchTheirDefinition) {
  for (const Case& c : kCases)
    for (const bool thick : {false, true}) {
      SCOPED_TRACE((thick ? "thick " : "thin ") + std::to_string(&c - kCases));
      KyKernel kernel(3, 3, 1, 0, 0, 0);
      std::copy(c.pattern.begin(), c.pattern.end(), kernel.GetDataPtr());
      const auto call = [&](const Roi* in, Roi* out) {
        return (thick ? ImgThick : ImgThin)(in, out, &kernel, c.rotation, c.iterations);
      };
      const auto model = [&](const Grey& in) {
        return Changed(in, thick, c.pattern, c.rotation, c.iterations);
      };
      CheckOnObjects(call, model);
      CheckOperation<KyBW8, KyBW8>(
          call, [&](const Grey& in, Grey& out) { out = model(in); }, kSizes);
    }
}

TEST(Thinning, SkeletonMatchesItsDefinition) {
  CheckOnObjects(ImgSkeleton, Skeleton);
  CheckOperation<KyBW8, KyBW8>(
      ImgSkeleton, [](const Grey& in, Grey& out) { out = Skeleton(in); }, kSizes);
}

// A bar of odd height shrinks to its middle row; a ring stays closed.
TEST(Thinning, SkeletonsAreWhereTheyAreExpected) {
  Random random(1);
  Grey bar(40, 15, 0), ring(31, 31, 0);
  for (int y = 4; y <= 10; ++y)
    for (int x = 3; x < 37; ++x) bar.At(x, y) = 9;
  for (int y = 0; y < 31; ++y)
    for (int x = 0; x < 31; ++x) {
      const int square = (x - 15) * (x - 15) + (y - 15) * (y - 15);
      ring.At(x, y) = square <= 196 && square >= 81 ? 200 : 0;
    }
  Canvas<KyBW8> canvas(bar, {}, random);
  ASSERT_EQ(ImgSkeleton(canvas.roi(), nullptr), KY_OK);
  const Grey thinBar = canvas.Get();
  for (int x = 10; x < 30; ++x)
    for (int y = 0; y < 15; ++y) EXPECT_EQ(thinBar.At(x, y), y == 7 ? 9 : 0);
  Canvas<KyBW8> closed(ring, {}, random);
  ASSERT_EQ(ImgSkeleton(closed.roi(), nullptr), KY_OK);
  const Grey thinRing = closed.Get();
  for (int y = 0; y < 31; ++y)
    for (int x = 0; x < 31; ++x)
      if (thinRing.At(x, y) != 0) {
        int neighbours = 0;
        for (int j = -1; j <= 1; ++j)
          for (int i = -1; i <= 1; ++i) neighbours += thinRing.At(x + i, y + j) != 0;
        EXPECT_EQ(thinRing.At(x, y), 200);
        EXPECT_TRUE(neighbours == 3 || neighbours == 4) << "a gap or a blob at " << x << ", " << y;
      }
  EXPECT_EQ(std::count(thinRing.pixels.begin() + 15 * 31, thinRing.pixels.begin() + 16 * 31, 200),
            2);
}

TEST(Thinning, Refusals) {
  Random random(2);
  Canvas<KyBW8> canvas(9, 7, {1, 1, 1}, random);
  const KyKernel good(KERNEL_PATTERN_1), none, wide(5, 3, 1, 0, 0, 0);
  const auto other = static_cast<KERNEL_ROTATION>(3), negative = static_cast<KERNEL_ROTATION>(-1);
  const struct {
    const KyKernel* pattern;
    KERNEL_ROTATION rotation;
    int iterations;
    KY_ERRORS code;
  } cases[] = {
      {nullptr, other, -1, KY_ERROR_KERNEL_SIZE},
      {&none, other, -1, KY_ERROR_KERNEL_SIZE},
      {&wide, other, -1, KY_ERROR_KERNEL_1703},
      {&good, other, -1, KY_ERROR_UNSUPPORTED_OPERATION},
      {&good, negative, 1, KY_ERROR_UNSUPPORTED_OPERATION},
      {&good, KERNEL_ROTATION_NONE, -1, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ImgThin(canvas.roi(), nullptr, c.pattern, c.rotation, c.iterations), c.code);
    Harness<KyBW8>::ExpectTrace(c.code, {"ImgThin"});
    EXPECT_EQ(ImgThick(canvas.roi(), canvas.roi(), c.pattern, c.rotation, c.iterations), c.code);
    Harness<KyBW8>::ExpectTrace(c.code, {"ImgThick"});
    EXPECT_EQ(ImgThin(nullptr, nullptr, c.pattern, c.rotation, c.iterations), KY_ERROR_NO_IMAGE);
  }
  EXPECT_TRUE(canvas.Unchanged());
}

}  // namespace
