// Histograms, equalisation and projections against their definitions.
#include "ky/histogram.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/support/reading.h"

namespace {

using namespace ky::test;  // NOLINT
using Numbers = std::vector<std::uint32_t>;

template <class Vector>
Numbers Values(const Vector& vector) {
  return Numbers(vector.begin(), vector.end());
}
Numbers Values(const KyVector& vector) {
  const auto* first = static_cast<const std::uint32_t*>(vector.GetDataPtr());
  return Numbers(first, first + vector.GetNbGroup());
}

// Gives what a call leaves in a vector, and fails the test if it fails.
template <class Vector, class Call>
auto Into(Call call) {
  return [call](const auto* roi) {
    Vector vector;
    EXPECT_EQ(call(roi, &vector), KY_OK);
    return Values(vector);
  };
}

Numbers CountLevels(const Picture<KyBW8>& picture) {
  Numbers counts(256);
  for (const KyBW8 p : picture.pixels) ++counts[p];
  return counts;
}

TEST(Histogram, Of8BitPixels) {
  CheckReading<KyBW8>(
      Into<KyBW8HistogramVector>([](auto* roi, auto* h) { return ImgHistogram(roi, h); }),
      CountLevels);
  CheckReading<KyBW8>(Into<KyVector>([](auto* roi, auto* h) {
                        h->SetType(2, 256, 0);
                        return ImgHistogram(roi, h);
                      }),
                      CountLevels);
}

// Large pictures are counted in pairs of pixels until they turn out to be noise, and not at all
// where the last eight pixels repeat.
TEST(Histogram, OfLargePictures) {
  constexpr int kWidth = 717, kHeight = 600;
  Random random(4);
  const auto level = [&](unsigned below) { return static_cast<KyBW8>(random() % below); };
  const struct {
    const char* name;
    std::function<KyBW8(int x, int y)> at;
  } pictures[] = {
      {"all alike", [](int, int) { return KyBW8{255}; }},
      {"flat, with periods, and ragged",
       [&](int x, int y) { return static_cast<KyBW8>(y % 90 < 30 ? x / 200 : x & y / 90); }},
      {"mostly one level", [&](int, int) { return KyBW8(level(24) == 0); }},
      {"a ramp with some noise", [&](int x, int) { return static_cast<KyBW8>(x / 4 + level(40)); }},
      {"noise", [&](int, int) { return level(256); }},
      {"noise below and above a flat part",
       [&](int, int y) { return y / 100 % 3 == 1 ? KyBW8{7} : level(256); }},
  };
  for (const auto& [name, at] : pictures) {
    KyImage<KyBW8> image(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) image.SetPixel(at(x, y), x, y);
    for (const int width : {kWidth, kWidth - 13, 300}) {
      SCOPED_TRACE(name + std::string(", ") + std::to_string(width));
      const KyROI<KyBW8> roi(&image, kWidth - width, 0, width, kHeight);
      Numbers expected(256);
      for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < width; ++x) ++expected[roi.GetPixel(x, y)];
      KyBW8HistogramVector h;
      ASSERT_EQ(ImgHistogram(&roi, &h), KY_OK);
      EXPECT_EQ(Values(h), expected);
    }
  }
}

TEST(Histogram, Of16BitPixels) {
  struct {
    unsigned top, bits;
    int saturate;
  } const cases[] = {{11, 8, 1}, {11, 8, 0}, {15, 16, 0}, {15, 10, 1},
                     {5, 0, 0},  {5, 0, 9},  {0, 1, 0},   {14, 15, 1}};
  for (const auto& [top, bits, saturate] : cases) {
    SCOPED_TRACE(std::to_string(top) + ", " + std::to_string(bits));
    const auto call = [top = top, bits = bits, saturate = saturate](auto* roi, auto* h) {
      return ImgHistogram(roi, h, top, bits, saturate);
    };
    const auto model = [top = top, bits = bits,
                        saturate = saturate](const Picture<KyBW16>& picture) {
      Numbers counts(std::size_t{1} << bits);
      for (const KyBW16 p : picture.pixels) {
        std::size_t bin = p >> (top + 1 - bits);
        if (saturate != 0 && top < 15) bin = std::min(bin, counts.size() - 1);
        if (bin < counts.size()) ++counts[bin];
      }
      return counts;
    };
    CheckReading<KyBW16>(Into<KyBW8HistogramVector>(call), model,
                         {{1, 1}, {0, 3}, {33, 4}, {131, 17}, {300, 70}});
  }
  KyBW8HistogramVector h;
  KyImage<KyBW16> image(2, 2);
  EXPECT_EQ(ImgHistogram(&image, &h, 16, 99, 0), KY_ERROR_PARAMETER_3_OUT_OF_RANGE);
  EXPECT_EQ(ImgHistogram(&image, &h, 15, 17, 0), KY_ERROR_PARAMETER_4_OUT_OF_RANGE);
  EXPECT_EQ(ImgHistogram(&image, &h, 0, ~0u, 0), KY_ERROR_PARAMETER_4_OUT_OF_RANGE);
  EXPECT_EQ(ImgHistogram(&image, nullptr, 15, 8, 0), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(h.GetNumElements(), 0u);
}

// Runs that begin before the ROI, end after it, cover gaps between rows, or have no length.
TEST(Histogram, OfTheRunsOfAMask) {
  Random random(9);
  const Picture<KyBW8> picture = RandomPicture<KyBW8>(40, 9, random);
  Canvas<KyBW8> canvas(picture, {}, random);
  KyROI<KyBW8> outer(canvas.roi(), 3, 1, 33, 7), roi(&outer, 2, 1, 20, 5);
  const KyMaskRun runs[] = {
      {-7, 10},         {5, 3}, {15, 90}, {170, 1000}, {60, 0}, {70, -4}, {2147483647, 2147483647},
      {-2147483647, 50}};
  for (const bool absolute : {false, true}) {
    ASSERT_EQ(roi.SetMask(runs, std::size(runs), absolute), KY_OK);
    Numbers expected(256);
    const int pitch = roi.GetPitch(), origin = absolute ? 2 * pitch + 5 : 0;
    for (const auto& [offset, length] : runs)
      for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 20; ++x) {
          const std::int64_t place = origin + y * pitch + x;
          if (place >= offset && place < std::int64_t{offset} + length)
            ++expected[roi.GetPixel(x, y)];
        }
    KyBW8HistogramVector h;
    ASSERT_EQ(ImgHistogram(&roi, &h), KY_OK);
    EXPECT_EQ(Values(h), expected);
    // No run, no pixel.
    ASSERT_EQ(roi.SetMask(runs, 0, absolute), KY_OK);
    ASSERT_EQ(ImgHistogram(&roi, &h), KY_OK);
    EXPECT_EQ(Values(h), Numbers(256));
  }
}

TEST(Histogram, GenericVectorsOfOtherKinds) {
  KyImage<KyBW8> image(5, 3);
  KyVector v;
  ASSERT_EQ(v.SetType(3, 2000, 0), KY_OK);
  EXPECT_EQ(ImgHistogram(&image, &v), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(v.GetVectType(), 2);
  EXPECT_EQ(v.GetNbMaxGroup(), 0);
  ASSERT_EQ(v.SetType(2, 255, 0), KY_OK);
  EXPECT_EQ(ImgHistogram(&image, &v), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(ImgHistogram(&image, static_cast<KyVector*>(nullptr)), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_STREQ(KyGetTrace(0), "ImgHistogram (KyVector)");
  // In groups of three, with elements after the counts.
  ASSERT_EQ(v.SetType(2, 90, 3), KY_OK);
  static_cast<std::uint32_t*>(v.GetDataPtr())[256] = 7;
  static_cast<std::uint32_t*>(v.GetDataPtr())[9] = 7;
  ASSERT_EQ(ImgHistogram(&image, &v), KY_OK);
  EXPECT_EQ(v.GetNbGroup(), 86);
  EXPECT_EQ(static_cast<std::uint32_t*>(v.GetDataPtr())[256], 7u);
  EXPECT_EQ(static_cast<std::uint32_t*>(v.GetDataPtr())[9], 0u);
}

// The typed form for a scale of 255, the generic one for 256.
std::vector<KyBW8> EqualizingTable(const Numbers& counts, std::uint32_t scale) {
  std::uint32_t total = 0, below = 0;
  bool onlyBlack = true;
  for (std::size_t k = 0; k < 256; ++k) {
    total += counts[k];
    onlyBlack &= k == 0 || counts[k] == 0;
  }
  std::vector<KyBW8> table(256);
  if (total == 0 || (onlyBlack && scale == 255)) return table;
  for (std::size_t k = 0; k < 256; ++k) {
    table[k] = static_cast<KyBW8>(below * scale / total);
    below += counts[k];
  }
  return table;
}

TEST(Equalize, TablesOfManyHistograms) {
  Random generator(10);
  const auto random = [&] { return static_cast<std::uint32_t>(generator()); };
  const auto check = [](const Numbers& counts) {
    KyBW8HistogramVector typed;
    KyBW8Vector typedTable;
    KyVector generic, table;
    ASSERT_EQ(typed.SetNumElements(256), KY_OK);
    ASSERT_EQ(generic.SetType(2, 256, 0), KY_OK);
    std::copy(counts.begin(), counts.end(), typed.begin());
    std::copy(counts.begin(), counts.end(), static_cast<std::uint32_t*>(generic.GetDataPtr()));
    ASSERT_EQ(ImgSetupEqualize(&typed, &typedTable), KY_OK);
    EXPECT_EQ(std::vector<KyBW8>(typedTable.begin(), typedTable.end()),
              EqualizingTable(counts, 255));
    ASSERT_EQ(ImgSetupEqualize(&generic, &table), KY_OK);
    const auto* levels = static_cast<const KyBW8*>(table.GetDataPtr());
    EXPECT_EQ(std::vector<KyBW8>(levels, levels + 256), EqualizingTable(counts, 256));
    EXPECT_EQ(table.GetNbGroup(), 256);
    // Into itself.
    ASSERT_EQ(ImgSetupEqualize(&generic, &generic), KY_OK);
    EXPECT_EQ(static_cast<const KyBW8*>(generic.GetDataPtr())[100],
              EqualizingTable(counts, 256)[100]);
  };
  Numbers counts(256);
  check(counts);
  counts[0] = 90;
  check(counts);
  counts[255] = 1;
  check(counts);
  for (std::uint32_t& count : counts) count = random() % 5000;
  check(counts);
  for (std::uint32_t& count : counts) count = random();  // everything wraps
  check(counts);
  counts = Numbers(256);
  counts[3] = counts[9] = 1u << 31;  // a total that wraps to 0
  check(counts);
}

TEST(Equalize, Refusals) {
  KyBW8HistogramVector h;
  KyBW8Vector table;
  KyVector v, w;
  EXPECT_EQ(ImgSetupEqualize(&h, &table), KY_ERROR_NOT_256_ENTRIES);
  EXPECT_STREQ(KyGetTrace(0), "ImgSetupEqualize (KyBW8HistogramVector)");
  EXPECT_EQ(ImgSetupEqualize(nullptr, &table), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(ImgSetupEqualize(&v, &w), KY_ERROR_VECTOR_1603);
  EXPECT_STREQ(KyGetTrace(0), "ImgSetupEqualize (KyVector)");
  ASSERT_EQ(v.SetType(2, 255, 0), KY_OK);
  EXPECT_EQ(ImgSetupEqualize(&v, &w), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(w.GetVectType(), 0);
  // A table of type 3 is kept when it is long enough.
  ASSERT_EQ(v.SetType(2, 256, 0), KY_OK);
  ASSERT_EQ(w.SetType(3, 300, 0), KY_OK);
  static_cast<KyBW8*>(w.GetDataPtr())[256] = 5;
  ASSERT_EQ(ImgSetupEqualize(&v, &w), KY_OK);
  EXPECT_EQ(static_cast<KyBW8*>(w.GetDataPtr())[256], 5);
  ASSERT_EQ(w.SetType(3, 255, 0), KY_OK);
  ASSERT_EQ(ImgSetupEqualize(&v, &w), KY_OK);
  EXPECT_EQ(w.GetNbMaxGroup(), 256);
}

TEST(Equalize, Images) {
  const auto model = [](const Picture<KyBW8>& in, Picture<KyBW8>& out) {
    const std::vector<KyBW8> table = EqualizingTable(CountLevels(in), 255);
    for (std::size_t i = 0; i < in.pixels.size(); ++i) out.pixels[i] = table[in.pixels[i]];
  };
  CheckOperation<KyBW8, KyBW8>([](auto... roi) { return ImgEqualize(roi...); }, model);
}

TEST(Equalize, RefusalsNameTheStepThatFailed) {
  KyImage<KyBW8> image(9, 5), other(8, 5), none;
  const struct {
    const KyROI<KyBW8>* source;
    KyROI<KyBW8>* destination;
    KY_ERRORS error;
    const char* step;
  } cases[] = {{nullptr, &image, KY_ERROR_NO_IMAGE, "ImgHistogram"},
               {&none, nullptr, KY_ERROR_NO_IMAGE, "ImgHistogram"},
               {&image, nullptr, KY_ERROR_NO_IMAGE, "ImgLut"},
               {&image, &none, KY_ERROR_NO_IMAGE, "ImgLut"},
               {&image, &other, KY_ERROR_SIZE_MISMATCH, "ImgLut"}};
  for (const auto& c : cases) {
    EXPECT_EQ(ImgEqualize(c.source, c.destination), c.error);
    Harness<KyBW8>::ExpectTrace(c.error, {c.step, "ImgEqualize"});
  }
}

template <class T>
Numbers ColumnSums(const Picture<T>& picture) {
  Numbers sums(static_cast<std::size_t>(picture.width));
  for (int y = 0; y < picture.height; ++y)
    for (int x = 0; x < picture.width; ++x) sums[static_cast<std::size_t>(x)] += picture.At(x, y);
  return sums;
}
template <class T>
Numbers RowSums(const Picture<T>& picture) {
  Numbers sums(static_cast<std::size_t>(picture.height));
  for (int y = 0; y < picture.height; ++y)
    for (int x = 0; x < picture.width; ++x) sums[static_cast<std::size_t>(y)] += picture.At(x, y);
  return sums;
}

template <class T, class Vector>
void CheckProjections() {
  const auto row = [](const KyROI<T>* roi, Vector* sums) { return ImgProjectOnARow(roi, sums); };
  const auto column = [](const KyROI<T>* roi, Vector* sums) {
    return ImgProjectOnAColumn(roi, sums);
  };
  std::vector<Size> sizes = AwkwardSizes();
  for (const Size size : {Size{70, 15}, {70, 33}, {65, 300}, {4200, 9}}) sizes.push_back(size);
  CheckReading<T>(Into<Vector>(row), ColumnSums<T>, sizes);
  CheckReading<T>(Into<Vector>(column), RowSums<T>, sizes);
  Vector sums;
  KyImage<T> image(4, 3);
  EXPECT_EQ(row(&image, nullptr), KY_ERROR_BAD_VECTOR_TYPE);
  EXPECT_EQ(column(&image, nullptr), KY_ERROR_BAD_VECTOR_TYPE);
}

TEST(Projections, AsDefined) {
  CheckProjections<KyBW8, KyBW32Vector>();
  CheckProjections<KyBW16, KyBW32Vector>();
  CheckProjections<KyBW8, KyVector>();
}

TEST(Projections, White) {
  const int kWidth = 70, kHeight = 600;
  std::vector<KyBW8> white(kWidth * kHeight, 255);
  KyImage<KyBW8> image;
  ASSERT_EQ(image.Attach(white.data(), kWidth, kHeight, kWidth), KY_OK);
  ForEachPath([&](const std::string&) {
    KyBW32Vector sums(5);
    ASSERT_EQ(ImgProjectOnARow(&image, &sums), KY_OK);
    EXPECT_EQ(Values(sums), Numbers(kWidth, 255 * kHeight));
  });
}

TEST(Projections, SumsWrap) {
  const int kLong = 66000;  // times 65535 exceeds 32 bits
  std::vector<KyBW16> white(kLong, 65535);
  const auto expected = static_cast<std::uint32_t>(std::uint64_t{65535} * kLong);
  KyImage<KyBW16> wide, tall;
  ASSERT_EQ(wide.Attach(white.data(), kLong, 1, 2 * kLong), KY_OK);
  ASSERT_EQ(tall.Attach(white.data(), 1, kLong, 2), KY_OK);
  ForEachPath([&](const std::string&) {
    KyBW32Vector sums(5);
    ASSERT_EQ(ImgProjectOnAColumn(&wide, &sums), KY_OK);
    EXPECT_EQ(Values(sums), Numbers{expected});
    ASSERT_EQ(ImgProjectOnARow(&tall, &sums), KY_OK);
    EXPECT_EQ(Values(sums), Numbers{expected});
    EXPECT_EQ(sums.GetMaxElements(), 1u);
  });
}

// More than 4 MB, which is summed up by shorter vectors.
TEST(Projections, LargePictures) {
  constexpr int kWidth = 2219, kHeight = 1931;
  KyImage<KyBW8> image(kWidth, kHeight);
  Numbers expected(kHeight);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const auto level = static_cast<KyBW8>((x * 7 + y * 13) % 251);
      image.SetPixel(level, x, y);
      expected[static_cast<std::size_t>(y)] += level;
    }
  ForEachPath([&](const std::string&) {
    KyBW32Vector sums;
    ASSERT_EQ(ImgProjectOnAColumn(&image, &sums), KY_OK);
    EXPECT_EQ(Values(sums), expected);
  });
}

}  // namespace
