// Paths, peaks and runs: the records that functions exchange through vectors, and their vectors.
#pragma once

#include <cstdint>

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/typed_vector.h"

/// A position, in pixels from the ROI's origin.
struct KY_API KyPath {
  std::int16_t x, y;
  constexpr bool operator==(const KyPath&) const noexcept = default;
};

/// A position and a grey level. The filler goes into files as it stands; comparison ignores it.
struct KY_API KyBW8Path {
  std::int16_t x, y;
  KyBW8 pixel;
  KyBW8 filler = 0;
  constexpr bool operator==(const KyBW8Path& other) const noexcept {
    return x == other.x && y == other.y && pixel == other.pixel;
  }
};

/// A position and a colour; the filler as above.
struct KY_API KyC24Path {
  std::int16_t x, y;
  KyC24 pixel;
  KyBW8 filler = 0;
  constexpr bool operator==(const KyC24Path& other) const noexcept {
    return x == other.x && y == other.y && pixel == other.pixel;
  }
};

/// A peak of a profile, or a valley, whose amplitude and area are negative: the index of its first
/// element, its number of elements, its centre of gravity as an index, the greatest distance of its
/// levels from the threshold, and the sum of these distances.
struct KY_API KyPeak {
  std::uint32_t start, length;
  float center;
  std::int32_t amplitude, area;
  constexpr bool operator==(const KyPeak&) const noexcept = default;
};

/// A run of pixels: the position of its first pixel and its length.
struct KY_API KyRun {
  std::int32_t x, y, length;
  constexpr bool operator==(const KyRun&) const noexcept = default;
};

static_assert(sizeof(KyPath) == 4 && sizeof(KyBW8Path) == 6 && sizeof(KyC24Path) == 8);
static_assert(sizeof(KyPeak) == 20 && sizeof(KyRun) == 12);

template <>
struct KyFileType<KyPath> : KyFileTypeOf<6> {};
template <>
struct KyFileType<KyBW8Path> : KyFileTypeOf<7> {};
template <>
struct KyFileType<KyC24Path> : KyFileTypeOf<8> {};
template <>
struct KyFileType<KyPeak> : KyFileTypeOf<9> {};
template <>
struct KyFileType<KyRun> : KyFileTypeOf<10> {};

/// A path: a vector of positions, and a flag that tells whether the last one joins the first.
template <class T>
class KY_API KyPathVectorTemplate : public KyVectorTemplate<T> {
 public:
  /// An empty, open path with room for `maxElements` elements. 1303 when the memory cannot be had.
  explicit KyPathVectorTemplate(unsigned int maxElements = 0) noexcept;
  KyPathVectorTemplate(KyPathVectorTemplate&&) noexcept = default;
  /// Take the flag too.
  KyPathVectorTemplate& operator=(KyPathVectorTemplate&) noexcept = default;
  KyPathVectorTemplate& operator=(KyPathVectorTemplate&&) noexcept = default;

  /// The flag: any value but 0 means closed. It is not part of files; Load leaves it as it is.
  int GetClosed() const noexcept { return closed_; }
  void SetClosed(int closed) noexcept { closed_ = closed; }

 private:
  int closed_ = 0;
};

using KyPathVector = KyPathVectorTemplate<KyPath>;
using KyBW8PathVector = KyPathVectorTemplate<KyBW8Path>;
using KyC24PathVector = KyPathVectorTemplate<KyC24Path>;
using KyPeaksVector = KyVectorTemplate<KyPeak>;

extern template struct KyPlaceHolder<KyPath>;
extern template struct KyPlaceHolder<KyBW8Path>;
extern template struct KyPlaceHolder<KyC24Path>;
extern template struct KyPlaceHolder<KyPeak>;
extern template struct KyPlaceHolder<KyRun>;
extern template class KyVectorTemplate<KyPath>;
extern template class KyVectorTemplate<KyBW8Path>;
extern template class KyVectorTemplate<KyC24Path>;
extern template class KyVectorTemplate<KyPeak>;
extern template class KyVectorTemplate<KyRun>;
extern template class KyPathVectorTemplate<KyPath>;
extern template class KyPathVectorTemplate<KyBW8Path>;
extern template class KyPathVectorTemplate<KyC24Path>;
