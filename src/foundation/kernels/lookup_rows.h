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
// level * gain + offset in single precision, each step rounded; the result is truncated and limited
// to 0..255. All results fit 32 bits before they are limited.
struct FloatLaw {
  float gain, offset;
};
// A table for each component.
struct ColorTables {
  LookupTable component[3];
};
// A colour for each level, by its components and as a whole.
struct Palette {
  ColorTables components;
  KyC24A colors[256];
};
// The laws of three components, in the order in which every second element of a row of components
// needs them: place k has that of component 2 k % 3. Rows that begin with component i take them
// from place (3 - i) % 3 on.
struct ColorGainOffset {
  static constexpr int kLanes = 32;  // of 16 bits in the longest vector

  KyBW16 gain[kLanes + 2], offset[kLanes + 2];
};
// levels[min(source >> shift, last)]. The first 256 of them, where the last is repeated if there
// are fewer, are in `lowest`.
struct DeepTable {
  const KyBW8* levels;
  KyBW16 last;
  int shift;
  LookupTable lowest;
};

struct LookupKernels {
  MapKernel<KyBW8, KyBW8, LookupTable> lookUp;
  MapKernel<KyBW8, KyBW8, GainOffset> gainOffset;
  MapKernel<KyBW8, KyBW8, FloatLaw> floatLaw;  // null where tables are faster
  MapKernel<KyC24, KyC24, ColorTables> lookUpColors;
  MapKernel<KyC24, KyC24, ColorGainOffset> gainOffsetColors;
  MapKernel<KyC24, KyBW8, Palette> falseColors;
  MapKernel<KyBW8, KyBW16, DeepTable> lookUpDeep;
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
