// Geometry, addresses and lifetimes of ROIs and images.
#include "ky/roi.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "ky/image.h"

namespace {

template <class T>
KyBW8* At(const KyROI<T>& roi, int x, int y) {
  return static_cast<KyBW8*>(roi.GetPixelPtr(x, y));
}
KY_ERRORS ImageStatus(const KyGenericROI& roi) {
  KyOk();
  roi.CheckImage();
  return KyGetError();
}
KY_ERRORS SizeStatus(const KyGenericROI& a, const KyGenericROI* b) {
  KyOk();
  a.CheckSameSize(b);
  return KyGetError();
}

template <class T>
class PixelType : public testing::Test {};
using PixelTypes = testing::Types<KyBW8, KyBW16, KyBW32, KyC24, KyC15, KyC16, KyC24A, KyComplex64>;
TYPED_TEST_SUITE(PixelType, PixelTypes);

TYPED_TEST(PixelType, AddressesFollowTheParent) {
  using T = TypeParam;
  KyImage<T> image(10, 6);
  EXPECT_EQ(image.GetPixelSize(), static_cast<int>(sizeof(T)));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(At(image, 0, 1)) % 64, 0u);
  KyROI<T> outer(&image, 2, 1, 7, 4), inner(&outer, 1, 1, 5, 3);
  EXPECT_EQ(At(inner, 0, 0), At(image, 3, 2));
  for (int y = 0; y < 2; ++y) {
    EXPECT_EQ(At(inner, 5, y) - At(inner, 0, y), std::ptrdiff_t{5 * sizeof(T)});
    EXPECT_EQ(At(inner, 5, y) + inner.GetRowGap(), At(inner, 0, y + 1));
  }
  EXPECT_EQ(At(inner, 0, 3), At(inner, 0, 2) + inner.GetPitch());
  EXPECT_EQ(At(inner, -1, 0), nullptr);
  EXPECT_EQ(At(inner, 6, 0), nullptr);
  EXPECT_EQ(At(inner, 0, 4), nullptr);
  // The image grows, and the ROIs find the new pixels; it shrinks, and they have none.
  image.SetSize(100, 50);
  EXPECT_EQ(At(inner, 0, 0), At(image, 3, 2));
  image.SetSize(8, 4);
  EXPECT_EQ(At(inner, 0, 0), nullptr);
  EXPECT_EQ(ImageStatus(inner), KY_ERROR_NO_IMAGE);
}

TYPED_TEST(PixelType, PixelsAreZeroAndKeepTheirValue) {
  using T = TypeParam;
  KyImage<T> image(5, 4);
  KyROI<T> roi(&image, 1, 1, 3, 2);
  EXPECT_TRUE(image.GetPixel(4, 3) == T());
  T value{};
  reinterpret_cast<KyBW8&>(value) = 0x5A;
  roi.SetPixel(value, 2, 1);
  EXPECT_TRUE(image.GetPixel(3, 2) == value);
  KyOk();
  EXPECT_TRUE(roi.GetPixel(3, 0) == T());
  EXPECT_EQ(KyGetError(), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  KyOk();
  roi.SetPixel(value, 0, -1);
  EXPECT_EQ(KyGetError(), KY_ERROR_PARAMETER_2_OUT_OF_RANGE);
  KyOk();
  KyROI<T>().SetPixel(value, 0, 0);
  EXPECT_EQ(KyGetError(), KY_ERROR_NO_IMAGE);
}

TEST(Roi, RectanglesThatLeaveTheParentHaveNoPixels) {
  KyImage<KyBW8> image(10, 6);
  struct Case {
    int x, y, width, height;
    bool inside;
  };
  const Case cases[] = {
      {0, 0, 10, 6, true},       {10, 6, 0, 0, true},  {0, 0, 11, 6, false},
      {-1, 0, 2, 2, false},      {0, -1, 2, 2, false}, {5, 5, 5, 2, false},
      {0, 0, -1, 3, false},      {0, 0, 3, -1, false}, {INT_MAX, 0, 1, 1, false},
      {1, 1, INT_MAX, 1, false}, {11, 0, 0, 0, false}, {INT_MIN, 0, INT_MAX, 1, false}};
  KyROI<KyBW8> roi(&image, 0, 0, 0, 0);
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.x << ' ' << c.y << ' ' << c.width << ' ' << c.height);
    roi.SetPlacement(c.x, c.y, c.width, c.height);
    EXPECT_EQ(At(roi, 0, 0) != nullptr, c.inside);
    EXPECT_EQ(ImageStatus(roi), c.inside ? KY_OK : KY_ERROR_NO_IMAGE);
    EXPECT_EQ(roi.GetPitch(), c.inside ? image.GetPitch() : 0);
  }
  // An ROI on such an ROI has none either, even where the image has pixels.
  KyROI<KyBW8> child(&roi, 0, 0, 1, 1);
  roi.SetPlacement(5, 5, 8, 1);
  EXPECT_EQ(At(child, 0, 0), nullptr);
  // Nor has an image whose rectangle was moved off its buffer.
  image.SetPlacement(1, 0, 10, 6);
  EXPECT_EQ(ImageStatus(image), KY_ERROR_NO_IMAGE);
  image.SetPlacement(1, 0, 9, 6);
  EXPECT_EQ(ImageStatus(image), KY_OK);
}

TEST(Roi, ParentsInARingHaveNoPixels) {
  KyROI<KyBW8> own(&own, 0, 0, 1, 1);
  struct Ring {
    KyROI<KyBW8> a, b, c, onto;
    Ring() : a(&b, 0, 0, 3, 3), b(&c, 0, 0, 3, 3), c(&a, 0, 0, 3, 3), onto(&a, 1, 1, 1, 1) {}
  } ring;
  for (const auto* roi : {&own, &ring.a, &ring.onto}) {
    EXPECT_EQ(ImageStatus(*roi), KY_ERROR_NO_IMAGE);
    EXPECT_EQ(At(*roi, 0, 0), nullptr);
  }
}

TEST(Roi, SizeChecks) {
  KyImage<KyBW8> image(10, 6), other(10, 5), none;
  KyROI<KyC24> unattached;
  EXPECT_EQ(SizeStatus(image, &image), KY_OK);
  EXPECT_EQ(SizeStatus(image, &other), KY_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(SizeStatus(image, &none), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(SizeStatus(none, &image), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(SizeStatus(none, &unattached), KY_OK);
  EXPECT_EQ(SizeStatus(image, nullptr), KY_ERROR_NO_IMAGE);
  // The checks never clear a status.
  KySetError(KY_ERROR_INTERNAL);
  image.CheckImage();
  image.CheckSameSize(&image);
  EXPECT_EQ(KyGetError(), KY_ERROR_INTERNAL);
  KyOk();
}

TEST(Roi, PositionsOutsideAreOwnedByTheRootOrByNobody) {
  KyImage<KyBW8> image(10, 6);
  KyROI<KyBW8> roi(&image, 3, 2, 4, 2);
  EXPECT_EQ(roi.GetRootPixelPtr(4, 0), At(image, 7, 2));  // just past a row
  EXPECT_EQ(roi.GetRootPixelPtr(-3, -2), At(image, 0, 0));
  EXPECT_EQ(roi.GetRootPixelPtr(-4, 0), nullptr);
  EXPECT_EQ(roi.GetRootPixelPtr(7, 0), nullptr);
  EXPECT_EQ(roi.GetRootPixelPtr(0, 4), At(image, 3, 5) + image.GetPitch());  // the spare row
  EXPECT_EQ(roi.GetRootPixelPtr(0, 5), nullptr);
  EXPECT_EQ(roi.GetRootPixelPtr(INT_MAX, INT_MAX), nullptr);
  std::vector<KyBW8> foreign(60);
  image.Attach(foreign.data(), 10, 6, 10);
  EXPECT_EQ(roi.GetRootPixelPtr(0, 3), foreign.data() + 53);
  EXPECT_EQ(roi.GetRootPixelPtr(0, 4), nullptr);  // foreign memory has no spare row
}

TEST(Roi, OneBitPixels) {
  KyImage<KyBW1> image(21, 3);
  KyROI<KyBW1> roi(&image, 3, 1, 14, 2);
  EXPECT_EQ(roi.GetPixelSize(), 0);
  EXPECT_EQ(roi.GetBitOffset(0, 0), 3);
  EXPECT_EQ(roi.GetBitOffset(5, 0), 0);
  EXPECT_EQ(At(roi, 5, 0), At(image, 0, 1) + 1);
  EXPECT_EQ(At(roi, 14, 0) + roi.GetRowGap(), At(roi, 0, 1));
  roi.SetPixel(true, 0, 0);
  roi.SetPixel(true, 6, 0);
  EXPECT_EQ(*At(image, 0, 1), 0x10);
  EXPECT_EQ(At(image, 0, 1)[1], 0x40);
  EXPECT_TRUE(roi.GetPixel(6, 0));
  roi.SetPixel(false, 0, 0);
  EXPECT_FALSE(image.GetPixel(3, 1));
}

TEST(Roi, Masks) {
  KyImage<KyBW8> image(4, 4);
  EXPECT_EQ(image.GetMaskOffsets(), nullptr);
  EXPECT_EQ(image.SetMask(nullptr, 1, false), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(image.GetMaskOffsets(), nullptr);
  ASSERT_EQ(image.SetMask(nullptr, 0, false), KY_OK);
  EXPECT_NE(image.GetMaskOffsets(), nullptr);  // a mask that lets nothing through
  KyMaskRun runs[] = {{1, 2}, {3, 4}};
  ASSERT_EQ(image.SetMask(runs, 2, true), KY_OK);
  runs[1].length = 99;
  EXPECT_EQ(image.GetMaskOffsets()[1].length, 4);
  EXPECT_TRUE(image.IsMaskAbsolute());
  image.ClearMask();
  EXPECT_EQ(image.GetMaskOffsets(), nullptr);
}

TEST(Image, SizesThatCannotBeHad) {
  KyImage<KyC24> image(3, 2);
  const struct {
    int width, height;
  } sizes[] = {{-1, 2}, {2, -1}, {INT_MAX, 1}, {1000000, INT_MAX}, {INT_MIN, INT_MIN}};
  for (const auto& size : sizes) {
    image.SetSize(size.width, size.height);
    EXPECT_EQ(KyGetError(), KY_ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(image.GetWidth(), 3);
    EXPECT_NE(At(image, 0, 0), nullptr);
  }
  image.SetSize(nullptr);
  EXPECT_EQ(KyGetError(), KY_ERROR_NO_IMAGE);
  KyROI<KyBW8> roi(nullptr, 0, 0, 5, 4);
  image.SetSize(&roi);
  EXPECT_EQ(KyGetError(), KY_OK);  // cleared first
  EXPECT_EQ(image.GetHeight(), 4);
  image.SetSize(5, 0);
  EXPECT_NE(At(image, 5, 0), nullptr);  // empty, with an image
  image.SetSize(0, 0);
  EXPECT_EQ(At(image, 0, 0), nullptr);
}

TEST(Image, MovesItsPixelsAndLeavesRoisWithoutAny) {
  KyImage<KyBW8> image(3, 2);
  KyROI<KyBW8> roi(&image, 1, 1, 1, 1);
  image.SetPixel(42, 2, 1);
  KyImage<KyBW8> moved(std::move(image));
  EXPECT_EQ(moved.GetPixel(2, 1), 42);
  EXPECT_EQ(At(image, 0, 0), nullptr);  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(At(roi, 0, 0), nullptr);
  image.SetSize(4, 4);
  EXPECT_NE(At(roi, 0, 0), nullptr);
  ASSERT_EQ(moved.SetMask(nullptr, 0, false), KY_OK);
  moved = std::move(image);
  EXPECT_EQ(moved.GetWidth(), 4);
  EXPECT_EQ(moved.GetMaskOffsets(), nullptr);
  EXPECT_EQ(image.GetMaskOffsets(), nullptr);
  KyImage<KyBW8>& same = moved;
  moved = std::move(same);
  EXPECT_EQ(moved.GetWidth(), 4);
}

TEST(Image, WrapsForeignMemory) {
  std::vector<KyBW16> memory(64, 7);
  KyImage<KyBW16> image;
  ASSERT_EQ(image.Attach(memory.data(), 5, 4, 12), KY_OK);
  image.SetPixel(9, 4, 3);
  EXPECT_EQ(memory[3 * 6 + 4], 9);
  auto* const odd = reinterpret_cast<KyBW16*>(reinterpret_cast<KyBW8*>(memory.data()) + 1);
  EXPECT_EQ(image.Attach(nullptr, 5, 4, 12), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(image.Attach(odd, 5, 4, 12), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(image.Attach(memory.data(), -1, 4, 12), KY_ERROR_PARAMETER_2_OUT_OF_RANGE);
  EXPECT_EQ(image.Attach(memory.data(), 5, -4, 12), KY_ERROR_PARAMETER_3_OUT_OF_RANGE);
  EXPECT_EQ(image.Attach(memory.data(), 5, 4, 9), KY_ERROR_PARAMETER_4_OUT_OF_RANGE);
  EXPECT_EQ(image.Attach(memory.data(), 5, 4, 11), KY_ERROR_PARAMETER_4_OUT_OF_RANGE);
  EXPECT_STREQ(KyGetTrace(0), "KyImage::Attach");
  EXPECT_EQ(image.GetPixel(4, 3), 9);
  // Its own pixels it would free, those that it wraps it may wrap again.
  EXPECT_EQ(image.Attach(memory.data() + 6, 5, 3, 12), KY_OK);
  EXPECT_EQ(image.GetPixel(4, 2), 9);
  image.SetSize(5, 4);
  auto* const spare = reinterpret_cast<KyBW16*>(image.GetPixelPtr(0, 4));
  EXPECT_EQ(image.Attach(spare, 5, 1, 10), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(image.GetHeight(), 4);
}

}  // namespace
