// Contours when memory runs out.
#include <gtest/gtest.h>

#include "ky/ky.h"
#include "tests/allocation/failing_new.h"

namespace {

using namespace ky::test;  // NOLINT

TEST(Allocation, ContoursKeepWhatWasRecorded) {
  // Teeth at every other column: a contour longer than the first 2000 groups of a generic vector.
  KyImage<KyBW8> image(200, 60);
  for (int y = 0; y < 60; ++y)
    for (int x = 0; x < 200; ++x) image.SetPixel(y == 0 || x % 4 == 0 ? 255 : 0, x, y);
  const auto trace = [&](auto&... output) {
    return ImgContour(&image, KY_CONTOUR_CCW_ALONG_BORDER, 0, 0, KY_CONTOUR_ABOVE_THRESHOLD, 128,
                      KY_CONNEXITY_4, &output...);
  };
  KyPathVector whole;
  ASSERT_EQ(trace(whole), KY_OK);

  KyPathVector path(1);
  CheckAllocationFailures(
      [&] { return trace(path); }, KY_ERROR_NOT_ENOUGH_MEMORY,
      {"KyVector::SetMaxElements", "KyVector::AddElement", "ImgContour (KyPathVector)"},
      [&] {
        bool same = path.GetNumElements() == path.GetMaxElements() && path.GetClosed() == 1;
        for (unsigned i = 0; i < path.GetNumElements(); ++i) same = same && path[i] == whole[i];
        path = KyPathVector(1);
        return same;
      },
      10);
  EXPECT_EQ(path.GetNumElements(), whole.GetNumElements());
}

TEST(Allocation, ContoursInGenericVectors) {
  KyImage<KyBW8> image(200, 160);
  for (int y = 0; y < 160; ++y)
    for (int x = 0; x < 200; ++x) image.SetPixel(y == 0 || x % 20 == 0 ? 255 : 0, x, y);
  KyVector vector;
  const auto trace = [&] {
    return ImgContour(&image, KY_CONTOUR_CCW_ALONG_BORDER, 0, 0, KY_CONTOUR_ABOVE_THRESHOLD, 128,
                      KY_CONNEXITY_4, &vector);
  };
  {
    FailingAllocation failing(1);
    EXPECT_EQ(trace(), KY_ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(vector.GetVectType(), 0);
  }
  ASSERT_EQ(vector.SetType(1, 2000, 0), KY_OK);
  CheckAllocationFailures(trace, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"KyVector::Reallocate", "ImgContour (KyVector)"},
                          [&] { return vector.GetNbGroup() == 2000; });
  EXPECT_GT(vector.GetNbGroup(), 2000);
}

}  // namespace
