#include "ky/lookup.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>

#include "foundation/frame.h"
#include "foundation/kernels/lookup_rows.h"
#include "foundation/stream.h"
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

struct NormalizeLaw : ky::FloatLaw {
  float ValueAt(std::uint32_t level) const noexcept {
    return static_cast<float>(level) * gain + offset;
  }
  // The value rises or falls with the level all the way, so that the ends tell.
  bool FitsLanes() const noexcept {
    constexpr float kLimit = 2147483648.0f;
    return std::abs(ValueAt(0)) < kLimit && std::abs(ValueAt(255)) < kLimit;
  }
  KyBW8 operator()(std::uint32_t level) const noexcept {
    const float value = ValueAt(level);
    if (!(value > 0)) return 0;
    return value > 255 ? KyBW8{255} : static_cast<KyBW8>(value);
  }
};

struct GainOffsetLaw {
  GainOffsetLaw(float gain, float offset) noexcept : g(ToInt32(gain * 32.0f)), o(ToInt32(offset)) {}

  // With an offset this far from the largest integer no sum can turn negative.
  bool FitsLanes() const noexcept {
    return g >= 0 && g <= GainOffset::kMostGain && o <= INT32_MAX - 0x10000;
  }
  GainOffset InLanes() const noexcept {
    const int biased = std::clamp(o, -GainOffset::kOffsetBias, 255) + GainOffset::kOffsetBias;
    return {static_cast<KyBW16>(g), static_cast<KyBW16>(biased)};
  }
  KyBW8 operator()(std::uint32_t level) const noexcept {
    const std::uint32_t scaled = static_cast<std::uint32_t>(g) * level >> 5;
    const std::uint32_t sum = scaled + static_cast<std::uint32_t>(o);
    if (sum <= 255) return static_cast<KyBW8>(sum);
    return static_cast<std::int32_t>(sum) < 0 ? 0 : 255;
  }

  std::int32_t g, o;
};

ky::Palette PaletteOf(const KyC24* colors) {
  ky::Palette palette;
  for (int i = 0; i < 256; ++i) {
    const KyC24 color = colors[i];
    palette.components.component[0].level[i] = color.c0;
    palette.components.component[1].level[i] = color.c1;
    palette.components.component[2].level[i] = color.c2;
    palette.colors[i] = {color.c0, color.c1, color.c2, 0};
  }
  return palette;
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
                 const KyBW8Vector* table) noexcept {
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
    // The means first, so that an image keeps its levels where they are what they should be.
    const NormalizeLaw law{{ratio, newMean - ratio * mean}};
    const auto kernel = ky::ChooseLookupKernels().floatLaw;
    if (kernel == nullptr || !law.FitsLanes()) return ky::LookUp(out, in, TableBy(law));
    return ky::MapRows(kernel, out, ky::FromRows(in), ky::FromParameters<ky::FloatLaw>(law));
  });
}

KY_ERRORS ImgGainOffset(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float gain,
                        float offset) noexcept {
  return ky::CallOn("ImgGainOffset", source, destination, [&](const auto& in, const auto& out) {
    const GainOffsetLaw law(gain, offset);
    if (!law.FitsLanes()) return ky::LookUp(out, in, TableBy(law));
    return ky::MapFreshRows({ky::ChooseLookupKernels().gainOffset}, out, ky::FromRows(in),
                            ky::FromParameters(law.InLanes()));
  });
}

KY_ERRORS ImgGainOffset(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                        const float (&gain)[3], const float (&offset)[3]) noexcept {
  return ky::CallOn(
      "ImgGainOffset (C24)", source, destination, [&](const auto& in, const auto& out) {
        const GainOffsetLaw laws[3] = {
            {gain[0], offset[0]}, {gain[1], offset[1]}, {gain[2], offset[2]}};
        const ky::LookupKernels& kernels = ky::ChooseLookupKernels();
        if (std::all_of(laws, laws + 3, [](const auto& law) { return law.FitsLanes(); })) {
          ky::ColorGainOffset inLanes;
          for (std::size_t i = 0; i < std::size(inLanes.gain); ++i) {
            const GainOffset law = laws[2 * i % 3].InLanes();
            inLanes.gain[i] = law.gain;
            inLanes.offset[i] = law.offset;
          }
          return ky::MapFreshRows({kernels.gainOffsetColors}, out, ky::FromRows(in),
                                  ky::FromParameters(inLanes));
        }
        const ky::ColorTables tables{{TableBy(laws[0]), TableBy(laws[1]), TableBy(laws[2])}};
        return ky::MapRows(kernels.lookUpColors, out, ky::FromRows(in), ky::FromParameters(tables));
      });
}

KY_ERRORS ImgLut(const KyROI<KyBW16>* source, KyROI<KyBW8>* destination, const KyBW8Vector* table,
                 unsigned int bitOffset) noexcept {
  return ky::CallOn("ImgLut (BW16)", source, destination, [&](const auto& in, const auto& out) {
    if (table == nullptr || table->GetNumElements() == 0) return KY_ERROR_NOT_256_ENTRIES;
    if (bitOffset > 15) return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "bitOffset");
    const std::ptrdiff_t last = std::min(table->GetNumElements() - 1, 0xFFFFu);
    ky::Input<KyBW8> levels;  // they may lie in the destination
    if (!levels.OpenApart(Rows<const KyBW8>{table->GetDataPtr(), 0, last + 1, 1}, out))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
    const KyBW8* const first = levels.rows().first;
    const auto lowest =
        TableBy([&](std::uint32_t i) { return first[std::min<std::ptrdiff_t>(i, last)]; });
    const ky::DeepTable deep{first, static_cast<KyBW16>(last), static_cast<int>(bitOffset), lowest};
    return ky::MapRows(ky::ChooseLookupKernels().lookUpDeep, out, ky::FromRows(in),
                       ky::FromParameters(deep));
  });
}

KY_ERRORS ImgLut(const KyROI<KyBW8>* source, KyROI<KyC24>* destination,
                 const KyC24Vector* palette) noexcept {
  return ky::CallOn(
      "ImgLut (BW8 to C24)", source, destination, [&](const auto& in, const auto& out) {
        if (palette == nullptr || palette->GetNumElements() != 256) return KY_ERROR_NOT_256_ENTRIES;
        return ky::MapRows(ky::ChooseLookupKernels().falseColors, out, ky::FromRows(in),
                           ky::FromParameters(PaletteOf(palette->GetDataPtr())));
      });
}
