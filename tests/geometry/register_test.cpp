// Registration: pivots land where they should, and the solver behind it.
#include <cmath>

#include "geometry/solve.h"
#include "tests/support/harness.h"

namespace ky::test {
namespace {

// A picture with a spot of 3 x 3 pixels at each point, and the level that another shows there.
struct Spot {
  int x, y;
};
template <class T>
void Paint(KyImage<T>& image, std::initializer_list<Spot> spots, T level) {
  for (const Spot& spot : spots)
    for (int i = 0; i < 9; ++i) image.SetPixel(level, spot.x + i % 3 - 1, spot.y + i / 3 - 1);
}

template <class T>
void CheckPivots(T level, const char* threePivots) {
  for (const int bits : {0, 4, 8}) {
    KyImage<T> in(60, 50), out(70, 64);
    Paint(in, {{10, 12}, {40, 20}, {15, 41}}, level);
    ASSERT_EQ(ImgRegister(&in, &out, 10, 12, 30, 33, bits), KY_OK);
    EXPECT_EQ(out.GetPixel(30, 33), level);
    EXPECT_EQ(out.GetPixel(60, 41), level);
    EXPECT_NE(out.GetPixel(10, 12), level);
    // The direction from the first to the second pivot turns by 90 degrees; the length does not
    // change without scaling, and doubles with it.
    ASSERT_EQ(ImgRegister(&in, &out, 10, 12, 40, 20, 33, 10, 17, 70, bits, 0), KY_OK);
    EXPECT_EQ(out.GetPixel(33, 10), level);
    EXPECT_EQ(out.GetPixel(25, 40), level);
    ASSERT_EQ(ImgRegister(&in, &out, 10, 12, 40, 20, 33, 1, 17, 61, bits, 1), KY_OK);
    EXPECT_EQ(out.GetPixel(33, 1), level);
    EXPECT_EQ(out.GetPixel(17, 61), level);
    ASSERT_EQ(ImgRegister(&in, &out, 10, 12, 40, 20, 15, 41, 60, 5, 8, 30, 55, 50, bits), KY_OK);
    EXPECT_EQ(out.GetPixel(60, 5), level);
    EXPECT_EQ(out.GetPixel(8, 30), level);
    EXPECT_EQ(out.GetPixel(55, 50), level);
  }
  KyImage<T> in(6, 5), out(7, 6);
  const auto expect = [](KY_ERRORS status, const std::vector<const char*>& trace) {
    Harness<KyBW8>::ExpectTrace(status, trace);
  };
  const std::vector<const char*> chain = {"ImgLinearTransform", "ImgScaleRotate"};
  EXPECT_EQ(ImgRegister(&in, &out, 1, 1, 2, 2, 5), KY_ERROR_BAD_INTERVAL);
  expect(KY_ERROR_BAD_INTERVAL, chain);
  EXPECT_EQ(ImgRegister(&in, &out, 3, 3, 3, 3, 1, 1, 2, 2, 0, 1), KY_ERROR_TRANSFORM_LIMIT);
  EXPECT_EQ(ImgRegister(&in, &out, 3, 3, 3, 3, 1, 1, 1, 1, 0, 1), KY_ERROR_TRANSFORM_LIMIT);
  expect(KY_ERROR_TRANSFORM_LIMIT, chain);
  EXPECT_EQ(ImgRegister(&in, &out, 3, 3, 3, 3, 1, 1, 2, 2, 0, 0), KY_OK);
  EXPECT_EQ(ImgRegister(&in, &out, 0, 0, 1, 2, 2, 4, 0, 0, 5, 0, 0, 5, 0),
            KY_ERROR_SINGULAR_SYSTEM);
  expect(KY_ERROR_SINGULAR_SYSTEM, {threePivots});
  EXPECT_EQ(ImgRegister(&in, &out, 0, 0, 1, 0, 0, 1, 0, 0, 5, 5, 10, 10, 0),
            KY_ERROR_TRANSFORM_LIMIT);
  expect(KY_ERROR_TRANSFORM_LIMIT, {"ImgLinearTransform", threePivots});
}

TEST(Register, CarriesPivotsOntoPivots) {
  CheckPivots<KyBW8>(200, "ImgRegister (BW8, 3 pivots)");
  CheckPivots<KyC24>({200, 10, 90}, "ImgRegister (C24, 3 pivots)");
}

TEST(Solve, Cramer) {
  // Rows lie four elements apart; column k of the first three is an equation.
  const float matrix[12] = {2, 1, -1, 99, 0, 3, 4, 99, 1, -2, 0.5f, 99};
  const float u[3] = {1.5f, -2, 8};
  float r[3];
  for (int k = 0; k < 3; ++k) r[k] = matrix[k] * u[0] + matrix[4 + k] * u[1] + matrix[8 + k] * u[2];
  ASSERT_EQ(SolveCramer3(matrix, 4, r), KY_OK);
  for (int k = 0; k < 3; ++k) EXPECT_FLOAT_EQ(r[k], u[k]);
  const float singular[9] = {1, 2, 3, 2, 4, 6, 1, 1, 1};
  float kept[3] = {7, 8, 9};
  EXPECT_EQ(SolveCramer3(singular, 3, kept), KY_ERROR_SINGULAR_SYSTEM);
  EXPECT_EQ(kept[0] + kept[1] + kept[2], 24);
}

}  // namespace
}  // namespace ky::test
