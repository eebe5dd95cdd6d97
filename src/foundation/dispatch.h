// The choice of instruction set, once a public call.
//
// A row file is compiled once per instruction set. Its kernels stand in a table, kKernels, and it
// ends, outside all namespaces, with KY_EXPORT_KERNELS of the table's type: that defines the
// function Choose<Type>(), which the row file's header declares and which returns the table that
// this call may use. The plain path, KY_PLAIN, is the same text compiled for the scalar target.
//
// What is not a table goes through HWY_EXPORT of a function; KY_DISPATCH, inside namespace ky and
// after HWY_EXPORT, calls the right one.
#ifndef KY_FOUNDATION_DISPATCH_H_
#define KY_FOUNDATION_DISPATCH_H_

#include <hwy/highway.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "ky/processor.h"

namespace ky {

// Where the tables that HWY_EXPORT makes hold the function of a target, or of the next narrower one
// that is compiled. Wider targets stand before narrower ones, and the plain path stands last.
constexpr std::size_t PlaceOf(std::int64_t target) {
  return static_cast<std::size_t>(std::countr_zero(static_cast<std::uint64_t>(
      HWY_CHOSEN_TARGET_SHIFT(HWY_TARGETS & ~(target - 1)) | HWY_CHOSEN_TARGET_MASK_SCALAR)));
}
inline constexpr std::size_t kPlainPlace = HWY_MAX_DYNAMIC_TARGETS + 1;

#if HWY_ARCH_X86
// Where a path's functions stand, by KY_PATHS.
inline constexpr std::size_t kPlaces[] = {kPlainPlace, PlaceOf(HWY_SSSE3), PlaceOf(HWY_SSE4),
                                          PlaceOf(HWY_AVX2), PlaceOf(HWY_AVX3_DL)};
// Has Highway ask the processor, in the first of all calls.
[[gnu::noinline, gnu::cold]] inline std::size_t FirstChoice() noexcept {
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  return hwy::GetChosenTarget().GetIndex();
}
#endif

// The place of the functions that calls take at present.
inline std::size_t PlaceOfPath() noexcept {
  const int widest = KyGetMMX();
#if HWY_ARCH_X86
  if (widest == KY_PATH_PLAIN) return kPlainPlace;
  std::size_t place = hwy::GetChosenTarget().GetIndex();
  if (place == 0) [[unlikely]]
    place = FirstChoice();
  return std::max(place, kPlaces[widest]);
#else
  // Highway 1.0.3 would take NEON on processors with instructions for AES only, which nothing here
  // needs.
  return widest == KY_PATH_NEON ? PlaceOf(HWY_NEON) : kPlainPlace;
#endif
}

}  // namespace ky

#define KY_PLAIN(Function) (*HWY_CHOOSE_FALLBACK(Function))
#if (HWY_TARGETS & (HWY_TARGETS - 1)) == 0  // a single target has no table
#define KY_DISPATCH(Function) HWY_DYNAMIC_DISPATCH(Function)
#else
#define KY_DISPATCH(Function) (*HWY_DISPATCH_TABLE(Function)[ky::PlaceOfPath()])
#endif

#define KY_TABLE_OF_TARGET(Type)                    \
  namespace ky {                                    \
  namespace HWY_NAMESPACE {                         \
  const Type* TableOf##Type() { return &kKernels; } \
  }                                                 \
  }

#endif  // KY_FOUNDATION_DISPATCH_H_

// Each target gives its table; the last one, in whose turn HWY_ONCE is 1, also makes the choice.
// With KY_EXPORT_KERNELS_IF, Choose<Type>(suits) returns the plain path's table where `suits` is
// false.
#undef KY_EXPORT_KERNELS
#undef KY_EXPORT_KERNELS_IF
#if HWY_ONCE
#define KY_EXPORT_KERNELS(Type)                                                 \
  KY_TABLE_OF_TARGET(Type)                                                      \
  namespace ky {                                                                \
  HWY_EXPORT(TableOf##Type);                                                    \
  const Type& Choose##Type() noexcept { return *KY_DISPATCH(TableOf##Type)(); } \
  }
#define KY_EXPORT_KERNELS_IF(Type)                                              \
  KY_TABLE_OF_TARGET(Type)                                                      \
  namespace ky {                                                                \
  HWY_EXPORT(TableOf##Type);                                                    \
  const Type& Choose##Type(bool suits) noexcept {                               \
    return *(suits ? KY_DISPATCH(TableOf##Type)() : KY_PLAIN(TableOf##Type)()); \
  }                                                                             \
  }
#else
#define KY_EXPORT_KERNELS(Type) KY_TABLE_OF_TARGET(Type)
#define KY_EXPORT_KERNELS_IF(Type) KY_TABLE_OF_TARGET(Type)
#endif
