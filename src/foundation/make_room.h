// Room in a vector for results.
#pragma once

#include <utility>

#include "ky/typed_vector.h"

namespace ky {

// Leaves `count` elements in the vector, of any values. It stays as it was when there is no memory
// for them.
template <class T>
KY_ERRORS MakeRoom(KyVectorTemplate<T>& vector, unsigned count) noexcept {
  if (count <= vector.GetMaxElements()) return vector.SetNumElements(count);
  KyVectorTemplate<T> larger;
  const KY_ERRORS error = larger.SetNumElements(count);
  if (error == KY_OK) vector = std::move(larger);
  KyOk();  // the function's own name stands in the trace, not that of this step
  return error;
}

}  // namespace ky
