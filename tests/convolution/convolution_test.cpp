// Convolution with kernels against literal models of its workers.
#include "ky/convolution.h"

#include <cmath>
#include <limits>
#include <vector>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

struct Grid {
  int sizeX, sizeY;
  std::vector<float> coefficients;
  float gain = 1;
  int rectifier = 2, offset = 0, outside = 0;

  float At(int x, int y) const { return coefficients[static_cast<std::size_t>(y * sizeX + x)]; }
  void Fill(KyKernel& kernel) const {
    ASSERT_EQ(kernel.SetSizeX(static_cast<std::int16_t>(sizeX)), KY_OK);
    ASSERT_EQ(kernel.SetSizeY(static_cast<std::int16_t>(sizeY)), KY_OK);
    if (kernel.GetDataPtr() == nullptr) kernel.SetAllocatedSize(1);
    std::copy(coefficients.begin(), coefficients.end(), kernel.GetDataPtr());
    kernel.SetGain(gain);
    kernel.SetRectifier(static_cast<std::int16_t>(rectifier));
    kernel.SetOffset(static_cast<std::uint32_t>(offset));
    kernel.SetOutsideValue(static_cast<std::uint32_t>(outside));
  }
  friend std::ostream& operator<<(std::ostream& out, const Grid& g) {
    out << g.sizeX << " x " << g.sizeY << ", gain " << g.gain << ", rectifier " << g.rectifier
        << ", offset " << g.offset << ", outside " << g.outside << ':';
    for (const float c : g.coefficients) out << ' ' << c;
    return out;
  }
};

KyBW8 Level(std::int64_t v) { return static_cast<KyBW8>(std::clamp<std::int64_t>(v, 0, 255)); }
float Number(float v) { return std::isnan(v) ? 0.0f : v; }
std::int32_t Truncated(float v) {
  return static_cast<std::int32_t>(std::clamp(Number(v), -2147483520.0f, 2147483520.0f));
}

float EffectiveGain(float s, float a, float gain) {
  return std::fabs(s) > 0.00001f * a ? gain / s : gain;
}
float EffectiveGain(const Grid& g) {
  float s = 0, a = 0;
  for (const float c : g.coefficients) {
    s += Number(c);
    a += std::fabs(Number(c));
  }
  return EffectiveGain(s, a, g.gain);
}

KyBW8 General(const Grid& g, float gain, const Picture<KyBW8>& in, int x, int y) {
  float sum = 0;
  for (int j = 0; j < g.sizeY; ++j)
    for (int i = 0; i < g.sizeX; ++i) {
      const int column = x - g.sizeX / 2 + i, row = y - g.sizeY / 2 + j;
      const int level = in.Has(column, row) ? in.At(column, row) : g.outside;
      const float c = Number(Number(g.At(i, j)) * gain);
      const float product = c * static_cast<float>(level);
      sum = sum + product;
    }
  std::int64_t r = Truncated(sum);
  switch (g.rectifier) {
    case 1: r = r > 0 ? 0 : -r; break;
    case 2: r = r < 0 ? 0 : r; break;
    case 3: r = std::abs(r); break;
    default: break;
  }
  return Level(r + g.offset);
}

KyBW8 Positive(const Grid& g, float gain, const Picture<KyBW8>& in, int x, int y) {
  std::int32_t sum = 0;
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i < 3; ++i)
      sum += static_cast<std::int16_t>(Truncated(256.0f * gain * Number(g.At(i, j)))) *
             in.Nearest(x - 1 + i, y - 1 + j);
  return Level(sum >> 8);
}

KyBW8 FifteenBits(const Grid& g, float gain, const Picture<KyBW8>& in, int x, int y, KyBW8 old) {
  if (g.rectifier < 1 || g.rectifier > 3) return old;
  std::int64_t offset = std::int64_t{g.offset} * 32768;
  if (g.rectifier == 1) {
    gain = -gain;
    offset = -offset;
  }
  std::int64_t sum = offset;
  const int r = g.sizeX / 2;
  for (int j = 0; j < g.sizeY; ++j)
    for (int i = 0; i < g.sizeX; ++i)
      sum += std::int64_t{Truncated(32768.0f * gain * Number(g.At(i, j)))} *
             in.Nearest(x - r + i, y - r + j);
  const std::int64_t v = sum >> 15;
  return Level(g.rectifier == 3 ? std::abs(v) : v);
}

auto Convolved(const Grid& g) {
  return [g, gain = EffectiveGain(g)](const Picture<KyBW8>& in, Picture<KyBW8>& out) {
    const bool square = g.sizeX == g.sizeY && (g.sizeX == 3 || g.sizeX == 5 || g.sizeX == 7);
    for (int y = 0; y < in.height; ++y)
      for (int x = 0; x < in.width; ++x)
        out.At(x, y) = g.rectifier <= 0 || !square ? General(g, gain, in, x, y)
                       : g.sizeX == 3 && g.rectifier == 2
                           ? Positive(g, gain, in, x, y)
                           : FifteenBits(g, gain, in, x, y, out.At(x, y));
  };
}

// Only the coefficients of the upper left triangle are read; each stands for its mirror images.
auto SymmetricallyConvolved(const Grid& g) {
  Grid all = g;
  const int r = g.sizeX / 2;
  float s = 0, a = 0;
  for (int j = 0; j <= r; ++j)
    for (int i = j; i <= r; ++i) {
      float count = 0;
      for (int y = -r; y <= r; ++y)
        for (int x = -r; x <= r; ++x) {
          if (std::max(std::abs(x), std::abs(y)) != r - j ||
              std::min(std::abs(x), std::abs(y)) != r - i)
            continue;
          all.coefficients[static_cast<std::size_t>((y + r) * g.sizeX + x + r)] = g.At(i, j);
          ++count;
        }
      s += count * Number(g.At(i, j));
      a += count * std::fabs(Number(g.At(i, j)));
    }
  return [all, gain = EffectiveGain(s, a, g.gain)](const Picture<KyBW8>& in, Picture<KyBW8>& out) {
    for (int y = 0; y < in.height; ++y)
      for (int x = 0; x < in.width; ++x)
        out.At(x, y) = FifteenBits(all, gain, in, x, y, out.At(x, y));
  };
}

// The same of each component.
template <class Model>
auto ByComponent(const Model& model) {
  return [model](const Picture<KyC24>& in, Picture<KyC24>& out) {
    for (KyBW8 KyC24::*const component : {&KyC24::c0, &KyC24::c1, &KyC24::c2}) {
      Picture<KyBW8> from(in.width, in.height), to = from;
      for (std::size_t i = 0; i < in.pixels.size(); ++i) {
        from.pixels[i] = in.pixels[i].*component;
        to.pixels[i] = out.pixels[i].*component;
      }
      model(from, to);
      for (std::size_t i = 0; i < in.pixels.size(); ++i) out.pixels[i].*component = to.pixels[i];
    }
  };
}

const std::vector<Size> kSizes = {{1, 1}, {2, 3}, {5, 4}, {7, 13}, {67, 15}, {0, 2}};

void Check(const Grid& g, const std::vector<Size>& sizes = kSizes) {
  SCOPED_TRACE(testing::Message() << g);
  KyKernel kernel;
  g.Fill(kernel);
  CheckOperation<KyBW8, KyBW8>(
      [&](auto* in, auto* out) { return ImgConvolKernel(in, out, &kernel); }, Convolved(g), sizes);
  CheckOperation<KyC24, KyC24>(
      [&](auto* in, auto* out) { return ImgConvolKernel(in, out, &kernel); },
      ByComponent(Convolved(g)), {sizes[1], sizes.back(), {45, 6}});
}
void CheckSymmetric(const Grid& g) {
  SCOPED_TRACE(testing::Message() << "symmetric, " << g);
  KyKernel kernel;
  g.Fill(kernel);
  CheckOperation<KyBW8, KyBW8>(
      [&](auto* in, auto* out) { return ImgConvolSymmetricKernel(in, out, &kernel); },
      SymmetricallyConvolved(g), kSizes);
  CheckOperation<KyC24, KyC24>(
      [&](auto* in, auto* out) { return ImgConvolSymmetricKernel(in, out, &kernel); },
      ByComponent(SymmetricallyConvolved(g)), {{2, 3}, {0, 2}, {45, 6}});
}

std::vector<float> RandomCoefficients(int count, bool positive, Random& random) {
  std::uniform_real_distribution<float> real(positive ? 0.0f : -1.0f, 1.0f);
  std::vector<float> all;
  for (int i = 0; i < count; ++i) all.push_back(real(random));
  return all;
}

// Gains and offsets take the integer workers from 16-bit sums over split weights to 64 bits.
TEST(ConvolKernel, DedicatedSizes) {
  Random random(5);
  for (const int size : {3, 5, 7})
    for (const int rectifier : {0, 1, 2, 3, 4, -1})
      for (const bool positive : {true, false})
        for (const auto& [gain, offset] : {std::pair{1.0f, 0},
                                           {-1.0f, 20},
                                           {9.5f, -300},
                                           {400.0f, 7},
                                           {1e9f, -2147483647 - 1}}) {
          const Grid g = {size,      size,      RandomCoefficients(size * size, positive, random),
                          gain,      rectifier, offset,
                          offset / 3};
          Check(g);
          if (rectifier > 0) CheckSymmetric(g);
          if (HasFailure()) return;
        }
}

TEST(ConvolKernel, IntegersAndSymmetricGrids) {
  const std::vector<float> grids[] = {{-1, 0, 1, -2, 0, 2, -1, 0, 1},  {1, 2, 1, 2, 4, 2, 1, 2, 1},
                                      {0, -1, 0, -1, 5, -1, 0, -1, 0}, {0, 0, 0, 0, 1, 0, 0, 0, 0},
                                      {1, 1, 1, 1, 1, 1, 1, 1, 1},     {0, 0, 0, 0, 0, 0, 0, 0, 0},
                                      {1, 1, 1, 1, -8, 1, 1, 1, 1}};
  for (const auto& coefficients : grids)
    for (const int rectifier : {0, 1, 2, 3})
      for (const int offset : {0, 128, -90, -70000, 70000}) {
        const Grid g = {3, 3, coefficients, 1, rectifier, offset, 255};
        Check(g);
        if (rectifier > 0) CheckSymmetric(g);
      }
  Check({3, 3, {0, 1, 0, 1, 30, 1, 0, 2, 0}, 0.45f, 2, 0, 0});  // a sharp peak, darkened
  Grid binomial = {5, 5, {}, 1, 3, 0, 0};
  for (const int row : {1, 4, 6, 4, 1})
    for (const int column : {1, 4, 6, 4, 1})
      binomial.coefficients.push_back(static_cast<float>(row * column));
  Check(binomial);
  binomial.rectifier = 0;  // in integers, too
  Check(binomial);
}

TEST(ConvolKernel, OtherSizes) {
  Random random(6);
  for (const auto& [x, y] : {std::pair{1, 1},
                             {2, 2},
                             {4, 4},
                             {1, 7},
                             {6, 1},
                             {3, 5},
                             {9, 9},
                             {15, 2},
                             {0, 3},
                             {3, 0},
                             {-2, 3},
                             {-3, -3},
                             {70, 70}})
    for (const int rectifier : {0, 1, 2, 3, 7}) {
      const int count = std::max(x, 0) * std::max(y, 0);
      Check(
          {x, y, RandomCoefficients(count, false, random), 2, rectifier, rectifier * 40 - 60, -300},
          {{1, 1}, {5, 3}, {36, 4}});
    }
}

// The border of a uniform picture darkens, its interior does not; single precision all the way.
TEST(ConvolKernel, UniformGridOnFlatPictures) {
  const Grid g = {5, 5, std::vector<float>(25, 1.0f), 1, 0, 0, 0};
  KyKernel kernel;
  g.Fill(kernel);
  ForEachPath([&](const std::string&) {
    Random random(7);
    for (int level = 0; level < 256; ++level) {
      const Picture<KyBW8> flat(41, 7, static_cast<KyBW8>(level));
      Canvas<KyBW8> in(flat, {}, random), out(41, 7, {}, random);
      ASSERT_EQ(ImgConvolKernel(in.roi(), out.roi(), &kernel), KY_OK);
      Picture<KyBW8> expected = flat;
      Convolved(g)(flat, expected);
      ASSERT_TRUE(Same(expected, out.Get()));
    }
  });
}

TEST(ConvolKernel, NumbersThatAreNone) {
  for (const float odd : {kNaN, kInfinity, -kInfinity, 3e38f, -3e38f, 1e-42f})
    for (const float gain : {1.0f, odd, 0.0f, -1e30f})
      for (const int rectifier : {0, 3})
        for (const int size : {3, 4, 5}) {
          Grid g = {
              size,      size,      std::vector<float>(static_cast<std::size_t>(size * size), 1.0f),
              gain,      rectifier, -2147483647 - 1,
              2147483647};
          g.coefficients[1] = odd;
          for (const int offset : {0, 2147483647, -2147483500}) {
            g.offset = offset;
            Check(g, {{1, 1}, {36, 3}});
          }
        }
}

TEST(ConvolKernel, Refusals) {
  Random random(8);
  Canvas<KyBW8> in(9, 5, {}, random), out(9, 5, {}, random);
  using Convolve = KY_ERRORS (*)(const KyROI<KyBW8>*, KyROI<KyBW8>*, const KyKernel*) noexcept;
  const auto expect = [&](KY_ERRORS code, const std::vector<const char*>& trace, Convolve call,
                          const KyROI<KyBW8>* source, const KyKernel* kernel) {
    EXPECT_EQ(call(source, out.roi(), kernel), code);
    Harness<KyBW8, KyBW8>::ExpectTrace(code, trace);
    EXPECT_TRUE(out.Unchanged());
  };
  const KyKernel none, nine(9, 9, 1, 0, 2, 0), nineWithout(9, 9, 1, 0, 0, 0);
  const KyKernel negative(3, 3, 1, 0, -2, 0);
  KyKernel lost;
  lost.SetRectifier(2);
  const std::vector<const char*> kernelTrace = {"ImgConvolKernel"},
                                 symmetricTrace = {"ImgConvolSymmetricKernel"};
  expect(KY_ERROR_KERNEL_SIZE, kernelTrace, ImgConvolKernel, in.roi(), nullptr);
  expect(KY_ERROR_KERNEL_SIZE, kernelTrace, ImgConvolKernel, in.roi(), &none);
  expect(KY_ERROR_NO_IMAGE, kernelTrace, ImgConvolKernel, nullptr, nullptr);
  expect(KY_ERROR_KERNEL_SIZE, symmetricTrace, ImgConvolSymmetricKernel, nullptr, nullptr);
  expect(KY_ERROR_KERNEL_1702, symmetricTrace, ImgConvolSymmetricKernel, nullptr, &nineWithout);
  expect(KY_ERROR_KERNEL_1702, symmetricTrace, ImgConvolSymmetricKernel, in.roi(), &negative);
  expect(KY_ERROR_KERNEL_1703, symmetricTrace, ImgConvolSymmetricKernel, nullptr, &nine);
}

}  // namespace
