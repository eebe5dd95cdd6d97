// A part with fine stripes in other sizes, and a pyramid.
#include "families.h"
#include "sheet.h"

namespace docs {
namespace {

// The middle of a picture, or all of it, with each pixel shown as `scale` x `scale`.
Grey Enlarged(const Grey& small, int scale) {
  Grey large = Panel();
  const int left = (small.GetWidth() - kWidth / scale) / 2;
  const int above = (small.GetHeight() - kHeight / scale) / 2;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      large.SetPixel(small.GetPixel(left + x / scale, above + y / scale), x, y);
  return large;
}

}  // namespace

void Sizes(const std::string& folder) {
  // Rings that become finer outwards: a chirp, which shows aliasing.
  Grey source = Panel();
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const int dx = x - kWidth / 2, dy = y - kHeight / 2;
      source.SetPixel((dx * dx + dy * dy) / 160 % 2 == 0 ? 220 : 40, x, y);
    }
  Grey shrunk = NewImage<KyBW8>(kWidth * 2 / 5, kHeight * 2 / 5);
  Grey resized = NewImage<KyBW8>(kWidth * 2 / 5, kHeight * 2 / 5);
  Must(ImgShrink(&source, &shrunk));
  Must(ImgResize(&source, &resized));
  const Grey shrunkLarge = Enlarged(shrunk, 5), resizedLarge = Enlarged(resized, 5);

  // The middle of a part, enlarged five times: smoothly, and pixel by pixel.
  Grey parts = Parts();
  Grey detail = NewImage<KyBW8>(kWidth / 5, kHeight / 5);
  const KyROI<KyBW8> corner(&parts, 28, 30, kWidth / 5, kHeight / 5);
  Must(ImgCopy(&corner, &detail));
  Grey smooth = Panel();
  Must(ImgResize(&detail, &smooth));
  const Grey blocks = Enlarged(detail, 5);

  KyPyramid pyramid;
  Must(pyramid.SetNumLevels(4));
  Must(pyramid.Build(&parts));
  Grey levels = Panel();
  int y = 0;
  for (int i = 1; i < pyramid.GetNumLevels(); ++i) {
    const KyROI<KyBW8>& level = *pyramid.GetBW8Level(i);
    KyROI<KyBW8> place(&levels, i == 1 ? 0 : kWidth / 2 + kGap, i == 1 ? 0 : y, level.GetWidth(),
                       level.GetHeight());
    if (i > 1) y += level.GetHeight() + kGap;
    Must(ImgCopy(&level, &place));
  }
  Write(folder, "sizes", 3, {&source, &shrunkLarge, &resizedLarge, &blocks, &smooth, &levels});
}

}  // namespace docs
