#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "ky/ky.h"

namespace {

TEST(Status, TraceGrowsOnlyWhileTheStatusIsSet) {
  KyOk();
  EXPECT_EQ(KyTraceError("ignored"), KY_OK);
  EXPECT_EQ(KyGetTraceCount(), 0);

  KySetError(KY_ERROR_NO_IMAGE);
  EXPECT_EQ(KyTraceError(nullptr), KY_ERROR_NO_IMAGE);  // no name
  for (int i = 0; i < 20; ++i)
    EXPECT_EQ(KyTraceError(i == 0 ? "inner" : "outer"), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(KyGetTraceCount(), 16);
  EXPECT_STREQ(KyGetTrace(0), "inner");
  EXPECT_STREQ(KyGetTrace(15), "outer");
  EXPECT_EQ(KyGetTrace(16), nullptr);
  EXPECT_EQ(KyGetTrace(-1), nullptr);

  KyOk();
  EXPECT_EQ(KyGetError(), KY_OK);
  EXPECT_EQ(KyGetTraceCount(), 0);
}

TEST(Status, EveryThreadHasItsOwn) {
  KySetError(KY_ERROR_NO_IMAGE);
  std::thread([] {
    EXPECT_EQ(KyGetError(), KY_OK);
    KySetError(KY_ERROR_INTERNAL);
  }).join();
  EXPECT_EQ(KyGetError(), KY_ERROR_NO_IMAGE);
  KyOk();
}

TEST(Status, MessagesNameRoutineParameterAndCode) {
  KyImage<KyBW8> image(3, 3);
  const KyBW8Vector one(1);
  const char* const message = KyGetErrorMessage();
  EXPECT_STREQ(message, "success (KY_OK)");
  ImgConvolGaussian(&image, &image, 1, 1, -1);
  EXPECT_EQ(KyGetErrorMessage(), message);
  EXPECT_STREQ(message,
               "ImgConvolGaussian: sigmaX is out of range (KY_ERROR_PARAMETER_3_OUT_OF_RANGE)");
  // The name goes with the status that it belongs to, and is nothing without one.
  KySetError(KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(std::string(KyGetErrorMessage()).find("sigma"), std::string::npos);
  // Nor do the routines of an older error stand in the message of another one.
  KyTraceError("older");
  KySetError(KY_ERROR_NO_IMAGE);
  KyTraceError("newer");
  EXPECT_STREQ(KyGetErrorMessage(),
               "newer: an ROI is missing or has no pixels (KY_ERROR_NO_IMAGE)");
  KyOk();
  EXPECT_EQ(KyNameParameter("none"), KY_OK);
  one[1];
  EXPECT_STREQ(KyGetErrorMessage(),
               "KyVector::operator[]: index is out of range (KY_ERROR_PARAMETER_1_OUT_OF_RANGE)");
  // An older failure of the same code stays in the trace, but not in the message.
  ImgMedian(&image, &image, 9000000, 1);
  one[1];
  EXPECT_EQ(KyGetTraceCount(), 2);
  EXPECT_STREQ(KyGetErrorMessage(),
               "KyVector::operator[]: index is out of range (KY_ERROR_PARAMETER_1_OUT_OF_RANGE)");
  // What is known of an ROI, and of a single word, depends on the code.
  KyImage<KyBW8> none, other(4, 3);
  ImgMedian(&image, &none, 1);
  EXPECT_STREQ(KyGetErrorMessage(),
               "ImgMedian: destination is null or has no pixels: call SetSize, or place it "
               "inside its parent (KY_ERROR_NO_IMAGE)");
  ImgMedian(&image, &other, 1);
  EXPECT_STREQ(KyGetErrorMessage(),
               "ImgMedian: source and destination differ in size (KY_ERROR_SIZE_MISMATCH)");
  ImgUniformize(&image, &other, 9, &image);
  EXPECT_STREQ(KyGetErrorMessage(),
               "ImgUniformize: light differs in size from the other ROIs (KY_ERROR_SIZE_MISMATCH)");
  ImgUniformize(&image, &image, 9, &other);
  EXPECT_STREQ(KyGetErrorMessage(),
               "ImgUniformize: destination differs in size from the other ROIs "
               "(KY_ERROR_SIZE_MISMATCH)");
  KyObjectsVector objects;
  ImgFindObjects(&image, 1, 255, static_cast<CONNEXITY>(2), &objects);
  EXPECT_STREQ(KyGetErrorMessage(),
               "ImgFindObjects: connexity is none of the values that it may have "
               "(KY_ERROR_UNSUPPORTED_OPERATION)");
  // The innermost routine first, then those through which the failure passed.
  float deviation, mean;
  KyROI<KyBW8> empty(&image, 0, 0, 0, 0);
  ImgPixelStdDev(&empty, deviation, mean);
  EXPECT_STREQ(KyGetErrorMessage(),
               "ImgPixelVariance: an ROI of no columns or rows has no statistics "
               "(KY_ERROR_NO_PIXELS), in ImgPixelStdDev");
  const std::string longName(300, 'x');
  KyTraceError(longName.c_str());
  EXPECT_EQ(std::string(KyGetErrorMessage()).size(), 255u);
  KyOk();
}

TEST(Status, EveryCodeHasATextThatNamesIt) {
  EXPECT_EQ(std::string(KyGetErrorText(KY_ERROR_NO_IMAGE)),
            "KY_ERROR_NO_IMAGE: an ROI is missing or has no pixels");
  EXPECT_EQ(std::string(KyGetErrorText(KY_OK)), "KY_OK: success");
  int known = 0;
  const std::string unknown = KyGetErrorText(static_cast<KY_ERRORS>(-1));
  for (int code = 0; code <= 40000; ++code)
    known += KyGetErrorText(static_cast<KY_ERRORS>(code)) != unknown;
  EXPECT_EQ(known, 52);  // success and the 51 codes
}

}  // namespace
