// Per-pixel operations: one result, or several, from the elements at the same place in each source.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "foundation/rows.h"
#include "foundation/several.h"

namespace ky {

// The row kernel of a per-pixel operation: n results from n elements of each source. `out` may be
// one of the sources, and holds the destination's old elements on entry.
template <class Out, class... In>
using RowKernel = void (*)(Out* out, std::size_t n, const In*... in);

// The same for all rows of the destination. Of the sources, whose rows are as long and as many, the
// first address and the pitch alone are looked at. They are passed by reference: compilers copy
// values by wide loads of what narrow stores have just written, and processors wait for such loads.
template <class Out, class... In>
using MapKernel = void (*)(const Rows<Out>& out, const Rows<const In>&... in);

// n elements of one row.
template <class Out, class... In>
void MapRow(MapKernel<Out, In...> kernel, Out* out, std::size_t n, const In*... in) {
  kernel({out, 0, static_cast<std::ptrdiff_t>(n), 1}, {in}...);
}

// The same with n results for each of several destinations: SeveralKernel<Several<Out...>, In...>.
// A destination that is not also a source is written only.
template <class Out, class... In>
struct SeveralKernelOf;
template <class... Out, class... In>
struct SeveralKernelOf<Several<Out...>, In...> {
  using Type = void (*)(Several<Out*...> out, std::size_t n, const In*... in);
};
template <class Out, class... In>
using SeveralKernel = typename SeveralKernelOf<Out, In...>::Type;

// What an operation reads. Each source is opened against all destinations before anything is
// written; false means no memory. `Span(y, x, n)` is where elements x.. x + n - 1 of row y stand. A
// source that has to make them does so in pieces of kPiece elements; spans start at multiples of
// it.
//
// `Bytes` counts those of its rows, and `IsApart` tells that none of them is the destination's.
// `Band(y, width, count)` is rows y.. y + count - 1, of no more than kLongest elements together
// where they have to be made.
struct WithoutRows {
  static constexpr std::int64_t Bytes() noexcept { return 0; }
  template <class Out>
  static constexpr bool IsApart(const Rows<Out>&) noexcept {
    return true;
  }
};
inline constexpr std::ptrdiff_t kWholeRow = PTRDIFF_MAX;
inline constexpr std::ptrdiff_t kPiece = 6144;  // whole colours; small beside a first cache

// The pixels of an ROI.
template <class T>
class FromRows {
 public:
  using Element = T;
  static constexpr std::ptrdiff_t kLongest = kWholeRow;

  FromRows(Rows<const T> rows) noexcept : source_(rows) {}
  FromRows(Rows<T> rows) noexcept : source_(rows) {}
  template <class... Out>
  bool Open(const Rows<Out>&... destination) noexcept {
    return input_.Open(source_, destination...);
  }
  std::int64_t Bytes() const noexcept { return source_.RowBytes() * source_.height; }
  template <class Out>
  bool IsApart(const Rows<Out>& destination) const noexcept {
    return SharingOf(source_, destination) == Sharing::kNothing;
  }
  bool Joined() const noexcept { return input_.rows().Joined(); }
  const T* Span(std::ptrdiff_t y, std::ptrdiff_t x, std::ptrdiff_t) const noexcept {
    return input_.rows().Row(y) + x;
  }
  Rows<const T> Band(std::ptrdiff_t y, std::ptrdiff_t width, std::ptrdiff_t count) const noexcept {
    return {input_.rows().Row(y), input_.rows().pitch, width, count};
  }

 private:
  Rows<const T> source_;
  Input<T> input_;
};
template <class T>
FromRows(Rows<T>) -> FromRows<std::remove_const_t<T>>;

// A constant: the same few elements over and over, such as the three components of a colour.
template <class T, int kPeriod = 1>
class FromConstant : public WithoutRows {
 public:
  using Element = T;
  static constexpr std::ptrdiff_t kLongest = kPiece / std::ptrdiff_t{sizeof(T)};
  static_assert(kLongest % kPeriod == 0);

  explicit FromConstant(const T (&period)[kPeriod]) noexcept {
    for (int i = 0; i < kPeriod; ++i) pattern_[i] = period[i];
  }
  template <class Out, class... More>
  bool Open(const Rows<Out>& destination, const Rows<More>&...) noexcept {
    const std::ptrdiff_t longest =
        destination.Joined() ? destination.width * destination.height : destination.width;
    const std::ptrdiff_t wanted = std::min(kLongest, longest);
    for (std::ptrdiff_t have = kPeriod; have < wanted; have *= 2)
      std::copy_n(pattern_, std::min(have, wanted - have), pattern_ + have);
    return true;
  }
  bool Joined() const noexcept { return true; }
  const T* Span(std::ptrdiff_t, std::ptrdiff_t, std::ptrdiff_t) const noexcept { return pattern_; }
  Rows<const T> Band(std::ptrdiff_t, std::ptrdiff_t width, std::ptrdiff_t count) const noexcept {
    return {pattern_, 0, width, count};
  }

 private:
  alignas(64) T pattern_[kLongest];
};

// Not pixels but what the kernel is told once for all of them: a lookup table, factors. It is a
// copy and so cannot change while the destination is written.
template <class T>
class FromParameters : public WithoutRows {
 public:
  using Element = T;
  static constexpr std::ptrdiff_t kLongest = kWholeRow;

  explicit FromParameters(const T& parameters) noexcept : parameters_(parameters) {}
  template <class... Out>
  bool Open(const Rows<Out>&...) noexcept {
    return true;
  }
  bool Joined() const noexcept { return true; }
  const T* Span(std::ptrdiff_t, std::ptrdiff_t, std::ptrdiff_t) const noexcept {
    return &parameters_;
  }
  Rows<const T> Band(std::ptrdiff_t, std::ptrdiff_t, std::ptrdiff_t) const noexcept {
    return {&parameters_, 0, 1, 1};
  }

 private:
  T parameters_;
};

// Grey pixels in the place of colours: each level three times. The destination is rows of
// components.
class FromGreyAsColor {
 public:
  using Element = KyBW8;
  static constexpr std::ptrdiff_t kLongest = kPiece;

  FromGreyAsColor(Rows<const KyBW8> rows, MapKernel<KyC24, KyBW8> triple) noexcept
      : source_(rows), triple_(triple) {}
  template <class... Out>
  bool Open(const Rows<Out>&... destination) noexcept {
    return source_.Open(destination...);
  }
  std::int64_t Bytes() const noexcept { return source_.Bytes(); }
  template <class Out>
  bool IsApart(const Rows<Out>& destination) const noexcept {
    return source_.IsApart(destination);
  }
  bool Joined() const noexcept { return source_.Joined(); }
  const KyBW8* Span(std::ptrdiff_t y, std::ptrdiff_t x, std::ptrdiff_t n) noexcept {
    MapRow(triple_, reinterpret_cast<KyC24*>(tripled_), static_cast<std::size_t>(n / 3),
           source_.Span(y, x / 3, n / 3));
    return tripled_;
  }
  Rows<const KyBW8> Band(std::ptrdiff_t y, std::ptrdiff_t width, std::ptrdiff_t count) noexcept {
    triple_({reinterpret_cast<KyC24*>(tripled_), width, width / 3, count},
            source_.Band(y, width / 3, count));
    return {tripled_, width, width, count};
  }

 private:
  FromRows<KyBW8> source_;
  MapKernel<KyC24, KyBW8> triple_;
  alignas(64) KyBW8 tripled_[kLongest];
};

// run(y, x, n, spans of the sources) for the n elements from x on of each row, in pieces that all
// sources can make.
template <class Run, class... Source>
void WalkSpans(std::ptrdiff_t width, std::ptrdiff_t height, const Run& run,
               Source&... source) noexcept {
  constexpr std::ptrdiff_t kLongest = std::min({kWholeRow, Source::kLongest...});
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    for (std::ptrdiff_t x = 0; x < width;) {
      const std::ptrdiff_t n = std::min(kLongest, width - x);
      run(y, x, static_cast<std::size_t>(n), source.Span(y, x, n)...);
      x += n;
    }
  }
}

// destination(x, y) = kernel(source(x, y)...). Destination and sources, all of one size in
// elements, which the caller has checked, become one long row where none has gaps. 1303 when a
// source that overlaps the destination cannot be copied.
template <class Out, class... Source>
KY_ERRORS MapRows(MapKernel<Out, typename std::remove_reference_t<Source>::Element...> kernel,
                  const Rows<Out>& destination, Source&&... source) noexcept {
  if (!(source.Open(destination) && ...)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  constexpr std::ptrdiff_t kLongest =
      std::min({kWholeRow, std::remove_reference_t<Source>::kLongest...});
  const bool isOneRow = destination.Joined() && (source.Joined() && ...);
  const std::ptrdiff_t width = destination.width * (isOneRow ? destination.height : 1);
  const std::ptrdiff_t height = isOneRow ? 1 : destination.height;
  if (width > 0 && width <= kLongest) {
    const std::ptrdiff_t atOnce = kLongest == kWholeRow ? height : kLongest / width;
    for (std::ptrdiff_t y = 0; y < height;) {
      const std::ptrdiff_t count = std::min(atOnce, height - y);
      kernel({destination.Row(y), destination.pitch, width, count},
             source.Band(y, width, count)...);
      y += count;
    }
    return KY_OK;
  }
  WalkSpans(
      width, height,
      [&](std::ptrdiff_t y, std::ptrdiff_t x, std::size_t n, const auto*... in) {
        MapRow(kernel, destination.Row(y) + x, n, in...);
      },
      source...);
  return KY_OK;
}

// A destination that others are written beside. One that shares memory with them is written apart,
// and copied to its place by Close.
template <class T>
class Output {
 public:
  // False when there is no memory to write it apart.
  template <class... Other>
  bool Open(const Rows<T>& place, const Rows<Other>&... other) noexcept {
    place_ = rows_ = place;
    if (((SharingOf(place, other) == Sharing::kNothing) && ...)) return true;
    if (!apart_.Allocate(place.width * place.height)) return false;
    rows_ = {apart_.get(), place.RowBytes(), place.width, place.height};
    return true;
  }
  void Close() const noexcept {
    if (apart_.get() == nullptr) return;
    for (std::ptrdiff_t y = 0; y < place_.height; ++y)
      std::memcpy(place_.Row(y), rows_.Row(y), static_cast<std::size_t>(place_.RowBytes()));
  }
  const Rows<T>& rows() const noexcept { return rows_; }

 private:
  Rows<T> place_, rows_;
  Scratch<T> apart_;
};

// Two destinations: (first(x, y), second(x, y)) = kernel(source(x, y)...), all of one size in
// elements. Sources may be either destination. Where the destinations share memory the second is
// written last, and its results stand. 1303 when there is no memory for what overlaps.
template <class A, class B, class... Source>
KY_ERRORS MapRows(
    SeveralKernel<Several<A, B>, typename std::remove_reference_t<Source>::Element...> kernel,
    const Several<Rows<A>, Rows<B>>& destinations, Source&&... source) noexcept {
  Rows<A> first = destinations.first;
  Output<B> output;
  if (!output.Open(destinations.more.first, first)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  Rows<B> second = output.rows();
  if (!(source.Open(first, second) && ...)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  if (first.Joined() && second.Joined() && (source.Joined() && ...)) {
    first = first.AsOneRow();
    second = second.AsOneRow();
  }
  WalkSpans(
      first.width, first.height,
      [&](std::ptrdiff_t y, std::ptrdiff_t x, std::size_t n, const auto*... in) {
        kernel({first.Row(y) + x, {second.Row(y) + x}}, n, in...);
      },
      source...);
  output.Close();
  return KY_OK;
}

// destination(x, y) = source(x, y).
template <class T, class Source>
KY_ERRORS CopyRows(const Rows<T>& destination, Source&& source) noexcept {
  const MapKernel<T, T> copy = [](const Rows<T>& out, const Rows<const T>& in) {
    for (std::ptrdiff_t y = 0; y < out.height; ++y)
      std::memmove(out.Row(y), in.Row(y), static_cast<std::size_t>(out.RowBytes()));
  };
  return MapRows(copy, destination, source);
}

}  // namespace ky
