// Thresholds when memory runs out.
#include "ky/threshold.h"

#include <gtest/gtest.h>

#include "tests/allocation/failing_new.h"
#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT

TEST(Allocation, AutomaticThresholds) {
  Random random(1);
  Canvas<KyBW8> canvas(20, 9, {}, random);
  const KyROI<KyBW8> in(canvas.image(), 0, 0, 12, 5);
  KyROI<KyBW8> out(canvas.image(), 1, 1, 12, 5);
  const auto unchanged = [&] { return canvas.Unchanged(); };
  CheckAllocationFailures([&] { return ImgThreshold(&in, &out, 9); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"ImgThreshold"}, unchanged);
  // The search itself takes no memory.
  const FailingAllocation failing(1);
  EXPECT_NE(ImgAutoThreshold(&in, IMG_THRESHOLD_ISODATA), 0);
  EXPECT_FALSE(failing.Happened());
}

TEST(Allocation, BitsInTheMemoryOfLevels) {
  std::vector<KyBW8> memory(200, 7);
  KyImage<KyBW8> grey;
  KyImage<KyBW1> bits;
  grey.Attach(memory.data(), 16, 4, 16);
  bits.Attach(memory.data() + 10, 16, 4, 16);
  const std::vector<KyBW8> before = memory;
  CheckAllocationFailures([&] { return ImgThreshold(&grey, &bits, 9); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"ImgThreshold (BW8 to BW1)"}, [&] { return memory == before; });
  memory = before;
  CheckAllocationFailures([&] { return ImgThreshold(&bits, &grey); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"ImgThreshold (BW1 to BW8)"}, [&] { return memory == before; });
}

TEST(Allocation, AdaptiveSurfaces) {
  KyImage<KyBW8> source(40, 30), out(3, 3);
  out.SetPixel(9, 1, 1);
  for (int n = 1; n <= 10; ++n) {
    FailingAllocation failing(n);
    const KY_ERRORS status = ImgAutoAdaptiveThreshold(&source, &out, IMG_THRESHOLD_ISODATA, 10);
    if (!failing.Happened()) return;
    EXPECT_EQ(status, KY_ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_STREQ(KyGetTrace(KyGetTraceCount() - 1), "ImgAutoAdaptiveThreshold");
    EXPECT_EQ(out.GetPixel(1, 1), 9);
    EXPECT_EQ(out.GetWidth(), 3);
  }
  FAIL() << "the call never stops allocating";
}

}  // namespace
