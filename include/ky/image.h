/// @file
/// @ingroup images
/// Images: ROIs that own their pixels, or wrap somebody else's.
#pragma once

#include <cstddef>

#include "ky/roi.h"

/// Where an image's pixels lie. `allocation` is null for foreign memory, which has no spare row.
struct KY_API KyPixelBuffer {
  KyBW8* pixels = nullptr;     ///< the first row
  void* allocation = nullptr;  ///< what the image frees
  int pitch = 0;               ///< bytes from row to row
  int width = 0;               ///< in pixels
  int height = 0;              ///< in pixels
};

/// An image is an ROI that covers a buffer of its own. Rows start at 64-byte boundaries; one spare
/// row lies below the last and belongs to the image. Images move; ROIs on a moved image lose their
/// pixels.
template <class T>
class KY_API KyImage : public KyROI<T> {
 public:
  /// The type that a buffer of such pixels consists of.
  using Memory = typename KyPixelTraits<T>::Memory;

  /// Makes an image without pixels.
  KyImage() noexcept;
  /// Makes an image of `width` x `height` pixels, all zero. The errors are those of SetSize.
  KyImage(int width, int height) noexcept;
  /// Takes over the pixels of `other`, which has none afterwards.
  KyImage(KyImage&& other) noexcept;
  KyImage& operator=(KyImage&& other) noexcept;
  ~KyImage() override;

  /// Gives the image `width` x `height` pixels, all zero; (0, 0) releases them. Clears the status
  /// first. Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) for a negative size or when memory runs out;
  /// the image stays as it was then.
  void SetSize(int width, int height) noexcept override;
  /// Gives the image the size of `roi`. Error: `KY_ERROR_NO_IMAGE` (1400) for null.
  void SetSize(const KyGenericROI* roi) noexcept;

  /// Wraps foreign memory, such as a camera's frame: rows of `width` pixels, `pitch` bytes apart.
  /// Nothing is copied, and the memory is not freed; it must outlive its use. Errors:
  /// `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for pixels that are null, misaligned, or the
  /// image's own, which it would free; `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) and
  /// `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013) for a negative width and height;
  /// `KY_ERROR_PARAMETER_4_OUT_OF_RANGE` (1014) for a pitch that is shorter than a row or does not
  /// keep the pixels aligned. The image stays as it was then. Trace: "KyImage::Attach".
  KY_ERRORS Attach(Memory* pixels, int width, int height, int pitch) noexcept;

  /// Makes the image a copy of `other` with pixels of its own, also where `other` wraps foreign
  /// memory: the same pitch, rectangle and mask. Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when
  /// memory runs out; the image stays as it was then. Trace: "KyImage::CopyFrom".
  KY_ERRORS CopyFrom(const KyImage& other) noexcept;

  /// Takes position, width and height, without pixels, from the bytes of an image object that
  /// `object` points to, as files of vectors of images hold them. Nothing else is taken from the
  /// bytes, so that any are harmless. Leaves the status alone.
  void Restore(const void* object) noexcept;

  /// Returns the image that stands in for images that do not exist, one for the whole process. It
  /// has no pixels and never gets any: SetSize to more than (0, 0), Attach, CopyFrom and SetMask
  /// fail with `KY_ERROR_NOT_ENOUGH_MEMORY` (1303), and all else that would change it does nothing,
  /// so that threads may share it. An image that it is moved to becomes empty; one that is moved to
  /// it stays as it is.
  static KyImage& StandIn() noexcept;

 private:
  void Adopt(const KyPixelBuffer& buffer) noexcept;

  KyPixelBuffer own_;
  void* reserved_[3] = {};  // room for later fields: the size is part of a file format
};

// The objects of images are written to files of vectors of images.
static_assert(sizeof(KyImage<KyBW8>) == 120 && sizeof(KyImage<KyC24>) == 120);

extern template class KyImage<KyBW1>;
extern template class KyImage<KyBW8>;
extern template class KyImage<KyBW16>;
extern template class KyImage<KyBW32>;
extern template class KyImage<KyC24>;
extern template class KyImage<KyC15>;
extern template class KyImage<KyC16>;
extern template class KyImage<KyC24A>;
extern template class KyImage<KyComplex64>;
