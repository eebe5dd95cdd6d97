// Moving averages when memory runs out.
#include <gtest/gtest.h>

#include "ky/ky.h"
#include "tests/allocation/failing_new.h"
#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT

TEST(Allocation, MovingAveragesBecomeUnconfigured) {
  for (const int keep : {0, 1}) {
    KyMovingAverage average;
    const auto unconfigured = [&] {
      unsigned period;
      int width, height, kept;
      average.GetSize(period, width, height, kept);
      return period == 0 && width == 0 && height == 0 && kept == 0;
    };
    // The sum, the ring's total and list, and the object and pixels of each slot.
    CheckAllocationFailures([&] { return average.SetSize(4, 7, 3, keep); },
                            KY_ERROR_NOT_ENOUGH_MEMORY, {"KyMovingAverage::SetSize"}, unconfigured,
                            3 + 2 * (3 + keep));
  }
}

// Before its images are made, a ring asks for all that they will take in one piece, which is too
// much for an absurd one. That is never less than what they then do take, nor much more.
TEST(Allocation, MovingAveragesKnowWhatTheyTake) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 300}, {64, 3}, {130, 7}, {1024, 40}}) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    const long before = OutstandingBytes();
    const KyImage<KyBW16> sum(width, height);
    const long between = OutstandingBytes();
    ForgetLargestAllocation();
    const KyMovingAverage average(200, width, height, 1);
    ASSERT_EQ(KyGetError(), KY_OK);
    const long ring = OutstandingBytes() - between - (between - before);
    EXPECT_GE(LargestAllocation(), ring);
    EXPECT_LE(LargestAllocation(), 2 * ring);
  }
}

TEST(Allocation, MovingAveragesKeepTheirState) {
  Random random(1);
  KyMovingAverage average(3, 12, 5, 0), untouched(3, 12, 5, 0);
  Canvas<KyBW8> canvas(20, 9, {}, random), out(12, 5, {}, random);
  const KyROI<KyBW8> source(canvas.image(), 0, 0, 12, 5);
  KyROI<KyBW8> overlapping(canvas.image(), 1, 1, 12, 5);
  for (int t = 0; t < 4; ++t) {
    canvas.Put(RandomPicture<KyBW8>(20, 9, random));
    ASSERT_EQ(untouched.Average(&source, out.roi()), KY_OK);
    CheckAllocationFailures([&] { return average.Average(&source, &overlapping); },
                            KY_ERROR_NOT_ENOUGH_MEMORY, {"KyMovingAverage::Average"},
                            [&] { return canvas.Unchanged(); });
    EXPECT_TRUE(Same(out.Get(), Canvas<KyBW8>::Get(overlapping)));
  }
}

}  // namespace
