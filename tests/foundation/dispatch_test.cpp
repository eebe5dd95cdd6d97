// The choice of instruction set, shown on a small row file: the path that a test asks for is the
// one that runs, and the shared vector loops work on all of them.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tests/foundation/dispatch_test.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/dispatch.h"

#include "foundation/window-inl.h"
#include "foundation/window.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

struct Largest {
  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D, const At& at) const {
    auto largest = at(0, 0);
    for (int down = -1; down <= 1; ++down)
      for (int right = -1; right <= 1; ++right) largest = hn::Max(largest, at(right, down));
    return largest;
  }
};

}  // namespace

int64_t CompiledTarget() { return HWY_TARGET; }
WindowKernel<WindowRun> LargestOfWindow() { return MappedWindows<1, Largest>(); }

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <gtest/gtest.h>

#include "foundation/frame.h"
#include "tests/support/harness.h"

namespace ky {
namespace {

HWY_EXPORT(CompiledTarget);
HWY_EXPORT(LargestOfWindow);

TEST(Dispatch, EveryPathIsTheOneAskedFor) {
  int paths = 0;
  test::ForEachPath([&](const std::string& path) {
    ++paths;
    const int64_t target = KY_DISPATCH(CompiledTarget)();
    if (path == "plain")
      EXPECT_NE(target & (HWY_SCALAR | HWY_EMU128), 0);
    else
      EXPECT_STRCASEEQ(path.c_str(), hwy::TargetName(target));
  });
  EXPECT_GE(paths, 1);
}

TEST(Dispatch, MapWindowsOnEveryPath) {
  const auto call = [](const KyROI<KyBW8>* in, KyROI<KyBW8>* out) {
    return Call("Largest", [&] {
      if (const KY_ERRORS error = Ready(in, out)) return error;
      return FilterWindows(RowsOf(out), RowsOf(in), Border::Repeat(),
                           KY_DISPATCH(LargestOfWindow)());
    });
  };
  const auto model = [](const test::Picture<KyBW8>& in, test::Picture<KyBW8>& out) {
    for (int y = 0; y < in.height; ++y)
      for (int x = 0; x < in.width; ++x) {
        out.At(x, y) = 0;
        for (int i = 0; i < 9; ++i)
          out.At(x, y) = std::max(out.At(x, y), in.Nearest(x + i % 3 - 1, y + i / 3 - 1));
      }
  };
  test::CheckOperation<KyBW8, KyBW8>(call, model);
}

}  // namespace
}  // namespace ky
#endif
