// Runs of object pixels in a row.
#pragma once

#include <bit>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

// The pixels begin to end - 1 of a row.
struct Run {
  std::int32_t begin, end;
  KyBW32 label;
};

// The levels of a run.
struct RunLevels {
  std::uint64_t sum;
  KyBW8 lowest, highest;
};

// Lists the places where bits of a row change, the row beginning with clear ones: where its runs
// begin and end, by turns.
class RunEnds {
 public:
  explicit RunEnds(std::int32_t* ends) noexcept : next_(ends) {}

  // 64 pixels from x on, the least significant bit first.
  void Add(std::uint64_t bits, std::int32_t x) noexcept {
    std::uint64_t changes = bits ^ (bits << 1 | last_);
    last_ = bits >> 63;
    for (; changes != 0; changes &= changes - 1) *next_++ = x + std::countr_zero(changes);
  }
  // The row ends at `width`, with clear bits up to the end of its last 64 pixels. Returns where the
  // list ends.
  std::int32_t* Finish(std::int32_t width) noexcept {
    if (last_ != 0) *next_++ = width;
    return next_;
  }

 private:
  std::int32_t* next_;
  std::uint64_t last_ = 0;
};

}  // namespace ky
