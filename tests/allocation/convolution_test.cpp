// Kernels, convolutions and filters when memory runs out.
#include <gtest/gtest.h>

#include "ky/ky.h"
#include "tests/allocation/failing_new.h"
#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT

TEST(Allocation, KernelsLoseTheirCoefficients) {
  using Trace = std::vector<const char*>;
  const struct {
    Trace trace;
    KY_ERRORS (*grow)(KyKernel& kernel);
    int sizeX;
  } kCases[] = {
      {{"KyKernel::SetAllocatedSize"}, [](KyKernel& k) { return k.SetAllocatedSize(10); }, 3},
      {{"KyKernel::SetAllocatedSize", "KyKernel::SetSizeX"},
       [](KyKernel& k) { return k.SetSizeX(4); },
       3},
      {{"KyKernel::SetKernelData 5x5"},
       [](KyKernel& k) {
         const float grid[49] = {};
         return k.SetKernelData(grid);
       },
       7},
  };
  for (const auto& c : kCases) {
    KyKernel kernel(KERNEL_SOBEL_X);
    {
      FailingAllocation failing(1);
      EXPECT_EQ(c.grow(kernel), KY_ERROR_NOT_ENOUGH_MEMORY);
    }
    Trace trace;
    for (int i = 0; i < KyGetTraceCount(); ++i) trace.push_back(KyGetTrace(i));
    ASSERT_EQ(trace.size(), c.trace.size());
    for (std::size_t i = 0; i < trace.size(); ++i) EXPECT_STREQ(trace[i], c.trace[i]);
    EXPECT_EQ(kernel.GetDataPtr(), nullptr);
    EXPECT_EQ(kernel.GetAllocatedSize(), 0u);
    EXPECT_EQ(kernel.GetSizeX(), c.sizeX);
    // An array that is too small for the grid is no use.
    EXPECT_EQ(kernel.SetAllocatedSize(1), KY_OK);
    KyImage<KyBW8> image(8, 8);
    float value = 0;
    EXPECT_EQ(kernel.GetKernelData(2, 2, value), KY_ERROR_KERNEL_DATA);
    EXPECT_EQ(kernel.SetKernelData(2, 2, value), KY_ERROR_KERNEL_DATA);
    EXPECT_EQ(ImgConvolKernel(&image, &image, &kernel), KY_ERROR_KERNEL_SIZE);
    EXPECT_EQ(ImgConvolSymmetricKernel(&image, &image, &kernel), KY_ERROR_KERNEL_SIZE);
    EXPECT_EQ(c.grow(kernel), KY_OK);
    EXPECT_NE(kernel.GetDataPtr(), nullptr);
  }
  FailingAllocation failing(1);
  const KyKernel preset(KERNEL_SOBEL_X);
  EXPECT_EQ(KyGetError(), KY_ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_STREQ(KyGetTrace(0), "KyKernel::SetKernel");
  EXPECT_EQ(preset.GetDataPtr(), nullptr);
}

}  // namespace
