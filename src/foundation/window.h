// Neighbourhood operations: one result from the window of source pixels around its place. The
// border is data, not code: row kernels read freely on all sides of a row.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "foundation/prefetch.h"
#include "foundation/ring.h"
#include "foundation/rows.h"

namespace ky {

// Of rows that are not readable beyond their ends: what stands there, over and over. It is the
// pixel at `outside` or, where that is null, the one of the row that lies `inset` elements further
// inside than the outermost.
struct RowBorder {
  const KyBW8* outside;
  std::ptrdiff_t inset;
};

// How the source rows of a kernel lie: the bytes from one to the next, but where the border
// interferes, whether prefetches pay, and what is beyond the rows' ends, if these are not
// continued.
struct Layout {
  std::ptrdiff_t pitch;
  bool prefetches;
  const RowBorder* border = nullptr;
};

// What a kernel that makes no results at ends of rows has as the shortest row with ends.
inline constexpr std::ptrdiff_t kNoRowsWithEnds = PTRDIFF_MAX;

// How results are made of windows of 2 * radius + 1 rows and columns.
//
// run(out, rows) makes the results `out` from source rows: out.height + 2 * radius of them, from
// the one `radius` rows above the first result down. Each points at the column of the first result
// and is readable for `lanes`, the vector length, on either side of out.width, which is a multiple
// of that, so kernels need no tails. They may not look at what they have written.
//
// A run that takes a third argument is told the layout. Rows that have no fewer elements than
// `shortestWithEnds` may have ends; then out.width is the rows' own.
//
// Neighbours in a row are `step` elements apart: 1 in rows of grey pixels, 3 in rows of the
// components of colours. A run that `descends` goes through all rows of a column of places before
// it comes to the next, others through three or six at once.
template <class Run>
struct WindowKernel {
  int radius;
  std::size_t lanes;
  Run run;
  int step = 1;
  bool descends = false;
  std::ptrdiff_t shortestWithEnds = kNoRowsWithEnds;
};

// Runs of one byte for another, the kind that kernels without arguments have.
using WindowRun = void (*)(Rows<KyBW8> out, const KyBW8* const* rows, const Layout& layout);

// The kernels that one formula makes: of grey pixels, and of the components of colours.
struct WindowKernels {
  WindowKernel<WindowRun> grey, color;

  template <class Pixel>
  const WindowKernel<WindowRun>& Of() const noexcept {
    static_assert(sizeof(Pixel) == 1 || sizeof(Pixel) == 3);
    return sizeof(Pixel) == 1 ? grey : color;
  }
};

// Walks the windows a band of rows at a time, so that kernels can carry what they know of one row
// to the next. `atBorder` makes those results whose window reaches over the border.
//
// Source rows are read where they are. The two ends of a row go through small padded strips, unless
// the kernel makes the results there. In place, for narrow images, and where many rows would
// compete for the same places in a cache, a ring of padded copies of the rows still needed takes
// their place: some rows of scratch, never an image. A source that overlaps the destination
// otherwise is copied first.
template <class T, class Out>
class WindowWalk {
 public:
  template <class Run>
  WindowWalk(const WindowKernel<Run>& kernel, Border border) noexcept
      : radius_(kernel.radius),
        reach_(std::ptrdiff_t{kernel.radius} * kernel.step),
        lanes_(static_cast<std::ptrdiff_t>(kernel.lanes)),
        step_(kernel.step),
        descends_(kernel.descends),
        shortestWithEnds_(kernel.shortestWithEnds),
        border_(border) {}

  template <class Inside>
  KY_ERRORS Run(const Rows<Out>& destination, const Rows<const T>& source,
                const Inside& inside) noexcept {
    return Run<Inside, Inside, false>(destination, source, inside, inside);
  }
  template <class Inside, class AtBorder, bool kApart = true>
  KY_ERRORS Run(const Rows<Out>& destination, const Rows<const T>& source, const Inside& inside,
                const AtBorder& atBorder) noexcept {
    if (destination.Empty()) return KY_OK;
    if (kApart) shortestWithEnds_ = kNoRowsWithEnds;
    if (!Open(destination, source)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    const std::ptrdiff_t above = kApart ? std::min(radius_, in_.height) : 0;
    const std::ptrdiff_t below = std::max(above, in_.height - (kApart ? radius_ : 0));
    MakeTo(above, atBorder);
    MakeTo(below, inside, [&] {
      if (kApart) MakeEnds(atBorder, std::min(reach_, in_.width));
    });
    MakeTo(in_.height, atBorder);
    return KY_OK;
  }

  // In steps: Open, which is false when there is no memory, and then MakeTo for ends that grow up
  // to the height. Each MakeTo reads the source's rows that lie in the windows of results before
  // `end`, which must be complete by then.
  bool Open(const Rows<Out>& destination, const Rows<const T>& source) noexcept {
    out_ = destination;
    made_ = 0;
    if (!input_.Open(source, destination)) return false;
    in_ = input_.rows();
    ends_ = std::max(RoundUp(reach_), lanes_);
    halfStrip_ = (ends_ + reach_ + step_ - 1) / step_ * step_;
    reading_ = ChooseReading(SharingOf(in_, destination) == Sharing::kTheSame);
    prefetches_ = !Copies() && GainFromPrefetches(in_.height * (in_.RowBytes() + out_.RowBytes()));
    const std::ptrdiff_t most = descends_ ? kMostDescended : kMost;
    const std::ptrdiff_t copied = descends_ ? kCopiedDescended : kCopied;
    rowsAtOnce_ =
        Copies() ? std::clamp<std::ptrdiff_t>(copied / in_.RowBytes(), kLeast, most) : most;
    return Allocate();
  }
  template <class Kernel>
  void MakeTo(std::ptrdiff_t end, const Kernel& kernel) noexcept {
    MakeTo(end, kernel, [] {});
  }

 private:
  // How the source is read: its rows by themselves, or strips with the ends of rows besides, or
  // copies of rows.
  enum class Reading : std::uint8_t { kRows, kRowsAndStrips, kCopies };

  // Rows of a band: so many that what is done once a band costs little, and at least those that
  // kernels go through at once. In between, copies of rows are to stay in a first cache, or in a
  // second one where kernels descend, as these begin anew in each band.
  static constexpr std::ptrdiff_t kLeast = 6, kMost = 24, kMostDescended = 48;
  static constexpr std::ptrdiff_t kCopied = 12 << 10, kCopiedDescended = 128 << 10;
  // Copies of whole rows up to so many bytes take no longer than copies of their ends.
  static constexpr std::ptrdiff_t kBrief = 256;
  // How many lines that compete for the same places a first cache has room for, mostly.
  static constexpr std::ptrdiff_t kWays = 8;

  static constexpr std::ptrdiff_t kSize = sizeof(Out);

  std::ptrdiff_t RoundUp(std::ptrdiff_t n) const { return (n + lanes_ - 1) / lanes_ * lanes_; }

  // Rows of a band's windows.
  std::ptrdiff_t BandRows() const { return rowsAtOnce_ + 2 * radius_; }
  // Kernels go through three rows of results at once (see RollWindows), or through more.
  bool Crowds() const {
    return FightsCache(in_.pitch) && (descends_ ? kMost : 3) + 2 * radius_ > kWays;
  }
  // Whether a border stands for one pixel at each end of a row.
  bool RepeatsOne() const { return border_.kind != Border::kMirror || radius_ == 1; }
  Reading ChooseReading(bool inPlace) const {
    if (inPlace || Crowds()) return Reading::kCopies;
    if (in_.width >= shortestWithEnds_ && RepeatsOne()) return Reading::kRows;
    const bool isNarrow = in_.width < 2 * ends_ + lanes_ || in_.RowBytes() <= kBrief;
    return isNarrow ? Reading::kCopies : Reading::kRowsAndStrips;
  }
  bool Copies() const { return reading_ == Reading::kCopies; }
  // The first column of what is made from whole rows.
  std::ptrdiff_t First() const { return reading_ == Reading::kRowsAndStrips ? ends_ : 0; }

  // A slot for each row that a band reads: a padded copy, else a strip with its ends. And a band of
  // results for what cannot be written at once.
  bool Allocate() noexcept {
    if (reading_ == Reading::kRows) return AllocateForRows();
    const std::ptrdiff_t strip = 2 * halfStrip_, width = Copies() ? in_.width : strip;
    return ring_.Allocate({width / step_, in_.height, radius_, radius_, BandRows(), step_,
                           2 * lanes_, border_, std::max(in_.width, strip) / step_}) &&
           results_.Allocate(rowsAtOnce_ * ends_) && pointers_.Allocate(3 * BandRows());
  }

  // A row of the constant, if there is one.
  bool AllocateForRows() noexcept {
    const std::ptrdiff_t width = in_.width;
    const bool isConstant = border_.kind == Border::kConstant;
    if (!outside_.Allocate(isConstant ? width : 0) || !pointers_.Allocate(BandRows())) return false;
    if (isConstant) std::fill_n(outside_.get(), width, static_cast<T>(border_.value));
    rowBorder_ = {isConstant ? outside_.get() : nullptr,
                  border_.kind == Border::kMirror && width > step_ ? step_ : 0};
    return true;
  }

  // Copies in blocks, which may overlap, where the call of a function would take longer.
  static void Copy(T* to, const T* from, std::ptrdiff_t n) {
    const std::ptrdiff_t bytes = n * std::ptrdiff_t{sizeof(T)};
    if (!CopyBlocks<32>(to, from, bytes, 64) && !CopyBlocks<16>(to, from, bytes, 32) &&
        !CopyBlocks<64>(to, from, bytes, kBrief))
      std::memcpy(to, from, static_cast<std::size_t>(bytes));
  }
  template <std::ptrdiff_t kBlock>
  static bool CopyBlocks(T* to, const T* from, std::ptrdiff_t bytes, std::ptrdiff_t most) {
    if (bytes < kBlock || bytes > most) return false;
    const auto copy = [&](std::ptrdiff_t at) {
      std::memcpy(reinterpret_cast<KyBW8*>(to) + at, reinterpret_cast<const KyBW8*>(from) + at,
                  kBlock);
    };
    for (std::ptrdiff_t at = 0; at < bytes - kBlock; at += kBlock) copy(at);
    copy(bytes - kBlock);
    return true;
  }

  // Calls finish() after each band.
  template <class Kernel, class Finish>
  void MakeTo(std::ptrdiff_t end, const Kernel& kernel, const Finish& finish) noexcept {
    while (made_ < end) {
      const std::ptrdiff_t count = std::min(end - made_, rowsAtOnce_);
      OpenBand(made_, count);
      MakeBand(kernel);
      finish();
      made_ += count;
    }
  }

  // Finds the rows of the windows of results y.. y + count - 1: the whole ones from column First()
  // on.
  void OpenBand(std::ptrdiff_t y, std::ptrdiff_t count) {
    const std::ptrdiff_t top = y - radius_, rows = count + 2 * radius_, first = First();
    const Rows<const T> in = in_;
    const T** const whole = WholeRows();
    const bool isInside = top >= 0 && top + rows <= in.height;
    const auto forEachRow = [&](const auto& find) {
      for (std::ptrdiff_t k = 0; k < rows; ++k)
        find(k, isInside ? top + k : border_.PlaceOf(top + k, in.height));
    };
    band_ = {out_.Row(y), out_.pitch, out_.width, count};
    if (reading_ == Reading::kRows) {
      const T* const outside = outside_.get();
      return forEachRow([&](std::ptrdiff_t k, std::ptrdiff_t row) {
        whole[k] = row < 0 ? outside : in.Row(row);
      });
    }
    // Slots get the whole row, or either end.
    const bool copies = Copies();
    ring_.FetchTo(top + rows, [in, copies, n = halfStrip_](T* slot, std::ptrdiff_t row) {
      if (copies) {
        Copy(slot, in.Row(row), in.width);
      } else {
        Copy(slot, in.Row(row), n);
        Copy(slot + n, in.Row(row) + in.width - n, n);
      }
    });
    const T** const strips = Strips();
    forEachRow([&](std::ptrdiff_t k, std::ptrdiff_t row) {
      strips[k] = ring_.At(row);
      whole[k] = (copies || row < 0 ? strips[k] : in.Row(row)) + first;
    });
  }

  // All results of the band. Vectors may overlap: what is read is apart from what is written, if
  // need be as copies, so that results may be written twice.
  template <class Kernel>
  void MakeBand(const Kernel& kernel) {
    const std::ptrdiff_t width = in_.width, first = First(), end = width - first;
    if (reading_ == Reading::kRows) return MakeAt(kernel, WholeRows(), 0, 0, width);
    const std::ptrdiff_t whole = (end - first) / lanes_ * lanes_, rest = end - first - whole;
    if (whole > 0) MakeAt(kernel, WholeRows(), 0, first, whole);
    if (whole == 0) return MakeApart(kernel, WholeRows(), 0, 0, rest, 0);
    if (rest > 0) MakeAt(kernel, WholeRows(), end - lanes_ - first, end - lanes_, lanes_);
    if (Copies()) return;
    MakeAt(kernel, Strips(), 0, 0, ends_);
    MakeAt(kernel, Strips(), 2 * halfStrip_ - ends_, end, ends_);
  }

  // The first and the last `n` results of every row.
  template <class Kernel>
  void MakeEnds(const Kernel& kernel, std::ptrdiff_t n) {
    const std::ptrdiff_t last = in_.width - n;
    MakeApart(kernel, Strips(), 0, 0, n, 0);
    if (Copies()) return MakeApart(kernel, Strips(), last, 0, n, last);
    MakeApart(kernel, Strips(), 2 * halfStrip_ - ends_, ends_ - n, n, last);
  }

  // n results, whole vectors, from the given column of the rows on; they go to column `to`.
  template <class Kernel>
  void MakeAt(const Kernel& kernel, const T* const* rows, std::ptrdiff_t column, std::ptrdiff_t to,
              std::ptrdiff_t n) {
    Make(kernel, rows, column, {band_.first + to, band_.pitch, n, band_.height});
  }
  // n results, up to ends_, made in scratch, as kernels write whole vectors: those from the given
  // column of the rows on, without the first `skipped`.
  template <class Kernel>
  void MakeApart(const Kernel& kernel, const T* const* rows, std::ptrdiff_t column,
                 std::ptrdiff_t skipped, std::ptrdiff_t n, std::ptrdiff_t to) {
    if (n == 0) return;
    const Rows<Out> results = {results_.get(), ends_ * kSize, RoundUp(skipped + n), band_.height};
    Make(kernel, rows, column, results);
    for (std::ptrdiff_t k = 0; k < band_.height; ++k)
      std::memcpy(band_.Row(k) + to, results.Row(k) + skipped, static_cast<std::size_t>(n * kSize));
  }

  template <class Kernel>
  void Make(const Kernel& kernel, const T* const* rows, std::ptrdiff_t column,
            const Rows<Out>& out) {
    const bool areRows =
        reading_ == Reading::kRows || (reading_ == Reading::kRowsAndStrips && rows == WholeRows());
    if (column != 0) {
      const T** const at = pointers_.get() + 2 * BandRows();
      for (std::ptrdiff_t k = 0; k < band_.height + 2 * radius_; ++k) at[k] = rows[k] + column;
      rows = at;
    }
    if constexpr (std::is_invocable_v<decltype(kernel.run), Rows<Out>, const T* const*, Layout>)
      kernel.run(out, rows,
                 Layout{areRows ? in_.pitch : ring_.pitch(), prefetches_,
                        reading_ == Reading::kRows ? &rowBorder_ : nullptr});
    else
      kernel.run(out, rows);
  }

  const T** WholeRows() const { return pointers_.get(); }
  const T** Strips() const { return pointers_.get() + BandRows(); }

  std::ptrdiff_t radius_;         // rows
  std::ptrdiff_t reach_, lanes_;  // elements
  int step_;
  bool descends_;
  std::ptrdiff_t shortestWithEnds_;
  // Results at either end of a row that are made from strips: whole vectors; and elements of a
  // strip that one end's are made from: whole pixels.
  std::ptrdiff_t ends_ = 0, halfStrip_ = 0;
  std::ptrdiff_t rowsAtOnce_ = 0, made_ = 0;
  bool prefetches_ = false;
  Border border_;
  Reading reading_ = Reading::kCopies;
  Rows<Out> out_, band_;
  Rows<const T> in_;
  Input<T> input_;
  RowRing<T> ring_;
  RowBorder rowBorder_ = {};
  Scratch<T> outside_;
  Scratch<Out> results_;
  Scratch<const T*> pointers_;
};

// destination(x, y) = kernel of the window around source(x, y). 1303 when there is no scratch
// memory.
template <class T, class Out, class Run>
KY_ERRORS FilterWindows(const Rows<Out>& destination, const Rows<const T>& source, Border border,
                        const WindowKernel<Run>& kernel) noexcept {
  return WindowWalk<T, Out>(kernel, border).Run(destination, source, kernel);
}
// The same with another kernel, of the same radius and vector length, for the windows that reach
// over the border.
template <class T, class Out, class Run>
KY_ERRORS FilterWindows(const Rows<Out>& destination, const Rows<const T>& source, Border border,
                        const WindowKernel<Run>& inside,
                        const WindowKernel<Run>& atBorder) noexcept {
  return WindowWalk<T, Out>(inside, border).Run(destination, source, inside, atBorder);
}

}  // namespace ky
