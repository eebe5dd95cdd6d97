#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "point/uniformize_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "point/uniformize_rows.h"

#include "foundation/components-inl.h"
#include "foundation/dispatch.h"
#include "foundation/kernels/division-inl.h"
#include "foundation/spans-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

using D8 = hn::ScalableTag<uint8_t>;
using DF = FloatsOfBytes<D8>;
using VF = hn::Vec<DF>;
constexpr size_t kFloats = hn::MaxLanes(D8()) / hn::MaxLanes(DF());  // vectors for one of bytes

// The levels of the elements of a vector.
struct LevelsAt {
  VF of[kFloats];
};
struct Levels {
  explicit Levels(const KyBW8 (&component)[3]) {
    KyBW8 pattern[hn::MaxLanes(D8()) + 2];
    for (size_t i = 0; i < sizeof pattern; ++i) pattern[i] = component[i % 3];
    for (size_t i = 0; i < 3; ++i) FloatsOf(D8(), hn::LoadU(D8(), pattern + i), at[i].of);
  }
  ComponentsFrom<LevelsAt> At0() const { return {at}; }

  LevelsAt at[3];
};

struct ByLight {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V source, V light, const LevelsAt* level) const {
    return QuotientsOf(d, source, hn::Max(light, hn::Set(d, 1)), hn::Set(DF(), kJustAbove1),
                       [=](DF, size_t i, VF quotient)
                           HWY_ATTR { return RoundFitting(hn::Mul(quotient, level->of[i])); });
  }
};
struct ByOneLight {
  using Lane = uint8_t;
  float level;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V source, V light) const {
    return QuotientsOf(d, source, hn::Max(light, hn::Set(d, 1)), hn::Set(DF(), level * kJustAbove1),
                       [](DF, size_t, VF quotient) HWY_ATTR { return RoundFitting(quotient); });
  }
};

// Halves of either sign are rounded up, so that what makes them slightly more is added. It is less
// than the distance of 1/510 of a quotient from the next half, and more than errors: below 2^9,
// where limits are still near, those are below 2^-12.
struct ByBoth {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V source, V light, V dark, const LevelsAt* range,
                          const LevelsAt* darkLevel) const {
    const V zero = hn::Zero(d), span = hn::SaturatedSub(light, dark);
    const V from = hn::IfThenElse(hn::Eq(span, zero), dark, source);
    return QuotientsOf(d, Difference<V>{from, dark}, hn::Max(span, hn::Set(d, 1)),
                       hn::Set(DF(), 1.0f), [=](DF, size_t i, VF quotient) HWY_ATTR {
                         const VF scaled = hn::Mul(quotient, range->of[i]);
                         return RoundFitting(hn::Add(scaled, darkLevel->of[i]));
                       });
  }
};

using Bytes = Rows<const KyBW8>;

void DivideByLight(const Rows<KyBW8>& out, const Bytes& in, const Bytes& light,
                   const Rows<const ShadingLevels>& levels) {
  const auto map = [&](const auto& op, auto... level) HWY_ATTR {
    const auto row = [&](KyBW8* to, size_t n, const KyBW8* from, const KyBW8* lit)
                         HWY_ATTR { MapSpan(op, to, n, from, lit, level...); };
    ForEachRow(row, out, in, light);
  };
  const auto& level = levels.first->light;
  if (level[0] == level[1] && level[1] == level[2]) {
    map(ByOneLight{static_cast<float>(level[0])});
  } else {
    const Levels each(level);
    map(ByLight(), each.At0());
  }
}
void DivideByBoth(const Rows<KyBW8>& out, const Bytes& in, const Bytes& light, const Bytes& dark,
                  const Rows<const ShadingLevels>& levels) {
  Levels range(levels.first->light), darkLevel(levels.first->dark);
  for (size_t i = 0; i < 3; ++i) {
    for (size_t k = 0; k < kFloats; ++k) {
      VF& low = darkLevel.at[i].of[k];
      range.at[i].of[k] = hn::Sub(range.at[i].of[k], low);
      low = hn::Add(low, hn::Set(DF(), 1.0f / (1 << 11)));
    }
  }
  const auto row =
      [&](KyBW8* to, size_t n, const KyBW8* from, const KyBW8* lit, const KyBW8* unlit)
          HWY_ATTR { MapSpan(ByBoth(), to, n, from, lit, unlit, range.At0(), darkLevel.At0()); };
  ForEachRow(row, out, in, light, dark);
}
constexpr UniformizeKernels kKernels = {&DivideByLight, &DivideByBoth};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(UniformizeKernels)
