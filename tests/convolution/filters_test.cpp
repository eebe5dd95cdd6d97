// The named filters against their formulas, pixel by pixel.
#include "ky/filters.h"

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

// The nine pixels around a place, row by row; [4] is the centre.
using Window = std::array<int, 9>;

int Weighed(const Window& p, const Window& weights) {
  int sum = 0;
  for (std::size_t i = 0; i < 9; ++i) sum += weights[i] * p[i];
  return sum;
}
int Clip(int v) { return std::clamp(v, 0, 255); }
int Magnitude(int v) { return Clip(std::abs(v)); }
constexpr Window kNine = {1, 1, 1, 1, 1, 1, 1, 1, 1}, kEight = {1, 1, 1, 1, 0, 1, 1, 1, 1},
                 kBinomial = {1, 2, 1, 2, 4, 2, 1, 2, 1}, kSobelX = {-1, 0, 1, -2, 0, 2, -1, 0, 1},
                 kSobelY = {-1, -2, -1, 0, 0, 0, 1, 2, 1},
                 kPrewittX = {-1, 0, 1, -1, 0, 1, -1, 0, 1},
                 kPrewittY = {-1, -1, -1, 0, 0, 0, 1, 1, 1},
                 kSharpen4 = {0, -1, 0, -1, 5, -1, 0, -1, 0},
                 kSharpen8 = {-1, -1, -1, -1, 9, -1, -1, -1, -1},
                 kLaplacian4 = {0, 1, 0, 1, -4, 1, 0, 1, 0},
                 kLaplacian8 = {1, 1, 1, 1, -8, 1, 1, 1, 1};

using Formula = int (*)(const Window&);
int Uniform(const Window& p) { return (14 * Weighed(p, kNine)) >> 7; }
int UniformPlain(const Window& p) { return (932067 * Weighed(p, kNine)) >> 23; }
int Binomial(const Window& p) { return Weighed(p, kBinomial) >> 4; }
int Ring(const Window& p) { return Weighed(p, kEight) / 8; }
int Sum(const Window& p, const Window& x, const Window& y) {
  return Clip(std::abs(Weighed(p, x)) + std::abs(Weighed(p, y)));
}
int Sharpen8(const Window& p) { return Clip(Weighed(p, kSharpen8)); }
template <const Window& kWeights>
int MagnitudeOf(const Window& p) {
  return Magnitude(Weighed(p, kWeights));
}

const struct Filter {
  KY_ERRORS (*call)(const KyROI<KyBW8>*, KyROI<KyBW8>*) noexcept;
  const char* trace;
  bool repeats;
  Formula inside;
  Formula atBorder = nullptr;
} kFilters[] = {
    {ImgConvolUniform3x3, "ImgConvolUniform3x3 (BW8)", true, Uniform},
    {ImgConvolLowpass1, "ImgConvolLowpass1 (BW8)", true, Uniform},
    {ImgConvolUniform3x3Plain, "ImgConvolUniform3x3", true, UniformPlain},
    {ImgConvolGaussian3x3, "ImgConvolGaussian3x3 (BW8)", true, Binomial},
    {ImgConvolLowpass3, "ImgConvolLowpass3 (BW8)", true, Binomial},
    {ImgConvolGaussian3x3Plain, "ImgConvolGaussian3x3", true, Binomial},
    {ImgConvolLowpass2, "ImgConvolLowpass2 (BW8)", false, Ring},
    {ImgConvolHighpass1, "ImgConvolHighpass1 (BW8)", false, MagnitudeOf<kSharpen4>},
    {ImgConvolHighpass2, "ImgConvolHighpass2 (BW8)", false, Sharpen8, MagnitudeOf<kSharpen8>},
    {ImgConvolSobelX, "ImgConvolSobelX (BW8)", false, MagnitudeOf<kSobelX>},
    {ImgConvolSobelY, "ImgConvolSobelY (BW8)", false, MagnitudeOf<kSobelY>},
    {ImgConvolSobel, "ImgConvolSobel (BW8)", false,
     [](const Window& p) { return Sum(p, kSobelX, kSobelY); }},
    {ImgConvolPrewittX, "ImgConvolPrewittX (BW8)", true, MagnitudeOf<kPrewittX>},
    {ImgConvolPrewittY, "ImgConvolPrewittY (BW8)", false, MagnitudeOf<kPrewittY>},
    {ImgConvolPrewitt, "ImgConvolPrewitt (BW8)", false,
     [](const Window& p) { return Sum(p, kPrewittX, kPrewittY); }},
    {ImgConvolLaplacian4, "ImgConvolLaplacian4 (BW8)", false, MagnitudeOf<kLaplacian4>},
    {ImgConvolLaplacian8, "ImgConvolLaplacian8 (BW8)", false, MagnitudeOf<kLaplacian8>},
};

auto ModelOf(const Filter& filter) {
  return [filter](const Picture<KyBW8>& in, Picture<KyBW8>& out) {
    for (int y = 0; y < in.height; ++y)
      for (int x = 0; x < in.width; ++x) {
        Window window;
        bool isBorder = false;
        for (int i = 0; i < 9; ++i) {
          const int column = x + i % 3 - 1, row = y + i / 3 - 1;
          isBorder |= !in.Has(column, row);
          const bool zero = !filter.repeats && !in.Has(column, row);
          window[static_cast<std::size_t>(i)] = zero ? 0 : in.Nearest(column, row);
        }
        const Formula formula =
            isBorder && filter.atBorder != nullptr ? filter.atBorder : filter.inside;
        out.At(x, y) = static_cast<KyBW8>(formula(window));
      }
  };
}

TEST(Filters, FormulaAndBorder) {
  for (const Filter& filter : kFilters) {
    SCOPED_TRACE(filter.trace);
    CheckOperation<KyBW8, KyBW8>(filter.call, ModelOf(filter));
  }
}

TEST(Filters, NullDestinationStandsForTheSource) {
  Random random(1);
  for (const Filter& filter : kFilters) {
    SCOPED_TRACE(filter.trace);
    const Picture<KyBW8> before = RandomPicture<KyBW8>(37, 11, random);
    Canvas<KyBW8> canvas(before, {3, 1, 2}, random);
    Picture<KyBW8> expected = before;
    ModelOf(filter)(before, expected);
    EXPECT_EQ(filter.call(canvas.roi(), nullptr), KY_OK);
    EXPECT_TRUE(Same(expected, canvas.Get()));
    EXPECT_TRUE(canvas.OnlyChanged(*canvas.roi()));
  }
}

}  // namespace
