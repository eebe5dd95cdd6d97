/// @file
/// @ingroup typed_vectors
/// Paths, peaks and runs: the records that functions exchange through vectors, and their vectors.
#pragma once

#include <cstdint>

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/typed_vector.h"

/// A position, in pixels from the ROI's origin, each coordinate of 16 bits.
struct KY_API KyPath {
  /// The position.
  std::int16_t x, y;
  constexpr bool operator==(const KyPath&) const noexcept = default;
};

/// A position and a grey level. The filler is written to files as it is; comparison ignores it.
struct KY_API KyBW8Path {
  /// The position.
  std::int16_t x, y;
  KyBW8 pixel;       ///< the level, or the code of the step that leads on
  KyBW8 filler = 0;  ///< makes the size even

  /// Returns whether position and level are the same.
  constexpr bool operator==(const KyBW8Path& other) const noexcept {
    return x == other.x && y == other.y && pixel == other.pixel;
  }
};

/// A position and a colour. The filler is treated as in KyBW8Path.
struct KY_API KyC24Path {
  /// The position.
  std::int16_t x, y;
  KyC24 pixel;       ///< the colour
  KyBW8 filler = 0;  ///< makes the size even

  /// Returns whether position and colour are the same.
  constexpr bool operator==(const KyC24Path& other) const noexcept {
    return x == other.x && y == other.y && pixel == other.pixel;
  }
};

/// A peak of a profile, or a valley, whose amplitude and area are negative.
struct KY_API KyPeak {
  std::uint32_t start;     ///< the index of its first element
  std::uint32_t length;    ///< its number of elements
  float center;            ///< its centre of gravity, as an index
  std::int32_t amplitude;  ///< the greatest distance of its levels from the threshold
  std::int32_t area;       ///< the sum of these distances
  constexpr bool operator==(const KyPeak&) const noexcept = default;
};

/// A run of pixels.
struct KY_API KyRun {
  /// The position of its first pixel.
  std::int32_t x, y;
  std::int32_t length;  ///< its number of pixels
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
  /// Makes an empty, open path with room for `maxElements` elements. `KY_ERROR_NOT_ENOUGH_MEMORY`
  /// (1303) when memory runs out.
  explicit KyPathVectorTemplate(unsigned int maxElements = 0) noexcept;
  KyPathVectorTemplate(KyPathVectorTemplate&&) noexcept = default;
  /// Takes over the elements and the flag.
  KyPathVectorTemplate& operator=(KyPathVectorTemplate&) noexcept = default;
  KyPathVectorTemplate& operator=(KyPathVectorTemplate&&) noexcept = default;

  /// Returns or sets the flag; any value other than 0 means closed. Files do not hold it, and Load
  /// leaves it as it is.
  int GetClosed() const noexcept { return closed_; }
  void SetClosed(int closed) noexcept { closed_ = closed; }

 private:
  int closed_ = 0;
};

/// The vectors of paths and of peaks.
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
