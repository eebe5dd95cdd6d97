// Pyramids: levels, and what becomes of them when a call fails.
#include "ky/pyramid.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "ky/sizes.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

template <class T>
const KyROI<T>* LevelOf(const KyPyramid& pyramid, int level) {
  if constexpr (sizeof(T) == 1)
    return pyramid.GetBW8Level(level);
  else
    return pyramid.GetC24Level(level);
}

// Level 0 is `source`, and each next one ImgHalve of the one above.
template <class T>
void ExpectLevels(const KyPyramid& pyramid, const Picture<T>& source, int levels) {
  ASSERT_EQ(pyramid.GetNumLevels(), levels);
  Picture<T> expected = source;
  for (int i = 0; i < levels; ++i) {
    SCOPED_TRACE("level " + std::to_string(i));
    const KyROI<T>* const level = LevelOf<T>(pyramid, i);
    ASSERT_NE(level, nullptr);
    EXPECT_EQ(pyramid.GetLevel(i), level);
    ASSERT_EQ(level->GetWidth(), expected.width);
    ASSERT_EQ(level->GetHeight(), expected.height);
    EXPECT_TRUE(Same(expected, Canvas<T>::Get(*level)));
    if (i + 1 == levels) break;
    KyImage<T> half(expected.width / 2, expected.height / 2);
    ASSERT_EQ(ImgHalve(level, &half), KY_OK);
    expected = Canvas<T>::Get(half);
  }
  for (const int level : {-1, levels, 31, INT_MAX}) EXPECT_EQ(pyramid.GetLevel(level), nullptr);
}

template <class T>
void CheckBuilding(KY_IMAGE_TYPES type) {
  ForEachPath([&](const std::string&) {
    Random random(4);
    KyPyramid pyramid;
    ASSERT_EQ(pyramid.SetNumLevels(3, type), KY_OK);
    EXPECT_EQ(pyramid.GetImageType(), type);
    EXPECT_EQ(pyramid.GetLevel(2)->GetPixelPtr(0, 0), nullptr);
    Picture<T> picture;
    for (const Size size : {Size{61, 40}, Size{61, 40}, Size{4, 7}, Size{130, 33}}) {
      picture = RandomPicture<T>(size.width, size.height, random);
      Canvas<T> source(picture, {3, 1, 2}, random);
      ASSERT_EQ(pyramid.Build(source.roi()), KY_OK);
      EXPECT_TRUE(source.Unchanged());
    }
    ExpectLevels(pyramid, picture, 3);
    ASSERT_EQ(pyramid.Halve(), KY_OK);
    ASSERT_EQ(pyramid.Halve(), KY_OK);
    ExpectLevels(pyramid, picture, 5);
    ASSERT_EQ(pyramid.Halve(), KY_OK);  // 4 x 1
    EXPECT_EQ(pyramid.Halve(), KY_ERROR_PYRAMID_HALVE);
    ExpectLevels(pyramid, picture, 6);

    // A part of one of its own levels as the source, too small for six of them at first.
    EXPECT_EQ(pyramid.Build(LevelOf<T>(pyramid, 1)), KY_ERROR_PYRAMID_BUILD);
    ExpectLevels(pyramid, picture, 6);
    KyPyramid moved(std::move(pyramid));
    EXPECT_EQ(pyramid.GetNumLevels(), 0);
    EXPECT_EQ(pyramid.GetImageType(), KY_IMAGE_BW8);
    ExpectLevels(moved, picture, 6);
    ASSERT_EQ(moved.Build(LevelOf<T>(moved, 0)), KY_OK);
    ExpectLevels(moved, picture, 6);
    const Picture<T> small = RandomPicture<T>(32, 33, random);
    Canvas<T> source(small, {}, random);
    ASSERT_EQ(moved.Build(source.roi()), KY_OK);
    ExpectLevels(moved, small, 6);
    pyramid = std::move(moved);
    ExpectLevels(pyramid, small, 6);
  });
}

TEST(Pyramid, Grey) { CheckBuilding<KyBW8>(KY_IMAGE_BW8); }
TEST(Pyramid, Color) { CheckBuilding<KyC24>(KY_IMAGE_C24); }

TEST(Pyramid, Refusals) {
  using H = Harness<KyBW8>;
  KyPyramid pyramid;
  KyImage<KyBW8> image(8, 7), narrow(3, 100);
  KyImage<KyC24> color(8, 8);
  const KyROI<KyBW8>* const null = nullptr;
  EXPECT_EQ(pyramid.GetImageType(), KY_IMAGE_BW8);
  EXPECT_EQ(pyramid.GetNumLevels(), 0);
  EXPECT_EQ(pyramid.GetLevel(0), nullptr);
  H::ExpectTrace(pyramid.Halve(), {"KyPyramid::Halve"});
  EXPECT_EQ(KyGetError(), KY_ERROR_PYRAMID_HALVE);
  H::ExpectTrace(pyramid.Build(&image), {"KyPyramid::Build"});
  EXPECT_EQ(KyGetError(), KY_ERROR_PYRAMID_BUILD);
  ASSERT_EQ(pyramid.SetNumLevels(3), KY_OK);
  EXPECT_EQ(pyramid.Halve(), KY_ERROR_PYRAMID_HALVE);
  ASSERT_EQ(pyramid.Build(&image), KY_OK);
  for (const int levels : {-1, 0, 31, INT_MAX})
    H::ExpectTrace(pyramid.SetNumLevels(levels), {"KyPyramid::SetNumLevels"});
  EXPECT_EQ(KyGetError(), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  for (const int type : {0, 3, -1})
    EXPECT_EQ(pyramid.SetNumLevels(2, static_cast<KY_IMAGE_TYPES>(type)), KY_ERROR_BAD_IMAGE_TYPE);
  EXPECT_EQ(pyramid.Build(&narrow), KY_ERROR_PYRAMID_BUILD);
  EXPECT_EQ(pyramid.Build(&color), KY_ERROR_PYRAMID_BUILD);
  EXPECT_EQ(pyramid.Build(null), KY_ERROR_PYRAMID_BUILD);
  EXPECT_EQ(pyramid.GetC24Level(0), nullptr);
  ExpectLevels(pyramid, Canvas<KyBW8>::Get(image), 3);
  ASSERT_EQ(pyramid.SetNumLevels(30, KY_IMAGE_C24), KY_OK);
  EXPECT_EQ(pyramid.GetBW8Level(0), nullptr);
  ASSERT_NE(pyramid.GetC24Level(29), nullptr);
  EXPECT_EQ(pyramid.GetC24Level(0)->GetPixelPtr(0, 0), nullptr);
}

}  // namespace
