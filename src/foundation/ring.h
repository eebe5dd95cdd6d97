// Neighbouring rows in scratch memory: where a row of a ring lies, and what stands outside the
// source. Window operations, convolutions in floating point, profile filters and running extremes
// keep their rows in these.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "foundation/pitch.h"
#include "foundation/scratch.h"

namespace ky {

// What stands outside the source. Where only pixels inside count, a constant of 0 adds nothing to
// a sum, and CountInside gives what to divide it by.
struct Border {
  enum Kind : std::uint8_t { kConstant, kNearest, kMirror };
  Kind kind;
  std::int32_t value;

  static constexpr Border Constant(std::int32_t value) { return {kConstant, value}; }
  static constexpr Border Nearest() { return {kNearest, 0}; }
  // About the first and the last pixel, which are not repeated: -1 is 1.
  static constexpr Border Mirror() { return {kMirror, 0}; }

  // Which of n positions stands at i, one of them or not; -1 for the constant.
  constexpr std::ptrdiff_t PlaceOf(std::ptrdiff_t i, std::ptrdiff_t n) const noexcept {
    if (i >= 0 && i < n) return i;
    if (kind == kConstant) return -1;
    if (kind == kNearest || n == 1) return i < 0 ? 0 : n - 1;
    const std::ptrdiff_t period = 2 * (n - 1), place = (i % period + period) % period;
    return std::min(place, period - place);
  }

  // Continues a row of `pixels` by `left` and `right` more, of `step` elements each.
  template <class T>
  void Pad(T* row, std::ptrdiff_t pixels, std::ptrdiff_t left, std::ptrdiff_t right,
           int step) const noexcept {
    if (kind == kNearest) {
      // Each element is the one a pixel further inside.
      T* const end = row + pixels * step;
      for (std::ptrdiff_t i = 1; i <= left * step; ++i) row[-i] = row[step - i];
      for (std::ptrdiff_t i = 0; i < right * step; ++i) end[i] = end[i - step];
      return;
    }
    const auto put = [&](std::ptrdiff_t pixel) {
      const std::ptrdiff_t place = PlaceOf(pixel, pixels);
      for (int k = 0; k < step; ++k)
        row[pixel * step + k] = place < 0 ? static_cast<T>(value) : row[place * step + k];
    };
    for (std::ptrdiff_t i = 1; i <= left; ++i) put(-i);
    for (std::ptrdiff_t i = 0; i < right; ++i) put(pixels + i);
  }
};

// How many of the 2 * radius + 1 positions around i are among n.
constexpr std::ptrdiff_t CountInside(std::ptrdiff_t i, std::ptrdiff_t radius,
                                     std::ptrdiff_t n) noexcept {
  return std::min(i + radius, n - 1) - std::max<std::ptrdiff_t>(i - radius, 0) + 1;
}

// Row y is at first + (y mod count) * pitch: an image of `count` rows, or a ring of them.
template <class T>
struct Lines {
  T* first;
  std::ptrdiff_t pitch, count;  // pitch in elements

  T* operator()(std::ptrdiff_t y) const noexcept {
    return first + (y < count ? y : y % count) * pitch;  // divisions are slow
  }
};

// Copies of the rows that windows still need, of elements of T, each continued on both sides.
template <class T>
class RowRing {
 public:
  struct Shape {
    std::ptrdiff_t width, height;  // of the source, in pixels
    std::ptrdiff_t left, right;    // pixels on either side
    std::ptrdiff_t rows;           // rows that are needed at once
    int step;                      // elements of a pixel
    std::ptrdiff_t slack;          // elements beyond all those, for whole vectors
    Border border;
    // The width of the row that stands for all outside; it may be more than that of the others.
    std::ptrdiff_t outsideWidth;
  };

  // False when there is no memory.
  bool Allocate(const Shape& shape) noexcept {
    shape_ = shape;
    constexpr std::ptrdiff_t kSize = sizeof(T);
    // Pixels begin at lines of the cache. Of vectors of 32 bytes in rows that begin anywhere, every
    // other one crosses two.
    const std::ptrdiff_t before =
        (shape.left * shape.step * kSize + kCacheLine - 1) / kCacheLine * kCacheLine / kSize;
    const auto elements = [&](std::ptrdiff_t width) {
      return before + (width + shape.right) * shape.step + shape.slack;
    };
    const std::ptrdiff_t count = std::clamp<std::ptrdiff_t>(shape.rows, 1, shape.height);
    const std::ptrdiff_t pitch = ScratchPitch(elements(shape.width) * kSize) / kSize;
    const bool constant = shape.border.kind == Border::kConstant;
    const std::ptrdiff_t outside = constant ? elements(shape.outsideWidth) : 0;
    if (pitch > (PTRDIFF_MAX - outside) / count || !memory_.Allocate(count * pitch + outside))
      return false;
    std::fill_n(memory_.get(), count * pitch + outside, static_cast<T>(shape.border.value));
    first_ = memory_.get() + before;
    pitch_ = pitch;
    count_ = count;
    outside_ = first_ + count * pitch;
    fetched_ = next_ = 0;
    return true;
  }

  // Has `fetch(slot, y)` fill the slots of all rows before `end` that it has not filled yet; they
  // take the places of the oldest.
  template <class Fetch>
  void FetchTo(std::ptrdiff_t end, const Fetch& fetch) noexcept {
    // Copies, which no store of an element can change, stay in registers.
    const Shape shape = shape_;
    const Border border = shape.border;
    const bool repeatsOne = border.kind == Border::kNearest && shape.left * shape.step == 1 &&
                            shape.right * shape.step == 1;
    const std::ptrdiff_t width = shape.width, pitch = pitch_, count = count_;
    std::ptrdiff_t row = fetched_, next = next_;
    T* slot = first_ + next * pitch;
    for (end = std::min(end, shape.height); row < end; ++row) {
      fetch(slot, row);
      if (repeatsOne) {  // most often
        slot[-1] = slot[0];
        slot[width] = slot[width - 1];
      } else if (border.kind != Border::kConstant) {  // which slots were allocated with
        border.Pad(slot, width, shape.left, shape.right, shape.step);
      }
      slot += pitch;
      if (++next < count) continue;
      next = 0;
      slot = first_;
    }
    fetched_ = row;
    next_ = next;
  }

  // Bytes from row to row.
  std::ptrdiff_t pitch() const noexcept { return pitch_ * std::ptrdiff_t{sizeof(T)}; }

  // What stands at row y, inside or outside. It must be among the rows that are needed at once.
  const T* operator()(std::ptrdiff_t y) const noexcept {
    return At(shape_.border.PlaceOf(y, shape_.height));
  }
  // The same by its PlaceOf.
  const T* At(std::ptrdiff_t place) const noexcept {
    if (place < 0) return outside_;
    // Counted back from the newest: divisions are slow.
    const std::ptrdiff_t slot = next_ - (fetched_ - place);
    return first_ + (slot < 0 ? slot + count_ : slot) * pitch_;
  }

 private:
  Shape shape_ = {};
  Scratch<T> memory_;
  T* first_ = nullptr;
  std::ptrdiff_t pitch_ = 0, count_ = 0;  // of the slots; pitch in elements
  const T* outside_ = nullptr;
  std::ptrdiff_t fetched_ = 0, next_ = 0;  // rows, and the slot of the next
};

}  // namespace ky
