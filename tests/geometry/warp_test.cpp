// Warps by table against a per-pixel model on every path, and the tables that unroll a ring.
#include <cmath>
#include <numbers>

#include "tests/support/harness.h"

namespace ky::test {
namespace {

template <class T>
T Black() {
  T pixel;
  std::memset(static_cast<void*>(&pixel), 0, sizeof pixel);
  return pixel;
}

// Tables for a destination that point into a source and a little beside it: anywhere, or from
// neighbours to neighbours.
struct Tables {
  Tables(Size out, Size in, int beside, Random& random)
      : x(out.width, out.height), y(out.width, out.height), packed(out.width + 2, out.height + 1) {
    const auto position = [&](int limit) {
      return static_cast<int>(random() % static_cast<unsigned>(limit + 2 * beside)) - beside;
    };
    const bool smooth = random() % 2 != 0, back = random() % 2 != 0;
    const int steep = static_cast<int>(random() % 12);
    const auto along = [&](int i, int limit) {
      const int n = limit + 2 * beside, noise = static_cast<int>(random() % 2);
      return (back ? 8 * n - i % n + noise : i + noise) % n - beside;
    };
    for (int row = 0; row < out.height; ++row) {
      for (int column = 0; column < out.width; ++column) {
        const int atX = smooth ? along(column, in.width) : position(in.width);
        const int atY = smooth ? along(row + column * steep / 10, in.height) : position(in.height);
        x.SetPixel(static_cast<KyBW16>(atX), column, row);
        y.SetPixel(static_cast<KyBW16>(atY), column, row);
        packed.SetPixel(static_cast<KyBW32>(atX) | static_cast<KyBW32>(atY) << 16, column, row);
      }
    }
  }
  KyImage<KyBW16> x, y;
  KyImage<KyBW32> packed;
};

// Calls `check(source, its pixels, destination, image of the destination)` on every path, for areas
// that are apart and areas that overlap.
template <class T, class Check>
void ForEachPlace(const std::vector<Size>& sizes, Size (*sourceSize)(Size), const Check& check) {
  ForEachPath([&](const std::string&) {
    Random random(6);
    for (const Size size : sizes) {
      if (::testing::Test::HasFailure()) return;
      SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
      const Size from = sourceSize(size);
      const Picture<T> picture = RandomPicture<T>(from.width, from.height, random);
      Canvas<T> in(picture, {3, 1, 1}, random), out(size.width, size.height, {1, 2, 5}, random);
      check(*in.roi(), picture, *out.roi(), out, random);
      EXPECT_TRUE(in.Unchanged());
      Canvas<T> shared(size.width + from.width + 1, size.height + from.height + 1, {}, random);
      KyROI<T> source(shared.image(), 1, 0, from.width, from.height);
      KyROI<T> destination(shared.image(), 0, 1, size.width, size.height);
      check(source, Canvas<T>::Get(source), destination, shared, random);
    }
  });
}

template <class T>
void CheckTwoTables(Size (*sourceSize)(Size)) {
  ForEachPlace<T>(
      AwkwardSizes(), sourceSize,
      [](const KyROI<T>& source, const Picture<T>& pixels, KyROI<T>& destination, Canvas<T>& canvas,
         Random& random) {
        const Size size = {destination.GetWidth(), destination.GetHeight()};
        const Tables tables(size, {pixels.width, pixels.height}, 3, random);
        const int shiftX = static_cast<int>(random() % 5) - 2;
        const int shiftY = random() % 4 == 0 ? INT32_MIN : 1;
        Picture<T> expected(size.width, size.height, Black<T>());
        for (int y = 0; y < size.height; ++y) {
          for (int x = 0; x < size.width; ++x) {
            const std::int64_t sx =
                std::int64_t{static_cast<std::int16_t>(tables.x.GetPixel(x, y))} + shiftX;
            const std::int64_t sy =
                std::int64_t{static_cast<std::int16_t>(tables.y.GetPixel(x, y))} + shiftY;
            if (sx >= 0 && sx < pixels.width && sy >= 0 && sy < pixels.height)
              expected.At(x, y) = pixels.At(static_cast<int>(sx), static_cast<int>(sy));
          }
        }
        ASSERT_EQ(ImgWarp(&source, &destination, &tables.x, &tables.y, shiftX, shiftY), KY_OK);
        EXPECT_TRUE(Same(expected, Canvas<T>::Get(destination)));
        EXPECT_TRUE(canvas.OnlyChanged(destination));
      });
}

TEST(Warp, TwoTables) {
  const auto bigger = [](Size s) { return Size{s.width + 7, s.height + 3}; };
  const auto narrow = [](Size s) { return Size{s.width % 5, 1 + s.height / 2}; };
  CheckTwoTables<KyBW8>(bigger);
  CheckTwoTables<KyC24>(bigger);
  CheckTwoTables<KyBW8>(narrow);
  CheckTwoTables<KyC24>(narrow);
}

// The call stops at the first bad entry, wherever it is.
template <class T>
void CheckPacked() {
  const auto same = [](Size s) { return s; };
  ForEachPlace<T>(
      AwkwardSizes(), same,
      [](const KyROI<T>& source, const Picture<T>& pixels, KyROI<T>& destination, Canvas<T>& canvas,
         Random& random) {
        const int w = pixels.width, h = pixels.height;
        Tables tables({w, h}, {w, h}, 0, random);
        const int stop = static_cast<int>(random() % static_cast<unsigned>(2 * w * h + 1));
        const bool stops = stop < w * h;
        if (stops)
          tables.packed.SetPixel(random() % 2 == 0 ? static_cast<KyBW32>(w)
                                                   : 0x80000000u | static_cast<KyBW32>(h) << 16,
                                 stop % w, stop / w);
        Picture<T> expected = Canvas<T>::Get(destination);
        for (int i = 0; i < std::min(stop, w * h); ++i) {
          const KyBW32 entry = tables.packed.GetPixel(i % w, i / w);
          expected.At(i % w, i / w) =
              pixels.At(static_cast<int>(entry & 0xFFFF), static_cast<int>(entry >> 16));
        }
        ASSERT_EQ(ImgWarp(&source, &destination, &tables.packed),
                  stops ? KY_ERROR_WARP_MAP : KY_OK);
        EXPECT_TRUE(Same(expected, Canvas<T>::Get(destination)));
        EXPECT_TRUE(canvas.OnlyChanged(destination));
      });
}

TEST(Warp, Packed) {
  CheckPacked<KyBW8>();
  CheckPacked<KyC24>();
}

// Pixels of a large source are fetched ahead.
TEST(Warp, LargeSource) {
  KyImage<KyBW8> in(2300, 2000), out(2300, 2000);
  for (int x = 0; x < 2300; ++x) in.SetPixel(static_cast<KyBW8>(x % 251), x, x % 2000);
  KyImage<KyBW16> xs(2300, 2000), ys(2300, 2000);
  KyImage<KyBW32> packed(2300, 2000);
  for (int y = 0; y < 2000; ++y) {
    for (int x = 0; x < 2300; ++x) {
      const unsigned fromX = static_cast<unsigned>(2299 - x), fromY = static_cast<unsigned>(y);
      xs.SetPixel(static_cast<KyBW16>(fromX - 7), x, y);
      ys.SetPixel(static_cast<KyBW16>(fromY + 9), x, y);
      packed.SetPixel(fromX | fromY << 16, x, y);
    }
  }
  const auto mirrored = [&] {
    ImgHorizontalMirror(&out);
    return Canvas<KyBW8>::Get(out);
  };
  const Picture<KyBW8> expected = Canvas<KyBW8>::Get(in);
  ASSERT_EQ(ImgWarp(&in, &out, &xs, &ys, 7, -9), KY_OK);
  EXPECT_TRUE(Same(expected, mirrored()));
  ASSERT_EQ(ImgWarp(&in, &out, &packed), KY_OK);
  EXPECT_TRUE(Same(expected, mirrored()));
}

TEST(Warp, Refusals) {
  Random random(8);
  Canvas<KyBW8> in(9, 5, kPlacements[1], random), out(9, 5, kPlacements[1], random);
  Canvas<KyBW8> small(8, 5, {}, random);
  KyROI<KyBW8> nowhere;
  KyImage<KyBW16> table(9, 5), wide(10, 5), none;
  KyImage<KyBW32> packed(9, 5), low(9, 4), nonePacked;
  const auto two = [&](const KyROI<KyBW8>* from, KyROI<KyBW8>* to, const KyImage<KyBW16>* x,
                       const KyImage<KyBW16>* y) { return ImgWarp(from, to, x, y, 0, 0); };
  const struct {
    KY_ERRORS status, expected;
  } calls[] = {
      {two(&nowhere, out.roi(), &wide, &table), KY_ERROR_NO_IMAGE},
      {two(in.roi(), out.roi(), &wide, &none), KY_ERROR_NO_IMAGE},
      {two(in.roi(), out.roi(), &table, &wide), KY_ERROR_SIZE_MISMATCH},
      {two(in.roi(), out.roi(), &wide, &table), KY_ERROR_SIZE_MISMATCH},
      {ImgWarp(in.roi(), small.roi(), &low), KY_ERROR_SIZE_MISMATCH},
      {ImgWarp(&nowhere, small.roi(), &low), KY_ERROR_NO_IMAGE},
      {ImgWarp(in.roi(), out.roi(), &nonePacked), KY_ERROR_WARP_2200},
      {ImgWarp(&nowhere, &nowhere, &low), KY_ERROR_NO_IMAGE},
      {ImgWarp(in.roi(), out.roi(), &low), KY_ERROR_WARP_2200},
  };
  for (const auto& call : calls) EXPECT_EQ(call.status, call.expected) << &call - calls;
  Harness<KyBW8>::ExpectTrace(KY_ERROR_WARP_2200, {"ImgWarp"});
  EXPECT_TRUE(in.Unchanged() && out.Unchanged() && small.Unchanged());
}

// Entries as written down in the definition.
TEST(CircleWarp, Tables) {
  struct Case {
    float centerX, centerY;
    int rows;
    float radius1, radius2;
    int columns;
    float start, end;
  };
  for (const Case& c :
       {Case{100.25f, 80.5f, 31, 20, 50, 200, 0, 360}, Case{-3, 4, 2, 0, 9.75f, 7, 90, -45},
        Case{60, 60, 1, 10, 40, 12, 10, 20}, Case{60, 60, 9, 10, 40, 1, 30, 20},
        Case{0, 0, 3, 1e9f, -1e9f, 5, 0, 100}, Case{40000.5f, -40000.5f, 2, 0, 0, 2, 0, 90},
        Case{1e12f, -1e12f, 2, 1, 2, 3, 0, 90}}) {
    KyImage<KyBW16> xs, ys(3, 3);
    ASSERT_EQ(ImgSetCircleWarp(c.centerX, c.centerY, c.rows, c.radius1, c.radius2, c.columns,
                               c.start, c.end, &xs, &ys),
              KY_OK);
    ASSERT_EQ(xs.GetWidth(), c.columns);
    ASSERT_EQ(ys.GetHeight(), c.rows);
    for (int i = 0; i < c.columns; ++i) {
      const double start = KyToRadians(c.start), end = KyToRadians(c.end);
      const int n = c.columns - 1;
      const double theta = n == 0 ? start : ((n - i) * start + i * end) / n;
      float t = 0, u = 1;
      for (int j = 0; j < c.rows; ++j) {
        const auto on = [&](double radius, double part, double center) {
          return static_cast<float>(part * radius + center);
        };
        const auto entry = [](double value) {
          const double limited = std::min(std::max(value, -2147483648.0), 2147483647.0);
          return static_cast<KyBW16>(static_cast<std::int64_t>(limited));
        };
        const float x = t * on(c.radius1, std::cos(theta), c.centerX) +
                        u * on(c.radius2, std::cos(theta), c.centerX);
        const float y = t * on(c.radius1, std::sin(theta), c.centerY) +
                        u * on(c.radius2, std::sin(theta), c.centerY);
        ASSERT_EQ(xs.GetPixel(i, j), entry(x)) << i << ", " << j;
        ASSERT_EQ(ys.GetPixel(i, j), entry(y)) << i << ", " << j;
        if (c.rows > 1) {
          t += static_cast<float>(1.0 / (c.rows - 1));
          u -= static_cast<float>(1.0 / (c.rows - 1));
        }
      }
    }
  }
}

// A ring whose level is the distance from its centre becomes rows of nearly one level each.
TEST(CircleWarp, UnrollsARing) {
  KyImage<KyBW8> ring(201, 201), flat(360, 41);
  for (int y = 0; y < 201; ++y)
    for (int x = 0; x < 201; ++x)
      ring.SetPixel(static_cast<KyBW8>(std::hypot(x - 100, y - 100)), x, y);
  KyImage<KyBW16> xs, ys;
  ASSERT_EQ(ImgSetCircleWarp(100, 100, 41, 40, 80, 360, 0, 359, &xs, &ys), KY_OK);
  ASSERT_EQ(ImgWarp(&ring, &flat, &xs, &ys, 0, 0), KY_OK);
  for (int y = 0; y < 41; ++y)
    for (int x = 0; x < 360; ++x) ASSERT_NEAR(flat.GetPixel(x, y), 80 - y, 2) << x << ", " << y;
}

TEST(CircleWarp, Refusals) {
  KyImage<KyBW16> x(2, 2), y(2, 2);
  const auto set = [&](int rows, int columns, KyImage<KyBW16>* to) {
    return ImgSetCircleWarp(0, 0, rows, 1, 2, columns, 0, 90, &x, to);
  };
  EXPECT_EQ(set(3, 3, nullptr), KY_ERROR_NO_IMAGE);
  Harness<KyBW8>::ExpectTrace(KY_ERROR_NO_IMAGE, {"ImgSetCircleWarp"});
  EXPECT_EQ(set(-1, 3, &y), KY_ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(set(3, -1, &y), KY_ERROR_NOT_ENOUGH_MEMORY);
  Harness<KyBW8>::ExpectTrace(KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgSetCircleWarp"});
  EXPECT_EQ(x.GetWidth(), 2);
  for (const Size empty : {Size{0, 3}, Size{3, 0}, Size{0, 0}}) {
    EXPECT_EQ(set(empty.height, empty.width, &y), KY_OK);
    for (const auto* table : {&x, &y}) {
      EXPECT_EQ(table->GetWidth(), empty.width);
      EXPECT_EQ(table->GetHeight(), empty.height);
    }
  }
  EXPECT_EQ(set(INT32_MAX, 1000, &y), KY_ERROR_NOT_ENOUGH_MEMORY);
}

}  // namespace
}  // namespace ky::test
