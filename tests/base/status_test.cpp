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

TEST(Status, EveryCodeHasATextThatNamesIt) {
  EXPECT_EQ(std::string(KyGetErrorText(KY_ERROR_NO_IMAGE)),
            "KY_ERROR_NO_IMAGE: an ROI has no pixels");
  EXPECT_EQ(std::string(KyGetErrorText(KY_OK)), "KY_OK: success");
  int known = 0;
  const std::string unknown = KyGetErrorText(static_cast<KY_ERRORS>(-1));
  for (int code = 0; code <= 40000; ++code)
    known += KyGetErrorText(static_cast<KY_ERRORS>(code)) != unknown;
  EXPECT_EQ(known, 52);  // success and the 51 codes
}

}  // namespace
