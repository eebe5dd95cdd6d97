// Images, masks, vectors and operators when memory runs out.
#include <gtest/gtest.h>

#include "ky/ky.h"
#include "tests/allocation/failing_new.h"
#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT

TEST(Allocation, ImagesKeepTheirPixels) {
  KyImage<KyBW8> image(7, 3);
  image.SetPixel(9, 6, 2);
  CheckAllocationFailures(
      [&] {
        image.SetSize(8, 5);
        return KyGetError();
      },
      KY_ERROR_NOT_ENOUGH_MEMORY, {},
      [&] { return image.GetWidth() == 7 && image.GetHeight() == 3 && image.GetPixel(6, 2) == 9; });
  EXPECT_EQ(image.GetWidth(), 8);
}

TEST(Allocation, MasksAndGenericVectorsKeepTheirContents) {
  KyImage<KyBW8> image(7, 3);
  const KyMaskRun one[] = {{1, 2}}, two[] = {{3, 4}, {5, 6}};
  ASSERT_EQ(image.SetMask(one, 1, true), KY_OK);
  CheckAllocationFailures([&] { return image.SetMask(two, 2, false); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"KyGenericROI::SetMask"},
                          [&] {
                            return image.GetMaskCount() == 1 && image.IsMaskAbsolute() &&
                                   image.GetMaskOffsets()->offset == 1;
                          });

  KyVector vector;
  ASSERT_EQ(vector.SetType(2, 3, 0), KY_OK);
  static_cast<unsigned*>(vector.GetDataPtr())[2] = 77;
  const auto unchanged = [&] {
    return vector.GetVectType() == 2 && vector.GetNbMaxGroup() == 3 &&
           static_cast<unsigned*>(vector.GetDataPtr())[2] == 77;
  };
  CheckAllocationFailures([&] { return vector.Reallocate(40); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"KyVector::Reallocate"}, unchanged);
  EXPECT_EQ(static_cast<unsigned*>(vector.GetDataPtr())[2], 77u);
  CheckAllocationFailures([&] { return vector.SetType(3, 256, 0); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"KyVector::SetType"}, [&] { return vector.GetVectType() == 2; });
}

TEST(Allocation, OperatorsOnOverlappingAreas) {
  Random random(1);
  Canvas<KyBW8> canvas(20, 9, {}, random), other(12, 5, {}, random);
  const KyROI<KyBW8> a(canvas.image(), 0, 0, 12, 5);
  KyROI<KyBW8> out(canvas.image(), 1, 1, 12, 5);
  CheckAllocationFailures([&] { return ImgOper(KY_OPER_ADD, &a, other.roi(), &out); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgOper (BW8 Image, Image to Image)"},
                          [&] { return canvas.Unchanged(); });
  // In place and apart nothing is allocated at all.
  FailingAllocation failing(1);
  EXPECT_EQ(ImgOper(KY_OPER_ADD, &out, other.roi(), &out), KY_OK);
  EXPECT_FALSE(failing.Happened());
}

// Both tables are resized, or neither; their masks stay.
TEST(Allocation, TablesOfCircleWarps) {
  KyImage<KyBW16> x(5, 4), y(3, 2);
  const KyMaskRun run = {1, 2};
  x.SetPixel(77, 4, 3);
  ASSERT_EQ(x.SetMask(&run, 1, true), KY_OK);
  CheckAllocationFailures(
      [&] { return ImgSetCircleWarp(9, 9, 6, 2, 8, 7, 0, 90, &x, &y); }, KY_ERROR_NOT_ENOUGH_MEMORY,
      {"ImgSetCircleWarp"},
      [&] { return x.GetPixel(4, 3) == 77 && x.GetMaskCount() == 1 && y.GetWidth() == 3; }, 4);
  EXPECT_EQ(x.GetWidth(), 7);
  EXPECT_EQ(y.GetHeight(), 6);
  EXPECT_TRUE(x.GetMaskCount() == 1 && x.IsMaskAbsolute());
}

TEST(Allocation, ColourComponentsOfOverlappingAreas) {
  std::vector<KyBW8> memory(3 * 8 * 4 + 40, 5);
  KyImage<KyC24> color;
  KyImage<KyBW8> grey;
  color.Attach(reinterpret_cast<KyC24*>(memory.data()), 8, 4, 24);
  grey.Attach(memory.data() + 20, 8, 4, 24);
  const std::vector<KyBW8> before = memory;
  CheckAllocationFailures([&] { return ClrGetComponent(&color, &grey, 1); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ClrGetComponent"},
                          [&] { return memory == before; });
  memory = before;
  CheckAllocationFailures([&] { return ClrSetComponent(&grey, &color, 1); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ClrSetComponent"},
                          [&] { return memory == before; });
}

}  // namespace
