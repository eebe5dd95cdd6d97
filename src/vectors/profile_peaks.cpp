// Peaks and valleys of profiles.
#include <algorithm>
#include <cstdint>

#include "foundation/frame.h"
#include "ky/profile.h"

namespace {

using ky::Call;

enum class Side { kBetween, kPeak, kValley };

// A run as it grows.
struct Run {
  __extension__ using Sum = __int128;  // a profile has up to 2^32 elements of 32 bits

  Side side;
  std::int64_t start, amplitude = 0;
  Sum area = 0, moment = 0;  // the sum of the distances, and that of the areas after each element

  void Add(std::int64_t d) {
    amplitude = side == Side::kPeak ? std::max(amplitude, d) : std::min(amplitude, d);
    area += d;
    moment += area;
  }
  bool Reaches(unsigned minAmplitude, unsigned minArea) const {
    const std::int64_t sign = side == Side::kPeak ? 1 : -1;
    return sign * amplitude >= minAmplitude && sign * area >= minArea;
  }
  KyPeak Record(std::int64_t end) const {
    const double center = area != 0 ? static_cast<double>(end) -
                                          static_cast<double>(moment) / static_cast<double>(area)
                                    : static_cast<double>(start + end - 1) * 0.5;
    return {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(end - start),
            static_cast<float>(center), Limited(amplitude), Limited(area)};
  }
  static std::int32_t Limited(Sum sum) {
    return static_cast<std::int32_t>(std::clamp<Sum>(sum, INT32_MIN, INT32_MAX));
  }
};

// Which runs ImgGetProfilePeaks records.
struct PeakLimits {
  unsigned lowThreshold, highThreshold, minAmplitude, minArea;
};

// visit(run, end) for the runs to be recorded.
template <class T, class Visit>
void VisitPeaks(const T* levels, std::int64_t n, const PeakLimits& limits,
                const Visit& visit) noexcept {
  Run run = {Side::kBetween, 0};
  for (std::int64_t i = 0; i < n; ++i) {
    const T level = levels[i];
    const Side side = level > limits.highThreshold  ? Side::kPeak
                      : level < limits.lowThreshold ? Side::kValley
                                                    : Side::kBetween;
    if (side != run.side) {
      if (run.side != Side::kBetween && run.start > 0 &&
          run.Reaches(limits.minAmplitude, limits.minArea))
        visit(run, i);
      run = {side, i};
    }
    // A run at the start is never recorded, and so not added up. The threshold of a valley there
    // may be any 32-bit number; that of a later valley is at most the level before it.
    if (side != Side::kBetween && run.start > 0)
      run.Add(std::int64_t{level} -
              (side == Side::kPeak ? limits.highThreshold : limits.lowThreshold));
  }
}

// Makes room for `count` records, as if they were added one by one, and leaves them in use. The
// vector stays as it was when there is no memory for them.
KY_ERRORS MakeRoom(KyPeaksVector& peaks, unsigned count) noexcept {
  std::uint64_t room = peaks.GetMaxElements();
  while (room < count) room = std::max<std::uint64_t>(2 * room, 1);
  if (peaks.SetMaxElements(static_cast<unsigned>(room)) != KY_OK)
    return ky::FailIn(KY_ERROR_NOT_ENOUGH_MEMORY, {"KyVector::AddElement"});
  return peaks.SetNumElements(count);
}

template <class T>
KY_ERRORS FindPeaks(const KyPixelVectorTemplate<T>* profile, KyPeaksVector* peaks,
                    const PeakLimits& limits) noexcept {
  return Call("ImgGetProfilePeaks", [&] {
    if (profile == nullptr || peaks == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (limits.lowThreshold > limits.highThreshold)
      return ky::Explain(KY_ERROR_BAD_INTERVAL, "lowThreshold exceeds highThreshold");
    const T* const levels = profile->GetDataPtr();
    const std::int64_t n = profile->GetNumElements();
    unsigned count = 0;
    VisitPeaks(levels, n, limits, [&](const Run&, std::int64_t) { ++count; });
    if (const KY_ERRORS error = MakeRoom(*peaks, count)) return error;
    KyPeak* next = peaks->GetDataPtr();
    VisitPeaks(levels, n, limits,
               [&](const Run& run, std::int64_t end) { *next++ = run.Record(end); });
    return KY_OK;
  });
}

}  // namespace

KY_ERRORS ImgGetProfilePeaks(const KyBW8Vector* profile, KyPeaksVector* peaks,
                             unsigned int lowThreshold, unsigned int highThreshold,
                             unsigned int minAmplitude, unsigned int minArea) noexcept {
  return FindPeaks(profile, peaks, {lowThreshold, highThreshold, minAmplitude, minArea});
}
KY_ERRORS ImgGetProfilePeaks(const KyBW32Vector* profile, KyPeaksVector* peaks,
                             unsigned int lowThreshold, unsigned int highThreshold,
                             unsigned int minAmplitude, unsigned int minArea) noexcept {
  return FindPeaks(profile, peaks, {lowThreshold, highThreshold, minAmplitude, minArea});
}
