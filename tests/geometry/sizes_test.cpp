// Changes of size against models written from the definitions.
#include "ky/sizes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT
using Wide = std::int64_t;

template <class T>
std::array<int, sizeof(T)> Components(const T& pixel) {
  std::array<KyBW8, sizeof(T)> bytes;
  std::memcpy(bytes.data(), &pixel, sizeof(T));
  std::array<int, sizeof(T)> all;
  std::copy(bytes.begin(), bytes.end(), all.begin());
  return all;
}

// Sets each component of each pixel to level(source components at (x, y)..., x, y).
template <class Level>
auto EachComponent(Level level) {
  return [level]<class T>(const Picture<T>& source, Picture<T>& out) {
    for (int y = 0; y < out.height; ++y) {
      for (int x = 0; x < out.width; ++x) {
        std::array<KyBW8, sizeof(T)> bytes;
        for (std::size_t c = 0; c < sizeof(T); ++c) {
          const auto at = [&](int u, int v) { return Components(source.At(u, v))[c]; };
          bytes[c] = static_cast<KyBW8>(level(at, x, y, source, out));
        }
        std::memcpy(static_cast<void*>(&out.At(x, y)), bytes.data(), sizeof(T));
      }
    }
  };
}

const auto kHalve = EachComponent([](auto at, int x, int y, const auto&, const auto&) {
  int sum = 2;
  for (const int i : {0, 1})
    for (const int j : {0, 1}) sum += at(2 * x + i, 2 * y + j);
  return sum / 4;
});

// The length that pixel i and the area of result x share, in units of 1 / to pixels.
Wide Shared(Wide i, Wide x, Wide from, Wide to) {
  return std::max<Wide>(0, std::min((i + 1) * to, (x + 1) * from) - std::max(i * to, x * from));
}
const auto kShrink = EachComponent([](auto at, int x, int y, const auto& in, const auto& out) {
  Wide sum = 0;
  for (int v = int(Wide{y} * in.height / out.height); v < in.height; ++v) {
    const Wide down = Shared(v, y, in.height, out.height);
    if (down == 0) break;
    for (int u = int(Wide{x} * in.width / out.width); u < in.width; ++u) {
      const Wide across = Shared(u, x, in.width, out.width);
      if (across == 0) break;
      sum += down * across * at(u, v);
    }
  }
  const Wide area = Wide{in.width} * in.height;
  return int((2 * sum + area) / (2 * area));
});

// floor(u) and the weight of the next pixel.
std::pair<int, int> PlaceOf(Wide x, Wide from, Wide to) {
  const Wide twice = std::clamp<Wide>((2 * x + 1) * from - to, 0, 2 * to * (from - 1));
  const Wide whole = twice / (2 * to);
  const Wide weight = (2 * 2048 * (twice - whole * 2 * to) + 2 * to) / (4 * to);
  return {int(whole), int(weight)};
}
const auto kResize = EachComponent([](auto at, int x, int y, const auto& in, const auto& out) {
  const auto [i, f] = PlaceOf(x, in.width, out.width);
  const auto [j, g] = PlaceOf(y, in.height, out.height);
  const int right = std::min(i + 1, in.width - 1), below = std::min(j + 1, in.height - 1);
  const long h0 = at(i, j) * (2048L - f) + at(right, j) * long{f};
  const long h1 = at(i, below) * (2048L - f) + at(right, below) * long{f};
  return int((h0 * (2048 - g) + h1 * g + (1 << 21)) >> 22);
});

template <class T>
constexpr auto kImgHalve = [](const KyROI<T>* in, KyROI<T>* out) { return ImgHalve(in, out); };
template <class T>
constexpr auto kImgShrink = [](const KyROI<T>* in, KyROI<T>* out) { return ImgShrink(in, out); };
template <class T>
constexpr auto kImgResize = [](const KyROI<T>* in, KyROI<T>* out) { return ImgResize(in, out); };

TEST(Sizes, Halve) {
  const auto source = [](Size out) {
    return Size{2 * out.width + out.height % 2, 2 * out.height + out.width % 2};
  };
  CheckOperation<KyBW8, KyBW8>(kImgHalve<KyBW8>, kHalve, AwkwardSizes(),
                               Aliasing::kInPlaceAndOverlap, source);
  CheckOperation<KyC24, KyC24>(kImgHalve<KyC24>, kHalve, AwkwardSizes(),
                               Aliasing::kInPlaceAndOverlap, source);
}

// Every ratio is tried on destinations of less than a band, of a band, and of several strips.
const std::vector<Size> kTo = {{1, 1},  {2, 3},   {7, 5},   {8, 8},  {9, 17},
                               {31, 9}, {64, 33}, {65, 16}, {300, 3}};
constexpr struct Ratio {
  int from, to, more;  // from = to * from / to, rounded up, + more
} kRatios[] = {{1, 1, 0}, {2, 1, 0}, {3, 1, 0}, {4, 3, 0}, {17, 3, 1}};

template <class T, class Call, class Model>
void CheckRatios(Call call, Model model) {
  for (const Ratio& ratio : kRatios) {
    SCOPED_TRACE(std::to_string(ratio.from) + " to " + std::to_string(ratio.to));
    const auto scale = [&](int side) {
      return (side * ratio.from + ratio.to - 1) / ratio.to + ratio.more;
    };
    CheckOperation<T, T>(call, model, kTo, Aliasing::kInPlaceAndOverlap, [&](Size out) {
      return Size{scale(out.width), scale(out.height)};
    });
  }
}

TEST(Sizes, Shrink) {
  CheckRatios<KyBW8>(kImgShrink<KyBW8>, kShrink);
  CheckRatios<KyC24>(kImgShrink<KyC24>, kShrink);
}

TEST(Sizes, Resize) {
  CheckRatios<KyBW8>(kImgResize<KyBW8>, kResize);
  CheckRatios<KyC24>(kImgResize<KyC24>, kResize);
  // To more pixels, across, down and both, also from a single one.
  const std::vector<Size> sizes = {{1, 1}, {5, 40}, {33, 7}, {200, 3}, {67, 90}, {0, 4}};
  for (const Size from : {Size{1, 1}, Size{3, 2}, Size{16, 9}, Size{61, 40}, Size{90, 3}}) {
    SCOPED_TRACE(std::to_string(from.width) + " x " + std::to_string(from.height));
    const auto source = [&](Size) { return from; };
    CheckOperation<KyBW8, KyBW8>(kImgResize<KyBW8>, kResize, sizes, Aliasing::kInPlaceAndOverlap,
                                 source);
    CheckOperation<KyC24, KyC24>(kImgResize<KyC24>, kResize, sizes, Aliasing::kInPlaceAndOverlap,
                                 source);
  }
}

// Sides without a common divisor, whose areas have so many parts that sums need 32 bits, more than
// 32, and sides beyond 2^16. (White everywhere where there are few
// results, to reach the greatest sums.)
TEST(Sizes, ShrinkWithLongSums) {
  Random random(3);
  const struct {
    Size from, to;
  } cases[] = {{{257, 131}, {100, 77}}, {{2895, 2897}, {2, 2}},   {{1900, 901}, {7, 4}},
               {{4099, 2049}, {7, 5}},  {{70001, 3}, {13, 2}},    {{3, 66000}, {2, 7}},
               {{2895, 2897}, {1, 1}},  {{100000, 90}, {33, 89}}, {{4099, 2051}, {2, 2}}};
  for (const auto& [from, to] : cases) {
    SCOPED_TRACE(std::to_string(from.width) + " x " + std::to_string(from.height));
    Picture<KyBW8> in(from.width, from.height, 255), out(to.width, to.height);
    for (std::size_t i = 0; to.width > 2 && i < in.pixels.size(); ++i)
      in.pixels[i] = static_cast<KyBW8>(random());
    kShrink(in, out);
    Canvas<KyBW8> source(in, {}, random);
    ForEachPath([&, size = to](const std::string&) {
      Canvas<KyBW8> destination(size.width, size.height, {}, random);
      ASSERT_EQ(ImgShrink(source.roi(), destination.roi()), KY_OK);
      EXPECT_TRUE(Same(out, destination.Get()));
    });
  }
}

TEST(Sizes, Refusals) {
  KyImage<KyBW8> image(9, 7), none(0, 0);
  const struct {
    Size from, to;
    int halve, shrink, resize;
  } cases[] = {
      {{9, 7}, {4, 3}, 0, 0, 0},          {{9, 7}, {5, 3}, 1403, 0, 0},
      {{9, 7}, {4, 4}, 1403, 0, 0},       {{4, 7}, {5, 3}, 1403, 1403, 0},
      {{4, 3}, {4, 4}, 1403, 1403, 0},    {{1, 7}, {0, 3}, 0, 1403, 0},
      {{0, 7}, {0, 3}, 0, 1403, 0},       {{0, 7}, {1, 3}, 1403, 1403, 1403},
      {{5, 0}, {2, 1}, 1403, 1403, 1403}, {{5, 0}, {2, 0}, 0, 1403, 0},
  };
  for (const auto& [from, to, halve, shrink, resize] : cases) {
    SCOPED_TRACE(std::to_string(from.width) + " to " + std::to_string(to.width));
    KyImage<KyBW8> other(9, 7);
    KyROI<KyBW8> in(&image, 0, 0, from.width, from.height);
    KyROI<KyBW8> out(&other, 0, 0, to.width, to.height);
    EXPECT_EQ(ImgHalve(&in, &out), halve);
    EXPECT_EQ(ImgShrink(&in, &out), shrink);
    EXPECT_EQ(ImgResize(&in, &out), resize);
  }
}

}  // namespace
