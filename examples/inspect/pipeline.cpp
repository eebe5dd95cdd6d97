#include "inspect/pipeline.h"

#include "support/program.h"

namespace inspect {
namespace {

using Grey = KyImage<KyBW8>;

Grey Smooth(const KyROI<KyBW8>& grey, Smoothing smoothing) {
  Grey smooth = SameSize<KyBW8>(grey);
  switch (smoothing) {
    case Smoothing::kNone: Must(ImgCopy(&grey, &smooth)); break;
    case Smoothing::kUniform: Must(ImgConvolUniform3x3(&grey, &smooth)); break;
    case Smoothing::kGaussian: Must(ImgConvolGaussian3x3(&grey, &smooth)); break;
  }
  return smooth;
}

// Objects bright on black, by what `preparation` says of the light.
Grey EvenLight(const Grey& grey, const Preparation& preparation) {
  Grey even = SameSize<KyBW8>(grey);
  const auto reach = static_cast<unsigned int>(preparation.reach);
  switch (preparation.light) {
    case Light::kNone:
      Must(ImgOper(preparation.dark ? KY_OPER_INVERT : KY_OPER_COPY, &grey, &even));
      break;
    case Light::kBackground:
      Must(preparation.dark ? ImgBlackTopHatBox(&grey, &even, reach)
                            : ImgWhiteTopHatBox(&grey, &even, reach));
      break;
    case Light::kSurface:
      Must(ImgAutoAdaptiveThreshold(&grey, &even, IMG_THRESHOLD_ISODATA, preparation.reach));
      Must(preparation.dark ? ImgOper(KY_OPER_SUBTRACT, &even, &grey, &even)
                            : ImgOper(KY_OPER_SUBTRACT, &grey, &even, &even));
      break;
  }
  return even;
}

// Of the levels from 0, which splits nothing, to 256, from which on there is no pixel.
unsigned int ChooseLevel(KyBW8HistogramVector& histogram, const Preparation& preparation) {
  unsigned int level = preparation.threshold;
  float below = 0, above = 0;
  Must(ImgHistogramThreshold(&histogram, level, below, above, preparation.fraction));
  return level;
}

// A picture that cannot be split has no objects.
Grey Binarise(const Grey& even, unsigned int level, const Preparation& preparation) {
  Grey mask = SameSize<KyBW8>(even);
  if (level == 0 || level > 255) return mask;
  Must(ImgThreshold(&even, &mask, level));
  if (preparation.clean > 0) Must(ImgOpenDisk(&mask, &mask, preparation.clean));
  const auto [joinX, joinY] = preparation.join;
  if (joinX > 0 || joinY > 0) Must(ImgCloseBox(&mask, &mask, joinX, joinY));
  return mask;
}

}  // namespace

Prepared Prepare(const KyROI<KyBW8>& grey, const Preparation& preparation) {
  Prepared prepared;
  prepared.even = EvenLight(Smooth(grey, preparation.smoothing), preparation);
  Must(ImgHistogram(&prepared.even, &prepared.histogram));
  prepared.level = ChooseLevel(prepared.histogram, preparation);
  prepared.mask = Binarise(prepared.even, prepared.level, preparation);
  return prepared;
}

}  // namespace inspect
