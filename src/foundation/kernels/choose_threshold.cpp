#include "foundation/kernels/choose_threshold.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "ky/auto_threshold.h"

namespace ky {
namespace {

float Log(std::uint32_t count) noexcept {
  return static_cast<float>(ky::Log(static_cast<double>(count)));
}
// h ln h, 0 for an empty bin.
float LogTerm(std::uint32_t count) noexcept {
  return count == 0 ? 0.0f : static_cast<float>(count) * Log(count);
}

// The levels first..last as a class: the sum of h(k) (k - first), by running counts from the top,
// and first times the count.
LevelClass Collect(const std::uint32_t* bins, unsigned first, unsigned last) noexcept {
  LevelClass all;
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
ThresholdChoice ScanBlackWhite(const std::uint32_t* bins, LevelRange range, std::uint32_t extra,
                               const Cost& cost, const CostAbove& costAbove) noexcept {
  ThresholdChoice best;
  LevelClass lower, upper;
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
ThresholdChoice ScanUpward(const std::uint32_t* bins, LevelRange range, const Better& better,
                           const Moved& moved) noexcept {
  ThresholdChoice best;
  LevelClass lower, upper = Collect(bins, range.min, range.max);
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
float IsodataDistance(unsigned t, const LevelClass& lower, const LevelClass& upper) noexcept {
  const float above = 0.5f * static_cast<float>(upper.sum) / static_cast<float>(upper.count);
  const float below = 0.5f * static_cast<float>(lower.sum) / static_cast<float>(lower.count);
  return std::abs(above + below - static_cast<float>(t));
}
float SquareOverCount(const LevelClass& c) noexcept {
  const float sum = static_cast<float>(c.sum);
  return sum * sum / static_cast<float>(c.count);
}
// The sums of h ln h of both classes.
struct Logs {
  float lower = 0.0f, upper = 0.0f, terms[kLevels];

  Logs(const std::uint32_t* bins, LevelRange range) noexcept {
    for (unsigned k = range.max + 1; k-- > range.min;) upper += terms[k] = LogTerm(bins[k]);
  }
  void Move(unsigned t) noexcept {
    lower += terms[t];
    upper -= terms[t];
  }
};

// Finds the least of a criterion that starts at the largest float.
template <class Criterion, class Moved>
ThresholdChoice LeastUpward(const std::uint32_t* bins, LevelRange range, const Criterion& criterion,
                            const Moved& moved) noexcept {
  float least = std::numeric_limits<float>::max();
  return ScanUpward(
      bins, range,
      [&](unsigned t, const LevelClass& lower, const LevelClass& upper) {
        const float f = criterion(t, lower, upper);
        if (!(f < least)) return false;
        least = f;
        return true;
      },
      moved);
}

ThresholdChoice LeastEntropyLoss(const std::uint32_t* bins, LevelRange range) noexcept {
  Logs logs(bins, range);
  return LeastUpward(
      bins, range,
      [&](unsigned, const LevelClass& lower, const LevelClass& upper) {
        return logs.upper / static_cast<float>(upper.count) +
               logs.lower / static_cast<float>(lower.count) - Log(lower.count) - Log(upper.count);
      },
      [&](unsigned t) { logs.Move(t); });
}

ThresholdChoice SplitByFraction(const std::uint32_t* bins, LevelRange range,
                                float fraction) noexcept {
  const LevelClass all = Collect(bins, range.min, range.max);
  // Rounding may put the product above the number of pixels, and outside 32 bits.
  const double below = std::trunc(static_cast<double>(fraction * static_cast<float>(all.count)));
  const std::uint32_t target =
      all.count - static_cast<std::uint32_t>(std::min(below, static_cast<double>(all.count)));
  ThresholdChoice choice;
  choice.threshold = range.max + 1;
  while (choice.upper.count < target && choice.threshold > range.min) {
    const unsigned t = --choice.threshold;
    choice.upper.count += bins[t];
    choice.upper.sum += t * bins[t];
  }
  choice.lower = {all.count - choice.upper.count, all.sum - choice.upper.sum};
  return choice;
}

ThresholdChoice SplitAtLevel(const std::uint32_t* bins, LevelRange range, unsigned level) noexcept {
  const unsigned split = std::min(range.min + level, range.max + 1);
  ThresholdChoice choice;
  choice.threshold = level;
  if (split > range.min) choice.lower = Collect(bins, range.min, split - 1);
  if (split <= range.max) choice.upper = Collect(bins, split, range.max);
  // The upper sum has the level, not the first bin, as its base.
  choice.upper.sum -= (split - level) * choice.upper.count;
  return choice;
}

ThresholdChoice Choose(const std::uint32_t* bins, LevelRange range, unsigned threshold,
                       float relative) noexcept {
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
          [](unsigned, const LevelClass& lower, const LevelClass& upper) {
            return -SquareOverCount(lower) - SquareOverCount(upper);
          },
          kNothing);
    case IMG_THRESHOLD_RELATIVE: return SplitByFraction(bins, range, relative);
    default: return SplitAtLevel(bins, range, threshold);
  }
}

bool IsMode(unsigned threshold) noexcept {
  const int mode = static_cast<int>(threshold);
  return mode >= IMG_THRESHOLD_QUADRATIC_BLACK_WHITE && mode <= IMG_THRESHOLD_RELATIVE;
}

// Finds the threshold whose score(lower, upper) exceeds `best` and all others.
template <class Score, class Moved>
ThresholdChoice MostUpward(const std::uint32_t* bins, float best, const Score& score,
                           const Moved& moved) noexcept {
  return ScanUpward(
      bins, LevelRange(),
      [&](unsigned, const LevelClass& lower, const LevelClass& upper) {
        const float f = score(lower, upper);
        if (!(f > best)) return false;
        best = f;
        return true;
      },
      moved);
}

}  // namespace

KY_ERRORS CheckRange(LevelRange range, KY_ERRORS badMin, KY_ERRORS badMax) noexcept {
  if (range.min >= kLevels) return OutOfRange(badMin, "minLevel");
  if (range.max >= kLevels) return OutOfRange(badMax, "maxLevel");
  return range.min < range.max ? KY_OK
                               : Explain(KY_ERROR_BAD_INTERVAL, "minLevel is not below maxLevel");
}

KY_ERRORS ChooseThreshold(const std::uint32_t* counts, LevelRange range, unsigned threshold,
                          float relative, ThresholdChoice& choice, const char* name) noexcept {
  if (const KY_ERRORS error =
          CheckRange(range, KY_ERROR_PARAMETER_5_OUT_OF_RANGE, KY_ERROR_PARAMETER_6_OUT_OF_RANGE))
    return error;
  if (!IsMode(threshold) && (threshold < range.min || threshold > range.max))
    return OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, name);
  if (static_cast<int>(threshold) == IMG_THRESHOLD_RELATIVE &&
      !(relative >= 0.0f && relative <= 1.0f))
    return OutOfRange(KY_ERROR_PARAMETER_5_OUT_OF_RANGE, "relative");
  choice = Choose(counts, range, threshold, relative);
  return KY_OK;
}

namespace {

// `upTo(t)` is the class of the levels up to t.
template <class UpTo>
int Isodata(const LevelClass& all, LevelRange range, const UpTo& upTo) noexcept {
  constexpr int kMostSteps = 16;
  unsigned t = (range.min + range.max + 1) >> 1;
  for (int step = 0; step < kMostSteps; ++step) {
    const LevelClass below = upTo(t);
    const std::uint32_t above = all.count - below.count;
    const std::uint32_t meanBelow =
        below.count == 0 ? (range.min + t) >> 1 : below.sum / below.count;
    const std::uint32_t meanAbove =
        above == 0 ? (range.max + 1 + t) >> 1 : (all.sum - below.sum) / above;
    // Sums that have wrapped may lead out of the range.
    const unsigned next = std::clamp((meanBelow + meanAbove) >> 1, range.min, range.max);
    if (next == t) break;
    t = next;
  }
  return static_cast<int>(t);
}

}  // namespace

int IsodataLevel(const std::uint32_t* counts, LevelRange range) noexcept {
  LevelClass classes[kLevels], all;
  for (unsigned k = range.min; k <= range.max; ++k) {
    all.count += counts[k];
    all.sum += k * counts[k];
    classes[k] = all;
  }
  return Isodata(all, range, [&](unsigned t) { return classes[t]; });
}

int IsodataLevel(const KyBW8* pixels, std::ptrdiff_t n) noexcept {
  const auto upTo = [&](unsigned t) {
    LevelClass below;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      const std::uint32_t counts = pixels[i] <= t ? 1 : 0;
      below.count += counts;
      below.sum += counts * pixels[i];
    }
    return below;
  };
  return Isodata(upTo(kLevels - 1), {}, upTo);
}

ThresholdChoice LeastResidueLevel(const std::uint32_t* counts) noexcept {
  const LevelClass all = Collect(counts, 0, kLevels - 1);
  if (all.count == 0) return {};
  return MostUpward(
      counts, SquareOverCount(all),
      [](const LevelClass& lower, const LevelClass& upper) {
        return SquareOverCount(lower) + SquareOverCount(upper);
      },
      kNothing);
}

ThresholdChoice MostEntropyLevel(const std::uint32_t* counts) noexcept {
  const LevelClass all = Collect(counts, 0, kLevels - 1);
  if (all.count == 0) return {};
  Logs logs(counts, LevelRange());
  const auto entropy = [](std::uint32_t count, float logSum) {
    return Log(count) - logSum / static_cast<float>(count);
  };
  return MostUpward(
      counts, entropy(all.count, logs.upper),
      [&](const LevelClass& lower, const LevelClass& upper) {
        return entropy(lower.count, logs.lower) + entropy(upper.count, logs.upper);
      },
      [&](unsigned t) { logs.Move(t); });
}

}  // namespace ky
