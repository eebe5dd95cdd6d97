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

#include "ky/processor.h"

#define KY_PLAIN(Function) (*HWY_CHOOSE_FALLBACK(Function))
#define KY_DISPATCH(Function) \
  (KyGetMMX() != 0 ? HWY_DYNAMIC_DISPATCH(Function) : KY_PLAIN(Function))

#define KY_TABLE_OF_TARGET(Type)                    \
  namespace ky {                                    \
  namespace HWY_NAMESPACE {                         \
  const Type* TableOf##Type() { return &kKernels; } \
  }                                                 \
  }

#endif  // KY_FOUNDATION_DISPATCH_H_

// Each target gives its table; the last one, in whose turn HWY_ONCE is 1, also makes the choice.
// With KY_EXPORT_KERNELS_IF, Choose<Type>(suits) returns the plain path's table unless it `suits`.
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
