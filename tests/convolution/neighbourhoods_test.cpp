// Filters over windows of any size against their definitions, pixel by pixel.
#include "ky/neighbourhoods.h"

#include <array>
#include <cmath>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

// floor(2 a / b + 1/2) of an exact quotient.
std::int64_t Rounded(std::int64_t a, std::int64_t b) { return (2 * a + b) / (2 * b); }

struct Sums {
  std::int64_t n = 0, levels = 0, squares = 0;

  void Add(const Sums& other, std::int64_t times) {
    n += times * other.n;
    levels += times * other.levels;
    squares += times * other.squares;
  }
};
// Adds up the window around position `at` of n; of(i) is what position i counts. Those outside
// stand for the nearest, or for nothing.
template <class Of>
Sums AddUp(bool inside, std::int64_t at, std::int64_t half, int n, const Of& of) {
  Sums sums;
  const std::int64_t begin = std::max<std::int64_t>(at - half, 0);
  const std::int64_t end = std::min<std::int64_t>(at + half + 1, n);
  for (std::int64_t i = begin; i < end; ++i) sums.Add(of(static_cast<int>(i)), 1);
  if (inside) return sums;
  sums.Add(of(0), begin - (at - half));
  sums.Add(of(n - 1), at + half + 1 - end);
  return sums;
}

KyBW8 AverageOf(const Sums& s) { return static_cast<KyBW8>(Rounded(s.levels, s.n)); }
KyBW8 DeviationOf(const Sums& s) {
  __extension__ using Wide = __int128;
  const Wide fourfold = 4 * (Wide{s.n} * s.squares - Wide{s.levels} * s.levels);
  int k = 0;
  while (Wide{2 * k + 1} * (2 * k + 1) * s.n * s.n <= fourfold) ++k;
  return static_cast<KyBW8>(k);
}

using Grey = Picture<KyBW8>;
template <bool kInside, KyBW8 (*kResult)(const Sums&)>
auto Over(unsigned halfWidth, unsigned halfHeight) {
  return [=](const Grey& in, Grey& out) {
    std::vector<Sums> columns(static_cast<std::size_t>(in.width));
    for (int y = 0; y < in.height; ++y) {
      for (int x = 0; x < in.width; ++x)
        columns[static_cast<std::size_t>(x)] = AddUp(kInside, y, halfHeight, in.height, [&](int v) {
          const std::int64_t level = in.At(x, v);
          return Sums{1, level, level * level};
        });
      for (int x = 0; x < in.width; ++x)
        out.At(x, y) = kResult(AddUp(kInside, x, halfWidth, in.width,
                                     [&](int u) { return columns[static_cast<std::size_t>(u)]; }));
    }
  };
}

// What a model of grey images makes of each component of colours.
template <class Model>
auto InColors(const Model& model) {
  return [model](const Picture<KyC24>& in, Picture<KyC24>& out) {
    for (const auto component : {&KyC24::c0, &KyC24::c1, &KyC24::c2}) {
      Grey from(in.width, in.height), to(in.width, in.height);
      for (std::size_t i = 0; i < in.pixels.size(); ++i) from.pixels[i] = in.pixels[i].*component;
      model(from, to);
      for (std::size_t i = 0; i < in.pixels.size(); ++i) out.pixels[i].*component = to.pixels[i];
    }
  };
}

using GreyBox = KY_ERRORS (*)(const KyROI<KyBW8>*, KyROI<KyBW8>*, unsigned, unsigned) noexcept;
using ColorBox = KY_ERRORS (*)(const KyROI<KyC24>*, KyROI<KyC24>*, unsigned, unsigned) noexcept;

const std::vector<Size> kSizes = {{1, 1},  {2, 3},  {7, 1},   {1, 9},   {15, 16}, {16, 5},
                                  {31, 4}, {33, 7}, {64, 3},  {65, 12}, {127, 2}, {131, 17},
                                  {0, 3},  {3, 0},  {37, 40}, {18, 71}};

struct Halves {
  unsigned width, height;
};
// Of every way to divide and to sum: areas up to 363, 514, 2^13, 2^14 and beyond, columns of up to
// 16 bits and beyond, sums of up to 31 bits and beyond; windows above the image's sides.
const Halves kHalves[] = {
    {0, 0},   {1, 0},    {0, 2},       {1, 1},        {2, 2},        {2, 3},
    {3, 3},   {5, 4},    {9, 9},       {10, 10},      {13, 9},       {2, 51},
    {45, 45}, {60, 60},  {70, 70},     {3, 128},      {3, 129},      {300, 11},
    {1, 400}, {700, 80}, {1448, 1448}, {5, 1u << 20}, {1u << 20, 1}, {1u << 20, 1u << 20}};

template <class Model>
void CheckBoxes(GreyBox grey, ColorBox color, Model (*modelOf)(unsigned, unsigned)) {
  for (const Halves half : kHalves) {
    SCOPED_TRACE(std::to_string(half.width) + ", " + std::to_string(half.height));
    const Model model = modelOf(half.width, half.height);
    CheckOperation<KyBW8, KyBW8>(
        [=](auto* in, auto* out) { return grey(in, out, half.width, half.height); }, model, kSizes);
    CheckOperation<KyC24, KyC24>(
        [=](auto* in, auto* out) { return color(in, out, half.width, half.height); },
        InColors(model), {{1, 1}, {5, 2}, {33, 7}, {70, 9}});
  }
}
TEST(Boxes, UniformIsTheMeanOfThePositions) {
  CheckBoxes(ImgConvolUniform, ImgConvolUniform, Over<false, AverageOf>);
}
TEST(Boxes, LocalAverageIsTheMeanOfThePixelsInside) {
  CheckBoxes(ImgLocalAverage, ImgLocalAverage, Over<true, AverageOf>);
}
TEST(Boxes, LocalDeviationIsExact) {
  CheckBoxes(ImgLocalDeviation, ImgLocalDeviation, Over<true, DeviationOf>);
}

TEST(Boxes, LocalThresholdComparesWithTheAverage) {
  const struct {
    unsigned half;
    int offset;
    KyBW8 low, high;
  } cases[] = {{2, 0, 0, 255},     {15, 7, 3, 200},     {4, -9, 255, 0},  {1, INT_MAX, 1, 2},
               {1, INT_MIN, 1, 2}, {1u << 20, 1, 0, 9}, {3, 255, 0, 255}, {3, -255, 0, 255}};
  for (const auto& c : cases)
    CheckOperation<KyBW8, KyBW8>(
        [&](auto* in, auto* out) {
          return ImgLocalThreshold(in, out, c.half, KY_HALF_HEIGHT_AS_WIDTH, c.offset, c.low,
                                   c.high);
        },
        [&](const Grey& in, Grey& out) {
          Over<true, AverageOf>(c.half, c.half)(in, out);
          for (std::size_t i = 0; i < in.pixels.size(); ++i)
            out.pixels[i] = in.pixels[i] >= std::int64_t{out.pixels[i]} + c.offset ? c.high : c.low;
        },
        kSizes);
}

void CheckThresholds(const Grey& picture, const Grey& averages, Halves half, Random& random) {
  for (const int offset : {-1, 0, 1}) {
    Grey expected = averages;
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
      expected.pixels[i] = picture.pixels[i] >= averages.pixels[i] + offset ? 7 : 9;
    ForEachPath([&](const std::string&) {
      Canvas<KyBW8> canvas(picture, {}, random), out(picture, {}, random);
      ASSERT_EQ(ImgLocalThreshold(canvas.roi(), out.roi(), half.width, half.height, offset, 9, 7),
                KY_OK);
      ASSERT_TRUE(Same(expected, out.Get()));
      ASSERT_EQ(ImgLocalThreshold(canvas.roi(), nullptr, half.width, half.height, offset, 9, 7),
                KY_OK);
      ASSERT_TRUE(Same(expected, canvas.Get()));
    });
  }
}

// Means that follow from those of the row above, with changes from row to row as large as windows
// allow: of pictures so large that the first and the last rows and columns are not all there is.
TEST(Boxes, MeansOfLargePictures) {
  Random random(1);
  auto picture = RandomPicture<KyBW8>(380, 264, random);
  for (int y = 0; y < picture.height; ++y)  // noise above stripes above light and dark areas
    for (int x = 0; x < picture.width; ++x)
      if (y % 140 > 40) picture.At(x, y) = (x / 110 + (y % 140 < 80 ? y : y / 100)) % 2 ? 255 : 0;
  Grey ofPositions(picture.width, picture.height), ofPixels = ofPositions;
  for (const Halves half : {Halves{0, 7},
                            {2, 1},
                            {2, 66},
                            {4, 60},
                            {10, 10},
                            {31, 33},
                            {50, 50},
                            {52, 52},
                            {53, 53},
                            {60, 20},
                            {62, 0},
                            {64, 3},
                            {120, 40}}) {
    SCOPED_TRACE(std::to_string(half.width) + ", " + std::to_string(half.height));
    Over<false, AverageOf>(half.width, half.height)(picture, ofPositions);
    Over<true, AverageOf>(half.width, half.height)(picture, ofPixels);
    ForEachPath([&](const std::string&) {
      Canvas<KyBW8> from(picture, {}, random), to(picture, {}, random);
      ASSERT_EQ(ImgConvolUniform(from.roi(), to.roi(), half.width, half.height), KY_OK);
      ASSERT_TRUE(Same(ofPositions, to.Get()));
      ASSERT_EQ(ImgLocalAverage(from.roi(), nullptr, half.width, half.height), KY_OK);
      ASSERT_TRUE(Same(ofPixels, from.Get()));
    });
    CheckThresholds(picture, ofPixels, half, random);
  }
}

// Averages and deviations next to where rounding changes, and right there. The windows cover the
// whole image, of which about half is of one level, half of another.
TEST(Boxes, ResultsThatAreNearlyAHalf) {
  ForEachPath([](const std::string&) {
    Random random(1);
    for (const Size size : {Size{2, 1},
                            {3, 3},
                            {8, 4},
                            {45, 45},
                            {46, 44},
                            {200, 1},
                            {257, 1},
                            {63, 65},
                            {90, 91},
                            {127, 129},
                            {510, 130},
                            {512, 300}}) {
      SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
      const int area = size.width * size.height;
      const auto check = [&](int level, int step, int others, GreyBox box, auto result) {
        const int other = level + step;
        Grey picture(size.width, size.height, static_cast<KyBW8>(level));
        std::fill_n(picture.pixels.begin(), others, static_cast<KyBW8>(other));
        Sums sums;
        sums.Add({1, level, level * level}, area - others);
        sums.Add({1, other, other * other}, others);
        Canvas<KyBW8> canvas(picture, {}, random);
        ASSERT_EQ(box(canvas.roi(), nullptr, 600, KY_HALF_HEIGHT_AS_WIDTH), KY_OK);
        ASSERT_TRUE(Same(Grey(size.width, size.height, result(sums)), canvas.Get()));
      };
      for (int others = (area - 1) / 2; others <= area / 2 + 1; ++others) {
        for (const int level : {0, 1, 2, 100, 127, 128, 253, 254})
          check(level, 1, others, ImgLocalAverage, AverageOf);
        for (const int step : {1, 3, 101, 255}) {
          check(0, step, others, ImgLocalDeviation, DeviationOf);
          check(255 - step, step, others, ImgLocalDeviation, DeviationOf);
        }
      }
    }
  });
}

// Of every way to sum and to compare, between two levels, so that averages are nearly a half.
TEST(Boxes, ThresholdsNextToTheAverage) {
  Random random(1);
  auto picture = RandomPicture<KyBW8>(300, 310, random);
  for (KyBW8& p : picture.pixels) p = static_cast<KyBW8>(100 + p % 2);
  Grey averages(picture.width, picture.height);
  for (const Halves half : {Halves{2, 3}, {40, 90}, {90, 90}, {91, 90}, {20, 140}}) {
    Over<true, AverageOf>(half.width, half.height)(picture, averages);
    CheckThresholds(picture, averages, half, random);
  }
}

// Sums of squares beyond 32 bits.
TEST(Boxes, DeviationsOfLargeWindows) {
  Random random(1);
  auto picture = RandomPicture<KyBW8>(480, 410, random);
  for (int y = 0; y < picture.height; ++y)  // light at the right
    for (int x = 0; x < picture.width; ++x)
      picture.At(x, y) = static_cast<KyBW8>(picture.At(x, y) / 4 + 190 * (x > 300 + y / 4));
  Grey expected(picture.width, picture.height);
  Over<true, DeviationOf>(250, 200)(picture, expected);
  ForEachPath([&](const std::string&) {
    Canvas<KyBW8> canvas(picture, {}, random);
    ASSERT_EQ(ImgLocalDeviation(canvas.roi(), nullptr, 250, 200), KY_OK);
    ASSERT_TRUE(Same(expected, canvas.Get()));
  });
}

// The definition, term by term.
struct Weights {
  explicit Weights(int half, double sigma) : of(static_cast<std::size_t>(half + 1)) {
    std::vector<double> bell(of.size()), tail(of.size() + 1);
    double sum = 0;
    for (int i = -half; i <= half; ++i) sum += std::exp(-i * i / (2 * sigma * sigma));
    for (int i = half; i >= 0; --i)
      tail[static_cast<std::size_t>(i)] =
          tail[static_cast<std::size_t>(i + 1)] + std::exp(-i * i / (2 * sigma * sigma)) / sum;
    for (std::size_t i = 1; i < of.size(); ++i)
      of[i] = std::floor(32768 * tail[i] + 0.5) - std::floor(32768 * tail[i + 1] + 0.5);
    of[0] = 32768;
    for (std::size_t i = 1; i < of.size(); ++i) of[0] -= 2 * of[i];
  }
  std::vector<double> of;
};
auto Gaussian(int halfWidth, int halfHeight, double sigmaX, double sigmaY) {
  const auto weigh = [](const Weights& w, const auto& at, std::int64_t half, int shift) {
    std::int64_t sum = half;
    const int n = static_cast<int>(w.of.size());
    for (int i = 1 - n; i < n; ++i)
      sum += static_cast<std::int64_t>(w.of[static_cast<std::size_t>(std::abs(i))]) * at(i);
    return sum >> shift;
  };
  return [=, x = Weights(halfWidth, sigmaX), y = Weights(halfHeight, sigmaY)](const Grey& in,
                                                                              Grey& out) {
    Picture<std::int64_t> between(in.width, in.height);
    for (int v = 0; v < in.height; ++v)
      for (int u = 0; u < in.width; ++u)
        between.At(u, v) = weigh(
            x, [&](int i) { return in.Nearest(u + i, v); }, 128, 8);
    for (int v = 0; v < in.height; ++v)
      for (int u = 0; u < in.width; ++u)
        out.At(u, v) = static_cast<KyBW8>(weigh(
            y, [&](int i) { return between.Nearest(u, v + i); }, 1 << 21, 22));
  };
}

TEST(Gaussians, FixedPointAlongRowsAndColumns) {
  const struct {
    unsigned halfWidth, halfHeight;
    float sigmaX, sigmaY;
    double x, y;
  } cases[] = {{0, 0, 0, 0, 0.5, 0.5},
               {1, 1, 0, 0, 0.8, 0.8},
               {5, 5, 0, 0, 2.0, 2.0},
               {2, 7, 0, 0, 1.1, 2.6},
               {15, 3, 4.5f, 0, 4.5, 4.5},
               {3, 15, 0, 2.25f, 1.4, 2.25},
               {9, 0, 1.5f, 3, 1.5, 3},
               {0, 4, 7, 1e-30f, 7, 1e-30},
               {20, 20, 3e38f, 3e38f, 3e38, 3e38},
               {1024, 2, 300, 0.25f, 300, 0.25}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.halfWidth) + ", " + std::to_string(c.halfHeight));
    const auto model =
        Gaussian(static_cast<int>(c.halfWidth), static_cast<int>(c.halfHeight), c.x, c.y);
    const auto call = [&](auto* in, auto* out) {
      return ImgConvolGaussian(in, out, c.halfWidth, c.halfHeight, c.sigmaX, c.sigmaY);
    };
    CheckOperation<KyBW8, KyBW8>(call, model, kSizes);
    CheckOperation<KyC24, KyC24>(call, InColors(model), {{1, 1}, {5, 2}, {33, 7}, {70, 9}});
    if (c.halfHeight < 7) continue;
    // Several strips.
    CheckOperation<KyBW8, KyBW8>(call, model, {{1100, 6}});
    CheckOperation<KyC24, KyC24>(call, InColors(model), {{1100, 3}});
  }
}

TEST(Neighbourhoods, HalvesAndSigmasAreChecked) {
  Random random(1);
  Canvas<KyBW8> canvas(5, 5, {}, random);
  const auto* in = canvas.roi();
  const unsigned most = 1u << 20;
  for (const auto box :
       {GreyBox{ImgConvolUniform}, GreyBox{ImgLocalAverage}, GreyBox{ImgLocalDeviation}}) {
    EXPECT_EQ(box(in, nullptr, most + 1, most + 1), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
    EXPECT_EQ(box(in, nullptr, most, most + 1), KY_ERROR_PARAMETER_2_OUT_OF_RANGE);
    EXPECT_EQ(box(in, nullptr, KY_HALF_HEIGHT_AS_WIDTH, KY_HALF_HEIGHT_AS_WIDTH),
              KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  }
  EXPECT_EQ(ImgLocalThreshold(in, nullptr, 1, most + 1), KY_ERROR_PARAMETER_2_OUT_OF_RANGE);
  EXPECT_EQ(ImgConvolGaussian(in, nullptr, 1025, 1025), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(ImgConvolGaussian(in, nullptr, 1024, 1025), KY_ERROR_PARAMETER_2_OUT_OF_RANGE);
  for (const float bad : {-1.0f, INFINITY, NAN}) {
    EXPECT_EQ(ImgConvolGaussian(in, nullptr, 1, 1, bad, bad), KY_ERROR_PARAMETER_3_OUT_OF_RANGE);
    EXPECT_EQ(ImgConvolGaussian(in, nullptr, 1, 1, 1, bad), KY_ERROR_PARAMETER_4_OUT_OF_RANGE);
  }
  EXPECT_TRUE(canvas.Unchanged());
}

}  // namespace
