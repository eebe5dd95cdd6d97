// Averages over time, gradients and frames when memory runs out.
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

TEST(Allocation, RecursiveAverages) {
  Random random(2);
  KyBW16Vector table(3);
  CheckAllocationFailures(
      [&] { return ImgSetRecursiveAverageLUT(&table, 3); }, KY_ERROR_NOT_ENOUGH_MEMORY,
      {"KyVector::SetMaxElements", "KyVector::SetNumElements", "ImgSetRecursiveAverageLUT"},
      [&] { return table.GetNumElements() == 3; });
  Canvas<KyBW8> canvas(20, 9, {}, random);
  Canvas<KyBW16> state(12, 5, {}, random);
  const KyROI<KyBW8> source(canvas.image(), 0, 0, 12, 5);
  KyROI<KyBW8> out(canvas.image(), 1, 1, 12, 5);
  CheckAllocationFailures([&] { return ImgRecursiveAverage(&source, state.roi(), &out, &table); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgRecursiveAverage"},
                          [&] { return canvas.Unchanged() && state.Unchanged(); });
  state.Put(state.Get());
  KyImage<KyBW8> inState;
  inState.Attach(static_cast<KyBW8*>(state.roi()->GetPixelPtr(0, 0)), 12, 5, 12);
  CheckAllocationFailures(
      [&] { return ImgRecursiveAverage(&source, state.roi(), &inState, &table); },
      KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgRecursiveAverage"}, [&] { return state.Unchanged(); });
}

TEST(Allocation, Gradients) {
  Random random(3);
  KyImage<KyBW8> made;
  const auto empty = [&] { return made.GetWidth() == 0; };
  CheckAllocationFailures([&] { return ImgModulusImage(&made); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"ImgModulusImage"}, empty);
  made.SetSize(0, 0);
  CheckAllocationFailures([&] { return ImgArgumentImage(&made, 0, 360); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgArgumentImage"}, empty);

  Canvas<KyBW8> in(70, 9, {}, random), lookup(512, 512, {}, random);
  Canvas<KyBW32> pairs(70, 9, {}, random);
  CheckAllocationFailures([&] { return ImgGradientVector(in.roi(), pairs.roi()); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgGradientVector"},
                          [&] { return pairs.Unchanged(); });
  // A destination on the lookup, and in place: copies of the lookup and of some rows.
  KyROI<KyBW8> onLookup(lookup.image(), 100, 100, 70, 9);
  CheckAllocationFailures([&] { return ImgGradientScalar(&onLookup, &onLookup, lookup.roi()); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgGradientScalar"},
                          [&] { return lookup.Unchanged(); }, 2);
  lookup.Put(lookup.Get());
  CheckAllocationFailures([&] { return ImgGradientScalar(pairs.roi(), &onLookup, lookup.roi()); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgGradientScalar"},
                          [&] { return lookup.Unchanged(); });
}

TEST(Allocation, FramesOnOverlappingAreas) {
  Random random(4);
  Canvas<KyBW8> canvas(20, 19, {}, random);
  KyROI<KyBW8> a(canvas.image(), 0, 0, 12, 8), b(canvas.image(), 1, 1, 12, 8),
      half(canvas.image(), 0, 0, 12, 4);
  const auto check = [&](const auto& call, const char* trace) {
    canvas.Put(canvas.Get());
    CheckAllocationFailures(call, KY_ERROR_NOT_ENOUGH_MEMORY, {trace},
                            [&] { return canvas.Unchanged(); });
  };
  check([&] { return ImgGetFrame(&b, &half, 0); }, "ImgGetFrame (KyBW8)");
  check([&] { return ImgSetFrame(&half, &b, 0); }, "ImgSetFrame (KyBW8)");
  check([&] { return ImgRealignFrame(&a, &b, 1, 0); }, "ImgRealignFrame (KyBW8)");
  check([&] { return ImgRebuildFrame(&a, &b, 0); }, "ImgRebuildFrame (KyBW8)");
  check([&] { return ImgSwapFrames(&a, &b); }, "ImgSwapFrames (KyBW8)");
}

}  // namespace
