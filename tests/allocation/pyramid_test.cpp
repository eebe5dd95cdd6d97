// Pyramids when memory runs out: the levels stay as they were.
#include <gtest/gtest.h>

#include "ky/ky.h"
#include "tests/allocation/failing_new.h"
#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT

template <class T>
void CheckBuilding(KY_IMAGE_TYPES type) {
  Random random(2);
  Canvas<T> small(20, 9, {}, random), large(41, 30, {}, random);
  const KyROI<T> part(large.image(), 3, 2, 21, 10);
  KyPyramid pyramid;
  ASSERT_EQ(pyramid.SetNumLevels(3, type), KY_OK);
  const auto widths = [&](int first) {
    for (int i = 0; i < pyramid.GetNumLevels(); ++i)
      if (pyramid.GetLevel(i)->GetWidth() != first >> i) return false;
    return true;
  };
  // Nothing has been built before, levels of another size, and more levels.
  CheckAllocationFailures([&] { return pyramid.Build(small.roi()); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"KyPyramid::Build"}, [&] { return widths(0); }, 3);
  CheckAllocationFailures(
      [&] { return pyramid.Build(large.roi()); }, KY_ERROR_NOT_ENOUGH_MEMORY, {"KyPyramid::Build"},
      [&] {
        const auto pixels = pyramid.GetLevel(0)->GetPixelPtr(0, 0);
        return widths(20) &&
               std::memcmp(pixels, small.roi()->GetPixelPtr(0, 0), 20 * sizeof(T)) == 0;
      },
      3);
  CheckAllocationFailures([&] { return pyramid.Halve(); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"KyPyramid::Halve"},
                          [&] { return pyramid.GetNumLevels() == 3 && widths(41); });
  EXPECT_EQ(pyramid.GetNumLevels(), 4);
  // Frames of one size take nothing more.
  FailingAllocation failing(1);
  EXPECT_EQ(pyramid.Build(large.roi()), KY_OK);
  EXPECT_FALSE(failing.Happened());
}

TEST(Allocation, PyramidsKeepTheirLevels) {
  CheckBuilding<KyBW8>(KY_IMAGE_BW8);
  CheckBuilding<KyC24>(KY_IMAGE_C24);
}

}  // namespace
