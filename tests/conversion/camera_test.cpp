// 4:2:2, mosaics and packed pixels against their definitions.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

#include "ky/conversion.h"
#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

KyBW16 Chroma(KyC24 a, KyC24 b, int red, int green, int blue) {
  const auto mean = [](int x, int y) { return (x + y + 1) / 2; };
  const int sum = red * mean(a.c0, b.c0) + green * mean(a.c1, b.c1) + blue * mean(a.c2, b.c2) + 128;
  return static_cast<KyBW16>(((sum >> 8) + 128) << 8);
}
void PairsOf(const Picture<KyC24>& in, Picture<KyBW16>& out) {
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x) {
      const KyC24 c = in.At(x, y), first = in.At(x & ~1, y), second = in.Nearest(x | 1, y);
      const int luma = ((66 * c.c0 + 129 * c.c1 + 25 * c.c2 + 128) >> 8) + 16;
      const KyBW16 chroma =
          x % 2 == 0 ? Chroma(first, second, -38, -74, 112) : Chroma(first, second, 112, -94, -18);
      out.At(x, y) = static_cast<KyBW16>(luma | chroma);
    }
}
void ColorsOf(const Picture<KyBW16>& in, Picture<KyC24>& out) {
  const auto level = [](int v) { return static_cast<KyBW8>(std::clamp(v >> 8, 0, 255)); };
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x) {
      const int last = x | 1;
      const int cr = last < in.width ? in.At(last, y) >> 8 : x > 0 ? in.At(x - 1, y) >> 8 : 128;
      const int c = (in.At(x, y) & 255) - 16, d = (in.At(x & ~1, y) >> 8) - 128, e = cr - 128;
      out.At(x, y) = KyC24(level(298 * c + 409 * e + 128), level(298 * c - 100 * d - 208 * e + 128),
                           level(298 * c + 516 * d + 128));
    }
}

TEST(Chroma, OnEveryPath) {
  CheckOperation<KyBW16, KyC24>([](auto... roi) { return ImgConvertTo422(roi...); }, PairsOf);
  CheckOperation<KyC24, KyBW16>([](auto... roi) { return ImgConvertFrom422(roi...); }, ColorsOf);
}

TEST(Chroma, Extremes) {
  Picture<KyC24> corners(16, 8);
  Picture<KyBW16> pairs(64, 64), expectedPairs(16, 8);
  constexpr int kLevels[] = {0, 1, 16, 127, 128, 235, 254, 255};
  for (int i = 0; i < 128; ++i)  // pairs of all corners of the cube
    corners.At(i % 16, i / 16) = KyC24(KyBW8(i & 1 ? 255 : 0), KyBW8(i & 2 ? 255 : 0),
                                       KyBW8(i & 4    ? 255
                                             : i & 64 ? 128
                                                      : 0));
  for (int i = 0; i < 4096; ++i)
    pairs.At(i % 64, i / 64) = static_cast<KyBW16>(
        kLevels[i / 2 % 8] | kLevels[i % 2 == 0 ? i / 16 % 8 : i / 128 % 8] << 8);
  Picture<KyC24> expectedColors(64, 64);
  PairsOf(corners, expectedPairs);
  ColorsOf(pairs, expectedColors);
  ForEachPath([&](const std::string&) {
    Random random(1);
    Canvas<KyC24> colorIn(corners, {}, random), colorOut(64, 64, {}, random);
    Canvas<KyBW16> pairsIn(pairs, {}, random), pairsOut(16, 8, {}, random);
    ASSERT_EQ(ImgConvertTo422(colorIn.roi(), pairsOut.roi()), KY_OK);
    ASSERT_EQ(ImgConvertFrom422(pairsIn.roi(), colorOut.roi()), KY_OK);
    EXPECT_TRUE(Same(expectedPairs, pairsOut.Get()));
    EXPECT_TRUE(Same(expectedColors, colorOut.Get()));
  });
}

// The component that pixel (x, y) has: 0 is red.
int ComponentAt(int x, int y, KY_BAYER_ORDER order) {
  constexpr int kMosaics[4][2][2] = {
      {{0, 1}, {1, 2}}, {{1, 0}, {2, 1}}, {{1, 2}, {0, 1}}, {{2, 1}, {1, 0}}};
  return kMosaics[order][y & 1][x & 1];
}

TEST(Bayer, EveryOrderOnEveryPath) {
  std::vector<Size> sizes = AwkwardSizes();
  std::erase_if(sizes, [](Size size) { return size.width < 2 || size.height < 2; });
  for (int i = 0; i < 4; ++i) {
    const auto order = static_cast<KY_BAYER_ORDER>(i);
    SCOPED_TRACE(i);
    const auto model = [&](const Picture<KyBW8>& in, Picture<KyC24>& out) {
      const auto mirrored = [](int at, int n) { return at < 0 ? 1 : at == n ? n - 2 : at; };
      for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x) {
          KyBW8 levels[3];
          for (int component = 0; component < 3; ++component) {
            // The nearest pixels of the component: the pixel itself, those at its sides, or those
            // at its corners.
            int sums[3] = {}, counts[3] = {};
            for (int dy = -1; dy <= 1; ++dy)
              for (int dx = -1; dx <= 1; ++dx) {
                const int px = mirrored(x + dx, in.width), py = mirrored(y + dy, in.height);
                if (ComponentAt(px, py, order) != component) continue;
                const int distance = std::abs(dx) + std::abs(dy);
                sums[distance] += in.At(px, py);
                ++counts[distance];
              }
            const int at = counts[0] != 0 ? 0 : counts[1] != 0 ? 1 : 2;
            levels[component] = static_cast<KyBW8>((sums[at] + counts[at] / 2) / counts[at]);
          }
          out.At(x, y) = KyC24(levels[0], levels[1], levels[2]);
        }
    };
    CheckOperation<KyC24, KyBW8>([=](auto... roi) { return ImgConvertBayer(roi..., order); }, model,
                                 sizes);
  }
}

TEST(Bayer, Refusals) {
  const struct {
    int width, height, order;
    KY_ERRORS code;
  } cases[] = {
      {1, 2, 0, KY_ERROR_SIZE_MISMATCH},          {2, 1, 9, KY_ERROR_SIZE_MISMATCH},
      {0, 0, 0, KY_ERROR_SIZE_MISMATCH},          {2, 2, 4, KY_ERROR_UNSUPPORTED_OPERATION},
      {2, 2, -1, KY_ERROR_UNSUPPORTED_OPERATION}, {2, 2, 3, KY_OK}};
  for (const auto& c : cases) {
    KyImage<KyBW8> mosaic(4, 4);
    KyImage<KyC24> colors(4, 4);
    const KyROI<KyBW8> in(&mosaic, 1, 1, c.width, c.height);
    KyROI<KyC24> out(&colors, 0, 1, c.width, c.height);
    EXPECT_EQ(ImgConvertBayer(&in, &out, static_cast<KY_BAYER_ORDER>(c.order)), c.code);
  }
}

// Packs the levels of one row as the formats are defined.
std::vector<KyBW8> Packed(const std::vector<int>& levels, KY_PACKED_FORMAT format) {
  const int bits = format == KY_PACKED_MONO10P || format == KY_PACKED_MONO10_GIGE ? 10 : 12;
  const bool isStream = format == KY_PACKED_MONO10P || format == KY_PACKED_MONO12P;
  const auto n = static_cast<int>(levels.size());
  std::vector<KyBW8> row(isStream ? (n * bits + 7) / 8 : (n + 1) / 2 * 3);
  for (int i = 0; i < n; ++i) {
    if (isStream) {
      for (int bit = 0; bit < bits; ++bit)
        row[(i * bits + bit) / 8] |=
            static_cast<KyBW8>((levels[i] >> bit & 1) << (i * bits + bit) % 8);
    } else {
      row[i / 2 * 3 + i % 2 * 2] = static_cast<KyBW8>(levels[i] >> (bits - 8));
      row[i / 2 * 3 + 1] |=
          static_cast<KyBW8>((levels[i] & ((1 << (bits - 8)) - 1)) << 4 * (i % 2));
    }
  }
  return row;
}

// Two pages of which the second may not be touched: rows end where it begins.
class Guarded {
 public:
  Guarded() : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    memory_ = static_cast<KyBW8*>(
        mmap(nullptr, 5 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(memory_ + 4 * page_, page_, PROT_NONE);
  }
  ~Guarded() { munmap(memory_, 5 * page_); }
  KyBW8* End() const { return memory_ + 4 * page_; }

 private:
  std::size_t page_;
  KyBW8* memory_;
};

template <class T>
void CheckUnpack() {
  const Guarded guarded;
  Random random(3);
  for (int i = 0; i < 4; ++i) {
    const auto format = static_cast<KY_PACKED_FORMAT>(i);
    const int bits = i % 2 == 0 ? 10 : 12;
    for (int width = 0; width <= 200; ++width) {
      SCOPED_TRACE("format " + std::to_string(i) + ", " + std::to_string(width) + " pixels");
      Picture<T> expected(width, 3);
      std::vector<int> levels(static_cast<std::size_t>(width));
      const int gap = width % 3, bytes = static_cast<int>(Packed(levels, format).size());
      KyBW8* const first = guarded.End() - 3 * bytes - 2 * gap;
      for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < width; ++x) {
          levels[x] = static_cast<int>(random() % (1u << bits));
          expected.At(x, y) = static_cast<T>(sizeof(T) == 2 ? levels[x] : levels[x] >> (bits - 8));
        }
        const std::vector<KyBW8> row = Packed(levels, format);
        std::copy(row.begin(), row.end(), first + y * (bytes + gap));
        if (gap != 0 && y < 2) first[y * (bytes + gap) + bytes] = 0xA5;
      }
      Canvas<T> out(width, 3, {3, 1, width % 2}, random);
      ASSERT_EQ(ImgUnpack(first, bytes + gap, format, out.roi()), KY_OK);
      EXPECT_TRUE(Same(expected, out.Get()));
      EXPECT_TRUE(out.OnlyChanged(*out.roi()));
      ASSERT_EQ(ImgUnpack(first, bytes - 1, format, out.roi()), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
    }
  }
}
TEST(Unpack, EveryFormatOnEveryPath) {
  ForEachPath([](const std::string&) {
    CheckUnpack<KyBW16>();
    CheckUnpack<KyBW8>();
  });
}

// Packed pixels that lie in the destination.
TEST(Unpack, InsideTheDestination) {
  Random random(4);
  std::vector<int> levels(100);
  for (int& level : levels) level = static_cast<int>(random() % 4096);
  const std::vector<KyBW8> row = Packed(levels, KY_PACKED_MONO12P);
  ForEachPath([&](const std::string&) {
    for (const std::size_t at : {0u, 20u, 50u}) {
      KyImage<KyBW16> out(100, 1);
      auto* const inside = static_cast<KyBW8*>(out.GetPixelPtr(0, 0)) + at;
      std::memcpy(inside, row.data(), row.size());
      ASSERT_EQ(ImgUnpack(inside, 150, KY_PACKED_MONO12P, &out), KY_OK);
      for (int x = 0; x < 100; ++x) ASSERT_EQ(out.GetPixel(x, 0), levels[x]) << x;
    }
  });
}

TEST(Unpack, Refusals) {
  KyImage<KyBW8> out(2, 1), none;
  const KyBW8 bytes[3] = {};
  const auto unpack = [&](const void* pixels, int format, KyROI<KyBW8>* destination) {
    return ImgUnpack(pixels, 3, static_cast<KY_PACKED_FORMAT>(format), destination);
  };
  EXPECT_EQ(unpack(bytes, 1, &out), KY_OK);
  EXPECT_EQ(unpack(nullptr, 9, &out), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(unpack(bytes, 9, nullptr), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(unpack(bytes, 4, &out), KY_ERROR_UNSUPPORTED_OPERATION);
  EXPECT_EQ(unpack(bytes, -1, &out), KY_ERROR_UNSUPPORTED_OPERATION);
  EXPECT_EQ(ImgUnpack(bytes, -3, KY_PACKED_MONO12P, &out), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_STREQ(KyGetTrace(0), "ImgUnpack");
}

}  // namespace
