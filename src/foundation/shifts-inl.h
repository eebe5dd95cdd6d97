// Lanes in other places: shifted across two vectors, or reversed. Included by row files like
// lanes-inl.h.
#if defined(KY_FOUNDATION_SHIFTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_SHIFTS_INL_H_
#undef KY_FOUNDATION_SHIFTS_INL_H_
#else
#define KY_FOUNDATION_SHIFTS_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// The vector that begins kLanes elements after `here` begins, in a row that goes on with `next`.
// Vectors of one lane have no such place for more than one.
template <size_t kLanes, class D>
HWY_INLINE hn::Vec<D> After([[maybe_unused]] D d, [[maybe_unused]] hn::Vec<D> here,
                            hn::Vec<D> next) {
#if HWY_TARGET == HWY_SCALAR
  static_assert(kLanes == 1);
  return next;
#elif HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  // Shifts go by 4 bytes, or by blocks of 16: what follows each block of `here` is brought into its
  // place.
  constexpr size_t kBytes = kLanes * sizeof(hn::TFromD<D>);
  static_assert(sizeof(hn::Vec<D>) == 64);
  if constexpr (kBytes % 4 == 0) {
    return hn::Vec<D>{_mm512_alignr_epi32(next.raw, here.raw, kBytes / 4)};
  } else {
    const hn::Vec<D> following{_mm512_alignr_epi32(next.raw, here.raw, 4)};
    return hn::CombineShiftRightBytes<kBytes>(d, following, here);
  }
#else
  constexpr size_t kBytes = kLanes * sizeof(hn::TFromD<D>);
  if constexpr (sizeof(hn::Vec<D>) == 16)
    return hn::CombineShiftRightBytes<kBytes>(d, next, here);
  else if constexpr (kBytes == 16)
    return hn::ConcatLowerUpper(d, next, here);
  else
    return hn::CombineShiftRightBytes<kBytes>(d, hn::ConcatLowerUpper(d, next, here), here);
#endif
}

// The bytes of a vector in reverse order.
template <class D>
HWY_INLINE hn::Vec<D> ReverseBytes(D d, hn::Vec<D> v) {
#if HWY_TARGET == HWY_SCALAR
  (void)d;
  return v;
#else
  alignas(16) static constexpr uint8_t kReversed[16] = {15, 14, 13, 12, 11, 10, 9, 8,
                                                        7,  6,  5,  4,  3,  2,  1, 0};
  return hn::ReverseBlocks(d, hn::TableLookupBytes(v, hn::LoadDup128(d, kReversed)));
#endif
}

// Three vectors of up to 16 bytes that hold as many triples as one of them bytes: the triples in
// reverse order.
template <class D>
HWY_INLINE void ReverseTriples(D d, hn::Vec<D>& a, hn::Vec<D>& b, hn::Vec<D>& c) {
#if HWY_TARGET == HWY_SCALAR
  (void)d, (void)a, (void)b, (void)c;
#else
  // Byte i of the result comes from byte 45 - i + 2 * (i % 3): row o, column s, of this table says
  // which bytes of vector s vector o of the result takes.
  struct Tables {
    uint8_t bytes[3][3][16];
  };
  alignas(16) static constexpr Tables kTables = [] {
    Tables tables{};
    for (int i = 0; i < 48; ++i) {
      const int from = 45 - i + 2 * (i % 3);
      for (int s = 0; s < 3; ++s)
        tables.bytes[i / 16][s][i % 16] = static_cast<uint8_t>(from / 16 == s ? from % 16 : 0x80);
    }
    return tables;
  }();
  const auto take = [&](int to, int from, hn::Vec<D> v) HWY_ATTR {
    return hn::TableLookupBytesOr0(v, hn::LoadU(d, kTables.bytes[to][from]));
  };
  const auto first = hn::Or(take(0, 1, b), take(0, 2, c));
  const auto second = hn::Or(hn::Or(take(1, 0, a), take(1, 1, b)), take(1, 2, c));
  c = hn::Or(take(2, 0, a), take(2, 1, b));
  a = first;
  b = second;
#endif
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
