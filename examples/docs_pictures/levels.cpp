// Levels and what cameras deliver: transforms, shading correction, conversions.
#include <algorithm>
#include <string>

#include "families.h"
#include "sheet.h"
#include "support/scene.h"

namespace docs {
namespace {

// A transform as a curve: levels from left to right, results from below.
Grey Curve(IMG_TRANSFORM_MODES mode, float parameter) {
  auto ramp = NewImage<KyBW8>(256, 1);
  for (int x = 0; x < 256; ++x) ramp.SetPixel(static_cast<KyBW8>(x), x, 0);
  Must(ImgTransform(&ramp, &ramp, mode, parameter));
  Grey chart = Panel();
  Must(ImgCopy(KyBW8{232}, &chart));
  int last = -1;
  for (int x = 0; x < kWidth; ++x) {
    const int y = (kHeight - 1) * (255 - ramp.GetPixel(x * 255 / (kWidth - 1), 0)) / 255;
    if (last < 0) last = y;
    for (int at = std::min(y, last); at <= std::max(y, last); ++at)
      for (int thick = 0; thick < 2; ++thick)
        chart.SetPixel(40, x, std::clamp(at - thick, 0, kHeight - 1));
    last = y;
  }
  return chart;
}

// How much light reaches a place, of 255.
KyBW8 Light(int x, int y) {
  const int dx = x - kWidth / 3, dy = y - kHeight / 3;
  return static_cast<KyBW8>(240 - std::min(190, (dx * dx + dy * dy) / 110));
}

// A colour chart: a fan of hues, and stripes that become finer.
KyC24 ChartColor(int x, int y) {
  if (y > 2 * kHeight / 3) {
    const int period = 2 + (kWidth - x) / 12;
    return x / period % 2 != 0 ? KyC24(250, 240, 220) : KyC24(30, 40, 60);
  }
  const int hue = x * 6 * 255 / kWidth, part = hue % 255, dim = 255 * y / kHeight;
  const int up = std::min(255, part + dim / 2), down = std::min(255, 255 - part + dim / 2);
  const auto color = [&](int r, int g, int b) {
    return KyC24(static_cast<KyBW8>(r), static_cast<KyBW8>(g), static_cast<KyBW8>(b));
  };
  switch (hue / 255) {
    case 0: return color(255, up, dim / 2);
    case 1: return color(down, 255, dim / 2);
    case 2: return color(dim / 2, 255, up);
    case 3: return color(dim / 2, down, 255);
    case 4: return color(up, dim / 2, 255);
    default: return color(255, dim / 2, down);
  }
}

// The upper left corner of a picture, five times as large.
Color Enlarged(const Color& picture, int left, int top) {
  constexpr int kFactor = 5;
  auto large = Panel<KyC24>();
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      large.SetPixel(picture.GetPixel(left + x / kFactor, top + y / kFactor), x, y);
  return large;
}

}  // namespace

void Transforms(const std::string& folder) {
  const Grey source = Parts();
  const struct {
    IMG_TRANSFORM_MODES mode;
    float parameter;
  } laws[] = {{IMG_TRANSFORM_INVERT, 1},
              {IMG_TRANSFORM_POWER, 2.2f},
              {IMG_TRANSFORM_LOGARITHM, 20},
              {IMG_TRANSFORM_EXPONENTIAL, 4},
              {IMG_TRANSFORM_SIGMOID, 12}};
  Grey curves[5], pictures[5];
  for (int i = 0; i < 5; ++i) {
    curves[i] = Curve(laws[i].mode, laws[i].parameter);
    pictures[i] = Panel();
    Must(ImgTransform(&source, &pictures[i], laws[i].mode, laws[i].parameter));
  }
  Write(folder, "transforms", 5,
        {&curves[0], &curves[1], &curves[2], &curves[3], &curves[4], &pictures[0], &pictures[1],
         &pictures[2], &pictures[3], &pictures[4]});
}

void Shading(const std::string& folder) {
  const Grey parts = Parts();
  Grey light = Panel(), seen = Panel(), corrected = Panel(), before = Panel(), after = Panel();
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      light.SetPixel(Light(x, y), x, y);
      seen.SetPixel(static_cast<KyBW8>(parts.GetPixel(x, y) * Light(x, y) / 255), x, y);
    }
  Must(ImgUniformize(&seen, &light, 255, &corrected));
  Must(ImgThreshold(&seen, &before, static_cast<unsigned>(IMG_THRESHOLD_ISODATA)));
  Must(ImgThreshold(&corrected, &after, static_cast<unsigned>(IMG_THRESHOLD_ISODATA)));
  Write(folder, "shading", 2, {&seen, &corrected, &before, &after});
}

void Conversions(const std::string& folder) {
  auto chart = Panel<KyC24>(), mosaic = Panel<KyC24>(), colors = Panel<KyC24>();
  auto false8 = Panel<KyC24>(), packed = Panel<KyC24>();
  Grey raw = Panel(), grey = Panel();
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const KyC24 c = ChartColor(x, y);
      chart.SetPixel(c, x, y);
      const int component = x % 2 != y % 2 ? 1 : y % 2 == 0 ? 0 : 2;
      const KyBW8 level = component == 0 ? c.c0 : component == 1 ? c.c1 : c.c2;
      raw.SetPixel(level, x, y);
      mosaic.SetPixel(KyC24(component == 0 ? level : KyBW8{0}, component == 1 ? level : KyBW8{0},
                            component == 2 ? level : KyBW8{0}),
                      x, y);
    }
  Must(ImgConvertBayer(&raw, &colors, KY_BAYER_RG));
  Must(ImgConvert(&chart, &grey));
  auto c15 = Panel<KyC15>();
  Must(ImgConvert(&chart, &c15));
  Must(ImgConvert(&c15, &packed));
  KyC24Vector palette(256, KyC24(0, 0, 0));
  for (int i = 0; i < 256; ++i)
    palette[static_cast<unsigned>(i)] = KyC24(static_cast<KyBW8>(std::clamp(2 * i - 128, 0, 255)),
                                              static_cast<KyBW8>(255 - std::abs(2 * i - 255)),
                                              static_cast<KyBW8>(std::clamp(255 - 2 * i, 0, 255)));
  Must(ImgLut(&grey, &false8, &palette));
  const Color mosaicLarge = Enlarged(mosaic, 60, 85), colorsLarge = Enlarged(colors, 60, 85);
  const Color greyColor = InColor(grey);
  Write(folder, "bayer", 3, {&mosaicLarge, &colorsLarge, &colors});
  Write(folder, "conversion", 2, {&chart, &greyColor, &packed, &false8});
}

}  // namespace docs
