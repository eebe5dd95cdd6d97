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

// Looks 8-bit lanes up in a table of 64 or 128 entries. Lanes must be below that.
#if HWY_TARGET == HWY_SCALAR
template <int kEntries>
class LowTable {
 public:
  explicit LowTable(const uint8_t* table) : table_(table) {}
  template <class D>
  HWY_INLINE hn::Vec<D> operator()(D d, hn::Vec<D> v) const {
    return hn::Set(d, table_[hn::GetLane(v)]);
  }

 private:
  const uint8_t* table_;
};
#elif HWY_TARGET == HWY_AVX3_DL
template <int kEntries>
class LowTable {
 public:
  using D = hn::ScalableTag<uint8_t>;

  explicit LowTable(const uint8_t* table)
      : first_(hn::LoadU(D(), table)), last_(hn::LoadU(D(), table + kEntries - 64)) {}
  HWY_INLINE hn::Vec<D> operator()(D, hn::Vec<D> v) const {
    if constexpr (kEntries == 64) return hn::Vec<D>{_mm512_permutexvar_epi8(v.raw, first_.raw)};
    return hn::Vec<D>{_mm512_permutex2var_epi8(first_.raw, v.raw, last_.raw)};
  }

 private:
  hn::Vec<D> first_, last_;
};
#else
// A shuffle looks up sixteen entries, and gives 0 for indices of 128 and more. v + 112 - 16 k is
// such an index from 16 (k + 1) on, and ends in the low four bits of v, so that sixteenth k is
// looked up for all v below that. It is therefore stored as its difference (exclusive or) from the
// next one, and the differences add up.
template <int kEntries>
class LowTable {
 public:
  // Shuffles of x86 take the low four bits of an index below 128; others give 0 for 16 and more.
  static constexpr bool kLowBitsCount = HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128;

  explicit LowTable(const uint8_t* table) {
    const hn::FixedTag<uint8_t, 16> d;
    auto next = hn::LoadU(d, table + kLast);
    hn::Store(next, d, differences_ + kLast);
    for (int i = kLast - 16; i >= 0; i -= 16) {
      const auto entries = hn::LoadU(d, table + i);
      hn::Store(hn::Xor(entries, next), d, differences_ + i);
      next = entries;
    }
  }
  template <class D>
  HWY_INLINE hn::Vec<D> operator()(D d, hn::Vec<D> v) const {
    const auto part = [&](int i, hn::Vec<D> index) HWY_ATTR {
      if constexpr (!kLowBitsCount) index = hn::And(index, hn::Set(d, 0x8F));
      return hn::TableLookupBytesOr0(hn::LoadDup128(d, differences_ + i), index);
    };
    auto entries = part(kLast, v);
    for (int i = 0; i < kLast; i += 16)
      entries = hn::Xor(entries, part(i, hn::Add(v, hn::Set(d, static_cast<uint8_t>(112 - i)))));
    return entries;
  }

 private:
  static constexpr int kLast = kEntries - 16;
  alignas(16) uint8_t differences_[kEntries];
};
#endif

// The same of 256 entries. Below AVX-512 the upper half is stored as its difference from the lower,
// as both are found with the same indices.
#if HWY_TARGET == HWY_SCALAR
using Table256 = LowTable<256>;
#else
class Table256 {
 public:
  explicit Table256(const uint8_t* table) : lower_(table), upper_(Upper(table).entries) {}
  template <class D>
  HWY_INLINE hn::Vec<D> operator()(D d, hn::Vec<D> v) const {
#if HWY_TARGET == HWY_AVX3_DL
    const hn::Mask<D> isUpper{_mm512_movepi8_mask(v.raw)};
    return hn::IfThenElse(isUpper, upper_(d, v), lower_(d, v));
#else
    const auto inHalf = hn::And(v, hn::Set(d, 127));
    const hn::RebindToSigned<D> signedD;
    const auto isUpper = hn::BitCast(d, hn::BroadcastSignBit(hn::BitCast(signedD, v)));
    return hn::Xor(lower_(d, inHalf), hn::And(upper_(d, inHalf), isUpper));
#endif
  }

 private:
  struct Upper {
    explicit Upper(const uint8_t* table) {
      for (int i = 0; i < 128; ++i)
        entries[i] = static_cast<uint8_t>(table[128 + i] ^ (kIsApart ? 0 : table[i]));
    }
    static constexpr bool kIsApart = HWY_TARGET == HWY_AVX3_DL;
    uint8_t entries[128];
  };

  LowTable<128> lower_, upper_;
};
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
