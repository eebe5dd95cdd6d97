/// @file
/// @ingroup sizes
/// Pyramids: an image in ever smaller sizes.
#pragma once

#include "ky/export.h"
#include "ky/image.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// The types of pixels that an image of a type known only at run time may have.
enum KY_IMAGE_TYPES : int {
  KY_IMAGE_BW8 = 1,  ///< grey levels of 8 bits
  KY_IMAGE_C24 = 2,  ///< colours of 3 x 8 bits
};

/// Keeps an image and its reductions to half, a quarter, an eighth, and so on. Level 0 is a copy of
/// the source, and each next level is ImgHalve of the one above it, so that pixel (x, y) of level n
/// covers the source from (2^n x, 2^n y) on. What is searched in a small level costs a fraction of
/// a search in the source; see docs/sizes.md.
///
///     KyPyramid pyramid;
///     pyramid.SetNumLevels(4);
///     pyramid.Build(&frame);
///     const KyROI<KyBW8>* eighth = pyramid.GetBW8Level(3);
///
/// A new pyramid has 0 levels of type KY_IMAGE_BW8. Members that return a status clear it first;
/// when they fail the pyramid stays as it was. Pyramids move, and an ROI that was placed on a level
/// of a moved pyramid loses its pixels. An object serves one thread at a time.
class KY_API KyPyramid {
 public:
  KyPyramid() noexcept;
  /// Takes over the levels of `other`, which becomes like new.
  KyPyramid(KyPyramid&& other) noexcept;
  KyPyramid& operator=(KyPyramid&& other) noexcept;
  ~KyPyramid();

  /// Sets the number and the type of the levels, which have no pixels until they are built. Errors:
  /// `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) unless there are 1 to 30 levels,
  /// `KY_ERROR_BAD_IMAGE_TYPE` (1419) for another type. Trace: "KyPyramid::SetNumLevels".
  KY_ERRORS SetNumLevels(int levels, KY_IMAGE_TYPES type = KY_IMAGE_BW8) noexcept;

  /// Copies the source to level 0 and makes all other levels of it. Later changes of the source do
  /// not matter. Allocates memory only where the size has changed. Errors, checked in this order:
  /// `KY_ERROR_PYRAMID_BUILD` (1024) for a source without pixels or of another type than the
  /// pyramid's, for a pyramid of 0 levels, and for a source so small that the last level would have
  /// no columns or rows; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "KyPyramid::Build".
  KY_ERRORS Build(const KyROI<KyBW8>* source) noexcept;
  KY_ERRORS Build(const KyROI<KyC24>* source) noexcept;

  /// Adds a level below the last one, also to those that the next Build makes. Errors, checked in
  /// this order: `KY_ERROR_PYRAMID_HALVE` (1414) when no level has been built or a side of the last
  /// one is 1; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "KyPyramid::Halve".
  KY_ERRORS Halve() noexcept;

  /// Returns the number of levels.
  int GetNumLevels() const noexcept { return levels_; }
  /// Returns the type of their pixels.
  KY_IMAGE_TYPES GetImageType() const noexcept { return type_; }
  /// Return a level, counted from 0, the size of the source; null for a number outside the levels
  /// and for levels of the other type. A level that has not been built has no pixels.
  const KyGenericROI* GetLevel(int level) const noexcept;
  const KyROI<KyBW8>* GetBW8Level(int level) const noexcept;
  const KyROI<KyC24>* GetC24Level(int level) const noexcept;

 private:
  static constexpr int kMostLevels = 31;  // sides are below 2^31

  template <class T>
  static bool MakeImages(KyImage<T>* images, int levels, int width, int height) noexcept;
  template <class T>
  KY_ERRORS BuildLevels(const KyROI<T>* source, KyImage<T>* images) noexcept;
  template <class T>
  KY_ERRORS AddLevel(KyImage<T>* images) noexcept;
  bool Has(int level, KY_IMAGE_TYPES type) const noexcept;
  void Release() noexcept;

  int levels_ = 0;
  KY_IMAGE_TYPES type_ = KY_IMAGE_BW8;
  KyImage<KyBW8> grey_[kMostLevels];
  KyImage<KyC24> color_[kMostLevels];
};
