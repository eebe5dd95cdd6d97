// Lookup tables in registers. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_TABLE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_TABLE_INL_H_
#undef KY_FOUNDATION_TABLE_INL_H_
#else
#define KY_FOUNDATION_TABLE_INL_H_
#endif

#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// Looks 8-bit lanes up in a table of 256 entries.
#if HWY_TARGET == HWY_SCALAR
class Table256 {
 public:
  explicit Table256(const uint8_t* table) : table_(table) {}
  template <class D>
  HWY_INLINE hn::Vec<D> operator()(D d, hn::Vec<D> v) const {
    return hn::Set(d, table_[hn::GetLane(v)]);
  }

 private:
  const uint8_t* table_;
};
#elif HWY_TARGET == HWY_AVX3_DL
// A shuffle looks up half of the table.
class Table256 {
 public:
  using D = hn::ScalableTag<uint8_t>;

  explicit Table256(const uint8_t* table) {
    for (int i = 0; i < 4; ++i) quarters_[i] = hn::LoadU(D(), table + 64 * i);
  }
  HWY_INLINE hn::Vec<D> operator()(D, hn::Vec<D> v) const {
    const auto half = [&](int i) HWY_ATTR {
      return hn::Vec<D>{_mm512_permutex2var_epi8(quarters_[i].raw, v.raw, quarters_[i + 1].raw)};
    };
    const hn::Mask<D> isUpper{_mm512_movepi8_mask(v.raw)};
    return hn::IfThenElse(isUpper, half(2), half(0));
  }

 private:
  hn::Vec<D> quarters_[4];
};
#else
// A shuffle looks up one sixteenth of the table, and gives 0 for indices of 128 and more. For v
// below 128, v + 112 - 16 k is such an index from 16 (k + 1) on, and ends in the low four bits of
// v, so that sixteenth k is looked up for all v below that. It is therefore stored as its
// difference (exclusive or) from the next one, and the differences add up. The upper half of the
// table, found with the same indices, is stored as its difference from the lower.
class Table256 {
 public:
  // Shuffles of x86 take the low four bits of an index below 128; others give 0 for 16 and more.
  static constexpr bool kLowBitsCount = HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128;

  explicit Table256(const uint8_t* table) {
    const hn::FixedTag<uint8_t, 16> d;
    for (int i = 0; i < 128; i += 16) {
      const auto difference = [&](const uint8_t* at) HWY_ATTR {
        const auto entries = hn::LoadU(d, at);
        return i == 112 ? entries : hn::Xor(entries, hn::LoadU(d, at + 16));
      };
      const auto lower = difference(table + i), upper = difference(table + 128 + i);
      hn::Store(lower, d, lower_ + i);
      hn::Store(hn::Xor(lower, upper), d, upper_ + i);
    }
  }
  template <class D>
  HWY_INLINE hn::Vec<D> operator()(D d, hn::Vec<D> v) const {
    const auto part = [&](const uint8_t* differences, hn::Vec<D> index) HWY_ATTR {
      if constexpr (!kLowBitsCount) index = hn::And(index, hn::Set(d, 0x8F));
      return hn::TableLookupBytesOr0(hn::LoadDup128(d, differences), index);
    };
    const auto inHalf = hn::And(v, hn::Set(d, 127));
    auto lower = part(lower_ + 112, inHalf), upper = part(upper_ + 112, inHalf);
    for (int i = 0; i < 112; i += 16) {
      const auto index = hn::Add(inHalf, hn::Set(d, static_cast<uint8_t>(112 - i)));
      lower = hn::Xor(lower, part(lower_ + i, index));
      upper = hn::Xor(upper, part(upper_ + i, index));
    }
    const hn::RebindToSigned<D> signedD;
    const auto isUpper = hn::BitCast(d, hn::BroadcastSignBit(hn::BitCast(signedD, v)));
    return hn::Xor(lower, hn::And(upper, isUpper));
  }

 private:
  alignas(16) uint8_t lower_[128], upper_[128];
};
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
