// The counts in histogram vectors.
#pragma once

#include <algorithm>

#include "foundation/kernels/counts.h"
#include "ky/histogram_vector.h"
#include "ky/vector.h"

namespace ky {

// KY_ERROR_BAD_VECTOR_TYPE (1601) for null, KY_ERROR_NOT_256_ENTRIES (1613) unless it holds a count
// for each of 256 levels.
inline KY_ERRORS CheckLevels(const KyBW8HistogramVector* histogram) noexcept {
  if (histogram == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
  return histogram->GetNumElements() == kLevels ? KY_OK : KY_ERROR_NOT_256_ENTRIES;
}

// The counts of a generic vector: KY_ERROR_BAD_VECTOR_TYPE (1601) for null, `otherType` unless it
// is of type 2, 1601 when it has no room for 256.
inline constexpr int kCountVector = 2, kTableVector = 3;
template <class Count>  // std::uint32_t, perhaps const
KY_ERRORS CountsOf(const KyVector* histogram, KY_ERRORS otherType, Count*& counts) noexcept {
  if (histogram == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
  if (!histogram->IsSameVectType(kCountVector)) return otherType;
  if (histogram->GetAllocatedSize() < static_cast<int>(sizeof(Counts)))
    return KY_ERROR_BAD_VECTOR_TYPE;
  counts = static_cast<Count*>(histogram->GetDataPtr());
  return KY_OK;
}

// Puts the groups in use that the first `elements` elements touch.
inline void UseElements(KyVector* vector, int elements) noexcept {
  const int groups = (elements - 1) / vector->GetGroupLength() + 1;
  vector->SetNbGroup(std::min(groups, vector->GetNbMaxGroup()));
}

}  // namespace ky
