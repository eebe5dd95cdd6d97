#include "ky/auto_threshold.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>

#include "foundation/frame.h"
#include "ky/geometry.h"
#include "ky/histogram.h"
#include "ky/image.h"

namespace {

using ky::Call;

constexpr unsigned kLevels = 256;

// A class of levels: its pixels and their level sum, or cost. Both are 32-bit and wrap.
struct Class {
  std::uint32_t count = 0, sum = 0;

  // In single precision; `empty` for a class without pixels.
  float Average(unsigned empty) const noexcept {
    return count == 0 ? static_cast<float>(empty)
                      : static_cast<float>(sum) / static_cast<float>(count);
  }
};
// Both classes of a threshold; `found` once a criterion has chosen it.
struct Choice {
  unsigned threshold = 0;
  Class lower, upper;
  bool found = false;
};
struct Range {
  unsigned min, max;
};

float Log(std::uint32_t count) noexcept {
  return static_cast<float>(std::log(static_cast<double>(count)));
}
// h ln h, 0 for an empty bin.
float LogTerm(std::uint32_t count) noexcept {
  return count == 0 ? 0.0f : static_cast<float>(count) * Log(count);
}

// The levels first..last as a class: the sum of h(k) (k - first), by running counts from the top,
// and first times the count.
Class Collect(const unsigned* bins, unsigned first, unsigned last) noexcept {
  Class all;
  for (unsigned k = last + 1; k-- > first;) {
    all.sum += all.count;
    all.count += bins[k];
  }
  all.sum += first * all.count;
  return all;
}

// Scans from the top for the least cost(level) of the lower and costAbove(level) of the upper
// class.
template <class Cost, class CostAbove>
Choice ScanBlackWhite(const unsigned* bins, Range range, std::uint32_t extra, const Cost& cost,
                      const CostAbove& costAbove) noexcept {
  Choice best;
  Class lower, upper;
  for (unsigned k = range.min; k <= range.max; ++k) {
    lower.count += bins[k];
    lower.sum += cost(k) * bins[k];
  }
  lower.sum += extra * lower.count;
  std::uint32_t least = std::numeric_limits<std::uint32_t>::max();
  for (unsigned t = range.max + 1; t-- > range.min;) {
    const std::uint32_t sum = lower.sum + upper.sum;
    if (sum < least) {
      least = sum;
      best = {t, lower, upper, true};
    }
    lower.count -= bins[t];
    upper.count += bins[t];
    lower.sum -= cost(t) * bins[t];
    upper.sum += costAbove(t) * bins[t];
  }
  return best;
}

// Scans upward; `better(t, lower, upper)` says whether this threshold is to be chosen. Thresholds
// that leave a class empty are passed over. `moved(t)` is told of each bin that goes from the upper
// to the lower class.
template <class Better, class Moved>
Choice ScanUpward(const unsigned* bins, Range range, const Better& better,
                  const Moved& moved) noexcept {
  Choice best;
  Class lower, upper = Collect(bins, range.min, range.max);
  for (unsigned t = range.min; t <= range.max; ++t) {
    if (lower.count > 0 && upper.count > 0 && better(t, lower, upper))
      best = {t, lower, upper, true};
    const std::uint32_t h = bins[t];
    lower.count += h;
    lower.sum += t * h;
    upper.count -= h;
    upper.sum -= t * h;
    moved(t);
  }
  return best;
}
constexpr auto kNothing = [](unsigned) noexcept {};

// Criteria, all in single precision.
float IsodataDistance(unsigned t, const Class& lower, const Class& upper) noexcept {
  const float above = 0.5f * static_cast<float>(upper.sum) / static_cast<float>(upper.count);
  const float below = 0.5f * static_cast<float>(lower.sum) / static_cast<float>(lower.count);
  return std::abs(above + below - static_cast<float>(t));
}
float SquareOverCount(const Class& c) noexcept {
  const float sum = static_cast<float>(c.sum);
  return sum * sum / static_cast<float>(c.count);
}
// The sums of h ln h of both classes.
struct Logs {
  float lower = 0.0f, upper = 0.0f, terms[kLevels];

  Logs(const unsigned* bins, Range range) noexcept {
    for (unsigned k = range.max + 1; k-- > range.min;) upper += terms[k] = LogTerm(bins[k]);
  }
  void Move(unsigned t) noexcept {
    lower += terms[t];
    upper -= terms[t];
  }
};

// Finds the least of a criterion that starts at the largest float.
template <class Criterion, class Moved>
Choice LeastUpward(const unsigned* bins, Range range, const Criterion& criterion,
                   const Moved& moved) noexcept {
  float least = std::numeric_limits<float>::max();
  return ScanUpward(
      bins, range,
      [&](unsigned t, const Class& lower, const Class& upper) {
        const float f = criterion(t, lower, upper);
        if (!(f < least)) return false;
        least = f;
        return true;
      },
      moved);
}

Choice LeastEntropyLoss(const unsigned* bins, Range range) noexcept {
  Logs logs(bins, range);
  return LeastUpward(
      bins, range,
      [&](unsigned, const Class& lower, const Class& upper) {
        return logs.upper / static_cast<float>(upper.count) +
               logs.lower / static_cast<float>(lower.count) - Log(lower.count) - Log(upper.count);
      },
      [&](unsigned t) { logs.Move(t); });
}

Choice SplitByFraction(const unsigned* bins, Range range, float fraction) noexcept {
  const Class all = Collect(bins, range.min, range.max);
  // Rounding may put the product above the number of pixels, and outside 32 bits.
  const double below = std::trunc(static_cast<double>(fraction * static_cast<float>(all.count)));
  const std::uint32_t target =
      all.count - static_cast<std::uint32_t>(std::min(below, static_cast<double>(all.count)));
  Choice choice;
  choice.threshold = range.max + 1;
  while (choice.upper.count < target && choice.threshold > range.min) {
    const unsigned t = --choice.threshold;
    choice.upper.count += bins[t];
    choice.upper.sum += t * bins[t];
  }
  choice.lower = {all.count - choice.upper.count, all.sum - choice.upper.sum};
  return choice;
}

Choice SplitAtLevel(const unsigned* bins, Range range, unsigned level) noexcept {
  const unsigned split = std::min(range.min + level, range.max + 1);
  Choice choice;
  choice.threshold = level;
  if (split > range.min) choice.lower = Collect(bins, range.min, split - 1);
  if (split <= range.max) choice.upper = Collect(bins, split, range.max);
  // The upper sum has the level, not the first bin, as its base.
  choice.upper.sum -= (split - level) * choice.upper.count;
  return choice;
}

Choice Choose(const unsigned* bins, Range range, unsigned threshold, float relative) noexcept {
  switch (static_cast<int>(threshold)) {
    case IMG_THRESHOLD_QUADRATIC_BLACK_WHITE:
      return ScanBlackWhite(
          bins, range, range.min * range.min, [](unsigned k) { return k * k; },
          [](unsigned k) { return (255 - k) * (255 - k); });
    case IMG_THRESHOLD_LINEAR_BLACK_WHITE:
      return ScanBlackWhite(
          bins, range, 0, [](unsigned k) { return k; }, [](unsigned k) { return 255 - k; });
    case IMG_THRESHOLD_ISODATA: return LeastUpward(bins, range, IsodataDistance, kNothing);
    case IMG_THRESHOLD_MAX_ENTROPY: return LeastEntropyLoss(bins, range);
    case IMG_THRESHOLD_MIN_RESIDUE:
      return LeastUpward(
          bins, range,
          [](unsigned, const Class& lower, const Class& upper) {
            return -SquareOverCount(lower) - SquareOverCount(upper);
          },
          kNothing);
    case IMG_THRESHOLD_RELATIVE: return SplitByFraction(bins, range, relative);
    default: return SplitAtLevel(bins, range, threshold);
  }
}

KY_ERRORS CheckHistogram(const KyBW8HistogramVector* histogram) noexcept {
  if (histogram == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
  return histogram->GetNumElements() == kLevels ? KY_OK : KY_ERROR_NOT_256_ENTRIES;
}

// Two levels of 0..255 in ascending order, with the codes of their positions.
KY_ERRORS CheckRange(Range range, KY_ERRORS badMin, KY_ERRORS badMax) noexcept {
  if (range.min >= kLevels) return badMin;
  if (range.max >= kLevels) return badMax;
  return range.min < range.max ? KY_OK : KY_ERROR_BAD_INTERVAL;
}

bool IsMode(unsigned threshold) noexcept {
  const int mode = static_cast<int>(threshold);
  return mode >= IMG_THRESHOLD_QUADRATIC_BLACK_WHITE && mode <= IMG_THRESHOLD_RELATIVE;
}

int Isodata(const unsigned* bins, Range range) noexcept {
  constexpr int kMostSteps = 16;
  std::uint32_t counts[kLevels] = {}, sums[kLevels] = {};
  Class all;
  for (unsigned k = range.min; k <= range.max; ++k) {
    counts[k] = all.count += bins[k];
    sums[k] = all.sum += k * bins[k];
  }
  unsigned t = (range.min + range.max + 1) >> 1;
  for (int step = 0; step < kMostSteps; ++step) {
    const std::uint32_t below = counts[t], above = all.count - below;
    const std::uint32_t meanBelow = below == 0 ? (range.min + t) >> 1 : sums[t] / below;
    const std::uint32_t meanAbove =
        above == 0 ? (range.max + 1 + t) >> 1 : (all.sum - sums[t]) / above;
    // Sums that have wrapped may lead out of the range.
    const unsigned next = std::clamp((meanBelow + meanAbove) >> 1, range.min, range.max);
    if (next == t) break;
    t = next;
  }
  return static_cast<int>(t);
}

// The frame of the functions that answer a level: 0 on failure.
template <class Level, class Body>
Level LevelOf(const char* name, const Body& body) noexcept {
  Level level = 0;
  return Call(name, [&] { return body(level); }) == KY_OK ? level : Level{0};
}

// The stand-alone searches: `score(lower, upper)` is to exceed `best`.
template <class Score, class Moved>
KyBW8 MostUpward(const unsigned* bins, float best, float& averageBelow, float& averageAbove,
                 const Score& score, const Moved& moved) noexcept {
  const Choice choice = ScanUpward(
      bins, {0, kLevels - 1},
      [&](unsigned, const Class& lower, const Class& upper) {
        const float f = score(lower, upper);
        if (!(f > best)) return false;
        best = f;
        return true;
      },
      moved);
  if (choice.found) {
    averageBelow = choice.lower.Average(0);
    averageAbove = choice.upper.Average(0);
  }
  return static_cast<KyBW8>(choice.threshold);
}

// ceil(length / tile), the quotient in single precision.
std::int64_t Steps(int length, int tile) noexcept {
  const float quotient = static_cast<float>(length) / static_cast<float>(tile);
  const std::int64_t whole = static_cast<std::int64_t>(quotient);
  return whole + (static_cast<float>(whole) < quotient ? 1 : 0);
}

// The stretch of a tile around node `index` of `steps`.
struct Stretch {
  int start, length;
};
Stretch StretchAt(int index, int steps, int length, int tile) noexcept {
  const std::int64_t center = std::int64_t{index} * length / steps;
  const std::int64_t start = std::max<std::int64_t>(0, center - tile / 2);
  const std::int64_t end = std::min<std::int64_t>(length, center + tile / 2);
  return {static_cast<int>(start), static_cast<int>(end - start)};
}

// The isodata thresholds of the tiles around all nodes.
KY_ERRORS FillNodes(const KyROI<KyBW8>* source, int tileWidth, int tileHeight,
                    KyImage<KyBW8>& nodes) noexcept {
  const int nx = nodes.GetWidth() - 1, ny = nodes.GetHeight() - 1;
  KyROI<KyBW8> tile(const_cast<KyROI<KyBW8>*>(source), 0, 0, 0, 0);
  KyBW8HistogramVector histogram;
  for (int j = 0; j <= ny; ++j) {
    const Stretch rows = StretchAt(j, ny, source->GetHeight(), tileHeight);
    for (int i = 0; i <= nx; ++i) {
      const Stretch columns = StretchAt(i, nx, source->GetWidth(), tileWidth);
      tile.SetPlacement(columns.start, rows.start, columns.length, rows.length);
      if (const KY_ERRORS error = ImgHistogram(&tile, &histogram)) return error;
      nodes.SetPixel(static_cast<KyBW8>(Isodata(histogram.GetDataPtr(), {0, kLevels - 1})), i, j);
    }
  }
  return KY_OK;
}

// Gives the destination a size; one that cannot have it keeps its own.
KY_ERRORS Resize(KyROI<KyBW8>* destination, int width, int height) noexcept {
  const int oldWidth = destination->GetWidth(), oldHeight = destination->GetHeight();
  if (oldWidth == width && oldHeight == height) return KY_OK;
  destination->SetSize(width, height);
  if (const KY_ERRORS error = KyGetError()) return error;
  const KY_ERRORS error = ky::HasImage(destination);
  if (error != KY_OK) destination->SetSize(oldWidth, oldHeight);
  return error;
}

}  // namespace

KY_ERRORS ImgHistogramThreshold(KyBW8HistogramVector* histogram, unsigned int& threshold,
                                float& averageBelow, float& averageAbove, float relative,
                                unsigned int minLevel, unsigned int maxLevel) noexcept {
  return Call("ImgHistogramThreshold", [&] {
    const Range range{minLevel, maxLevel};
    if (const KY_ERRORS error = CheckHistogram(histogram)) return error;
    if (const KY_ERRORS error =
            CheckRange(range, KY_ERROR_PARAMETER_5_OUT_OF_RANGE, KY_ERROR_PARAMETER_6_OUT_OF_RANGE))
      return error;
    if (!IsMode(threshold) && (threshold < range.min || threshold > range.max))
      return KY_ERROR_PARAMETER_2_OUT_OF_RANGE;
    if (static_cast<int>(threshold) == IMG_THRESHOLD_RELATIVE &&
        !(relative >= 0.0f && relative <= 1.0f))
      return KY_ERROR_PARAMETER_5_OUT_OF_RANGE;
    const Choice choice = Choose(histogram->GetDataPtr(), range, threshold, relative);
    threshold = choice.threshold;
    averageBelow = choice.lower.Average(range.min);
    averageAbove = choice.upper.Average(range.max + 1);
    return KY_OK;
  });
}

KyBW8 ImgAutoThreshold(const KyROI<KyBW8>* source, IMG_THRESHOLD_MODES mode,
                       float relative) noexcept {
  KyBW8HistogramVector histogram;
  if (ImgHistogram(source, &histogram) != KY_OK) return 0;
  unsigned int threshold = static_cast<unsigned int>(mode);
  float below, above;
  if (ImgHistogramThreshold(&histogram, threshold, below, above, relative) != KY_OK) return 0;
  return static_cast<KyBW8>(threshold);
}

int ImgIsodataThreshold(KyBW8HistogramVector* histogram, unsigned int minLevel,
                        unsigned int maxLevel) noexcept {
  return LevelOf<int>("ImgIsodataThreshold (KyBW8HistogramVector)", [&](int& level) {
    const Range range{minLevel, maxLevel};
    if (const KY_ERRORS error = CheckHistogram(histogram)) return error;
    if (const KY_ERRORS error =
            CheckRange(range, KY_ERROR_PARAMETER_2_OUT_OF_RANGE, KY_ERROR_PARAMETER_3_OUT_OF_RANGE))
      return error;
    level = Isodata(histogram->GetDataPtr(), range);
    return KY_OK;
  });
}

int ImgIsodataThreshold(KyVector* histogram, unsigned int minLevel,
                        unsigned int maxLevel) noexcept {
  return LevelOf<int>("ImgIsodataThreshold (KyVector)", [&](int& level) {
    constexpr int kHistogramType = 2;
    const Range range{minLevel, maxLevel};
    if (histogram == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (!histogram->IsSameVectType(kHistogramType)) return KY_ERROR_VECTOR_1602;
    if (histogram->GetAllocatedSize() < static_cast<int>(kLevels * sizeof(unsigned)))
      return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error =
            CheckRange(range, KY_ERROR_PARAMETER_2_OUT_OF_RANGE, KY_ERROR_PARAMETER_3_OUT_OF_RANGE))
      return error;
    level = Isodata(static_cast<const unsigned*>(histogram->GetDataPtr()), range);
    return KY_OK;
  });
}

KyBW8 ImgMinResidueThreshold(KyBW8HistogramVector* histogram, float& averageBelow,
                             float& averageAbove) noexcept {
  return LevelOf<KyBW8>("ImgMinResidueThreshold", [&](KyBW8& level) {
    if (const KY_ERRORS error = CheckHistogram(histogram)) return error;
    const unsigned* const bins = histogram->GetDataPtr();
    const Class all = Collect(bins, 0, kLevels - 1);
    if (all.count == 0) return KY_OK;
    level = MostUpward(
        bins, SquareOverCount(all), averageBelow, averageAbove,
        [](const Class& lower, const Class& upper) {
          return SquareOverCount(lower) + SquareOverCount(upper);
        },
        kNothing);
    return KY_OK;
  });
}

KyBW8 ImgMaxEntropyThreshold(KyBW8HistogramVector* histogram, float& averageBelow,
                             float& averageAbove) noexcept {
  return LevelOf<KyBW8>("ImgMaxEntropyThreshold", [&](KyBW8& level) {
    if (const KY_ERRORS error = CheckHistogram(histogram)) return error;
    const unsigned* const bins = histogram->GetDataPtr();
    const Class all = Collect(bins, 0, kLevels - 1);
    if (all.count == 0) return KY_OK;
    Logs logs(bins, {0, kLevels - 1});
    const auto entropy = [](std::uint32_t count, float logSum) {
      return Log(count) - logSum / static_cast<float>(count);
    };
    level = MostUpward(
        bins, entropy(all.count, logs.upper), averageBelow, averageAbove,
        [&](const Class& lower, const Class& upper) {
          return entropy(lower.count, logs.lower) + entropy(upper.count, logs.upper);
        },
        [&](unsigned t) { logs.Move(t); });
    return KY_OK;
  });
}

KY_ERRORS ImgAutoAdaptiveThreshold(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   IMG_THRESHOLD_MODES, int tileWidth, int tileHeight) noexcept {
  return Call("ImgAutoAdaptiveThreshold", [&] {
    if (const KY_ERRORS error = ky::HasImage(source)) return error;
    if (const KY_ERRORS error = ky::HasImage(destination)) return error;
    if (tileHeight == 0) tileHeight = tileWidth;
    if (tileWidth < 1) return KY_ERROR_PARAMETER_4_OUT_OF_RANGE;
    if (tileHeight < 1) return KY_ERROR_PARAMETER_5_OUT_OF_RANGE;
    const int width = source->GetWidth(), height = source->GetHeight();
    if (width == 0 || height == 0) return KY_OK;
    const std::int64_t nx = Steps(width, tileWidth), ny = Steps(height, tileHeight);
    if (std::max(nx, ny) >= INT_MAX) return KY_ERROR_NOT_ENOUGH_MEMORY;
    KyImage<KyBW8> nodes(static_cast<int>(nx + 1), static_cast<int>(ny + 1));
    if (const KY_ERRORS error = KyGetError()) return error;
    if (const KY_ERRORS error = FillNodes(source, tileWidth, tileHeight, nodes)) return error;
    // The source may lie on the destination's own pixels: it is not read any more from here on.
    if (const KY_ERRORS error = Resize(destination, width, height)) return error;
    return ImgScaleRotate(
        &nodes, 0.0f, 0.0f, 0.0f, 0.0f, static_cast<float>(width) / static_cast<float>(nx),
        static_cast<float>(height) / static_cast<float>(ny), 0.0f, destination, 8);
  });
}
