// The row kernels of the thresholds.
#pragma once

#include "foundation/map.h"
#include "foundation/stream.h"

namespace ky {

// What the kernels are told once a call.
struct Split {  // below the threshold: low, else high
  KyBW8 threshold, low, high;
};
struct DoubleSplit {  // above highThreshold: high; else below lowThreshold: low; else middle
  KyBW8 lowThreshold, highThreshold, low, middle, high;
};
struct ColorBox {
  KyC24 minimum, maximum;
  KyBW8 outside, inside;
};

struct ThresholdKernels {
  FreshKernel<KyBW8, KyBW8, Split> split;
  MapKernel<KyBW8, KyBW8, DoubleSplit> doubleSplit;
  MapKernel<KyBW8, KyC24, ColorBox> box;
  // Whole bytes of bits to and from n pixels, a multiple of 8. Into bits, high is 255 and low is 0.
  RowKernel<KyBW8, KyBW8, Split> pack, unpack;
};

const ThresholdKernels& ChooseThresholdKernels() noexcept;

}  // namespace ky
