#include "inspect/measuring.h"

#include <algorithm>

#include "support/program.h"

namespace inspect {
namespace {

// The peaks of the profile along the middle row of the box that rise above `level`.
unsigned int CountStrips(const KyROI<KyBW8>& even, const KyObject& object, unsigned int level) {
  const int y = object.y + object.height / 2;
  KyBW8Vector line;
  Must(ImgImageToLineSegment(&even, &line, object.x, y, object.x + object.width - 1, y));
  // Runs that touch an end of a profile are no peaks, so that there is a black pixel at each.
  KyBW8Vector profile(line.GetNumElements() + 2);
  Must(KyGetError());
  std::copy(line.begin(), line.end(), profile.begin() + 1);

  KyPeaksVector peaks;
  constexpr unsigned int kMinAmplitude = 8, kMinArea = 16;
  Must(ImgGetProfilePeaks(&profile, &peaks, 0, level - 1, kMinAmplitude, kMinArea));
  return peaks.GetNumElements();
}

}  // namespace

std::vector<Measured> Measure(const Prepared& prepared, const KyROI<KyBW8>& grey, KyBW32 minArea) {
  KyObjectsVector objects;
  Must(ImgFindObjects(&prepared.mask, kObjectLevel, kObjectLevel, KY_CONNEXITY_8, &objects, nullptr,
                      &grey));
  Must(ImgSelectObjects(&objects, {.minArea = minArea}));
  std::vector<Measured> all;
  for (const KyObject& object : objects) {
    Measured& measured =
        all.emplace_back(Measured{object, {}, CountStrips(prepared.even, object, prepared.level)});
    Must(ImgGetObjectShape(&object, measured.shape));
  }
  return all;
}

}  // namespace inspect
