// Images on matrices and matrices on regions: the same pixels, refusals, lifetimes.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

#include "ky/ky.h"
#include "ky/opencv.h"

namespace {

template <class T>
class Interop : public testing::Test {};
using PixelTypes = testing::Types<KyBW8, KyBW16, KyBW32, KyC24, KyC15, KyC16, KyC24A, KyComplex64>;
TYPED_TEST_SUITE(Interop, PixelTypes);

template <class T>
T Filled(int byte) {
  T value;
  std::memset(static_cast<void*>(&value), byte, sizeof value);
  return value;
}
template <class T>
const void* At(const KyROI<T>& roi, int x, int y) {
  return roi.GetPixelPtr(x, y);
}

TYPED_TEST(Interop, BothSeeTheSamePixels) {
  using T = TypeParam;
  ASSERT_EQ(std::size_t(CV_ELEM_SIZE(KyMatType<T>())), sizeof(T));
  cv::Mat whole(7, 11, KyMatType<T>(), cv::Scalar::all(0));
  cv::Mat part = whole(cv::Rect(2, 1, 5, 4));
  KyMatImage<T> image(part);
  ASSERT_EQ(KyGetError(), KY_OK);
  EXPECT_EQ(image.GetWidth(), 5);
  EXPECT_EQ(image.GetHeight(), 4);
  EXPECT_EQ(std::size_t(image.GetPitch()), whole.step[0]);
  EXPECT_EQ(At(image, 3, 2), whole.ptr(3, 5));
  image.SetPixel(Filled<T>(0x3C), 4, 3);
  const T expected = Filled<T>(0x3C);
  EXPECT_EQ(std::memcmp(whole.ptr(4, 6), &expected, sizeof(T)), 0);

  // And back: a region of the image is a part of the matrix.
  KyROI<T> roi(&image, 1, 1, 3, 2);
  const cv::Mat back = KyAsMat(roi);
  EXPECT_EQ(back.type(), part.type());
  EXPECT_EQ(back.size(), cv::Size(3, 2));
  EXPECT_EQ(back.data, part.ptr(1, 1));
  EXPECT_EQ(back.ptr(1), part.ptr(2, 1));

  // Of an image's own memory too, whose rows have gaps.
  KyImage<T> own(5, 4);
  cv::Mat view = KyAsMat(own);
  part.copyTo(view);
  EXPECT_EQ(At(own, 0, 0), view.data);
  EXPECT_TRUE(own.GetPixel(4, 3) == Filled<T>(0x3C));
  EXPECT_FALSE(own.GetPixel(3, 3) == Filled<T>(0x3C));
}

TEST(InteropErrors, RefusedMatricesChangeNothing) {
  std::vector<KyBW16> buffer(100);
  char* const bytes = reinterpret_cast<char*>(buffer.data());
  const int cube[] = {2, 3, 4};
  KyImage<KyBW16> image(4, 3);
  KyImage<KyBW8> grey(4, 3);
  const struct {
    const char* what;
    cv::Mat mat;
    KY_ERRORS error;
  } cases[] = {
      {"another type", cv::Mat(3, 4, CV_8UC1), KY_ERROR_BAD_IMAGE_TYPE},
      {"signed", cv::Mat(3, 4, CV_16SC1), KY_ERROR_BAD_IMAGE_TYPE},
      {"two channels", cv::Mat(3, 4, CV_16UC2), KY_ERROR_BAD_IMAGE_TYPE},
      {"three dimensions", cv::Mat(3, cube, CV_16UC1), KY_ERROR_BAD_IMAGE_TYPE},
      {"empty", cv::Mat(), KY_ERROR_NO_IMAGE},
      {"no rows", cv::Mat(0, 4, CV_16UC1), KY_ERROR_NO_IMAGE},
      {"misaligned pixels", cv::Mat(3, 4, CV_16UC1, bytes + 1, 8),
       KY_ERROR_PARAMETER_1_OUT_OF_RANGE},
      {"rows too far apart", cv::Mat(1, 4, CV_16UC1, bytes, std::size_t{INT_MAX} + 1),
       KY_ERROR_PARAMETER_4_OUT_OF_RANGE},
  };
  const cv::Mat good(5, 6, CV_16UC1, cv::Scalar(7));
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    KyMatImage<KyBW16> fresh(c.mat), old(good);
    EXPECT_EQ(ImgOper(KY_OPER_ADD, &fresh, &grey, &image), KY_ERROR_NO_IMAGE);
    EXPECT_EQ(old.Attach(c.mat), c.error);
    EXPECT_EQ(KyGetError(), c.error);
    ASSERT_GT(KyGetTraceCount(), 0);
    EXPECT_STREQ(KyGetTrace(KyGetTraceCount() - 1), "KyMatImage::Attach");
    EXPECT_EQ(old.GetPixel(5, 4), 7);
    EXPECT_EQ(old.GetMat().data, good.data);
  }
  // The image would free its own pixels while it stands on them.
  KyMatImage<KyBW8> own;
  own.SetSize(4, 4);
  EXPECT_EQ(own.Attach(KyAsMat(own)), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);

  const KyROI<KyBW8> nothing;
  EXPECT_TRUE(KyAsMat(nothing).empty());
  EXPECT_EQ(KyGetError(), KY_ERROR_NO_IMAGE);
  EXPECT_STREQ(KyGetTrace(0), "KyAsMat");
}

// AddressSanitizer would see a read of freed pixels here.
TEST(InteropErrors, SharedPixelsLiveAsLongAsTheImage) {
  KyMatImage<KyBW8> image(cv::Mat(6, 5, CV_8UC1, cv::Scalar(9)));
  EXPECT_EQ(image.GetPixel(4, 5), 9);
  KyMatImage<KyBW8> moved(std::move(image));
  image = KyMatImage<KyBW8>(cv::Mat(2, 2, CV_8UC1, cv::Scalar(3)));
  EXPECT_EQ(moved.GetPixel(4, 5), 9);
  EXPECT_EQ(image.GetPixel(1, 1), 3);
  // The next frame of a stream; the same one again; and memory of the image's own afterwards.
  EXPECT_EQ(moved.Attach(image.GetMat()), KY_OK);
  EXPECT_EQ(moved.Attach(moved.GetMat()), KY_OK);
  moved.SetPixel(77, 0, 0);
  EXPECT_EQ(image.GetPixel(0, 0), 77);
  moved.SetSize(3, 3);
  EXPECT_EQ(moved.GetPixel(0, 0), 0);
  EXPECT_EQ(image.GetPixel(0, 0), 77);
}

}  // namespace
