// Thinning and thickening of a plane of bits, step by step, at a cost of what the steps change.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/rows.h"
#include "foundation/scratch.h"
#include "morphology/thinning_rows.h"

namespace ky {

// An image as bits, 1 for object. A step exchanges the bits of all places that a pattern matches at
// once. After a change only its surroundings are looked at again, by as many steps as there are
// patterns: the tiles that are due.
class BitTiles {
 public:
  // False when there is no memory. All tiles are due `period` steps, which each change makes its
  // surroundings again.
  bool Allocate(std::ptrdiff_t width, std::ptrdiff_t height, std::int64_t period) noexcept;
  void Pack(const Rows<const KyBW8>& source) noexcept;
  void Unpack(const Rows<const KyBW8>& source, const Rows<KyBW8>& destination) const noexcept;
  // True while there are tiles that are due: without any, no step changes anything any more.
  bool IsDue() const noexcept { return dueCount_ > 0; }
  void Step(const BitPattern& pattern) noexcept;

 private:
  struct Tile {
    std::int64_t due;             // the last step that it takes part in
    const std::uint64_t* inside;  // 1 where it has pixels
  };

  std::uint64_t* WordsOf(std::ptrdiff_t tile) const noexcept {
    return words_.get() + tile * kTileRows;
  }
  void MakeDue(std::ptrdiff_t tile) noexcept;
  void Apply(std::ptrdiff_t tile, const std::uint64_t* matches) noexcept;

  const ThinningKernels* kernels_ = nullptr;
  std::ptrdiff_t rows_ = 0;  // tiles from one column of tiles to the next
  std::int64_t period_ = 0, step_ = 0;
  std::uint64_t inside_[2][2][kTileRows] = {};  // of the last column or not, the last row or not
  Scratch<std::uint64_t> words_;
  Scratch<std::uint64_t> matches_;         // of a step, kTileRows words for each tile that changes
  Scratch<Tile> tiles_;                    // with one more all around, which is never due
  Scratch<std::ptrdiff_t> due_, changed_;  // which tiles; in a step, those that change
  std::ptrdiff_t dueCount_ = 0, changedCount_ = 0;
};

}  // namespace ky
