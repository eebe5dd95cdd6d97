// Profiles against models written from the definitions.
#include "ky/profile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

#include "ky/ky.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

using Levels = std::vector<int>;

KyBW8Vector VectorOf(const Levels& levels) {
  KyBW8Vector vector(static_cast<unsigned>(levels.size()));
  for (unsigned i = 0; i < levels.size(); ++i) vector[i] = static_cast<KyBW8>(levels[i]);
  return vector;
}
Levels LevelsOf(const KyBW8Vector& vector) { return {vector.begin(), vector.end()}; }
Levels RandomLevels(int n, Random& random) {
  const auto picture = RandomPicture<KyBW8>(n, 1, random);
  return {picture.pixels.begin(), picture.pixels.end()};
}

// One pass of three elements each; the ends have one neighbour.
template <class F>
Levels Pass(const Levels& v, F f) {
  Levels out;
  const int n = static_cast<int>(v.size());
  for (int i = 0; i < n; ++i) {
    const auto at = [&](int k) { return v[static_cast<std::size_t>(std::clamp(k, 0, n - 1))]; };
    out.push_back(f(at(i - 1), at(i), at(i + 1)));
  }
  return out;
}
template <class F>
Levels Passes(Levels v, unsigned passes, F f) {
  while (passes-- > 0) v = Pass(v, f);
  return v;
}

Levels Derivative(const Levels& v) {
  Levels out(v.size(), 128);
  const std::size_t n = v.size();
  for (std::size_t i = 1; i + 1 < n; ++i) out[i] = ((v[i + 1] - v[i - 1]) >> 1) + 128;
  if (n > 1) {
    out[0] = std::clamp(v[1] - v[0] + 128, 0, 255);
    out[n - 1] = std::clamp(v[n - 1] - v[n - 2] + 128, 0, 255);
  }
  return out;
}
Levels Uniform(const Levels& v, int half) {
  Levels out;
  const int n = static_cast<int>(v.size());
  for (int i = 0; i < n; ++i) {
    int sum = 0;
    for (int k = i - half; k <= i + half; ++k)
      sum += v[static_cast<std::size_t>(std::clamp(k, 0, n - 1))];
    out.push_back(sum / (2 * half + 1));
  }
  return out;
}

using Filter = std::function<KY_ERRORS(KyBW8Vector*, KyBW8Vector*)>;
void CheckFilter(const Levels& source, const Filter& filter, const Levels& expected) {
  KyBW8Vector from = VectorOf(source), to = VectorOf(Levels(source.size()));
  EXPECT_EQ(filter(&from, &to), KY_OK);
  EXPECT_EQ(LevelsOf(to), expected);
  EXPECT_EQ(LevelsOf(from), source);
  EXPECT_EQ(filter(&from, &from), KY_OK);
  EXPECT_EQ(LevelsOf(from), expected) << "in place";
}

TEST(Profile, Filters) {
  ForEachPath([](const std::string&) {
    Random random(1);
    std::vector<int> sizes;
    for (int n = 0; n <= 2 * kLongestVector + 3; ++n) sizes.push_back(n);
    sizes.push_back(1000);
    sizes.push_back(17000);  // filtered in pieces
    for (const int n : sizes) {
      SCOPED_TRACE(n);
      if (::testing::Test::HasFailure()) return;
      const Levels v = RandomLevels(n, random);
      CheckFilter(v, ImgProfileDerivative, Derivative(v));
      for (const unsigned passes : {1u, 2u, 3u, 4u, 5u, 8u, 31u, 40u}) {
        const auto with = [&](auto filter) {
          return [=](KyBW8Vector* a, KyBW8Vector* b) { return filter(a, b, passes); };
        };
        const auto largest = [](int a, int b, int c) { return std::max({a, b, c}); };
        const auto smallest = [](int a, int b, int c) { return std::min({a, b, c}); };
        const auto binomial = [](int a, int b, int c) { return (a + 2 * b + c) >> 2; };
        CheckFilter(v, with([](auto... a) { return ImgDilate(a...); }), Passes(v, passes, largest));
        CheckFilter(v, with([](auto... a) { return ImgErode(a...); }), Passes(v, passes, smallest));
        CheckFilter(v, with([](auto... a) { return ImgConvolBinomial(a...); }),
                    Passes(v, passes, binomial));
      }
      for (int half : {0, 1, 2, 5, 100, 101, std::min((n - 1) / 2, 499)})
        if (n >= 2 * half + 1)
          CheckFilter(
              v, [&](auto... a) { return ImgConvolUniform(a..., static_cast<unsigned>(half)); },
              Uniform(v, half));
    }
  });
}

TEST(Profile, ManyPassesEnd) {
  const Levels v = {0, 255, 3, 9, 200, 200, 17, 90, 90};
  KyBW8Vector from = VectorOf(v), to;
  EXPECT_EQ(ImgDilate(&from, &to, UINT_MAX), KY_OK);
  EXPECT_EQ(LevelsOf(to), Levels(9, 255));
  EXPECT_EQ(ImgConvolBinomial(&from, &to, UINT_MAX), KY_OK);
  EXPECT_EQ(LevelsOf(to),
            Passes(v, 10000, [](int a, int b, int c) { return (a + 2 * b + c) >> 2; }));
  // A long one comes to rest piece by piece, a flat one at once.
  Levels random(5000);
  for (std::size_t i = 0; i < random.size(); ++i)
    random[i] = i < 2500 ? static_cast<int>(i * i * 2654435761u >> 24 & 255) : i < 4000 ? 200 : 255;
  for (const unsigned passes : {1u, 40u, 1030u, 9000u}) {
    from = VectorOf(random);
    for (KyBW8Vector* const out : {&to, &from}) {
      EXPECT_EQ(ImgConvolBinomial(&from, out, passes), KY_OK);
      EXPECT_EQ(LevelsOf(*out), Passes(random, static_cast<int>(passes),
                                       [](int a, int b, int c) { return (a + 2 * b + c) >> 2; }));
    }
  }
  from = VectorOf(v);
  // None leaves the destination resized and nothing else.
  to = VectorOf({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
  for (const auto filter : {&ImgConvolBinomial, &ImgErode})
    EXPECT_EQ((*filter)(&from, &to, 0), KY_OK);
  EXPECT_EQ(LevelsOf(to), (Levels{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

std::vector<KyPeak> Peaks(const Levels& v, int low, int high, int minAmplitude, int minArea) {
  std::vector<KyPeak> found;
  const int n = static_cast<int>(v.size());
  const auto sideOf = [&](int i) {
    const int level = v[static_cast<std::size_t>(i)];
    return level > high ? 1 : level < low ? -1 : 0;
  };
  for (int s = 1; s < n; ++s) {
    const int side = sideOf(s);
    if (side == 0 || sideOf(s - 1) == side) continue;
    int e = s, amplitude = 0, area = 0;
    double weighted = 0;
    for (; e < n && sideOf(e) == side; ++e) {
      const int d = v[static_cast<std::size_t>(e)] - (side > 0 ? high : low);
      amplitude = std::abs(d) > std::abs(amplitude) ? d : amplitude;
      area += d;
      weighted += double{1} * e * d;
    }
    if (e == n || std::abs(amplitude) < minAmplitude || std::abs(area) < minArea) continue;
    const unsigned start = static_cast<unsigned>(s);
    found.push_back({start, static_cast<unsigned>(e - s), static_cast<float>(weighted / area),
                     amplitude, area});
  }
  return found;
}

TEST(Profile, Peaks) {
  Random random(2);
  for (int turn = 0; turn < 500; ++turn) {
    const int n = static_cast<int>(random() % 60);
    Levels v;
    for (int i = 0; i < n; ++i) v.push_back(static_cast<int>(random() % (turn % 2 == 0 ? 256 : 8)));
    const int top = turn % 2 == 0 ? 256 : 8;
    int low = static_cast<int>(random() % static_cast<unsigned>(top)), high = low;
    if (turn % 3 != 0) high += static_cast<int>(random() % 3);
    const int minAmplitude = static_cast<int>(random() % 3),
              minArea = static_cast<int>(random() % 9);
    KyBW8Vector profile = VectorOf(v);
    KyPeaksVector peaks;
    peaks.AddElement({});
    const auto u = [](int i) { return static_cast<unsigned>(i); };
    ASSERT_EQ(ImgGetProfilePeaks(&profile, &peaks, u(low), u(high), u(minAmplitude), u(minArea)),
              KY_OK);
    const std::vector<KyPeak> expected = Peaks(v, low, high, minAmplitude, minArea);
    ASSERT_EQ(peaks.GetNumElements(), expected.size());
    for (unsigned i = 0; i < expected.size(); ++i) {
      KyPeak peak = peaks[i];
      EXPECT_FLOAT_EQ(peak.center, expected[i].center);
      peak.center = expected[i].center;
      EXPECT_EQ(peak, expected[i]);
    }
    // The same levels as counts of many pixels: everything grows with them but the places.
    constexpr unsigned kMany = 1000000;
    KyBW32Vector counts;
    for (const int level : v) counts.AddElement(kMany * u(level));
    KyPeaksVector large;
    ASSERT_EQ(ImgGetProfilePeaks(&counts, &large, kMany * u(low), kMany * u(high),
                                 kMany * u(minAmplitude), kMany * u(minArea)),
              KY_OK);
    ASSERT_EQ(large.GetNumElements(), expected.size());
    for (unsigned i = 0; i < expected.size(); ++i) {
      const auto scaled = [](std::int32_t value) {
        return static_cast<std::int32_t>(
            std::clamp<std::int64_t>(std::int64_t{value} * kMany, INT32_MIN, INT32_MAX));
      };
      const KyPeak& e = expected[i];
      EXPECT_EQ(large[i],
                (KyPeak{e.start, e.length, peaks[i].center, scaled(e.amplitude), scaled(e.area)}));
    }
  }
  KyBW8Vector profile = VectorOf({0, 200, 200, 0});
  KyPeaksVector peaks;
  ASSERT_EQ(ImgGetProfilePeaks(&profile, &peaks, 50, 100, 0, 0), KY_OK);
  ASSERT_EQ(peaks.GetNumElements(), 1u);
  EXPECT_EQ(peaks[0], (KyPeak{1, 2, 1.5f, 100, 200}));
}

TEST(Profile, Refusals) {
  KyBW8Vector v = VectorOf({1, 2, 3, 4}), three = VectorOf({1, 2, 3});
  KyPeaksVector peaks;
  peaks.AddElement({});
  const auto expect = [](KY_ERRORS status, int code, const char* name) {
    EXPECT_EQ(status, code);
    Harness<KyBW8>::ExpectTrace(status, {name});
  };
  expect(ImgGetProfilePeaks(&v, &peaks, 5, 4, 0, 0), 1007, "ImgGetProfilePeaks");
  EXPECT_EQ(peaks.GetNumElements(), 1u);
  for (const unsigned half : {2u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    expect(ImgConvolUniform(&v, &v, half), 1613, "ImgConvolUniform");
  expect(ImgConvolUniform(&v, &three, 1), 1613, "ImgConvolUniform");
  EXPECT_EQ(LevelsOf(v), (Levels{1, 2, 3, 4}));
}

}  // namespace
