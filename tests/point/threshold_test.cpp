// Binarisation by given and automatic thresholds, from and to bits, and of colours.
#include "ky/threshold.h"

#include <gtest/gtest.h>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

// A source smaller than the destination, and f(v) in its area.
constexpr auto kSmaller = [](Size destination) {
  return Size{std::max(destination.width - 3, 0), std::max(destination.height - 1, 0)};
};
template <class F>
auto InSourceArea(F f) {
  return [f](const auto& in, auto& out) {
    for (int y = 0; y < in.height; ++y)
      for (int x = 0; x < in.width; ++x) out.At(x, y) = f(in.At(x, y));
  };
}

// The source gives the size: destinations narrower or lower are refused.
template <class In, class Out, class Call>
void CheckSourceDrives(const Call& call, const char* name) {
  const KyImage<In> source(9, 5), none;
  KyImage<Out> destination(9, 5), narrow(8, 6), low(10, 4), larger(10, 7), noPixels;
  const struct {
    const KyROI<In>* source;
    KyROI<Out>* destination;
    KY_ERRORS error;
  } cases[] = {{&source, &destination, KY_OK},
               {&source, &larger, KY_OK},
               {&source, &narrow, KY_ERROR_SIZE_MISMATCH},
               {&source, &low, KY_ERROR_SIZE_MISMATCH},
               {&source, &noPixels, KY_ERROR_NO_IMAGE},
               {&source, nullptr, KY_ERROR_NO_IMAGE},
               {&none, &narrow, KY_ERROR_NO_IMAGE},
               {nullptr, &destination, KY_ERROR_NO_IMAGE}};
  for (const auto& c : cases) {
    EXPECT_EQ(call(c.source, c.destination), c.error);
    Harness<Out>::ExpectTrace(
        c.error, c.error == KY_OK ? std::vector<const char*>() : std::vector<const char*>{name});
  }
}

TEST(Threshold, GivenLevels) {
  for (const unsigned threshold : {0u, 1u, 100u, 128u, 255u}) {
    SCOPED_TRACE(threshold);
    CheckOperation<KyBW8, KyBW8>(
        [&](auto* in, auto* out) { return ImgThreshold(in, out, threshold); },
        PerPixel([&](KyBW8, KyBW8 v) { return KyBW8(v < threshold ? 0 : 255); }));
    CheckOperation<KyBW8, KyBW8>(
        [&](auto* in, auto* out) { return ImgThreshold(in, out, threshold, 200, 100); },
        PerPixel([&](KyBW8, KyBW8 v) { return KyBW8(v < threshold ? 200 : 100); }));
  }
}

TEST(Threshold, AutomaticLevels) {
  for (int mode = -8; mode <= -3; ++mode)
    for (const float relative : {0.3f, 1.0f}) {
      SCOPED_TRACE("mode " + std::to_string(mode));
      CheckOperation<KyBW8, KyBW8>(
          [&](auto* in, auto* out) {
            return ImgThreshold(in, out, static_cast<unsigned>(mode), 3, 77, relative);
          },
          [&](const Picture<KyBW8>& in, Picture<KyBW8>& out) {
            KyBW8HistogramVector histogram;
            histogram.SetNumElements(256);
            histogram.Clear();
            for (const KyBW8 v : in.pixels) ++histogram[v];
            unsigned threshold = static_cast<unsigned>(mode);
            float below, above;
            ImgHistogramThreshold(&histogram, threshold, below, above, relative);
            PerPixel([&](KyBW8, KyBW8 v) { return KyBW8(v < threshold ? 3 : 77); })(in, out);
          },
          {{7, 5}, {64, 3}, {131, 17}});
    }
  Random random(1);
  Canvas<KyBW8> in(5, 4, {}, random), out(5, 4, {}, random);
  EXPECT_EQ(ImgThreshold(in.roi(), out.roi(), 256), KY_ERROR_PARAMETER_2_OUT_OF_RANGE);
  EXPECT_STREQ(KyGetTrace(0), "ImgHistogramThreshold");
  EXPECT_STREQ(KyGetTrace(1), "ImgThreshold");
  EXPECT_EQ(
      ImgThreshold(in.roi(), out.roi(), static_cast<unsigned>(IMG_THRESHOLD_RELATIVE), 0, 1, 2.0f),
      KY_ERROR_PARAMETER_5_OUT_OF_RANGE);
  EXPECT_TRUE(out.Unchanged());
}

TEST(Threshold, ThreeLevels) {
  const std::pair<unsigned, unsigned> thresholds[] = {
      {50, 100},   {100, 50}, {0, 255},          {1, 254},       {256, 100},
      {300, 1000}, {0, 0},    {255, 0xFFFFFFFF}, {0xFFFFFFFF, 7}};
  for (const auto& pair : thresholds) {
    const unsigned low = pair.first, high = pair.second;
    SCOPED_TRACE(testing::Message() << low << ", " << high);
    CheckOperation<KyBW8, KyBW8>(
        [&](auto* in, auto* out) { return ImgDoubleThreshold(in, out, low, high, 10, 20, 30); },
        PerPixel([&](KyBW8, KyBW8 v) {
          return KyBW8(v > high ? 30 : v < low ? 10 : 20);
        }),
        {{1, 2}, {33, 3}, {77, 2}});
  }
  const auto call = [](auto* in, auto* out) {
    return ImgDoubleThreshold(in, out, 90, 170, 10, 20, 30);
  };
  CheckOperation<KyBW8, KyBW8>(call, InSourceArea([](KyBW8 v) {
                                 return KyBW8(v > 170 ? 30 : v < 90 ? 10 : 20);
                               }),
                               {{4, 2}, {36, 3}, {80, 4}}, Aliasing::kInPlaceAndOverlap, kSmaller);
  CheckSourceDrives<KyBW8, KyBW8>(call, "ImgDoubleThreshold (BW8 to BW8)");
}

// One-bit ROIs begin and end anywhere in a byte; every other bit keeps its value.
TEST(Threshold, BitsThereAndBack) {
  ForEachPath([&](const std::string&) {
    Random random(2);
    for (int left = 0; left < 8; ++left)
      for (int width = 0; width <= 83; ++width) {
        SCOPED_TRACE(testing::Message() << left << " + " << width);
        const int height = 3;
        const unsigned threshold = width % 9 == 0 ? 256 : random() % 256;
        KyImage<KyBW1> bits(left + width + 5, height + 2);
        for (int y = 0; y < height + 2; ++y)
          for (int x = 0; x < bits.GetWidth(); ++x) bits.SetPixel(random() % 2 == 0, x, y);
        KyImage<KyBW1> before;
        before.SetSize(&bits);
        for (int y = 0; y < height + 2; ++y)
          for (int x = 0; x < bits.GetWidth(); ++x) before.SetPixel(bits.GetPixel(x, y), x, y);

        KyROI<KyBW1> roi(&bits, left, 1, width, height);
        const Picture<KyBW8> levels = RandomPicture<KyBW8>(width, height, random);
        Canvas<KyBW8> canvas(levels, kPlacements[width % 3], random);
        ASSERT_EQ(ImgThreshold(canvas.roi(), &roi, threshold), KY_OK);
        for (int y = 0; y < height + 2; ++y)
          for (int x = 0; x < bits.GetWidth(); ++x) {
            const bool inside = levels.Has(x - left, y - 1);
            ASSERT_EQ(bits.GetPixel(x, y),
                      inside ? levels.At(x - left, y - 1) >= threshold : before.GetPixel(x, y))
                << x << ", " << y;
          }

        ASSERT_EQ(ImgThreshold(&roi, canvas.roi(), 40, 50), KY_OK);
        Picture<KyBW8> expected(width, height);
        PerPixel([&](KyBW8, KyBW8 v) { return KyBW8(v >= threshold ? 50 : 40); })(levels, expected);
        ASSERT_TRUE(Same(expected, canvas.Get()));
        ASSERT_TRUE(canvas.OnlyChanged(*canvas.roi()));
      }
  });
}

TEST(Threshold, BitsOfSmallerSources) {
  CheckSourceDrives<KyBW8, KyBW1>([](auto* in, auto* out) { return ImgThreshold(in, out, 1); },
                                  "ImgThreshold (BW8 to BW1)");
  CheckSourceDrives<KyBW1, KyBW8>([](auto* in, auto* out) { return ImgThreshold(in, out); },
                                  "ImgThreshold (BW1 to BW8)");
  KyImage<KyBW8> grey(9, 4), wide(12, 6);
  KyImage<KyBW1> bits(9, 4), wideBits(21, 6);
  ImgCopy(KyBW8{200}, &grey);
  ASSERT_EQ(ImgThreshold(&grey, &wideBits, 100), KY_OK);
  ASSERT_EQ(ImgThreshold(&grey, &bits, 100), KY_OK);
  ImgCopy(KyBW8{7}, &wide);
  ASSERT_EQ(ImgThreshold(&bits, &wide, 40, 50), KY_OK);
  for (int y = 0; y < 6; ++y)
    for (int x = 0; x < 12; ++x) {
      ASSERT_EQ(wideBits.GetPixel(x, y), x < 9 && y < 4);
      ASSERT_EQ(wide.GetPixel(x, y), x < 9 && y < 4 ? 50 : 7);
    }
}

TEST(Threshold, ColourBoxes) {
  class Swap : public KyColorLookup {
   public:
    void Transform(KyC24 in, KyC24& out) const override { out = KyC24(in.c2, in.c1, in.c0); }
  };
  const Swap swap;
  const KyC24 minimum(10, 0, 100), maximum(200, 255, 180);
  const auto inside = [&](KyC24 c) {
    return c.c0 >= 10 && c.c0 <= 200 && c.c2 >= 100 && c.c2 <= 180;
  };
  CheckOperation<KyBW8, KyC24>(
      [&](auto* in, auto* out) { return ImgThreshold(in, out, minimum, maximum); },
      PerPixel([&](KyBW8, KyC24 c) { return KyBW8(inside(c) ? 255 : 0); }));
  CheckOperation<KyBW8, KyC24>(
      [&](auto* in, auto* out) { return ImgThreshold(in, out, minimum, maximum, nullptr, 7, 9); },
      PerPixel([&](KyBW8, KyC24 c) { return KyBW8(inside(c) ? 9 : 7); }));
  CheckOperation<KyBW8, KyC24>(
      [&](auto* in, auto* out) { return ImgThreshold(in, out, minimum, maximum, &swap, 7, 9); },
      PerPixel([&](KyBW8, KyC24 c) { return KyBW8(inside(KyC24(c.c2, c.c1, c.c0)) ? 9 : 7); }));
  // A box whose limits are exchanged holds nothing.
  CheckOperation<KyBW8, KyC24>(
      [&](auto* in, auto* out) { return ImgThreshold(in, out, maximum, minimum); },
      PerPixel([&](KyBW8, KyC24) { return KyBW8(0); }), {{40, 2}});
  // A lookup that writes nothing leaves colours as they are, and what it fails at is its own
  // affair.
  class Nothing : public KyColorLookup {
   public:
    void Transform(KyC24, KyC24&) const override {
      KyImage<KyBW8> none;
      ImgCopy(KyBW8{0}, &none);
    }
  };
  const Nothing nothing;
  for (const KyColorLookup* lookup :
       {static_cast<const KyColorLookup*>(nullptr), static_cast<const KyColorLookup*>(&nothing)}) {
    const auto call = [&](auto* in, auto* out) {
      return ImgThreshold(in, out, minimum, maximum, lookup, 7, 9);
    };
    CheckOperation<KyBW8, KyC24>(call,
                                 InSourceArea([&](KyC24 c) { return KyBW8(inside(c) ? 9 : 7); }),
                                 {{40, 3}}, Aliasing::kNone, kSmaller);
    CheckSourceDrives<KyC24, KyBW8>(call, "ImgThreshold (C24 to BW8)");
  }
}

}  // namespace
