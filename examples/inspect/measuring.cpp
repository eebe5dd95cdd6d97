#include "inspect/measuring.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "support/program.h"

namespace inspect {
namespace {

// Of a polygon of steps to neighbours (Freeman, 1970): 1 along an axis, sqrt(2) along a diagonal.
double Perimeter(const KyPathVector& contour) {
  double length = 0;
  const KyPath* from = contour.end() - 1;
  for (const KyPath& to : contour) {
    length += to.x != from->x && to.y != from->y ? std::numbers::sqrt2 : to != *from;
    from = &to;
  }
  return length;
}

void MeasurePosition(const Object& object, Measures& measures) {
  double count = 0, sumX = 0, sumY = 0;
  for (const KyRun& run : object.runs) {
    count += run.length;
    sumX += run.length * (run.x + (run.length - 1) / 2.0);
    sumY += run.length * static_cast<double>(run.y);
  }
  measures.x = sumX / count;
  measures.y = sumY / count;
}

// By a histogram that a mask of runs confines to the object's own pixels.
void MeasureLevels(const Object& object, KyImage<KyBW8>& grey, Measures& measures) {
  const Box& box = object.box;
  KyROI<KyBW8> area(&grey, box.x, box.y, box.width, box.height);
  std::vector<KyMaskRun> mask;
  mask.reserve(object.runs.size());
  for (const KyRun& run : object.runs)
    mask.push_back({(run.y - box.y) * area.GetPitch() + run.x - box.x, run.length});
  Must(area.SetMask(mask.data(), static_cast<unsigned int>(mask.size()), false));

  KyBW8HistogramVector histogram;
  Must(ImgHistogram(&area, &histogram));
  measures.mean = ImgAnalyseHistogram(&histogram, IMG_HISTOGRAM_MEAN, 0, 255);
  measures.deviation = ImgAnalyseHistogram(&histogram, IMG_HISTOGRAM_STD_DEV, 0, 255);
}

// The peaks of the profile along the middle row of the box that rise above `level`.
unsigned int CountStrips(const KyROI<KyBW8>& even, const Box& box, unsigned int level) {
  const int y = box.y + box.height / 2;
  KyBW8Vector line;
  Must(ImgImageToLineSegment(&even, &line, box.x, y, box.x + box.width - 1, y));
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

Measures Measure(const Object& object, KyImage<KyBW8>& grey, const KyROI<KyBW8>& even,
                 unsigned int level) {
  Measures measures;
  measures.box = object.box;
  measures.area = object.area;
  measures.perimeter = Perimeter(object.contour);
  MeasurePosition(object, measures);
  MeasureLevels(object, grey, measures);
  measures.strips = CountStrips(even, object.box, level);
  return measures;
}

}  // namespace inspect
