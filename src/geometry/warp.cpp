#include "foundation/frame.h"
#include "foundation/rows.h"
#include "geometry/warp_rows.h"
#include "ky/geometry.h"

namespace {

using ky::Call;
using ky::Input;
using ky::Rows;
using ky::WarpKernelsFor;

template <class T>
void Clear(const Rows<T>& rows) noexcept {
  for (std::ptrdiff_t y = 0; y < rows.height; ++y)
    std::memset(static_cast<void*>(rows.Row(y)), 0, static_cast<std::size_t>(rows.RowBytes()));
}

std::uint32_t Shifted(KyBW16 entry, int shift) noexcept {
  return static_cast<std::uint32_t>(static_cast<std::int16_t>(entry)) +
         static_cast<std::uint32_t>(shift);
}

template <class T>
KY_ERRORS WarpByTables(const Rows<const T>& original, const Rows<T>& destination,
                       const Rows<const KyBW16>& xTable, const Rows<const KyBW16>& yTable,
                       int shiftX, int shiftY) noexcept {
  Input<T> source;
  Input<KyBW16> xs, ys;
  if (!source.OpenApart(original, destination) || !xs.OpenApart(xTable, destination) ||
      !ys.OpenApart(yTable, destination))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  if (source.rows().Empty()) {
    Clear(destination);
    return KY_OK;
  }
  const auto fromTables = WarpKernelsFor(source.rows()).fromTables;
  const bool fetches = ky::IsWorthFetching(source.rows());
  for (std::ptrdiff_t y = 0; y < destination.height; ++y) {
    if (fetches && y + ky::kFetchRows < destination.height) {
      const KyBW16* const x = xs.rows().Row(y + ky::kFetchRows);
      const KyBW16* const row = ys.rows().Row(y + ky::kFetchRows);
      ky::FetchAhead(source.rows(), destination.width, [&](std::ptrdiff_t i) {
        return ky::Position{Shifted(x[i], shiftX), Shifted(row[i], shiftY)};
      });
    }
    fromTables(destination.Row(y), static_cast<std::size_t>(destination.width), source.rows(),
               xs.rows().Row(y), ys.rows().Row(y), shiftX, shiftY);
  }
  return KY_OK;
}

template <class T>
KY_ERRORS WarpByPacked(const Rows<const T>& original, const Rows<T>& destination,
                       const Rows<const KyBW32>& table) noexcept {
  ky::Scratch<std::ptrdiff_t> rowStarts;
  if (!rowStarts.Allocate(original.height)) return KY_ERROR_NO_RESULT;
  Input<T> source;
  Input<KyBW32> positions;
  if (!source.OpenApart(original, destination) || !positions.OpenApart(table, destination))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  for (std::ptrdiff_t y = 0; y < original.height; ++y) rowStarts[y] = y * source.rows().pitch;
  const auto fromPacked = WarpKernelsFor(source.rows()).fromPacked;
  const auto width = static_cast<std::size_t>(destination.width);
  const bool fetches = ky::IsWorthFetching(source.rows());
  for (std::ptrdiff_t y = 0; y < destination.height; ++y) {
    if (fetches && y + ky::kFetchRows < destination.height) {
      const KyBW32* const entries = positions.rows().Row(y + ky::kFetchRows);
      ky::FetchAhead(source.rows(), destination.width, [&](std::ptrdiff_t i) {
        return ky::Position{entries[i] & 0xFFFF, entries[i] >> 16};
      });
    }
    if (fromPacked(destination.Row(y), width, source.rows(), rowStarts.get(),
                   positions.rows().Row(y)) < width)
      return KY_ERROR_WARP_MAP;
  }
  return KY_OK;
}

constexpr ky::RoiNames kTables = {{"xTable", "yTable", "destination"}};

template <class T>
KY_ERRORS Warp(const KyROI<T>* source, KyROI<T>* destination, const KyROI<KyBW16>* xTable,
               const KyROI<KyBW16>* yTable, int shiftX, int shiftY) noexcept {
  return Call("ImgWarp", [&] {
    Rows<const T> in;
    Rows<T> out;
    Rows<const KyBW16> xs, ys;
    if (const KY_ERRORS error = ky::Open(source, in)) return error;
    if (const KY_ERRORS error = ky::Open(destination, out)) return error;
    if (const KY_ERRORS error = ky::Open(xTable, xs, "xTable")) return error;
    if (const KY_ERRORS error = ky::Open(yTable, ys, "yTable")) return error;
    if (const KY_ERRORS error = ky::CheckSizes(kTables, xTable, yTable, destination)) return error;
    return WarpByTables(in, out, xs, ys, shiftX, shiftY);
  });
}

template <class T>
KY_ERRORS Warp(const KyROI<T>* source, KyROI<T>* destination, const KyROI<KyBW32>* table) noexcept {
  return Call("ImgWarp", [&] {
    if (source == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "source");
    if (destination == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "destination");
    // Source and destination are checked before the table where they differ in size, else after it.
    if (!ky::IsSameSize(source, destination))
      return ky::CheckRois(ky::kSourceAndDestination, source, destination);
    if (table == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "table");
    if (table->GetWidth() < destination->GetWidth() ||
        table->GetHeight() < destination->GetHeight())
      return KY_ERROR_WARP_2200;
    Rows<const T> in;
    Rows<T> out;
    Rows<const KyBW32> positions;
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (const KY_ERRORS error = ky::Open(table, positions, "table")) return error;
    return WarpByPacked(in, out, positions);
  });
}

}  // namespace

KY_ERRORS ImgWarp(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                  const KyImage<KyBW16>* xTable, const KyImage<KyBW16>* yTable, int shiftX,
                  int shiftY) noexcept {
  return Warp(source, destination, xTable, yTable, shiftX, shiftY);
}
KY_ERRORS ImgWarp(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                  const KyImage<KyBW16>* xTable, const KyImage<KyBW16>* yTable, int shiftX,
                  int shiftY) noexcept {
  return Warp(source, destination, xTable, yTable, shiftX, shiftY);
}

KY_ERRORS ImgWarp(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                  const KyImage<KyBW32>* table) noexcept {
  return Warp(source, destination, table);
}
KY_ERRORS ImgWarp(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                  const KyImage<KyBW32>* table) noexcept {
  return Warp(source, destination, table);
}
