#include "foundation/kernels/pair_counter.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/picture.h"

namespace ky::test {
namespace {

// Counts are the same with probing and without; only with it may noise be left to another counter.
TEST(PairCounter, Probes) {
  constexpr std::ptrdiff_t kSteps = 10000;
  Random random(7);
  std::vector<KyBW8> noise(kSteps * PairCounter::kStep), fewLevels(noise.size());
  for (KyBW8& pixel : noise) pixel = static_cast<KyBW8>(random());
  for (KyBW8& pixel : fewLevels) pixel = static_cast<KyBW8>(100 + random() % 20);
  for (const bool probes : {false, true})
    for (const auto* pixels : {&noise, &fewLevels}) {
      PairCounter counter(probes);
      ASSERT_TRUE(counter.Allocate());
      const std::ptrdiff_t counted = counter.Count(pixels->data(), kSteps);
      if (probes && pixels == &noise)
        EXPECT_LT(counted, kSteps);
      else
        EXPECT_EQ(counted, kSteps);
      EXPECT_EQ(counter.Count(pixels->data(), 0), 0);
      Counts counts = {}, expected = {};
      counter.AddTo(counts);
      for (std::ptrdiff_t i = 0; i < counted * PairCounter::kStep; ++i) ++expected[(*pixels)[i]];
      for (int level = 0; level < kLevels; ++level) ASSERT_EQ(counts[level], expected[level]);
    }
}

}  // namespace
}  // namespace ky::test
