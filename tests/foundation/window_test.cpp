// The walk over windows, with a kernel that weighs every pixel of the window differently.
#include "foundation/window.h"

#include <gtest/gtest.h>

#include "foundation/frame.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

int Weight(int right, int down) { return 3 + 7 * right + 31 * down; }

// The definition: the nearest pixel or a constant outside.
KyBW8 Model(const Picture<KyBW8>& in, int x, int y, int radius, ky::Border border, int scale) {
  int sum = 0;
  for (int down = -radius; down <= radius; ++down)
    for (int right = -radius; right <= radius; ++right) {
      const bool outside = !in.Has(x + right, y + down);
      const int level = outside && border.kind == ky::Border::kConstant
                            ? border.value
                            : in.Nearest(x + right, y + down);
      sum += Weight(right, down) * level;
    }
  return static_cast<KyBW8>(scale * sum);
}

auto Kernel(int radius, std::size_t lanes, int scale) {
  const auto run = [=](ky::Rows<KyBW8> out, const KyBW8* const* rows) {
    for (std::ptrdiff_t y = 0; y < out.height; ++y)
      for (std::ptrdiff_t x = 0; x < out.width; ++x) {
        int sum = 0;
        for (int down = -radius; down <= radius; ++down)
          for (int right = -radius; right <= radius; ++right)
            sum += Weight(right, down) * rows[y + radius + down][x + right];
        out.Row(y)[x] = static_cast<KyBW8>(scale * sum);
      }
  };
  return ky::WindowKernel<decltype(run)>{radius, lanes, run};
}

TEST(Window, EveryRadiusBorderAndVectorLength) {
  for (int radius = 1; radius <= 3; ++radius)
    for (const ky::Border border : {ky::Border::Nearest(), ky::Border::Constant(9)})
      for (const std::size_t lanes : {1u, 16u, 64u})
        for (const int frameScale : {1, 5}) {
          SCOPED_TRACE(testing::Message()
                       << "radius " << radius << ", lanes " << lanes
                       << (border.kind == ky::Border::kNearest ? ", repeated" : ", constant")
                       << ", frame " << frameScale);
          const auto call = [&](const KyROI<KyBW8>* in, KyROI<KyBW8>* out) {
            return ky::Call("Window", [&] {
              if (const KY_ERRORS error = ky::Ready(in, out)) return error;
              if (frameScale == 1)
                return ky::FilterWindows(ky::RowsOf(out), ky::RowsOf(in), border,
                                         Kernel(radius, lanes, 1));
              return ky::FilterWindows(ky::RowsOf(out), ky::RowsOf(in), border,
                                       Kernel(radius, lanes, 1), Kernel(radius, lanes, frameScale));
            });
          };
          const auto model = [&](const Picture<KyBW8>& in, Picture<KyBW8>& out) {
            for (int y = 0; y < in.height; ++y)
              for (int x = 0; x < in.width; ++x) {
                const bool inside =
                    x >= radius && y >= radius && x < in.width - radius && y < in.height - radius;
                out.At(x, y) = Model(in, x, y, radius, border, inside ? 1 : frameScale);
              }
          };
          CheckOperation<KyBW8, KyBW8>(call, model,
                                       {{1, 1},
                                        {2, 2},
                                        {3, 3},
                                        {5, 9},
                                        {31, 4},
                                        {35, 19},
                                        {33, 5},
                                        {77, 8},
                                        {140, 27},
                                        {141, 1},
                                        {142, 2},
                                        {171, 6},
                                        {0, 4},
                                        {4, 0}});
        }
}

}  // namespace
