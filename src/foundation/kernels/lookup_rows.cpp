#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/kernels/lookup_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/kernels/lookup_rows.h"

#include <algorithm>
#include <cstring>

#include "foundation/components-inl.h"
#include "foundation/dispatch.h"
#include "foundation/look_up-inl.h"
#include "foundation/spans-inl.h"
#include "foundation/table-inl.h"
#include "foundation/widen-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

struct LookUpLevels : Table256 {
  using Lane = uint8_t;
  using Table256::Table256;
};

using D8 = hn::ScalableTag<uint8_t>;
#if HWY_TARGET == HWY_SCALAR
using D16 = hn::Rebind<uint16_t, D8>;
#else
using D16 = hn::Repartition<uint16_t, D8>;
#endif
using V16 = hn::Vec<D16>;

// With v times 256 and g times 8, the high half of the product is v g >> 5. What saturates at the
// top is 255 and above, and what saturates at the bottom is below 0.
struct GainsAndOffsets {
  V16 gain, offset;

  HWY_INLINE V16 operator()(D16 d16, V16 v) const {
    const V16 biased = hn::SaturatedAdd(hn::MulHigh(v, gain), offset);
    return hn::SaturatedSub(biased, hn::Set(d16, GainOffset::kOffsetBias));
  }
};
struct ApplyGainOffset {
  using Lane = uint8_t;
  GainsAndOffsets law;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V v) const {
    return OnWideScaled(d, law, law, v);
  }
};
// The laws of the elements of a vector.
struct LawsAt {
  GainsAndOffsets even, odd;
};
struct ApplyGainsAndOffsets {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V v, const LawsAt* laws) const {
    return OnWideScaled(d, laws->even, laws->odd, v);
  }
};
HWY_INLINE V16 InLanes(V16 gain) { return hn::ShiftLeft<3>(gain); }

void LookUpRow(KyBW8* out, size_t n, const KyBW8* in, const LookupTable* table) {
  MapSpan(LookUpLevels(table->level), out, n, in);
}
void GainOffsetRow(KyBW8* out, size_t n, const KyBW8* in, const GainOffset* law) {
  const D16 d16;
  MapSpan(ApplyGainOffset{{InLanes(hn::Set(d16, law->gain)), hn::Set(d16, law->offset)}}, out, n,
          in);
}

#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3 && HWY_TARGET != HWY_AVX3_DL
struct ApplyFloatLaw {
  using Lane = uint8_t;
  FloatLaw law;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V v) const {
    const auto apply = [&](auto df, auto level) HWY_ATTR {
      const auto scaled = hn::Mul(level, hn::Set(df, law.gain));
      return TruncateFitting(df, hn::Add(scaled, hn::Set(df, law.offset)));
    };
    return OnFloats(d, apply, v);
  }
};
void FloatLawRow(KyBW8* out, size_t n, const KyBW8* in, const FloatLaw* law) {
  MapSpan(ApplyFloatLaw{*law}, out, n, in);
}
constexpr MapKernel<KyBW8, KyBW8, FloatLaw> kFloatLaw = kEachRow<&FloatLawRow>;
#else
constexpr MapKernel<KyBW8, KyBW8, FloatLaw> kFloatLaw = nullptr;
#endif

// A law for each component.
template <class Law>
struct OnComponents {
  using Lane = uint8_t;
  Law first, second, third;
  template <class D, class V>
  HWY_INLINE Planes3<V> operator()(D d, const Planes3<V>& color) const {
    return {first(d, color.c0), second(d, color.c1), third(d, color.c2)};
  }
};
LookUpLevels TableOf(const ColorTables* tables, int i) {
  return LookUpLevels(tables->component[i].level);
}
void LookUpColorsRow(KyC24* out, size_t n, const KyC24* in, const ColorTables* tables) {
  using Op = OnComponents<LookUpLevels>;
  MapSpan(Op{TableOf(tables, 0), TableOf(tables, 1), TableOf(tables, 2)}, out, n, in);
}

#if HWY_TARGET == HWY_AVX3_DL
struct ToFalseColors : OnComponents<LookUpLevels> {
  template <class D, class V>
  HWY_INLINE Planes3<V> operator()(D d, V grey) const {
    return OnComponents::operator()(d, Planes3<V>{grey, grey, grey});
  }
};
void FalseColorsRow(KyC24* out, size_t n, const KyBW8* in, const Palette* palette) {
  const ColorTables* const tables = &palette->components;
  MapSpan(ToFalseColors{{TableOf(tables, 0), TableOf(tables, 1), TableOf(tables, 2)}}, out, n, in);
}
#else
// Three tables in registers take nearly twice as long. The fourth byte of a colour lands on the
// first byte of the next pixel, which is stored later.
void FalseColorsRow(KyC24* out, size_t n, const KyBW8* in, const Palette* palette) {
  if (n == 0) return;
  for (size_t i = 0; i + 1 < n; ++i)
    std::memcpy(static_cast<void*>(out + i), palette->colors + in[i], sizeof(KyC24A));
  std::memcpy(static_cast<void*>(out + n - 1), palette->colors + in[n - 1], sizeof(KyC24));
}
#endif
void GainOffsetColorsRow(KyC24* out, size_t n, const KyC24* in, const ColorGainOffset* laws) {
  static_assert(hn::MaxLanes(D16()) <= ColorGainOffset::kLanes);
  const auto from = [=](size_t component) HWY_ATTR {
    const size_t place = (6 - component) % 3;
    const V16 gain = hn::LoadU(D16(), laws->gain + place);
    return GainsAndOffsets{InLanes(gain), hn::LoadU(D16(), laws->offset + place)};
  };
  const LawsAt at[3] = {{from(0), from(1)}, {from(1), from(2)}, {from(2), from(3)}};
  MapSpan(ApplyGainsAndOffsets(), reinterpret_cast<uint8_t*>(out), 3 * n,
          reinterpret_cast<const uint8_t*>(in), ComponentsFrom<LawsAt>{at});
}

struct PlaceInTable {
  using Lane = uint16_t;
  int shift;
  uint16_t last;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V v) const {
    return hn::Min(hn::ShiftRightSame(v, shift), hn::Set(d, last));
  }
};
void LookUpDeepRow(KyBW8* out, size_t n, const KyBW16* in, const DeepTable* table) {
  constexpr size_t kPieceOfRow = 2048;  // stays in a first cache
  const PlaceInTable place{table->shift, table->last};
  const bool isSmall = std::min(0xFFFF >> table->shift, int{table->last}) < 256;
  const LookUpLevels lowest(table->lowest.level);
  for (size_t i = 0; i < n; i += kPieceOfRow) {
    const size_t count = std::min(kPieceOfRow, n - i);
    if (isSmall) {
      MapSpan(place, out + i, count, in + i);
      MapSpan(lowest, out + i, count, out + i);
    } else {
      KyBW16 places[kPieceOfRow];
      MapSpan(place, places, count, in + i);
      LookUpBytes(out + i, count, places, table->levels);
    }
  }
}

constexpr LookupKernels kKernels = {
    kEachRow<&LookUpRow>,       kEachRow<&GainOffsetRow>,       kFloatLaw,
    kEachRow<&LookUpColorsRow>, kEachRow<&GainOffsetColorsRow>, kEachRow<&FalseColorsRow>,
    kEachRow<&LookUpDeepRow>};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(LookupKernels)
