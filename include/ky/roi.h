/// @file
/// @ingroup images
/// Regions of interest: rectangles of an image's pixels.
#pragma once

#include <cstdint>

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/status.h"

// Says that a function takes the address of its parameter n and reads nothing there, so that the
// object may still be waiting for its constructor. The object called is number 1.
#if __has_cpp_attribute(gnu::access)
#define KY_ADDRESS_ONLY(n) [[gnu::access(none, n)]]
#else
#define KY_ADDRESS_ONLY(n)
#endif

/// A run of pixels of a mask: its first position and its length in pixels.
struct KY_API KyMaskRun {
  int offset;  ///< of its first pixel; see KyGenericROI::SetMask
  int length;  ///< in pixels
};

struct KY_API KyPixelBuffer;

/// The part of every ROI and image that does not depend on the pixel type.
///
/// An ROI is a rectangle on a parent, which is an image or another ROI. It stores the parent and
/// its place there, and finds its pixels through the parent at each call. It therefore stays valid
/// when the parent is resized or placed elsewhere, and the parent must outlive it. A rectangle that
/// does not lie wholly inside its parent's pixels has no pixels, and neither has one whose parents
/// form a ring: addresses are null, and every function fails with `KY_ERROR_NO_IMAGE` (1400).
/// `const` protects the rectangle, not the pixels.
class KY_API KyGenericROI {
 public:
  KyGenericROI(const KyGenericROI&) = delete;
  KyGenericROI& operator=(const KyGenericROI&) = delete;
  virtual ~KyGenericROI();

  /// Returns the width or the height, in pixels.
  int GetWidth() const noexcept { return width_; }
  int GetHeight() const noexcept { return height_; }

  /// Returns the bytes of one pixel; 0 for one-bit pixels, which share a byte.
  virtual int GetPixelSize() const noexcept;

  /// Sets the status when `other` cannot be used together with this ROI: `KY_ERROR_NO_IMAGE` (1400)
  /// when either has no pixels, `KY_ERROR_SIZE_MISMATCH` (1403) when their sizes differ. Leaves it
  /// alone otherwise.
  virtual void CheckSameSize(const KyGenericROI* other) const noexcept;

  /// Resizes the rectangle; an image reallocates its pixels (see KyImage). A rectangle of negative
  /// size has no pixels.
  virtual void SetSize(int width, int height) noexcept;

  /// Returns the address of pixel (x, y), counted from the ROI's own origin; for one-bit pixels
  /// that of the byte that holds it. x = width gives the address just past a row, and (0, height)
  /// the one just past the last row. Returns null outside 0..width x 0..height and when there are
  /// no pixels.
  virtual void* GetPixelPtr(int x, int y) const noexcept;

  /// Returns the bytes from the start of one row to the start of the next; 0 without pixels.
  virtual int GetPitch() const noexcept;

  /// Sets the status to `KY_ERROR_NO_IMAGE` (1400) when the ROI has no pixels. Leaves it alone
  /// otherwise.
  virtual void CheckImage() const noexcept;

  /// Returns the bytes from the address just past a row to the first pixel of the next, which is
  /// the pitch less the bytes of a row.
  virtual int GetRowGap() const noexcept;

  /// Returns the address of the first pixel, and the pitch, both found at once; null and 0 without
  /// pixels.
  void* FindPixels(int& pitch) const noexcept;

  /// Returns the address of position (x, y), counted from the ROI's origin, which may lie outside
  /// the ROI; null unless it is a pixel of the root image or of the spare row below it.
  void* GetRootPixelPtr(int x, int y) const noexcept;

  /// Returns the bit of its byte in which pixel (x, y) begins, where 0 is the most significant one;
  /// 0 for pixels of whole bytes.
  int GetBitOffset(int x, int y) const noexcept;

  /// Gives the ROI a mask, a list of runs of pixels to which some functions (see histograms)
  /// confine themselves. Offsets count pixels from the first one of the ROI, a row further being
  /// one pitch (row * pitch / pixel size + column); `absolute` ones count likewise from the first
  /// pixel of the root image. Runs may come in any order; parts that lie outside the ROI are
  /// ignored. The list is copied. Errors: `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for a null
  /// list of more than 0 runs, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303); the mask stays as it was then.
  /// Trace: "KyGenericROI::SetMask".
  KY_ERRORS SetMask(const KyMaskRun* runs, unsigned count, bool absolute) noexcept;
  /// Removes the mask and leaves the status alone.
  void ClearMask() noexcept;
  /// Returns the runs of the mask, or null when the ROI has none.
  const KyMaskRun* GetMaskOffsets() const noexcept { return mask_; }
  /// Returns the number of runs.
  unsigned GetMaskCount() const noexcept { return maskCount_; }
  /// Returns whether the runs are counted from the first pixel of the root image.
  bool IsMaskAbsolute() const noexcept { return maskAbsolute_; }

 protected:
  explicit KyGenericROI(int bitsPerPixel) noexcept : bitsPerPixel_(bitsPerPixel) {}
  void TakePlace(KyGenericROI& other) noexcept;

  KyGenericROI* parent_ = nullptr;
  const KyPixelBuffer* buffer_ = nullptr;  // an image's own; null in a plain ROI
  int x_ = 0, y_ = 0, width_ = 0, height_ = 0;
  int bitsPerPixel_;
  bool fixed_ = false;  // a stand-in, which nothing changes

 private:
  struct Location;
  bool Locate(Location& location) const noexcept;
  bool LiesIn(int width, int height) const noexcept;

  bool maskAbsolute_ = false;
  unsigned maskCount_ = 0;
  KyMaskRun* mask_ = nullptr;
};

/// A rectangle of pixels of type T on a parent of the same type. T is any pixel type of pixels.h.
template <class T>
class KY_API KyROI : public KyGenericROI {
 public:
  /// The type that one pixel is read and written as.
  using Value = typename KyPixelTraits<T>::Value;
  /// The type of its pixels.
  using Pixel = T;

  /// Makes an ROI of 0 x 0 pixels without a parent, which has no pixels.
  KyROI() noexcept;
  /// Makes a rectangle of `width` x `height` pixels whose first pixel is pixel (x, y) of the
  /// parent. The parent's own rectangle stays as it is, and so it may be const.
  KY_ADDRESS_ONLY(2) KyROI(const KyROI<T>* parent, int x, int y, int width, int height) noexcept;

  /// Moves and resizes the rectangle on its parent.
  void SetPlacement(int x, int y, int width, int height) noexcept;
  /// Returns the position of the rectangle on its parent.
  int GetX() const noexcept { return x_; }
  int GetY() const noexcept { return y_; }
  /// Returns the parent, or null for an image.
  KyROI<T>* GetParent() const noexcept { return static_cast<KyROI<T>*>(parent_); }

  /// Reads or writes one pixel, a write taking the **value first**: SetPixel(value, x, y). A read
  /// that fails returns 0, a write does nothing. Errors: `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011)
  /// for an x, `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) for a y outside; `KY_ERROR_NO_IMAGE`
  /// (1400) without pixels. Success does not clear the status.
  Value GetPixel(int x, int y) const noexcept;
  void SetPixel(Value value, int x, int y) noexcept;

 private:
  KyBW8* Address(int x, int y) const noexcept;
};

extern template class KyROI<KyBW1>;
extern template class KyROI<KyBW8>;
extern template class KyROI<KyBW16>;
extern template class KyROI<KyBW32>;
extern template class KyROI<KyC24>;
extern template class KyROI<KyC15>;
extern template class KyROI<KyC16>;
extern template class KyROI<KyC24A>;
extern template class KyROI<KyComplex64>;
