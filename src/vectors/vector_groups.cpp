#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "foundation/frame.h"
#include "ky/vector_arithmetic.h"
#include "vectors/elements.h"

namespace {

using ky::Call;
using std::ptrdiff_t;

struct Extremes {
  int minimum, maximum, whereMinimum, whereMaximum;
};

template <class T>
Extremes ExtremesOf(const T* first, int groups, ptrdiff_t length) noexcept {
  int least = 0, greatest = 0;
  for (int i = 1; i < groups; ++i) {
    const T element = first[i * length];
    if (element < first[least * length]) least = i;
    if (element > first[greatest * length]) greatest = i;
  }
  return {static_cast<int>(first[least * length]), static_cast<int>(first[greatest * length]),
          least, greatest};
}

KY_ERRORS FindExtremes(const KyVector* vector, Extremes& extremes) noexcept {
  return Call("ImgGetVectExtremes", [&] {
    if (vector == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = ky::CheckElements(*vector, ky::kUnsigned | ky::kSigned))
      return error;
    return ky::ForElements(*vector, [&](auto type) {
      extremes = ExtremesOf(static_cast<const decltype(type)*>(vector->GetDataPtr()),
                            vector->GetNbGroup(), vector->GetGroupLength());
      return KY_OK;
    });
  });
}

}  // namespace

KY_ERRORS ImgGetVectExtremes(const KyVector* vector, int& minimum, int& maximum) noexcept {
  Extremes extremes = {minimum, maximum, 0, 0};
  const KY_ERRORS error = FindExtremes(vector, extremes);
  minimum = extremes.minimum;
  maximum = extremes.maximum;
  return error;
}
KY_ERRORS ImgGetVectExtremes(const KyVector* vector, int& minimum, int& maximum, int& whereMinimum,
                             int& whereMaximum) noexcept {
  Extremes extremes = {minimum, maximum, whereMinimum, whereMaximum};
  const KY_ERRORS error = FindExtremes(vector, extremes);
  minimum = extremes.minimum;
  maximum = extremes.maximum;
  whereMinimum = extremes.whereMinimum;
  whereMaximum = extremes.whereMaximum;
  return error;
}

KY_ERRORS ImgVectDataShift(KyVector* vector, int positions) noexcept {
  return Call("ImgVectDataShift", [&] {
    if (vector == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error =
            ky::CheckElements(*vector, ky::kUnsigned | ky::kSigned | ky::kFloat))
      return error;
    const ptrdiff_t groups = vector->GetNbGroup();
    const ptrdiff_t bytes = ptrdiff_t{vector->GetDataSize() / 2} * vector->GetGroupLength();
    const ptrdiff_t lost = std::min(std::abs(ptrdiff_t{positions}), groups);
    const auto kept = static_cast<std::size_t>((groups - lost) * bytes);
    const auto empty = static_cast<std::size_t>(lost * bytes);
    auto* const first = static_cast<std::uint8_t*>(vector->GetDataPtr());
    std::uint8_t* const to = positions > 0 ? first + empty : first;
    std::memmove(to, positions > 0 ? first : first + empty, kept);
    std::memset(positions > 0 ? first : first + kept, 0, empty);
    return KY_OK;
  });
}
