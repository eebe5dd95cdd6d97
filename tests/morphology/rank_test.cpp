// Medians and other ranks, against sorted windows.
#include "ky/rank.h"

#include <algorithm>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

constexpr unsigned kAsWidth = KY_HALF_HEIGHT_AS_WIDTH, kMedian = 0xFFFFFFFF;

KyBW8& Component(KyBW8& pixel, int) { return pixel; }
KyBW8& Component(KyC24& pixel, int i) { return i == 0 ? pixel.c0 : i == 1 ? pixel.c1 : pixel.c2; }

// The rank of every window, by counting levels. A place of the window outside stands at the border.
template <class T>
Picture<T> Ranked(Picture<T> in, long halfWidth, long halfHeight, long long rank) {
  Picture<T> out = in;
  const auto countOf = [](int i, int centre, long half, int n) -> long long {
    const long first = centre - half, last = centre + half;
    if (n == 1) return 2 * half + 1;
    if (i == 0) return first > 0 ? 0 : 1 - first;
    if (i == n - 1) return last < n - 1 ? 0 : last - n + 2;
    return first <= i && i <= last ? 1 : 0;
  };
  const auto first = [](int centre, long half) {
    return static_cast<int>(std::max(0l, centre - half));
  };
  const auto end = [](int centre, long half, int n) {
    return static_cast<int>(std::min<long>(n, centre + half + 1));
  };
  if (rank < 0) rank = ((2ll * halfWidth + 1) * (2 * halfHeight + 1) - 1) / 2;
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x)
      for (int k = 0; k < (sizeof(T) == 3 ? 3 : 1); ++k) {
        long long counts[256] = {}, sum = 0;
        for (int j = first(y, halfHeight); j < end(y, halfHeight, in.height); ++j)
          for (int i = first(x, halfWidth); i < end(x, halfWidth, in.width); ++i)
            counts[Component(in.At(i, j), k)] +=
                countOf(i, x, halfWidth, in.width) * countOf(j, y, halfHeight, in.height);
        int level = 0;
        while ((sum += counts[level]) <= rank) ++level;
        Component(out.At(x, y), k) = static_cast<KyBW8>(level);
      }
  return out;
}

struct Case {
  unsigned halfWidth, halfHeight, rank;
};

template <class T>
void Check(const Case& c, const std::vector<Size>& sizes) {
  SCOPED_TRACE(::testing::Message() << c.halfWidth << ", " << c.halfHeight << ", rank " << c.rank);
  const unsigned halfHeight = c.halfHeight == kAsWidth ? c.halfWidth : c.halfHeight;
  CheckOperation<T, T>(
      [&](const KyROI<T>* in, KyROI<T>* out) {
        return c.rank == kMedian ? ImgMedian(in, out, c.halfWidth, c.halfHeight)
                                 : ImgRank(in, out, c.halfWidth, c.halfHeight, c.rank);
      },
      [&](const Picture<T>& in, Picture<T>& out) {
        out = Ranked(in, c.halfWidth, halfHeight, c.rank == kMedian ? -1ll : c.rank);
      },
      sizes);
}

TEST(Rank, SmallWindows) {
  std::vector<Size> sizes = AwkwardSizes();
  std::erase_if(sizes, [](Size size) { return size.width > 140; });
  sizes.push_back({1100, 2});  // more than the columns that are sorted at a time
  for (unsigned rank = 0; rank < 9; ++rank) {
    Check<KyBW8>({1, 1, rank}, {{1, 1}, {2, 5}, {70, 3}});
    Check<KyC24>({1, 1, rank}, {{1, 1}, {2, 5}, {30, 4}});
  }
  for (const unsigned half : {1u, 2u}) {
    Check<KyBW8>({half, kAsWidth, kMedian}, sizes);
    Check<KyC24>({half, half, kMedian},
                 {{1, 1}, {2, 5}, {5, 4}, {22, 3}, {43, 6}, {65, 3}, {0, 3}, {3, 0}, {400, 2}});
  }
}

// A network of exchanges is right if it is right for two levels. Rows are sorted first, so that the
// numbers of pixels at the upper level, row by row, are all that matters: these are all of them.
TEST(Rank, MedianOf5x5OfTwoLevels) {
  constexpr int kWindows = 6 * 6 * 6 * 6 * 6;
  Picture<KyBW8> picture(5 * kWindows, 6);
  for (int y = 0, power = 1; y < 6; ++y, power = y < 5 ? power * 6 : 1)
    for (int x = 0; x < picture.width; ++x)
      picture.At(x, y) = x % 5 < x / 5 / power % 6 ? 200 : 100;
  const Picture<KyBW8> expected = Ranked(picture, 2, 2, -1);
  Random random(4);
  ForEachPath([&](const std::string&) {
    Canvas<KyBW8> source(picture, {}, random), out(picture.width, 6, {}, random);
    ASSERT_EQ(ImgMedian(source.roi(), out.roi(), 2), KY_OK);
    EXPECT_TRUE(Same(expected, out.Get()));
  });
}

TEST(Rank, WindowsOfAnySize) {
  const std::vector<Size> sizes = {{1, 1},  {1, 9},   {9, 1}, {2, 2}, {17, 5},
                                   {5, 17}, {40, 20}, {0, 3}, {3, 0}, {540, 2}};
  constexpr unsigned kLargest = 1u << 20;
  for (const Case& c : {Case{0, 0, kMedian},
                        {0, 1, kMedian},
                        {1, 0, kMedian},
                        {3, kAsWidth, kMedian},
                        {7, 2, kMedian},
                        {7, 7, kMedian},
                        {127, 0, kMedian},
                        {0, 127, kMedian},
                        {2, 25, kMedian},
                        {20, 30, kMedian},
                        {90, 63, kMedian},
                        {150, 63, 32767},
                        {255, 30, 5},
                        {256, 30, kMedian},
                        {150, 63, 38227 - 32768},
                        {90, 90, kMedian},
                        {25, 127, kMedian},
                        {128, 127, kMedian},
                        {1, 128, kMedian},
                        {200, 130, kMedian},
                        {kLargest, kLargest, kMedian},
                        {kLargest, 0, 7},
                        {0, kLargest, kLargest},
                        {1, 1, 0},
                        {1, 1, 8},
                        {1, 2, 3},
                        {5, 5, kMedian},
                        {5, 1, 31},
                        {1, 5, 0},
                        {2, 3, 34},
                        {4, 6, 100},
                        {90, 90, 32760},
                        {90, 90, 32761 - 1},
                        {100, 90, 36380},
                        {100, 90, 3000},
                        {kLargest, kLargest, 0xFFFFFFFE}})
    Check<KyBW8>(c, sizes);
  for (const Case& c : {Case{3, 3, kMedian}, {2, 1, 3}, {1, 5, 9}, {5, 140, kMedian}})
    Check<KyC24>(c, {{1, 1}, {2, 5}, {33, 7}, {200, 3}});
  Check<KyC24>({7, 7, kMedian}, {{1, 1}, {20, 30}, {530, 2}});
}

// Smooth pictures stay at one upper level for long and come back to it later; what is known of a
// level from before must still be right.
TEST(Rank, SlopesAndSteps) {
  Random random(3);
  Picture<KyBW8> picture(300, 24);
  for (int y = 0; y < 24; ++y)
    for (int x = 0; x < 300; ++x)
      picture.At(x, y) = static_cast<KyBW8>(128 + 100 * ((x / 40) % 2) - x / 5 % 30 * 4 +
                                            static_cast<int>(random() % 9) + y);
  constexpr unsigned kHalves[][2] = {{3, 3}, {7, 7}, {10, 10}, {40, 12}, {40, 35}};
  for (const auto& half : kHalves) {
    SCOPED_TRACE(half[0]);
    const Picture<KyBW8> expected = Ranked(picture, half[0], half[1], -1);
    ForEachPath([&](const std::string&) {
      Canvas<KyBW8> source(picture, {1, 0, 2}, random);
      ASSERT_EQ(ImgMedian(source.roi(), nullptr, half[0], half[1]), KY_OK);
      EXPECT_TRUE(Same(expected, source.Get()));
    });
  }
}

TEST(Rank, Refusals) {
  Random random(1);
  Canvas<KyBW8> source(5, 4, {}, random);
  constexpr unsigned kTooLarge = (1u << 20) + 1;
  const auto expect = [&](KY_ERRORS status, KY_ERRORS code, const char* trace) {
    EXPECT_EQ(status, code);
    Harness<KyBW8>::ExpectTrace(code, {trace});
    EXPECT_TRUE(source.Unchanged());
  };
  expect(ImgMedian(source.roi(), nullptr, kTooLarge, kTooLarge), KY_ERROR_PARAMETER_1_OUT_OF_RANGE,
         "ImgMedian (BW8)");
  expect(ImgMedian(source.roi(), nullptr, 1, kTooLarge), KY_ERROR_PARAMETER_2_OUT_OF_RANGE,
         "ImgMedian (BW8)");
  expect(ImgRank(source.roi(), nullptr, 1, 2, 15), KY_ERROR_PARAMETER_3_OUT_OF_RANGE,
         "ImgRank (BW8)");
}

}  // namespace
