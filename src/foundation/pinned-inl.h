// Vectors that compilers have to keep in registers. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_PINNED_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_PINNED_INL_H_
#undef KY_FOUNDATION_PINNED_INL_H_
#else
#define KY_FOUNDATION_PINNED_INL_H_
#endif

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

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
