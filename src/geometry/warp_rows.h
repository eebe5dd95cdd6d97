// The row kernels of the warps by table. Sources have pixels.
#pragma once

#include "foundation/rows.h"
#include "geometry/gather.h"

namespace ky {

template <class T>
struct PixelWarpKernels {
  // n pixels from (xs[i] + shiftX, ys[i] + shiftY), 0 outside.
  void (*fromTables)(T* out, std::size_t n, const Rows<const T>& source, const KyBW16* xs,
                     const KyBW16* ys, int shiftX, int shiftY);
  // Pixels from packed positions, up to the first that lies outside; gives their number.
  // `rowStarts` holds the distance in bytes of each source row from the first.
  std::size_t (*fromPacked)(T* out, std::size_t n, const Rows<const T>& source,
                            const std::ptrdiff_t* rowStarts, const KyBW32* table);
};
struct WarpKernels {
  PixelWarpKernels<KyBW8> grey;
  PixelWarpKernels<KyC24> color;
};

// The kernels of the instruction set that this call may use on a source (see CanGather).
const WarpKernels& ChooseWarpKernels(bool gathers) noexcept;

inline const PixelWarpKernels<KyBW8>& WarpKernelsFor(const Rows<const KyBW8>& source) noexcept {
  return ChooseWarpKernels(CanGather(source)).grey;
}
inline const PixelWarpKernels<KyC24>& WarpKernelsFor(const Rows<const KyC24>& source) noexcept {
  return ChooseWarpKernels(CanGather(source)).color;
}

}  // namespace ky
