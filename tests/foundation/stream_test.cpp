// Results that are written past the caches.
#include "foundation/stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "foundation/kernels/operators_rows.h"
#include "ky/operators.h"
#include "ky/threshold.h"
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

// Kernels for whole lines give what the usual ones do, wherever their sources stand.
TEST(Stream, Lines) {
  test::ForEachPath([](const std::string&) {
    const OperatorKernels& kernels = ChooseOperatorKernels();
    constexpr std::size_t kBytes = 640;
    Random random(1);
    std::vector<KyBW8> in(2 * kBytes + 7);
    for (KyBW8& level : in) level = static_cast<KyBW8>(random() >> (random() % 8));
    const KyBW8 *const a = in.data() + 3, *const b = in.data() + kBytes + 4;
    for (int operation = 0; operation <= KY_OPER_OVERLAY; ++operation) {
      if (kernels.stream[operation] == nullptr) continue;
      alignas(64) KyBW8 usual[kBytes], lines[kBytes];
      MapRow(kernels.combine[operation], usual, kBytes, a, b);
      kernels.stream[operation](lines, kBytes, a, b);
      ChooseStreamKernels().finish();
      ASSERT_EQ(std::memcmp(usual, lines, kBytes), 0) << operation;
    }
  });
}

// A row of more than a second cache holds gives what its pieces give.
TEST(Stream, LongRows) {
  constexpr std::size_t kBytes = 700013;
  Random random(1);
  std::vector<KyBW8> in(2 * kBytes + 7), whole(kBytes), pieces(kBytes);
  for (KyBW8& level : in) level = static_cast<KyBW8>(random() >> (random() % 8));
  const KyBW8 *const a = in.data() + 3, *const b = in.data() + kBytes + 4;
  test::ForEachPath([&](const std::string&) {
    const OperatorKernels& kernels = ChooseOperatorKernels();
    for (int operation = 0; operation <= KY_OPER_OVERLAY; ++operation) {
      if (kernels.stream[operation] == nullptr) continue;
      MapRow(kernels.combine[operation], whole.data(), kBytes, a, b);
      for (std::size_t i = 0; i < kBytes; i += 1000)
        MapRow(kernels.combine[operation], pieces.data() + i,
               std::min<std::size_t>(1000, kBytes - i), a + i, b + i);
      ASSERT_EQ(whole, pieces) << operation;
    }
  });
}

// Every byte is taken once, in order, and most as whole lines of whole colours.
TEST(Stream, LinesOfRows) {
  alignas(64) static KyBW8 memory[1 << 15];
  for (const std::ptrdiff_t left : {0, 1, 21, 63})
    for (const std::ptrdiff_t width : {0, 1, 63, 64, 191, 192, 400, 7000}) {
      const Rows<KyBW8> rows{memory + left, 7001, width, 2};
      std::ptrdiff_t taken = 0, other = 0;
      ForLines(rows, [&](std::size_t n, std::ptrdiff_t y, std::ptrdiff_t x, bool whole) {
        EXPECT_EQ(y * width + x, taken);
        EXPECT_LE(n, std::size_t{kPiece});
        const auto place = reinterpret_cast<std::uintptr_t>(rows.Row(y) + x);
        if (whole) {
          EXPECT_TRUE(place % 64 == 0 && n % 192 == 0 && x % 3 == 0);
        } else {
          EXPECT_EQ(x % 3, 0);
          other += static_cast<std::ptrdiff_t>(n);
        }
        taken += static_cast<std::ptrdiff_t>(n);
      });
      EXPECT_EQ(taken, 2 * width);
      EXPECT_LT(other, 2 * 384) << left << " " << width;
    }
}

// Only what no cache holds, and never what a call reads, which streaming would not copy first.
TEST(Stream, WhenItPays) {
  const std::int64_t cache = SizesOfCaches().largest;
  if (cache == 0 || ChooseStreamKernels().write == nullptr) GTEST_SKIP() << "nothing streams";
  EXPECT_GE(cache, 1 << 14);
  static KyBW8 byte;  // the pixels are not read
  const auto rows = [](std::int64_t height) { return Rows<KyBW8>{&byte, 4096, 4096, height}; };
  const std::int64_t half = cache / 8192 + 1024;
  const auto apart = [&](const Rows<KyBW8>& r) {
    return FromRows<KyBW8>(Rows<KyBW8>{r.first + r.pitch * r.height, r.pitch, r.width, r.height});
  };
  EXPECT_NE(StreamFor(rows(half), apart(rows(half))), nullptr);
  EXPECT_EQ(StreamFor(rows(half), FromRows<KyBW8>(rows(half))), nullptr);
  EXPECT_EQ(StreamFor(rows(half), apart(rows(half)), FromRows<KyBW8>(rows(half))), nullptr);
  EXPECT_EQ(StreamFor(rows(cache / 16384), apart(rows(cache / 16384))), nullptr);
}

// A whole call, where caches are small enough for a test.
TEST(Stream, WholeImages) {
  const std::int64_t cache = SizesOfCaches().largest;
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
  ASSERT_EQ(ImgOper(KY_OPER_SUBTRACT, KyBW8(200), &b, &out), KY_OK);
  EXPECT_TRUE(holds([](int, int q) { return std::max(200 - q, 0); }));
  ASSERT_EQ(ImgCopy(&a, &out), KY_OK);
  EXPECT_TRUE(holds([](int p, int) { return p; }));
  ASSERT_EQ(ImgOper(KY_OPER_SET_WHERE_ZERO, &b, &b, &out), KY_OK);
  EXPECT_TRUE(holds([](int p, int q) { return q == 0 ? q : p; }));
  ASSERT_EQ(ImgOper(KY_OPER_INVERT, &a, &out), KY_OK);
  EXPECT_TRUE(holds([](int p, int) { return 255 - p; }));
  ASSERT_EQ(ImgThreshold(&a, &out, 90, KyBW8{3}, KyBW8{250}), KY_OK);
  EXPECT_TRUE(holds([](int p, int) { return p < 90 ? 3 : 250; }));

  const int colors = kWidth / 3;
  KyImage<KyC24> in(colors, height), sum(colors, height);
  const auto row = [](auto& image, int y) { return static_cast<KyC24*>(image.GetPixelPtr(0, y)); };
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < colors; ++x) row(in, y)[x] = {KyBW8(x), KyBW8(x >> 8), KyBW8(y)};
  ASSERT_EQ(ImgOper(KY_OPER_XOR, &in, KyC24{1, 30, 200}, &sum), KY_OK);
  std::int64_t wrong = 0;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < colors; ++x) {
      const KyC24 from = row(in, y)[x], to = row(sum, y)[x];
      wrong += to.c0 != (from.c0 ^ 1) || to.c1 != (from.c1 ^ 30) || to.c2 != (from.c2 ^ 200);
    }
  EXPECT_EQ(wrong, 0);

  KyImage<KyC24> wide(2 * colors, height);
  const auto expectColors = [&](auto colorOf) {
    std::int64_t others = 0;
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < wide.GetWidth(); ++x) {
        const KyC24 color = row(wide, y)[x], expected = colorOf(x, y);
        others += std::memcmp(&color, &expected, sizeof color) != 0;
      }
    EXPECT_EQ(others, 0);
  };
  const KyROI<KyBW8> grey(&a, 1, 0, wide.GetWidth(), height);
  ASSERT_EQ(ImgOper(KY_OPER_INVERT, &grey, &wide), KY_OK);
  expectColors([&](int x, int y) {
    const auto level = static_cast<KyBW8>(255 - static_cast<KyBW8>((x + 1) * 7 + y));
    return KyC24{level, level, level};
  });
  ASSERT_EQ(ImgOper(KY_OPER_COPY, KyC24{1, 2, 3}, &wide), KY_OK);
  expectColors([](int, int) { return KyC24{1, 2, 3}; });
}

}  // namespace
}  // namespace ky
