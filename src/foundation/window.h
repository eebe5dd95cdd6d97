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

// How results are made of windows of 2 * radius + 1 rows and columns.
//
// run(out, rows) makes the results `out` from source rows: out.height + 2 * radius of them, from
// the one `radius` rows above the first result down. Each points at the column of the first result
// and is readable from -radius to out.width - 1 + radius. out.width is a multiple of `lanes`, the
// vector length, so kernels need no tails. They may not look at what they have written.
//
// Behind those rows stand out.height more, which the next results will be made from: what lies at
// their places is worth asking for ahead (AskAhead in window-inl.h), no more.
template <class Run>
struct WindowKernel {
  int radius;
  std::size_t lanes;
  Run run;
};

// Runs of one byte for another, the kind that kernels without arguments have.
using WindowRun = void (*)(Rows<KyBW8> out, const KyBW8* const* rows);

// Walks the windows a band of rows at a time, so that kernels can carry what they know of one row
// to the next. `frame` makes those results whose window reaches over the border.
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
    const bool narrow = in_.width < lanes_ + 2 * radius_;
    ring_ = narrow || SharingOf(in_, destination) == Sharing::kTheSame;
    if (!Allocate()) return KY_ERROR_NOT_ENOUGH_MEMORY;
    const auto run = [&](std::ptrdiff_t y, std::ptrdiff_t end, bool inFrame) {
      while (y < end) {
        const std::ptrdiff_t count = std::min<std::ptrdiff_t>(end - y, kBand);
        OpenBand(y, count);
        if (inFrame)
          MakeBand(frame);
        else
          MakeBand(inside);
        if (kFrame && !inFrame) MakeEnds(frame, std::min<std::ptrdiff_t>(radius_, in_.width));
        y += count;
      }
    };
    const std::ptrdiff_t above = kFrame ? std::min<std::ptrdiff_t>(radius_, in_.height) : 0;
    const std::ptrdiff_t below = std::max(above, in_.height - (kFrame ? radius_ : 0));
    run(0, above, true);
    run(above, below, false);
    run(below, in_.height, true);
    return KY_OK;
  }

 private:
  static constexpr int kLongestRadius = 3;
  static constexpr int kBand = 6;
  static constexpr int kMostRows = 2 * kBand + 2 * kLongestRadius;

  static constexpr std::ptrdiff_t kSize = sizeof(Out);

  std::ptrdiff_t RoundUp(std::ptrdiff_t n) const { return (n + lanes_ - 1) / lanes_ * lanes_; }

  std::ptrdiff_t ResultsPixels() const { return RoundUp(4 * radius_) + lanes_; }

  // A slot for each row that a band reads: a padded copy in a ring, else a strip with its ends. One
  // row more stands for all outside. And a band of results for the ends of rows.
  bool Allocate() noexcept {
    const std::ptrdiff_t strip = 4 * radius_, padding = 2 * radius_ + lanes_;
    const std::ptrdiff_t slotPixels = RoundUp(ring_ ? in_.width : strip) + padding;
    const std::ptrdiff_t outsidePixels = std::max(in_.width, strip) + padding;
    const int slots = kBand + 2 * radius_;
    const std::ptrdiff_t all = slots * slotPixels + (border_.repeats ? 0 : outsidePixels);
    if (!slots_.Allocate(all) || !results_.Allocate(kBand * ResultsPixels())) return false;
    std::fill_n(slots_.get(), all, static_cast<T>(border_.value));
    for (int k = 0; k < slots; ++k) ordered_[k] = slots_.get() + k * slotPixels + radius_;
    if (!border_.repeats) outside_ = slots_.get() + slots * slotPixels + radius_;
    return true;
  }

  // Fills a slot: with the whole row, or with the 2 * radius pixels at either end.
  void Fetch(const T* row, T* slot) const {
    if (ring_) {
      std::memcpy(slot, row, static_cast<std::size_t>(in_.width) * sizeof(T));
      Pad(slot, in_.width);
      return;
    }
    for (std::ptrdiff_t i = 0; i < 2 * radius_; ++i) {
      slot[i] = row[i];
      slot[2 * radius_ + i] = row[in_.width - 2 * radius_ + i];
    }
    Pad(slot, 4 * radius_);
  }
  void Pad(T* slot, std::ptrdiff_t width) const {
    for (int i = 1; i <= radius_; ++i) {
      slot[-i] = border_.repeats ? slot[0] : static_cast<T>(border_.value);
      slot[width - 1 + i] = border_.repeats ? slot[width - 1] : static_cast<T>(border_.value);
    }
  }

  // Finds the rows of the windows of results y.. y + count - 1. The slots are in the order of the
  // rows from y - radius on; those that the band before has done with come last.
  void OpenBand(std::ptrdiff_t y, std::ptrdiff_t count) {
    const std::ptrdiff_t top = y - radius_;
    std::rotate(ordered_, ordered_ + band_.height, ordered_ + kBand + 2 * radius_);
    for (; fetched_ < std::min(y + count + radius_, in_.height); ++fetched_)
      Fetch(in_.Row(fetched_), ordered_[fetched_ - top]);
    for (std::ptrdiff_t k = 0; k < count + 2 * radius_; ++k) {
      const std::ptrdiff_t row = std::clamp<std::ptrdiff_t>(top + k, 0, in_.height - 1);
      const bool constant = row != top + k && !border_.repeats;
      strips_[k] = constant ? outside_ : ordered_[row - top];
      rows_[k] = ring_ || constant ? strips_[k] : in_.Row(row);
    }
    for (std::ptrdiff_t k = 0; k < count; ++k)
      rows_[count + 2 * radius_ + k] = strips_[count + 2 * radius_ + k] =
          in_.Row(std::min(fetched_ + k, in_.height - 1));
    band_ = {out_.Row(y), out_.pitch, out_.width, count};
  }

  // All results of the band. A destination apart from the source may be written twice, so its last
  // whole vector overlaps the one before.
  template <class Kernel>
  void MakeBand(const Kernel& kernel) {
    const std::ptrdiff_t first = ring_ ? 0 : radius_, end = in_.width - first;
    const std::ptrdiff_t whole = (end - first) / lanes_ * lanes_, rest = end - first - whole;
    if (whole > 0) Make(kernel, rows_, first, {band_.first + first, band_.pitch, whole});
    if (ring_ && rest > 0) {
      MakeApart(kernel, rows_, whole, rest);
      Put(0, rest, whole);
    } else if (rest > 0) {
      Make(kernel, rows_, end - lanes_, {band_.first + end - lanes_, band_.pitch, lanes_});
    }
    if (!ring_) MakeEnds(kernel, radius_);
  }

  // The first and the last `n` results of every row.
  template <class Kernel>
  void MakeEnds(const Kernel& kernel, std::ptrdiff_t n) {
    const std::ptrdiff_t width = in_.width, strip = 4 * radius_;
    if (ring_) {
      MakeApart(kernel, rows_, 0, n);
      Put(0, n, 0);
      MakeApart(kernel, rows_, width - n, n);
      Put(0, n, width - n);
    } else {
      MakeApart(kernel, strips_, 0, strip);
      Put(0, n, 0);
      Put(strip - n, n, width - n);
    }
  }

  // Results from `column` of the given rows on, made in the scratch, as kernels write whole
  // vectors; and `n` of them, from `column` on, put where they belong.
  template <class Kernel>
  void MakeApart(const Kernel& kernel, const T* const* rows, std::ptrdiff_t column,
                 std::ptrdiff_t n) {
    Make(kernel, rows, column, {results_.get(), ResultsPixels() * kSize, RoundUp(n)});
  }
  void Put(std::ptrdiff_t column, std::ptrdiff_t n, std::ptrdiff_t to) const {
    for (std::ptrdiff_t k = 0; k < band_.height; ++k)
      std::memcpy(band_.Row(k) + to, results_.get() + k * ResultsPixels() + column,
                  static_cast<std::size_t>(n * kSize));
  }

  template <class Kernel>
  void Make(const Kernel& kernel, const T* const* rows, std::ptrdiff_t column, Rows<Out> out) {
    const T* at[kMostRows];
    for (std::ptrdiff_t k = 0; k < 2 * (band_.height + radius_); ++k) at[k] = rows[k] + column;
    out.height = band_.height;
    kernel.run(out, at);
  }

  int radius_;
  std::ptrdiff_t lanes_;
  Border border_;
  bool ring_ = false;
  Rows<Out> out_, band_;
  Rows<const T> in_;
  Input<T> input_;
  Scratch<T> slots_;
  Scratch<Out> results_;
  T* ordered_[kBand + 2 * kLongestRadius];
  const T* outside_ = nullptr;
  std::ptrdiff_t fetched_ = 0;
  const T *rows_[kMostRows], *strips_[kMostRows];
};

// destination(x, y) = kernel of the window around source(x, y). 1303 when there is no scratch
// memory.
template <class T, class Out, class Run>
KY_ERRORS FilterWindows(Rows<Out> destination, Rows<const T> source, Border border,
                        const WindowKernel<Run>& kernel) noexcept {
  return WindowWalk<T, Out>(kernel.radius, border, kernel.lanes).Run(destination, source, kernel);
}
// The same with another kernel, of the same radius and vector length, for the windows that reach
// over the border.
template <class T, class Out, class Run>
KY_ERRORS FilterWindows(Rows<Out> destination, Rows<const T> source, Border border,
                        const WindowKernel<Run>& inside, const WindowKernel<Run>& frame) noexcept {
  return WindowWalk<T, Out>(inside.radius, border, inside.lanes)
      .Run(destination, source, inside, frame);
}

}  // namespace ky
