// The row kernels of lookup tables.
#pragma once

#include "foundation/map.h"
#include "ky/pixels.h"

namespace ky {

struct LookupTable {
  KyBW8 level[256];
};
// The law of ImgGainOffset where no step of it leaves 16 bits.
struct GainOffset {
  KyBW16 gain;    // g, at most kMostGain
  KyBW16 offset;  // kOffsetBias + o, for o from -kOffsetBias to 255

  static constexpr int kMostGain = 8191, kOffsetBias = 0xFF00;
};

struct LookupKernels {
  MapKernel<KyBW8, KyBW8, LookupTable> lookUp;
  MapKernel<KyBW8, KyBW8, GainOffset> gainOffset;
};

// The kernels of the instruction set that this call may use.
const LookupKernels& ChooseLookupKernels() noexcept;

// destination = table[source].
inline KY_ERRORS LookUp(Rows<KyBW8> destination, Rows<const KyBW8> source,
                        const LookupTable& table) noexcept {
  return MapRows(ChooseLookupKernels().lookUp, destination, FromRows(source),
                 FromParameters(table));
}

}  // namespace ky
