// Erosion, dilation and what is made of them, against windows gone through pixel by pixel and
// against the steps that define the disks.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT
using Grey = Picture<KyBW8>;
using Roi = KyROI<KyBW8>;

struct Element {
  bool disk;
  unsigned halfWidth, halfHeight;  // of a disk, the first is the radius
};
constexpr unsigned kAsWidth = 0xFFFFFFFF;

Element Box(unsigned halfWidth, unsigned halfHeight = kAsWidth) {
  return {false, halfWidth, halfHeight};
}
Element Disk(unsigned radius) { return {true, radius, 0}; }

std::string Name(const Element& e) {
  return (e.disk ? "disk " : "box ") + std::to_string(e.halfWidth) + ", " +
         std::to_string(e.halfHeight);
}

KyBW8 Outer(bool dilate, KyBW8 a, KyBW8 b) { return dilate ? std::max(a, b) : std::min(a, b); }

// The extreme over the pixels that are there, of a row or a column around each place.
Grey Line(const Grey& in, bool dilate, long half, int right, int down) {
  Grey out = in;
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x) {
      const int before = static_cast<int>(std::min<long>(half, right * x + down * y));
      const int after = static_cast<int>(
          std::min<long>(half, right * (in.width - 1 - x) + down * (in.height - 1 - y)));
      for (int i = -before; i <= after; ++i)
        out.At(x, y) = Outer(dilate, out.At(x, y), in.At(x + i * right, y + i * down));
    }
  return out;
}

Grey Cross(const Grey& in, bool dilate) {
  Grey out = in;
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x)
      for (const auto& [i, j] : {std::pair(-1, 0), {1, 0}, {0, -1}, {0, 1}})
        if (in.Has(x + i, y + j)) out.At(x, y) = Outer(dilate, out.At(x, y), in.At(x + i, y + j));
  return out;
}

Grey Extreme(const Grey& in, bool dilate, const Element& e) {
  if (!e.disk) {
    const unsigned halfHeight = e.halfHeight == kAsWidth ? e.halfWidth : e.halfHeight;
    return Line(Line(in, dilate, e.halfWidth, 1, 0), dilate, halfHeight, 0, 1);
  }
  const long crosses = (long{e.halfWidth} + 1) / 2, squares = e.halfWidth - crosses;
  Grey out = Line(Line(in, dilate, squares, 1, 0), dilate, squares, 0, 1);
  // After as many steps as there are rows and columns, nothing changes any more.
  for (long i = 0; i < std::min<long>(crosses, in.width + in.height); ++i) out = Cross(out, dilate);
  return out;
}

Grey Minus(const Grey& a, const Grey& b) {
  Grey out = a;
  for (std::size_t i = 0; i < out.pixels.size(); ++i)
    out.pixels[i] = static_cast<KyBW8>(std::max(0, a.pixels[i] - b.pixels[i]));
  return out;
}

using BoxFunction = KY_ERRORS (*)(const Roi*, Roi*, unsigned, unsigned) noexcept;
using DiskFunction = KY_ERRORS (*)(const Roi*, Roi*, unsigned) noexcept;

// A pair of functions, their names, what an inner call is traced as, and the definition.
struct Operation {
  const char *boxName, *diskName, *boxInner, *diskInner;
  BoxFunction box;
  DiskFunction disk;
  std::function<Grey(const Grey&, const Element&)> model;

  KY_ERRORS Run(const Element& e, const Roi* in, Roi* out) const {
    return e.disk ? disk(in, out, e.halfWidth) : box(in, out, e.halfWidth, e.halfHeight);
  }
  const char* TraceOf(const Element& e) const { return e.disk ? diskName : boxName; }
  const char* InnerOf(const Element& e) const { return e.disk ? diskInner : boxInner; }
};

Grey Dilate(const Grey& in, const Element& e) { return Extreme(in, true, e); }
Grey Erode(const Grey& in, const Element& e) { return Extreme(in, false, e); }
Grey Open(const Grey& in, const Element& e) { return Dilate(Erode(in, e), e); }
Grey Close(const Grey& in, const Element& e) { return Erode(Dilate(in, e), e); }

const Operation kDilate = {"ImgDilateBox", "ImgDilateDisk", nullptr, nullptr,
                           ImgDilateBox,   ImgDilateDisk,   Dilate};
const Operation kErode = {"ImgErodeBox", "ImgErodeDisk", nullptr, nullptr,
                          ImgErodeBox,   ImgErodeDisk,   Erode};
const Operation kOpen = {"ImgOpenBox", "ImgOpenDisk", nullptr, nullptr,
                         ImgOpenBox,   ImgOpenDisk,   Open};
const Operation kClose = {"ImgCloseBox", "ImgCloseDisk", nullptr, nullptr,
                          ImgCloseBox,   ImgCloseDisk,   Close};
const Operation kGradient = {
    "ImgMorphoGradientBox",
    "ImgMorphoGradientDisk",
    "ImgDilateBox",
    "ImgDilateDisk",
    ImgMorphoGradientBox,
    ImgMorphoGradientDisk,
    [](const Grey& in, const Element& e) { return Minus(Dilate(in, e), Erode(in, e)); }};
const Operation kWhiteTopHat = {
    "ImgWhiteTopHatBox",
    "ImgWhiteTopHatDisk",
    "ImgOpenBox",
    "ImgOpenDisk",
    ImgWhiteTopHatBox,
    ImgWhiteTopHatDisk,
    [](const Grey& in, const Element& e) { return Minus(in, Open(in, e)); }};
const Operation kBlackTopHat = {
    "ImgBlackTopHatBox",
    "ImgBlackTopHatDisk",
    "ImgCloseBox",
    "ImgCloseDisk",
    ImgBlackTopHatBox,
    ImgBlackTopHatDisk,
    [](const Grey& in, const Element& e) { return Minus(Close(in, e), in); }};

void Check(const Operation& operation, const Element& element,
           const std::vector<Size>& sizes = AwkwardSizes(),
           Aliasing aliasing = Aliasing::kInPlaceAndOverlap) {
  SCOPED_TRACE(operation.TraceOf(element) + (": " + Name(element)));
  CheckOperation<KyBW8, KyBW8>(
      [&](const Roi* in, Roi* out) { return operation.Run(element, in, out); },
      [&](const Grey& in, Grey& out) { out = operation.model(in, element); }, sizes, aliasing);
}

// Sizes for elements of several vectors, or of more rows than there are.
const std::vector<Size> kLargeSizes = {{1, 70},   {70, 1},   {33, 64}, {64, 33},
                                       {131, 17}, {17, 131}, {1000, 5}};

TEST(Morphology, DilationAndErosionByBoxes) {
  for (const Operation* operation : {&kDilate, &kErode}) {
    for (const Element& element : {Box(1), Box(3, 1), Box(2), Box(0, 2)})
      Check(*operation, element);
    for (const Element& element :
         {Box(0), Box(1, 0), Box(5, 7), Box(7), Box(8, 15), Box(16, 0), Box(31), Box(50, 3),
          Box(200, 0), Box(999, 32), Box(5, 0xFFFFFFFE), Box(kAsWidth)})
      Check(*operation, element, kLargeSizes);
  }
}

TEST(Morphology, DilationAndErosionByDisks) {
  for (const Operation* operation : {&kDilate, &kErode}) {
    for (const unsigned radius : {0u, 1u, 2u, 3u, 4u}) Check(*operation, Disk(radius));
    for (const unsigned radius : {5u, 7u, 12u, 25u, 64u})
      Check(*operation, Disk(radius), kLargeSizes);
    for (const unsigned radius : {0xFFFFFFFEu, 0xFFFFFFFFu})
      Check(*operation, Disk(radius), {{1, 70}, {70, 1}, {33, 20}, {17, 34}});
  }
}

TEST(Morphology, CompositesByBoxesAndDisks) {
  const std::vector<Size> sizes = {{1, 1},  {2, 5},    {5, 2}, {31, 4}, {33, 40},
                                   {65, 9}, {131, 47}, {0, 3}, {3, 0}};
  for (const Element& element : {Box(0), Box(1), Box(3), Box(2, 0), Box(0, 7), Box(20, 9), Disk(0),
                                 Disk(1), Disk(3), Disk(8), Disk(30)}) {
    for (const Operation* operation : {&kOpen, &kClose, &kGradient})
      Check(*operation, element, sizes);
    for (const Operation* operation : {&kWhiteTopHat, &kBlackTopHat})
      Check(*operation, element, sizes, Aliasing::kNone);
  }
}

// Windows of one block of rows or of several, some with rows that no block takes.
TEST(Morphology, TallWindowsOnSparsePictures) {
  Random random(8);
  for (const unsigned half : {13u, 14u, 17u, 29u, 50u, 61u, 150u}) {
    SCOPED_TRACE(half);
    Grey picture(70, 3 * static_cast<int>(half) + 7, 100);
    for (int i = 0; i < 60; ++i)
      picture.pixels[random() % picture.pixels.size()] = static_cast<KyBW8>(random());
    const Grey dilation = Line(picture, true, half, 0, 1);
    const Grey erosion = Line(picture, false, half, 0, 1);
    ForEachPath([&](const std::string&) {
      Canvas<KyBW8> canvas(picture, {1, 2, 3}, random), out(picture, {}, random);
      ASSERT_EQ(ImgErodeBox(canvas.roi(), out.roi(), 0, half), KY_OK);
      EXPECT_TRUE(Same(erosion, out.Get()));
      ASSERT_EQ(ImgDilateBox(canvas.roi(), nullptr, 0, half), KY_OK);
      EXPECT_TRUE(Same(dilation, canvas.Get()));
    });
  }
}

// Rows that wait between the parts of a composite are as many as its blocks and its height ask for.
TEST(Morphology, CompositesAreTheirPartsAtEveryHeight) {
  Random random(9);
  for (const Element& element : {Box(0, 5), Box(0, 7), Box(0, 12), Box(1, 31), Disk(7), Disk(13)}) {
    for (int height = 1; height < 140; ++height) {
      SCOPED_TRACE(Name(element) + ", " + std::to_string(height) + " rows");
      Canvas<KyBW8> source(5, height, {}, random), out(5, height, {}, random);
      Canvas<KyBW8> dilated(5, height, {}, random), eroded(5, height, {}, random);
      ASSERT_EQ(kDilate.Run(element, source.roi(), dilated.roi()), KY_OK);
      ASSERT_EQ(kErode.Run(element, source.roi(), eroded.roi()), KY_OK);
      ASSERT_EQ(kGradient.Run(element, source.roi(), out.roi()), KY_OK);
      ASSERT_TRUE(Same(Minus(dilated.Get(), eroded.Get()), out.Get()));
      ASSERT_EQ(kDilate.Run(element, eroded.roi(), nullptr), KY_OK);
      ASSERT_EQ(kOpen.Run(element, source.roi(), out.roi()), KY_OK);
      ASSERT_TRUE(Same(eroded.Get(), out.Get()));
    }
  }
}

// A large element is its parts one after the other. These go by tiles of columns or by several
// rounds of crosses, and their gradients through whole images.
TEST(Morphology, ElementsLargerThanTheScratch) {
  struct Case {
    Element whole;
    Size size;
    std::vector<std::pair<Element, int>> parts;  // and how often
  };
  const Case cases[] = {
      {Box(151, 1003), {4300, 2050}, {{Box(75, 501), 2}, {Box(1, 1), 1}}},
      {Disk(700), {2000, 24}, {{Box(50), 7}, {Disk(1), 350}}},
  };
  Random random(5);
  ForEachPath([&](const std::string&) {
    for (const auto& [whole, size, parts] : cases) {
      SCOPED_TRACE(Name(whole));
      // Few bright and dark pixels, so that large windows differ.
      Grey picture(size.width, size.height, 100);
      for (int i = 0; i < 40; ++i)
        picture.pixels[random() % picture.pixels.size()] = static_cast<KyBW8>(random());
      Canvas<KyBW8> source(picture, {3, 1, 2}, random), once(picture, {1, 0, 0}, random);
      Canvas<KyBW8> byParts(picture, {}, random);
      for (const auto& [part, times] : parts)
        for (int i = 0; i < times; ++i) ASSERT_EQ(kDilate.Run(part, byParts.roi(), nullptr), KY_OK);
      ASSERT_EQ(kDilate.Run(whole, source.roi(), once.roi()), KY_OK);
      EXPECT_TRUE(Same(byParts.Get(), once.Get()));
      EXPECT_TRUE(once.OnlyChanged(*once.roi()));
      const Grey dilation = once.Get();
      ASSERT_EQ(kErode.Run(whole, source.roi(), once.roi()), KY_OK);
      ASSERT_EQ(kGradient.Run(whole, source.roi(), nullptr), KY_OK);
      EXPECT_TRUE(Same(Minus(dilation, once.Get()), source.Get()));
    }
  });
}

TEST(Morphology, SingleBrightAndDarkPixels) {
  ForEachPath([&](const std::string&) {
    Random random(6);
    for (const int level : {255, 0}) {
      Grey dot(15, 15, static_cast<KyBW8>(255 - level));
      dot.At(7, 7) = static_cast<KyBW8>(level);
      Canvas<KyBW8> source(dot, {1, 1, 1}, random), out(15, 15, {}, random);
      const auto expect = [&](const Element& element, const auto& covers) {
        ASSERT_EQ((level == 255 ? kDilate : kErode).Run(element, source.roi(), out.roi()), KY_OK);
        for (int y = 0; y < 15; ++y)
          for (int x = 0; x < 15; ++x)
            EXPECT_EQ(out.Get().At(x, y) == level, covers(std::abs(x - 7), std::abs(y - 7)))
                << Name(element) << " at (" << x << ", " << y << ")";
      };
      expect(Box(1, 1), [](int i, int j) { return i <= 1 && j <= 1; });
      expect(Box(3, 1), [](int i, int j) { return i <= 3 && j <= 1; });
      expect(Disk(1), [](int i, int j) { return i + j <= 1; });
      expect(Disk(3), [](int i, int j) { return i <= 3 && j <= 3 && i + j <= 4; });
      expect(Disk(7), [](int i, int j) { return i <= 7 && j <= 7 && i + j <= 10; });
    }
  });
}

TEST(Morphology, DualityOrderAndIdempotence) {
  Random random(7);
  ForEachPath([&](const std::string&) {
    for (const Element& element : {Box(4, 2), Disk(6)}) {
      SCOPED_TRACE(Name(element));
      const Grey picture = RandomPicture<KyBW8>(91, 43, random);
      Canvas<KyBW8> source(picture, {1, 0, 2}, random), out(91, 43, {}, random);
      const auto run = [&](const Operation& operation) {
        EXPECT_EQ(operation.Run(element, source.roi(), out.roi()), KY_OK);
        return out.Get();
      };
      const Grey dilation = run(kDilate), erosion = run(kErode);
      const Grey opening = run(kOpen), closing = run(kClose);
      for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        ASSERT_LE(erosion.pixels[i], opening.pixels[i]);
        ASSERT_LE(opening.pixels[i], picture.pixels[i]);
        ASSERT_LE(picture.pixels[i], closing.pixels[i]);
        ASSERT_LE(closing.pixels[i], dilation.pixels[i]);
      }
      source.Put(opening);
      EXPECT_TRUE(Same(opening, run(kOpen)));
      source.Put(closing);
      EXPECT_TRUE(Same(closing, run(kClose)));
      source.Put(picture);
      ASSERT_EQ(ImgOper(KY_OPER_INVERT, source.roi(), source.roi()), KY_OK);
      ASSERT_EQ(kErode.Run(element, source.roi(), out.roi()), KY_OK);
      ASSERT_EQ(ImgOper(KY_OPER_INVERT, out.roi(), out.roi()), KY_OK);
      EXPECT_TRUE(Same(dilation, out.Get()));
    }
  });
}

// The same pixels may come as null, as the source's ROI, or as another one on its rectangle.
TEST(Morphology, NullAndEqualDestinations) {
  Random random(8);
  const Grey picture = RandomPicture<KyBW8>(40, 21, random), zero(40, 21, 0);
  for (const Element& element : {Box(0), Box(2, 1), Disk(0), Disk(5)}) {
    for (const Operation* operation :
         {&kDilate, &kErode, &kOpen, &kClose, &kGradient, &kWhiteTopHat, &kBlackTopHat}) {
      SCOPED_TRACE(operation->TraceOf(element) + (": " + Name(element)));
      Canvas<KyBW8> canvas(picture, {2, 1, 1}, random);
      Roi again(canvas.image(), 2, 1, 40, 21);
      const bool topHat = operation == &kWhiteTopHat || operation == &kBlackTopHat;
      for (Roi* const destination : {static_cast<Roi*>(nullptr), canvas.roi(), &again}) {
        canvas.Put(picture);
        const KY_ERRORS status = operation->Run(element, canvas.roi(), destination);
        if (operation == &kWhiteTopHat && !element.disk) {
          EXPECT_EQ(status, KY_ERROR_COLOR_PLANES);
          Harness<KyBW8>::ExpectTrace(status, {"ImgWhiteTopHatBox"});
          EXPECT_TRUE(canvas.Unchanged());
          continue;
        }
        ASSERT_EQ(status, KY_OK);
        EXPECT_TRUE(Same(topHat ? zero : operation->model(picture, element), canvas.Get()));
      }
    }
  }
  // Top-hats of an area that overlaps the source, which must not be subtracted from after it has
  // been written over.
  for (const Operation* operation : {&kWhiteTopHat, &kBlackTopHat}) {
    Canvas<KyBW8> canvas(picture, {2, 1, 1}, random);
    Roi lower(canvas.image(), 1, 2, 40, 21);
    ASSERT_EQ(operation->Run(Box(1), canvas.roi(), &lower), KY_OK);
    EXPECT_TRUE(Same(operation->model(picture, Box(1)), Canvas<KyBW8>::Get(lower)));
  }
}

// The registry checks refusals but for the names of the steps.
TEST(Morphology, TracesNameTheStep) {
  KyImage<KyBW8> image(9, 5);
  for (const Element& element : {Box(0), Box(1), Disk(2)}) {
    for (const Operation* operation :
         {&kDilate, &kErode, &kOpen, &kClose, &kWhiteTopHat, &kBlackTopHat, &kGradient}) {
      SCOPED_TRACE(operation->TraceOf(element) + (": " + Name(element)));
      const bool refusesInPlace = operation == &kWhiteTopHat && !element.disk;
      const auto expect = [&](const Roi* source, Roi* destination, KY_ERRORS code, bool byInner) {
        EXPECT_EQ(operation->Run(element, source, destination), code);
        std::vector<const char*> trace = {operation->TraceOf(element)};
        if (const char* const inner = operation->InnerOf(element); inner != nullptr && byInner)
          trace.insert(trace.begin(), inner);
        Harness<KyBW8>::ExpectTrace(code, trace);
      };
      expect(nullptr, &image, KY_ERROR_NO_IMAGE, operation != &kGradient);
      expect(nullptr, nullptr, refusesInPlace ? KY_ERROR_COLOR_PLANES : KY_ERROR_NO_IMAGE,
             operation != &kGradient && !refusesInPlace);
    }
  }
}

}  // namespace
