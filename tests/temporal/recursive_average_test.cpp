// Recursive averages against a literal model, and what their tables promise.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ky/temporal.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

constexpr unsigned kElements = 8191;

void ModelStep(const Picture<KyBW8>& source, Picture<KyBW16>& state, Picture<KyBW8>& out,
               const KyBW16Vector& table) {
  out = Picture<KyBW8>(source.width, source.height);
  for (int y = 0; y < source.height; ++y)
    for (int x = 0; x < source.width; ++x) {
      const int old = static_cast<std::int16_t>(state.At(x, y));
      const int d = std::clamp(16 * source.At(x, y) - old, -4095, 4095);
      state.At(x, y) = static_cast<KyBW16>(old + table[static_cast<unsigned>(4095 + d)]);
      const int level = static_cast<std::int16_t>(state.At(x, y)) >> 4;
      out.At(x, y) = static_cast<KyBW8>(std::clamp(level, 0, 255));
    }
}

// Source and destination apart, in place and overlapping; tables and states of any kind, also close
// to the source.
TEST(RecursiveAverage, Steps) {
  ForEachPath([](const std::string&) {
    Random random(1);
    for (const Size size : AwkwardSizes()) {
      KyBW16Vector table(kElements);
      ImgSetRecursiveAverageLUT(&table, 2, static_cast<float>(random() % 2));
      if (random() % 2 != 0)
        for (KyBW16& change : table) change = static_cast<KyBW16>(random());
      const Placement place = kPlacements[random() % 3];
      Canvas<KyBW8> canvas(size.width + 2, size.height + 2, place, random);
      Canvas<KyBW16> states(size.width, size.height, place, random);
      Picture<KyBW16> state = RandomPicture<KyBW16>(size.width, size.height, random);
      if (random() % 2 != 0)
        for (KyBW16& s : state.pixels) s = static_cast<KyBW16>(s % 4600 - 200);
      if (const int farthest = std::vector{0, 60, 120, 250, 300}[random() % 5])
        for (int y = 0; y < size.height; ++y)
          for (int x = 0; x < size.width; ++x)
            state.At(x, y) =
                static_cast<KyBW16>(16 * canvas.roi()->GetPixel(x + 1, y + 1) - farthest +
                                    random() % static_cast<unsigned>(2 * farthest));
      states.Put(state);
      const int right = static_cast<int>(random() % 3), down = static_cast<int>(random() % 3);
      KyROI<KyBW8> in(canvas.roi(), 1, 1, size.width, size.height);
      KyROI<KyBW8> out(canvas.roi(), right, down, size.width, size.height);
      Picture<KyBW8> expected;
      ModelStep(Canvas<KyBW8>::Get(in), state, expected, table);
      SCOPED_TRACE(testing::Message()
                   << size.width << " x " << size.height << ", " << right - 1 << ", " << down - 1);
      ASSERT_EQ(ImgRecursiveAverage(&in, states.roi(), &out, &table), KY_OK);
      ASSERT_TRUE(Same(expected, Canvas<KyBW8>::Get(out)));
      ASSERT_TRUE(Same(state, states.Get()));
      EXPECT_TRUE(canvas.OnlyChanged(out)) << "a byte outside the destination changed";
      EXPECT_TRUE(states.OnlyChanged(*states.roi())) << "a byte outside the state changed";
    }
  });
}

// A source in the state's memory is read first, a destination there is written last.
TEST(RecursiveAverage, ImagesInTheState) {
  constexpr int kWidth = 40, kHeight = 5;
  KyBW16Vector table;
  ImgSetRecursiveAverageLUT(&table, 2);
  ForEachPath([&](const std::string&) {
    Random random(2);
    for (const bool sourceInside : {false, true})
      for (const bool outInside : {false, true}) {
        SCOPED_TRACE(testing::Message() << "source " << sourceInside << ", out " << outInside);
        Picture<KyBW16> state = RandomPicture<KyBW16>(kWidth, kHeight, random);
        std::vector<KyBW16> memory(state.pixels.begin(), state.pixels.end());
        auto* const bytes = reinterpret_cast<KyBW8*>(memory.data());
        KyImage<KyBW16> states;
        KyImage<KyBW8> source(kWidth, kHeight), out(kWidth, kHeight);
        states.Attach(memory.data(), kWidth, kHeight, 2 * kWidth);
        if (sourceInside) source.Attach(bytes + 30, kWidth, kHeight, kWidth);
        if (outInside) out.Attach(bytes + 90, kWidth, kHeight, kWidth);
        Picture<KyBW8> expected;
        ModelStep(Canvas<KyBW8>::Get(source), state, expected, table);
        ASSERT_EQ(ImgRecursiveAverage(&source, &states, &out, &table), KY_OK);
        EXPECT_TRUE(Same(expected, Canvas<KyBW8>::Get(out)));
        if (outInside)
          std::copy(expected.pixels.begin(), expected.pixels.end(),
                    reinterpret_cast<KyBW8*>(state.pixels.data()) + 90);
        EXPECT_TRUE(Same(state, Canvas<KyBW16>::Get(states)));
      }
  });
}

int Change(const KyBW16Vector& table, int d) {
  return static_cast<std::int16_t>(table[static_cast<unsigned>(4095 + d)]);
}

TEST(RecursiveAverage, Tables) {
  KyBW16Vector table(5, 7);
  const float infinity = std::numeric_limits<float>::infinity();
  for (const float noise : {0.0f, 0.5f, 3.0f, 20.0f, 100.0f, -7.0f, 1e-40f, 1e30f})
    for (const float reduction : {0.0f, 0.5f, 1.0f, 2.0f, 3.0f, 10.0f}) {
      SCOPED_TRACE(testing::Message() << "reduction " << reduction << ", noise " << noise);
      ASSERT_EQ(ImgSetRecursiveAverageLUT(&table, reduction, noise), KY_OK);
      ASSERT_EQ(table.GetNumElements(), kElements);
      const double gain = 2 / (1.0 + reduction * reduction), range = 16.0 * noise;
      // Where exp(2 / range) is 1 in double precision nothing is damped.
      const bool damped = std::exp(2 / range) != 1;
      for (int d = 0; d <= 4095; ++d) {
        const double change = noise == 0 ? 0.5 + d * gain
                              : damped   ? d + range * (gain - 1) * std::tanh(d / range)
                                         : d;
        const double slack = noise == 0 ? 0.25 : 1e-6;  // of sums in single precision
        ASSERT_LE(Change(table, d), change + slack) << d;
        ASSERT_GT(Change(table, d), change - 1 - slack) << d;
        ASSERT_EQ(Change(table, -d), -Change(table, d)) << d;
      }
    }
  // Reduction 1 leaves every difference as it is.
  ImgSetRecursiveAverageLUT(&table, 1);
  for (int d = -4095; d <= 4095; ++d) ASSERT_EQ(Change(table, d), d);
  // Sums in single precision, literally.
  float sum = 0.5f;
  ImgSetRecursiveAverageLUT(&table, 3);
  for (int d = 0; d <= 4095; ++d, sum += 0.2f) ASSERT_EQ(Change(table, d), static_cast<int>(sum));
  for (const float bad : {std::nanf(""), infinity, -infinity})
    for (const float other : {0.0f, 2.0f, bad}) {
      EXPECT_EQ(ImgSetRecursiveAverageLUT(&table, bad, other), KY_OK);
      EXPECT_EQ(ImgSetRecursiveAverageLUT(&table, other, bad), KY_OK);
    }
}

TEST(RecursiveAverage, ReducesNoise) {
  constexpr int kSide = 100;
  KyBW16Vector table;
  ImgSetRecursiveAverageLUT(&table, 3);
  KyImage<KyBW8> frame(kSide, kSide), out(kSide, kSide);
  KyImage<KyBW16> state(kSide, kSide);
  Random random(3);
  std::normal_distribution<double> noise(128, 12);
  const auto deviation = [](const auto& image, double unit) {
    double sum = 0, squares = 0;
    for (int y = 0; y < kSide; ++y)
      for (int x = 0; x < kSide; ++x) {
        const double level = image.GetPixel(x, y) / unit;
        sum += level;
        squares += level * level;
      }
    const double mean = sum / kSide / kSide;
    return std::sqrt(squares / kSide / kSide - mean * mean);
  };
  for (int t = 0; t < 40; ++t) {
    for (int y = 0; y < kSide; ++y)
      for (int x = 0; x < kSide; ++x) {
        const auto level = static_cast<KyBW8>(std::clamp(std::lround(noise(random)), 0l, 255l));
        frame.SetPixel(level, x, y);
        if (t == 0) state.SetPixel(static_cast<KyBW16>(16 * level), x, y);
      }
    ASSERT_EQ(ImgRecursiveAverage(&frame, &state, &out, &table), KY_OK);
  }
  EXPECT_NEAR(deviation(frame, 1) / deviation(state, 16), 3, 0.15);
  EXPECT_NEAR(deviation(frame, 1) / deviation(out, 1), 3, 0.15);
}

TEST(RecursiveAverage, Refusals) {
  KyBW16Vector table, brief(8190), longer(8192);
  ImgSetRecursiveAverageLUT(&table, 2);
  Random random(4);
  Canvas<KyBW8> image(9, 5, {}, random);
  Canvas<KyBW16> state(9, 5, {}, random), narrow(8, 5, {}, random);
  EXPECT_EQ(ImgRecursiveAverage(image.roi(), narrow.roi(), image.roi(), nullptr),
            KY_ERROR_SIZE_MISMATCH);
  for (KyBW16Vector* bad : {&brief, &longer, static_cast<KyBW16Vector*>(nullptr)}) {
    EXPECT_EQ(ImgRecursiveAverage(image.roi(), state.roi(), image.roi(), bad),
              KY_ERROR_NOT_256_ENTRIES);
    Harness<KyBW8>::ExpectTrace(KY_ERROR_NOT_256_ENTRIES, {"ImgRecursiveAverage"});
  }
  EXPECT_TRUE(image.Unchanged());
  EXPECT_TRUE(state.Unchanged());
  EXPECT_EQ(ImgSetRecursiveAverageLUT(nullptr, 2), KY_ERROR_BAD_VECTOR_TYPE);
  Harness<KyBW8>::ExpectTrace(KY_ERROR_BAD_VECTOR_TYPE, {"ImgSetRecursiveAverageLUT"});
}

}  // namespace
