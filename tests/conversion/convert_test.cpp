// Conversions between pixel types against their laws, pixel by pixel.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>

#include "ky/conversion.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT
using std::is_same_v;

template <class T>
constexpr bool kIsGrey = std::is_integral_v<T>;

KyC24 ColorOf(KyC24 c) { return c; }
KyC24 ColorOf(KyC24A c) { return {c.c0, c.c1, c.c2}; }
KyBW8 Widened(unsigned v, int bits) {
  return static_cast<KyBW8>(v << (8 - bits) | v >> (2 * bits - 8));
}
KyC24 ColorOf(KyC15 c) {
  const unsigned w = c.bits;
  return {Widened(w & 31, 5), Widened(w >> 5 & 31, 5), Widened(w >> 10 & 31, 5)};
}
KyC24 ColorOf(KyC16 c) {
  const unsigned w = c.bits;
  return {Widened(w & 31, 5), Widened(w >> 5 & 63, 6), Widened(w >> 11, 5)};
}
template <class T>
requires kIsGrey<T> KyC24 ColorOf(T grey) {
  const auto level = static_cast<KyBW8>(grey >> (8 * sizeof(T) - 8));
  return {level, level, level};
}

// One pixel of type A as one of type B.
template <class B, class A>
B Converted(A pixel) {
  const KyC24 c = ColorOf(pixel);
  if constexpr (kIsGrey<B>) {
    if constexpr (kIsGrey<A> && sizeof(A) > sizeof(B)) {
      return static_cast<B>(pixel >> 8 * (sizeof(A) - sizeof(B)));
    } else {
      using Level = std::conditional_t<kIsGrey<A>, A, KyBW8>;
      Level level;
      if constexpr (kIsGrey<A>)
        level = pixel;
      else
        level = static_cast<KyBW8>((9798 * c.c0 + 19235 * c.c1 + 3735 * c.c2 + 16384) >> 15);
      const auto whites = std::numeric_limits<B>::max() / std::numeric_limits<Level>::max();
      return static_cast<B>(level * whites);
    }
  } else if constexpr (is_same_v<B, KyC15>) {
    return {static_cast<std::uint16_t>(c.c0 >> 3 | c.c1 >> 3 << 5 | c.c2 >> 3 << 10)};
  } else if constexpr (is_same_v<B, KyC16>) {
    return {static_cast<std::uint16_t>(c.c0 >> 3 | c.c1 >> 2 << 5 | c.c2 >> 3 << 11)};
  } else if constexpr (is_same_v<B, KyC24A>) {
    return {c.c0, c.c1, c.c2, 255};
  } else {
    return c;
  }
}

using AllTypes = std::tuple<KyBW8, KyBW16, KyBW32, KyC15, KyC16, KyC24, KyC24A>;

template <class Body>
void ForEachPair(Body body) {
  const auto each = [&]<class A, class B>(A, B) {
    if constexpr (!is_same_v<A, B>) body(A(), B());
  };
  std::apply(
      [&](auto... a) {
        const auto from = [&](auto one) {
          std::apply([&](auto... b) { (each(one, b), ...); }, AllTypes());
        };
        (from(a), ...);
      },
      AllTypes());
}

TEST(Convert, AllPairs) {
  std::vector<Size> sizes = {{0, 3}, {131, 5}, {700, 2}};
  for (int width : {1, 2, 3, 7, 8, 15, 16, 17, 31, 32, 33, 47, 63, 64, 65, 66, 127, 128, 129})
    sizes.push_back({width, 2});
  int pairs = 0;
  ForEachPair([&]<class A, class B>(A, B) {
    SCOPED_TRACE("pair " + std::to_string(++pairs));
    CheckOperation<B, A>([](auto... roi) { return ImgConvert(roi...); },
                         PerPixel([](B, A pixel) { return Converted<B>(pixel); }), sizes);
  });
  EXPECT_EQ(pairs, 42);
}

// Every level and every packed colour, and all greys of colours on a grid that has their extremes.
TEST(Convert, EveryPixelOf16Bits) {
  Random random(1);
  const auto check = [&]<class A, class B>(const Picture<A>& picture, B) {
    Canvas<A> in(picture, {}, random);
    Canvas<B> out(picture.width, picture.height, {}, random);
    Picture<B> expected(picture.width, picture.height);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
      expected.pixels[i] = Converted<B>(picture.pixels[i]);
    ASSERT_EQ(ImgConvert(in.roi(), out.roi()), KY_OK);
    EXPECT_TRUE(Same(expected, out.Get()));
  };
  Picture<KyBW16> levels(257, 256);
  Picture<KyC15> c15(257, 256);
  Picture<KyC16> c16(257, 256);
  Picture<KyC24> colors(52 * 52, 52);
  for (std::size_t i = 0; i < levels.pixels.size(); ++i)
    levels.pixels[i] = c15.pixels[i].bits = c16.pixels[i].bits = static_cast<KyBW16>(i);
  for (std::size_t i = 0; i < colors.pixels.size(); ++i)
    colors.pixels[i] = KyC24(static_cast<KyBW8>(i % 52 * 5), static_cast<KyBW8>(i / 52 % 52 * 5),
                             static_cast<KyBW8>(i / 52 / 52 * 5));
  ForEachPath([&](const std::string&) {
    check(levels, KyBW8()), check(levels, KyBW32()), check(levels, KyC16());
    check(c15, KyC24()), check(c15, KyC16()), check(c15, KyBW8());
    check(c16, KyC24A()), check(c16, KyC15()), check(c16, KyBW16());
    check(colors, KyBW8()), check(colors, KyC15()), check(colors, KyC16());
  });
}

// A source and a destination of other types that lie in the same memory.
TEST(Convert, SharedMemory) {
  Random random(2);
  ForEachPath([&](const std::string&) {
    ForEachPair([&]<class A, class B>(A, B) {
      constexpr int kWidth = 75, kHeight = 5;
      for (const int shift : {0, 4, 4 * kWidth, -8}) {
        alignas(64) KyBW8 memory[6000];
        for (KyBW8& byte : memory) byte = static_cast<KyBW8>(random());
        KyImage<A> from;
        KyImage<B> to;
        from.Attach(reinterpret_cast<A*>(memory + 1024), kWidth, kHeight, kWidth * 4);
        to.Attach(reinterpret_cast<B*>(memory + 1024 + shift), kWidth, kHeight, kWidth * 4);
        Picture<B> expected(kWidth, kHeight);
        const Picture<A> old = Canvas<A>::Get(from);
        for (std::size_t i = 0; i < old.pixels.size(); ++i)
          expected.pixels[i] = Converted<B>(old.pixels[i]);
        ASSERT_EQ(ImgConvert(&from, &to), KY_OK);
        ASSERT_TRUE(Same(expected, Canvas<B>::Get(to))) << "shifted by " << shift;
      }
    });
  });
}

TEST(Convert, Shifts) {
  for (const unsigned shift : {0u, 1u, 4u, 7u, 8u, 15u}) {
    SCOPED_TRACE(shift);
    CheckOperation<KyBW8, KyBW16>(
        [=](auto... roi) { return ImgConvert(roi..., shift); },
        PerPixel([=](KyBW8, KyBW16 v) { return static_cast<KyBW8>(std::min(255, v >> shift)); }));
    if (shift > 8) continue;
    CheckOperation<KyBW16, KyBW8>(
        [=](auto... roi) { return ImgConvert(roi..., shift); },
        PerPixel([=](KyBW16, KyBW8 v) { return static_cast<KyBW16>(v << shift); }));
  }
  KyImage<KyBW8> grey(3, 2);
  KyImage<KyBW16> deep(3, 2);
  EXPECT_EQ(ImgConvert(&grey, &deep, 9u), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_STREQ(KyGetTrace(0), "ImgConvert (BW8 to BW16)");
  EXPECT_EQ(ImgConvert(&deep, &grey, 16u), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
}

}  // namespace
