// What becomes of pixels when they are counted, followed and listed.
#include <algorithm>
#include <cstdio>

#include "families.h"
#include "sheet.h"

namespace docs {
namespace {

KyBW32Vector Counts(const Grey& picture) {
  KyBW8HistogramVector histogram;
  Must(ImgHistogram(&picture, &histogram));
  KyBW32Vector counts(256);
  for (unsigned i = 0; i < 256; ++i) counts[i] = histogram[i];
  return counts;
}

// The outer contour of the object that is met first on the way down from (x, y).
KyPathVector ContourBelow(const Grey& picture, int x, int y, unsigned threshold) {
  while (picture.GetPixel(x, y) < threshold) ++y;
  KyPathVector contour;
  Must(ImgContour(&picture, KY_CONTOUR_CW_ALONG_BORDER, x, y, KY_CONTOUR_ABOVE_THRESHOLD, threshold,
                  KY_CONNEXITY_8, &contour));
  return contour;
}

}  // namespace

void Histograms(const std::string& folder) {
  Grey source = Parts(), equalised = Panel();
  Must(ImgGainOffset(&source, &source, 0.6f, 20));
  Must(ImgEqualize(&source, &equalised));
  KyBW32Vector columns, rows;
  Must(ImgProjectOnARow(&source, &columns));
  Must(ImgProjectOnAColumn(&source, &rows));
  const Grey before = Chart(Counts(source)), after = Chart(Counts(equalised));
  const Grey ofColumns = Chart(columns), ofRows = Chart(rows);
  Write(folder, "histogram", 3, {&source, &before, &ofColumns, &equalised, &after, &ofRows});
}

void Profiles(const std::string& folder) {
  constexpr unsigned kThreshold = 120;
  constexpr int kX0 = 10, kY0 = 20, kX1 = 190, kY1 = 70;
  const Grey source = Parts();
  KyBW8Vector profile, smooth;
  Must(ImgImageToLineSegment(&source, &profile, kX0, kY0, kX1, kY1));
  Must(ImgConvolBinomial(&profile, &smooth, 2));
  KyPeaksVector peaks;
  Must(ImgGetProfilePeaks(&smooth, &peaks, 0, kThreshold, 20, 100));

  Color marked = InColor(source);
  Must(ImgLineSegmentToImage(&marked, KyC24{255, 64, 64}, kX0, kY0, kX1, kY1));
  KyBW32Vector levels(smooth.GetNumElements());
  for (unsigned i = 0; i < levels.GetNumElements(); ++i) levels[i] = smooth[i];
  Color chart = InColor(Chart(levels));
  const unsigned highest = *std::max_element(levels.begin(), levels.end());
  const int y = kHeight - static_cast<int>(kThreshold * (kHeight - 8) / highest);
  Must(ImgLineSegmentToImage(&chart, KyC24{255, 64, 64}, 0, y, kWidth - 1, y));
  for (const KyPeak& peak : peaks) {
    const auto x =
        static_cast<int>(peak.center * kWidth / static_cast<float>(levels.GetNumElements()));
    Mark(chart, x, y, {0, 200, 0}, 7);
    const int along = static_cast<int>(peak.center);  // one point of the segment a column
    Mark(marked, kX0 + along, kY0 + along * (kY1 - kY0) / (kX1 - kX0), {0, 255, 0}, 5);
  }
  Write(folder, "profile", 2, {&marked, &chart});
}

void Contours(const std::string& folder) {
  Grey smooth = Parts();
  Must(ImgConvolGaussian3x3(&smooth, &smooth));
  const unsigned threshold = ImgAutoThreshold(&smooth, IMG_THRESHOLD_MIN_RESIDUE);
  Color marked = InColor(smooth);
  const KyC24 colors[] = {{255, 64, 64}, {64, 255, 64}, {255, 220, 0}};
  const int starts[][2] = {{48, 2}, {146, 2}, {92, 90}};
  for (int i = 0; i < 3; ++i)
    for (const KyPath& at : ContourBelow(smooth, starts[i][0], starts[i][1], threshold))
      Mark(marked, at.x, at.y, colors[i], 2);

  // A region that cuts a washer: its border closes the contour (yellow), or stops it (red).
  constexpr int kX = 30, kY = 40, kCutWidth = 120, kCutHeight = 80;
  Grey washer = Washer();
  KyROI<KyBW8> cut(&washer, kX, kY, kCutWidth, kCutHeight);
  Color second = InColor(washer);
  int x = 0;
  while (cut.GetPixel(x, 35) < threshold) ++x;
  const struct {
    CONTOUR_MODE mode;
    KyC24 color;
    int size;
  } modes[] = {{KY_CONTOUR_CW_ALONG_BORDER, {255, 220, 0}, 5},
               {KY_CONTOUR_CW_STOP_AT_BORDER, {255, 0, 0}, 3}};
  for (const auto& [mode, color, size] : modes) {
    KyPathVector contour;
    const KY_ERRORS error = ImgContour(&cut, mode, x, 35, KY_CONTOUR_ABOVE_THRESHOLD, threshold,
                                       KY_CONNEXITY_8, &contour);
    if (error != KY_ERROR_PATH_STOPPED) Must(error);
    for (const KyPath& at : contour) Mark(second, kX + at.x, kY + at.y, color, size);
  }
  Write(folder, "contour", 2, {&marked, &second});
}

void TypedVectors(const std::string& folder) {
  // A contour goes to a file, and another program draws it.
  Grey smooth = Parts();
  Must(ImgConvolGaussian3x3(&smooth, &smooth));
  const unsigned threshold = ImgAutoThreshold(&smooth, IMG_THRESHOLD_MIN_RESIDUE);
  const std::string name = folder + "/contour.ky";
  Must(ContourBelow(smooth, 92, 90, threshold).Save(name.c_str()));
  KyPathVector loaded;
  Must(loaded.Load(name.c_str()));
  std::remove(name.c_str());
  Grey drawn = Panel();
  Must(ImgCopy(KyBW8{255}, &drawn));
  for (const KyPath& at : loaded) drawn.SetPixel(0, at.x, at.y);
  Write(folder, "typed_vector", 2, {&smooth, &drawn});
}

}  // namespace docs
