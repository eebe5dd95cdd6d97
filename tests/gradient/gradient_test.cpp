// Gradients and their lookup images against their definitions.
#include "ky/gradient.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cmath>
#include <limits>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

struct Gradient {
  int x, y;
};
Gradient GradientAt(const Picture<KyBW8>& v, int x, int y) {
  return {v.Nearest(x - 1, y) - v.Nearest(x + 1, y), v.Nearest(x, y - 1) - v.Nearest(x, y + 1)};
}

// A lookup image of random levels somewhere in an image of its own.
struct Lookup {
  explicit Lookup(Random& random, Placement place = {})
      : table(RandomPicture<KyBW8>(512, 512, random)), canvas(table, place, random) {}
  KyBW8 Entry(Gradient g) const { return table.At((256 + g.x) & 511, (256 + g.y) & 511); }

  Picture<KyBW8> table;
  Canvas<KyBW8> canvas;
};

void ModelScalar(const Lookup& lookup, const Picture<KyBW8>& in, Picture<KyBW8>& out) {
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x) out.At(x, y) = lookup.Entry(GradientAt(in, x, y));
}

TEST(Gradient, Vector) {
  CheckOperation<KyBW32, KyBW8>([](auto* in, auto* out) { return ImgGradientVector(in, out); },
                                [](const Picture<KyBW8>& in, Picture<KyBW32>& out) {
                                  for (int y = 0; y < in.height; ++y)
                                    for (int x = 0; x < in.width; ++x) {
                                      const Gradient g = GradientAt(in, x, y);
                                      out.At(x, y) = static_cast<KyBW16>(g.x) |
                                                     KyBW32{static_cast<KyBW16>(g.y)} << 16;
                                    }
                                });
}

TEST(Gradient, Scalar) {
  Random random(1);
  for (const Placement place : kPlacements) {
    Lookup lookup(random, place);
    CheckOperation<KyBW8, KyBW8>(
        [&](auto* in, auto* out) { return ImgGradientScalar(in, out, lookup.canvas.roi()); },
        [&](const auto& in, auto& out) { ModelScalar(lookup, in, out); });
    // Stored gradients of any 32 bits.
    CheckOperation<KyBW8, KyBW32>(
        [&](auto* in, auto* out) { return ImgGradientScalar(in, out, lookup.canvas.roi()); },
        PerPixel([&](KyBW8, KyBW32 g) {
          return lookup.Entry({static_cast<std::int16_t>(g), static_cast<std::int16_t>(g >> 16)});
        }));
  }
}

// A picture so large that the entries of usual differences are copied, with a few differences that
// are not among them, and with many.
TEST(Gradient, LargeScalar) {
  Random random(4);
  Lookup lookup(random);
  for (const unsigned edges : {0u, 200u, 3u}) {
    Picture<KyBW8> in = RandomPicture<KyBW8>(1100, 20, random);
    for (KyBW8& level : in.pixels)
      level = static_cast<KyBW8>(edges != 0 && random() % edges == 0 ? level : 60 + level / 2);
    Picture<KyBW8> expected(in.width, in.height);
    ModelScalar(lookup, in, expected);
    ForEachPath([&](const std::string&) {
      Canvas<KyBW8> source(in, {}, random), out(in.width, in.height, {}, random);
      ASSERT_EQ(ImgGradientScalar(source.roi(), out.roi(), lookup.canvas.roi()), KY_OK);
      EXPECT_TRUE(Same(expected, out.Get()));
      ASSERT_EQ(ImgGradientScalar(source.roi(), source.roi(), lookup.canvas.roi()), KY_OK);
      EXPECT_TRUE(Same(expected, source.Get()));
    });
  }
}

// A lookup that the destination lies on, wholly or in part, is used as it was.
TEST(Gradient, DestinationOnTheLookup) {
  Random random(2);
  for (const Size size : {Size{512, 512}, Size{300, 200}}) {
    Lookup lookup(random);
    const Picture<KyBW8> in = RandomPicture<KyBW8>(size.width, size.height, random);
    Canvas<KyBW8> source(in, {}, random);
    KyROI<KyBW8> out(lookup.canvas.roi(), 512 - size.width, 512 - size.height, size.width,
                     size.height);
    Picture<KyBW8> expected(size.width, size.height);
    ModelScalar(lookup, in, expected);
    ASSERT_EQ(ImgGradientScalar(source.roi(), &out, lookup.canvas.roi()), KY_OK);
    EXPECT_TRUE(Same(expected, Canvas<KyBW8>::Get(out)));
  }
}

// Rows so far apart that offsets into the lookup exceed 32 bits.
TEST(Gradient, LookupOfGiantPitch) {
  constexpr int kPitch = 1 << 23;
  constexpr std::size_t kBytes = std::size_t{kPitch} * 512;
  void* const memory = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) GTEST_SKIP() << "no address space";
  Random random(3);
  Lookup lookup(random);
  KyImage<KyBW8> giant;
  ASSERT_EQ(giant.Attach(static_cast<KyBW8*>(memory), 512, 512, kPitch), KY_OK);
  ASSERT_EQ(ImgCopy(lookup.canvas.roi(), &giant), KY_OK);
  const Picture<KyBW8> in = RandomPicture<KyBW8>(300, 20, random);
  Canvas<KyBW8> source(in, {}, random), out(300, 20, {}, random);
  Picture<KyBW8> expected(300, 20);
  ModelScalar(lookup, in, expected);
  ASSERT_EQ(ImgGradientScalar(source.roi(), out.roi(), &giant), KY_OK);
  EXPECT_TRUE(Same(expected, out.Get()));
  munmap(memory, kBytes);
}

// The low 8 bits of a truncated value.
KyBW8 Low(double value) { return static_cast<KyBW8>(static_cast<long long>(value)); }

TEST(Gradient, ModulusImage) {
  KyImage<KyBW8> lookup(3, 3);
  for (const float gain : {1.0f, 0.5f, 0.0f, 40.0f, -0.3f, -1e6f, 1e30f}) {
    ASSERT_EQ(ImgModulusImage(&lookup, gain), KY_OK);
    ASSERT_EQ(lookup.GetWidth(), 512);
    ASSERT_EQ(lookup.GetHeight(), 512);
    for (int j = -256; j < 256; ++j)
      for (int i = -256; i < 256; ++i) {
        const double value = std::sqrt(double{1} * i * i + double{1} * j * j) * gain + 0.5;
        ASSERT_EQ(lookup.GetPixel(256 + i, 256 + j), value > 255 ? 255 : Low(value))
            << i << ", " << j << ", gain " << gain;
      }
  }
  ASSERT_EQ(ImgModulusImage(&lookup), KY_OK);
  EXPECT_EQ(lookup.GetPixel(256 + 3, 256 + 4), 5);
  EXPECT_EQ(lookup.GetPixel(0, 0), 255);
  for (const float gain : {std::nanf(""), std::numeric_limits<float>::infinity(), -1e38f})
    EXPECT_EQ(ImgModulusImage(&lookup, gain), KY_OK);
}

TEST(Gradient, ArgumentImage) {
  const struct {
    KY_ANGLE_UNIT unit;
    float span;
    double radians;
  } spans[] = {{KY_ANGLE_DEGREES, 360, 2 * M_PI},
               {KY_ANGLE_RADIANS, 2, 2},
               {KY_ANGLE_REVOLUTIONS, 1, 2 * M_PI},
               {KY_ANGLE_DEGREES, -90, -M_PI / 2},
               {KY_ANGLE_DEGREES, 0, 0},
               {KY_ANGLE_RADIANS, 1e-7f, 1e-7f}};
  KyImage<KyBW8> lookup;
  for (const auto& span : spans)
    for (const int origin : {0, 100, 255}) {
      KySetAngleUnit(span.unit);
      ASSERT_EQ(ImgArgumentImage(&lookup, static_cast<KyBW8>(origin), span.span), KY_OK);
      // The library rounds a span to single precision; so does the model.
      const double scale = span.span == 0 ? 0 : 256.0 / static_cast<float>(span.radians);
      for (int j = -256; j < 256; ++j)
        for (int i = -256; i < 256; ++i) {
          const int expected =
              i == 0 && j == 0 ? 0 : Low(std::atan2(j, i) * scale + origin + 256.5);
          ASSERT_EQ(lookup.GetPixel(256 + i, 256 + j), expected)
              << i << ", " << j << ", span " << span.span << ", origin " << origin;
        }
    }
  KySetAngleUnit(KY_ANGLE_DEGREES);
  ASSERT_EQ(ImgArgumentImage(&lookup, 10, 360), KY_OK);
  EXPECT_EQ(lookup.GetPixel(256 + 7, 256), 10);        // to the right
  EXPECT_EQ(lookup.GetPixel(256, 256 + 7), 10 + 64);   // downwards
  EXPECT_EQ(lookup.GetPixel(256 - 7, 256), 10 + 128);  // to the left
  for (const float span : {std::nanf(""), std::numeric_limits<float>::infinity(), 1e-44f})
    EXPECT_EQ(ImgArgumentImage(&lookup, 1, span), KY_OK);
}

// The two stages: the length of the gradients of a step.
TEST(Gradient, LengthOfAStep) {
  KyImage<KyBW8> source(9, 3), lengths(9, 3), lookup;
  KyImage<KyBW32> gradients(9, 3);
  KyROI<KyBW8> right(&source, 5, 0, 4, 3);
  ImgCopy(KyBW8{100}, &right);
  ASSERT_EQ(ImgModulusImage(&lookup), KY_OK);
  ASSERT_EQ(ImgGradientVector(&source, &gradients), KY_OK);
  ASSERT_EQ(ImgGradientScalar(&gradients, &lengths, &lookup), KY_OK);
  for (int x = 0; x < 9; ++x) {
    const bool edge = x == 4 || x == 5;
    EXPECT_EQ(gradients.GetPixel(x, 1), edge ? KyBW32{0xFF9C} : 0u);  // -100
    EXPECT_EQ(lengths.GetPixel(x, 1), edge ? 100 : 0);
  }
}

TEST(Gradient, Refusals) {
  Random random(4);
  KyImage<KyBW8> lookup(512, 512), wide(513, 512), low(512, 511), small(256, 256);
  KyROI<KyBW8> part(&wide, 1, 0, 512, 512), nowhere, off(&lookup, 1, 0, 512, 512);
  const struct {
    const KyROI<KyBW8>* lookup;
    KY_ERRORS error;
  } cases[] = {{&lookup, KY_OK},
               {&part, KY_OK},
               {nullptr, KY_ERROR_NO_IMAGE},
               {&nowhere, KY_ERROR_PARAMETER_3_OUT_OF_RANGE},
               {&off, KY_ERROR_PARAMETER_3_OUT_OF_RANGE},
               {&wide, KY_ERROR_PARAMETER_3_OUT_OF_RANGE},
               {&low, KY_ERROR_PARAMETER_3_OUT_OF_RANGE},
               {&small, KY_ERROR_PARAMETER_3_OUT_OF_RANGE}};
  for (const auto& c : cases) {
    Canvas<KyBW8> in(7, 4, {}, random), out(7, 4, {}, random);
    Canvas<KyBW32> stored(7, 4, {}, random);
    EXPECT_EQ(ImgGradientScalar(in.roi(), out.roi(), c.lookup), c.error);
    EXPECT_EQ(ImgGradientScalar(stored.roi(), out.roi(), c.lookup), c.error);
    EXPECT_EQ(out.Unchanged(), c.error != KY_OK);
    EXPECT_EQ(KyGetTraceCount(), c.error != KY_OK);
  }
}

}  // namespace
