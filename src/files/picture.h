// Images that pictures are decoded into.
#pragma once

#include <cstdint>

#include "foundation/frame.h"
#include "foundation/resize.h"
#include "ky/image.h"

namespace ky {

// A damaged header must not ask for all the memory that there is.
inline constexpr std::int64_t kMostPixels = 1 << 28;

inline KY_ERRORS TooLarge() noexcept {
  return Explain(KY_ERROR_NOT_ENOUGH_MEMORY, "the picture has more than 2^28 pixels");
}
inline KY_ERRORS EndsTooEarly() noexcept {
  return Explain(KY_ERROR_FILE_READ, "the file ends before its last pixel");
}

template <class T>
KY_ERRORS MakeImage(KyImage<T>& image, std::int64_t width, std::int64_t height) noexcept {
  if (width < 1 || height < 1)
    return Explain(KY_ERROR_FILE_FORMAT, "the picture has no columns or rows");
  if (width > kMostPixels / height) return TooLarge();
  return Resize(&image, static_cast<int>(width), static_cast<int>(height));
}

}  // namespace ky
