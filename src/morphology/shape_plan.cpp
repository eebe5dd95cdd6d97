#include "morphology/shape_plan.h"

#include <algorithm>
#include <tuple>

namespace ky {

namespace {

// Lengths grow by this factor from level to level, which is the number of places that such a level
// joins; it also costs a store.
constexpr std::ptrdiff_t kGrowth = 4, kLevelCost = kGrowth + 1;

// How many spans of `part` cover one of `whole`, and where the i-th stands.
std::ptrdiff_t Covers(std::ptrdiff_t whole, std::ptrdiff_t part) noexcept {
  return (whole + part - 1) / part;
}
std::ptrdiff_t PlaceOf(std::ptrdiff_t i, std::ptrdiff_t whole, std::ptrdiff_t part) noexcept {
  return std::min(i * part, whole - part);
}

}  // namespace

bool ShapePlan::Make(const Shape& shape, bool reflected, std::ptrdiff_t width,
                     std::ptrdiff_t height) noexcept {
  Scratch<ShapeRun> runs;
  const std::ptrdiff_t count = shape.FindRuns(width, height, reflected, nullptr);
  if (!runs.Allocate(count) || !blocks_.Allocate(count)) return false;
  shape.FindRuns(width, height, reflected, runs.get());
  const std::ptrdiff_t blocks = FindBlocks(runs.get(), count);
  Emit(blocks);
  if (!levels_.Allocate(levelCount_) || !parts_.Allocate(partCount_) ||
      !results_.Allocate(resultCount_))
    return false;
  Emit(blocks);
  return true;
}

std::ptrdiff_t ShapePlan::FindBlocks(ShapeRun* runs, std::ptrdiff_t count) noexcept {
  std::sort(runs, runs + count, [](const ShapeRun& a, const ShapeRun& b) {
    return std::tie(a.length, a.left, a.row) < std::tie(b.length, b.left, b.row);
  });
  std::ptrdiff_t blocks = 0;
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const ShapeRun& run = runs[i];
    left_ = std::min(left_, run.left);
    right_ = std::max(right_, run.left + run.length - 1);
    down_ = std::max(down_, run.row);
    Block* const above = blocks > 0 ? &blocks_[blocks - 1] : nullptr;
    if (above != nullptr && above->run.length == run.length && above->run.left == run.left &&
        above->run.row + above->rows == run.row)
      ++above->rows;
    else
      blocks_[blocks++] = {run, 1};
  }
  return blocks;
}

void ShapePlan::Emit(std::ptrdiff_t blocks) noexcept {
  levelCount_ = partCount_ = resultCount_ = 0;
  std::ptrdiff_t wide = 0, length = 1;
  Add(levels_, levelCount_, Level{1, 1, 0, 0});
  for (std::ptrdiff_t i = 0, end = 0; i < blocks; i = end) {
    const std::ptrdiff_t wanted = blocks_[i].run.length;
    std::ptrdiff_t uses = 0;
    for (; end < blocks && blocks_[end].run.length == wanted; ++end)
      uses += std::min(blocks_[end].rows, kLevelCost);
    if (end - i == 1 && PaysTallFirst(blocks_[i], length)) {
      const std::ptrdiff_t tall = AddLevel(wide, length, 1, length, blocks_[i].rows);
      EmitPlaces(tall, length, blocks_[i].rows, blocks_[i]);
      continue;
    }
    EmitWide(wide, length, wanted, uses);
    EmitBlocks(wide, length, &blocks_[i], &blocks_[0] + end);
  }
}

// Whether a level of all its few rows, of the `length` elements that there are so far, takes fewer
// loads for a block than the places of its rows, or a longer level.
bool ShapePlan::PaysTallFirst(const Block& block, std::ptrdiff_t length) noexcept {
  const std::ptrdiff_t covers = Covers(block.run.length, length), rows = block.rows;
  const std::ptrdiff_t wide = kLevelCost + rows * Covers(block.run.length, kGrowth * length);
  return rows < kGrowth && rows + 1 + covers < std::min(rows * covers, wide);
}

// The levels of one row that pay for runs of `wanted` elements, which `uses` places of the result
// take. `wide` is the longest level so far, and becomes the one to take.
void ShapePlan::EmitWide(std::ptrdiff_t& wide, std::ptrdiff_t& length, std::ptrdiff_t wanted,
                         std::ptrdiff_t uses) noexcept {
  const auto add = [&](std::ptrdiff_t next) {
    wide = AddLevel(wide, length, 1, next, 1);
    length = next;
  };
  while (kGrowth * length <= wanted &&
         kLevelCost + uses * Covers(wanted, kGrowth * length) < uses * Covers(wanted, length))
    add(kGrowth * length);
  const std::ptrdiff_t covers = Covers(wanted, length);
  if (covers + 1 + uses < uses * covers) add(wanted);
}

// The places of blocks of one length, and the levels of several rows that pay for them.
void ShapePlan::EmitBlocks(std::ptrdiff_t wide, std::ptrdiff_t length, const Block* first,
                           const Block* end) noexcept {
  constexpr int kMostLevels = 16;  // more than rows can grow to
  std::ptrdiff_t levels[kMostLevels] = {wide}, talls[kMostLevels] = {1};
  int count = 1;
  const auto saved = [&](std::ptrdiff_t tall) {
    std::ptrdiff_t sum = 0;
    for (const Block* block = first; block != end; ++block)
      if (block->rows >= kGrowth * tall)
        sum += Covers(block->rows, tall) - Covers(block->rows, kGrowth * tall);
    return sum;
  };
  const std::ptrdiff_t covers = Covers(first->run.length, length);
  for (std::ptrdiff_t tall = 1; saved(tall) * covers > kLevelCost; tall *= kGrowth, ++count) {
    levels[count] = AddLevel(levels[count - 1], length, tall, length, kGrowth * tall);
    talls[count] = kGrowth * tall;
  }
  for (const Block* block = first; block != end; ++block) {
    int k = count - 1;
    while (talls[k] > block->rows) --k;
    EmitPlaces(levels[k], length, talls[k], *block);
  }
}

// The places of a block in a level.
void ShapePlan::EmitPlaces(std::ptrdiff_t level, std::ptrdiff_t length, std::ptrdiff_t tall,
                           const Block& block) noexcept {
  const ShapeRun& run = block.run;
  for (std::ptrdiff_t j = 0; j < Covers(block.rows, tall); ++j)
    for (std::ptrdiff_t i = 0; i < Covers(run.length, length); ++i)
      Add(results_, resultCount_,
          Part{level, run.left + PlaceOf(i, run.length, length),
               run.row + PlaceOf(j, block.rows, tall)});
}

// A level that joins another one in one direction.
std::ptrdiff_t ShapePlan::AddLevel(std::ptrdiff_t from, std::ptrdiff_t length, std::ptrdiff_t tall,
                                   std::ptrdiff_t newLength, std::ptrdiff_t newTall) noexcept {
  const std::ptrdiff_t across = Covers(newLength, length), down = Covers(newTall, tall);
  Add(levels_, levelCount_, Level{newLength, newTall, partCount_, across * down});
  for (std::ptrdiff_t j = 0; j < down; ++j)
    for (std::ptrdiff_t i = 0; i < across; ++i)
      Add(parts_, partCount_, Part{from, PlaceOf(i, newLength, length), PlaceOf(j, newTall, tall)});
  return levelCount_ - 1;
}

}  // namespace ky
