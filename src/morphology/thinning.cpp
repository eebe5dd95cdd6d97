#include "ky/thinning.h"

#include "foundation/frame.h"
#include "foundation/kernels/kernel_view.h"
#include "foundation/rows.h"
#include "morphology/bit_tiles.h"

namespace {

using ky::BitPattern;
using ky::KernelView;
using Source = const KyROI<KyBW8>*;
using Destination = KyROI<KyBW8>*;

enum class Change { kThin, kThick };

// What a pattern asks for, in the order in which the ring turns clockwise, and at the centre last.
enum class Wish : std::int8_t { kNothing, kObject, kGround };
constexpr int kRing = 8, kPlaces[kRing + 1] = {0, 1, 2, 5, 8, 7, 6, 3, 4};

// A pattern at its first turn.
struct Pattern {
  explicit Pattern(const float* coefficients) noexcept {
    for (int i = 0; i <= kRing; ++i) {
      const float c = coefficients[kPlaces[i]];
      wishes[i] = c > 0 ? Wish::kObject : c < 0 ? Wish::kGround : Wish::kNothing;
    }
  }
  // After so many turns by 45 degrees, with the central pixel that a change is about.
  BitPattern Turned(int turns, Change change) const noexcept {
    BitPattern bits = {};
    const auto put = [&](int place, Wish wish) {
      bits.flipped[place] = wish == Wish::kGround ? ~std::uint64_t{0} : 0;
      bits.any[place] = wish == Wish::kNothing ? ~std::uint64_t{0} : 0;
    };
    for (int i = 0; i < kRing; ++i)
      put(kPlaces[static_cast<unsigned>(i + turns) % kRing], wishes[i]);
    put(kPlaces[kRing], change == Change::kThin ? Wish::kObject : Wish::kGround);
    return bits;
  }
  bool CanMatch(Change change) const noexcept {
    return wishes[kRing] != (change == Change::kThin ? Wish::kGround : Wish::kObject);
  }

  Wish wishes[kRing + 1];
};

// The patterns of the steps of an iteration.
struct Cycle {
  int steps = 0;
  BitPattern patterns[kRing] = {};

  void Add(const BitPattern& pattern) noexcept { patterns[steps++] = pattern; }
};

Cycle CycleOf(const Pattern& pattern, KERNEL_ROTATION rotation, Change change) noexcept {
  Cycle cycle;
  const int steps = rotation == KERNEL_ROTATION_NONE ? 1 : kRing;
  const int turn = rotation == KERNEL_ROTATION_ANTICLOCKWISE ? -1 : 1;
  if (pattern.CanMatch(change))
    for (int i = 0; i < steps; ++i) cycle.Add(pattern.Turned(i * turn, change));
  return cycle;
}

Cycle SkeletonCycle() noexcept {
  constexpr float kEdge[] = {-1, -1, -1, 0, 1, 0, 1, 1, 1};
  constexpr float kCorner[] = {0, -1, -1, 1, 1, -1, 0, 1, 0};
  Cycle cycle;
  for (int turns = 0; turns < kRing; turns += 2)
    for (const float* const coefficients : {kEdge, kCorner})
      cycle.Add(Pattern(coefficients).Turned(turns, Change::kThin));
  return cycle;
}

// What a call works on, with a null destination resolved.
struct Operands {
  ky::Rows<const KyBW8> source;
  ky::Rows<KyBW8> destination;

  KY_ERRORS Open(Source from, Destination to) noexcept {
    return ky::OpenAll(from, source, ky::DestinationOf(from, to), destination);
  }
};

// 0 iterations are as many as it takes.
KY_ERRORS Run(const Operands& on, const Cycle& cycle, int iterations) noexcept {
  if (on.source.Empty()) return KY_OK;
  ky::Input<KyBW8> input;
  ky::BitTiles tiles;
  if (!input.Open(on.source, on.destination) ||
      !tiles.Allocate(on.source.width, on.source.height, cycle.steps))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  tiles.Pack(input.rows());
  for (int i = 0; cycle.steps > 0 && tiles.IsDue() && (iterations == 0 || i < iterations);
       i += iterations > 0)
    for (int step = 0; step < cycle.steps; ++step) tiles.Step(cycle.patterns[step]);
  tiles.Unpack(input.rows(), on.destination);
  return KY_OK;
}

KY_ERRORS ThinOrThick(const char* name, Change change, Source source, Destination destination,
                      const KyKernel* pattern, KERNEL_ROTATION rotation, int iterations) noexcept {
  return ky::Call(name, [&]() -> KY_ERRORS {
    Operands on;
    if (const KY_ERRORS error = on.Open(source, destination)) return error;
    if (pattern == nullptr) return KY_ERROR_KERNEL_SIZE;
    const KernelView view(*pattern);
    if (view.data == nullptr) return KY_ERROR_KERNEL_SIZE;
    if (view.sizeX != 3 || view.sizeY != 3) return KY_ERROR_KERNEL_1703;
    if (rotation < KERNEL_ROTATION_NONE || rotation > KERNEL_ROTATION_ANTICLOCKWISE)
      return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, "rotation");
    if (iterations < 0) return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "iterations");
    return Run(on, CycleOf(Pattern(view.data), rotation, change), iterations);
  });
}

}  // namespace

KY_ERRORS ImgThin(Source source, Destination destination, const KyKernel* pattern,
                  KERNEL_ROTATION rotation, int iterations) noexcept {
  return ThinOrThick("ImgThin", Change::kThin, source, destination, pattern, rotation, iterations);
}

KY_ERRORS ImgThick(Source source, Destination destination, const KyKernel* pattern,
                   KERNEL_ROTATION rotation, int iterations) noexcept {
  return ThinOrThick("ImgThick", Change::kThick, source, destination, pattern, rotation,
                     iterations);
}

KY_ERRORS ImgSkeleton(Source source, Destination destination) noexcept {
  return ky::Call("ImgSkeleton", [&]() -> KY_ERRORS {
    Operands on;
    if (const KY_ERRORS error = on.Open(source, destination)) return error;
    return Run(on, SkeletonCycle(), 0);
  });
}
