// Results that are written past the caches.
#include "foundation/stream.h"

#include <gtest/gtest.h>

#include <string>

#include "ky/operators.h"
#include "tests/support/harness.h"

namespace ky {
namespace {

using test::Canvas;
using test::Picture;
using test::Random;

// Every byte of the rows, at every place in a cache line, and none beside them.
template <class T>
void CheckStreamed() {
  test::ForEachPath([](const std::string&) {
    const StreamKernels& stream = ChooseStreamKernels();
    if (stream.write == nullptr) return;
    Random random(1);
    for (int turn = 0; turn < 200; ++turn) {
      const int width = 1 + static_cast<int>(random() % (turn % 8 == 0 ? 9000 : 200)), height = 3;
      const test::Placement place = {static_cast<int>(random() % 70), 1, 2};
      const Picture<T> picture = test::RandomPicture<T>(width, height, random);
      Canvas<T> in(picture, {}, random), out(width, height, place, random);
      const Rows<const T> source = RowsOf(static_cast<const KyROI<T>*>(in.roi()));
      StreamRows(stream, RowsOf(out.roi()),
                 [&](T* piece, std::size_t n, std::ptrdiff_t y, std::ptrdiff_t x) {
                   std::copy_n(source.Row(y) + x, n, piece);
                 });
      ASSERT_TRUE(Same(picture, out.Get())) << width << " at " << place.left;
      ASSERT_TRUE(out.OnlyChanged(*out.roi()));
    }
  });
}
TEST(Stream, EveryByte) {
  CheckStreamed<KyBW8>();
  CheckStreamed<KyBW16>();
  CheckStreamed<KyC24>();
}

// Only what no cache holds, and never what a call reads, which streaming would not copy first.
TEST(Stream, WhenItPays) {
  const std::int64_t cache = LargestCache();
  if (cache == 0 || ChooseStreamKernels().write == nullptr) GTEST_SKIP() << "nothing streams";
  EXPECT_GE(cache, 1 << 14);
  static KyBW8 byte;  // the pixels are not read
  const auto rows = [](std::int64_t height) { return Rows<KyBW8>{&byte, 4096, 4096, height}; };
  const std::int64_t half = cache / 8192 + 1024;
  const auto apart = [&](const Rows<KyBW8>& r) {
    return Rows<const KyBW8>{r.first + r.pitch * r.height, r.pitch, r.width, r.height};
  };
  EXPECT_NE(StreamFor(rows(half), apart(rows(half))), nullptr);
  EXPECT_EQ(StreamFor(rows(half), Rows<const KyBW8>(rows(half))), nullptr);
  EXPECT_EQ(StreamFor(rows(half), apart(rows(half)), Rows<const KyBW8>(rows(half))), nullptr);
  EXPECT_EQ(StreamFor(rows(cache / 16384), apart(rows(cache / 16384))), nullptr);
}

// A whole call, where caches are small enough for a test.
TEST(Stream, WholeImages) {
  const std::int64_t cache = LargestCache();
  constexpr int kWidth = 8001;
  if (cache == 0 || cache > 1 << 26) GTEST_SKIP() << "no image is large enough";
  const int height = static_cast<int>(cache / kWidth / 2 + 600);
  KyImage<KyBW8> a(kWidth, height), b(kWidth, height), out(kWidth, height);
  const auto each = [&](auto visit) {
    for (int y = 0; y < height; ++y) {
      auto* const p = static_cast<KyBW8*>(a.GetPixelPtr(0, y));
      auto* const q = static_cast<KyBW8*>(b.GetPixelPtr(0, y));
      const auto* const result = static_cast<const KyBW8*>(out.GetPixelPtr(0, y));
      for (int x = 0; x < kWidth; ++x) visit(x, y, p[x], q[x], result[x]);
    }
  };
  each([](int x, int y, KyBW8& p, KyBW8& q, int) {
    p = static_cast<KyBW8>(x * 7 + y);
    q = static_cast<KyBW8>(x + 3 * y);
  });
  const auto holds = [&](auto expected) {
    std::int64_t wrong = 0;
    each([&](int, int, int p, int q, int result) { wrong += result != expected(p, q); });
    return wrong == 0;
  };
  ASSERT_EQ(ImgOper(KY_OPER_XOR, &a, &b, &out), KY_OK);
  EXPECT_TRUE(holds([](int p, int q) { return p ^ q; }));
  ASSERT_EQ(ImgCopy(&a, &out), KY_OK);
  EXPECT_TRUE(holds([](int p, int) { return p; }));
  ASSERT_EQ(ImgOper(KY_OPER_SET_WHERE_ZERO, &b, &b, &out), KY_OK);
  EXPECT_TRUE(holds([](int p, int q) { return q == 0 ? q : p; }));
}

}  // namespace
}  // namespace ky
