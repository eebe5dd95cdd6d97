#include "ky/roi.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "foundation/frame.h"
#include "ky/image.h"

// Where an ROI's first pixel lies in the root image.
struct KyGenericROI::Location {
  const KyPixelBuffer* buffer;
  std::int64_t x, y;
};

namespace {

// The byte that holds column x, `bits` bits a pixel, of row y.
KyBW8* ByteOf(const KyPixelBuffer& buffer, std::int64_t x, std::int64_t y, int bits) noexcept {
  return buffer.pixels + y * buffer.pitch + (x * bits >> 3);
}

}  // namespace

KyGenericROI::~KyGenericROI() { delete[] mask_; }

// Takes over the other's rectangle and mask; what they lie on is the business of the derived class.
void KyGenericROI::TakePlace(KyGenericROI& other) noexcept {
  x_ = std::exchange(other.x_, 0);
  y_ = std::exchange(other.y_, 0);
  width_ = std::exchange(other.width_, 0);
  height_ = std::exchange(other.height_, 0);
  std::swap(mask_, other.mask_);
  std::swap(maskCount_, other.maskCount_);
  std::swap(maskAbsolute_, other.maskAbsolute_);
  other.ClearMask();
}

bool KyGenericROI::LiesIn(int width, int height) const noexcept {
  return x_ >= 0 && y_ >= 0 && width_ >= 0 && height_ >= 0 && std::int64_t{x_} + width_ <= width &&
         std::int64_t{y_} + height_ <= height;
}

bool KyGenericROI::Locate(Location& location) const noexcept {
  location = {nullptr, 0, 0};
  const KyGenericROI* roi = this;
  const KyGenericROI* passed = nullptr;
  for (unsigned step = 0;; ++step) {
    location.x += roi->x_;
    location.y += roi->y_;
    if (roi->parent_ == nullptr) break;
    // Parents that form a ring lead back to the ROI remembered last (Brent's cycle detection).
    if ((step & (step - 1)) == 0) passed = roi;
    if (roi->parent_ == passed) return false;
    if (!roi->LiesIn(roi->parent_->width_, roi->parent_->height_)) return false;
    roi = roi->parent_;
  }
  location.buffer = roi->buffer_;
  return location.buffer != nullptr && location.buffer->pixels != nullptr &&
         roi->LiesIn(location.buffer->width, location.buffer->height);
}

int KyGenericROI::GetPixelSize() const noexcept { return bitsPerPixel_ / 8; }

void KyGenericROI::CheckSameSize(const KyGenericROI* other) const noexcept {
  if (other != nullptr && width_ == other->width_ && height_ == other->height_) return;
  Location location;
  const bool bothHavePixels = other != nullptr && Locate(location) && other->Locate(location);
  KySetError(bothHavePixels ? KY_ERROR_SIZE_MISMATCH : KY_ERROR_NO_IMAGE);
}

void KyGenericROI::SetSize(int width, int height) noexcept {
  if (fixed_) return;
  width_ = width;
  height_ = height;
}

void* KyGenericROI::GetPixelPtr(int x, int y) const noexcept {
  Location place;
  if (x < 0 || x > width_ || y < 0 || y > height_ || !Locate(place)) return nullptr;
  return ByteOf(*place.buffer, place.x + x, place.y + y, bitsPerPixel_);
}

int KyGenericROI::GetPitch() const noexcept {
  Location place;
  return Locate(place) ? place.buffer->pitch : 0;
}

void KyGenericROI::CheckImage() const noexcept {
  Location place;
  if (!Locate(place)) KySetError(KY_ERROR_NO_IMAGE);
}

int KyGenericROI::GetRowGap() const noexcept {
  Location place;
  if (!Locate(place)) return 0;
  const std::int64_t firstBit = place.x * bitsPerPixel_;
  const std::int64_t endBit = (place.x + width_) * bitsPerPixel_;
  return static_cast<int>(place.buffer->pitch - ((endBit >> 3) - (firstBit >> 3)));
}

void* KyGenericROI::FindPixels(int& pitch) const noexcept {
  Location place;
  const bool found = Locate(place);
  pitch = found ? place.buffer->pitch : 0;
  return found ? ByteOf(*place.buffer, place.x, place.y, bitsPerPixel_) : nullptr;
}

void* KyGenericROI::GetRootPixelPtr(int x, int y) const noexcept {
  Location place;
  if (!Locate(place)) return nullptr;
  const std::int64_t column = place.x + x, row = place.y + y;
  const KyPixelBuffer& buffer = *place.buffer;
  const int spareRows = buffer.allocation != nullptr ? 1 : 0;
  if (column < 0 || column >= buffer.width || row < 0 ||
      row >= std::int64_t{buffer.height} + spareRows)
    return nullptr;
  return ByteOf(buffer, column, row, bitsPerPixel_);
}

int KyGenericROI::GetBitOffset(int x, int y) const noexcept {
  Location place;
  if (x < 0 || x > width_ || y < 0 || y > height_ || !Locate(place)) return 0;
  return static_cast<int>((place.x + x) * bitsPerPixel_ & 7);
}

KY_ERRORS KyGenericROI::SetMask(const KyMaskRun* runs, unsigned count, bool absolute) noexcept {
  return ky::Call("KyGenericROI::SetMask", [&] {
    if (runs == nullptr && count > 0)
      return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "runs");
    if (fixed_) return KY_ERROR_NOT_ENOUGH_MEMORY;
    KyMaskRun* const copy = new (std::nothrow) KyMaskRun[std::max(count, 1u)];
    if (copy == nullptr) return KY_ERROR_NOT_ENOUGH_MEMORY;
    std::copy_n(runs, count, copy);
    delete[] mask_;
    mask_ = copy;
    maskCount_ = count;
    maskAbsolute_ = absolute;
    return KY_OK;
  });
}

void KyGenericROI::ClearMask() noexcept {
  if (fixed_) return;
  delete[] mask_;
  mask_ = nullptr;
  maskCount_ = 0;
  maskAbsolute_ = false;
}

template <class T>
KyROI<T>::KyROI() noexcept : KyGenericROI(KyPixelTraits<T>::kBits) {}

template <class T>
KyROI<T>::KyROI(const KyROI<T>* parent, int x, int y, int width, int height) noexcept : KyROI() {
  parent_ = const_cast<KyROI<T>*>(parent);  // as GetParent returns it
  SetPlacement(x, y, width, height);
}

template <class T>
void KyROI<T>::SetPlacement(int x, int y, int width, int height) noexcept {
  if (this->fixed_) return;
  x_ = x;
  y_ = y;
  width_ = width;
  height_ = height;
}

// The byte of an existing pixel; otherwise sets the status and gives null.
template <class T>
KyBW8* KyROI<T>::Address(int x, int y) const noexcept {
  KyBW8* const address = static_cast<KyBW8*>(GetPixelPtr(0, 0));
  if (address == nullptr)
    ky::Explain(KY_ERROR_NO_IMAGE,
                "the ROI has no pixels: call SetSize, or place it inside its parent");
  else if (x < 0 || x >= width_)
    ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "x");
  else if (y < 0 || y >= height_)
    ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "y");
  else
    return static_cast<KyBW8*>(GetPixelPtr(x, y));
  return nullptr;
}

template <class T>
typename KyROI<T>::Value KyROI<T>::GetPixel(int x, int y) const noexcept {
  const KyBW8* const address = Address(x, y);
  if (address == nullptr) return Value{};
  if constexpr (KyPixelTraits<T>::kBits == 1) {
    return (*address >> (7 - GetBitOffset(x, y)) & 1) != 0;
  } else {
    Value value;
    std::memcpy(&value, address, sizeof value);
    return value;
  }
}

template <class T>
void KyROI<T>::SetPixel(Value value, int x, int y) noexcept {
  KyBW8* const address = Address(x, y);
  if (address == nullptr) return;
  if constexpr (KyPixelTraits<T>::kBits == 1) {
    const int bit = 0x80 >> GetBitOffset(x, y);
    *address = static_cast<KyBW8>(value ? *address | bit : *address & ~bit);
  } else {
    std::memcpy(address, &value, sizeof value);
  }
}

template class KyROI<KyBW1>;
template class KyROI<KyBW8>;
template class KyROI<KyBW16>;
template class KyROI<KyBW32>;
template class KyROI<KyC24>;
template class KyROI<KyC15>;
template class KyROI<KyC16>;
template class KyROI<KyC24A>;
template class KyROI<KyComplex64>;
