// The operators against their definitions, pixel by pixel.
#include "ky/operators.h"

#include <gtest/gtest.h>

#include <optional>

#include "tests/support/harness.h"

namespace {

using namespace ky::test;  // NOLINT
using Operation = ARITH_LOGIC_OPERATIONS;

Operation Op(int value) { return static_cast<Operation>(value); }
KyBW8 Level(int value) { return static_cast<KyBW8>(value); }
KyBW8 Truth(bool value) { return value ? 255 : 0; }

// The table of operations, literally; nothing where the forms with two operands do nothing.
std::optional<int> Model(int operation, int a, int b, int old) {
  switch (operation) {
    case 2: return std::min(a + b, 255);
    case 3: return std::max(a - b, 0);
    case 4: return std::min(a * b, 255);
    case 5: return b == 0 ? 255 : a / b;
    case 6: return b == 0 ? 0 : a % b;
    case 7: return b % 32 < 8 ? Level(a << b % 32) : 0;
    case 8: return a >> b % 32;
    case 9: return (a + b) / 2;
    case 10: return (a + 255 - b) / 2;
    case 11: return a * b / 256;
    case 12: return b == 0 ? 255 : std::min(256 * a / b, 255);
    case 13: return a & b;
    case 14: return a | b;
    case 15: return a ^ b;
    case 16: return Truth(a != 0 && b != 0);
    case 17: return Truth(a != 0 || b != 0);
    case 18: return Truth((a == 0) != (b == 0));
    case 19: return std::min(a, b);
    case 20: return std::max(a, b);
    case 21: return a == 0 ? b : old;
    case 22: return a != 0 ? b : old;
    case 23: return Truth(a == b);
    case 24: return Truth(a != b);
    case 25: return Truth(a >= b);
    case 26: return Truth(a <= b);
    case 27: return Truth(a > b);
    case 28: return Truth(a < b);
    case 33: return std::abs(a - b);
    default: return std::nullopt;
  }
}
KyBW8 Pixel(int operation, KyBW8 a, KyBW8 b, KyBW8 old) {
  return Level(*Model(operation, a, b, old));
}
KyC24 Pixel(int operation, KyC24 a, KyC24 b, KyC24 old) {
  return {Pixel(operation, a.c0, b.c0, old.c0), Pixel(operation, a.c1, b.c1, old.c1),
          Pixel(operation, a.c2, b.c2, old.c2)};
}
KyC24 Grey(KyBW8 v) { return {v, v, v}; }
constexpr KyC24 kBlack{0, 0, 0};

// All 65,536 pairs of operands in one picture, in an order that puts every pair in every lane over
// the rows.
void AllPairs(Picture<KyBW8>& a, Picture<KyBW8>& b) {
  a = b = Picture<KyBW8>(257, 256);
  for (int y = 0; y < 256; ++y)
    for (int x = 0; x < 257; ++x) {
      a.At(x, y) = Level(x);
      b.At(x, y) = Level(y + x / 256);
    }
}

TEST(Operators, EveryPairOfLevels) {
  Picture<KyBW8> a, b;
  AllPairs(a, b);
  ForEachPath([&](const std::string&) {
    Random random(3);
    Canvas<KyBW8> first(a, {}, random), second(b, {}, random), out(257, 256, {}, random);
    const Picture<KyBW8> old = out.Get();
    for (int operation = 2; operation <= 33; ++operation) {
      if (operation == 7 || operation == 8 || !Model(operation, 0, 0, 0)) continue;
      SCOPED_TRACE("operation " + std::to_string(operation));
      out.Put(old);
      ASSERT_EQ(ImgOper(Op(operation), first.roi(), second.roi(), out.roi()), KY_OK);
      Picture<KyBW8> expected = old;
      PerPixel([&](KyBW8 o, KyBW8 l, KyBW8 r) { return Pixel(operation, l, r, o); })(a, b,
                                                                                     expected);
      EXPECT_TRUE(Same(expected, out.Get()));
    }
  });
}

TEST(Operators, TwoGreyImages) {
  for (int operation = 2; operation <= 33; ++operation) {
    if (operation == 7 || operation == 8 || !Model(operation, 0, 0, 0)) continue;
    SCOPED_TRACE("operation " + std::to_string(operation));
    CheckOperation<KyBW8, KyBW8, KyBW8>(
        [&](auto... roi) { return ImgOper(Op(operation), roi...); },
        PerPixel([&](KyBW8 old, KyBW8 a, KyBW8 b) { return Pixel(operation, a, b, old); }));
  }
}

// Colour forms run the grey kernels on components: a few operations show that operands reach them.
TEST(Operators, TwoImagesWithColour) {
  for (const int operation : {3, 12, 21, 28}) {
    SCOPED_TRACE("operation " + std::to_string(operation));
    const auto call = [&](auto... roi) { return ImgOper(Op(operation), roi...); };
    CheckOperation<KyC24, KyC24, KyC24>(
        call, PerPixel([&](KyC24 old, KyC24 a, KyC24 b) { return Pixel(operation, a, b, old); }));
    CheckOperation<KyC24, KyBW8, KyC24>(call, PerPixel([&](KyC24 old, KyBW8 a, KyC24 b) {
                                          return Pixel(operation, Grey(a), b, old);
                                        }));
    CheckOperation<KyC24, KyC24, KyBW8>(call, PerPixel([&](KyC24 old, KyC24 a, KyBW8 b) {
                                          return Pixel(operation, a, Grey(b), old);
                                        }));
  }
}

TEST(Operators, ConstantsOfEveryLevel) {
  Picture<KyBW8> ramp(259, 1);
  for (int x = 0; x < ramp.width; ++x) ramp.At(x, 0) = Level(x * 7);
  ForEachPath([&](const std::string&) {
    Random random(4);
    Canvas<KyBW8> source(ramp, {}, random), out(259, 1, {}, random);
    for (int operation = 2; operation <= 33; ++operation) {
      if (!Model(operation, 0, 0, 0) || (operation >= 16 && operation <= 18)) continue;
      const bool imageFirst =
          operation == 7 || operation == 8 || operation == 21 || operation == 22;
      for (int level = 0; level < 256; ++level) {
        SCOPED_TRACE(testing::Message() << "operation " << operation << ", constant " << level);
        const KyBW8 constant = Level(level);
        out.Put(ramp);
        Picture<KyBW8> expected = ramp;
        ASSERT_EQ(ImgOper(Op(operation), source.roi(), constant, out.roi()), KY_OK);
        PerPixel([&](KyBW8 o, KyBW8 v) { return Pixel(operation, v, constant, o); })(ramp,
                                                                                     expected);
        ASSERT_TRUE(Same(expected, out.Get()));
        if (imageFirst) continue;
        ASSERT_EQ(ImgOper(Op(operation), constant, source.roi(), out.roi()), KY_OK);
        PerPixel([&](KyBW8 o, KyBW8 v) { return Pixel(operation, constant, v, o); })(ramp,
                                                                                     expected);
        ASSERT_TRUE(Same(expected, out.Get()));
      }
    }
  });
}

TEST(Operators, ConstantsAtEveryPlace) {
  const KyC24 color(200, 3, 9);
  for (const int operation : {3, 8, 22}) {
    SCOPED_TRACE("operation " + std::to_string(operation));
    CheckOperation<KyBW8, KyBW8>(
        [&](auto* a, auto* out) { return ImgOper(Op(operation), a, KyBW8(5), out); },
        PerPixel([&](KyBW8 old, KyBW8 a) { return Pixel(operation, a, KyBW8(5), old); }));
    CheckOperation<KyC24, KyC24>(
        [&](auto* a, auto* out) { return ImgOper(Op(operation), a, color, out); },
        PerPixel([&](KyC24 old, KyC24 a) { return Pixel(operation, a, color, old); }));
  }
  CheckOperation<KyBW8, KyBW8>(
      [&](auto* b, auto* out) { return ImgOper(Op(3), KyBW8(100), b, out); },
      PerPixel([&](KyBW8 old, KyBW8 b) { return Pixel(3, KyBW8(100), b, old); }));
  CheckOperation<KyC24, KyC24>(
      [&](auto* b, auto* out) { return ImgOper(Op(3), color, b, out); },
      PerPixel([&](KyC24 old, KyC24 b) { return Pixel(3, color, b, old); }));
}

TEST(Operators, FillsCopiesAndInverses) {
  CheckOperation<KyBW8>([](auto* out) { return ImgCopy(KyBW8(77), out); },
                        PerPixel([](KyBW8) { return KyBW8(77); }));
  CheckOperation<KyBW8>([](auto* out) { return ImgOper(Op(0), KyBW8(0), out); },
                        PerPixel([](KyBW8) { return KyBW8(0); }));
  CheckOperation<KyC24>([](auto* out) { return ImgOper(Op(0), KyC24(1, 2, 3), out); },
                        PerPixel([](KyC24) { return KyC24(1, 2, 3); }));
  CheckOperation<KyBW16>([](auto* out) { return ImgOper(Op(0), KyBW16(0x1234), out); },
                         PerPixel([](KyBW16) { return KyBW16(0x1234); }));
  CheckOperation<KyBW8, KyBW8>([](auto... roi) { return ImgCopy(roi...); },
                               PerPixel([](KyBW8, KyBW8 a) { return a; }));
  for (const int operation : {0, 1}) {
    const int flip = operation == 0 ? 0 : 255;
    const auto call = [&](auto... roi) { return ImgOper(Op(operation), roi...); };
    CheckOperation<KyBW8, KyBW8>(call, PerPixel([&](KyBW8, KyBW8 a) { return Level(a ^ flip); }));
    CheckOperation<KyC24, KyBW8>(call,
                                 PerPixel([&](KyC24, KyBW8 a) { return Grey(Level(a ^ flip)); }));
    CheckOperation<KyC24, KyC24>(call, PerPixel([&](KyC24, KyC24 a) {
                                   return KyC24(Level(a.c0 ^ flip), Level(a.c1 ^ flip),
                                                Level(a.c2 ^ flip));
                                 }));
  }
}

TEST(Operators, Overlay) {
  EXPECT_EQ(ImgGetOverlayColor(), KyC24(0, 0, 255));
  const KyC24 color(250, 128, 7);
  ImgSetOverlayColor(color);
  EXPECT_EQ(ImgGetOverlayColor(), color);
  const auto call = [](auto... roi) { return ImgOper(KY_OPER_OVERLAY, roi...); };
  CheckOperation<KyC24, KyBW8>(call,
                               PerPixel([&](KyC24 old, KyBW8 a) { return a != 0 ? color : old; }));
  CheckOperation<KyC24, KyC24>(call,
                               PerPixel([](KyC24 old, KyC24 a) { return a == kBlack ? old : a; }));
  CheckOperation<KyC24, KyC24, KyC24>(
      call, PerPixel([](KyC24, KyC24 a, KyC24 b) { return b == kBlack ? a : b; }));
  CheckOperation<KyC24, KyBW8, KyBW8>(
      call, PerPixel([&](KyC24, KyBW8 a, KyBW8 b) { return b != 0 ? color : Grey(a); }));
  ImgSetOverlayColor({0, 0, 255});
}

TEST(Operators, Into16Bits) {
  const auto model = [](int operation, long long a, long long b, long long top) -> KyBW16 {
    switch (operation) {
      case 2: return static_cast<KyBW16>(std::min(a + b, top));
      case 3: return static_cast<KyBW16>(std::max(a - b, 0LL));
      case 4: return static_cast<KyBW16>(std::min(a * b, top));
      case 5: return static_cast<KyBW16>(b == 0 ? top : a / b);
      case 29: return static_cast<KyBW16>(a + b);
      default: return static_cast<KyBW16>(a - b);
    }
  };
  for (const int operation : {2, 3, 4, 5, 29, 30}) {
    SCOPED_TRACE("operation " + std::to_string(operation));
    const auto call = [&](auto... roi) { return ImgOper(Op(operation), roi...); };
    CheckOperation<KyBW16, KyBW16, KyBW8>(
        call, PerPixel([&](KyBW16, KyBW16 a, KyBW8 b) { return model(operation, a, b, 65535); }));
    if (operation > 5) continue;
    CheckOperation<KyBW16, KyBW8, KyBW8>(
        call, PerPixel([&](KyBW16, KyBW8 a, KyBW8 b) { return model(operation, a, b, 65535); }));
  }
  // Every quotient of 16 by 8 bits.
  Picture<KyBW16> a(65536, 1);
  for (int x = 0; x < a.width; ++x) a.At(x, 0) = static_cast<KyBW16>(x);
  ForEachPath([&](const std::string&) {
    Random random(5);
    Canvas<KyBW16> dividend(a, {}, random), out(a, {}, random);
    for (int divisor = 0; divisor < 256; ++divisor) {
      Canvas<KyBW8> second(Picture<KyBW8>(65536, 1, Level(divisor)), {}, random);
      ASSERT_EQ(ImgOper(KY_OPER_DIVIDE, dividend.roi(), second.roi(), out.roi()), KY_OK);
      Picture<KyBW16> expected = a;
      for (KyBW16& v : expected.pixels) v = model(5, v, divisor, 65535);
      ASSERT_TRUE(Same(expected, out.Get())) << "divisor " << divisor;
    }
  });
}

// Which operations an overload takes: 0 accepted and done, 1003 refused, 32767 accepted without a
// case.
TEST(Operators, OperationsOutsideTheList) {
  Random random(6);
  Canvas<KyBW8> a(5, 4, {}, random), b(5, 4, {}, random), out(5, 4, {}, random);
  Canvas<KyC24> colorA(5, 4, {}, random), colorB(5, 4, {}, random), colorOut(5, 4, {}, random);
  Canvas<KyBW16> wideA(5, 4, {}, random), wideOut(5, 4, {}, random);
  const KyBW8 level = 3;
  const KyC24 color(1, 2, 3);
  const auto in = [](int value, std::initializer_list<int> list) {
    return std::find(list.begin(), list.end(), value) != list.end();
  };
  for (int value = -3; value <= 70; ++value) {
    SCOPED_TRACE("operation " + std::to_string(value));
    const Operation op = Op(value);
    const auto only = [&](std::initializer_list<int> list) {
      return in(value, list) ? KY_OK : KY_ERROR_UNSUPPORTED_OPERATION;
    };
    // The forms with two operands: refused, done, or without a case.
    const auto twoOperands = [&](std::initializer_list<int> refused, bool overlay) {
      if (in(value, refused)) return KY_ERROR_UNSUPPORTED_OPERATION;
      const bool done = Model(value, 0, 0, 0).has_value() || (overlay && value == 34);
      return done ? KY_OK : KY_ERROR_INTERNAL;
    };
    const std::initializer_list<int> constantFirst = {7, 8, 16, 17, 18, 21, 22};
    EXPECT_EQ(ImgOper(op, level, out.roi()), only({0}));
    EXPECT_EQ(ImgOper(op, a.roi(), out.roi()), only({0, 1}));
    EXPECT_EQ(ImgOper(op, a.roi(), colorOut.roi()), only({0, 1, 34}));
    EXPECT_EQ(ImgOper(op, level, a.roi(), out.roi()), twoOperands(constantFirst, false));
    EXPECT_EQ(ImgOper(op, a.roi(), level, out.roi()), twoOperands({16, 17, 18}, false));
    EXPECT_EQ(ImgOper(op, a.roi(), b.roi(), out.roi()), twoOperands({7, 8}, false));
    EXPECT_EQ(ImgOper(op, color, colorOut.roi()), only({0}));
    EXPECT_EQ(ImgOper(op, colorA.roi(), colorOut.roi()), only({0, 1, 34}));
    EXPECT_EQ(ImgOper(op, color, colorA.roi(), colorOut.roi()), twoOperands(constantFirst, false));
    const bool above33 = value < 0 || value > 33;
    EXPECT_EQ(ImgOper(op, colorA.roi(), color, colorOut.roi()),
              above33 ? KY_ERROR_UNSUPPORTED_OPERATION : twoOperands({16, 17, 18}, false));
    EXPECT_EQ(ImgOper(op, colorA.roi(), colorB.roi(), colorOut.roi()), twoOperands({7, 8}, true));
    EXPECT_EQ(ImgOper(op, a.roi(), colorA.roi(), colorOut.roi()), twoOperands({7, 8}, false));
    EXPECT_EQ(ImgOper(op, colorA.roi(), a.roi(), colorOut.roi()), twoOperands({7, 8}, false));
    EXPECT_EQ(ImgOper(op, a.roi(), b.roi(), colorOut.roi()), only({34}));
    EXPECT_EQ(ImgOper(op, KyBW16(1), wideOut.roi()), only({0}));
    EXPECT_EQ(ImgOper(op, a.roi(), b.roi(), wideOut.roi()), only({2, 3, 4, 5}));
    EXPECT_EQ(ImgOper(op, wideA.roi(), b.roi(), wideOut.roi()), only({2, 3, 4, 5, 29, 30}));
    // A refused operation comes before the ROIs, one without a case after them.
    const KyROI<KyBW8> nowhere;
    const KY_ERRORS expected =
        in(value, {7, 8}) ? KY_ERROR_UNSUPPORTED_OPERATION : KY_ERROR_NO_IMAGE;
    EXPECT_EQ(ImgOper(op, &nowhere, b.roi(), out.roi()), expected);
  }
  // A refusal writes nothing.
  out.Put(out.Get());
  ImgOper(Op(31), a.roi(), b.roi(), out.roi());
  ImgOper(Op(7), a.roi(), b.roi(), out.roi());
  EXPECT_TRUE(out.Unchanged());
}

}  // namespace
