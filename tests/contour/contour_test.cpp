// Contours against a model that follows the definition step by step.
#include "ky/contour.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "ky/ky.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

using Image = Picture<KyBW8>;

struct Step {
  int x, y, direction;
  bool operator==(const Step&) const = default;
};
using Contour = std::vector<Step>;

struct Task {
  Image image;
  CONTOUR_MODE mode;
  int x, y;
  CONTOUR_THRESHOLD sense;
  unsigned threshold;
  CONNEXITY connexity;
};

struct Outcome {
  KY_ERRORS status;
  bool closed;
  Contour contour;
};

constexpr int kDx[] = {1, 1, 0, -1, -1, -1, 0, 1}, kDy[] = {0, -1, -1, -1, 0, 1, 1, 1};
constexpr int kNext8[2][8] = {{7, 0, 1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6, 7, 0}};
constexpr int kRestart8[2][8] = {{1, 3, 3, 5, 5, 7, 7, 1}, {7, 7, 1, 1, 3, 3, 5, 5}};
constexpr int kNext4[2][8] = {{6, -1, 0, -1, 2, -1, 4, -1}, {2, -1, 4, -1, 6, -1, 0, -1}};
constexpr int kRestart4[2][8] = {{2, -1, 4, -1, 6, -1, 0, -1}, {6, -1, 0, -1, 2, -1, 4, -1}};

// No contour takes a step twice.
std::size_t MostSteps(const Image& image) { return image.pixels.size() * 8; }

bool IsObject(const Task& task, int x, int y) {
  const unsigned v = task.image.At(x, y);
  return task.sense == 0 ? v >= task.threshold : v <= task.threshold;
}

KY_ERRORS TraceOnce(const Task& task, bool counterClockwise, int borderAnswer, std::size_t limit,
                    int& x, int& y, Contour& contour) {
  contour.clear();
  const bool eight = task.connexity == KY_CONNEXITY_8;
  const int* const next = (eight ? kNext8 : kNext4)[counterClockwise];
  const int* const restart = (eight ? kRestart8 : kRestart4)[counterClockwise];
  const auto test = [&](int d) {
    if (!task.image.Has(x + kDx[d], y + kDy[d])) return borderAnswer;
    return IsObject(task, x + kDx[d], y + kDy[d]) ? 1 : 0;
  };
  if (!task.image.Has(x, y) || !IsObject(task, x, y)) return KY_ERROR_CONTOUR_START;
  int r0 = test(0), d = next[0], r1 = test(d);
  bool found = false;
  for (int round = 0; round < 8 && !found; ++round) {
    d = next[d];
    const int before = r0;
    r0 = r1;
    r1 = test(d);
    found = r0 == 0 && r1 == 1 && (task.connexity == KY_CONNEXITY_4 || d % 2 != 0 || before == 0);
  }
  if (!found) return r1 != 0 ? KY_ERROR_CONTOUR_NO_DIRECTION : KY_ERROR_CONTOUR_ISOLATED;
  const int x0 = x, y0 = y, d0 = d;
  for (;;) {
    if (!contour.empty() && x == x0 && y == y0 && d == d0) return KY_OK;
    if (contour.size() > MostSteps(task.image)) {
      ADD_FAILURE() << "the contour never ends";
      return KY_OK;
    }
    if (contour.size() == limit) return KY_ERROR_CONTOUR_TOO_LONG;
    contour.push_back({x, y, d});
    x += kDx[d];
    y += kDy[d];
    d = restart[d];
    int answer;
    while ((answer = test(d)) == 0) d = next[d];
    if (answer == 2) return KY_ERROR_PATH_STOPPED;
  }
}

Outcome Model(const Task& task, std::size_t limit = SIZE_MAX) {
  const int mode = task.mode;
  const bool counterClockwise = mode >= 3, along = mode == 1 || mode == 5;
  const bool bothWays = mode == 2 || mode == 4;
  Outcome outcome;
  int x = task.x, y = task.y;
  outcome.status = TraceOnce(task, counterClockwise, along ? 0 : 2, limit, x, y, outcome.contour);
  outcome.closed = outcome.status != KY_ERROR_PATH_STOPPED;
  if (!outcome.closed && bothWays)
    outcome.status = TraceOnce(task, !counterClockwise, 2, limit, x, y, outcome.contour);
  return outcome;
}

Contour ContourOf(const KyVector& vector) {
  const auto* numbers = static_cast<const int*>(vector.GetDataPtr());
  Contour contour;
  for (int i = 0; i < vector.GetNbGroup(); ++i)
    contour.push_back({numbers[3 * i], numbers[3 * i + 1], numbers[3 * i + 2]});
  return contour;
}

// The three overloads on the same task, whose model has ended.
void Compare(const Task& task, const KyROI<KyBW8>* roi) {
  SCOPED_TRACE("mode " + std::to_string(task.mode) + ", connexity " +
               std::to_string(task.connexity) + ", from (" + std::to_string(task.x) + ", " +
               std::to_string(task.y) + ")");
  const auto& [_, mode, x, y, sense, threshold, connexity] = task;
  const Outcome expected = Model(task);
  if (::testing::Test::HasFailure()) return;

  KyPathVector path(3);
  path.AddElement({-1, -1});
  EXPECT_EQ(ImgContour(roi, mode, x, y, sense, threshold, connexity, &path), expected.status);
  EXPECT_EQ(path.GetClosed(), expected.closed);
  ASSERT_EQ(path.GetNumElements(), expected.contour.size());

  KyBW8PathVector levels, steps;
  EXPECT_EQ(ImgContour(roi, mode, x, y, sense, threshold, connexity, &levels, 0), expected.status);
  EXPECT_EQ(ImgContour(roi, mode, x, y, sense, threshold, connexity, &steps, 9), expected.status);
  EXPECT_EQ(levels.GetClosed(), expected.closed);
  ASSERT_EQ(levels.GetNumElements(), expected.contour.size());
  ASSERT_EQ(steps.GetNumElements(), expected.contour.size());
  for (unsigned i = 0; i < path.GetNumElements(); ++i) {
    const Step& step = expected.contour[i];
    const auto px = static_cast<std::int16_t>(step.x), py = static_cast<std::int16_t>(step.y);
    ASSERT_EQ(path[i], (KyPath{px, py})) << i;
    ASSERT_EQ(levels[i], (KyBW8Path{px, py, task.image.At(step.x, step.y)})) << i;
    ASSERT_EQ(steps[i], (KyBW8Path{px, py, static_cast<KyBW8>(step.direction)})) << i;
  }

  KyVector vector;
  const Outcome limited = Model(task, task.image.pixels.size() / 8);
  EXPECT_EQ(ImgContour(roi, mode, x, y, sense, threshold, connexity, &vector), limited.status);
  EXPECT_EQ(ContourOf(vector), limited.contour);
}

// Noise of the given share of object pixels.
Image Noise(int width, int height, int percent, Random& random) {
  Image image(width, height);
  for (KyBW8& v : image.pixels)
    v = static_cast<KyBW8>(static_cast<int>(random() % 100) < percent ? 100 + random() % 156
                                                                      : random() % 100);
  return image;
}

TEST(Contour, NoiseInEveryModeAndConnexity) {
  Random random(1);
  for (int turn = 0; turn < 600 && !HasFailure(); ++turn) {
    const int width = 1 + static_cast<int>(random() % (turn % 10 == 0 ? 60 : 12));
    const int height = 1 + static_cast<int>(random() % (turn % 10 == 0 ? 60 : 12));
    const int percent = 20 + static_cast<int>(random() % 70);
    Task task{Noise(width, height, percent, random), {}, 0, 0, {}, 100, {}};
    Canvas<KyBW8> canvas(task.image, kPlacements[turn % 3], random);
    for (int start = 0; start < 6; ++start) {
      task.x = static_cast<int>(random() % static_cast<unsigned>(width));
      task.y = static_cast<int>(random() % static_cast<unsigned>(height));
      task.sense = static_cast<CONTOUR_THRESHOLD>(start % 2 == 0 ? 0 : random() % 3);
      task.threshold = task.sense == 0 ? 100 : 99;
      for (int mode = 0; mode < 6; ++mode) {
        for (const int connexity : {0, 1, 2, -1}) {
          task.mode = static_cast<CONTOUR_MODE>(mode);
          task.connexity = static_cast<CONNEXITY>(connexity);
          Compare(task, canvas.roi());
        }
      }
    }
    EXPECT_TRUE(canvas.Unchanged());
  }
}

Contour Trace(const KyROI<KyBW8>& roi, CONTOUR_MODE mode, CONNEXITY connexity, int x, int y) {
  KyBW8PathVector path;
  EXPECT_EQ(ImgContour(&roi, mode, x, y, KY_CONTOUR_ABOVE_THRESHOLD, 100, connexity, &path, 1),
            KY_OK);
  EXPECT_EQ(path.GetClosed(), 1);
  Contour contour;
  for (const KyBW8Path& p : path) contour.push_back({p.x, p.y, p.pixel});
  return contour;
}

TEST(Contour, KnownShapes) {
  KyImage<KyBW8> image(20, 16);
  const KyROI<KyBW8> rectangle(&image, 5, 4, 6, 5);
  ImgCopy(KyBW8(100), const_cast<KyROI<KyBW8>*>(&rectangle));
  image.SetPixel(255, 16, 12);
  const auto code = [&](int x, int y) {
    KyPathVector path;
    return ImgContour(&image, KY_CONTOUR_CW_STOP_AT_BORDER, x, y, KY_CONTOUR_ABOVE_THRESHOLD, 100,
                      KY_CONNEXITY_8, &path);
  };
  EXPECT_EQ(code(16, 12), KY_ERROR_CONTOUR_ISOLATED);
  EXPECT_EQ(code(7, 6), KY_ERROR_CONTOUR_NO_DIRECTION);
  EXPECT_EQ(code(0, 0), KY_ERROR_CONTOUR_START);
  EXPECT_EQ(Trace(image, KY_CONTOUR_CCW_STOP_AT_BORDER, KY_CONNEXITY_4, 5, 4).size(), 18u);
}

// A blob without holes: its contour is one, and holds all that touches the outside.
TEST(Contour, OuterContoursEncloseTheBlob) {
  Random random(2);
  constexpr int kSize = 24;
  for (int turn = 0; turn < 200 && !HasFailure(); ++turn) {
    Image noise = Noise(kSize, kSize, 45, random), blob(kSize, kSize, 0);
    // The object connected with the centre by corners, and all that it encloses.
    const auto flood = [](Image& in, int sx, int sy, KyBW8 from, KyBW8 to, int step) {
      std::vector<std::pair<int, int>> todo{{sx, sy}};
      while (!todo.empty()) {
        const auto [px, py] = todo.back();
        todo.pop_back();
        if (!in.Has(px, py) || in.At(px, py) != from) continue;
        in.At(px, py) = to;
        for (int d = 0; d < 8; d += step) todo.push_back({px + kDx[d], py + kDy[d]});
      }
    };
    for (KyBW8& v : noise.pixels) v = v >= 100 ? 1 : 0;
    noise.At(kSize / 2, kSize / 2) = noise.At(kSize / 2 + 1, kSize / 2) = 1;
    flood(noise, kSize / 2, kSize / 2, 1, 2, 1);
    Image framed(kSize + 2, kSize + 2, 0);
    for (int y = 0; y < kSize; ++y)
      for (int x = 0; x < kSize; ++x) framed.At(x + 1, y + 1) = noise.At(x, y) == 2 ? 2 : 0;
    flood(framed, 0, 0, 0, 1, 2);
    std::set<std::pair<int, int>> edge;
    for (int y = 0; y < kSize; ++y) {
      for (int x = 0; x < kSize; ++x) {
        if (framed.At(x + 1, y + 1) == 1) continue;
        blob.At(x, y) = 200;
        for (int d = 0; d < 8; d += 2)
          if (framed.At(x + 1 + kDx[d], y + 1 + kDy[d]) == 1) edge.insert({x, y});
      }
    }
    Canvas<KyBW8> canvas(blob, kPlacements[turn % 3], random);
    for (const auto mode : {KY_CONTOUR_CW_ALONG_BORDER, KY_CONTOUR_CCW_ALONG_BORDER}) {
      std::set<std::pair<int, int>> visited;
      const auto [x, y] = *edge.begin();
      for (const Step& step : Trace(*canvas.roi(), mode, KY_CONNEXITY_8, x, y))
        visited.insert({step.x, step.y});
      EXPECT_EQ(visited, edge);
    }
  }
}

TEST(Contour, GenericVectors) {
  // A comb, whose contour is long.
  Image comb(300, 200, 0);
  for (int y = 1; y < 199; ++y)
    for (int x = 1; x < 299; ++x) comb.At(x, y) = y == 1 || x % 32 == 1 ? 200 : 0;
  Random random(3);
  Canvas<KyBW8> canvas(comb, kPlacements[1], random);
  const Outcome expected =
      Model({comb, KY_CONTOUR_CW_STOP_AT_BORDER, 1, 1, {}, 100, KY_CONNEXITY_8});
  ASSERT_EQ(expected.status, KY_OK);
  ASSERT_GT(expected.contour.size(), 1u + 2 * 2048u);
  const auto trace = [&](KyVector& vector) {
    return ImgContour(canvas.roi(), KY_CONTOUR_CW_STOP_AT_BORDER, 1, 1, KY_CONTOUR_ABOVE_THRESHOLD,
                      100, KY_CONNEXITY_8, &vector);
  };
  KyVector vectors[4];
  vectors[1].SetType(1, 1, 0);
  vectors[2].SetType(1, 4000, 2);
  vectors[3].SetType(2, 7, 0);
  for (KyVector& vector : vectors) {
    EXPECT_EQ(trace(vector), KY_OK);
    EXPECT_TRUE(ContourOf(vector) == expected.contour);
    EXPECT_EQ(vector.GetVectType(), 1);
  }
  EXPECT_EQ(vectors[0].GetNbMaxGroup(), 2000 + 2 * 2048);
  EXPECT_EQ(vectors[1].GetNbMaxGroup(), 1 + 3 * 2048);

  KyROI<KyBW8> small(canvas.roi(), 0, 0, 20, 16);
  KyVector vector;
  EXPECT_EQ(ImgContour(&small, KY_CONTOUR_CW_ALONG_BORDER, 1, 1, {}, 100, KY_CONNEXITY_8, &vector),
            KY_ERROR_CONTOUR_TOO_LONG);
  EXPECT_EQ(vector.GetNbGroup(), 40);
  KyVector without;
  without.SetType(1, 0, 0);
  EXPECT_EQ(trace(without), KY_ERROR_BAD_VECTOR_TYPE);
}

TEST(Contour, BadArguments) {
  KyImage<KyBW8> image(9, 7);
  ImgCopy(KyBW8(200), &image);
  KyPathVector path;
  path.AddElement({1, 2});
  path.SetClosed(5);
  const KyROI<KyBW8> nothing;
  const auto run = [&](const KyROI<KyBW8>* roi, int mode, int x, int y, unsigned threshold,
                       KyPathVector* output) {
    const KY_ERRORS status =
        ImgContour(roi, static_cast<CONTOUR_MODE>(mode), x, y, KY_CONTOUR_ABOVE_THRESHOLD,
                   threshold, KY_CONNEXITY_8, output);
    Harness<KyBW8>::ExpectTrace(status, {"ImgContour (KyPathVector)"});
    return status;
  };
  EXPECT_EQ(run(nullptr, 6, -1, 0, 100, &path), KY_ERROR_BAD_MODE);
  EXPECT_EQ(run(&image, -1, 0, 0, 100, &path), KY_ERROR_BAD_MODE);
  EXPECT_EQ(path.GetClosed(), 5);
  EXPECT_EQ(run(nullptr, 0, 0, 0, 100, nullptr), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(run(&image, 0, 0, 0, 100, nullptr), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(run(&nothing, 2, 0, 0, 100, &path), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(path.GetNumElements(), 1u);
  EXPECT_EQ(path.GetClosed(), 1);
  for (const auto& [x, y] : {std::pair{-1, 0}, {9, 0}, {0, -1}, {0, 7}, {INT_MAX, INT_MIN}})
    EXPECT_EQ(run(&image, 1, x, y, 100, &path), KY_ERROR_CONTOUR_START);
  EXPECT_EQ(run(&image, 1, 4, 4, 256, &path), KY_ERROR_CONTOUR_START);
  EXPECT_EQ(run(&image, 1, 4, 4, 0xFFFFFFFF, &path), KY_ERROR_CONTOUR_START);
  EXPECT_EQ(path.GetNumElements(), 0u);
  EXPECT_EQ(path.GetClosed(), 1);
  EXPECT_EQ(ImgContour(&image, KY_CONTOUR_CW_ALONG_BORDER, 0, 0, KY_CONTOUR_BELOW_THRESHOLD,
                       0xFFFFFFFF, KY_CONNEXITY_8, &path),
            KY_OK);
  EXPECT_EQ(path.GetNumElements(), 28u);
}

}  // namespace
