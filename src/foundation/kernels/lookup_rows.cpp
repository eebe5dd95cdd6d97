#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/kernels/lookup_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/kernels/lookup_rows.h"

#include <algorithm>

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

// With v times 256 and g times 8, the high half of the product is v g >> 5. What saturates at the
// top is 255 and above, and what saturates at the bottom is below 0.
struct ApplyGainOffset {
  using Lane = uint8_t;
  struct Wide {
    uint16_t gain, offset;
    template <class D16, class V>
    HWY_INLINE V operator()(D16 d16, V v) const {
      const V product = hn::MulHigh(v, hn::Set(d16, gain));
      const V biased = hn::SaturatedAdd(product, hn::Set(d16, offset));
      return hn::SaturatedSub(biased, hn::Set(d16, GainOffset::kOffsetBias));
    }
  } wide;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V v) const {
    return OnWideScaled(d, wide, v);
  }
};

void LookUpRow(KyBW8* out, size_t n, const KyBW8* in, const LookupTable* table) {
  MapSpan(LookUpLevels(table->level), out, n, in);
}
void GainOffsetRow(KyBW8* out, size_t n, const KyBW8* in, const GainOffset* law) {
  const auto gain = static_cast<uint16_t>(8 * law->gain);
  MapSpan(ApplyGainOffset{{gain, law->offset}}, out, n, in);
}

#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3 && HWY_TARGET != HWY_AVX3_DL
struct ApplyFloatLaw {
  using Lane = uint8_t;
  FloatLaw law;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V v) const {
    const auto apply = [&](auto df, auto level) HWY_ATTR {
      const auto sum = hn::Add(hn::Mul(level, hn::Set(df, law.gain)), hn::Set(df, law.added));
      return TruncateFitting(df, hn::Sub(sum, hn::Set(df, law.taken)));
    };
    return OnFloats(d, apply, v);
  }
};
void FloatLawRow(KyBW8* out, size_t n, const KyBW8* in, const FloatLaw* law) {
  MapSpan(ApplyFloatLaw{*law}, out, n, in);
}
constexpr MapKernel<KyBW8, KyBW8, FloatLaw> kFloatLaw = &FloatLawRow;
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
template <class Law>
struct OnGrey : OnComponents<Law> {
  template <class D, class V>
  HWY_INLINE Planes3<V> operator()(D d, V grey) const {
    return OnComponents<Law>::operator()(d, Planes3<V>{grey, grey, grey});
  }
};
LookUpLevels TableOf(const ColorTables* tables, int i) {
  return LookUpLevels(tables->component[i].level);
}
void LookUpColorsRow(KyC24* out, size_t n, const KyC24* in, const ColorTables* tables) {
  using Op = OnComponents<LookUpLevels>;
  MapSpan(Op{TableOf(tables, 0), TableOf(tables, 1), TableOf(tables, 2)}, out, n, in);
}
void FalseColorsRow(KyC24* out, size_t n, const KyBW8* in, const ColorTables* tables) {
  using Op = OnGrey<LookUpLevels>;
  MapSpan(Op{{TableOf(tables, 0), TableOf(tables, 1), TableOf(tables, 2)}}, out, n, in);
}
void GainOffsetColorsRow(KyC24* out, size_t n, const KyC24* in, const ColorGainOffset* laws) {
  const auto law = [=](int i) HWY_ATTR {
    const GainOffset& one = laws->component[i];
    return ApplyGainOffset{{static_cast<uint16_t>(8 * one.gain), one.offset}};
  };
  MapSpan(OnComponents<ApplyGainOffset>{law(0), law(1), law(2)}, out, n, in);
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

constexpr LookupKernels kKernels = {&LookUpRow,       &GainOffsetRow,       kFloatLaw,
                                    &LookUpColorsRow, &GainOffsetColorsRow, &FalseColorsRow,
                                    &LookUpDeepRow};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(LookupKernels)
