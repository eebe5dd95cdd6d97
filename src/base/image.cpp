#include "ky/image.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

#include "foundation/frame.h"
#include "foundation/pitch.h"

namespace {

constexpr std::align_val_t kAlignment{64};

std::int64_t RowBytes(int width, int bitsPerPixel) noexcept {
  return (std::int64_t{width} * bitsPerPixel + 7) / 8;
}

// Asks the system to map each piece of 2 MB within new memory as one page: large images otherwise
// spend up to a third of their time on the translation of addresses. This is advice, and takes no
// more memory.
void PreferLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::int64_t bytes) noexcept {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  constexpr std::uintptr_t kPage = 2 << 20;
  const auto from = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t first = (from + kPage - 1) / kPage * kPage;
  const std::uintptr_t end = (from + static_cast<std::uintptr_t>(bytes)) / kPage * kPage;
  if (first < end)
    (void)madvise(static_cast<char*>(memory) + (first - from), end - first, MADV_HUGEPAGE);
#endif
}

// Zeroed memory for rows of `pitch` bytes and the spare row; no pixels when it cannot be had.
KyPixelBuffer AllocateRows(std::int64_t pitch, int width, int height) noexcept {
  if (width < 0 || height < 0 || pitch > INT_MAX) return {};
  const std::int64_t bytes = ky::ImageBytes(pitch, height);  // below 2^62
  void* const memory = ::operator new(static_cast<std::size_t>(bytes), kAlignment, std::nothrow);
  if (memory == nullptr) return {};
  PreferLargePages(memory, bytes);
  std::memset(memory, 0, static_cast<std::size_t>(bytes));
  return {static_cast<KyBW8*>(memory), memory, static_cast<int>(pitch), width, height};
}

// The same with rows that start at 64-byte boundaries and do not compete for places in a cache.
KyPixelBuffer Allocate(int width, int height, int bitsPerPixel) noexcept {
  const std::int64_t rowBytes = std::max<std::int64_t>(RowBytes(width, bitsPerPixel), 1);
  return AllocateRows(ky::ImagePitch(rowBytes), width, height);
}

// True when the buffer owns the byte at `address`.
bool Owns(const KyPixelBuffer& buffer, std::uintptr_t address) noexcept {
  const auto offset = address - reinterpret_cast<std::uintptr_t>(buffer.allocation);
  return buffer.allocation != nullptr &&
         offset < static_cast<std::uintptr_t>(buffer.pitch) * (std::uintptr_t(buffer.height) + 1);
}

void Free(const KyPixelBuffer& buffer) noexcept {
  ::operator delete(buffer.allocation, kAlignment);
}

}  // namespace

template <class T>
KyImage<T>::KyImage() noexcept {
  this->buffer_ = &own_;
}

template <class T>
KyImage<T>::KyImage(int width, int height) noexcept : KyImage() {
  KyImage::SetSize(width, height);
}

template <class T>
KyImage<T>::KyImage(KyImage&& other) noexcept : KyImage() {
  *this = std::move(other);
}

template <class T>
KyImage<T>& KyImage<T>::operator=(KyImage&& other) noexcept {
  if (this == &other || this->fixed_) return *this;
  KyImage empty;
  KyImage& from = other.fixed_ ? empty : other;
  Free(own_);
  own_ = std::exchange(from.own_, {});
  this->TakePlace(from);
  return *this;
}

template <class T>
KyImage<T>::~KyImage() {
  Free(own_);
}

template <class T>
void KyImage<T>::SetSize(int width, int height) noexcept {
  KyOk();
  if (width == 0 && height == 0) return Adopt({});
  const KyPixelBuffer buffer =
      this->fixed_ ? KyPixelBuffer() : Allocate(width, height, this->bitsPerPixel_);
  if (buffer.pixels == nullptr) return KySetError(KY_ERROR_NOT_ENOUGH_MEMORY);
  Adopt(buffer);
}

template <class T>
void KyImage<T>::SetSize(const KyGenericROI* roi) noexcept {
  if (roi != nullptr) return SetSize(roi->GetWidth(), roi->GetHeight());
  KyOk();
  KySetError(KY_ERROR_NO_IMAGE);
}

template <class T>
KY_ERRORS KyImage<T>::Attach(Memory* pixels, int width, int height, int pitch) noexcept {
  return ky::Call("KyImage::Attach", [&] {
    constexpr int kAligned = alignof(Memory);
    const auto address = reinterpret_cast<std::uintptr_t>(pixels);
    if (pixels == nullptr || address % kAligned != 0 || Owns(own_, address))
      return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "pixels");
    if (width < 0) return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "width");
    if (height < 0) return ky::OutOfRange(KY_ERROR_PARAMETER_3_OUT_OF_RANGE, "height");
    if (pitch < RowBytes(width, this->bitsPerPixel_) || pitch % kAligned != 0)
      return ky::OutOfRange(KY_ERROR_PARAMETER_4_OUT_OF_RANGE, "pitch");
    if (this->fixed_) return KY_ERROR_NOT_ENOUGH_MEMORY;
    Adopt({reinterpret_cast<KyBW8*>(pixels), nullptr, pitch, width, height});
    return KY_OK;
  });
}

template <class T>
KY_ERRORS KyImage<T>::CopyFrom(const KyImage& other) noexcept {
  return ky::Call("KyImage::CopyFrom", [&] {
    if (this == &other) return KY_OK;
    if (this->fixed_) return KY_ERROR_NOT_ENOUGH_MEMORY;
    KyImage copy;
    const KyPixelBuffer& from = other.own_;
    if (from.pixels != nullptr) {
      // The offsets of a mask depend on the pitch.
      copy.own_ = AllocateRows(from.pitch, from.width, from.height);
      if (copy.own_.pixels == nullptr) return KY_ERROR_NOT_ENOUGH_MEMORY;
      const std::int64_t rowBytes = RowBytes(from.width, this->bitsPerPixel_);
      const std::int64_t rows = std::int64_t{from.height} + (from.allocation != nullptr ? 1 : 0);
      for (std::int64_t y = 0; rowBytes > 0 && y < rows; ++y)
        std::memcpy(copy.own_.pixels + y * from.pitch, from.pixels + y * from.pitch,
                    static_cast<std::size_t>(rowBytes));
    }
    copy.SetPlacement(other.x_, other.y_, other.width_, other.height_);
    if (other.GetMaskOffsets() != nullptr) {
      const KY_ERRORS error =
          copy.SetMask(other.GetMaskOffsets(), other.GetMaskCount(), other.IsMaskAbsolute());
      if (error != KY_OK) return error;
    }
    *this = std::move(copy);
    return KY_OK;
  });
}

template <class T>
void KyImage<T>::Restore(const void* object) noexcept {
  const auto field = [&](const int& own) noexcept {
    const auto offset = reinterpret_cast<const char*>(&own) - reinterpret_cast<const char*>(this);
    int value;
    std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof value);
    return value;
  };
  const int x = field(this->x_), y = field(this->y_);
  const int width = field(this->width_), height = field(this->height_);
  *this = KyImage();
  this->SetPlacement(x, y, width, height);
}

template <class T>
KyImage<T>& KyImage<T>::StandIn() noexcept {
  // Never destroyed: the last threads may still ask for it.
  alignas(KyImage) static unsigned char memory[sizeof(KyImage)];
  static KyImage* const image = [] {
    auto* const made = new (memory) KyImage();
    made->fixed_ = true;
    return made;
  }();
  return *image;
}

// Replaces the buffer, and makes the image cover the new one.
template <class T>
void KyImage<T>::Adopt(const KyPixelBuffer& buffer) noexcept {
  if (this->fixed_) return;
  Free(own_);
  own_ = buffer;
  this->SetPlacement(0, 0, buffer.width, buffer.height);
}

template class KyImage<KyBW1>;
template class KyImage<KyBW8>;
template class KyImage<KyBW16>;
template class KyImage<KyBW32>;
template class KyImage<KyC24>;
template class KyImage<KyC15>;
template class KyImage<KyC16>;
template class KyImage<KyC24A>;
template class KyImage<KyComplex64>;
