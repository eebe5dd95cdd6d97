#include "ky/auto_threshold.h"

#include "foundation/frame.h"
#include "foundation/kernels/choose_threshold.h"
#include "histogram/counts.h"

namespace {

using ky::Call;
using ky::LevelRange;
using ky::ThresholdChoice;

// The frame of the functions that return a level: 0 on failure.
template <class Level, class Body>
Level LevelOf(const char* name, const Body& body) noexcept {
  Level level = 0;
  return Call(name, [&] { return body(level); }) == KY_OK ? level : Level{0};
}

// The frame of both forms for counts that `open(counts)` finds.
template <class OpenCounts>
int IsodataOf(const char* name, LevelRange range, const OpenCounts& open) noexcept {
  return LevelOf<int>(name, [&](int& level) {
    const std::uint32_t* counts = nullptr;
    if (const KY_ERRORS error = open(counts)) return error;
    if (const KY_ERRORS error =
            CheckRange(range, KY_ERROR_PARAMETER_2_OUT_OF_RANGE, KY_ERROR_PARAMETER_3_OUT_OF_RANGE))
      return error;
    level = ky::IsodataLevel(counts, range);
    return KY_OK;
  });
}

// The frame of the searches by a criterion.
KyBW8 SearchAll(const char* name, const KyBW8HistogramVector* histogram,
                ThresholdChoice (*search)(const std::uint32_t* counts) noexcept,
                float& averageBelow, float& averageAbove) noexcept {
  return LevelOf<KyBW8>(name, [&](KyBW8& level) {
    if (const KY_ERRORS error = ky::CheckLevels(histogram)) return error;
    const ThresholdChoice choice = search(histogram->GetDataPtr());
    if (choice.found) {
      averageBelow = choice.lower.Average(0);
      averageAbove = choice.upper.Average(0);
    }
    level = static_cast<KyBW8>(choice.threshold);
    return KY_OK;
  });
}

}  // namespace

KY_ERRORS ImgHistogramThreshold(const KyBW8HistogramVector* histogram, unsigned int& threshold,
                                float& averageBelow, float& averageAbove, float relative,
                                unsigned int minLevel, unsigned int maxLevel) noexcept {
  return Call("ImgHistogramThreshold", [&] {
    if (const KY_ERRORS error = ky::CheckLevels(histogram)) return error;
    ThresholdChoice choice;
    if (const KY_ERRORS error = ky::ChooseThreshold(histogram->GetDataPtr(), {minLevel, maxLevel},
                                                    threshold, relative, choice))
      return error;
    threshold = choice.threshold;
    averageBelow = choice.lower.Average(minLevel);
    averageAbove = choice.upper.Average(maxLevel + 1);
    return KY_OK;
  });
}

KyBW8 ImgAutoThreshold(const KyROI<KyBW8>* source, IMG_THRESHOLD_MODES mode,
                       float relative) noexcept {
  KyBW8 level = 0;
  ky::CallUntraced([&] {
    if (const KY_ERRORS error = ky::CheckImage(source, "source"))
      return ky::FailIn(error, {"ImgHistogram"});
    ky::Counts counts;
    ky::CountLevels(source, counts);
    ThresholdChoice choice;
    if (const KY_ERRORS error = ky::ChooseThreshold(
            counts, LevelRange(), static_cast<unsigned int>(mode), relative, choice, "mode"))
      return ky::FailIn(error, {"ImgHistogramThreshold"});
    level = static_cast<KyBW8>(choice.threshold);
    return KY_OK;
  });
  return level;
}

int ImgIsodataThreshold(const KyBW8HistogramVector* histogram, unsigned int minLevel,
                        unsigned int maxLevel) noexcept {
  return IsodataOf("ImgIsodataThreshold (KyBW8HistogramVector)", {minLevel, maxLevel},
                   [&](const std::uint32_t*& counts) {
                     const KY_ERRORS error = ky::CheckLevels(histogram);
                     if (error == KY_OK) counts = histogram->GetDataPtr();
                     return error;
                   });
}

int ImgIsodataThreshold(const KyVector* histogram, unsigned int minLevel,
                        unsigned int maxLevel) noexcept {
  return IsodataOf("ImgIsodataThreshold (KyVector)", {minLevel, maxLevel},
                   [&](const std::uint32_t*& counts) {
                     return ky::CountsOf(histogram, KY_ERROR_VECTOR_1602, counts);
                   });
}

KyBW8 ImgMinResidueThreshold(const KyBW8HistogramVector* histogram, float& averageBelow,
                             float& averageAbove) noexcept {
  return SearchAll("ImgMinResidueThreshold", histogram, ky::LeastResidueLevel, averageBelow,
                   averageAbove);
}

KyBW8 ImgMaxEntropyThreshold(const KyBW8HistogramVector* histogram, float& averageBelow,
                             float& averageAbove) noexcept {
  return SearchAll("ImgMaxEntropyThreshold", histogram, ky::MostEntropyLevel, averageBelow,
                   averageAbove);
}
