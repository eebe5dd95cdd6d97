#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/kernels/lookup_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/kernels/lookup_rows.h"

#include "foundation/dispatch.h"
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

constexpr LookupKernels kKernels = {&LookUpRow, &GainOffsetRow};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(LookupKernels)
