// The named filters against their formulas, pixel by pixel.
#include "ky/filters.h"

#include <cstring>
#include <numeric>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

// The levels around a place: p(right, down).
using Window = std::function<int(int, int)>;
using Weights = std::vector<int>;

// Row by row, with the place in the middle.
int Weighed(const Window& p, const Weights& weights) {
  int size = 1, sum = 0;
  while (size * size < static_cast<int>(weights.size())) size += 2;
  for (int i = 0; i < size * size; ++i)
    sum += weights[static_cast<std::size_t>(i)] * p(i % size - size / 2, i / size - size / 2);
  return sum;
}
// Weights that are the products of one along a row and one along a column.
Weights Product(const Weights& row, const Weights& column) {
  Weights all;
  for (const int down : column)
    for (const int right : row) all.push_back(down * right);
  return all;
}
int Clip(int v) { return std::clamp(v, 0, 255); }

using Formula = std::function<int(const Window&)>;
Formula Magnitude(const Weights& weights) {
  return [=](const Window& p) { return Clip(std::abs(Weighed(p, weights))); };
}
Formula SumOfMagnitudes(const Weights& x, const Weights& y) {
  return [=](const Window& p) { return Clip(std::abs(Weighed(p, x)) + std::abs(Weighed(p, y))); };
}
Formula Mean(const Weights& weights) {
  return [=, divisor = std::accumulate(weights.begin(), weights.end(), 0)](const Window& p) {
    return (2 * Weighed(p, weights) + divisor) / (2 * divisor);
  };
}

const Weights kNine(9, 1),
    kEight = {1, 1, 1, 1, 0, 1, 1, 1, 1}, kStep = {-1, 0, 1}, kBinomial3 = {1, 2, 1},
    kBinomial5 = {1, 4, 6, 4, 1}, kBinomial7 = {1, 6, 15, 20, 15, 6, 1}, kOne3 = {1, 1, 1},
    kSobelX = Product(kStep, kBinomial3), kSobelY = Product(kBinomial3, kStep),
    kPrewittX = Product(kStep, kOne3), kPrewittY = Product(kOne3, kStep), kSharpen8 = {-1, -1, -1,
                                                                                       -1, 9,  -1,
                                                                                       -1, -1, -1},
    kAlongX = {0, 0, 0, -1, 0, 1, 0, 0, 0}, kAlongY = {0, -1, 0, 0, 0, 0, 0, 1, 0};

enum Outside { kZero, kNearest };

template <class Pixel>
using Call = KY_ERRORS (*)(const KyROI<Pixel>*, KyROI<Pixel>*) noexcept;

const struct Filter {
  Call<KyBW8> grey;
  Call<KyC24> color;
  const char* name;
  Outside outside;
  Formula inside, atBorder = inside;
} kFilters[] = {
#define BOTH(Name) Name, Name, #Name
    {BOTH(ImgConvolUniform3x3), kNearest, [](auto& p) { return 14 * Weighed(p, kNine) >> 7; }},
    {BOTH(ImgConvolLowpass1), kNearest, [](auto& p) { return 14 * Weighed(p, kNine) >> 7; }},
    {BOTH(ImgConvolUniform3x3Plain), kNearest,
     [](auto& p) { return 932067 * Weighed(p, kNine) >> 23; }},
    {BOTH(ImgConvolGaussian3x3), kNearest,
     [](auto& p) { return Weighed(p, Product(kBinomial3, kBinomial3)) >> 4; }},
    {BOTH(ImgConvolLowpass3), kNearest,
     [](auto& p) { return Weighed(p, Product(kBinomial3, kBinomial3)) >> 4; }},
    {BOTH(ImgConvolGaussian3x3Plain), kNearest,
     [](auto& p) { return Weighed(p, Product(kBinomial3, kBinomial3)) >> 4; }},
    {BOTH(ImgConvolLowpass2), kZero, [](auto& p) { return Weighed(p, kEight) / 8; }},
    {BOTH(ImgConvolUniform5x5), kNearest, Mean(Weights(25, 1))},
    {BOTH(ImgConvolUniform7x7), kNearest, Mean(Weights(49, 1))},
    {BOTH(ImgConvolGaussian5x5), kNearest, Mean(Product(kBinomial5, kBinomial5))},
    {BOTH(ImgConvolGaussian7x7), kNearest, Mean(Product(kBinomial7, kBinomial7))},
    {BOTH(ImgConvolHighpass1), kZero, Magnitude({0, -1, 0, -1, 5, -1, 0, -1, 0})},
    {BOTH(ImgConvolHighpass2), kZero, [](auto& p) { return Clip(Weighed(p, kSharpen8)); },
     Magnitude(kSharpen8)},
    {BOTH(ImgConvolLaplacian4), kZero, Magnitude({0, 1, 0, 1, -4, 1, 0, 1, 0})},
    {BOTH(ImgConvolLaplacian8), kZero, Magnitude({1, 1, 1, 1, -8, 1, 1, 1, 1})},
    {BOTH(ImgConvolLaplacianX), kZero, Magnitude({0, 0, 0, -1, 2, -1, 0, 0, 0})},
    {BOTH(ImgConvolLaplacianY), kZero, Magnitude({0, -1, 0, 0, 2, 0, 0, -1, 0})},
    {BOTH(ImgConvolSobelX), kZero, Magnitude(kSobelX)},
    {BOTH(ImgConvolSobelY), kZero, Magnitude(kSobelY)},
    {BOTH(ImgConvolSobel), kZero, SumOfMagnitudes(kSobelX, kSobelY)},
    {BOTH(ImgConvolPrewittX), kNearest, Magnitude(kPrewittX)},
    {BOTH(ImgConvolPrewittY), kZero, Magnitude(kPrewittY)},
    {BOTH(ImgConvolPrewitt), kZero, SumOfMagnitudes(kPrewittX, kPrewittY)},
    {BOTH(ImgConvolGradientX), kZero, Magnitude(kAlongX)},
    {BOTH(ImgConvolGradientY), kZero, Magnitude(kAlongY)},
    {BOTH(ImgConvolGradient), kZero, SumOfMagnitudes(kAlongX, kAlongY)},
    {BOTH(ImgConvolRoberts), kZero,
     SumOfMagnitudes({0, 0, 0, 0, 1, 0, 0, 0, -1}, {0, 0, 0, 0, 0, 1, 0, -1, 0})},
#undef BOTH
};

// Pixels as their components.
template <class Pixel>
std::uint8_t& Component(Pixel& pixel, std::size_t c) {
  return reinterpret_cast<std::uint8_t*>(&pixel)[c];
}

template <class Pixel>
auto ModelOf(const Filter& filter) {
  return [&filter](Picture<Pixel> in, Picture<Pixel>& out) {
    for (int y = 0; y < in.height; ++y)
      for (int x = 0; x < in.width; ++x)
        for (std::size_t c = 0; c < sizeof(Pixel); ++c) {
          const auto at = [&](int right, int down) {
            if (filter.outside == kZero && !in.Has(x + right, y + down)) return 0;
            Pixel pixel = in.Nearest(x + right, y + down);
            return int{Component(pixel, c)};
          };
          const bool isInside = in.Has(x - 1, y - 1) && in.Has(x + 1, y + 1);
          const Formula& formula = isInside ? filter.inside : filter.atBorder;
          Component(out.At(x, y), c) = static_cast<std::uint8_t>(formula(at));
        }
  };
}

// Some of all widths, for models that take their time.
std::vector<Size> FewSizes() {
  return {{1, 1}, {2, 3}, {3, 2}, {7, 9}, {22, 8}, {43, 7}, {64, 3}, {129, 15}, {0, 3}, {301, 8}};
}

template <class Pixel>
void CheckAll(Call<Pixel> Filter::*call) {
  for (const Filter& filter : kFilters) {
    SCOPED_TRACE(filter.name);
    CheckOperation<Pixel, Pixel>(filter.*call, ModelOf<Pixel>(filter), FewSizes());
    Random random(1);
    const Picture<Pixel> before = RandomPicture<Pixel>(37, 11, random);
    Canvas<Pixel> canvas(before, {3, 1, 2}, random);
    Picture<Pixel> expected = before;
    ModelOf<Pixel>(filter)(before, expected);
    EXPECT_EQ((filter.*call)(canvas.roi(), nullptr), KY_OK) << "null for in place";
    EXPECT_TRUE(Same(expected, canvas.Get()));
    EXPECT_TRUE(canvas.OnlyChanged(*canvas.roi()));
  }
}
TEST(Filters, FormulaAndBorderOnGreyImages) { CheckAll(&Filter::grey); }
TEST(Filters, FormulaAndBorderOnColorImages) { CheckAll(&Filter::color); }

// Rows that take from one vector to a few, of every length: a filter for each loop over windows.
TEST(Filters, EveryWidth) {
  std::vector<Size> sizes;
  for (int width = 1; width <= 200; ++width) sizes.push_back({width, 4});
  for (const Filter& filter : kFilters)
    for (const char* const name :
         {"ImgConvolSobelX", "ImgConvolRoberts", "ImgConvolUniform3x3", "ImgConvolUniform5x5"})
      if (std::strcmp(filter.name, name) == 0) {
        SCOPED_TRACE(name);
        CheckOperation<KyBW8, KyBW8>(filter.grey, ModelOf<KyBW8>(filter), sizes);
        CheckOperation<KyC24, KyC24>(filter.color, ModelOf<KyC24>(filter), sizes);
      }
}

// So large that rows are prefetched on every processor, in several strips: a filter for each loop
// over windows. Pieces of the image that are small give the same.
TEST(Filters, LargeImages) {
  constexpr int kWidth = 3001, kHeight = 1000, kPiece = 100, kReach = 3;
  KyImage<KyC24> source(kWidth, kHeight), whole(kWidth, kHeight), piece(kWidth, kPiece);
  Random random(3);
  for (int y = 0; y < kHeight; ++y) {
    auto* const row = static_cast<KyBW8*>(source.GetPixelPtr(0, y));
    for (int x = 0; x < 3 * kWidth; ++x) row[x] = static_cast<KyBW8>(random());
  }
  for (const Filter& filter : kFilters)
    for (const char* const name : {"ImgConvolSobel", "ImgConvolRoberts", "ImgConvolUniform5x5"})
      if (std::strcmp(filter.name, name) == 0)
        ForEachPath([&](const std::string& path) {
          if (path == "plain") return;  // which takes long, and prefetches nothing
          SCOPED_TRACE(name);
          ASSERT_EQ(filter.color(&source, &whole), KY_OK);
          for (int top = 0; top + kPiece <= kHeight; top += kPiece - 2 * kReach) {
            const KyROI<KyC24> from(&source, 0, top, kWidth, kPiece);
            ASSERT_EQ(filter.color(&from, &piece), KY_OK);
            for (int y = top == 0 ? 0 : kReach; y < kPiece - kReach; ++y)
              ASSERT_EQ(std::memcmp(piece.GetPixelPtr(0, y), whole.GetPixelPtr(0, top + y),
                                    kWidth * sizeof(KyC24)),
                        0)
                  << "row " << top + y;
          }
        });
}

}  // namespace
