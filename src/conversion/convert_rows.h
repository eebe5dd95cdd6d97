// The row kernels of conversions between pixel types.
#pragma once

#include "foundation/map.h"
#include "ky/pixels.h"

namespace ky {

template <class... T>
struct Types {};
using ConvertedTypes = Types<KyBW8, KyBW16, KyBW32, KyC15, KyC16, KyC24, KyC24A>;

// The kernel that makes pixels of type B from pixels of type A; null for A = B.
template <class B, class A>
struct Conversion {
  MapKernel<B, A> kernel;
};

// The kernels of all pairs.
template <class B, class All>
struct ConversionsTo;
template <class B, class... A>
struct ConversionsTo<B, Types<A...>> : Conversion<B, A>... {};
template <class All>
struct ConversionsOf;
template <class... B>
struct ConversionsOf<Types<B...>> : ConversionsTo<B, Types<B...>>... {};

struct ConvertKernels : ConversionsOf<ConvertedTypes> {
  template <class B, class A>
  MapKernel<B, A> Get() const noexcept {
    return static_cast<const Conversion<B, A>&>(*this).kernel;
  }
  MapKernel<KyBW8, KyBW16, int> shiftRight;  // min(255, s >> shift)
  MapKernel<KyBW16, KyBW8, int> shiftLeft;   // s << shift, for shifts up to 8
};

// The kernels of the instruction set that this call may use.
const ConvertKernels& ChooseConvertKernels() noexcept;

}  // namespace ky
