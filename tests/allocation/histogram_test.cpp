// Histograms, projections and lookup tables when memory runs out.
#include <gtest/gtest.h>

#include "ky/ky.h"
#include "tests/allocation/failing_new.h"
#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT

TEST(Allocation, HistogramsAndTheirTables) {
  KyImage<KyBW8> image(30, 20);
  KyBW8HistogramVector histogram;
  const auto untouched = [&] { return histogram.GetNumElements() == 0; };
  CheckAllocationFailures(
      [&] { return ImgHistogram(&image, &histogram); }, KY_ERROR_NOT_ENOUGH_MEMORY,
      {"KyVector::SetMaxElements", "KyVector::SetNumElements", "ImgHistogram"}, untouched);
  KyBW8Vector table;
  CheckAllocationFailures([&] { return ImgSetupEqualize(&histogram, &table); },
                          KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"KyVector::SetMaxElements", "KyVector::SetNumElements",
                           "ImgSetupEqualize (KyBW8HistogramVector)"},
                          [&] { return table.GetNumElements() == 0; });
  KyVector counts, levels;
  ASSERT_EQ(counts.SetType(2, 256, 0), KY_OK);
  CheckAllocationFailures([&] { return ImgSetupEqualize(&counts, &levels); },
                          KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"KyVector::SetType", "ImgSetupEqualize (KyVector)"},
                          [&] { return levels.GetVectType() == 0; });

  // Of 16 bits: the counters first, then the vector.
  KyImage<KyBW16> deep(30, 20);
  KyBW8HistogramVector bins;
  {
    const FailingAllocation failing(2);
    EXPECT_EQ(ImgHistogram(&deep, &bins, 15, 12, 0), KY_ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_TRUE(failing.Happened());
    EXPECT_EQ(KyGetTraceCount(), 3);
    EXPECT_EQ(bins.GetNumElements(), 0u);
  }
  ASSERT_EQ(bins.SetMaxElements(1 << 12), KY_OK);
  CheckAllocationFailures([&] { return ImgHistogram(&deep, &bins, 15, 12, 0); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgHistogram (KyBW16)"},
                          [&] { return bins.GetNumElements() == 0; });
}

TEST(Allocation, Projections) {
  KyImage<KyBW8> image(30, 20);
  KyBW32Vector sums;
  KyVector generic;
  CheckAllocationFailures([&] { return ImgProjectOnARow(&image, &sums); },
                          KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"KyVector::SetMaxElements", "ImgProjectOnARow (BW8 Image)"},
                          [&] { return sums.GetNumElements() == 0; });
  CheckAllocationFailures([&] { return ImgProjectOnAColumn(&image, &generic); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"KyVector::SetType", "ImgProjectOnAColumn"},
                          [&] { return generic.GetVectType() == 0; });
}

TEST(Allocation, TablesOnOverlappingAreas) {
  Random random(1);
  Canvas<KyBW8> canvas(20, 9, {}, random);
  const KyROI<KyBW8> in(canvas.image(), 0, 0, 12, 5);
  KyROI<KyBW8> out(canvas.image(), 1, 1, 12, 5);
  const KyBW8 table[256] = {};
  const auto unchanged = [&] { return canvas.Unchanged(); };
  CheckAllocationFailures([&] { return ImgGainOffset(&in, &out, 0.5f, 9); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgGainOffset"}, unchanged);
  canvas.Put(canvas.Get());
  CheckAllocationFailures([&] { return ImgEqualize(&in, &out); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"ImgLut", "ImgEqualize"}, unchanged);
  canvas.Put(canvas.Get());
  CheckAllocationFailures([&] { return ImgNormalize(&in, &out, 99, 9); },
                          KY_ERROR_NOT_ENOUGH_MEMORY, {"ImgNormalize"}, unchanged);
  canvas.Put(canvas.Get());
  CheckAllocationFailures([&] { return ImgLut(&in, &out, table); }, KY_ERROR_NOT_ENOUGH_MEMORY, {},
                          unchanged);
}

}  // namespace
