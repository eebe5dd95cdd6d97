// The pixels of an ROI as a plain value, and what happens when a source and a destination share
// memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "foundation/scratch.h"
#include "ky/roi.h"

namespace ky {

// Rows of `width` elements, `pitch` bytes apart.
template <class T>
struct Rows {
  T* first = nullptr;
  std::ptrdiff_t pitch = 0;
  std::ptrdiff_t width = 0, height = 0;

  T* Row(std::ptrdiff_t y) const noexcept {
    using Byte = std::conditional_t<std::is_const_v<T>, const std::uint8_t, std::uint8_t>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(first) + y * pitch);
  }
  std::ptrdiff_t RowBytes() const noexcept { return width * std::ptrdiff_t{sizeof(T)}; }
  bool Empty() const noexcept { return width == 0 || height == 0; }
  // True when no gap lies between the rows.
  bool Joined() const noexcept { return pitch == RowBytes() || height <= 1; }
  // All rows as one, for rows without gaps.
  Rows AsOneRow() const noexcept { return {first, 0, width * height, height == 0 ? 0 : 1}; }
  operator Rows<const T>() const noexcept requires(!std::is_const_v<T>) {
    return {first, pitch, width, height};
  }
};

// The pixels of an ROI as rows of T: of its pixels, or of bytes, which are the components of
// colours, so that a colour row is a grey row of three times the width. The first address is null
// where the ROI has no pixels.
template <class T, class Roi>
Rows<T> RowsAs(Roi* roi) noexcept {
  using Pixel = typename std::remove_const_t<Roi>::Pixel;
  using Element = std::remove_const_t<T>;
  static_assert(std::is_const_v<T> || !std::is_const_v<Roi>);
  constexpr bool kAsPixels = std::is_same_v<Element, Pixel>;
  static_assert(kAsPixels || std::is_same_v<Element, KyBW8>);
  constexpr std::ptrdiff_t kElements = kAsPixels ? 1 : sizeof(Pixel);
  int pitch;
  T* const first = static_cast<T*>(roi->FindPixels(pitch));
  return {first, pitch, roi->GetWidth() * kElements, roi->GetHeight()};
}

template <class T>
Rows<T> RowsOf(KyROI<T>* roi) noexcept {
  return RowsAs<T>(roi);
}
template <class T>
Rows<const T> RowsOf(const KyROI<T>* roi) noexcept {
  return RowsAs<const T>(roi);
}
template <class T>
Rows<KyBW8> ComponentRowsOf(KyROI<T>* roi) noexcept {
  return RowsAs<KyBW8>(roi);
}
template <class T>
Rows<const KyBW8> ComponentRowsOf(const KyROI<T>* roi) noexcept {
  return RowsAs<const KyBW8>(roi);
}

// The rows of the ROI in the area of the source, which it covers.
template <class T, class Source>
Rows<T> RowsIn(const Rows<Source>& source, KyROI<T>* roi) noexcept {
  const Rows<T> rows = RowsOf(roi);
  return {rows.first, rows.pitch, source.width, source.height};
}

enum class Sharing {
  kNothing,  // not one byte in common
  kTheSame,  // the same elements in the same places: in place
  kPartly,   // anything else
};

// How two areas of memory lie relative to each other. Areas of different pitch count as sharing
// when the spans of memory from their first to their last byte do.
template <class A, class B>
Sharing SharingOf(const Rows<A>& a, const Rows<B>& b) noexcept {
  if (a.Empty() || b.Empty()) return Sharing::kNothing;
  const auto startA = reinterpret_cast<std::uintptr_t>(a.first);
  const auto startB = reinterpret_cast<std::uintptr_t>(b.first);
  const bool samePitch = a.pitch == b.pitch;
  if (startA == startB && sizeof(A) == sizeof(B) && a.width == b.width && a.height == b.height &&
      (samePitch || a.height == 1))
    return Sharing::kTheSame;
  const auto spanA = static_cast<std::uintptr_t>((a.height - 1) * a.pitch + a.RowBytes());
  const auto spanB = static_cast<std::uintptr_t>((b.height - 1) * b.pitch + b.RowBytes());
  if (startA + spanA <= startB || startB + spanB <= startA) return Sharing::kNothing;
  if (!samePitch || a.pitch == 0) return Sharing::kPartly;
  // Two rectangles of one grid: b's first byte lies dy rows below and dx bytes right of a's.
  const std::ptrdiff_t distance = static_cast<std::ptrdiff_t>(startB - startA);
  std::ptrdiff_t dy = distance / a.pitch, dx = distance % a.pitch;
  if (dx < 0) {
    dx += a.pitch;
    --dy;
  }
  const auto rowsMeet = [&](std::ptrdiff_t down) { return down < a.height && -down < b.height; };
  const bool meet =
      (dx < a.RowBytes() && rowsMeet(dy)) || (dx + b.RowBytes() > a.pitch && rowsMeet(dy + 1));
  return meet ? Sharing::kPartly : Sharing::kNothing;
}

// A source that stays readable while destinations are written. One that shares pixels with any of
// them without being in place is copied first.
template <class T>
class Input {
 public:
  // False when there is no memory for the copy.
  template <class... Out>
  bool Open(const Rows<const T>& source, const Rows<Out>&... destination) noexcept {
    const bool partly = ((SharingOf(source, destination) == Sharing::kPartly) || ...);
    return partly ? OpenCopy(source) : OpenAsIs(source);
  }
  // For operations that read other places than they write: one that shares any is copied.
  template <class Out>
  bool OpenApart(const Rows<const T>& source, const Rows<Out>& destination) noexcept {
    return SharingOf(source, destination) == Sharing::kNothing ? OpenAsIs(source)
                                                               : OpenCopy(source);
  }
  bool OpenAsIs(const Rows<const T>& source) noexcept {
    rows_ = source;
    return true;
  }
  bool OpenCopy(const Rows<const T>& source) noexcept {
    if (!copy_.Allocate(source.width * source.height)) return false;
    rows_ = {copy_.get(), source.RowBytes(), source.width, source.height};
    for (std::ptrdiff_t y = 0; y < source.height; ++y)
      std::memcpy(copy_.get() + y * source.width, source.Row(y),
                  static_cast<std::size_t>(source.RowBytes()));
    return true;
  }
  const Rows<const T>& rows() const noexcept { return rows_; }

 private:
  Rows<const T> rows_;
  Scratch<T> copy_;
};

}  // namespace ky
