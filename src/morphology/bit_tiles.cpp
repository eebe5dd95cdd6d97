#include "morphology/bit_tiles.h"

#include <algorithm>
#include <limits>

namespace ky {

bool BitTiles::Allocate(std::ptrdiff_t width, std::ptrdiff_t height, std::int64_t period) noexcept {
  constexpr std::ptrdiff_t kBits = 64;
  const std::ptrdiff_t across = (width + kBits - 1) / kBits;
  const std::ptrdiff_t down = (height + kTileRows - 1) / kTileRows;
  // An odd number, so that the words of a row do not compete in a cache.
  rows_ = (down + 2) | 1;
  const std::ptrdiff_t count = (across + 2) * rows_;
  if (!words_.Allocate(count * kTileRows) || !matches_.Allocate(across * down * kTileRows) ||
      !tiles_.Allocate(count) || !due_.Allocate(across * down) || !changed_.Allocate(across * down))
    return false;
  kernels_ = &ChooseThinningKernels();
  period_ = period;
  std::fill_n(words_.get(), count * kTileRows, std::uint64_t{0});
  const std::uint64_t lastColumns = ~std::uint64_t{0} >> (across * kBits - width);
  for (int isRight = 0; isRight < 2; ++isRight)
    for (int isLow = 0; isLow < 2; ++isLow)
      std::fill_n(inside_[isRight][isLow], isLow != 0 ? height - (down - 1) * kTileRows : kTileRows,
                  isRight != 0 ? lastColumns : ~std::uint64_t{0});
  std::fill_n(tiles_.get(), count, Tile{std::numeric_limits<std::int64_t>::max(), nullptr});
  for (std::ptrdiff_t x = 0; x < across; ++x)
    for (std::ptrdiff_t y = 0; y < down; ++y) {
      const std::ptrdiff_t tile = (x + 1) * rows_ + y + 1;
      tiles_[tile] = {period, inside_[x + 1 == across][y + 1 == down]};
      due_[dueCount_++] = tile;
    }
  return true;
}

void BitTiles::Pack(const Rows<const KyBW8>& source) noexcept {
  for (std::ptrdiff_t y = 0; y < source.height; ++y)
    kernels_->pack(WordsOf(rows_ + 1) + y, rows_ * kTileRows, source.Row(y), source.width);
}

void BitTiles::Unpack(const Rows<const KyBW8>& source,
                      const Rows<KyBW8>& destination) const noexcept {
  for (std::ptrdiff_t y = 0; y < source.height; ++y)
    kernels_->unpack(destination.Row(y), source.Row(y), source.width, WordsOf(rows_ + 1) + y,
                     rows_ * kTileRows);
}

void BitTiles::Step(const BitPattern& pattern) noexcept {
  ++step_;
  std::ptrdiff_t still = 0;
  changedCount_ = 0;
  for (std::ptrdiff_t i = 0; i < dueCount_; ++i) {
    const std::ptrdiff_t tile = due_[i];
    if (tiles_[tile].due < step_) continue;
    due_[still++] = tile;
    if (kernels_->match(matches_.get() + changedCount_ * kTileRows, WordsOf(tile),
                        rows_ * kTileRows, pattern, tiles_[tile].inside))
      changed_[changedCount_++] = tile;
  }
  dueCount_ = still;
  for (std::ptrdiff_t i = 0; i < changedCount_; ++i)
    Apply(changed_[i], matches_.get() + i * kTileRows);
}

// A tile whose turn is over is in the list no longer.
void BitTiles::MakeDue(std::ptrdiff_t tile) noexcept {
  std::int64_t& due = tiles_[tile].due;
  if (due < step_) due_[dueCount_++] = tile;
  due = std::max(due, step_ + period_);
}

void BitTiles::Apply(std::ptrdiff_t tile, const std::uint64_t* matches) noexcept {
  std::uint64_t* const words = WordsOf(tile);
  std::uint64_t any = 0;
  for (std::ptrdiff_t y = 0; y < kTileRows; ++y) {
    words[y] ^= matches[y];
    any |= matches[y];
  }
  // Changes along an edge have neighbours in the next tile; at a corner, in three.
  const std::uint64_t sides[] = {any << 63, any, any >> 63};  // to the left, none, to the right
  const std::uint64_t top = matches[0], low = matches[kTileRows - 1];
  const std::uint64_t above[] = {top << 63, top, top >> 63}, below[] = {low << 63, low, low >> 63};
  for (int side = 0; side < 3; ++side) {
    const std::ptrdiff_t there = tile + (side - 1) * rows_;
    if (sides[side] != 0) MakeDue(there);
    if (above[side] != 0) MakeDue(there - 1);
    if (below[side] != 0) MakeDue(there + 1);
  }
}

}  // namespace ky
