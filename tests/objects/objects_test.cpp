// Objects against a model that fills them pixel by pixel and measures them by the definitions.
#include "ky/objects.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "ky/ky.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

using Objects = std::vector<KyObject>;

constexpr int kDx[] = {1, -1, 0, 0, 1, 1, -1, -1}, kDy[] = {0, 0, 1, -1, 1, -1, 1, -1};

// Gives `to` to all positions with `from` that are connected with (x, y).
void Flood(Picture<KyBW32>& in, int x, int y, KyBW32 from, KyBW32 to, bool eight) {
  std::vector<std::pair<int, int>> todo{{x, y}};
  in.At(x, y) = to;
  while (!todo.empty()) {
    const auto [px, py] = todo.back();
    todo.pop_back();
    for (int d = 0; d < (eight ? 8 : 4); ++d) {
      const int nx = px + kDx[d], ny = py + kDy[d];
      if (!in.Has(nx, ny) || in.At(nx, ny) != from) continue;
      in.At(nx, ny) = to;
      todo.push_back({nx, ny});
    }
  }
}

struct Found {
  Objects objects;
  Picture<KyBW32> labels;
};

// `mask` is 1 at the pixels of objects and 0 elsewhere.
Found Model(const Picture<KyBW32>& mask, const Picture<KyBW8>& levels, CONNEXITY connexity) {
  constexpr KyBW32 kObject = 0xFFFFFFFF;
  const bool eight = connexity == KY_CONNEXITY_8;
  Found found{{}, mask};
  Picture<KyBW32>& labels = found.labels;
  for (KyBW32& v : labels.pixels) v = v != 0 ? kObject : 0;
  for (int y = 0; y < mask.height; ++y) {
    for (int x = 0; x < mask.width; ++x) {
      if (labels.At(x, y) != kObject) continue;
      KyObject object{};
      object.firstX = x;
      object.firstY = y;
      object.label = static_cast<KyBW32>(found.objects.size()) + 1;
      object.lowest = 255;
      Flood(labels, x, y, kObject, object.label, eight);
      found.objects.push_back(object);
    }
  }
  for (KyObject& o : found.objects) {
    int left = mask.width, top = mask.height, right = 0, bottom = 0;
    // The object alone, with a margin that stands for the rest of the plane.
    Picture<KyBW32> alone(mask.width + 2, mask.height + 2, 0);
    for (int y = 0; y < mask.height; ++y) {
      for (int x = 0; x < mask.width; ++x) {
        if (labels.At(x, y) != o.label) continue;
        alone.At(x + 1, y + 1) = 1;
        const auto ux = static_cast<std::uint64_t>(x), uy = static_cast<std::uint64_t>(y);
        const KyBW8 level = levels.At(x, y);
        o.sumLevels += level;
        o.sumX += ux;
        o.sumY += uy;
        o.sumXX += ux * ux;
        o.sumXY += ux * uy;
        o.sumYY += uy * uy;
        ++o.area;
        o.lowest = std::min(o.lowest, level);
        o.highest = std::max(o.highest, level);
        left = std::min(left, x), top = std::min(top, y);
        right = std::max(right, x), bottom = std::max(bottom, y);
      }
    }
    o.x = left, o.y = top, o.width = right - left + 1, o.height = bottom - top + 1;
    o.touches = static_cast<KyBW8>((left == 0) + 2 * (top == 0) + 4 * (right == mask.width - 1) +
                                   8 * (bottom == mask.height - 1));
    for (int y = 0; y < alone.height; ++y)
      for (int x = 0; x < alone.width; ++x)
        for (int d = 0; d < 8; ++d) {
          const int nx = x + kDx[d], ny = y + kDy[d];
          const bool other = alone.Has(nx, ny) && alone.At(nx, ny) == 1;
          if (alone.At(x, y) == 1 && !other) ++(d < 4 ? o.straight : o.diagonal);
        }
    o.holes = -1;
    for (int y = 0; y < alone.height; ++y)
      for (int x = 0; x < alone.width; ++x)
        if (alone.At(x, y) == 0) {
          Flood(alone, x, y, 0, 2, !eight);
          ++o.holes;
        }
  }
  return found;
}

void ExpectSame(const KyObjectsVector& found, const Objects& expected) {
  ASSERT_EQ(found.GetNumElements(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const KyObject &a = found[static_cast<unsigned>(i)], &b = expected[i];
    EXPECT_TRUE(a == b) << "object " << i + 1 << ": at (" << a.firstX << ", " << a.firstY
                        << "), area " << a.area << " " << b.area << ", holes " << a.holes << " "
                        << b.holes << ", straight " << a.straight << " " << b.straight
                        << ", diagonal " << a.diagonal << " " << b.diagonal;
  }
}

// All ways to find the objects of a mask: grey, bits, with and without labels and levels.
void Check(const Picture<KyBW32>& mask, Placement place, Random& random) {
  const int width = mask.width, height = mask.height;
  Picture<KyBW8> grey(width, height), ones(width, height, 1);
  for (std::size_t i = 0; i < grey.pixels.size(); ++i)
    grey.pixels[i] = static_cast<KyBW8>(mask.pixels[i] != 0 ? 60 + random() % 120
                                        : i % 2 == 0        ? random() % 60
                                                            : 180 + random() % 76);
  const auto other = RandomPicture<KyBW8>(width, height, random);
  Canvas<KyBW8> source(grey, place, random), levels(other, place, random);
  KyImage<KyBW1> bits(width + 29, height + 1);
  for (int y = 0; y <= height; ++y)
    for (int x = 0; x < width + 29; ++x) bits.SetPixel(random() % 2 != 0, x, y);
  KyROI<KyBW1> area(&bits, static_cast<int>(random() % 16), 1, width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) area.SetPixel(mask.At(x, y) != 0, x, y);

  KyObjectsVector found;
  for (const CONNEXITY connexity : {KY_CONNEXITY_4, KY_CONNEXITY_8}) {
    SCOPED_TRACE(connexity == KY_CONNEXITY_4 ? "4-connected" : "8-connected");
    Canvas<KyBW32> labels(RandomPicture<KyBW32>(width, height, random), place, random);
    const Found own = Model(mask, grey, connexity), others = Model(mask, other, connexity);
    const auto* const in = source.roi();
    EXPECT_EQ(ImgFindObjects(in, 60, 179, connexity, &found), KY_OK);
    ExpectSame(found, own.objects);
    EXPECT_EQ(ImgFindObjects(in, 60, 179, connexity, &found, labels.roi(), levels.roi()), KY_OK);
    ExpectSame(found, others.objects);
    EXPECT_TRUE(Same(own.labels, labels.Get()));
    EXPECT_TRUE(labels.OnlyChanged(*labels.roi()));

    // Every third object in another order.
    KyObjectsVector some;
    for (unsigned i = found.GetNumElements(); i-- > 0;)
      if (i % 3 == 0) some.AddElement(found[i]);
    Canvas<KyBW8> drawn(other, place, random);
    Picture<KyBW8> expected = other;
    for (std::size_t i = 0; i < expected.pixels.size(); ++i)
      if (own.labels.pixels[i] % 3 == 1) expected.pixels[i] = 200;
    EXPECT_EQ(ImgDrawObjects(labels.roi(), &some, 200, drawn.roi()), KY_OK);
    EXPECT_TRUE(Same(expected, drawn.Get()));
    EXPECT_TRUE(drawn.OnlyChanged(*drawn.roi()));
    EXPECT_EQ(ImgFindObjects(&area, connexity, &found), KY_OK);
    ExpectSame(found, Model(mask, ones, connexity).objects);
    EXPECT_EQ(ImgFindObjects(&area, connexity, &found, labels.roi(), levels.roi()), KY_OK);
    ExpectSame(found, others.objects);
    EXPECT_TRUE(Same(own.labels, labels.Get()));
  }
  EXPECT_TRUE(source.Unchanged() && levels.Unchanged());
}

TEST(FindObjects, NoiseOfEveryDensity) {
  ForEachPath([](const std::string&) {
    Random random(1);
    int turn = 0;
    for (const Size size : SizesToTry(AwkwardSizes())) {
      if (HasFailure()) return;
      SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
      const bool large =
          size.width > 1000;  // few objects, as the model looks at all pixels for each
      const auto percent = static_cast<unsigned>(large ? 97 : 10 + random() % 85);
      Picture<KyBW32> mask(size.width, size.height);
      for (KyBW32& v : mask.pixels) v = random() % 100 < percent;
      Check(mask, kPlacements[turn++ % 3], random);
    }
    for (int i = 0; i < 12; ++i) {
      Picture<KyBW32> mask(20 + i, 24);
      for (KyBW32& v : mask.pixels) v = random() % 100 < 35u + 4 * static_cast<unsigned>(i);
      Check(mask, kPlacements[i % 3], random);
    }
  });
}

// Labels that join late, and objects in holes of objects.
TEST(FindObjects, CombsSpiralsAndNestedRings) {
  constexpr int kSize = 41;
  const auto draw = [](auto inside) {
    Picture<KyBW32> mask(kSize, kSize);
    for (int y = 0; y < kSize; ++y)
      for (int x = 0; x < kSize; ++x) mask.At(x, y) = inside(x, y);
    return mask;
  };
  const auto ring = [](int x, int y) { return std::max(std::abs(x - 20), std::abs(y - 20)); };
  Picture<KyBW32> spiral(kSize, kSize);
  for (int x = 0, y = 0, d = 0, left = 40, turns = 0; left > 0;) {
    constexpr int kTurn[] = {0, 2, 1, 3};
    for (int i = 0; i < left; ++i, x += kDx[kTurn[d]], y += kDy[kTurn[d]]) spiral.At(x, y) = 1;
    d = (d + 1) % 4;
    if (++turns > 2 && turns % 2 == 1) left -= 2;
  }
  Random random(2);
  for (const auto& mask :
       {draw([](int x, int y) { return x % 2 == 0 || y == kSize - 1; }),
        draw([](int x, int y) { return y % 2 == 0 || x == kSize - 1; }),
        draw([](int x, int y) { return (x + y) % 2 == 0; }),
        draw([](int x, int y) { return (x + y) % 7 == 0 || (x + 40 - y) % 7 == 0; }),
        draw([&](int x, int y) { return ring(x, y) % 2 == 0; }), spiral})
    Check(mask, kPlacements[random() % 3], random);
  // One comb: the teeth have their labels before the back joins them, and the last rows come after.
  KyImage<KyBW8> image(kSize, kSize + 2);
  ImgCopy(KyBW8(0), &image);
  for (int x = 0; x < kSize; x += 2)
    for (int y = 0; y < 9; ++y) image.SetPixel(9, x, y);
  for (int x = 0; x < kSize; ++x) image.SetPixel(9, x, 9);
  image.SetPixel(9, 5, 11);
  KyObjectsVector found;
  ASSERT_EQ(ImgFindObjects(&image, 9, 9, KY_CONNEXITY_4, &found), KY_OK);
  ASSERT_EQ(found.GetNumElements(), 2u);
  EXPECT_EQ(found[0].area, 21u * 9 + 41);
  EXPECT_EQ(found[1].label, 2u);
}

// Sums that leave 32 bits and, in powers, what the ends of a run would need in 128.
TEST(FindObjects, SumsOfLongRuns) {
  constexpr int kWidth = 3000000;
  KyImage<KyBW8> image(kWidth, 2);
  ImgCopy(KyBW8(255), &image);
  KyObjectsVector found;
  ASSERT_EQ(ImgFindObjects(&image, 1, 255, KY_CONNEXITY_4, &found), KY_OK);
  ASSERT_EQ(found.GetNumElements(), 1u);
  std::uint64_t x = 0, xx = 0;
  for (std::uint64_t i = 0; i < kWidth; ++i) x += i, xx += i * i;
  EXPECT_EQ(found[0].sumLevels, 255u * std::uint64_t{2 * kWidth});
  EXPECT_EQ(found[0].sumX, 2 * x);
  EXPECT_EQ(found[0].sumXX, 2 * xx);
  EXPECT_EQ(found[0].sumXY, x);
  EXPECT_EQ(found[0].straight, 2u * kWidth + 4);
}

TEST(FindObjects, RefusalsLeaveEverythingAsItWas) {
  KyImage<KyBW8> image(8, 4), narrow(7, 4);
  KyImage<KyBW32> labels(8, 4), low(8, 3);
  KyROI<KyBW8> none;
  KyROI<KyBW32> noLabels;
  ImgCopy(KyBW8(1), &image);
  labels.SetPixel(77, 0, 0);
  KyObjectsVector found;
  found.AddElement(KyObject{});
  const auto find = [&](int least, int most, int connexity, KyROI<KyBW32>* to,
                        const KyROI<KyBW8>* levels) {
    return ImgFindObjects(&image, static_cast<KyBW8>(least), static_cast<KyBW8>(most),
                          static_cast<CONNEXITY>(connexity), &found, to, levels);
  };
  EXPECT_EQ(find(1, 1, 1, &noLabels, nullptr), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(find(1, 1, 1, &low, nullptr), KY_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(find(1, 1, 1, &labels, &none), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(find(1, 1, 1, &labels, &narrow), KY_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(find(2, 1, 7, &labels, &image), KY_ERROR_BAD_INTERVAL);
  EXPECT_EQ(find(1, 1, 2, &labels, &image), KY_ERROR_UNSUPPORTED_OPERATION);
  EXPECT_EQ(ImgFindObjects(&image, 1, 1, KY_CONNEXITY_4, nullptr, &noLabels),
            KY_ERROR_BAD_VECTOR_TYPE);
  const auto pixels = static_cast<KyBW8*>(labels.GetPixelPtr(0, 0));
  KyImage<KyBW8> shared;
  shared.Attach(pixels + 4, 8, 4, labels.GetPitch());
  EXPECT_EQ(find(2, 1, 1, &labels, &shared), KY_ERROR_COLOR_PLANES);
  EXPECT_EQ(ImgFindObjects(&shared, 2, 1, KY_CONNEXITY_4, &found, &labels), KY_ERROR_COLOR_PLANES);
  KyImage<KyBW1> bits;
  bits.Attach(pixels + 4, 8, 4, labels.GetPitch());
  EXPECT_EQ(ImgFindObjects(&bits, KY_CONNEXITY_4, &found, &labels), KY_ERROR_COLOR_PLANES);
  EXPECT_EQ(found.GetNumElements(), 1u);
  EXPECT_EQ(labels.GetPixel(0, 0), 77u);
}

// Against ground that is flooded from a margin around the mask, into another image, in place, and
// onto pixels that overlap the source.
TEST(FillHoles, LeavesTheGroundThatReachesTheBorder) {
  Random random(6);
  int filled = 0;
  for (int turn = 0; turn < 300; ++turn) {
    SCOPED_TRACE(turn);
    const int width = static_cast<int>(random() % 40), height = static_cast<int>(random() % 30);
    const bool eight = turn % 2 == 0;
    Picture<KyBW8> mask(width, height);
    Picture<KyBW32> ground(width + 2, height + 2, 1);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        const bool object = random() % 100 < 30u + static_cast<unsigned>(turn % 50);
        mask.At(x, y) = static_cast<KyBW8>(object ? 1 + random() % 255 : 0);
        ground.At(x + 1, y + 1) = !object;
      }
    Flood(ground, 0, 0, 1, 2, !eight);
    Picture<KyBW8> expected = mask;
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        if (ground.At(x + 1, y + 1) == 1) expected.At(x, y) = 7, ++filled;
    const CONNEXITY connexity = eight ? KY_CONNEXITY_8 : KY_CONNEXITY_4;
    Canvas<KyBW8> source(mask, kPlacements[turn % 3], random),
        apart(RandomPicture<KyBW8>(width, height, random), kPlacements[turn % 3], random);
    EXPECT_EQ(ImgFillHoles(source.roi(), apart.roi(), connexity, 7), KY_OK);
    EXPECT_TRUE(Same(expected, apart.Get()) && source.Unchanged());
    EXPECT_TRUE(apart.OnlyChanged(*apart.roi()));
    EXPECT_EQ(ImgFillHoles(source.roi(), nullptr, connexity, 7), KY_OK);
    EXPECT_TRUE(Same(expected, source.Get()));
    KyImage<KyBW8> image(width + 3, height + 2);
    KyROI<KyBW8> from(&image, 1, 0, width, height), to(&image, turn % 4, turn % 3, width, height);
    for (int i = 0; i < width * height; ++i)
      from.SetPixel(mask.At(i % width, i / width), i % width, i / width);
    EXPECT_EQ(ImgFillHoles(&from, &to, connexity, 7), KY_OK);
    for (int i = 0; i < width * height; ++i)
      ASSERT_EQ(to.GetPixel(i % width, i / width), expected.At(i % width, i / width));
  }
  EXPECT_GT(filled, 1000);
}

TEST(SelectObjects, EachLimit) {
  Objects all(5);
  for (unsigned i = 0; i < 5; ++i) {
    all[i].label = all[i].area = i + 1;
    all[i].width = static_cast<int>(i) + 10;
    all[i].height = static_cast<int>(i) + 20;
    all[i].holes = static_cast<int>(i);
    all[i].touches = i == 2 ? 4 : 0;
  }
  const auto left = [&](const KyObjectLimits& limits) {
    KyObjectsVector objects;
    for (const KyObject& object : all) objects.AddElement(object);
    EXPECT_EQ(ImgSelectObjects(&objects, limits), KY_OK);
    std::string labels;
    for (const KyObject& object : objects) labels += std::to_string(object.label);
    return labels;
  };
  EXPECT_EQ(left({}), "12345");
  EXPECT_EQ(left({.minArea = 2, .maxArea = 4}), "234");
  EXPECT_EQ(left({.minWidth = 12, .maxWidth = 13}), "34");
  EXPECT_EQ(left({.minHeight = 21, .maxHeight = 22}), "23");
  EXPECT_EQ(left({.minHoles = 3, .maxHoles = 3}), "4");
  EXPECT_EQ(left({.touching = false}), "1245");
  KyObjectsVector objects;
  EXPECT_EQ(ImgSelectObjects(nullptr, {.minArea = 2, .maxArea = 1}), KY_ERROR_BAD_VECTOR_TYPE);
  for (const KyObjectLimits& bad :
       {KyObjectLimits{.minArea = 2, .maxArea = 1}, KyObjectLimits{.minWidth = 2, .maxWidth = 1},
        KyObjectLimits{.minHeight = 2, .maxHeight = 1},
        KyObjectLimits{.minHoles = 2, .maxHoles = 1}})
    EXPECT_EQ(ImgSelectObjects(&objects, bad), KY_ERROR_BAD_INTERVAL);
}

TEST(DrawObjects, UnusualLabelsAndSharedMemory) {
  KyImage<KyBW32> labels(9, 2);
  const KyBW32 kLabels[] = {0, 5, 5, 0xFFFFFFFF, 7, 0, 2, 2, 9};
  for (int x = 0; x < 18; ++x) labels.SetPixel(kLabels[x % 9], x % 9, x / 9);
  KyObjectsVector drawn;
  for (const KyBW32 label : {5u, 0u, 0xFFFFFFFFu, 2u, 1000u, 5u}) {
    KyObject object{};
    object.label = label;
    drawn.AddElement(object);
  }
  KyImage<KyBW8> shared;
  shared.Attach(static_cast<KyBW8*>(labels.GetPixelPtr(0, 0)), 9, 2, labels.GetPitch());
  KyImage<KyBW8> expected;
  expected.CopyFrom(shared);
  for (const int x : {1, 2, 3, 6, 7})
    for (int y = 0; y < 2; ++y) expected.SetPixel(200, x, y);
  EXPECT_EQ(ImgDrawObjects(&labels, &drawn, 200, &shared), KY_OK);
  for (int x = 0; x < 18; ++x)
    EXPECT_EQ(shared.GetPixel(x % 9, x / 9), expected.GetPixel(x % 9, x / 9)) << x;
}

TEST(ObjectsVector, File) {
  KyObject object{};
  object.sumLevels = 0x0102030405060708;
  object.touches = 9;
  KyObjectsVector saved, loaded;
  saved.AddElement(object);
  const std::string name = testing::TempDir() + "ky_objects_" + std::to_string(getpid());
  ASSERT_EQ(saved.Save(name.c_str()), KY_OK);
  std::ifstream file(name, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), {});
  ASSERT_EQ(bytes.size(), 8u + 96);
  EXPECT_EQ(bytes.substr(0, 10), std::string("Q\x0b\x01\x5b\x01\0\0\0\x08\x07", 10));
  EXPECT_EQ(bytes[8 + 94], 9);
  ASSERT_EQ(loaded.Load(name.c_str()), KY_OK);
  EXPECT_TRUE(loaded.GetNumElements() == 1 && loaded[0] == object);
  std::remove(name.c_str());
}

KyObjectShape ShapeOf(const Picture<KyBW8>& picture) {
  Random random(1);
  Canvas<KyBW8> canvas(picture, {}, random);
  KyObjectsVector found;
  EXPECT_EQ(ImgFindObjects(canvas.roi(), 1, 255, KY_CONNEXITY_8, &found), KY_OK);
  KyObjectShape shape{};
  EXPECT_EQ(found.GetNumElements(), 1u);
  EXPECT_EQ(ImgGetObjectShape(&found[0], shape), KY_OK);
  return shape;
}
Picture<KyBW8> Drawn(int width, int height, auto inside) {
  Picture<KyBW8> picture(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) picture.At(x, y) = inside(x, y) ? 100 : 0;
  return picture;
}

TEST(ObjectShape, KnownShapes) {
  const KyObjectShape point = ShapeOf(Drawn(5, 5, [](int x, int y) { return x == 3 && y == 1; }));
  EXPECT_EQ(point.x, 3);
  EXPECT_EQ(point.y, 1);
  EXPECT_EQ(point.major, 0);
  EXPECT_EQ(point.elongation, 1);
  EXPECT_EQ(point.compactness, 1);
  EXPECT_DOUBLE_EQ(point.perimeter, std::numbers::pi / 8 * (4 + 4 / std::numbers::sqrt2));
  // Lines, in all directions that have none but their own pixels.
  const struct {
    int dx, dy;
    double angle;
  } kLines[] = {{1, 0, 0}, {0, 1, 90}, {1, 1, 45}, {1, -1, -45}};
  for (const auto& line : kLines) {
    const int n = 3001;
    Picture<KyBW8> picture(line.dx != 0 ? n : 1, line.dy != 0 ? n : 1);
    for (int i = 0; i < n; ++i)
      picture.At(i * line.dx, line.dy < 0 ? n - 1 - i : i * line.dy) = 100;
    const KyObjectShape shape = ShapeOf(picture);
    EXPECT_EQ(shape.minor, 0);
    EXPECT_EQ(shape.elongation, std::numeric_limits<double>::infinity());
    EXPECT_DOUBLE_EQ(shape.angle, line.angle);
    const double n2 = double(n) * n;
    EXPECT_DOUBLE_EQ(shape.major, (n2 - 1) / 12 * (line.dx * line.dx + line.dy * line.dy));
  }
  // A box of 31 x 11 pixels, and one whose sums exceed 128 bits.
  for (const int scale : {1, 300}) {
    const int w = 31 * scale, h = 11 * scale;
    const KyObjectShape box = ShapeOf(Drawn(w, h, [](int, int) { return true; }));
    EXPECT_DOUBLE_EQ(box.major, (double(w) * w - 1) / 12);
    EXPECT_NEAR(box.minor * 12 / (double(h) * h - 1), 1, 1e-12);
    EXPECT_DOUBLE_EQ(box.meanLevel, 100);
    EXPECT_EQ(box.angle, 0);
  }
  const auto disk =
      ShapeOf(Drawn(301, 301, [](int x, int y) { return std::hypot(x - 150, y - 150) <= 140; }));
  EXPECT_NEAR(disk.perimeter / (2 * std::numbers::pi * 140), 1, 0.01);
  EXPECT_NEAR(disk.circularity, 1, 0.02);
  EXPECT_NEAR(disk.major / (140 * 140 / 4.0), 1, 0.01);
  EXPECT_NEAR(disk.elongation, 1, 1e-9);
}

TEST(ObjectShape, FollowsTheAngleUnit) {
  const auto diagonal = Drawn(9, 9, [](int x, int y) { return x == y; });
  const std::pair<KY_ANGLE_UNIT, double> kUnits[] = {{KY_ANGLE_RADIANS, std::numbers::pi / 4},
                                                     {KY_ANGLE_REVOLUTIONS, 0.125},
                                                     {KY_ANGLE_GRADES, 50},
                                                     {KY_ANGLE_DEGREES, 45}};
  for (const auto& [unit, angle] : kUnits) {
    KySetAngleUnit(unit);
    EXPECT_DOUBLE_EQ(ShapeOf(diagonal).angle, angle);
  }
}

TEST(ObjectShape, Refusals) {
  KyObjectShape shape{};
  shape.x = 5;
  KyObject nothing{};
  EXPECT_EQ(ImgGetObjectShape(nullptr, shape), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(ImgGetObjectShape(&nothing, shape), KY_ERROR_NO_PIXELS);
  EXPECT_EQ(shape.x, 5);
}

}  // namespace
