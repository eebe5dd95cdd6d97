// Line segments, profiles and generic vectors when memory runs out.
#include <gtest/gtest.h>

#include "ky/ky.h"
#include "tests/allocation/failing_new.h"

namespace {

using namespace ky::test;  // NOLINT

constexpr KY_ERRORS kCode = KY_ERROR_NOT_ENOUGH_MEMORY;

TEST(Allocation, LineSegmentsKeepTheVector) {
  const KyImage<KyBW8> image(9, 5);
  KyBW8Vector levels(2, 7);
  CheckAllocationFailures([&] { return ImgImageToLineSegment(&image, &levels, 0, 0, 8, 4); }, kCode,
                          {"KyVector::SetMaxElements", "ImgImageToLineSegment (BW8)"},
                          [&] {
                            return levels.GetNumElements() == 2 && levels.GetMaxElements() == 2 &&
                                   levels[1] == 7;
                          });

  KyVector vector;
  vector.SetType(2, 1, 0);
  const auto unchanged = [&] { return vector.GetVectType() == 2 && vector.GetNbMaxGroup() == 1; };
  CheckAllocationFailures([&] { return ImgLineSegToVect(&image, &vector, 0, 0, 8, 4); }, kCode,
                          {"KyVector::SetType", "ImgLineSegToVect"}, unchanged);
  vector.SetType(2, 1, 0);
  CheckAllocationFailures(
      [&] { return ImgTransitionScan(TRANS_SCAN_BOTH, &image, 0, 0, 8, 4, 9, 0, &vector); }, kCode,
      {"KyVector::SetType", "ImgTransitionScan"}, unchanged);
}

TEST(Allocation, ProfileFiltersKeepTheDestination) {
  KyBW8Vector source(50, 9), destination(2, 7);
  const auto check = [&](auto filter, const char* name) {
    for (int n = 1;; ++n) {
      destination = KyBW8Vector(2, 7);
      const long before = OutstandingAllocations();
      FailingAllocation failing(n);
      const KY_ERRORS status = filter();
      if (!failing.Happened()) {
        EXPECT_EQ(status, KY_OK);
        EXPECT_GT(n, 1);
        return;
      }
      EXPECT_EQ(status, kCode);
      EXPECT_STREQ(KyGetTrace(KyGetTraceCount() - 1), name);
      EXPECT_EQ(OutstandingAllocations(), before);
      EXPECT_TRUE(destination.GetNumElements() == 2 && destination[1] == 7);
    }
  };
  check([&] { return ImgProfileDerivative(&source, &destination); }, "ImgProfileDerivative");
  check([&] { return ImgConvolBinomial(&source, &destination, 3); },
        "ImgConvolBinomial (KyBW8Vector)");
  check([&] { return ImgDilate(&source, &destination, 3); }, "ImgDilate (KyBW8Vector)");
  check([&] { return ImgErode(&source, &destination, 3); }, "ImgErode (KyBW8Vector)");
  destination.SetNumElements(50);
  destination[1] = 7;
  CheckAllocationFailures([&] { return ImgConvolUniform(&source, &destination, 2); }, kCode,
                          {"ImgConvolUniform"}, [&] { return destination[1] == 7; });
  KyPeaksVector peaks;
  source[25] = 40;
  CheckAllocationFailures(
      [&] { return ImgGetProfilePeaks(&source, &peaks, 9, 9, 0, 0); }, kCode,
      {"KyVector::SetMaxElements", "KyVector::AddElement", "ImgGetProfilePeaks"},
      [&] { return peaks.GetNumElements() == 0; });
}

TEST(Allocation, VectorOperationsKeepTheResult) {
  KyVector vector, result;
  vector.SetStructure(2, 1, 40, 2);
  vector.SetNbGroup(1);
  const auto unchanged = [&] { return result.GetDataPtr() == nullptr; };
  CheckAllocationFailures([&] { return ImgGetVectTransition(&vector, &result, 0); }, kCode,
                          {"KyVector::SetStructure", "ImgGetVectTransition"}, unchanged);
  result = KyVector();
  CheckAllocationFailures([&] { return ImgVect1c2(KY_OPER_ADD, &vector, 1, &result, 0, 39); },
                          kCode, {"KyVector::SetStructure", "ImgVect1c2"}, unchanged);
}

}  // namespace
