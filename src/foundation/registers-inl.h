// What keeps vectors in registers where compilers would have them in memory. Included by row files
// like lanes-inl.h.
#if defined(KY_FOUNDATION_REGISTERS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_REGISTERS_INL_H_
#undef KY_FOUNDATION_REGISTERS_INL_H_
#else
#define KY_FOUNDATION_REGISTERS_INL_H_
#endif

#include <cstdint>
#include <utility>

#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// The same vector, of which g++ knows no more than that it is in a register: it neither loads it
// again for each instruction that may have an operand in memory, nor changes the order of sums that
// the vector is part of.
template <class V>
HWY_INLINE V Pinned(V v) {
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3 && HWY_COMPILER_GCC_ACTUAL
  __asm__("" : "+v"(v.raw));
#endif
  return v;
}

// A vector that is loaded once. Compilers would rather read a vector that has several uses from
// memory for each of them, where every other one that is not aligned crosses a cache line.
HWY_INLINE hn::Vec<hn::ScalableTag<uint8_t>> LoadOnce(const uint8_t* from) {
  return Pinned(hn::LoadU(hn::ScalableTag<uint8_t>(), from));
}

// The attributes of lambdas that are inlined however large what surrounds them grows.
#undef KY_INLINE_ATTR
#if (HWY_COMPILER_GCC || HWY_COMPILER_CLANG) && !KY_SANITIZED
#define KY_INLINE_ATTR HWY_ATTR __attribute__((always_inline))
#else
#define KY_INLINE_ATTR HWY_ATTR
#endif

// f(0), ... f(kCount - 1), each with a constant of its own: compilers leave loops of many steps as
// they are, and arrays of vectors in memory with them.
template <int kCount, class F>
HWY_INLINE void ForEach(const F& f) {
  [&]<int... k>(std::integer_sequence<int, k...>) KY_INLINE_ATTR {
    (f(std::integral_constant<int, k>()), ...);
  }
  (std::make_integer_sequence<int, kCount>());
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
