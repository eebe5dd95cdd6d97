// Interlaced frames against their definitions.
#include "ky/frames.h"

#include <gtest/gtest.h>

#include <climits>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

const std::vector<Size> kSizes = {{1, 1},  {1, 2},  {2, 3},   {5, 4}, {31, 5}, {32, 6},
                                  {33, 7}, {70, 2}, {129, 9}, {0, 3}, {3, 0}};

bool Opposite(int y, int frame) { return (y % 2 == 0) == (frame % 2 != 0); }

// Whole images and frames anywhere on one image, so that they lie apart or overlap, and have rows
// of the image, the spare row or foreign memory below them.
TEST(Frames, GetAndSet) {
  constexpr int kWidth = 40, kHeight = 15;
  ForEachPath([&](const std::string&) {
    Random random(1);
    const auto below = [&](int limit) { return static_cast<int>(random() % (limit + 1u)); };
    for (int trial = 0; trial < 3000 && !testing::Test::HasFailure(); ++trial) {
      const bool owned = random() % 2 != 0, set = random() % 2 != 0;
      std::vector<KyBW8> memory(kWidth * (kHeight + 1));
      KyImage<KyBW8> image;
      if (owned)
        image.SetSize(kWidth, kHeight);
      else
        image.Attach(memory.data(), kWidth, kHeight, kWidth);
      const auto rowOf = [&](int y) { return static_cast<KyBW8*>(image.GetPixelPtr(0, y)); };
      const auto isPixel = [&](int y) { return y < kHeight + owned; };
      Picture<KyBW8> expected = RandomPicture<KyBW8>(kWidth, kHeight + 1, random);
      for (int y = 0; y <= kHeight; ++y) std::copy_n(&expected.At(0, y), kWidth, rowOf(y));

      const int frame = below(3) - 1, first = frame != 0 ? 1 : 0;
      const int width = below(20), height = below(9), frameHeight = (height + first) / 2;
      KyROI<KyBW8> whole(&image, below(kWidth - width), below(kHeight - height), width, height);
      KyROI<KyBW8> part(&image, below(kWidth - width), below(kHeight - frameHeight), width,
                        frameHeight);
      const Picture<KyBW8> before = expected;
      for (int r = first; r < height; r += 2)
        for (int x = 0; x < width; ++x) {
          const int inWhole = whole.GetY() + r, inPart = part.GetY() + r / 2;
          if (set)
            expected.At(whole.GetX() + x, inWhole) =
                isPixel(inPart) ? before.At(part.GetX() + x, inPart) : 0;
          else if (isPixel(inPart))
            expected.At(part.GetX() + x, inPart) = before.At(whole.GetX() + x, inWhole);
        }
      SCOPED_TRACE(testing::Message() << (set ? "set" : "get") << " frame " << frame << " of "
                                      << width << " x " << height << (owned ? ", owned" : ""));
      ASSERT_EQ(set ? ImgSetFrame(&part, &whole, frame) : ImgGetFrame(&whole, &part, frame), KY_OK);
      Picture<KyBW8> actual(kWidth, kHeight + 1);
      for (int y = 0; y <= kHeight; ++y) std::copy_n(rowOf(y), kWidth, &actual.At(0, y));
      EXPECT_TRUE(Same(expected, actual));
    }
  });
}

TEST(Frames, SizesOfFrames) {
  Random random(2);
  for (const int frame : {0, 1})
    for (int height = 1; height <= 4; ++height) {
      const KY_ERRORS expected = height == (5 + frame) / 2 ? KY_OK : KY_ERROR_SIZE_MISMATCH;
      Canvas<KyBW8> whole(6, 5, {}, random), part(6, height, {}, random);
      EXPECT_EQ(ImgGetFrame(whole.roi(), part.roi(), frame), expected);
      EXPECT_EQ(ImgSetFrame(part.roi(), whole.roi(), frame), expected);
      Canvas<KyBW8> narrow(5, height, {}, random);
      EXPECT_EQ(ImgGetFrame(whole.roi(), narrow.roi(), frame), KY_ERROR_SIZE_MISMATCH);
      EXPECT_TRUE(narrow.Unchanged());
    }
}

template <class T>
void CheckRealign() {
  for (const int frame : {0, 1, -1, 6})
    for (const int shift : {0, 1, -1, 5, -7, 40, -40, 1000, INT_MAX, INT_MIN}) {
      SCOPED_TRACE(testing::Message() << "shift " << shift << ", frame " << frame);
      CheckOperation<T, T>(
          [&](auto* in, auto* out) { return ImgRealignFrame(in, out, shift, frame); },
          [&](const Picture<T>& in, Picture<T>& out) {
            for (int y = 0; y < in.height; ++y)
              for (int x = 0; x < in.width && Opposite(y, frame); ++x)
                out.At(x, y) = in.Nearest(
                    static_cast<int>(std::clamp<long>(long{x} - shift, -1, in.width)), y);
          },
          kSizes);
    }
}
TEST(Frames, Realign) {
  CheckRealign<KyBW8>();
  CheckRealign<KyC24>();
}

KyBW8 Mean(KyBW8 a, KyBW8 b) { return static_cast<KyBW8>((a + b) / 2); }
KyC24 Mean(KyC24 a, KyC24 b) { return {Mean(a.c0, b.c0), Mean(a.c1, b.c1), Mean(a.c2, b.c2)}; }

template <class T>
void CheckRebuildAndSwap() {
  for (const int frame : {0, 1, -1, 2}) {
    SCOPED_TRACE("frame " + std::to_string(frame));
    CheckOperation<T, T>([&](auto* in, auto* out) { return ImgRebuildFrame(in, out, frame); },
                         [&](const Picture<T>& in, Picture<T>& out) {
                           for (int y = 0; y < in.height; ++y)
                             for (int x = 0; x < in.width && Opposite(y, frame); ++x) {
                               const bool has[] = {in.Has(x, y - 1), in.Has(x, y + 1)};
                               const T own = in.At(x, y);
                               const T above = has[0] ? in.At(x, y - 1) : own;
                               const T below = has[1] ? in.At(x, y + 1) : above;
                               out.At(x, y) = Mean(has[0] ? above : below, below);
                             }
                         },
                         kSizes);
  }
  CheckOperation<T, T>([](auto* in, auto* out) { return ImgSwapFrames(in, out); },
                       [](const Picture<T>& in, Picture<T>& out) {
                         for (int y = 0; y < in.height / 2 * 2; ++y)
                           for (int x = 0; x < in.width; ++x) out.At(x, y) = in.At(x, y ^ 1);
                       },
                       kSizes);
}
TEST(Frames, RebuildAndSwap) {
  CheckRebuildAndSwap<KyBW8>();
  CheckRebuildAndSwap<KyC24>();
}

std::uint32_t Square(int v) { return static_cast<std::uint32_t>(v * v); }
std::uint32_t Distance(KyBW8 a, KyBW8 b) { return Square(a - b); }
std::uint32_t Distance(KyC24 a, KyC24 b) {
  return Distance(a.c0, b.c0) + Distance(a.c1, b.c1) + Distance(a.c2, b.c2);
}

template <class T>
int BestOffset(const Picture<T>& picture, int line, int minimum, int maximum) {
  std::uint32_t least = 4294967295u;
  int best = minimum;
  for (int offset = minimum; offset <= maximum; ++offset) {
    std::uint32_t score = 0;
    for (int x = std::max(maximum, 0); x < picture.width + std::min(minimum, 0); ++x)
      score += Distance(picture.At(x, line), picture.At(x - offset, line + 1));
    if (score < least) {
      least = score;
      best = offset;
    }
  }
  return best;
}

template <class T>
void CheckMatch() {
  ForEachPath([](const std::string&) {
    Random random(3);
    for (const int width : {0, 1, 2, 7, 17, 33, 100, 70000})
      for (int trial = 0; trial < 60; ++trial) {
        const Picture<T> picture = RandomPicture<T>(width, 4, random);
        Canvas<T> canvas(picture, kPlacements[trial % 3], random);
        const int span = static_cast<int>(random() % (std::min(width, 12) + 1u));
        const int minimum = static_cast<int>(random() % 30) - 20, line = trial % 3;
        int best = -99;
        ASSERT_EQ(ImgMatchFrames(canvas.roi(), line, minimum, minimum + span, best), KY_OK);
        ASSERT_EQ(best, BestOffset(picture, line, minimum, minimum + span))
            << "width " << width << ", " << minimum << ".." << minimum + span;
        EXPECT_TRUE(canvas.Unchanged());
        if (width == 70000 && trial == 8) break;
      }
    // One pixel more than 32 bits hold wraps to less than one pixel fewer.
    Picture<T> wide(66053, 2);
    std::memset(static_cast<void*>(&wide.At(0, 0)), 255, 66054 * sizeof(T));
    Canvas<T> canvas(wide, {}, random);
    int best = -99;
    ASSERT_EQ(ImgMatchFrames(canvas.roi(), 0, -1, 0, best), KY_OK);
    EXPECT_EQ(best, BestOffset(wide, 0, -1, 0));
  });
}

TEST(Frames, MatchFindsTheFirstBestOffset) {
  CheckMatch<KyBW8>();
  CheckMatch<KyC24>();
}

// A row moved by realignment matches at the offset that moves it back.
TEST(Frames, MatchUndoesRealignment) {
  Random random(4);
  Picture<KyBW8> picture(64, 2);
  for (int x = 0; x < 64; ++x) picture.At(x, 0) = picture.At(x, 1) = static_cast<KyBW8>(random());
  for (int shift = -9; shift <= 9; ++shift) {
    Canvas<KyBW8> canvas(picture, {}, random);
    int best = -99;
    ASSERT_EQ(ImgRealignFrame(canvas.roi(), canvas.roi(), shift, 0), KY_OK);
    ASSERT_EQ(ImgMatchFrames(canvas.roi(), 0, -9, 9, best), KY_OK);
    EXPECT_EQ(best, -shift);
  }
}

TEST(Frames, Refusals) {
  int best = 77;
  Random random(5);
  Canvas<KyBW8> canvas(6, 3, {}, random);
  const struct {
    int line, minimum, maximum;
    KY_ERRORS error;
  } cases[] = {
      {0, 1, 0, KY_ERROR_BAD_INTERVAL},
      {0, -3, 4, KY_ERROR_BAD_INTERVAL},
      {0, INT_MIN, INT_MAX, KY_ERROR_BAD_INTERVAL},
      {-1, 1, 0, KY_ERROR_BAD_INTERVAL},
      {-1, 0, 1, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
      {2, 0, 1, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
      {INT_MAX, 0, 1, KY_ERROR_PARAMETER_2_OUT_OF_RANGE},
      {1, -3, 3, KY_OK},
      {1, INT_MAX - 6, INT_MAX, KY_OK},
      {1, INT_MIN, INT_MIN + 6, KY_OK},
  };
  for (const auto& c : cases) {
    best = 77;
    EXPECT_EQ(ImgMatchFrames(canvas.roi(), c.line, c.minimum, c.maximum, best), c.error)
        << c.line << ' ' << c.minimum << ' ' << c.maximum;
    EXPECT_EQ(best == 77, c.error != KY_OK);
    EXPECT_EQ(KyGetTraceCount(), c.error != KY_OK);
  }
}

}  // namespace
