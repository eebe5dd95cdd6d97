// How the extreme over a shape is made of those over its parts.
#pragma once

#include <cstddef>

#include "foundation/scratch.h"
#include "morphology/shape.h"

namespace ky {

// Of a shape's runs, those of one length that stand one below the other are a block. A level is an
// image of extremes over rectangles of one size: `level(x, y)` is the extreme of the pixels from
// (x, y) to (x + length - 1, y + tall - 1). Level 0 is the source itself, and each other level
// joins a few places of an earlier one. Every block is then some places of a level: as many as its
// rows, or fewer where a level of some rows pays. A level pays that takes fewer loads for all than
// it saves.
class ShapePlan {
 public:
  // The place (right, down) of a level.
  struct Part {
    std::ptrdiff_t level, right, down;
  };
  struct Level {
    std::ptrdiff_t length, tall;
    std::ptrdiff_t firstPart, parts;
  };

  // False when there is no memory. Members that meet no pixel of an image of this size are left
  // out; where none remains, there is no part.
  bool Make(const Shape& shape, bool reflected, std::ptrdiff_t width,
            std::ptrdiff_t height) noexcept;

  std::ptrdiff_t levels() const noexcept { return levelCount_; }
  const Level& level(std::ptrdiff_t i) const noexcept { return levels_[i]; }
  const Part* PartsOf(const Level& level) const noexcept { return parts_.get() + level.firstPart; }
  // What the result is joined of.
  std::ptrdiff_t results() const noexcept { return resultCount_; }
  const Part& result(std::ptrdiff_t i) const noexcept { return results_[i]; }
  // The least and the greatest column, and the greatest row of the members, and 0.
  std::ptrdiff_t left() const noexcept { return left_; }
  std::ptrdiff_t right() const noexcept { return right_; }
  std::ptrdiff_t down() const noexcept { return down_; }

 private:
  // A run that is repeated in `rows` rows.
  struct Block {
    ShapeRun run;
    std::ptrdiff_t rows;
  };

  std::ptrdiff_t FindBlocks(ShapeRun* runs, std::ptrdiff_t count) noexcept;
  void Emit(std::ptrdiff_t blocks) noexcept;
  static bool PaysTallFirst(const Block& block, std::ptrdiff_t length) noexcept;
  void EmitWide(std::ptrdiff_t& wide, std::ptrdiff_t& length, std::ptrdiff_t wanted,
                std::ptrdiff_t uses) noexcept;
  void EmitBlocks(std::ptrdiff_t wide, std::ptrdiff_t length, const Block* first,
                  const Block* end) noexcept;
  void EmitPlaces(std::ptrdiff_t level, std::ptrdiff_t length, std::ptrdiff_t tall,
                  const Block& block) noexcept;
  std::ptrdiff_t AddLevel(std::ptrdiff_t from, std::ptrdiff_t length, std::ptrdiff_t tall,
                          std::ptrdiff_t newLength, std::ptrdiff_t newTall) noexcept;
  // Only counts while there is no array.
  template <class T>
  static void Add(const Scratch<T>& to, std::ptrdiff_t& count, const T& element) noexcept {
    if (to.get() != nullptr) to[count] = element;
    ++count;
  }

  Scratch<Block> blocks_;
  Scratch<Level> levels_;
  Scratch<Part> parts_, results_;
  std::ptrdiff_t levelCount_ = 0, partCount_ = 0, resultCount_ = 0;
  std::ptrdiff_t left_ = 0, right_ = 0, down_ = 0;
};

}  // namespace ky
