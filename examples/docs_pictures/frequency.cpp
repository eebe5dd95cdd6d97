// Spectra, a pattern that goes, a shift that is found.
#include "ky/frequency.h"

#include <stdexcept>

#include "families.h"
#include "sheet.h"
#include "support/frequencies.h"
#include "support/scene.h"

namespace docs {
namespace {

constexpr int kLargeWidth = 300, kLargeHeight = 225;

KyImage<KyComplex64> SpectrumOf(const KyROI<KyBW8>& picture) {
  auto spectrum = SameSize<KyComplex64>(picture);
  Must(ImgSlowDFT(&picture, &spectrum));
  return spectrum;
}

// A picture, the modulus and the argument of its spectrum; below, the same of the picture blurred.
void Spectra(const std::string& folder) {
  const Grey sharp = Parts();
  Grey blurred = Panel();
  Must(ImgConvolUniform(&sharp, &blurred, 4u));
  Grey panels[2][3];
  for (int i = 0; i < 2; ++i) {
    const Grey& picture = i == 0 ? sharp : blurred;
    const auto spectrum = SpectrumOf(picture);
    panels[i][0] = Panel();
    Must(ImgCopy(&picture, &panels[i][0]));
    panels[i][1] = frequencies::Picture(spectrum);
    panels[i][2] = Panel();
    Must(ImgComplexArgument(&spectrum, &panels[i][2]));
    panels[i][2] = frequencies::Centered(panels[i][2]);
  }
  Write(folder, "spectrum", 3,
        {&panels[0][0], &panels[0][1], &panels[0][2], &panels[1][0], &panels[1][1], &panels[1][2]});
}

void Weave(const std::string& folder) {
  const Grey cloth = frequencies::Cloth(kLargeWidth, kLargeHeight, true);
  auto spectrum = SpectrumOf(cloth);
  const Grey before = frequencies::Picture(spectrum);
  frequencies::RemovePeaks(spectrum);
  const Grey after = frequencies::Picture(spectrum);
  auto surface = SameSize<KyBW8>(cloth);
  Must(ImgSlowDFT(&spectrum, &spectrum, IMG_DFT_INVERSE));
  Must(ImgComplexReal(&spectrum, &surface));
  Write(folder, "weave", 2, {&cloth, &before, &after, &surface});
}

void Shift(const std::string& folder) {
  Grey scene = scene::Draw(scene::Bundled(false));
  Must(KyGetError());
  auto reference = NewImage<KyBW8>(kLargeWidth, kLargeHeight), moved = SameSize<KyBW8>(reference);
  const KyROI<KyBW8> here(&scene, 150, 120, kLargeWidth, kLargeHeight),
      there(&scene, 110, 145, kLargeWidth, kLargeHeight);
  Must(ImgCopy(&here, &reference));
  Must(ImgCopy(&there, &moved));
  auto correlation = SameSize<KyBW8>(reference);
  const auto shift = frequencies::FindShift(moved, reference, correlation);
  if (shift.right != 40 || shift.down != -25) throw std::runtime_error("the shift is another one");
  // The point is one pixel: large enough to be seen, and with (0, 0) in the middle.
  Grey point = frequencies::Centered(correlation);
  Must(ImgDilateBox(&point, &point, 2));
  Write(folder, "shift", 3, {&reference, &moved, &point});
}

}  // namespace

void Frequencies(const std::string& folder) {
  Spectra(folder);
  Weave(folder);
  Shift(folder);
}

}  // namespace docs
