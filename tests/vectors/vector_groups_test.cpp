// Extremes, shifts, convolution and unsigned transitions of generic vectors, against models.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "ky/ky.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

template <class T>
constexpr int kTypeOf = std::is_floating_point_v<T> ? 4
                        : std::is_signed_v<T>       ? 2
                                                    : 1;

template <class T>
KyVector Make(int groupLength, const std::vector<T>& elements) {
  KyVector vector;
  const int groups = static_cast<int>(elements.size()) / groupLength;
  EXPECT_EQ(vector.SetStructure(2 * static_cast<int>(sizeof(T)), groups, groupLength, kTypeOf<T>),
            KY_OK);
  vector.SetNbGroup(groups);
  if (!elements.empty())
    std::memcpy(vector.GetDataPtr(), elements.data(), elements.size() * sizeof(T));
  return vector;
}
template <class T>
std::vector<T> ElementsOf(const KyVector& vector) {
  const auto* const first = static_cast<const T*>(vector.GetDataPtr());
  return {first, first + vector.GetNbGroup() * vector.GetGroupLength()};
}
template <class T>
std::vector<T> RandomElements(std::size_t count, Random& random, bool few) {
  std::vector<T> elements;
  for (std::size_t i = 0; i < count; ++i)
    elements.push_back(static_cast<T>(few ? random() % 4 : random()));
  if (few && count > 3) elements[count / 2] = std::numeric_limits<T>::max();
  return elements;
}

// check(T(), group length, elements) on vectors of all integers, and of floats where wanted.
template <class Check>
void ForVectors(bool floats, Check check) {
  Random random(5);
  for (const int length : {1, 2, 3}) {
    for (const std::size_t groups : {1u, 2u, 17u, 40u}) {
      for (const bool few : {false, true}) {
        SCOPED_TRACE(std::to_string(groups) + " groups of " + std::to_string(length));
        const auto run = [&](auto type) {
          using T = decltype(type);
          check(type, length, RandomElements<T>(groups * std::size_t(length), random, few));
        };
        run(std::uint8_t()), run(std::int8_t()), run(std::uint16_t()), run(std::int16_t());
        run(std::uint32_t()), run(std::int32_t());
        if (floats) run(float());
      }
    }
  }
}

TEST(VectorGroups, Extremes) {
  ForVectors(false, [](auto type, int length, const auto& v) {
    using T = decltype(type);
    KyVector vector = Make(length, v);
    T least = v[0], most = v[0];
    int whereLeast = 0, whereMost = 0;
    for (int i = vector.GetNbGroup() - 1; i >= 0; --i) {
      const T element = v[static_cast<std::size_t>(i * length)];
      if (element <= least) least = element;
      if (element >= most) most = element;
    }
    while (v[static_cast<std::size_t>(whereLeast * length)] != least) ++whereLeast;
    while (v[static_cast<std::size_t>(whereMost * length)] != most) ++whereMost;
    int a = 0, b = 0, c = -1, d = -1;
    ASSERT_EQ(ImgGetVectExtremes(&vector, a, b), KY_OK);
    EXPECT_EQ(a, static_cast<int>(least));
    EXPECT_EQ(b, static_cast<int>(most));
    ASSERT_EQ(ImgGetVectExtremes(&vector, a = 0, b = 0, c, d), KY_OK);
    EXPECT_EQ(a, static_cast<int>(least));
    EXPECT_EQ(b, static_cast<int>(most));
    EXPECT_EQ(c, whereLeast);
    EXPECT_EQ(d, whereMost);
  });
}

TEST(VectorGroups, DataShift) {
  ForVectors(true, [](auto type, int length, const auto& v) {
    using T = decltype(type);
    for (const int by : {0, 1, -1, 5, -16, 40, -41, INT_MAX, INT_MIN}) {
      KyVector vector = Make(length, v);
      std::vector<T> expected(v.size(), T(0));
      for (std::size_t i = 0; i < v.size(); ++i) {
        const std::int64_t to = static_cast<std::int64_t>(i) + std::int64_t{by} * length;
        if (to >= 0 && to < static_cast<std::int64_t>(v.size()))
          expected[static_cast<std::size_t>(to)] = v[i];
      }
      ASSERT_EQ(ImgVectDataShift(&vector, by), KY_OK);
      EXPECT_EQ(ElementsOf<T>(vector), expected) << "by " << by;
    }
  });
}

struct Line {
  std::vector<float> coefficients;
  bool column;
  float gain;
  int offset;
  std::int16_t rectifier;
};
KyKernel& operator<<(KyKernel& kernel, const Line& line) {
  const auto n = static_cast<std::int16_t>(line.coefficients.size());
  kernel.SetSizeX(line.column ? 1 : n);
  kernel.SetSizeY(line.column ? n : 1);
  for (int k = 0; k < n; ++k)
    kernel.SetKernelData(line.column ? 0 : k, line.column ? k : 0,
                         line.coefficients[static_cast<std::size_t>(k)]);
  kernel.SetGain(line.gain);
  kernel.SetOffset(static_cast<unsigned>(line.offset));
  kernel.SetRectifier(line.rectifier);
  return kernel;
}

TEST(VectorGroups, Convolution) {
  const Line lines[] = {
      {{1}, false, 1, 0, 2},
      {{1, 2, 1}, true, 1, 0, 0},
      {{-1, 0, 1}, false, 1, 0, 3},
      {{-1, 0, 1}, true, 0.5f, 100, 0},
      {{-1, 1}, false, 1, -3, 1},
      {{1, 1, 1, 1}, false, 2, 5, 2},
      {{3, -1, 2, 0, 0, 4, 7}, true, 0.3f, 0, 9},
      {std::vector<float>(99, 1), false, 1, 0, 2},
      {{NAN, 1, INFINITY}, false, 1, 0, 2},
  };
  for (const Line& line : lines) {
    KyKernel kernel;
    kernel << line;
    float sum = 0, magnitudes = 0;
    for (const float c : line.coefficients) {
      sum += std::isnan(c) ? 0 : c;
      magnitudes += std::isnan(c) ? 0 : std::fabs(c);
    }
    const float gain = std::fabs(sum) > 0.00001f * magnitudes ? line.gain / sum : line.gain;
    ForVectors(false, [&](auto type, int length, const auto& v) {
      using T = decltype(type);
      const int groups = static_cast<int>(v.size()) / length;
      std::vector<T> expected;
      for (int i = 0; i < groups; ++i) {
        double r = 0;
        const int n = static_cast<int>(line.coefficients.size());
        for (int k = 0; k < n; ++k) {
          const int from = std::clamp(i - n / 2 + k, 0, groups - 1);
          const float c = line.coefficients[static_cast<std::size_t>(k)];
          const float scaled = (std::isnan(c) ? 0 : c) * gain;
          r += (std::isnan(scaled) ? 0.0 : double{scaled}) *
               static_cast<double>(v[static_cast<std::size_t>(from * length)]);
        }
        if (std::isnan(r)) r = 0;
        r = line.rectifier == 1   ? std::fmax(-r, 0)
            : line.rectifier == 2 ? std::fmax(r, 0)
            : line.rectifier == 3 ? std::fabs(r)
                                  : r;
        const auto rounded = std::floor(static_cast<long double>(r + line.offset) + 0.5L);
        const long double most = std::numeric_limits<T>::max();
        const long double least = std::numeric_limits<T>::min();
        expected.push_back(static_cast<T>(std::clamp(rounded, least, most)));
      }
      KyVector source = Make(length, v), result;
      ASSERT_EQ(ImgConvolVect(&source, &kernel, &result), KY_OK);
      EXPECT_EQ(result.GetGroupLength(), 1);
      EXPECT_EQ(result.GetDataType(), kTypeOf<T>);
      EXPECT_EQ(ElementsOf<T>(result), expected);
      EXPECT_EQ(ElementsOf<T>(source), v);
      std::vector<T> inPlace = v;
      for (int i = 0; i < groups; ++i)
        inPlace[static_cast<std::size_t>(i * length)] = expected[static_cast<std::size_t>(i)];
      ASSERT_EQ(ImgConvolVect(&source, &kernel, &source), KY_OK);
      EXPECT_EQ(ElementsOf<T>(source), inPlace);
      EXPECT_EQ(source.GetGroupLength(), length);
    });
  }
}

TEST(VectorGroups, UnsignedTransitions) {
  KyVector bytes = Make<std::uint8_t>(6, {9, 200, 201, 200, 0, 255});
  KyVector words =
      Make<std::uint32_t>(16, {0, 4000000000u, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  KyVector out;
  out.Reallocate(64);
  ASSERT_EQ(ImgGetVectTransition(&bytes, &out, 200u), KY_OK);
  EXPECT_EQ(ElementsOf<int>(out), (std::vector<int>{1, 1, 2, -1, 4, 255}));
  ASSERT_EQ(ImgGetVectTransition(&words, &out, 3999999999u), KY_OK);
  EXPECT_EQ(ElementsOf<int>(out),
            (std::vector<int>{0, static_cast<int>(4000000000u), 1, static_cast<int>(294967297u)}));
  EXPECT_EQ(ImgGetVectTransition(&bytes, &out, 200), KY_ERROR_VECTOR_1606);
}

TEST(VectorGroups, Refusals) {
  using H = Harness<KyBW8>;
  int a = 7, b = 8, c = 9, d = 10;
  KyVector none, floats = Make<float>(1, {1, 2}), good = Make<std::int16_t>(2, {1, 2, 3, 4});
  KyVector out;
  KyKernel empty, grid(KERNEL_UNIFORM_3X3), line;
  line << Line{{1, 1}, true, 1, 0, 0};
  const struct {
    KyVector* vector;
    int extremes, shift, transition;
  } cases[] = {{nullptr, 1601, 1601, 1601}, {&none, 1604, 1604, 1604}, {&floats, 1606, 0, 1606}};
  for (const auto& [vector, extremes, shift, transition] : cases) {
    EXPECT_EQ(ImgGetVectExtremes(vector, a, b), extremes);
    EXPECT_EQ(ImgGetVectExtremes(vector, a, b, c, d), extremes);
    H::ExpectTrace(static_cast<KY_ERRORS>(extremes), {"ImgGetVectExtremes"});
    EXPECT_EQ(ImgConvolVect(vector, nullptr, nullptr), extremes);
    H::ExpectTrace(static_cast<KY_ERRORS>(extremes), {"ImgConvolVect"});
    EXPECT_EQ(ImgGetVectTransition(vector, &out, 3u), transition);
    EXPECT_EQ(ImgVectDataShift(vector, 1), shift);
    if (shift != 0) H::ExpectTrace(static_cast<KY_ERRORS>(shift), {"ImgVectDataShift"});
  }
  EXPECT_EQ((std::vector<int>{a, b, c, d}), (std::vector<int>{7, 8, 9, 10}));
  EXPECT_EQ(ImgConvolVect(&good, nullptr, nullptr), KY_ERROR_KERNEL_SIZE);
  EXPECT_EQ(ImgConvolVect(&good, &empty, nullptr), KY_ERROR_KERNEL_SIZE);
  KyKernel without(KERNEL_UNIFORM_3X3);
  without.SetSizeX(0);
  EXPECT_EQ(ImgConvolVect(&good, &without, nullptr), KY_ERROR_KERNEL_SIZE);
  EXPECT_EQ(ImgConvolVect(&good, &grid, nullptr), KY_ERROR_KERNEL_1701);
  EXPECT_EQ(ImgConvolVect(&good, &line, nullptr), KY_ERROR_BAD_VECTOR_TYPE);
}

}  // namespace
