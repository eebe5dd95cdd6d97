// Neighbourhood operations: one result from the window of source pixels around its place. The
// border is data, not code: row kernels read freely on all sides of a row.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "foundation/rows.h"

namespace ky {

// What stands outside the source: its nearest pixel, or a constant.
struct Border {
  bool repeats;
  KyBW8 value;

  static constexpr Border Repeat() { return {true, 0}; }
  static constexpr Border Constant(KyBW8 value) { return {false, value}; }
};

// Walks the windows of 2 * radius + 1 rows and columns.
//
// A row kernel, `inside(out, n, rows)`, makes n results from rows[0] to rows[2 * radius], the one
// above to the one below, each pointing at the column of out[0] and readable from -radius to n - 1
// + radius. n is always a multiple of `lanes`, the vector length of the kernel, so kernels need no
// tails; `out` has room. Kernels may not look at what they have written. `frame` is the kernel of
// those results whose window reaches over the border.
//
// Source rows are read where they are, but for the two ends of a row, which go through small padded
// strips. In place, and for narrow images, a ring of padded copies of the rows still needed takes
// their place: some rows of scratch, never an image. A source that overlaps the destination
// otherwise is copied first.
template <class T, class Out>
class WindowWalk {
 public:
  WindowWalk(int radius, Border border, std::size_t lanes) noexcept
      : radius_(radius), lanes_(static_cast<std::ptrdiff_t>(lanes)), border_(border) {}

  template <class Inside>
  KY_ERRORS Run(Rows<Out> destination, Rows<const T> source, const Inside& inside) noexcept {
    return Run<Inside, Inside, false>(destination, source, inside, inside);
  }
  template <class Inside, class Frame, bool kFrame = true>
  KY_ERRORS Run(Rows<Out> destination, Rows<const T> source, const Inside& inside,
                const Frame& frame) noexcept {
    if (destination.Empty()) return KY_OK;
    out_ = destination;
    if (!input_.Open(source, destination)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    in_ = input_.rows();
    const bool inPlace = SharingOf(in_, destination) == Sharing::kTheSame;
    const bool narrow = in_.width < 4 * lanes_ + 4 * radius_;
    if (!Allocate(inPlace || narrow)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (inPlace || narrow)
      ThroughRing<kFrame>(inside, frame);
    else
      FromSource<kFrame>(inside, frame);
    return KY_OK;
  }

 private:
  static constexpr int kLongestRadius = 3;
  static constexpr int kMostRows = 2 * kLongestRadius + 1;

  std::ptrdiff_t RoundUp(std::ptrdiff_t n) const { return (n + lanes_ - 1) / lanes_ * lanes_; }
  bool InFrame(std::ptrdiff_t y) const { return y < radius_ || y >= out_.height - radius_; }

  // One slot for each row of the window and one for the constant row outside; and one row of
  // results.
  bool Allocate(bool wholeRows) noexcept {
    const std::ptrdiff_t pixels = wholeRows ? in_.width : 4 * radius_ + lanes_;
    slotPixels_ = RoundUp(pixels + 2 * radius_) + 2 * lanes_ + 64;
    const int slots = 2 * radius_ + 2;
    constantRow_ = !wholeRows && !border_.repeats ? in_.width + 2 * radius_ : 0;
    if (!slots_.Allocate(slots * slotPixels_ + constantRow_) ||
        !results_.Allocate(RoundUp(6 * radius_ + lanes_) + lanes_))
      return false;
    std::fill_n(slots_.get(), slots * slotPixels_ + constantRow_, static_cast<T>(border_.value));
    return true;
  }

  // The row that stands for row y of the window, and its slot; the constant row has a slot of its
  // own.
  std::ptrdiff_t Stands(std::ptrdiff_t y) const {
    if (border_.repeats) return std::clamp<std::ptrdiff_t>(y, 0, in_.height - 1);
    return y < 0 || y >= in_.height ? -1 : y;
  }
  T* Slot(std::ptrdiff_t y) const {
    const int rows = 2 * radius_ + 1;
    return slots_.get() + (y < 0 ? rows : y % rows) * slotPixels_ + radius_;
  }

  // Fills `count` border pixels from `to` on.
  void FillBorder(T* to, T nearest) const {
    for (int i = 0; i < radius_; ++i)
      to[i] = border_.repeats ? nearest : static_cast<T>(border_.value);
  }

  template <bool kFrame, class Inside, class Frame>
  void ThroughRing(const Inside& inside, const Frame& frame) {
    const std::ptrdiff_t width = in_.width;
    const auto fetch = [&](std::ptrdiff_t y) {
      if (y >= in_.height) return;
      T* const slot = Slot(y);
      std::memcpy(slot, in_.Row(y), static_cast<std::size_t>(width) * sizeof(T));
      FillBorder(slot - radius_, slot[0]);
      FillBorder(slot + width, slot[width - 1]);
    };
    for (std::ptrdiff_t y = 0; y < radius_; ++y) fetch(y);
    for (std::ptrdiff_t y = 0; y < in_.height; ++y) {
      fetch(y + radius_);
      const T* rows[kMostRows];
      for (int k = 0; k <= 2 * radius_; ++k) rows[k] = Slot(Stands(y + k - radius_));
      Out* const out = out_.Row(y);
      const std::ptrdiff_t whole = width / lanes_ * lanes_;
      const auto makeRow = [&](const auto& kernel) {
        kernel(out, static_cast<std::size_t>(whole), rows);
        MakePart(kernel, out + whole, width - whole, rows, whole);
      };
      if (kFrame && InFrame(y)) {
        makeRow(frame);
        continue;
      }
      makeRow(inside);
      if (kFrame) {
        const std::ptrdiff_t ends = std::min<std::ptrdiff_t>(radius_, width);
        MakePart(frame, out, ends, rows, 0);
        MakePart(frame, out + width - ends, ends, rows, width - ends);
      }
    }
  }

  // The first `n` results at `column`, through the scratch for results.
  template <class Kernel>
  void MakePart(const Kernel& kernel, Out* out, std::ptrdiff_t n, const T* const* rows,
                std::ptrdiff_t column) const {
    if (n == 0) return;
    const T* at[kMostRows];
    for (int k = 0; k <= 2 * radius_; ++k) at[k] = rows[k] + column;
    kernel(results_.get(), static_cast<std::size_t>(RoundUp(n)), at);
    std::memcpy(out, results_.get(), static_cast<std::size_t>(n) * sizeof(Out));
  }

  // A strip holds what the results at both ends of a row need: the border and the first 2 * radius
  // pixels, then the last pixels, from `tail - radius` on, and the border again.
  template <bool kFrame, class Inside, class Frame>
  void FromSource(const Inside& inside, const Frame& frame) {
    const std::ptrdiff_t r = radius_, width = in_.width;
    const std::ptrdiff_t whole = (width - 2 * r) / lanes_ * lanes_;
    const std::ptrdiff_t tail = r + whole, rest = width - tail;
    const auto cut = [&](std::ptrdiff_t y) {
      if (y >= in_.height) return;
      const T* const row = in_.Row(y);
      T* const strip = Slot(y);
      FillBorder(strip - r, row[0]);
      std::memcpy(strip, row, static_cast<std::size_t>(2 * r) * sizeof(T));
      std::memcpy(strip + 2 * r, row + tail - r, static_cast<std::size_t>(rest + r) * sizeof(T));
      FillBorder(strip + 3 * r + rest, row[width - 1]);
    };
    for (std::ptrdiff_t y = 0; y < r; ++y) cut(y);
    for (std::ptrdiff_t y = 0; y < in_.height; ++y) {
      cut(y + r);
      const T *rows[kMostRows], *strips[kMostRows];
      for (int k = 0; k <= 2 * radius_; ++k) {
        const std::ptrdiff_t stands = Stands(y + k - r);
        strips[k] = Slot(stands);
        rows[k] = stands < 0 ? slots_.get() + (2 * r + 2) * slotPixels_ + r : in_.Row(stands) + r;
      }
      Out* const out = out_.Row(y);
      const auto makeEnds = [&](const auto& kernel, std::ptrdiff_t rightmost) {
        kernel(results_.get(), static_cast<std::size_t>(RoundUp(3 * r + rest)), strips);
        const Out* const right = results_.get() + 3 * r + rest - rightmost;
        std::memcpy(out, results_.get(), static_cast<std::size_t>(r) * sizeof(Out));
        std::memcpy(out + width - rightmost, right,
                    static_cast<std::size_t>(rightmost) * sizeof(Out));
      };
      if (kFrame && InFrame(y)) {
        frame(out + r, static_cast<std::size_t>(whole), rows);
        makeEnds(frame, rest);
        continue;
      }
      inside(out + r, static_cast<std::size_t>(whole), rows);
      makeEnds(inside, rest);
      if (kFrame) makeEnds(frame, r);
    }
  }

  int radius_;
  std::ptrdiff_t lanes_;
  Border border_;
  Rows<Out> out_;
  Rows<const T> in_;
  Input<T> input_;
  Scratch<T> slots_;
  Scratch<Out> results_;
  std::ptrdiff_t slotPixels_ = 0, constantRow_ = 0;
};

// destination(x, y) = kernel of the window around source(x, y). 1303 when there is no scratch
// memory.
template <class Kernel>
KY_ERRORS FilterWindows(Rows<KyBW8> destination, Rows<const KyBW8> source, int radius,
                        Border border, std::size_t lanes, const Kernel& kernel) noexcept {
  return WindowWalk<KyBW8, KyBW8>(radius, border, lanes).Run(destination, source, kernel);
}
// The same with another kernel for the windows that reach over the border.
template <class Inside, class Frame>
KY_ERRORS FilterWindows(Rows<KyBW8> destination, Rows<const KyBW8> source, int radius,
                        Border border, std::size_t lanes, const Inside& inside,
                        const Frame& frame) noexcept {
  return WindowWalk<KyBW8, KyBW8>(radius, border, lanes).Run(destination, source, inside, frame);
}

}  // namespace ky
