// The kernel object.
#include "ky/kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "ky/status.h"

namespace {

void ExpectStatus(KY_ERRORS code, std::vector<const char*> trace = {}) {
  EXPECT_EQ(KyGetError(), code);
  ASSERT_EQ(KyGetTraceCount(), static_cast<int>(trace.size()));
  for (std::size_t i = 0; i < trace.size(); ++i)
    EXPECT_STREQ(KyGetTrace(static_cast<int>(i)), trace[i]);
}

void ExpectFields(const KyKernel& kernel, int sizeX, int sizeY, float gain, unsigned offset,
                  int rectifier, unsigned outside, unsigned allocated) {
  EXPECT_EQ(kernel.GetSizeX(), sizeX);
  EXPECT_EQ(kernel.GetSizeY(), sizeY);
  EXPECT_EQ(kernel.GetGain(), gain);
  EXPECT_EQ(kernel.GetOffset(), offset);
  EXPECT_EQ(kernel.GetRectifier(), rectifier);
  EXPECT_EQ(kernel.GetOutsideValue(), outside);
  EXPECT_EQ(kernel.GetAllocatedSize(), allocated);
}

TEST(Kernel, Constructors) {
  KySetError(KY_ERROR_NO_IMAGE);
  {
    const KyKernel kernel;
    ExpectStatus(KY_OK);
    ExpectFields(kernel, 0, 0, 1, 0, 2, 0, 0);
    EXPECT_EQ(kernel.GetDataPtr(), nullptr);
    KySetError(KY_ERROR_NO_IMAGE);
  }
  ExpectStatus(KY_OK);
  const KyKernel sized(4, 3, 2.5f, 7, 9, 255);
  ExpectFields(sized, 4, 3, 2.5f, 7, 9, 255, 12);
  const KyKernel bothNegative(-2, -3, 1, 0, 0, 0);
  EXPECT_EQ(bothNegative.GetAllocatedSize(), 6u);
  const KyKernel negative(-2, 3, 1, 0, 0, 0);
  ExpectStatus(KY_ERROR_NOT_ENOUGH_MEMORY, {"KyKernel::KyKernel"});
  ExpectFields(negative, -2, 3, 1, 0, 0, 0, 0);
  EXPECT_EQ(negative.GetDataPtr(), nullptr);
  const KyKernel refused(static_cast<KERNEL_TYPE>(15));
  ExpectStatus(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, {"KyKernel::SetKernel"});
  ExpectFields(refused, 3, 3, 0, 0, 0, 0, 9);
}

TEST(Kernel, Presets) {
  constexpr int kPresets[][9] = {
      {0, 0, 0, -1, 1, -1, 1, 1, 1},   {0, 0, 0, -1, 0, -1, 1, 1, 1},
      {1, 1, 1, 1, 1, 1, 1, 1, 1},     {-1, 0, 1, -2, 0, 2, -1, 0, 1},
      {-1, -2, -1, 0, 0, 0, 1, 2, 1},  {-1, 0, 1, -1, 0, 1, -1, 0, 1},
      {-1, -1, -1, 0, 0, 0, 1, 1, 1},  {0, 1, 0, 1, -4, 1, 0, 1, 0},
      {1, 1, 1, 1, -8, 1, 1, 1, 1},    {1, 2, 1, 2, 4, 2, 1, 2, 1},
      {1, 1, 1, 1, 0, 1, 1, 1, 1},     {1, 1, 1, 1, 1, 1, 1, 1, 1},
      {0, -1, 0, -1, 5, -1, 0, -1, 0}, {-1, -1, -1, -1, 9, -1, -1, -1, -1},
  };
  KyKernel kernel;
  for (int type = KERNEL_PATTERN_1; type <= KERNEL_SHARPEN_8; ++type) {
    SCOPED_TRACE(type);
    kernel.SetGain(2.5f);
    kernel.SetOutsideValue(3);
    kernel.SetOffset(4);
    EXPECT_EQ(kernel.SetKernel(static_cast<KERNEL_TYPE>(type)), KY_OK);
    const bool pattern = type <= KERNEL_PATTERN_3;
    ExpectFields(kernel, 3, 3, pattern ? 0.0f : 1.0f, 0, pattern ? 0 : 2, 0, 9);
    EXPECT_TRUE(std::equal(kPresets[type - 1], kPresets[type - 1] + 9, kernel.GetDataPtr()));
  }
  for (const int type : {0, 15, -1}) {
    EXPECT_EQ(kernel.SetKernel(static_cast<KERNEL_TYPE>(type)), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
    ExpectStatus(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, {"KyKernel::SetKernel"});
    ExpectFields(kernel, 3, 3, 0, 0, 0, 0, 9);
    EXPECT_EQ(kernel.GetDataPtr()[4], 9);  // the last preset's
  }
}

TEST(Kernel, SizesKeepOrReplaceTheArray) {
  KyKernel kernel;
  kernel.SetKernelData(1, 2, 3, 4, 5, 6, 7, 8, 9);
  const float* const array = kernel.GetDataPtr();
  float value = 0;
  EXPECT_EQ(kernel.SetSizeX(2), KY_OK);
  EXPECT_EQ(kernel.GetKernelData(0, 1, value), KY_OK);
  EXPECT_EQ(value, 3);
  EXPECT_EQ(kernel.SetSizeY(-7), KY_OK);
  EXPECT_EQ(kernel.SetSizeX(32767), KY_OK);
  EXPECT_EQ(kernel.SetAllocatedSize(9), KY_OK);
  EXPECT_EQ(kernel.GetDataPtr(), array);
  ExpectFields(kernel, 32767, -7, 1, 0, 2, 0, 9);
  kernel.SetSizeX(5);
  EXPECT_EQ(kernel.SetSizeY(3), KY_OK);
  EXPECT_EQ(kernel.GetAllocatedSize(), 15u);
}

TEST(Kernel, Elements) {
  KyKernel kernel;
  float value = 0;
  EXPECT_EQ(kernel.GetKernelData(0, 0, value), KY_ERROR_KERNEL_DATA);
  ExpectStatus(KY_ERROR_KERNEL_DATA, {"KyKernel::GetKernelData"});
  EXPECT_EQ(kernel.SetKernelData(0, 0, 1.0f), KY_ERROR_KERNEL_DATA);
  ExpectStatus(KY_ERROR_KERNEL_DATA, {"KyKernel::SetKernelData"});
  kernel.SetGain(3);
  EXPECT_EQ(kernel.SetKernelData(1, 2, 3, 4, 5, 6, 7, 8, 9), KY_OK);
  ExpectFields(kernel, 3, 3, 3, 0, 2, 0, 9);
  const struct {
    int x, y;
    KY_ERRORS code;
  } kCases[] = {{3, 0, KY_ERROR_PARAMETER_1_OUT_OF_RANGE},
                {-1, 9, KY_ERROR_PARAMETER_1_OUT_OF_RANGE},
                {0, 3, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
                {0, -1, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
                {2, 1, KY_OK}};
  for (const auto& c : kCases) {
    EXPECT_EQ(kernel.SetKernelData(c.x, c.y, 42.0f), c.code);
    EXPECT_EQ(kernel.GetKernelData(c.x, c.y, value), c.code);
  }
  EXPECT_EQ(value, 42);
  EXPECT_EQ(kernel.GetDataPtr()[5], 42);

  float grid[49];
  std::iota(grid, grid + 49, 0.0f);
  EXPECT_EQ(kernel.SetKernelData(grid), KY_OK);
  ExpectFields(kernel, 7, 7, 3, 0, 2, 0, 49);
  EXPECT_EQ(kernel.GetKernelData(6, 5, value), KY_OK);
  EXPECT_EQ(value, 41);
}

}  // namespace
