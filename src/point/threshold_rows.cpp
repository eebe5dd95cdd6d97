#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "point/threshold_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "point/threshold_rows.h"

#include "foundation/bits-inl.h"
#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"
#include "foundation/stream-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

template <class D, class V>
HWY_INLINE auto IsAtMost(D, V a, V b) {
  return hn::Eq(hn::Min(a, b), a);
}

struct SplitOp {
  using Lane = uint8_t;
  Split split;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V v) const {
    return hn::IfThenElse(IsAtMost(d, hn::Set(d, split.threshold), v), hn::Set(d, split.high),
                          hn::Set(d, split.low));
  }
};

struct DoubleSplitOp {
  using Lane = uint8_t;
  DoubleSplit split;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V v) const {
    const V notBelow = hn::IfThenElse(IsAtMost(d, hn::Set(d, split.lowThreshold), v),
                                      hn::Set(d, split.middle), hn::Set(d, split.low));
    return hn::IfThenElse(IsAtMost(d, v, hn::Set(d, split.highThreshold)), notBelow,
                          hn::Set(d, split.high));
  }
};

struct BoxOp {
  using Lane = uint8_t;
  ColorBox box;

  template <class D, class V>
  HWY_INLINE V operator()(D d, const Planes3<V>& color) const {
    const auto within = [&](V v, KyBW8 least, KyBW8 most) HWY_ATTR {
      return hn::And(IsAtMost(d, hn::Set(d, least), v), IsAtMost(d, v, hn::Set(d, most)));
    };
    const auto inside = hn::And(within(color.c0, box.minimum.c0, box.maximum.c0),
                                hn::And(within(color.c1, box.minimum.c1, box.maximum.c1),
                                        within(color.c2, box.minimum.c2, box.maximum.c2)));
    return hn::IfThenElse(inside, hn::Set(d, box.inside), hn::Set(d, box.outside));
  }
};

struct ChoiceOp {
  Split split;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V truth) const {
    return hn::IfThenElse(hn::MaskFromVec(truth), hn::Set(d, split.high), hn::Set(d, split.low));
  }
};

void SplitRow(KyBW8* out, size_t n, const KyBW8* in, const Split* split) {
  MapSpan(SplitOp{*split}, out, n, in);
}
#if KY_STREAMS
void SplitLines(KyBW8* out, size_t n, const KyBW8* in, const Split* split) {
  StreamSpan(SplitOp{*split}, out, n, in);
}
#else
constexpr RowKernel<KyBW8, KyBW8, Split> SplitLines = nullptr;
#endif
void DoubleSplitRow(KyBW8* out, size_t n, const KyBW8* in, const DoubleSplit* split) {
  MapSpan(DoubleSplitOp{*split}, out, n, in);
}
void BoxRow(KyBW8* out, size_t n, const KyC24* in, const ColorBox* box) {
  MapSpan(BoxOp{*box}, out, n, in);
}
void PackRow(KyBW8* out, size_t n, const KyBW8* in, const Split* split) {
  PackBits(SplitOp{*split}, out, n, in);
}
void UnpackRow(KyBW8* out, size_t n, const KyBW8* in, const Split* split) {
  UnpackBits(ChoiceOp{*split}, out, n, in);
}

constexpr ThresholdKernels kKernels = {{kEachRow<&SplitRow>, SplitLines},
                                       kEachRow<&DoubleSplitRow>,
                                       kEachRow<&BoxRow>,
                                       &PackRow,
                                       &UnpackRow};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ThresholdKernels)
