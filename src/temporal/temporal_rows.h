// The row kernels of averages over time.
#pragma once

#include <cstddef>

#include "foundation/map.h"
#include "ky/pixels.h"

namespace ky {

// floor(total / period) for 16-bit totals, as
//
//     high = total * multiplier >> 16,    (high + (total - high >> before)) >> after.
//
// T. Granlund, P. Montgomery: Division by invariant integers using multiplication, 1994.
struct Reciprocal {
  KyBW16 multiplier;
  int before, after;
};

// A row of a moving average. The sum is that of the frames before the current one, and becomes that
// of the frames without the oldest. `slot`, where it is not null, receives a copy of the current
// frame. Rows may be the same, but may not overlap otherwise.
struct MovingRow {
  const KyBW8 *current, *oldest;
  KyBW16* sum;
  KyBW8 *destination, *slot;
  std::size_t width;
};

// A recursive average looks its changes up by the difference, from -kFarthest to kFarthest.
inline constexpr int kFarthest = 4095;
inline constexpr int kChanges = 2 * kFarthest + 1;

// Those changes, and the ones near the middle where they are odd: change(d) = -change(-d), and at
// least 0 for d >= 0.
inline constexpr int kNearChanges = 256;
struct Changes {
  const KyBW16* all;
  bool areOdd;
  KyBW8 near[kNearChanges];  // those of d = 0, 1, ...; each below 256
};

struct TemporalKernels {
  // The first frame of a sequence: it stands for `others` frames before it.
  void (*start)(const MovingRow& row, KyBW16 others);
  // The mean of 2^shift frames, and of any number.
  void (*stepByShift)(const MovingRow& row, int shift);
  void (*stepByReciprocal)(const MovingRow& row, const Reciprocal& reciprocal);
  // A step of a recursive average: the new state and its level, from a pixel, its state, and the
  // changes.
  SeveralKernel<Several<KyBW16, KyBW8>, KyBW8, KyBW16, Changes> recur;
};

// The kernels of the instruction set that this call may use.
const TemporalKernels& ChooseTemporalKernels() noexcept;

}  // namespace ky
