#include "ky/vector_arithmetic.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "foundation/frame.h"
#include "vectors/elements.h"

namespace {

using ky::Call;
using ky::ForElements;
using std::ptrdiff_t;

// One operation on elements, see ARITH_LOGIC_OPERATIONS; `old` is the result's former value.
template <int kOperation, class T>
T Combine(T a, T b, T old) noexcept {
  using Limits = std::numeric_limits<T>;
  // Holds the sum and the product of any two elements.
  using Wide = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;
  constexpr Wide kMax = Limits::max(), kOneMore = kMax + 1;
  constexpr unsigned kCountMask = 31;
  const Wide wa = a, wb = b;  // NOLINT(bugprone-signed-char-misuse): numbers, not characters
  const auto limit = [](Wide v) {
    return static_cast<T>(std::clamp<Wide>(v, Limits::min(), Limits::max()));
  };
  const auto truth = [](bool v) { return v ? Limits::max() : T{0}; };
  const unsigned count = static_cast<unsigned>(b) & kCountMask;
  switch (kOperation) {
    case KY_OPER_COPY: return a;
    case KY_OPER_INVERT: return limit(kMax - wa);
    case KY_OPER_ADD: return limit(wa + wb);
    case KY_OPER_SUBTRACT: return wa > wb ? limit(wa - wb) : T{0};
    case KY_OPER_MULTIPLY: return limit(wa * wb);
    case KY_OPER_DIVIDE: return b != 0 ? limit(wa / wb) : Limits::max();
    case KY_OPER_MODULO: return b != 0 ? static_cast<T>(wa % wb) : T{0};
    case KY_OPER_SHIFT_LEFT: return static_cast<T>(static_cast<std::uint64_t>(wa) << count);
    case KY_OPER_SHIFT_RIGHT: return static_cast<T>(wa >> count);
    case KY_OPER_AVERAGE: return static_cast<T>((wa + wb) / 2);
    case KY_OPER_HALF_DIFFERENCE: return limit((wa + (kMax - wb)) / 2);
    case KY_OPER_SCALED_MULTIPLY: return limit(wa * wb / kOneMore);
    case KY_OPER_SCALED_DIVIDE: return b != 0 ? limit(kOneMore * wa / wb) : Limits::max();
    case KY_OPER_AND: return static_cast<T>(a & b);
    case KY_OPER_OR: return static_cast<T>(a | b);
    case KY_OPER_XOR: return static_cast<T>(a ^ b);
    case KY_OPER_LOGICAL_AND: return truth(a != 0 && b != 0);
    case KY_OPER_LOGICAL_OR: return truth(a != 0 || b != 0);
    case KY_OPER_LOGICAL_XOR: return truth((a != 0) != (b != 0));
    case KY_OPER_MIN: return std::min(a, b);
    case KY_OPER_MAX: return std::max(a, b);
    case KY_OPER_SET_WHERE_ZERO: return a == 0 ? b : old;
    case KY_OPER_SET_WHERE_NONZERO: return a != 0 ? b : old;
    case KY_OPER_EQUAL: return truth(a == b);
    case KY_OPER_NOT_EQUAL: return truth(a != b);
    case KY_OPER_GREATER_OR_EQUAL: return truth(a >= b);
    case KY_OPER_LESS_OR_EQUAL: return truth(a <= b);
    case KY_OPER_GREATER: return truth(a > b);
    case KY_OPER_LESS: return truth(a < b);
    case KY_OPER_ADD_WRAP: return static_cast<T>(wa + wb);
    case KY_OPER_SUBTRACT_WRAP: return static_cast<T>(wa - wb);
    case KY_OPER_ABS_DIFFERENCE: return limit(wa > wb ? wa - wb : wb - wa);
    default: return old;
  }
}

template <class T>
using CombineSpan = void (*)(T* out, ptrdiff_t n, const T* in, T constant);
template <int kOperation, class T>
void CombineAll(T* out, ptrdiff_t n, const T* in, T constant) {
  for (ptrdiff_t i = 0; i < n; ++i) out[i] = Combine<kOperation>(in[i], constant, out[i]);
}

constexpr int kOperations = KY_OPER_ABS_DIFFERENCE + 1;
bool IsKnown(ARITH_LOGIC_OPERATIONS operation) {
  return operation >= 0 && operation < kOperations && operation != KY_OPER_RESERVED_31 &&
         operation != KY_OPER_RESERVED_32;
}

// The elements in use, and those that there is room for.
ptrdiff_t Elements(const KyVector& vector) {
  return ptrdiff_t{vector.GetNbGroup()} * vector.GetGroupLength();
}
ptrdiff_t MostElements(const KyVector& vector) {
  return ptrdiff_t{vector.GetNbMaxGroup()} * vector.GetGroupLength();
}

KY_ERRORS TakeStructure(const KyVector& from, KyVector& to) {
  const int most = from.GetNbMaxGroup(), length = from.GetGroupLength();
  const KY_ERRORS error = from.GetVectType() != 0 ? to.SetType(from.GetVectType(), most, length)
                                                  : to.SetStructure(from.GetDataSize(), most,
                                                                    length, from.GetDataType());
  return error != KY_OK ? error : to.SetNbGroup(from.GetNbGroup());
}

}  // namespace

KY_ERRORS ImgVect1c2(ARITH_LOGIC_OPERATIONS operation, const KyVector* vector, int constant,
                     KyVector* result, int first, int last) noexcept {
  return Call("ImgVect1c2", [&] {
    if (!IsKnown(operation)) return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, "operation");
    if (vector == nullptr || result == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (!ky::HasKnownSize(*vector)) return KY_ERROR_VECTOR_DATA_TYPE;
    if (vector->GetDataType() != ky::kUnsigned && vector->GetDataType() != ky::kSigned)
      return KY_ERROR_VECTOR_1606;
    const bool structured = result->GetDataPtr() != nullptr;
    if (structured && (result->GetDataType() != vector->GetDataType() ||
                       result->GetDataSize() != vector->GetDataSize()))
      return KY_ERROR_VECTOR_1602;
    if (first < 0 || first > last || last >= Elements(*vector) ||
        (structured && last >= MostElements(*result)))
      return ky::OutOfRange(KY_ERROR_PARAMETER_OUT_OF_RANGE, first < 0 ? "first" : "last");
    if (!structured)
      if (const KY_ERRORS error = TakeStructure(*vector, *result)) return error;
    const int groups = last / result->GetGroupLength() + 1;
    if (result->GetNbGroup() < groups) result->SetNbGroup(groups);
    return ForElements(*vector, [&](auto type) {
      using T = decltype(type);
      static constexpr auto kSpans = []<int... k>(std::integer_sequence<int, k...>) {
        return std::array<CombineSpan<T>, sizeof...(k)>{&CombineAll<k, T>...};
      }
      (std::make_integer_sequence<int, kOperations>());
      const ptrdiff_t n = ptrdiff_t{last} - first + 1;
      kSpans[operation](static_cast<T*>(result->GetDataPtr()) + first, n,
                        static_cast<const T*>(vector->GetDataPtr()) + first,
                        static_cast<T>(constant));
      return KY_OK;
    });
  });
}

KY_ERRORS ImgVect1c2(ARITH_LOGIC_OPERATIONS, const KyVector* vector, double,
                     KyVector* result) noexcept {
  return Call("ImgVect1c2", [&] {
    if (vector == nullptr || result == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    return vector->GetDataType() == ky::kFloat ? KY_ERROR_VECTOR_DATA_TYPE : KY_ERROR_VECTOR_1606;
  });
}
