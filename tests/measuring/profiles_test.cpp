// Profiles: sampling, smoothing and edges against models written from the definitions.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <vector>

#include "ky/ky.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

constexpr double kNear = 1e-3;

double BilinearAt(const Picture<KyBW8>& picture, double x, double y) {
  x = std::fmin(std::fmax(x, 0), picture.width - 1);
  y = std::fmin(std::fmax(y, 0), picture.height - 1);
  double sum = 0;
  for (int py = 0; py < picture.height; ++py)
    for (int px = 0; px < picture.width; ++px)
      sum += std::fmax(0, 1 - std::abs(px - x)) * std::fmax(0, 1 - std::abs(py - y)) *
             picture.At(px, py);
  return sum;
}

// The mean across the direction (ux, uy).
double ThickAt(const Picture<KyBW8>& picture, double x, double y, double ux, double uy, int half) {
  double sum = 0;
  for (int j = -half; j <= half; ++j) sum += BilinearAt(picture, x + j * ux, y + j * uy);
  return sum / (2 * half + 1);
}

void ExpectNear(const KyFloatVector& actual, const std::vector<double>& expected) {
  ASSERT_EQ(actual.GetNumElements(), expected.size());
  for (unsigned i = 0; i < expected.size(); ++i) EXPECT_NEAR(actual[i], expected[i], kNear) << i;
}

TEST(Sampling, SegmentsAndArcsAreWhatTheDefinitionsSay) {
  Random random(1);
  int turn = 0;
  // Whole numbers in a third of the turns: the centres of pixels, those of the border, too.
  const auto real = [&](double least, double most) {
    const double value = least + (most - least) * static_cast<double>(random() % 1000) / 999;
    return static_cast<float>(turn % 3 == 0 ? std::round(value) : value);
  };
  constexpr Size kSizes[] = {{1, 1}, {1, 9}, {12, 1}, {2, 2}, {17, 11}};
  constexpr double kTurns[] = {360, 2 * std::numbers::pi, 1, 400};
  for (const Size size : kSizes) {
    for (int i = 0; i < 40; ++i, ++turn) {
      SCOPED_TRACE(turn);
      const auto picture = RandomPicture<KyBW8>(size.width, size.height, random);
      Canvas<KyBW8> canvas(picture, kPlacements[turn % 3], random);
      // From well inside to far outside.
      const double room = turn % 4 == 0 ? 1e6 : turn % 4 * 4.0;
      const float x0 = real(-room, size.width + room), y0 = real(-room, size.height + room);
      const float x1 = i % 5 == 0 ? x0 : real(-3, 20), y1 = i % 10 < 6 ? y0 : real(-3, 20);
      const auto samples = static_cast<unsigned>(1 + random() % 20);
      const int half = static_cast<int>(random() % 4);
      const double length = std::hypot(x1 - x0, y1 - y0);
      const double ux = length > 0 ? (double{y0} - y1) / length : 0,
                   uy = length > 0 ? (double{x1} - x0) / length : 1;
      std::vector<double> expected;
      for (unsigned k = 0; k < samples; ++k) {
        const double t = samples == 1 ? 0 : k / (samples - 1.0);
        expected.push_back(
            ThickAt(picture, (1 - t) * x0 + t * x1, (1 - t) * y0 + t * y1, ux, uy, half));
      }
      KyFloatVector profile;
      const auto thickness = static_cast<unsigned>(half);
      ASSERT_EQ(ImgSampleSegment(canvas.roi(), x0, y0, x1, y1, samples, thickness, &profile),
                KY_OK);
      ExpectNear(profile, expected);

      const int unit = turn % 4;
      const float radius = real(0, 9), start = real(-1, 1), end = real(-2, 2);
      const auto inUnit = [&](float turns) { return static_cast<float>(turns * kTurns[unit]); };
      expected.clear();
      for (unsigned k = 0; k < samples; ++k) {
        const double t = samples == 1 ? 0 : k / (samples - 1.0);
        const double angle = ((1 - t) * inUnit(start) + t * inUnit(end)) / kTurns[unit] * kTurns[1];
        const double c = std::cos(angle), s = std::sin(angle);
        expected.push_back(ThickAt(picture, x0 + radius * c, y0 + radius * s, c, s, half));
      }
      KySetAngleUnit(static_cast<KY_ANGLE_UNIT>(unit));
      EXPECT_EQ(ImgSampleArc(canvas.roi(), x0, y0, radius, inUnit(start), inUnit(end), samples,
                             thickness, &profile),
                KY_OK);
      KySetAngleUnit(KY_ANGLE_DEGREES);
      ExpectNear(profile, expected);
      EXPECT_TRUE(canvas.Unchanged());
    }
  }
}

// Sums over a thickness hold the brightest pixels, of which four are black here.
TEST(Sampling, ThicknessesOfThousandsOfPixels) {
  KyImage<KyBW8> image(70000, 3);
  for (int y = 0; y < 3; ++y) std::memset(image.GetPixelPtr(0, y), 255, 70000);
  for (int i = 0; i < 4; ++i) image.SetPixel(0, 35000 + i, 1);
  for (const unsigned half : {1000u, 4096u, 4097u, 32768u}) {
    KyFloatVector profile;
    ASSERT_EQ(ImgSampleSegment(&image, 35001, 1, 35001, 0, 1, half, &profile), KY_OK);
    EXPECT_NEAR(profile[0], 255 * (1 - 4 / (2.0 * half + 1)), kNear);
  }
}

TEST(Sampling, TakesTheLargestNumbers) {
  KyImage<KyBW8> image(3, 2);
  image.SetPixel(77, 2, 1);
  KyFloatVector profile;
  constexpr float kMost = std::numeric_limits<float>::max();
  ASSERT_EQ(ImgSampleSegment(&image, -kMost, -kMost, kMost, kMost, 3, 1, &profile), KY_OK);
  EXPECT_EQ(profile[0], 0);
  EXPECT_EQ(profile[2], 77);
  EXPECT_EQ(ImgSampleArc(&image, kMost, kMost, kMost, -kMost, kMost, 9, 9, &profile), KY_OK);
  EXPECT_EQ(ImgSampleSegment(&image, 0, 0, 2, 1, 1 << 24, 0, &profile), KY_OK);
  EXPECT_EQ(profile[(1 << 24) - 1], 77);
}

TEST(Smoothing, IsTheGaussianMeanOfTheNearestSamples) {
  Random random(2);
  for (const unsigned n : {0u, 1u, 2u, 7u, 60u}) {
    for (const float sigma : {0.0f, 1e-30f, 0.3f, 1.0f, 2.5f, 19.0f, 3000.0f, 32768.0f}) {
      SCOPED_TRACE(std::to_string(n) + " samples, sigma " + std::to_string(sigma));
      KyFloatVector profile;
      profile.SetNumElements(n);
      for (float& sample : profile) sample = static_cast<float>(random() % 256);
      const int radius = static_cast<int>(std::ceil(3.0 * sigma));
      std::vector<double> expected;
      for (int i = 0; i < static_cast<int>(n); ++i) {
        double sum = 0, weights = 0;
        for (int k = -radius; k <= radius; ++k) {
          const double weight =
              k == 0 ? 1 : std::exp(-0.5 * (k / double{sigma}) * (k / double{sigma}));
          const int at = std::clamp(i + k, 0, static_cast<int>(n) - 1);
          sum += weight * profile[static_cast<unsigned>(at)];
          weights += weight;
        }
        expected.push_back(sum / weights);
      }
      ASSERT_EQ(KySmooth(&profile, sigma), KY_OK);
      ExpectNear(profile, expected);
    }
  }
}

struct Edges {
  std::vector<double> positions, strengths;
};

// By the definition, run by run, for slopes that are exact in floating point.
Edges EdgesOf(const std::vector<float>& p, int polarity, double least) {
  const int n = static_cast<int>(p.size());
  std::vector<double> d(p.size() + 2);
  const auto at = [&](int i) -> double& { return d[static_cast<std::size_t>(i)]; };
  const auto sample = [&](int i) { return double{p[static_cast<std::size_t>(i)]}; };
  for (int i = 1; i < n - 1; ++i) at(i) = (sample(i + 1) - sample(i - 1)) / 2;
  Edges edges;
  for (int first = 1, end; first < n - 1; first = end) {
    for (end = first + 1; end < n && at(end) == at(first); ++end) continue;
    const int sign = at(first) > 0 ? 1 : -1;
    const bool strong = std::abs(at(first)) > 0 && std::abs(at(first)) >= least;
    const bool extreme =
        sign * at(first - 1) < sign * at(first) && sign * at(end) < sign * at(first);
    if (!strong || !extreme || (polarity & (sign > 0 ? 1 : 2)) == 0) continue;
    double position = (first + end - 1) / 2.0, strength = at(first);
    if (end - first <= 2) {
      // The parabola a t^2 + b t + c.
      const double a = (at(first - 1) + at(first + 1)) / 2 - at(first);
      const double b = (at(first + 1) - at(first - 1)) / 2;
      position = first - b / (2 * a);
      strength = at(first) - b * b / (4 * a);
    }
    edges.positions.push_back(position);
    edges.strengths.push_back(strength);
  }
  return edges;
}

void CheckEdges(const std::vector<float>& p, int polarity, float least) {
  const Edges expected = EdgesOf(p, polarity, least);
  KyFloatVector profile;
  profile.SetNumElements(static_cast<unsigned>(p.size()));
  std::copy(p.begin(), p.end(), profile.begin());
  KyEdgesVector edges;
  ASSERT_EQ(KyFindEdges(&profile, static_cast<TRANS_SCAN_EDGE>(polarity), least, &edges), KY_OK);
  ASSERT_EQ(edges.GetNumElements(), expected.positions.size());
  for (unsigned i = 0; i < edges.GetNumElements(); ++i) {
    EXPECT_NEAR(edges[i].position, expected.positions[i], kNear);
    EXPECT_NEAR(edges[i].strength, expected.strengths[i], kNear);
  }
}

TEST(Edges, AreTheExtremesOfTheSlope) {
  Random random(3);
  for (int i = 0; i < 4000; ++i) {
    SCOPED_TRACE(i);
    // Few levels make plateaus of the slope, some of them at the ends.
    const auto levels = static_cast<unsigned>(2 + random() % 5);
    std::vector<float> p(random() % 24);
    for (float& sample : p) sample = static_cast<float>(random() % levels);
    if (i % 3 == 0)  // slopes in stairs
      for (std::size_t k = 1; k < p.size(); ++k) p[k] += p[k - 1];
    CheckEdges(p, 1 + i % 3, static_cast<float>(random() % 3) / 2);
  }
}

TEST(Edges, OfKnownProfiles) {
  const struct {
    const char* what;
    std::vector<float> profile;
    std::vector<KyEdge> edges;
  } cases[] = {
      {"a step between samples", {0, 0, 0, 100, 100, 100}, {{2.5f, 56.25f}}},
      {"a step through a sample", {0, 0, 50, 100, 100}, {{2, 50}}},
      {"a ramp", {0, 0, 10, 20, 30, 40, 40, 40}, {{3, 10}}},
      {"a bar", {0, 0, 0, 80, 80, 80, 0, 0, 0}, {{2.5f, 45}, {5.5f, -45}}},
      {"a ramp up to the end has no smaller slope inside", {0, 10, 20, 30}, {{1.5f, 11.25f}}},
      {"flat", {7, 7, 7, 7}, {}},
      {"rounding makes no edges", {0, 0, 100, 200, 300.00003f, 400, 500, 500}, {{3.5f, 100}}},
      {"two samples", {0, 255}, {}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    KyFloatVector profile;
    for (const float sample : one.profile) profile.AddElement(sample);
    KyEdgesVector edges;
    ASSERT_EQ(KyFindEdges(&profile, TRANS_SCAN_BOTH, 0, &edges), KY_OK);
    ASSERT_EQ(edges.GetNumElements(), one.edges.size());
    for (unsigned i = 0; i < edges.GetNumElements(); ++i) {
      EXPECT_NEAR(edges[i].position, one.edges[i].position, kNear);
      EXPECT_NEAR(edges[i].strength, one.edges[i].strength, kNear);
    }
  }
}

// What the definition says, for exact Gaussian edges of either direction, whose width is known, and
// for what is no edge.
TEST(Edges, AreAsWideAsTheirBlur) {
  const auto widthOf = [](const std::vector<float>& samples, float share, float& width) {
    KyFloatVector profile;
    for (const float sample : samples) profile.AddElement(sample);
    return KyEdgeWidth(&profile, share, width);
  };
  constexpr double kReach[] = {1.2815516, 0.6744898, 2.3263479};  // of a normal distribution
  constexpr float kShares[] = {0.1f, 0.25f, 0.01f};
  for (int i = 0; i < 3; ++i)
    for (const double sigma : {4.0, 7.5})
      for (const float step : {150.0f, -0.5f}) {
        std::vector<float> samples;
        for (int x = 0; x < 121; ++x)
          samples.push_back(
              100 + step / 2 * static_cast<float>(std::erf((x - 60.3) / sigma / std::sqrt(2.0))));
        float width = 0;
        ASSERT_EQ(widthOf(samples, kShares[i], width), KY_OK);
        EXPECT_NEAR(width, 2 * kReach[i] * sigma, 0.02 * sigma);
      }
  float width = 7;
  EXPECT_EQ(widthOf({0, 0, 0, 1, 2, 3, 4, 4, 4}, 0.25f, width), KY_OK);
  EXPECT_FLOAT_EQ(width, 2);
  // A dip in the flank: the last way up counts. Noise before the edge does not.
  EXPECT_EQ(widthOf({0, 3, 0, 0, 2, 0, 4, 4, 4, 4, 4, 4}, 0.25f, width), KY_OK);
  EXPECT_FLOAT_EQ(width, 0.375f);
  width = 7;
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(widthOf({1, 2, 3}, 0.1f, width), KY_ERROR_NO_PIXELS);
  EXPECT_EQ(widthOf({5, 0, 9, 5}, 0.1f, width), KY_ERROR_SINGULAR_SYSTEM);
  EXPECT_EQ(widthOf({kNaN, 0, 9, 5}, 0.1f, width), KY_ERROR_SINGULAR_SYSTEM);
  EXPECT_EQ(widthOf({0, kNaN, kNaN, 5}, 0.1f, width), KY_ERROR_SINGULAR_SYSTEM);
  EXPECT_EQ(widthOf({0, 1, 2, 3}, 0.5f, width), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_EQ(width, 7);
}

TEST(Edges, OfNumbersThatAreNone) {
  constexpr float kOdd[] = {std::numeric_limits<float>::quiet_NaN(),
                            std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::max(),
                            std::numeric_limits<float>::lowest(),
                            0,
                            1};
  Random random(4);
  for (int i = 0; i < 500; ++i) {
    KyFloatVector profile;
    for (int k = 0; k < 12; ++k) profile.AddElement(kOdd[random() % 7]);
    KyEdgesVector edges;
    ASSERT_EQ(KyFindEdges(&profile, TRANS_SCAN_BOTH, 0, &edges), KY_OK);
    for (const KyEdge& edge : edges) EXPECT_TRUE(std::isfinite(edge.position));
    EXPECT_EQ(KySmooth(&profile, 2), KY_OK);
  }
}

}  // namespace
