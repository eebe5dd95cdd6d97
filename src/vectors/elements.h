// The types of the elements of generic vectors.
#pragma once

#include <cstdint>

#include "ky/status.h"
#include "ky/vector.h"

namespace ky {

inline constexpr int kUnsigned = 1, kSigned = 2, kFloat = 4;

// Runs `body(T())` with the integer type that a vector consists of.
template <class Body>
KY_ERRORS ForElements(const KyVector& vector, Body body) noexcept {
  const auto ofSize = [&](auto i8, auto i16, auto i32) {
    switch (vector.GetDataSize()) {
      case 2: return body(i8);
      case 4: return body(i16);
      default: return body(i32);
    }
  };
  // NOLINTNEXTLINE(bugprone-branch-clone): the types differ
  return vector.GetDataType() == kSigned ? ofSize(std::int8_t(), std::int16_t(), std::int32_t())
                                         : ofSize(std::uint8_t(), std::uint16_t(), std::uint32_t());
}
inline bool HasKnownSize(const KyVector& vector) noexcept {
  const int size = vector.GetDataSize();
  return size == 2 || size == 4 || size == 8;
}

// KY_ERROR_VECTOR_1604 for a vector without groups, 1605 for an unknown size of elements, 1606 for
// a data type that is not among `types`, a sum of the constants above.
inline KY_ERRORS CheckElements(const KyVector& vector, int types) noexcept {
  if (vector.GetNbGroup() < 1) return KY_ERROR_VECTOR_1604;
  if (!HasKnownSize(vector)) return KY_ERROR_VECTOR_DATA_TYPE;
  return (vector.GetDataType() & types) != 0 ? KY_OK : KY_ERROR_VECTOR_1606;
}

}  // namespace ky
