// Morphology with elements of any shape, grey and colour, against the definition gone through
// position by position.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT

constexpr unsigned kAsWidth = 0xFFFFFFFF;

// An element, as the positions that it consists of, and the kernel that describes it.
struct Element {
  const char* name;
  int sizeX, sizeY;
  std::function<bool(int i, int j)> has;  // from the top left of the grid

  void Put(KyKernel& kernel) const {
    constexpr float kMembers[] = {1, -2, 1e-30F, std::numeric_limits<float>::quiet_NaN()};
    kernel.SetSizeX(static_cast<std::int16_t>(sizeX));
    kernel.SetSizeY(static_cast<std::int16_t>(sizeY));
    for (int j = 0; j < sizeY; ++j)
      for (int i = 0; i < sizeX; ++i)
        kernel.SetKernelData(i, j, has(i, j) ? kMembers[(i + j) % 4] : (i % 2 != 0 ? 0.0F : -0.0F));
  }
};

Element Box(unsigned halfWidth, unsigned halfHeight) {
  const int width = 2 * static_cast<int>(halfWidth) + 1;
  const int height = 2 * static_cast<int>(halfHeight) + 1;
  return {"box", width, height, [](int, int) { return true; }};
}
bool InCircle(int i, int j, int radius) {
  return (i - radius) * (i - radius) + (j - radius) * (j - radius) <= radius * radius + radius;
}

const Element kSmall[] = {
    {"cross", 3, 3, [](int i, int j) { return i == 1 || j == 1; }},
    {"point off the centre", 3, 5, [](int i, int j) { return i == 0 && j == 4; }},
    {"corner", 4, 3, [](int i, int j) { return i == 0 || j == 2; }},
    {"two by two", 2, 2, [](int, int) { return true; }},
};
const Element kLarge[] = {
    {"line", 15, 1, [](int, int) { return true; }},
    {"tall line", 1, 70, [](int, int j) { return j != 69; }},
    {"diagonal", 9, 9, [](int i, int j) { return i == 8 - j; }},
    {"large cross", 15, 15, [](int i, int j) { return i == 7 || j == 7; }},
    {"cross in a larger grid", 6, 5,
     [](int i, int j) { return std::abs(i - 3) + std::abs(j - 2) <= 1; }},
    {"cross without an arm", 3, 3, [](int i, int j) { return (i == 1 || j == 1) && i < 2; }},
    {"small circle", 5, 5, [](int i, int j) { return InCircle(i, j, 2); }},
    {"circle", 15, 15, [](int i, int j) { return InCircle(i, j, 7); }},
    {"large circle", 41, 41, [](int i, int j) { return InCircle(i, j, 20); }},
    {"ring", 21, 21, [](int i, int j) { return InCircle(i, j, 10) && !InCircle(i - 3, j - 3, 7); }},
    {"frame", 30, 50, [](int i, int j) { return i < 2 || i > 26 || j < 1 || j > 46; }},
    {"even rectangle", 24, 36, [](int, int) { return true; }},
    {"box in a larger grid", 9, 9, [](int i, int j) { return i > 1 && i < 7 && j > 2 && j < 6; }},
    {"box off the centre", 9, 9, [](int i, int j) { return i > 4 && j < 3; }},
    {"chessboard", 7, 9, [](int i, int j) { return (i + j) % 2 == 1; }},
    {"specks", 33, 17, [](int i, int j) { return (i * 7 + j * 13) % 11 < 4; }},
    {"far points", 401, 201, [](int i, int j) { return i % 400 == 0 && j % 200 == 0; }},
    {"above", 3, 31, [](int i, int j) { return j < 3 && i != 1; }},
};

// A colour as levels, and back.
template <class T, class F>
T Each(T a, T b, const F& f) {
  if constexpr (std::is_same_v<T, KyC24>)
    return {f(a.c0, b.c0), f(a.c1, b.c1), f(a.c2, b.c2)};
  else
    return f(a, b);
}
template <class T>
T Level(KyBW8 level) {
  return Each(T{}, T{}, [=](KyBW8, KyBW8) { return level; });
}

template <class T>
Picture<T> Extreme(const Picture<T>& in, bool dilates, const Element& e) {
  Picture<T> out(in.width, in.height, Level<T>(dilates ? 0 : 255));
  const int sign = dilates ? -1 : 1;
  for (int j = 0; j < e.sizeY; ++j)
    for (int i = 0; i < e.sizeX; ++i) {
      const int right = sign * (i - e.sizeX / 2), down = sign * (j - e.sizeY / 2);
      if (!e.has(i, j)) continue;
      for (int y = std::max(0, -down); y < std::min(in.height, in.height - down); ++y)
        for (int x = std::max(0, -right); x < std::min(in.width, in.width - right); ++x)
          out.At(x, y) = Each(out.At(x, y), in.At(x + right, y + down), [&](KyBW8 a, KyBW8 b) {
            return dilates ? std::max(a, b) : std::min(a, b);
          });
    }
  return out;
}
template <class T>
Picture<T> Minus(Picture<T> a, const Picture<T>& b) {
  for (std::size_t i = 0; i < a.pixels.size(); ++i)
    a.pixels[i] = Each(a.pixels[i], b.pixels[i],
                       [](KyBW8 p, KyBW8 q) { return static_cast<KyBW8>(std::max(0, p - q)); });
  return a;
}

template <class T>
struct Operation {
  std::string name;
  KY_ERRORS (*byShape)(const KyROI<T>*, KyROI<T>*, const KyKernel*) noexcept;
  KY_ERRORS (*bySizes)(const KyROI<T>*, KyROI<T>*, unsigned, unsigned) noexcept;
  std::function<Picture<T>(const Picture<T>&, const Element&)> model;
};

template <class T>
std::vector<Operation<T>> Operations() {
  using P = const Picture<T>&;
  using E = const Element&;
  const auto open = [](P in, E e) { return Extreme(Extreme(in, false, e), true, e); };
  const auto close = [](P in, E e) { return Extreme(Extreme(in, true, e), false, e); };
  std::vector<Operation<T>> all = {
      {"ImgErode", ImgErode, ImgErode, [](P in, E e) { return Extreme(in, false, e); }},
      {"ImgDilate", ImgDilate, ImgDilate, [](P in, E e) { return Extreme(in, true, e); }},
      {"ImgOpen", ImgOpen, ImgOpen, open},
      {"ImgClose", ImgClose, ImgClose, close},
      {"ImgWhiteTopHat", ImgWhiteTopHat, ImgWhiteTopHat,
       [=](P in, E e) { return Minus(in, open(in, e)); }},
      {"ImgBlackTopHat", ImgBlackTopHat, ImgBlackTopHat,
       [=](P in, E e) { return Minus(close(in, e), in); }},
      {"ImgMorphoGradient", ImgMorphoGradient, ImgMorphoGradient,
       [](P in, E e) { return Minus(Extreme(in, true, e), Extreme(in, false, e)); }},
  };
  if constexpr (std::is_same_v<T, KyC24>) {
    const auto add = [&](const char* name, decltype(Operation<T>::bySizes) bySizes, auto model) {
      all.push_back({name, nullptr, bySizes, model});
    };
    add("ImgErodeBox", ImgErodeBox, all[0].model);
    add("ImgDilateBox", ImgDilateBox, all[1].model);
    add("ImgOpenBox", ImgOpenBox, open);
    add("ImgCloseBox", ImgCloseBox, close);
  }
  for (Operation<T>& operation : all)
    operation.name += std::is_same_v<T, KyC24> ? " (C24)" : " (BW8)";
  return all;
}

template <class T>
class Shapes : public testing::Test {
 protected:
  static void Check(const Operation<T>& operation, const Element& element, auto call,
                    const std::vector<Size>& sizes) {
    SCOPED_TRACE(operation.name + ": " + element.name + " of " + std::to_string(element.sizeX) +
                 " x " + std::to_string(element.sizeY));
    CheckOperation<T, T>(
        call, [&](const Picture<T>& in, Picture<T>& out) { out = operation.model(in, element); },
        sizes);
  }
  static void CheckShape(const Operation<T>& operation, const Element& element,
                         const std::vector<Size>& sizes) {
    if (operation.byShape == nullptr) return;
    KyKernel kernel;
    element.Put(kernel);
    const auto call = [&](const KyROI<T>* in, KyROI<T>* out) {
      return operation.byShape(in, out, &kernel);
    };
    Check(operation, element, call, sizes);
  }
};
using Pixels = testing::Types<KyBW8, KyC24>;
TYPED_TEST_SUITE(Shapes, Pixels);

// Sizes for elements of several vectors, or of more rows than there are.
const std::vector<Size> kSizes = {{1, 1}, {0, 3}, {3, 0}, {1, 33}, {40, 1}, {23, 64}, {300, 19}};

TYPED_TEST(Shapes, MatchTheirDefinition) {
  const auto operations = Operations<TypeParam>();
  for (const Element& element : kSmall)
    for (const int which : {0, 1})
      this->CheckShape(operations[static_cast<std::size_t>(which)], element, AwkwardSizes());
  for (const Element& element : kLarge)
    for (const int which : {0, 1})
      this->CheckShape(operations[static_cast<std::size_t>(which)], element, kSizes);
  for (const auto& operation : operations)
    for (const Element& element : {kSmall[2], kLarge[4], kLarge[7], kLarge[9], kLarge[14]})
      this->CheckShape(operation, element, {{65, 23}, {2, 5}, {0, 1}});
}

TYPED_TEST(Shapes, HalfSizesAreBoxes) {
  for (const auto& operation : Operations<TypeParam>())
    for (const auto& [halfWidth, halfHeight] : {std::pair(0U, 0U),
                                                {1U, kAsWidth},
                                                {2U, 0U},
                                                {0U, 3U},
                                                {7U, 20U},
                                                {0xFFFFFFFEU, 1U},
                                                {kAsWidth, kAsWidth}}) {
      const auto call = [&, w = halfWidth, h = halfHeight](const KyROI<TypeParam>* in,
                                                           KyROI<TypeParam>* out) {
        return operation.bySizes(in, out, w, h);
      };
      const unsigned most = 64, down = halfHeight == kAsWidth ? halfWidth : halfHeight;
      this->Check(operation, Box(std::min(halfWidth, most), std::min(down, most)), call,
                  {{1, 1}, {0, 2}, {3, 0}, {11, 37}, {65, 6}});
    }
}

// Of one span or several, on rows below and above a vector or two.
TYPED_TEST(Shapes, WindowsAlongRows) {
  const auto operations = Operations<TypeParam>();
  for (const unsigned half : {3U, 4U, 5U, 8U, 10U, 12U, 16U, 21U, 31U, 42U, 63U, 70U})
    for (const std::size_t which : {0, 1}) {
      const auto call = [&](const KyROI<TypeParam>* in, KyROI<TypeParam>* out) {
        return operations[which].bySizes(in, out, half, 0);
      };
      this->Check(operations[which], Box(half, 0), call,
                  {{1, 2}, {5, 1}, {10, 1}, {11, 1}, {22, 1}, {23, 2}, {43, 1}, {150, 2}});
    }
}

// Rows that wait between the parts of a composite are as many as its shape and its height ask for.
TYPED_TEST(Shapes, CompositesAreTheirPartsAtEveryHeight) {
  const auto all = Operations<TypeParam>();
  Random random(9);
  for (const Element& element : {kSmall[1], kLarge[1], kLarge[4], kLarge[14]}) {
    KyKernel kernel;
    element.Put(kernel);
    for (int height = 1; height < 90; height += 1 + height / 20) {
      SCOPED_TRACE(std::string(element.name) + ", " + std::to_string(height) + " rows");
      using Field = Canvas<TypeParam>;
      Field source(5, height, {}, random), out(5, height, {}, random);
      Field dilated(5, height, {}, random), eroded(5, height, {}, random);
      ASSERT_EQ(ImgDilate(source.roi(), dilated.roi(), &kernel), KY_OK);
      ASSERT_EQ(ImgErode(source.roi(), eroded.roi(), &kernel), KY_OK);
      ASSERT_EQ(ImgMorphoGradient(source.roi(), out.roi(), &kernel), KY_OK);
      ASSERT_TRUE(Same(Minus(dilated.Get(), eroded.Get()), out.Get()));
      ASSERT_EQ(ImgDilate(eroded.roi(), nullptr, &kernel), KY_OK);
      ASSERT_EQ(ImgOpen(source.roi(), out.roi(), &kernel), KY_OK);
      ASSERT_TRUE(Same(eroded.Get(), out.Get()));
      const auto before = source.Get(), opening = out.Get();
      ASSERT_EQ(ImgWhiteTopHat(source.roi(), nullptr, &kernel), KY_OK);
      ASSERT_TRUE(Same(Minus(before, opening), source.Get()));
    }
  }
}

TYPED_TEST(Shapes, Refusals) {
  Random random(4);
  Canvas<TypeParam> canvas(9, 7, {1, 1, 1}, random);
  KyROI<TypeParam> smaller(canvas.image(), 0, 0, 8, 7), none;
  KyKernel empty, zero(3, 3, 1, 0, 0, 0), noColumns(3, 3, 1, 0, 0, 0), negative(3, 3, 1, 0, 0, 0);
  std::fill_n(zero.GetDataPtr(), 9, -0.0F);
  noColumns.SetSizeX(0);
  negative.SetSizeX(-1);
  negative.SetSizeY(-2);
  for (const auto& operation : Operations<TypeParam>()) {
    const auto expect = [&](KY_ERRORS code, KY_ERRORS status) {
      EXPECT_EQ(status, code);
      Harness<TypeParam>::ExpectTrace(code, {operation.name.c_str()});
      EXPECT_TRUE(canvas.Unchanged());
    };
    expect(KY_ERROR_NO_IMAGE, operation.bySizes(nullptr, nullptr, 1, 1));
    expect(KY_ERROR_NO_IMAGE, operation.bySizes(canvas.roi(), &none, 1, 1));
    expect(KY_ERROR_SIZE_MISMATCH, operation.bySizes(canvas.roi(), &smaller, 1, 1));
    if (operation.byShape == nullptr) continue;
    expect(KY_ERROR_SIZE_MISMATCH, operation.byShape(canvas.roi(), &smaller, nullptr));
    const auto refuse = [&](KY_ERRORS code, const KyKernel* kernel) {
      expect(code, operation.byShape(canvas.roi(), nullptr, kernel));
    };
    refuse(KY_ERROR_KERNEL_SIZE, nullptr);
    refuse(KY_ERROR_KERNEL_SIZE, &empty);
    refuse(KY_ERROR_KERNEL_SIZE, &noColumns);
    refuse(KY_ERROR_KERNEL_SIZE, &negative);
    refuse(KY_ERROR_KERNEL_1701, &zero);
  }
}

}  // namespace
