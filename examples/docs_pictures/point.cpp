// Pixel by pixel: operators, lookup, thresholds, mirrors.
#include "families.h"
#include "sheet.h"

namespace docs {

void Operators(const std::string& folder) {
  const Grey good = Parts(false), part = Parts(true);
  Grey difference = Panel(), mask = Panel();
  Must(ImgOper(KY_OPER_ABS_DIFFERENCE, &good, &part, &difference));
  Must(ImgOper(KY_OPER_GREATER, &difference, KyBW8{40}, &mask));
  Must(ImgOper(KY_OPER_MULTIPLY, &difference, KyBW8{2}, &difference));

  const Color left = InColor(good), middle = InColor(difference);
  auto right = Panel<KyC24>();
  ImgSetOverlayColor({255, 0, 0});
  Must(ImgOper(KY_OPER_OVERLAY, &part, &mask, &right));
  Write(folder, "operators", 3, {&left, &middle, &right});
}

void Lookup(const std::string& folder) {
  Grey source = Parts(), gain = Panel(), normal = Panel(), steps = Panel();
  Must(ImgGainOffset(&source, &source, 0.35f, 30));  // a camera with its iris nearly shut
  Must(ImgGainOffset(&source, &gain, 2.5f, -75));
  Must(ImgNormalize(&source, &normal, 128, 50));
  KyBW8Vector table(256);
  for (unsigned i = 0; i < 256; ++i) table[i] = static_cast<KyBW8>(i / 64 * 85);  // four levels
  Must(ImgLut(&gain, &steps, &table));
  Write(folder, "lookup", 2, {&source, &gain, &normal, &steps});
}

void Thresholds(const std::string& folder) {
  Grey source = Parts(), uneven = Panel(), global = Panel(), levels = Panel();
  Grey surface = Panel(), adaptive = Panel();
  for (int y = 0; y < kHeight; ++y)  // stray light from the left
    for (int x = 0; x < kWidth; ++x)
      uneven.SetPixel(static_cast<KyBW8>((source.GetPixel(x, y) * 5 + (kWidth - x) * 4) / 8), x, y);
  const auto mode = static_cast<unsigned>(IMG_THRESHOLD_ISODATA);
  Must(ImgThreshold(&uneven, &global, mode));
  Must(ImgDoubleThreshold(&uneven, &levels, 80, 140));
  Must(ImgAutoAdaptiveThreshold(&uneven, &surface, IMG_THRESHOLD_ISODATA, 75));
  Must(ImgOper(KY_OPER_GREATER_OR_EQUAL, &uneven, &surface, &adaptive));
  Must(ImgThreshold(&source, &source, mode));
  Write(folder, "thresholds", 3, {&uneven, &global, &levels, &source, &surface, &adaptive});
}

namespace {

// The source split by a mode, and beside it the histogram with the level in red.
struct Split {
  Color objects, chart;

  Split(const Grey& source, IMG_THRESHOLD_MODES mode) {
    KyBW8HistogramVector histogram;
    Must(ImgHistogram(&source, &histogram));
    KyBW32Vector counts(256);
    for (unsigned i = 0; i < 256; ++i) counts[i] = histogram[i];
    unsigned level = static_cast<unsigned>(mode);
    float below, above;
    Must(ImgHistogramThreshold(&histogram, level, below, above, 0.8f));
    Grey split = Panel();
    Must(ImgThreshold(&source, &split, level));
    objects = InColor(split);
    chart = InColor(Chart(counts));
    const int x = static_cast<int>(level) * kWidth / 256;
    Must(ImgLineSegmentToImage(&chart, KyC24(220, 0, 0), x, 0, x, kHeight - 1));
  }
};

}  // namespace

void ThresholdModes(const std::string& folder) {
  const Grey parts = Parts();
  const Split quadratic(parts, IMG_THRESHOLD_QUADRATIC_BLACK_WHITE);
  const Split linear(parts, IMG_THRESHOLD_LINEAR_BLACK_WHITE);
  const Split isodata(parts, IMG_THRESHOLD_ISODATA);
  const Split entropy(parts, IMG_THRESHOLD_MAX_ENTROPY);
  const Split residue(parts, IMG_THRESHOLD_MIN_RESIDUE);
  const Split relative(parts, IMG_THRESHOLD_RELATIVE);
  Write(folder, "threshold_modes", 3,
        {&residue.objects, &isodata.objects, &entropy.objects, &residue.chart, &isodata.chart,
         &entropy.chart, &linear.objects, &quadratic.objects, &relative.objects, &linear.chart,
         &quadratic.chart, &relative.chart});
}

void Mirrors(const std::string& folder) {
  const Grey source = Parts();
  Grey vertical = Panel(), horizontal = Panel();
  Must(ImgCopy(&source, &vertical));
  Must(ImgCopy(&source, &horizontal));
  Must(ImgVerticalMirror(&vertical));
  Must(ImgHorizontalMirror(&horizontal));
  Write(folder, "mirrors", 3, {&source, &vertical, &horizontal});
}

}  // namespace docs
