// Operations on generic vectors against models written from the definitions.
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "ky/ky.h"
#include "ky/vector_arithmetic.h"
#include "ky/vector_transitions.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

// A vector of integers of type T.
template <class T>
KyVector Make(int groups, int groupLength, const std::vector<T>& elements) {
  KyVector vector;
  EXPECT_EQ(vector.SetStructure(2 * static_cast<int>(sizeof(T)), groups, groupLength,
                                std::is_signed_v<T> ? 2 : 1),
            KY_OK);
  vector.SetNbGroup(groups);
  if (!elements.empty())
    std::memcpy(vector.GetDataPtr(), elements.data(), elements.size() * sizeof(T));
  return vector;
}
template <class T>
std::vector<T> ElementsOf(const KyVector& vector) {
  const auto* const first = static_cast<const T*>(vector.GetDataPtr());
  return {first, first + vector.GetNbMaxGroup() * vector.GetGroupLength()};
}

// Holds every sum, product and quotient exactly enough to truncate.
#if LDBL_MANT_DIG >= 113
using Number = long double;
#else
using Number = __float128;
#endif

// The table of the operators, on numbers without bounds.
template <class T>
T Model(int operation, T x, T y, T old) {
  using Limits = std::numeric_limits<T>;
  constexpr T kMax = Limits::max();
  const std::int64_t a = x, b = y;
  const Number max = kMax, fa = a, fb = b;
  const auto limit = [](Number v) {
    if (v > Number{Limits::max()}) return Limits::max();
    if (v < Number{Limits::min()}) return Limits::min();
    return static_cast<T>(v);
  };
  const auto flag = [](bool v) { return v ? Limits::max() : T{0}; };
  const int shift = static_cast<int>(b & 31);
  switch (operation) {
    case 0: return x;
    case 1: return limit(max - fa);
    case 2: return limit(fa + fb);
    case 3: return limit(fa > fb ? fa - fb : 0);
    case 4: return limit(fa * fb);
    case 5: return b == 0 ? kMax : limit(fa / fb);
    case 6: return b == 0 ? T{0} : static_cast<T>(a % b);
    case 7: return static_cast<T>(static_cast<std::uint64_t>(a) << shift);
    case 8: return static_cast<T>(a >> shift);
    case 9: return limit((fa + fb) / 2);
    case 10: return limit((fa + max - fb) / 2);
    case 11: return limit(fa * fb / (max + 1));
    case 12: return b == 0 ? kMax : limit((max + 1) * fa / fb);
    case 13: return static_cast<T>(a & b);
    case 14: return static_cast<T>(a | b);
    case 15: return static_cast<T>(a ^ b);
    case 16: return flag(a != 0 && b != 0);
    case 17: return flag(a != 0 || b != 0);
    case 18: return flag((a == 0) != (b == 0));
    case 19: return a < b ? x : y;
    case 20: return a > b ? x : y;
    case 21: return a == 0 ? y : old;
    case 22: return a != 0 ? y : old;
    case 23: return flag(a == b);
    case 24: return flag(a != b);
    case 25: return flag(a >= b);
    case 26: return flag(a <= b);
    case 27: return flag(a > b);
    case 28: return flag(a < b);
    case 29: return static_cast<T>(a + b);
    case 30: return static_cast<T>(a - b);
    default: return limit(fa > fb ? fa - fb : fb - fa);
  }
}

template <class T>
void CheckArithmetic() {
  Random random(1);
  const auto any = [&]() -> T {
    using Limits = std::numeric_limits<T>;
    switch (random() % 6) {
      case 0: return Limits::max();
      case 1: return Limits::min();
      case 2: return static_cast<T>(random() % 3);
      case 3: return static_cast<T>(T(0) - static_cast<T>(random() % 40));
      default: return static_cast<T>(random());
    }
  };
  for (int operation = 0; operation < 34; ++operation) {
    if (operation == 31 || operation == 32) continue;
    for (int turn = 0; turn < 40; ++turn) {
      SCOPED_TRACE("operation " + std::to_string(operation));
      std::vector<T> in, old;
      for (int i = 0; i < 60; ++i) {
        in.push_back(any());
        old.push_back(any());
      }
      KyVector vector = Make(20, 3, in), result = Make(30, 2, old);
      result.SetNbGroup(0);
      const int first = static_cast<int>(random() % 60);
      const int last = first + static_cast<int>(random() % static_cast<unsigned>(60 - first));
      const T narrow = any();
      // Bits above the elements' size do not matter.
      const auto noise = static_cast<std::uint64_t>(random()) << 8 * sizeof(T);
      const int constant = static_cast<int>(static_cast<std::make_unsigned_t<T>>(narrow) | noise);
      const auto op = static_cast<ARITH_LOGIC_OPERATIONS>(operation);
      for (int i = first; i <= last; ++i) {
        const auto at = static_cast<std::size_t>(i);
        old[at] = Model<T>(operation, in[at], narrow, old[at]);
      }
      ASSERT_EQ(ImgVect1c2(op, &vector, constant, &result, first, last), KY_OK);
      ASSERT_EQ(ElementsOf<T>(result), old);
      EXPECT_EQ(ElementsOf<T>(vector), in);
      EXPECT_EQ(result.GetNbGroup(), last / 2 + 1);
      for (int i = first; i <= last; ++i) {
        const auto at = static_cast<std::size_t>(i);
        in[at] = Model<T>(operation, in[at], narrow, in[at]);
      }
      ASSERT_EQ(ImgVect1c2(op, &vector, constant, &vector, first, last), KY_OK);
      ASSERT_EQ(ElementsOf<T>(vector), in) << "in place";
    }
  }
}

TEST(VectorOperations, Arithmetic) {
  CheckArithmetic<std::uint8_t>();
  CheckArithmetic<std::int8_t>();
  CheckArithmetic<std::uint16_t>();
  CheckArithmetic<std::int16_t>();
  CheckArithmetic<std::uint32_t>();
  CheckArithmetic<std::int32_t>();
}

TEST(VectorOperations, ArithmeticRefusals) {
  KyVector vector = Make<std::int16_t>(4, 3, {}), other = Make<std::uint16_t>(4, 3, {});
  KyVector shorter = Make<std::int16_t>(5, 2, {}), floats, empty, histogram;
  floats.SetStructure(8, 4, 1, 4);
  histogram.SetType(2, 6, 0);
  histogram.SetNbGroup(6);
  const struct {
    int operation;
    KyVector *vector, *result;
    int first, last, code;
  } cases[] = {
      {31, nullptr, nullptr, 0, 0, 1003},     {32, &vector, &empty, 0, 0, 1003},
      {34, &vector, &empty, 0, 0, 1003},      {-1, &vector, &empty, 0, 0, 1003},
      {2, nullptr, &vector, 0, 0, 1601},      {2, &vector, nullptr, 0, 0, 1601},
      {2, &floats, &empty, 0, 0, 1606},       {2, &vector, &other, 0, 0, 1602},
      {2, &vector, &floats, 0, 0, 1602},      {2, &vector, &empty, -1, 0, 1010},
      {2, &vector, &empty, 0, 12, 1010},      {2, &vector, &empty, 5, 4, 1010},
      {2, &vector, &empty, 0, INT_MAX, 1010}, {2, &vector, &shorter, 0, 10, 1010},
      {2, &empty, &vector, 0, 0, 1010},       {2, &vector, &shorter, 9, 9, 0},
  };
  empty.SetStructure(4, 0, 3, 2);
  for (const auto& c : cases) {
    const KY_ERRORS status = ImgVect1c2(static_cast<ARITH_LOGIC_OPERATIONS>(c.operation), c.vector,
                                        7, c.result, c.first, c.last);
    EXPECT_EQ(status, c.code);
    if (c.code != 0) Harness<KyBW8>::ExpectTrace(status, {"ImgVect1c2"});
    EXPECT_EQ(empty.GetDataPtr(), nullptr);
  }
  // A vector without data takes the structure over.
  KyVector none[2];
  EXPECT_EQ(ImgVect1c2(KY_OPER_ADD, &vector, 7, &none[0], 2, 3), KY_OK);
  EXPECT_EQ(ElementsOf<std::int16_t>(none[0]),
            (std::vector<std::int16_t>{0, 0, 7, 7, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(none[0].GetNbGroup(), 4);
  EXPECT_EQ(ImgVect1c2(KY_OPER_ADD, &histogram, 7, &none[1], 2, 2), KY_OK);
  EXPECT_EQ(none[1].GetVectType(), 2);
  const auto real = [](KyVector* v) { return ImgVect1c2(KY_OPER_ADD, v, 1.5, v); };
  EXPECT_EQ(real(&floats), KY_ERROR_VECTOR_DATA_TYPE);
  EXPECT_EQ(real(&vector), KY_ERROR_VECTOR_1606);
  EXPECT_EQ(real(nullptr), KY_ERROR_BAD_VECTOR_TYPE);
  Harness<KyBW8>::ExpectTrace(KY_ERROR_BAD_VECTOR_TYPE, {"ImgVect1c2"});
}

template <class T>
void CheckTransitions() {
  Random random(2);
  for (int turn = 0; turn < 200; ++turn) {
    const int length = 1 + static_cast<int>(random() % 100);
    std::vector<T> v;
    for (int i = 0; i < 2 * length; ++i)
      v.push_back(turn % 3 == 0 ? static_cast<T>(random()) : static_cast<T>(random() % 3 - 1));
    if (turn % 7 == 0) v[0] = std::numeric_limits<T>::min(), v[1] = std::numeric_limits<T>::max();
    KyVector vector = Make(2, length, v), out;
    const int bytes = static_cast<int>(random() % 3) * static_cast<int>(random() % 300);
    if (bytes > 0) out.Reallocate(bytes);
    const int threshold = turn % 3 == 0 ? static_cast<int>(static_cast<T>(random())) : turn % 2;
    const int most = (bytes > 0 ? bytes : length / 2) / 8;
    std::vector<std::int32_t> expected;
    for (int i = 0; i + 1 < length; ++i) {
      const std::int64_t p = v[static_cast<std::size_t>(i)], c = v[static_cast<std::size_t>(i) + 1];
      if ((p <= threshold && threshold < c) || (threshold < p && c <= threshold))
        expected.insert(expected.end(), {i, static_cast<std::int32_t>(c - p)});
    }
    const int found = static_cast<int>(expected.size() / 2);
    const KY_ERRORS code = most == 0      ? KY_ERROR_BAD_VECTOR_TYPE
                           : found > most ? KY_ERROR_VECTOR_1608
                                          : KY_OK;
    ASSERT_EQ(ImgGetVectTransition(&vector, &out, threshold), code);
    if (code != KY_OK) {
      Harness<KyBW8>::ExpectTrace(code, {"ImgGetVectTransition"});
      EXPECT_EQ(out.GetNbGroup(), 0);
      continue;
    }
    ASSERT_EQ(out.GetNbGroup(), found);
    EXPECT_EQ(out.GetNbMaxGroup(), most);
    EXPECT_EQ(out.GetGroupLength(), 2);
    EXPECT_EQ(out.GetUse(), 7);
    const auto records = ElementsOf<std::int32_t>(out);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), records.begin()));
  }
}

TEST(VectorOperations, TransitionsOfVectors) {
  CheckTransitions<std::int8_t>();
  CheckTransitions<std::int16_t>();
  CheckTransitions<std::int32_t>();
  KyVector vector = Make<std::int8_t>(1, 40, {}), none = Make<std::int8_t>(0, 4, {}), out;
  KyVector counts = Make<std::uint8_t>(1, 40, {});
  EXPECT_EQ(ImgGetVectTransition(nullptr, &out, 0), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(ImgGetVectTransition(&vector, nullptr, 0), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(ImgGetVectTransition(&vector, &vector, 0), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(ImgGetVectTransition(&none, &out, 0), KY_ERROR_VECTOR_1604);
  EXPECT_EQ(ImgGetVectTransition(&counts, &out, 0), KY_ERROR_VECTOR_1606);
}

}  // namespace
