#include "support/frequencies.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "ky/ky.h"
#include "support/program.h"

namespace frequencies {
namespace {

// What stands out: by so many levels of the logarithmic picture, above the mean over so many
// frequencies to each side.
constexpr KyBW8 kOut = 50;
constexpr unsigned kAround = 6;
// The lowest frequencies, to each side.
constexpr int kLowest = 9;

KyImage<KyBW8> Logarithmic(const KyROI<KyComplex64>& spectrum) {
  auto picture = SameSize<KyBW8>(spectrum);
  Must(ImgComplexRescaledModulus(&spectrum, &picture, true));
  return picture;
}

}  // namespace

KyImage<KyBW8> Cloth(int width, int height, bool threads) {
  std::mt19937 random(1);
  std::normal_distribution<double> noise(0, 2);
  auto cloth = NewImage<KyBW8>(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const double right = (x - 0.6 * width) / (0.15 * width),
                   down = (y - 0.45 * height) / (0.1 * height);
      const double stain = 14 * std::exp(-right * right - down * down);
      const double warp = std::sin(2 * std::numbers::pi * x / 7.3),
                   weft = std::sin(2 * std::numbers::pi * y / 9.1);
      const double weave = threads ? 40 * warp * weft + 15 * warp + 15 * weft : 0;
      const double level = 140 - stain + weave + noise(random);
      cloth.SetPixel(static_cast<KyBW8>(std::clamp(std::lround(level), 0l, 255l)), x, y);
    }
  return cloth;
}

KyImage<KyBW8> Centered(const KyROI<KyBW8>& picture) {
  const int width = picture.GetWidth(), height = picture.GetHeight();
  auto centered = SameSize<KyBW8>(picture);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      centered.SetPixel(picture.GetPixel(x, y), (x + width / 2) % width, (y + height / 2) % height);
  return centered;
}

KyImage<KyBW8> Picture(const KyROI<KyComplex64>& spectrum) {
  return Centered(Logarithmic(spectrum));
}

int RemovePeaks(KyROI<KyComplex64>& spectrum) {
  const int width = spectrum.GetWidth(), height = spectrum.GetHeight();
  const auto levels = Logarithmic(spectrum);
  auto peaks = SameSize<KyBW8>(spectrum);
  Must(ImgConvolUniform(&levels, &peaks, kAround));
  Must(ImgOper(KY_OPER_SUBTRACT, &levels, &peaks, &peaks));
  Must(ImgThreshold(&peaks, &peaks, kOut));
  Must(ImgDilateBox(&peaks, &peaks, 2, 2));
  int removed = 0;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const int u = std::min(x, width - x), v = std::min(y, height - y);
      if (peaks.GetPixel(x, y) == 0 || (u <= kLowest && v <= kLowest)) continue;
      spectrum.SetPixel({0, 0}, x, y);
      ++removed;
    }
  return removed;
}

Shift FindShift(const KyROI<KyBW8>& picture, const KyROI<KyBW8>& reference,
                KyROI<KyBW8>& correlation) {
  const int width = picture.GetWidth(), height = picture.GetHeight();
  auto cross = SameSize<KyComplex64>(picture), other = SameSize<KyComplex64>(picture);
  Must(ImgSlowDFT(&picture, &cross));
  Must(ImgSlowDFT(&reference, &other));
  Must(ImgComplexMultiply(&cross, &other, &cross, true));
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const KyComplex64 z = cross.GetPixel(x, y);
      const float factor = 255 / std::max(std::hypot(z.re, z.im), 1e-6f);
      cross.SetPixel({z.re * factor, z.im * factor}, x, y);
    }
  Must(ImgSlowDFT(&cross, &cross, IMG_DFT_INVERSE));
  Must(ImgComplexReal(&cross, &correlation));

  Shift best{0, 0};
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (correlation.GetPixel(x, y) > correlation.GetPixel(best.right, best.down)) best = {x, y};
  // The second half is that of negative shifts.
  if (best.right > width / 2) best.right -= width;
  if (best.down > height / 2) best.down -= height;
  return best;
}

}  // namespace frequencies
