#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "vectors/profile_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "vectors/profile_rows.h"

#include "foundation/dispatch.h"
#include "foundation/rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// floor((behind - before) / 2) + 128 = floor((behind + (255 - before) + 1) / 2)
struct Slope {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V before, V behind) const {
    return hn::AverageRound(behind, hn::Xor(before, hn::Set(d, 255)));
  }
};

// The truncated mean of a truncated mean loses nothing more: (before + 2 at + behind) / 4.
struct Binomial {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V before, V at, V behind) const {
    const auto mean = [&](V a, V b) HWY_ATTR {
      return hn::Sub(hn::AverageRound(a, b), hn::And(hn::Xor(a, b), hn::Set(d, 1)));
    };
    return mean(mean(before, behind), at);
  }
};

struct Transitions {
  using Lane = uint8_t;
  KyBW8 threshold, edges;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V before, V at) const {
    const V t = hn::Set(d, threshold);
    const auto notAbove = [&](V v) HWY_ATTR { return VecOfEqual(d, hn::Max(v, t), t); };
    const auto notBelow = [&](V v) HWY_ATTR { return VecOfEqual(d, hn::Min(v, t), t); };
    const V falling = hn::AndNot(notAbove(before), notAbove(at));
    const V rising = hn::AndNot(notBelow(before), notBelow(at));
    return hn::Or(hn::And(falling, hn::Set(d, edges & kFalling)),
                  hn::And(rising, hn::Set(d, edges & kRising)));
  }

 private:
  template <class D, class V>
  static HWY_INLINE V VecOfEqual(D d, V a, V b) {
    return hn::VecFromMask(d, hn::Eq(a, b));
  }
};

void MapSlope(KyBW8* out, size_t n, const KyBW8* before, const KyBW8* behind) {
  MapSpan(Slope(), out, n, before, behind);
}
void MapBinomial(KyBW8* out, size_t n, const KyBW8* before, const KyBW8* at, const KyBW8* behind) {
  MapSpan(Binomial(), out, n, before, at, behind);
}
void MapTransitions(KyBW8* marks, size_t n, const KyBW8* levels, KyBW8 threshold, KyBW8 edges) {
  MapSpan(Transitions{threshold, edges}, marks, n, levels - 1, levels);
}

constexpr ProfileKernels kKernels = {&MapSlope, &MapBinomial, &MapTransitions};

}  // namespace

const ProfileKernels* TableOfProfileKernels() { return &kKernels; }

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ky {
HWY_EXPORT(TableOfProfileKernels);
const ProfileKernels& ChooseProfileKernels() noexcept {
  return *KY_DISPATCH(TableOfProfileKernels)();
}
}  // namespace ky
#endif
