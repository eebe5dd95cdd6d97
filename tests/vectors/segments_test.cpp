// Pixels along paths and line segments, in typed and in generic vectors.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <utility>
#include <vector>

#include "ky/ky.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

struct Ends {
  int x0, y0, x1, y1;
};
using Points = std::vector<std::pair<int, int>>;

// As the segments of typed vectors are defined.
Points Line(const Ends& ends) {
  const auto [x0, y0, x1, y1] = ends;
  const int dx = x1 - x0, dy = y1 - y0;
  const bool steep = std::abs(dx) < std::abs(dy);
  const int major = steep ? std::abs(dy) : std::abs(dx),
            minor = steep ? std::abs(dx) : std::abs(dy);
  const int right = dx >= 1 ? 1 : -1, down = dy >= 1 ? 1 : -1;
  Points points{{x0, y0}};
  int x = x0, y = y0, sum = major / 2;
  for (int i = 0; i < major; ++i) {
    sum += minor;
    const bool diagonal = sum >= major;
    if (diagonal) sum -= major;
    if (!steep || diagonal) x += right;
    if (steep || diagonal) y += down;
    points.emplace_back(x, y);
  }
  return points;
}
// As those of generic vectors are.
Points Traced(const Ends& ends) {
  const int dx = ends.x1 - ends.x0, dy = ends.y1 - ends.y0;
  const int sx = dx < 0 ? -1 : 1, sy = dy < 0 ? -1 : 1, ax = std::abs(dx), ay = std::abs(dy);
  const bool steep = ax < ay;
  const int major = steep ? ay : ax, minor = steep ? ax : ay;
  Points points;
  int x = ends.x0, y = ends.y0, e = 2 * minor - major;
  for (int i = 0; i <= major; ++i) {
    points.emplace_back(x, y);
    const bool diagonal = e >= 0;
    e += diagonal ? 2 * minor - 2 * major : 2 * minor;
    if (!steep || diagonal) x += sx;
    if (steep || diagonal) y += sy;
  }
  return points;
}

Ends RandomEnds(int width, int height, Random& random) {
  const auto in = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  Ends ends{in(width), in(height), in(width), in(height)};
  if (random() % 4 == 0) ends.y1 = ends.y0;
  if (random() % 8 == 0) ends.x1 = ends.x0;
  return ends;
}

// Reads random segments into a vector, and writes them elsewhere from that.
template <class T, class Vector>
void CheckSegments() {
  Random random(1);
  for (int turn = 0; turn < 300; ++turn) {
    const int width = 1 + static_cast<int>(random() % 90),
              height = 1 + static_cast<int>(random() % 40);
    Canvas<T> from(RandomPicture<T>(width, height, random), kPlacements[turn % 3], random);
    const Ends e = RandomEnds(width, height, random);
    const Points points = Line(e);
    ASSERT_EQ(points, Traced(e));
    ASSERT_EQ(points.back(), (std::pair{e.x1, e.y1}));
    Vector vector(static_cast<unsigned>(random() % 200));
    ASSERT_EQ(ImgImageToLineSegment(from.roi(), &vector, e.x0, e.y0, e.x1, e.y1), KY_OK);
    ASSERT_EQ(vector.GetNumElements(), points.size());
    EXPECT_EQ(vector.GetMaxElements(), points.size());
    const Picture<T> picture = from.Get();
    for (unsigned i = 0; i < points.size(); ++i)
      EXPECT_EQ(vector[i], picture.At(points[i].first, points[i].second));
    EXPECT_TRUE(from.Unchanged());
    if constexpr (!std::is_same_v<T, KyBW16>) {
      Canvas<T> to(width, height, kPlacements[turn % 3], random);
      for (const bool constant : {false, true}) {
        Picture<T> expected = to.Get();
        for (const auto& [x, y] : points) expected.At(x, y) = constant ? T() : picture.At(x, y);
        const KY_ERRORS error =
            constant ? ImgLineSegmentToImage(to.roi(), T(), e.x0, e.y0, e.x1, e.y1)
                     : ImgLineSegmentToImage(to.roi(), &vector, e.x0, e.y0, e.x1, e.y1);
        EXPECT_EQ(error, KY_OK);
        EXPECT_TRUE(Same(expected, to.Get()));
        EXPECT_TRUE(to.OnlyChanged(*to.roi()));
      }
    }
  }
}

TEST(Segments, OfGreyLevels) { CheckSegments<KyBW8, KyBW8Vector>(); }
// As long as needs several sums of steps.
TEST(Segments, Long) {
  Random random(2);
  const Picture<KyBW8> picture = RandomPicture<KyBW8>(200'000, 5, random);
  Canvas<KyBW8> from(picture, {}, random);
  for (const Ends e : {Ends{0, 0, 199'999, 4}, Ends{199'999, 3, 1, 0}, Ends{70'000, 4, 0, 1}}) {
    KyBW8Vector levels;
    ASSERT_EQ(ImgImageToLineSegment(from.roi(), &levels, e.x0, e.y0, e.x1, e.y1), KY_OK);
    unsigned i = 0;
    for (const auto& [x, y] : Line(e)) ASSERT_EQ(levels[i++], picture.At(x, y)) << x;
  }
}
TEST(Segments, OfColors) { CheckSegments<KyC24, KyC24Vector>(); }
TEST(Segments, OfDeepLevels) { CheckSegments<KyBW16, KyBW16Vector>(); }

TEST(Segments, Refusals) {
  KyImage<KyBW8> image(9, 5);
  const KyROI<KyBW8> none;
  KyBW8Vector vector(7, 3);
  const struct {
    const KyROI<KyBW8>* roi;
    KyBW8Vector* vector;
    Ends ends;
    int read, write;
  } cases[] = {
      {nullptr, &vector, {-1, 0, 0, 0}, 1400, 1400},
      {&none, &vector, {0, 0, 0, 0}, 1400, 1400},
      {&image, &vector, {9, 5, 9, 5}, 1013, 1013},
      {&image, &vector, {-1, 0, 0, 0}, 1013, 1013},
      {&image, nullptr, {8, 5, 9, 5}, 1014, 1014},
      {&image, &vector, {8, -1, 9, 5}, 1014, 1014},
      {&image, &vector, {8, 4, 9, 5}, 1015, 1015},
      {&image, &vector, {0, 0, 8, 5}, 1016, 1016},
      {&image, nullptr, {0, 0, 8, 4}, 1601, 1601},
      {&image, &vector, {0, 0, INT_MAX, 0}, 1015, 1015},
      {&image, &vector, {0, 0, 7, 0}, 0, 1613},
  };
  for (const auto& c : cases) {
    const auto [x0, y0, x1, y1] = c.ends;
    auto* const out = const_cast<KyROI<KyBW8>*>(c.roi);
    const KY_ERRORS write = ImgLineSegmentToImage(out, c.vector, x0, y0, x1, y1);
    EXPECT_EQ(write, c.write);
    Harness<KyBW8>::ExpectTrace(write, {"ImgLineSegmentToImage (BW8, vector)"});
    const KY_ERRORS read = ImgImageToLineSegment(c.roi, c.vector, x0, y0, x1, y1);
    EXPECT_EQ(read, c.read);
    if (read == KY_OK) continue;
    Harness<KyBW8>::ExpectTrace(read, {"ImgImageToLineSegment (BW8)"});
    EXPECT_EQ(vector.GetNumElements(), 7u);
    if (c.vector == nullptr || c.read == 1601) continue;
    Harness<KyBW8>::ExpectTrace(ImgLineSegmentToImage(out, KyBW8(1), x0, y0, x1, y1),
                                {"ImgLineSegmentToImage (BW8, const)"});
  }
}

template <class T, class Vector>
void CheckPaths(const char* readTrace, const char* writeTrace) {
  Random random(2);
  Canvas<T> from(RandomPicture<T>(20, 11, random), kPlacements[1], random);
  Canvas<T> to(20, 11, kPlacements[1], random);
  const Picture<T> picture = from.Get();
  for (const int spread : {0, 3}) {
    Vector path;
    for (int i = 0; i < 300; ++i) {
      const auto x =
          static_cast<std::int16_t>(static_cast<int>(random() % (20 + 2 * spread)) - spread);
      const auto y =
          static_cast<std::int16_t>(static_cast<int>(random() % (11 + 2 * spread)) - spread);
      path.AddElement({x, y, RandomPicture<T>(1, 1, random).At(0, 0)});
    }
    Picture<T> expected = to.Get();
    for (const auto& p : path)
      if (expected.Has(p.x, p.y)) expected.At(p.x, p.y) = p.pixel;
    const KY_ERRORS status = spread == 0 ? KY_OK : KY_ERROR_PATH_STOPPED;
    EXPECT_EQ(ImgPathToImage(to.roi(), &path), status);
    Harness<T>::ExpectTrace(status, {});
    EXPECT_TRUE(Same(expected, to.Get()));
    EXPECT_TRUE(to.OnlyChanged(*to.roi()));
    const T value = RandomPicture<T>(1, 1, random).At(0, 0);
    KyPathVector bare;
    for (const auto& p : path) {
      bare.AddElement({p.x, p.y});
      if (expected.Has(p.x, p.y)) expected.At(p.x, p.y) = value;
    }
    EXPECT_EQ(ImgPathToImage(to.roi(), &bare, value), status);
    EXPECT_TRUE(Same(expected, to.Get()));
    std::vector<T> old;
    for (const auto& p : path) old.push_back(p.pixel);
    EXPECT_EQ(ImgImageToPath(from.roi(), &path), status);
    Harness<T>::ExpectTrace(status, {});
    for (unsigned i = 0; i < path.GetNumElements(); ++i)
      EXPECT_EQ(path[i].pixel,
                picture.Has(path[i].x, path[i].y) ? picture.At(path[i].x, path[i].y) : old[i]);
  }
  Vector path;
  KyROI<T> none;
  for (KyROI<T>* roi : {&none, static_cast<KyROI<T>*>(nullptr), from.roi()}) {
    Vector* const bad = roi == from.roi() ? nullptr : &path;
    const KY_ERRORS code = bad == nullptr ? KY_ERROR_BAD_VECTOR_TYPE : KY_ERROR_NO_IMAGE;
    EXPECT_EQ(ImgImageToPath(roi, bad), code);
    Harness<T>::ExpectTrace(code, {readTrace});
    EXPECT_EQ(ImgPathToImage(roi, bad), code);
    Harness<T>::ExpectTrace(code, {writeTrace});
  }
}

TEST(Paths, OfGreyLevels) {
  CheckPaths<KyBW8, KyBW8PathVector>("ImgImageToPath (BW8)", "ImgPathToImage (BW8)");
}
TEST(Paths, OfColors) {
  CheckPaths<KyC24, KyC24PathVector>("ImgImageToPath (C24)", "ImgPathToImage (C24)");
}

// An ROI on an image that has a column more, a row more, both or neither; and always a spare row.
struct Place {
  KyImage<KyBW8> image;
  KyROI<KyBW8> roi;

  Place(int width, int height, int kind, Random& random)
      : image(width + 2 + kind % 2, height + 1 + kind / 2), roi(&image, 2, 1, width, height) {
    for (int y = 0; y <= image.GetHeight(); ++y)
      for (int x = 0; x < image.GetWidth(); ++x)
        *static_cast<KyBW8*>(image.GetRootPixelPtr(x, y)) = static_cast<KyBW8>(random());
  }
  KyBW8* At(int x, int y) { return static_cast<KyBW8*>(roi.GetRootPixelPtr(x, y)); }
};

const int* Groups(const KyVector& vector) { return static_cast<const int*>(vector.GetDataPtr()); }

TEST(GenericSegments, ReadAndWrittenUpToTheEdges) {
  Random random(3);
  for (int turn = 0; turn < 400; ++turn) {
    const int width = 1 + static_cast<int>(random() % 30),
              height = 1 + static_cast<int>(random() % 20);
    Place place(width, height, turn % 4, random);
    const Ends e = RandomEnds(width + 1, height + 1, random);
    const Points points = Traced(e);
    KyVector vector;
    if (turn % 3 == 0) vector.SetType(4, 100, turn % 2);
    ASSERT_EQ(ImgLineSegToVect(&place.roi, &vector, e.x0, e.y0, e.x1, e.y1), KY_OK);
    ASSERT_EQ(vector.GetNbGroup(), static_cast<int>(points.size()));
    EXPECT_EQ(vector.GetVectType(), 4);
    EXPECT_EQ(vector.GetUse(), 5);
    const auto image = [&] {
      std::vector<KyBW8> all;
      for (int y = 0; y <= place.image.GetHeight(); ++y)
        for (int x = 0; x < place.image.GetWidth(); ++x)
          all.push_back(*static_cast<KyBW8*>(place.image.GetRootPixelPtr(x, y)));
      return all;
    };
    for (unsigned i = 0; i < points.size(); ++i) {
      const auto [x, y] = points[i];
      const KyBW8* const pixel = place.At(x, y);
      ASSERT_EQ(pixel != nullptr, x < width || turn % 2 == 1);
      EXPECT_EQ(Groups(vector)[3 * i], pixel != nullptr ? *pixel : 0);
      EXPECT_EQ(Groups(vector)[3 * i + 1], x);
      EXPECT_EQ(Groups(vector)[3 * i + 2], y);
    }
    // Both ways back, with levels of all kinds.
    int* const groups = static_cast<int*>(vector.GetDataPtr());
    for (unsigned i = 0; i < points.size(); ++i)
      groups[3 * i] = static_cast<int>(random() % 1000) - 200;
    const std::vector<KyBW8> before = image();
    for (const auto& [x, y] : points)
      if (KyBW8* const pixel = place.At(x, y)) *pixel = 77;
    for (unsigned i = 0; i < points.size(); ++i)
      if (KyBW8* const pixel = place.At(points[i].first, points[i].second))
        *pixel = static_cast<KyBW8>(groups[3 * i] < 255 ? 255 : groups[3 * i]);
    const std::vector<KyBW8> expected = image();
    const auto restore = [&] {
      std::size_t i = 0;
      for (int y = 0; y <= place.image.GetHeight(); ++y)
        for (int x = 0; x < place.image.GetWidth(); ++x)
          *static_cast<KyBW8*>(place.image.GetRootPixelPtr(x, y)) = before[i++];
    };
    restore();
    EXPECT_EQ(ImgVectToLineSeg(&vector, &place.roi), KY_OK);
    EXPECT_EQ(image(), expected);
    restore();
    vector.SetUse(0);
    EXPECT_EQ(ImgVectToLineSeg(&vector, e.x0, e.y0, e.x1, e.y1, &place.roi), KY_OK);
    EXPECT_EQ(image(), expected);
  }
}

// Groups by hand: the row moves by one where y changes, whatever y is, and nothing that the image
// does not own is touched.
TEST(GenericSegments, GroupsThatAreNoSegment) {
  Random random(4);
  for (int turn = 0; turn < 300; ++turn) {
    Canvas<KyBW8> canvas(12, 9, kPlacements[1], random);
    KyROI<KyBW8> inner(canvas.roi(), 3, 2, 6, 4);
    KyVector vector;
    vector.SetType(4, 40, 3);
    vector.SetUse(5);
    vector.SetNbGroup(static_cast<int>(random() % 41));
    int* const groups = static_cast<int*>(vector.GetDataPtr());
    for (int i = 0; i < 120; ++i)
      groups[i] = random() % 50 == 0 ? (random() % 2 == 0 ? INT_MAX : INT_MIN)
                                     : static_cast<int>(random() % 12) - 3;
    const int n = vector.GetNbGroup();
    for (const int i : {0, n - 1}) {
      if (n == 0) break;
      groups[3 * i + 1] = static_cast<int>(random() % 7);
      groups[3 * i + 2] = static_cast<int>(random() % 5);
    }
    std::vector<std::pair<int, KyBW8>> writes;
    Picture<KyBW8> expected = Canvas<KyBW8>::Get(*canvas.image());
    int row = n > 0 ? groups[2] : 0;
    for (int i = 0; i < n; ++i) {
      const int x = groups[3 * i + 1], y = groups[3 * i + 2];
      if (i > 0) row += y > groups[3 * i - 1] ? 1 : y < groups[3 * i - 1] ? -1 : 0;
      const std::int64_t column = std::int64_t{x} + 1 + 3;
      if (column >= 0 && column < expected.width && row + 3 >= 0 && row + 3 < expected.height)
        expected.At(static_cast<int>(column), row + 3) =
            static_cast<KyBW8>(groups[3 * i] < 255 ? 255 : groups[3 * i]);
    }
    EXPECT_EQ(ImgVectToLineSeg(&vector, &inner), KY_OK);
    EXPECT_TRUE(Same(expected, Canvas<KyBW8>::Get(*canvas.image())));
    EXPECT_TRUE(canvas.OnlyChanged(*canvas.image()));
  }
}

TEST(GenericSegments, Transitions) {
  Random random(5);
  ForEachPath([&](const std::string&) {
    for (int turn = 0; turn < 200; ++turn) {
      const bool longOne = turn % 20 == 0;
      const int width = longOne ? 9000 : 1 + static_cast<int>(random() % 80);
      const int height = longOne ? 3 : 1 + static_cast<int>(random() % 60);
      Place place(width, height, turn % 4, random);
      const unsigned spread = turn % 2 == 0 ? 6 : 256;
      for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
          place.roi.SetPixel(static_cast<KyBW8>(random() % spread), x, y);
      const Ends e = RandomEnds(width + 1, height + 1, random);
      const int thresholds[] = {3,   0,       255,     -1,
                                256, INT_MIN, INT_MAX, static_cast<int>(random() % 256)};
      // Long ones are not cut short, so that they are met at every point.
      const int threshold = longOne         ? 3
                            : turn % 5 == 0 ? thresholds[random() % 8]
                                            : thresholds[turn % 2 * 7];
      const int edge = longOne ? 3 : 1 + static_cast<int>(random() % 3);
      const int most = static_cast<int>(longOne ? 0 : random() % 3 * (random() % 30));
      const Points points = Traced(e);
      std::vector<int> expected;
      const auto level = [&](unsigned i) {
        const KyBW8* const pixel = place.At(points[i].first, points[i].second);
        return pixel != nullptr ? int{*pixel} : 0;
      };
      int count = -1, found = 0;
      for (unsigned i = 1; i < points.size() && count < 0; ++i) {
        const int before = level(i - 1), v = level(i);
        for (const int kind : {2, 1}) {
          const bool passes = kind == 2 ? before > threshold && v <= threshold
                                        : before < threshold && v >= threshold;
          if (!passes || (edge & kind) == 0) continue;
          expected.insert(expected.end(), {points[i].first, points[i].second, kind});
          if (++found == most) count = found - 1;
        }
      }
      if (count < 0) count = found;
      KyVector vector;
      if (turn % 3 == 0) vector.SetType(4, 1, 0);
      ASSERT_EQ(ImgTransitionScan(static_cast<TRANS_SCAN_EDGE>(edge), &place.roi, e.x0, e.y0, e.x1,
                                  e.y1, threshold, most, &vector),
                KY_OK);
      ASSERT_EQ(vector.GetNbGroup(), count);
      for (unsigned i = 0; i < expected.size(); ++i) ASSERT_EQ(Groups(vector)[i], expected[i]);
    }
  });
}

TEST(GenericSegments, Refusals) {
  KyImage<KyBW8> image(9, 5);
  KyROI<KyBW8> none, sized;
  sized.SetSize(9, 5);
  KyVector vector, pairs, empty, other;
  ImgLineSegToVect(&image, &vector, 0, 0, 9, 5);
  pairs.SetType(4, 90, 2);
  pairs.SetUse(5);
  empty.SetType(4, 0, 0);
  empty.SetUse(5);
  other.SetType(1, 50, 0);
  const auto expect = [](KY_ERRORS status, int code, const char* name) {
    EXPECT_EQ(status, code);
    if (code != KY_OK) Harness<KyBW8>::ExpectTrace(status, {name});
  };
  const struct {
    KyROI<KyBW8>* roi;
    KyVector* vector;
    Ends ends;
    int read, scan, write;
  } cases[] = {
      {nullptr, &vector, {-1, 0, 0, 0}, 1400, 1400, 1400},
      {&image, &vector, {10, 6, 10, 6}, 1013, 1012, 1012},
      {&image, &vector, {9, 6, 10, 6}, 1014, 1013, 1013},
      {&image, &vector, {9, 5, -1, 6}, 1015, 1014, 1014},
      {&image, &vector, {9, 5, 0, INT_MIN}, 1016, 1015, 1015},
      {&none, &vector, {1, 0, 0, 0}, 1013, 1012, 1012},
      {&image, nullptr, {0, 0, 0, 0}, 1601, 1601, 1601},
      {&sized, &vector, {9, 5, 0, 0}, 1400, 1400, 1601},
  };
  for (const auto& c : cases) {
    const auto [x0, y0, x1, y1] = c.ends;
    expect(ImgLineSegToVect(c.roi, c.vector, x0, y0, x1, y1), c.read, "ImgLineSegToVect");
    expect(ImgTransitionScan(TRANS_SCAN_BOTH, c.roi, x0, y0, x1, y1, 9, 0, c.vector), c.scan,
           "ImgTransitionScan");
    expect(ImgVectToLineSeg(c.vector, x0, y0, x1, y1, c.roi), c.write, "ImgVectToLineSeg");
    EXPECT_EQ(vector.GetNbGroup(), 10);
  }
  for (const int edge : {-1, 0, 4})
    expect(
        ImgTransitionScan(static_cast<TRANS_SCAN_EDGE>(edge), nullptr, 0, 0, 0, 0, 9, 0, &vector),
        1003, "ImgTransitionScan");
  const auto write = [&](KyVector* v, KyROI<KyBW8>* roi, int code) {
    expect(ImgVectToLineSeg(v, roi), code, "ImgVectToLineSeg");
  };
  write(nullptr, nullptr, 1601);
  write(&other, &image, 1602);
  write(&pairs, &image, 1602);
  write(&empty, nullptr, 1601);
  write(&vector, nullptr, 1400);
  write(&vector, &none, 1007);
  write(&vector, &sized, 1400);
  vector.SetNbGroup(0);
  write(&vector, &none, 1400);
  write(&vector, &image, 0);
  vector.SetUse(4);
  write(&vector, &image, 1602);
  for (KyVector* v : {&vector, &pairs, &other, &empty})
    expect(ImgVectToLineSeg(v, 0, 0, 0, 0, &image), 1602, "ImgVectToLineSeg");
}

}  // namespace
