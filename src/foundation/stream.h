// Results that are written past the caches. An ordinary store first reads the line that it goes to,
// and what a call has written stays in caches for the next call. Where a call moves more than the
// largest cache holds, the next call finds nothing there either way, and the reading can be saved:
// a copy then takes three quarters of its time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/cache_size.h"
#include "foundation/kernels/stream_rows.h"
#include "foundation/map.h"

namespace ky {

// The kernels for writing past the caches where that pays, else null. In place it never does, as
// the lines are read anyway.
template <class Out, class... In>
const StreamKernels* StreamFor(const Rows<Out>& destination, const Rows<const In>&... in) noexcept {
  constexpr std::int64_t kFewest = 1 << 22;  // smaller calls need not ask
  const std::int64_t moved =
      ((destination.RowBytes() * destination.height) + ... + (in.RowBytes() * in.height));
  const StreamKernels& stream = ChooseStreamKernels();
  if (moved < kFewest || stream.write == nullptr) return nullptr;
  if (((SharingOf(in, destination) != Sharing::kNothing) || ...)) return nullptr;
  const std::int64_t cache = LargestCache();
  return cache > 0 && moved >= cache ? &stream : nullptr;
}

// make(piece, n, y, x) makes the n elements from x on of row y, in a piece of a row that stays in a
// first cache.
template <class Out, class Make>
void StreamRows(const StreamKernels& stream, const Rows<Out>& destination,
                const Make& make) noexcept {
  constexpr std::ptrdiff_t kAtOnce = 4096 / sizeof(Out) / 64 * 64;  // of whole cache lines
  alignas(64) Out piece[kAtOnce];
  for (std::ptrdiff_t y = 0; y < destination.height; ++y)
    for (std::ptrdiff_t x = 0; x < destination.width; x += kAtOnce) {
      const auto n = static_cast<std::size_t>(std::min(kAtOnce, destination.width - x));
      make(piece, n, y, x);
      stream.write(reinterpret_cast<KyBW8*>(destination.Row(y) + x), n * sizeof(Out),
                   reinterpret_cast<const KyBW8*>(piece));
    }
  stream.finish();
}

// MapRows of a kernel that does not read what it writes to, past the caches where that pays.
template <class Out, class... In>
KY_ERRORS MapFreshRows(MapKernel<Out, In...> kernel, const Rows<Out>& destination,
                       const Rows<const In>&... in) noexcept {
  const StreamKernels* const stream = StreamFor(destination, in...);
  if (stream == nullptr) return MapRows(kernel, destination, FromRows<In>(in)...);
  StreamRows(*stream, destination,
             [&](Out* out, std::size_t n, std::ptrdiff_t y, std::ptrdiff_t x) {
               kernel(out, n, (in.Row(y) + x)...);
             });
  return KY_OK;
}
template <class Out, class In, class Parameters>
KY_ERRORS MapFreshRows(MapKernel<Out, In, Parameters> kernel, const Rows<Out>& destination,
                       const Rows<const In>& in, const Parameters& parameters) noexcept {
  const StreamKernels* const stream = StreamFor(destination, in);
  if (stream == nullptr)
    return MapRows(kernel, destination, FromRows<In>(in), FromParameters<Parameters>(parameters));
  StreamRows(*stream, destination,
             [&](Out* out, std::size_t n, std::ptrdiff_t y, std::ptrdiff_t x) {
               kernel(out, n, in.Row(y) + x, &parameters);
             });
  return KY_OK;
}
// CopyRows likewise.
template <class T>
KY_ERRORS CopyFreshRows(const Rows<T>& destination, const Rows<const T>& source) noexcept {
  const StreamKernels* const stream = StreamFor(destination, source);
  if (stream == nullptr) return CopyRows(destination, FromRows<T>(source));
  for (std::ptrdiff_t y = 0; y < destination.height; ++y)
    stream->write(reinterpret_cast<KyBW8*>(destination.Row(y)),
                  static_cast<std::size_t>(destination.RowBytes()),
                  reinterpret_cast<const KyBW8*>(source.Row(y)));
  stream->finish();
  return KY_OK;
}

}  // namespace ky
