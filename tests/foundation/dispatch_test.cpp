// The choice of instruction set, shown on a small row file: the path that a test asks for is the
// one that runs, and the shared vector loops work on all of them.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tests/foundation/dispatch_test.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/dispatch.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "foundation/spans-inl.h"
#include "foundation/window-inl.h"
#include "foundation/window.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

struct Largest : WindowOp<1> {
  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D, const At& at) const {
    auto largest = at(0, 0);
    for (int down = -1; down <= 1; ++down)
      for (int right = -1; right <= 1; ++right) largest = hn::Max(largest, at(right, down));
    return largest;
  }
};

struct Smooth : SymmetricRow<2, 1> {
  HWY_INLINE V16 operator()(D16, V16 a, V16 b, V16 c) const {
    return hn::ShiftRight<4>(hn::Add(hn::Add(a, c), hn::Add(b, b)));
  }
};
// A row of its own takes the place of the inherited one.
struct Corners : Smooth {
  HWY_INLINE V16 Row(D16, const V16* at) const { return hn::Add(at[-1], at[1]); }
  HWY_INLINE V16 operator()(D16, V16 a, V16, V16 c) const {
    return hn::ShiftRight<2>(hn::Add(a, c));
  }
};
struct EndsOf5 : WindowOp<2> {
  HWY_INLINE V16 Row(D16, const V16* at) const { return hn::Add(at[-2], at[2]); }
  HWY_INLINE V16 operator()(D16, V16 a, V16, V16, V16, V16 e) const {
    return hn::ShiftRight<2>(hn::Add(a, e));
  }
};

template <class Lane_>
struct Unchanged {
  using Lane = Lane_;
  template <class D, class V>
  HWY_INLINE V operator()(D, V v) const {
    return v;
  }
};
// True when lanes of Wide are stored as the nearest numbers that elements of Narrow can hold.
template <class Wide, class Narrow>
bool Limits() {
  constexpr int64_t kValues[] = {0,      1,      127,        128,        255,        256,
                                 0x7FFF, 0x8000, 0xFFFF,     0x10000,    0x7FFFFFFF, 0x80000000,
                                 -1,     -128,   0xFFFFFFFE, 0xFFFFFFFF, -0x8000,    -0x80000000};
  constexpr size_t kCount = 67;  // whole vectors and a tail
  Wide from[kCount];
  Narrow to[kCount];
  for (size_t i = 0; i < kCount; ++i) from[i] = static_cast<Wide>(kValues[i % 18]);
  MapSpan(Unchanged<Wide>(), to, kCount, from);
  for (size_t i = 0; i < kCount; ++i) {
    using Limit = std::numeric_limits<Narrow>;
    if (to[i] != std::clamp<int64_t>(from[i], Limit::min(), Limit::max())) return false;
  }
  return true;
}

}  // namespace

int64_t CompiledTarget() { return HWY_TARGET; }
WindowKernels WindowsOf(int i) {
  const WindowKernels kKernels[] = {MappedKernels<Largest>(), RolledKernels<Smooth>(),
                                    RolledKernels<Corners>(), RolledKernels<EndsOf5>()};
  return kKernels[i];
}
bool StoresLimit() {
  return Limits<uint16_t, uint8_t>() && Limits<int16_t, uint8_t>() && Limits<uint32_t, uint8_t>() &&
         Limits<int32_t, uint8_t>() && Limits<uint32_t, uint16_t>() &&
         Limits<int32_t, uint16_t>() && Limits<int32_t, int16_t>();
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "foundation/frame.h"
#include "tests/support/harness.h"

namespace ky {
namespace {

HWY_EXPORT(CompiledTarget);
HWY_EXPORT(StoresLimit);
HWY_EXPORT(WindowsOf);

TEST(Dispatch, NarrowStoresLimit) {
  test::ForEachPath([](const std::string&) { EXPECT_TRUE(KY_DISPATCH(StoresLimit)()); });
}

TEST(Dispatch, EveryPathIsTheOneAskedFor) {
  std::string paths;
  test::ForEachPath([&](const std::string& path) {
    paths += path + " ";
    EXPECT_EQ(KyGetPath(), path);
    const int64_t target = KY_DISPATCH(CompiledTarget)();
    if (path == "plain")
      EXPECT_NE(target & (HWY_SCALAR | HWY_EMU128), 0);
    else if (path == "avx512")
      EXPECT_NE(target & (HWY_AVX3 | HWY_AVX3_DL), 0);
    else
      EXPECT_STRCASEEQ(path.c_str(), hwy::TargetName(target));
  });
  RecordProperty("paths", paths);
  EXPECT_EQ(paths.find("plain "), 0u);
  const bool isLimited =
      std::getenv("KY_PATH") != nullptr || std::getenv("KY_TEST_PATH") != nullptr;
  EXPECT_TRUE(isLimited || paths.size() > 6 || KyGetMMX() == 0) << paths;
}

// Grey rows and rows of the components of colours, by the same formulas.
TEST(Dispatch, WindowsOnEveryPath) {
  for (int i = 0; i < 8; ++i) {
    SCOPED_TRACE(i);
    const int step = i % 2 == 0 ? 1 : 3;
    const auto call = [&](const KyROI<KyBW8>* in, KyROI<KyBW8>* out) {
      return Call("Window", [&] {
        Rows<const KyBW8> from;
        Rows<KyBW8> to;
        if (const KY_ERRORS error = OpenAll(in, from, out, to)) return error;
        const WindowKernels both = KY_DISPATCH(WindowsOf)(i / 2);
        return FilterWindows(to, from, Border::Nearest(), step == 1 ? both.grey : both.color);
      });
    };
    const auto model = [&](const test::Picture<KyBW8>& in, test::Picture<KyBW8>& out) {
      for (int y = 0; y < in.height; ++y)
        for (int x = 0; x < in.width; ++x) {
          const auto at = [&](int right, int down) {
            const int pixel = std::clamp(x / step + right, 0, in.width / step - 1);
            return int{in.At(pixel * step + x % step, std::clamp(y + down, 0, in.height - 1))};
          };
          int largest = 0, smooth = 0;
          for (int down = -1; down <= 1; ++down)
            for (int right = -1; right <= 1; ++right) {
              largest = std::max(largest, at(right, down));
              smooth += (2 - std::abs(down)) * (2 - std::abs(right)) * at(right, down);
            }
          const auto corners = [&](int r) {
            return (at(-r, -r) + at(r, -r) + at(-r, r) + at(r, r)) / 4;
          };
          const int results[] = {largest, smooth >> 4, corners(1), corners(2)};
          out.At(x, y) = static_cast<KyBW8>(results[i / 2]);
        }
    };
    std::vector<test::Size> sizes = {{3, 1}, {9, 5}, {66, 8}, {129, 14}, {258, 31}};
    test::CheckOperation<KyBW8, KyBW8>(call, model, sizes);
  }
}

}  // namespace
}  // namespace ky
#endif
