// The memory of vectors that a call writes. An image may have been attached to it.
#pragma once

#include <cstddef>

#include "foundation/rows.h"
#include "ky/typed_vector.h"
#include "ky/vector.h"

namespace ky {

// The array of a vector as one row of bytes, for SharingOf and Input::OpenApart: what lies in it
// must be read before the vector grows, which frees the array.
inline Rows<const KyBW8> ArrayOf(const KyVector& vector) noexcept {
  const std::ptrdiff_t bytes = vector.GetAllocatedSize();
  return {static_cast<const KyBW8*>(vector.GetDataPtr()), bytes, bytes, bytes > 0 ? 1 : 0};
}
template <class T>
Rows<const KyBW8> ArrayOf(const KyVectorTemplate<T>& vector) noexcept {
  const std::ptrdiff_t bytes = std::ptrdiff_t{vector.GetMaxElements()} * std::ptrdiff_t{sizeof(T)};
  return {reinterpret_cast<const KyBW8*>(vector.GetDataPtr()), bytes, bytes, bytes > 0 ? 1 : 0};
}

}  // namespace ky
