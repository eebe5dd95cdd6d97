// Results that are written past the caches. An ordinary store first reads the line that it goes to,
// and what a call has written stays in caches for the next call. Where a call moves more than the
// largest cache holds, the next call finds nothing there either way, and the reading can be saved:
// a copy then takes three quarters of its time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "foundation/cache_size.h"
#include "foundation/kernels/stream_rows.h"
#include "foundation/map.h"
#include "foundation/pitch.h"

namespace ky {

// The kernels for writing past the caches where that pays, else null. In place it never does, as
// the lines are read anyway.
template <class Out, class... Source>
const StreamKernels* StreamFor(const Rows<Out>& destination, const Source&... source) noexcept {
  constexpr std::int64_t kFewest = 1 << 22;  // smaller calls need not ask
  const std::int64_t moved = ((destination.RowBytes() * destination.height) + ... + source.Bytes());
  const StreamKernels& stream = ChooseStreamKernels();
  if (moved < kFewest || stream.write == nullptr || !(source.IsApart(destination) && ...))
    return nullptr;
  const std::int64_t cache = SizesOfCaches().largest;
  return cache > 0 && moved >= cache ? &stream : nullptr;
}

// Pieces of rows hold whole lines of a cache and whole colours.
inline constexpr std::ptrdiff_t kLinesOfColors = 3 * kCacheLine;

// make(piece, n, y, x) makes the n elements from x on of row y, in a piece of a row that stays in a
// first cache.
template <class Out, class Make>
void StreamRows(const StreamKernels& stream, const Rows<Out>& destination,
                const Make& make) noexcept {
  constexpr std::ptrdiff_t kAtOnce = kPiece / 2 / sizeof(Out);
  alignas(kCacheLine) Out piece[kAtOnce];
  for (std::ptrdiff_t y = 0; y < destination.height; ++y)
    for (std::ptrdiff_t x = 0; x < destination.width; x += kAtOnce) {
      const auto n = static_cast<std::size_t>(std::min(kAtOnce, destination.width - x));
      make(piece, n, y, x);
      stream.write(reinterpret_cast<KyBW8*>(destination.Row(y) + x), n * sizeof(Out),
                   reinterpret_cast<const KyBW8*>(piece));
    }
  stream.finish();
}
// take(n, y, x, whole) for all bytes of the rows: whole lines of the destination, of whole colours,
// and what is left before and after them.
template <class Take>
void ForLines(const Rows<KyBW8>& destination, const Take& take) noexcept {
  for (std::ptrdiff_t y = 0; y < destination.height; ++y)
    for (std::ptrdiff_t x = 0; x < destination.width;) {
      const std::ptrdiff_t rest = destination.width - x;
      const auto place = reinterpret_cast<std::uintptr_t>(destination.Row(y) + x);
      const auto before = static_cast<std::ptrdiff_t>(-place % kCacheLine);
      const bool whole = before == 0 && rest >= kLinesOfColors;
      // A line holds whole colours and one more byte.
      const std::ptrdiff_t toColors = before + kCacheLine * ((3 - before % 3) % 3);
      const std::ptrdiff_t n = whole ? std::min(rest / kLinesOfColors * kLinesOfColors, kPiece)
                                     : std::min(rest, before == 0 ? rest : toColors);
      take(static_cast<std::size_t>(n), y, x, whole);
      x += n;
    }
}

// A kernel that does not read what it writes to, and the same for whole lines of a cache, which it
// writes past the caches: null where results are copied there instead.
template <class Out, class... In>
struct FreshKernel {
  MapKernel<Out, In...> usual;
  RowKernel<Out, In...> lines = nullptr;
};

// MapRows, past the caches where that pays.
template <class Out, class... Source>
KY_ERRORS MapFreshRows(
    const FreshKernel<Out, typename std::remove_reference_t<Source>::Element...>& kernel,
    const Rows<Out>& destination, Source&&... source) noexcept {
  const StreamKernels* const stream = StreamFor(destination, source...);
  if (stream == nullptr) return MapRows(kernel.usual, destination, source...);
  if (!(source.Open(destination) && ...)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const bool isOneRow = destination.Joined() && (source.Joined() && ...);
  const Rows<Out> rows = isOneRow ? destination.AsOneRow() : destination;
  if constexpr (std::is_same_v<Out, KyBW8>) {
    if (kernel.lines != nullptr) {
      ForLines(rows, [&](std::size_t n, std::ptrdiff_t y, std::ptrdiff_t x, bool whole) {
        KyBW8* const out = rows.Row(y) + x;
        const auto count = static_cast<std::ptrdiff_t>(n);
        if (whole)
          kernel.lines(out, n, source.Span(y, x, count)...);
        else
          MapRow(kernel.usual, out, n, source.Span(y, x, count)...);
      });
      stream->finish();
      return KY_OK;
    }
  }
  StreamRows(*stream, rows, [&](Out* out, std::size_t n, std::ptrdiff_t y, std::ptrdiff_t x) {
    MapRow(kernel.usual, out, n, source.Span(y, x, static_cast<std::ptrdiff_t>(n))...);
  });
  return KY_OK;
}
// CopyRows likewise.
template <class T, class Source>
KY_ERRORS CopyFreshRows(const Rows<T>& destination, Source&& source) noexcept {
  const StreamKernels* const stream = StreamFor(destination, source);
  if (stream == nullptr) return CopyRows(destination, source);
  if (!source.Open(destination)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const bool isOneRow = destination.Joined() && source.Joined();
  const Rows<T> rows = isOneRow ? destination.AsOneRow() : destination;
  constexpr std::ptrdiff_t kLongest = std::remove_reference_t<Source>::kLongest;
  for (std::ptrdiff_t y = 0; y < rows.height; ++y)
    for (std::ptrdiff_t x = 0; x < rows.width; x += kLongest) {
      const std::ptrdiff_t n = std::min(kLongest, rows.width - x);
      stream->write(reinterpret_cast<KyBW8*>(rows.Row(y) + x),
                    static_cast<std::size_t>(n) * sizeof(T),
                    reinterpret_cast<const KyBW8*>(source.Span(y, x, n)));
    }
  stream->finish();
  return KY_OK;
}

}  // namespace ky
