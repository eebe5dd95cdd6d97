// Distances, against the nearest of all zeros.
#include "ky/distance.h"

#include <cmath>
#include <limits>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT
using Grey = Picture<KyBW8>;

constexpr std::uint64_t kNone = std::numeric_limits<std::uint64_t>::max();

// The least measure of the way to any zero.
template <class Measure>
std::vector<std::uint64_t> Nearest(const Grey& in, const Measure& measure) {
  std::vector<std::pair<int, int>> zeros;
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x)
      if (in.At(x, y) == 0) zeros.emplace_back(x, y);
  std::vector<std::uint64_t> nearest(in.pixels.size(), kNone);
  std::size_t place = 0;
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x, ++place)
      for (const auto& [i, j] : zeros)
        nearest[place] = std::min(nearest[place], measure(std::uint64_t(std::abs(x - i)),
                                                          std::uint64_t(std::abs(y - j))));
  return nearest;
}
std::uint64_t Square(std::uint64_t i, std::uint64_t j) { return i * i + j * j; }

// round(scale * sqrt(square)): the largest k with (2 k - 1)^2 <= 4 scale^2 square.
KyBW16 Rounded(std::uint64_t square, float scale) {
  if (square == kNone) return 65535;
  int exponent = 0;
  const auto mantissa = static_cast<unsigned>(std::ldexp(std::frexp(scale, &exponent), 24));
  const int shift = 24 - exponent;  // scale = mantissa / 2^shift
  const auto reaches = [&](unsigned k) {
    using Wide = unsigned __int128;
    const Wide left = Wide{2 * k - 1} * (2 * k - 1), right = Wide{mantissa} * mantissa * square * 4;
    return shift <= 0 || 2 * shift > 127 ? right > 0 && shift <= 0 : left <= right >> 2 * shift;
  };
  unsigned low = 0, high = 65535;
  while (low < high) {
    const unsigned k = (low + high + 1) / 2;
    reaches(k) ? low = k : high = k - 1;
  }
  return static_cast<KyBW16>(low);
}

Picture<KyBW16> Model(const Grey& in, IMG_DISTANCE_MODES mode, float scale) {
  const auto nearest = Nearest(in, [=](std::uint64_t i, std::uint64_t j) {
    const std::uint64_t d = mode == IMG_DISTANCE_CITY_BLOCK ? i + j : std::max(i, j);
    return mode == IMG_DISTANCE_EUCLIDEAN ? Square(i, j) : d * d;
  });
  Picture<KyBW16> out(in.width, in.height);
  for (std::size_t i = 0; i < nearest.size(); ++i) out.pixels[i] = Rounded(nearest[i], scale);
  return out;
}
Picture<KyBW32> SquareModel(const Grey& in) {
  Picture<KyBW32> out(in.width, in.height);
  const auto nearest = Nearest(in, Square);
  for (std::size_t i = 0; i < nearest.size(); ++i)
    out.pixels[i] = static_cast<KyBW32>(std::min<std::uint64_t>(nearest[i], 0xFFFFFFFF));
  return out;
}

constexpr IMG_DISTANCE_MODES kModes[] = {IMG_DISTANCE_EUCLIDEAN, IMG_DISTANCE_CITY_BLOCK,
                                         IMG_DISTANCE_CHESSBOARD};

TEST(Distance, AwkwardSizes) {
  std::vector<Size> sizes = AwkwardSizes();
  std::erase_if(sizes, [](Size size) { return size.width > 140; });
  for (const IMG_DISTANCE_MODES mode : kModes)
    CheckOperation<KyBW16, KyBW8>(
        [=](auto* in, auto* out) { return ImgDistance(in, out, mode, 16); },
        [=](const Grey& in, Picture<KyBW16>& out) { out = Model(in, mode, 16); }, sizes);
  CheckOperation<KyBW32, KyBW8>([](auto* in, auto* out) { return ImgDistance(in, out); },
                                [](const Grey& in, Picture<KyBW32>& out) { out = SquareModel(in); },
                                sizes);
}

// Pictures from dense to a single zero, at scales that meet halves, and the ends of the numbers.
TEST(Distance, PicturesAndScales) {
  Random random(4);
  std::vector<Grey> pictures;
  for (const unsigned oneIn : {2u, 9u, 60u, 700u}) {
    pictures.emplace_back(150, 40, KyBW8{1});
    for (KyBW8& pixel : pictures.back().pixels) pixel = random() % oneIn == 0 ? 0 : 200;
  }
  for (const auto& [x, y] : {std::pair(0, 0), {599, 3}, {200, 9}}) {
    pictures.emplace_back(600, 10, KyBW8{255});
    pictures.back().At(x, y) = 0;
  }
  pictures.emplace_back(120, 60,
                        KyBW8{0});  // a disk and a slope, which many columns are nearest to
  for (int y = 0; y < 60; ++y)
    for (int x = 0; x < 120; ++x)
      pictures.back().At(x, y) =
          Square(std::uint64_t(std::abs(x - 30)), std::uint64_t(std::abs(y - 30))) < 800 ||
          (x > 62 && 3 * y > x - 62);
  pictures.emplace_back(70, 5, KyBW8{7});  // none
  pictures.emplace_back(5, 70, KyBW8{0});  // all
  for (const Grey& picture : pictures) {
    std::vector<std::pair<std::pair<IMG_DISTANCE_MODES, float>, Picture<KyBW16>>> expected;
    for (const IMG_DISTANCE_MODES mode : kModes)
      for (const float scale : {1.f, 0.5f, 2.5f, 0.1f, 1.0000001f, 333.3f, 1e-6f, 1e-40f, 1e30f})
        expected.push_back({{mode, scale}, Model(picture, mode, scale)});
    const Picture<KyBW32> squares = SquareModel(picture);
    ForEachPath([&](const std::string&) {
      Canvas<KyBW8> source(picture, {1, 0, 2}, random);
      Canvas<KyBW16> out(picture.width, picture.height, {1, 1, 1}, random);
      Canvas<KyBW32> out32(picture.width, picture.height, {1, 1, 1}, random);
      for (const auto& [how, result] : expected) {
        ASSERT_EQ(ImgDistance(source.roi(), out.roi(), how.first, how.second), KY_OK);
        EXPECT_TRUE(Same(result, out.Get())) << how.first << ", scale " << how.second;
      }
      ASSERT_EQ(ImgDistance(source.roi(), out32.roi()), KY_OK);
      EXPECT_TRUE(Same(squares, out32.Get()));
    });
  }
}

// Beyond 2^15 columns or rows, distances no longer fit 16 bits, nor squares 32.
TEST(Distance, LongRowsAndColumns) {
  Random random(5);
  constexpr int kLong = 70000;
  for (const bool isColumn : {false, true}) {
    Grey picture(isColumn ? 2 : kLong, isColumn ? kLong : 2, KyBW8{1});
    picture.pixels[isColumn ? 1 : 0] = 0;
    Canvas<KyBW8> source(picture, {}, random);
    Canvas<KyBW16> out(picture.width, picture.height, {}, random);
    Canvas<KyBW32> out32(picture.width, picture.height, {}, random);
    ForEachPath([&](const std::string&) {
      for (const IMG_DISTANCE_MODES mode : kModes)
        for (const float scale : {1.f, 0.25f}) {
          ASSERT_EQ(ImgDistance(source.roi(), out.roi(), mode, scale), KY_OK);
          EXPECT_TRUE(Same(Model(picture, mode, scale), out.Get())) << mode << ", " << scale;
        }
      ASSERT_EQ(ImgDistance(source.roi(), out32.roi()), KY_OK);
      EXPECT_TRUE(Same(SquareModel(picture), out32.Get()));
    });
  }
}

// The destination lies on the memory of the source.
TEST(Distance, SharedMemory) {
  Random random(6);
  KyImage<KyBW16> image(40, 8);
  KyImage<KyBW8> source;
  source.Attach(reinterpret_cast<KyBW8*>(image.GetPixelPtr(0, 0)), 40, 8, image.GetPitch());
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 40; ++x) source.SetPixel(random() % 20 == 0 ? 0 : 1, x, y);
  Grey before(40, 8);
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 40; ++x) before.At(x, y) = source.GetPixel(x, y);
  ASSERT_EQ(ImgDistance(&source, &image), KY_OK);
  const Picture<KyBW16> expected = Model(before, IMG_DISTANCE_EUCLIDEAN, 1);
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 40; ++x) EXPECT_EQ(image.GetPixel(x, y), expected.At(x, y));
}

TEST(Distance, Refusals) {
  KyImage<KyBW8> source(5, 4);
  KyImage<KyBW16> out(5, 4);
  const auto expect = [&](IMG_DISTANCE_MODES mode, float scale, KY_ERRORS code) {
    EXPECT_EQ(ImgDistance(&source, &out, mode, scale), code);
    Harness<KyBW8>::ExpectTrace(code, {"ImgDistance (BW8 to BW16)"});
  };
  for (const int mode : {-1, 3})
    expect(static_cast<IMG_DISTANCE_MODES>(mode), 0, KY_ERROR_UNSUPPORTED_OPERATION);
  for (const float scale : {0.f, -1.f, INFINITY, NAN})
    expect(IMG_DISTANCE_EUCLIDEAN, scale, KY_ERROR_PARAMETER_2_OUT_OF_RANGE);
}

}  // namespace
