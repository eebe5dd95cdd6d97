// The row kernels of the affine resampler.
#pragma once

#include "foundation/rows.h"
#include "geometry/gather.h"
#include "geometry/inverse_map.h"

namespace ky {

// n destination pixels from the places of a line. Everything that a place takes lies inside the
// source: its pixel, or for bilinear kernels its 2 x 2 pixels.
template <class T>
using SampleKernel = void (*)(T* out, std::size_t n, const Rows<const T>& source,
                              const SourceLine& line);

template <class T>
struct SampleKernels {
  SampleKernel<T> nearest, bilinear4, bilinear8;
};
struct AffineKernels {
  SampleKernels<KyBW8> grey;
  SampleKernels<KyC24> color;
};

// The kernels of the instruction set that this call may use on a source (see CanGather).
const AffineKernels& ChooseAffineKernels(bool gathers) noexcept;

inline const SampleKernels<KyBW8>& KernelsFor(const Rows<const KyBW8>& source) noexcept {
  return ChooseAffineKernels(CanGather(source)).grey;
}
inline const SampleKernels<KyC24>& KernelsFor(const Rows<const KyC24>& source) noexcept {
  return ChooseAffineKernels(CanGather(source)).color;
}

}  // namespace ky
