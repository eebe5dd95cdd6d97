// Bytes from a table in memory, one after the other. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_LOOK_UP_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_LOOK_UP_INL_H_
#undef KY_FOUNDATION_LOOK_UP_INL_H_
#else
#define KY_FOUNDATION_LOOK_UP_INL_H_
#endif

#include <utility>

#include "foundation/spans-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// out[i] = table[places[i]]. Where an instruction inserts a byte of memory into a vector, that
// takes two thirds of the time of stores one by one, of which processors do one a cycle.
template <class Place>
HWY_INLINE void LookUpBytes(uint8_t* out, size_t n, const Place* places, const uint8_t* table) {
  size_t i = 0;
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSE4
  const auto eight = [=]<int... k>(const Place* at, std::integer_sequence<int, k...>) HWY_ATTR {
    __m128i v = _mm_setzero_si128();
    ((v = _mm_insert_epi8(v, table[at[k]], k)), ...);
    return v;
  };
  constexpr std::make_integer_sequence<int, 8> kLanes;
  for (; i + 16 <= n; i += 16) {
    const __m128i first = eight(places + i, kLanes), second = eight(places + i + 8, kLanes);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_unpacklo_epi64(first, second));
  }
#endif
  LookUpEach(out + i, n - i, places + i, table);
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
