// Moving averages against a literal model, over random sequences.
#include <gtest/gtest.h>

#include <climits>
#include <memory>

#include "ky/temporal.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

// The state and the steps, pixel by pixel.
class Model {
 public:
  Model(unsigned period, Size size, bool keep)
      : period_(static_cast<int>(period)),
        keep_(keep),
        count_(period_ - (keep ? 0 : 1)),
        index_(-count_),
        ring_(static_cast<std::size_t>(count_), Picture<KyBW8>(size.width, size.height)),
        sum_(size.width, size.height) {}

  void Reset() { index_ = -count_; }
  Picture<KyBW8> Average(const Picture<KyBW8>& frame) {
    Picture<KyBW8> out = frame;
    if (count_ == 0) return out;
    const int c = index_ < 0 ? index_ + count_ : index_;
    int o = 0;
    if (keep_ && index_ >= 0 && index_ < count_ - 1) o = index_ + 1;
    if (!keep_ && index_ >= 1) o = index_;
    if (keep_) Slot(c) = frame;
    for (int y = 0; y < frame.height; ++y)
      for (int x = 0; x < frame.width; ++x) {
        const int s = frame.At(x, y);
        KyBW16& sum = sum_.At(x, y);
        if (index_ == -count_) {
          sum = static_cast<KyBW16>((period_ - 1) * s);
        } else {
          const int total = (sum + s) % 65536;
          out.At(x, y) = static_cast<KyBW8>(total / period_);
          sum = static_cast<KyBW16>(total - Slot(o).At(x, y));
        }
      }
    if (!keep_) Slot(c) = frame;
    if (++index_ == count_) index_ = 0;
    return out;
  }

 private:
  Picture<KyBW8>& Slot(int i) { return ring_[static_cast<std::size_t>(i)]; }

  int period_;
  bool keep_;
  int count_, index_;
  std::vector<Picture<KyBW8>> ring_;
  Picture<KyBW16> sum_;
};

void Copy(const Picture<KyBW8>& from, KyROI<KyBW8>& to) {
  for (int y = 0; y < from.height; ++y)
    for (int x = 0; x < from.width; ++x) to.SetPixel(from.At(x, y), x, y);
}

constexpr Size kSizes[] = {{1, 1}, {7, 3}, {33, 2}, {70, 1}, {0, 2}};

void RunSequence(unsigned period, Size size, bool keep, Random& random) {
  SCOPED_TRACE(testing::Message() << "period " << period << (keep ? ", kept, " : ", copied, ")
                                  << size.width << " x " << size.height);
  KyMovingAverage average(period, size.width, size.height, keep);
  Model model(period, size, keep);
  const int frames = 3 * static_cast<int>(std::min(period, 20u)) + 5;
  for (int t = 0; t < frames && !testing::Test::HasFailure(); ++t) {
    if (random() % 16 == 0) {
      average.Reset();
      model.Reset();
    }
    // Refusals in between leave no trace.
    Canvas<KyBW8> wrong(size.width + 1, size.height, {}, random);
    const KY_ERRORS mode = KY_ERROR_UNSUPPORTED_OPERATION, other = KY_ERROR_SIZE_MISMATCH;
    EXPECT_EQ(average.Average(wrong.roi()), keep ? other : mode);
    EXPECT_EQ(average.Average(wrong.roi(), wrong.roi()), keep ? mode : other);
    EXPECT_TRUE(wrong.Unchanged());

    const Picture<KyBW8> frame = RandomPicture<KyBW8>(size.width, size.height, random);
    Canvas<KyBW8> canvas(size.width + 3, size.height + 2, kPlacements[t % 3], random);
    const int right = static_cast<int>(random() % 4), down = static_cast<int>(random() % 3);
    KyROI<KyBW8> in(canvas.roi(), 1, 1, size.width, size.height);
    KyROI<KyBW8> out(canvas.roi(), right, down, size.width, size.height);
    if (keep) {
      Copy(frame, *average.GetSrcImage());
    } else {
      Copy(frame, in);
      canvas.Put(canvas.Get());
    }
    ASSERT_EQ(keep ? average.Average(&out) : average.Average(&in, &out), KY_OK);
    EXPECT_TRUE(Same(model.Average(frame), Canvas<KyBW8>::Get(out))) << "frame " << t;
    EXPECT_TRUE(canvas.OnlyChanged(out)) << "a byte outside the destination changed";
  }
}

TEST(MovingAverage, SequencesOfEveryPeriod) {
  ForEachPath([](const std::string&) {
    Random random(1);
    for (const Size size : kSizes)
      for (const bool keep : {false, true})
        for (unsigned period = 1; period <= 20; ++period) RunSequence(period, size, keep, random);
    for (const unsigned period : {100u, 256u, 257u, 300u, 512u})
      for (const bool keep : {false, true}) RunSequence(period, {35, 1}, keep, random);
  });
}

// Every 16-bit total: 255 pixels whose sums start at 0 to 254 grow by 255 a frame, as kept frames
// are blackened before they leave the sum.
TEST(MovingAverage, QuotientsOfEveryTotal) {
  std::vector<unsigned> periods = {333,   511,   512,   513,   1000,  4095,  4097, 20000,
                                   32767, 32768, 32769, 65535, 65536, 65537, 70000};
  for (unsigned period = 2; period <= 300; ++period) periods.push_back(period);
  ForEachPath([&](const std::string&) {
    for (const unsigned period : periods) {
      KyMovingAverage average(period, 255, 1, 1);
      KyImage<KyBW8> out(255, 1);
      for (int t = -1; t <= 257; ++t) {
        KyImage<KyBW8>* const frame = average.GetSrcImage();
        ASSERT_NE(frame, nullptr);
        auto* const pixels = static_cast<KyBW8*>(frame->GetPixelPtr(0, 0));
        for (int x = 0; x < 255; ++x) pixels[x] = t < 0 ? 0 : static_cast<KyBW8>(t == 0 ? x : 255);
        ASSERT_EQ(average.Average(&out), KY_OK);
        std::memset(pixels, 0, 255);
        const auto* const means = static_cast<const KyBW8*>(out.GetPixelPtr(0, 0));
        for (int x = 0; x < 255 && t >= 0; ++x) {
          const unsigned total = static_cast<unsigned>(x + 255 * t) % 65536;
          ASSERT_EQ(means[x], total / period % 256) << total << " / " << period;
        }
      }
    }
  });
}

TEST(MovingAverage, DocumentedSequence) {
  KyMovingAverage average(4, 2, 1, 0);
  KyImage<KyBW8> frame(2, 1), out(2, 1);
  const int means[] = {10, 12, 17, 25, 35};
  for (int t = 0; t < 5; ++t) {
    ImgCopy(static_cast<KyBW8>(10 * (t + 1)), &frame);
    ASSERT_EQ(average.Average(&frame, &out), KY_OK);
    EXPECT_EQ(out.GetPixel(1, 0), means[t]);
  }
}

void ExpectUnconfigured(KyMovingAverage& average) {
  unsigned period = 9;
  int width = 9, height = 9, keep = 9;
  average.GetSize(period, width, height, keep);
  EXPECT_EQ(period, 0u);
  EXPECT_EQ(width, 0);
  EXPECT_EQ(height, 0);
  EXPECT_EQ(keep, 0);
  KyImage<KyBW8> image(3, 2);
  EXPECT_EQ(average.Average(&image), KY_ERROR_UNSUPPORTED_OPERATION);
  EXPECT_EQ(average.Average(&image, &image), KY_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(average.GetSrcImage(), nullptr);
  EXPECT_EQ(KyGetError(), KY_OK);
}

TEST(MovingAverage, Sizes) {
  KyMovingAverage average;
  ExpectUnconfigured(average);
  const struct {
    unsigned period;
    int width, height;
  } absurd[] = {{3, -1, 2},
                {3, 2, -1},
                {0, -1, -1},
                {UINT_MAX, 1, 1},
                {INT_MAX, INT_MAX, 1},
                {3, INT_MAX, INT_MAX},
                {1u << 30, 900, 900}};
  for (const auto& size : absurd)
    for (const int keep : {0, 1}) {
      average.SetSize(3, 3, 2, 1);
      EXPECT_EQ(average.SetSize(size.period, size.width, size.height, keep),
                KY_ERROR_NOT_ENOUGH_MEMORY)
          << size.period << ' ' << size.width << ' ' << size.height;
      ASSERT_EQ(KyGetTraceCount(), 1);
      EXPECT_STREQ(KyGetTrace(0), "KyMovingAverage::SetSize");
      ExpectUnconfigured(average);
    }

  unsigned period;
  int width, height, keep;
  ASSERT_EQ(average.SetSize(6, 3, 2, -5), KY_OK);
  average.GetSize(period, width, height, keep);
  EXPECT_EQ(period, 6u);
  EXPECT_EQ(width, 3);
  EXPECT_EQ(height, 2);
  EXPECT_EQ(keep, -5);
  EXPECT_NE(average.GetSrcImage(), nullptr);

  // Period 0 is refused, also with a size.
  KyImage<KyBW8> image(3, 2);
  for (const int mode : {0, 1}) {
    ASSERT_EQ(average.SetSize(0, 3, 2, mode), KY_OK);
    EXPECT_EQ(average.Average(&image), KY_ERROR_UNSUPPORTED_OPERATION);
    EXPECT_EQ(average.Average(&image, &image),
              mode != 0 ? KY_ERROR_UNSUPPORTED_OPERATION : KY_ERROR_SIZE_MISMATCH);
    EXPECT_EQ(average.GetSrcImage(), nullptr);
    EXPECT_EQ(KyGetError(), KY_OK);
  }
}

TEST(MovingAverage, Refusals) {
  KyMovingAverage copied(3, 9, 5, 0), kept(3, 9, 5, 1);
  EXPECT_EQ(copied.GetSrcImage(), nullptr);
  Harness<KyBW8>::ExpectTrace(KY_ERROR_UNSUPPORTED_OPERATION, {"KyMovingAverage::GetSrcImage"});

  // Images of the ring that their user has moved or resized.
  KyImage<KyBW8> out(9, 5);
  kept.GetSrcImage()->SetPlacement(1, 0, 9, 5);
  EXPECT_EQ(kept.Average(&out), KY_ERROR_NO_IMAGE);
  kept.GetSrcImage()->SetSize(8, 5);
  EXPECT_EQ(kept.Average(&out), KY_ERROR_SIZE_MISMATCH);
  kept.GetSrcImage()->SetSize(9, 5);
  EXPECT_EQ(kept.Average(&out), KY_OK);
}

}  // namespace
