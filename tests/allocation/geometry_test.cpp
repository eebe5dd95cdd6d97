// Geometric transforms when memory runs out.
#include <gtest/gtest.h>

#include "tests/allocation/failing_new.h"
#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT

TEST(Allocation, TransformsOfOverlappingAreas) {
  Random random(1);
  Canvas<KyBW8> canvas(20, 9, {}, random);
  const KyROI<KyBW8> in(canvas.image(), 0, 0, 12, 5);
  KyROI<KyBW8> out(canvas.image(), 1, 1, 12, 5);
  KyImage<KyBW16> table(12, 5);
  KyImage<KyBW32> packed(12, 5);
  const auto unchanged = [&] { return canvas.Unchanged(); };
  CheckAllocationFailures([&] { return ImgScaleRotate(&in, 1, 1, 3, 3, 1, 1, 10, &out, 8); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgLinearTransform", "ImgScaleRotate"},
                          unchanged);
  canvas.Put(canvas.Get());
  CheckAllocationFailures([&] { return ImgWarp(&in, &out, &table, &table, 0, 0); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgWarp"}, unchanged);
  canvas.Put(canvas.Get());
  {
    // The copy of the source comes after the table of its rows.
    FailingAllocation failing(2);
    EXPECT_EQ(ImgWarp(&in, &out, &packed), KY_ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_TRUE(failing.Happened() && canvas.Unchanged());
  }
  // Turned onto an area of its own nothing is allocated.
  KyImage<KyBW8> apart(12, 5);
  FailingAllocation failing(1);
  EXPECT_EQ(ImgScaleRotate(&in, 1, 1, 3, 3, 1, 1, 10, &apart, 8), KY_OK);
  EXPECT_FALSE(failing.Happened());
}

TEST(Allocation, WarpTables) {
  KyImage<KyBW8> in(12, 5), out(12, 5);
  KyImage<KyBW32> packed(12, 5);
  CheckAllocationFailures([&] { return ImgWarp(&in, &out, &packed); }, KY_ERROR_NO_RESULT,
                          {"ImgWarp"}, [] { return true; });
  KyImage<KyBW16> x(3, 2), y(3, 2);
  CheckAllocationFailures([&] { return ImgSetCircleWarp(5, 5, 4, 1, 2, 8, 0, 90, &x, &y); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgSetCircleWarp"},
                          [&] { return y.GetWidth() == 3 && y.GetHeight() == 2; }, 3);
}

}  // namespace
