// Images of the library's own, and those that it resizes for a caller.
#pragma once

#include "ky/image.h"
#include "ky/status.h"

namespace ky {

// Gives an image a size; KY_ERROR_NOT_ENOUGH_MEMORY (1303) when it cannot have it, and it stays as
// it was.
template <class T>
KY_ERRORS Resize(KyImage<T>* image, int width, int height) noexcept {
  image->SetSize(width, height);  // clears the status first
  return KyGetError();
}

}  // namespace ky
