#include "ky/lookup.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "foundation/frame.h"
#include "foundation/kernels/lookup_rows.h"
#include "ky/statistics.h"

namespace {

using ky::GainOffset;
using ky::LookupTable;
using ky::Rows;

// table[i] = law(i).
template <class Law>
LookupTable TableBy(Law law) noexcept {
  LookupTable table;
  for (std::uint32_t i = 0; i < 256; ++i) table.level[i] = law(i);
  return table;
}

LookupTable TableOf(const KyBW8* levels) noexcept {
  LookupTable table;
  std::copy_n(levels, 256, table.level);
  return table;
}

// Truncated; what does not fit is saturated, and no number is 0.
std::int32_t ToInt32(float value) noexcept {
  if (!(value >= -2147483648.0f)) return value < 0 ? INT32_MIN : 0;
  return value < 2147483648.0f ? static_cast<std::int32_t>(value) : INT32_MAX;
}

KyBW8 NormalizedLevel(float value) noexcept {
  if (!(value > 0)) return 0;
  return value > 255 ? KyBW8{255} : static_cast<KyBW8>(value);
}

KyBW8 GainOffsetLevel(std::uint32_t level, std::int32_t gain, std::int32_t offset) noexcept {
  const std::uint32_t scaled = static_cast<std::uint32_t>(gain) * level >> 5;
  const std::uint32_t sum = scaled + static_cast<std::uint32_t>(offset);
  if (sum <= 255) return static_cast<KyBW8>(sum);
  return static_cast<std::int32_t>(sum) < 0 ? 0 : 255;
}

}  // namespace

KY_ERRORS ImgLut(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                 const KyBW8* table) noexcept {
  return ky::CallUntraced([&] {
    Rows<const KyBW8> in;
    Rows<KyBW8> out;
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (table == nullptr) return KY_ERROR_NOT_256_ENTRIES;
    return ky::LookUp(out, in, TableOf(table));
  });
}

KY_ERRORS ImgLut(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                 KyBW8Vector* table) noexcept {
  return ky::CallOn("ImgLut", source, destination, [&](const auto& in, const auto& out) {
    if (table == nullptr || table->GetNumElements() != 256) return KY_ERROR_NOT_256_ENTRIES;
    return ky::LookUp(out, in, TableOf(table->GetDataPtr()));
  });
}

KY_ERRORS ImgNormalize(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float newMean,
                       float newDeviation) noexcept {
  return ky::CallOn("ImgNormalize", source, destination, [&](const auto& in, const auto& out) {
    float deviation, mean;
    if (const KY_ERRORS error = ImgPixelStdDev(source, deviation, mean)) return error;
    const float ratio = deviation == 0 ? 0 : newDeviation / deviation;
    return ky::LookUp(out, in, TableBy([&](std::uint32_t i) {
                        const float scaled = static_cast<float>(i) * ratio;
                        return NormalizedLevel(scaled + newMean - ratio * mean);
                      }));
  });
}

KY_ERRORS ImgGainOffset(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float gain,
                        float offset) noexcept {
  return ky::CallOn("ImgGainOffset", source, destination, [&](const auto& in, const auto& out) {
    const std::int32_t g = ToInt32(gain * 32.0f), o = ToInt32(offset);
    // With an offset this far from the largest integer no sum can turn negative.
    if (g >= 0 && g <= GainOffset::kMostGain && o <= INT32_MAX - 0x10000) {
      const int biased = std::clamp(o, -GainOffset::kOffsetBias, 255) + GainOffset::kOffsetBias;
      const GainOffset law{static_cast<KyBW16>(g), static_cast<KyBW16>(biased)};
      return ky::MapRows(ky::ChooseLookupKernels().gainOffset, out, ky::FromRows(in),
                         ky::FromParameters(law));
    }
    return ky::LookUp(out, in, TableBy([&](std::uint32_t i) { return GainOffsetLevel(i, g, o); }));
  });
}
