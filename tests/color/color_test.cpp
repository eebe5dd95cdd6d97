#include "ky/color.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

class Rotate : public KyColorLookup {
 public:
  void Transform(KyC24 in, KyC24& out) const override { out = KyC24(in.c1, in.c2, in.c0); }
};

KyBW8 Component(KyC24 c, int i) { return i == 0 ? c.c0 : i == 1 ? c.c1 : c.c2; }

TEST(Color, Components) {
  const Rotate rotate;
  for (int i = 0; i < 3; ++i) {
    CheckOperation<KyBW8, KyC24>([&](auto* in, auto* out) { return ClrGetComponent(in, out, i); },
                                 PerPixel([&](KyBW8, KyC24 c) { return Component(c, i); }));
    CheckOperation<KyBW8, KyC24>(
        [&](auto* in, auto* out) { return ClrGetComponent(in, out, i, &rotate); },
        PerPixel([&](KyBW8, KyC24 c) { return Component(c, (i + 1) % 3); }));
    CheckOperation<KyC24, KyBW8>([&](auto* in, auto* out) { return ClrSetComponent(in, out, i); },
                                 PerPixel([&](KyC24 old, KyBW8 v) {
                                   return KyC24(i == 0 ? v : old.c0, i == 1 ? v : old.c1,
                                                i == 2 ? v : old.c2);
                                 }));
  }
}

TEST(Color, Refusals) {
  KyImage<KyC24> color(3, 3);
  KyImage<KyBW8> grey(3, 3);
  for (const int component : {-1, 3}) {
    EXPECT_EQ(ClrGetComponent(&color, &grey, component), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
    EXPECT_EQ(ClrSetComponent(&grey, &color, component), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  }
}

TEST(Color, MatrixRoundsAndClamps) {
  KyC24 out;
  KyColorMatrix({0.5f, 0, 0, 0, 3, 0, -1, 0, 0}).Transform({5, 200, 7}, out);
  EXPECT_EQ(out, KyC24(3, 255, 0));
  KyColorMatrix::Luma().Transform({255, 255, 255}, out);
  EXPECT_EQ(out, KyC24(255, 255, 255));
  KyColorMatrix::Luma().Transform({255, 0, 0}, out);
  EXPECT_EQ(out.c1, 76);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float huge = std::numeric_limits<float>::max();
  KyColorMatrix({nan, 0, 1, huge, -huge, 0, huge, huge, huge}).Transform({255, 255, 9}, out);
  EXPECT_EQ(out, KyC24(9, 0, 255));
}

}  // namespace
