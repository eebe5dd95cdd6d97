// The walk over windows, with a kernel that weighs every pixel of the window differently.
#include "foundation/window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "foundation/frame.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

int Weight(int right, int down) { return 3 + 7 * right + 31 * down; }

using ky::Border;

// Which of n pixels stands at i; -1 for the constant.
int PlaceOf(const Border& border, int i, int n) {
  if (border.kind == Border::kConstant) return i < 0 || i >= n ? -1 : i;
  if (border.kind == Border::kNearest || n == 1) return std::clamp(i, 0, n - 1);
  while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
  return i;
}

struct Case {
  int radius, step;
  Border border;
  std::size_t lanes;
  int borderScale = 1;
  std::ptrdiff_t shortestWithEnds = ky::kNoRowsWithEnds;
};

// The definition. Columns are elements; the neighbours of a pixel's elements are those of the
// pixels beside it.
KyBW8 Model(const Picture<KyBW8>& in, int x, int y, const Case& c, int scale) {
  int sum = 0;
  for (int down = -c.radius; down <= c.radius; ++down)
    for (int right = -c.radius; right <= c.radius; ++right) {
      const int pixel = PlaceOf(c.border, x / c.step + right, in.width / c.step);
      const int row = PlaceOf(c.border, y + down, in.height);
      const int level =
          pixel < 0 || row < 0 ? c.border.value : in.At(pixel * c.step + x % c.step, row);
      sum += Weight(right, down) * level;
    }
  return static_cast<KyBW8>(scale * sum);
}

auto Kernel(const Case& c, int scale) {
  const auto run = [=, radius = c.radius, step = c.step](
                       ky::Rows<KyBW8> out, const KyBW8* const* rows, const ky::Layout& layout) {
    const std::ptrdiff_t width = out.width;
    if (layout.border == nullptr)
      EXPECT_EQ(width % static_cast<std::ptrdiff_t>(c.lanes), 0);
    else
      EXPECT_GE(width, c.shortestWithEnds);
    // Places outside stay in their column of components.
    const auto at = [&](const KyBW8* row, std::ptrdiff_t x) {
      if (layout.border == nullptr || (x >= 0 && x < width)) return row[x];
      const std::ptrdiff_t component = (x + radius * step) % step, inset = layout.border->inset;
      if (layout.border->outside != nullptr) return layout.border->outside[component];
      return row[component + (x < 0 ? inset : width - step - inset)];
    };
    for (std::ptrdiff_t y = 0; y < out.height; ++y)
      for (std::ptrdiff_t x = 0; x < width; ++x) {
        int sum = 0;
        for (int down = -radius; down <= radius; ++down)
          for (int right = -radius; right <= radius; ++right)
            sum += Weight(right, down) * at(rows[y + radius + down], x + step * right);
        out.Row(y)[x] = static_cast<KyBW8>(scale * sum);
      }
  };
  return ky::WindowKernel<decltype(run)>{.radius = c.radius,
                                         .lanes = c.lanes,
                                         .run = run,
                                         .step = c.step,
                                         .shortestWithEnds = c.shortestWithEnds};
}

TEST(Window, RadiiStepsBordersAndVectorLengths) {
  const Case kCases[] = {
      {1, 1, Border::Nearest(), 1},          {1, 1, Border::Nearest(), 16, 5},
      {1, 1, Border::Constant(9), 64},       {1, 3, Border::Nearest(), 16},
      {1, 3, Border::Constant(7), 1, 5},     {1, 3, Border::Mirror(), 64},
      {2, 1, Border::Constant(0), 16},       {2, 1, Border::Mirror(), 1, 5},
      {2, 3, Border::Nearest(), 64, 5},      {3, 1, Border::Constant(9), 64, 5},
      {3, 1, Border::Nearest(), 16},         {3, 3, Border::Mirror(), 16},
      {9, 1, Border::Mirror(), 16},          {6, 3, Border::Constant(3), 1},
      {0, 1, Border::Nearest(), 16},         {0, 3, Border::Constant(3), 64},
      {1, 1, Border::Mirror(), 64, 1, 1},    {1, 3, Border::Constant(9), 16, 1, 48},
      {2, 3, Border::Nearest(), 64, 1, 1},   {2, 1, Border::Mirror(), 16, 1, 1},
      {1, 1, Border::Constant(7), 64, 5, 1}, {3, 1, Border::Nearest(), 16, 1, 33},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(testing::Message() << "radius " << c.radius << ", step " << c.step << ", border "
                                    << int{c.border.kind} << ", lanes " << c.lanes
                                    << ", scale at the border " << c.borderScale);
    const auto call = [&](const KyROI<KyBW8>* in, KyROI<KyBW8>* out) {
      return ky::Call("Window", [&] {
        ky::Rows<const KyBW8> from;
        ky::Rows<KyBW8> to;
        if (const KY_ERRORS error = ky::OpenAll(in, from, out, to)) return error;
        if (c.borderScale == 1) return ky::FilterWindows(to, from, c.border, Kernel(c, 1));
        return ky::FilterWindows(to, from, c.border, Kernel(c, 1), Kernel(c, c.borderScale));
      });
    };
    const auto model = [&](const Picture<KyBW8>& in, Picture<KyBW8>& out) {
      const int reach = c.radius * c.step;
      for (int y = 0; y < in.height; ++y)
        for (int x = 0; x < in.width; ++x) {
          const bool inside =
              x >= reach && y >= c.radius && x < in.width - reach && y < in.height - c.radius;
          out.At(x, y) = Model(in, x, y, c, inside ? 1 : c.borderScale);
        }
    };
    std::vector<Size> sizes;
    for (const Size& size : std::vector<Size>{{1, 1},
                                              {2, 2},
                                              {3, 3},
                                              {5, 9},
                                              {35, 19},
                                              {33, 5},
                                              {77, 8},
                                              {140, 27},
                                              {141, 1},
                                              {209, 53},
                                              {0, 4}})
      sizes.push_back({c.step * (size.width / c.step), size.height});
    CheckOperation<KyBW8, KyBW8>(call, model, sizes);
  }
}

// Windows of many rows whose pitch fights the cache are made from copies.
TEST(Window, PitchesOfPowersOfTwo) {
  for (const int pitch : {1024, 4096}) {
    std::vector<KyBW8> memory(static_cast<std::size_t>(2 * 20 * pitch));
    Random random(static_cast<unsigned>(pitch));
    for (KyBW8& level : memory) level = static_cast<KyBW8>(random());
    const ky::Rows<const KyBW8> in = {memory.data(), pitch, 1000, 20};
    const ky::Rows<KyBW8> out = {memory.data() + 20 * pitch, pitch, 1000, 20};
    const Case c = {3, 1, Border::Nearest(), 16};
    ASSERT_EQ(ky::FilterWindows(out, in, c.border, Kernel(c, 1)), KY_OK);
    Picture<KyBW8> picture(1000, 20);
    for (int y = 0; y < 20; ++y)
      for (int x = 0; x < 1000; ++x) picture.At(x, y) = in.Row(y)[x];
    for (int y = 0; y < 20; ++y)
      for (int x = 0; x < 1000; ++x) ASSERT_EQ(out.Row(y)[x], Model(picture, x, y, c, 1));
  }
}

}  // namespace
