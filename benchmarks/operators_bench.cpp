// The arithmetic and logic operators in all their forms.
#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

// OpenCV's nearest on matrices, or on a matrix and a constant.
#if KY_BENCH_OPENCV
using In = const cv::_InputArray&;
using OnMatrices = void (*)(In a, In b, const cv::_OutputArray& out);
#define NEAREST(...) [](In a, In b, const cv::_OutputArray& out) { __VA_ARGS__; }
#else
using OnMatrices = std::nullptr_t;
#define NEAREST(...) nullptr
#endif
constexpr OnMatrices kNothing = nullptr;

// The forms that an operator is measured in, beside that of two grey images.
enum Forms {
  kImages = 0,
  kConstant = 1,  // an image and a constant
  kBoth = 3,      // and also a constant and an image, where that is other work
  kColor = 4,     // stands for its kin in the colour forms, the mixed ones included
};

struct Operator {
  ARITH_LOGIC_OPERATIONS operation;
  const char* name;
  int forms;
  OnMatrices opencv;
};

const Operator kOperators[] = {
    {KY_OPER_ADD, "add", kConstant | kColor, NEAREST(cv::add(a, b, out))},
    {KY_OPER_SUBTRACT, "subtract", kBoth | kColor, NEAREST(cv::subtract(a, b, out))},
    {KY_OPER_MULTIPLY, "multiply", kConstant | kColor, NEAREST(cv::multiply(a, b, out))},
    {KY_OPER_DIVIDE, "divide", kBoth | kColor, NEAREST(cv::divide(a, b, out))},
    {KY_OPER_MODULO, "modulo", kBoth, NEAREST(cv::divide(a, b, out))},
    {KY_OPER_AVERAGE, "average", kConstant | kColor,
     NEAREST(cv::addWeighted(a, 0.5, b, 0.5, 0, out))},
    {KY_OPER_HALF_DIFFERENCE, "half difference", kBoth,
     NEAREST(cv::addWeighted(a, 0.5, b, -0.5, 127.5, out))},
    {KY_OPER_SCALED_MULTIPLY, "scaled multiply", kConstant,
     NEAREST(cv::multiply(a, b, out, 1 / 256.0))},
    {KY_OPER_SCALED_DIVIDE, "scaled divide", kBoth | kColor, NEAREST(cv::divide(a, b, out, 256))},
    {KY_OPER_AND, "and", kConstant | kColor, NEAREST(cv::bitwise_and(a, b, out))},
    {KY_OPER_OR, "or", kConstant, NEAREST(cv::bitwise_or(a, b, out))},
    {KY_OPER_XOR, "xor", kConstant, NEAREST(cv::bitwise_xor(a, b, out))},
    {KY_OPER_LOGICAL_AND, "logical and", kImages, kNothing},
    {KY_OPER_LOGICAL_OR, "logical or", kImages, kNothing},
    {KY_OPER_LOGICAL_XOR, "logical xor", kImages, kNothing},
    {KY_OPER_MIN, "min", kConstant, NEAREST(cv::min(a, b, out))},
    {KY_OPER_MAX, "max", kConstant | kColor, NEAREST(cv::max(a, b, out))},
    {KY_OPER_SET_WHERE_ZERO, "set where zero", kImages, kNothing},
    {KY_OPER_SET_WHERE_NONZERO, "set where nonzero", kImages, NEAREST(b.copyTo(out, a))},
    {KY_OPER_EQUAL, "equal", kConstant | kColor, NEAREST(cv::compare(a, b, out, cv::CMP_EQ))},
    {KY_OPER_NOT_EQUAL, "not equal", kConstant, NEAREST(cv::compare(a, b, out, cv::CMP_NE))},
    {KY_OPER_GREATER_OR_EQUAL, "greater or equal", kConstant,
     NEAREST(cv::compare(a, b, out, cv::CMP_GE))},
    {KY_OPER_LESS_OR_EQUAL, "less or equal", kConstant,
     NEAREST(cv::compare(a, b, out, cv::CMP_LE))},
    {KY_OPER_GREATER, "greater", kConstant, NEAREST(cv::compare(a, b, out, cv::CMP_GT))},
    {KY_OPER_LESS, "less", kConstant, NEAREST(cv::compare(a, b, out, cv::CMP_LT))},
    {KY_OPER_ABS_DIFFERENCE, "absolute difference", kConstant | kColor,
     NEAREST(cv::absdiff(a, b, out))},
};

constexpr KyBW8 kLevel = 77;
const KyC24 kColorLevel(77, 3, 200);

#if KY_BENCH_OPENCV
const cv::Scalar kCvLevel(kLevel), kCvColorLevel(kColorLevel.c0, kColorLevel.c1, kColorLevel.c2);

// OpenCV's contender: `call` gives `f` its arguments.
template <class Call>
Contender Nearest(OnMatrices f, Call call) {
  if (f == nullptr) return nullptr;
  return [f, call](Pictures& p) { call(f, p.views); };
}
#define ON(...) [](OnMatrices f, Views& v) { __VA_ARGS__; }
#else
Contender Nearest(OnMatrices, std::nullptr_t) { return nullptr; }
#define ON(...) nullptr
#endif

std::vector<Operation> Table() {
  std::vector<Operation> table;
  for (const Operator& o : kOperators) {
    const std::string name = o.name;
    const auto op = o.operation;
    table.push_back({name, [op](Pictures& p) { ImgOper(op, &p.a, &p.b, &p.out); },
                     Nearest(o.opencv, ON(f(v.a, v.b, v.out))), Limit::kTwoStreams});
  }
  for (const Operator& o : kOperators) {
    if ((o.forms & kConstant) == 0) continue;
    const std::string name = o.name;
    const auto op = o.operation;
    table.push_back({name + ", constant", [op](Pictures& p) { ImgOper(op, &p.a, kLevel, &p.out); },
                     Nearest(o.opencv, ON(f(v.a, kCvLevel, v.out))), Limit::kCopy});
    if ((o.forms & kBoth) != kBoth) continue;
    table.push_back({"constant, " + name, [op](Pictures& p) { ImgOper(op, kLevel, &p.b, &p.out); },
                     Nearest(o.opencv, ON(f(kCvLevel, v.b, v.out))), Limit::kCopy});
  }
  for (const Operator& o : kOperators) {
    if ((o.forms & kColor) == 0) continue;
    const std::string name = o.name;
    const auto op = o.operation;
    table.push_back({"C24 " + name,
                     [op](Pictures& p) { ImgOper(op, &p.colorA, &p.colorB, &p.colorOut); },
                     Nearest(o.opencv, ON(f(v.colorA, v.colorB, v.colorOut))), Limit::kTwoStreams,
                     Pixel::kColor});
    table.push_back({"C24 " + name + ", constant",
                     [op](Pictures& p) { ImgOper(op, &p.colorA, kColorLevel, &p.colorOut); },
                     Nearest(o.opencv, ON(f(v.colorA, kCvColorLevel, v.colorOut))), Limit::kCopy,
                     Pixel::kColor});
    table.push_back({
      "BW8, C24 " + name, [op](Pictures& p) { ImgOper(op, &p.a, &p.colorB, &p.colorOut); },
          Nearest(o.opencv, ON(cv::cvtColor(v.a, v.work[0], cv::COLOR_GRAY2BGR);
                               f(v.work[0], v.colorB, v.colorOut))),
          Limit::kTwoStreams, Pixel::kColor
    });
  }
  return table;
}

const bool operators = Register(Table());

const bool others = Register({
    {"copy", [](Pictures& p) { ImgCopy(&p.a, &p.out); }, OPENCV(v.a.copyTo(v.out)), Limit::kCopy},
    {"fill", [](Pictures& p) { ImgCopy(kLevel, &p.out); }, OPENCV(v.out.setTo(kCvLevel)),
     Limit::kFill},
    {"invert", [](Pictures& p) { ImgOper(KY_OPER_INVERT, &p.a, &p.out); },
     OPENCV(cv::bitwise_not(v.a, v.out)), Limit::kCopy},
    {"shift left", [](Pictures& p) { ImgOper(KY_OPER_SHIFT_LEFT, &p.a, KyBW8(2), &p.out); },
     OPENCV(v.a.convertTo(v.out, -1, 4)), Limit::kCopy},
    {"shift right", [](Pictures& p) { ImgOper(KY_OPER_SHIFT_RIGHT, &p.a, KyBW8(2), &p.out); },
     OPENCV(v.a.convertTo(v.out, -1, 0.25)), Limit::kCopy},
    {"set where zero, constant",
     [](Pictures& p) { ImgOper(KY_OPER_SET_WHERE_ZERO, &p.a, kLevel, &p.out); }, nullptr,
     Limit::kTwoStreams},
    {"set where nonzero, constant",
     [](Pictures& p) { ImgOper(KY_OPER_SET_WHERE_NONZERO, &p.a, kLevel, &p.out); },
     OPENCV(v.out.setTo(kCvLevel, v.a)), Limit::kTwoStreams},
    {"C24 copy", [](Pictures& p) { ImgOper(KY_OPER_COPY, &p.colorA, &p.colorOut); },
     OPENCV(v.colorA.copyTo(v.colorOut)), Limit::kCopy, Pixel::kColor},
    {"C24 fill", [](Pictures& p) { ImgOper(KY_OPER_COPY, kColorLevel, &p.colorOut); },
     OPENCV(v.colorOut.setTo(kCvColorLevel)), Limit::kFill, Pixel::kColor},
    {"C24 invert", [](Pictures& p) { ImgOper(KY_OPER_INVERT, &p.colorA, &p.colorOut); },
     OPENCV(cv::bitwise_not(v.colorA, v.colorOut)), Limit::kCopy, Pixel::kColor},
    {"C24 overlay",
     [](Pictures& p) { ImgOper(KY_OPER_OVERLAY, &p.colorA, &p.colorB, &p.colorOut); }, nullptr,
     Limit::kTwoStreams, Pixel::kColor},
    {"C24 overlay onto itself",
     [](Pictures& p) { ImgOper(KY_OPER_OVERLAY, &p.colorA, &p.colorOut); }, nullptr,
     Limit::kTwoStreams, Pixel::kColor},
    {"BW8 to C24 copy", [](Pictures& p) { ImgOper(KY_OPER_COPY, &p.a, &p.colorOut); },
     OPENCV(cv::cvtColor(v.a, v.colorOut, cv::COLOR_GRAY2BGR)), Limit::kCopy, Pixel::kColor},
    {"BW8 to C24 invert", [](Pictures& p) { ImgOper(KY_OPER_INVERT, &p.a, &p.colorOut); }, nullptr,
     Limit::kCopy, Pixel::kColor},
    {"BW8 to C24 overlay", [](Pictures& p) { ImgOper(KY_OPER_OVERLAY, &p.a, &p.colorOut); },
     OPENCV(v.colorOut.setTo(cv::Scalar(0, 0, 255), v.a)), Limit::kCopy, Pixel::kColor},
    {"BW8, BW8 to C24 overlay",
     [](Pictures& p) { ImgOper(KY_OPER_OVERLAY, &p.a, &p.b, &p.colorOut); },
     OPENCV(cv::cvtColor(v.a, v.colorOut, cv::COLOR_GRAY2BGR);
            v.colorOut.setTo(cv::Scalar(0, 0, 255), v.b)),
     Limit::kCopy, Pixel::kColor},
    {"BW16 fill", [](Pictures& p) { ImgOper(KY_OPER_COPY, KyBW16(777), &p.deepOut); },
     OPENCV(v.deepOut.setTo(cv::Scalar(777))), Limit::kFill, Pixel::kDeep},
    {"BW8, BW8 to BW16 add", [](Pictures& p) { ImgOper(KY_OPER_ADD, &p.a, &p.b, &p.deepOut); },
     OPENCV(cv::add(v.a, v.b, v.deepOut, cv::noArray(), CV_16U)), Limit::kTwoStreams, Pixel::kDeep},
    {"BW8, BW8 to BW16 subtract",
     [](Pictures& p) { ImgOper(KY_OPER_SUBTRACT, &p.a, &p.b, &p.deepOut); },
     OPENCV(cv::subtract(v.a, v.b, v.deepOut, cv::noArray(), CV_16U)), Limit::kTwoStreams,
     Pixel::kDeep},
    {"BW8, BW8 to BW16 multiply",
     [](Pictures& p) { ImgOper(KY_OPER_MULTIPLY, &p.a, &p.b, &p.deepOut); },
     OPENCV(cv::multiply(v.a, v.b, v.deepOut, 1, CV_16U)), Limit::kTwoStreams, Pixel::kDeep},
    {"BW8, BW8 to BW16 divide",
     [](Pictures& p) { ImgOper(KY_OPER_DIVIDE, &p.a, &p.b, &p.deepOut); },
     OPENCV(cv::divide(v.a, v.b, v.deepOut, 1, CV_16U)), Limit::kTwoStreams, Pixel::kDeep},
    {"BW16, BW8 add", [](Pictures& p) { ImgOper(KY_OPER_ADD, &p.deepA, &p.b, &p.deepOut); },
     OPENCV(cv::add(v.deepA, v.b, v.deepOut, cv::noArray(), CV_16U)), Limit::kTwoStreams,
     Pixel::kDeep},
    {"BW16, BW8 subtract",
     [](Pictures& p) { ImgOper(KY_OPER_SUBTRACT, &p.deepA, &p.b, &p.deepOut); },
     OPENCV(cv::subtract(v.deepA, v.b, v.deepOut, cv::noArray(), CV_16U)), Limit::kTwoStreams,
     Pixel::kDeep},
    {"BW16, BW8 multiply",
     [](Pictures& p) { ImgOper(KY_OPER_MULTIPLY, &p.deepA, &p.b, &p.deepOut); },
     OPENCV(cv::multiply(v.deepA, v.b, v.deepOut, 1, CV_16U)), Limit::kTwoStreams, Pixel::kDeep},
    {"BW16, BW8 divide", [](Pictures& p) { ImgOper(KY_OPER_DIVIDE, &p.deepA, &p.b, &p.deepOut); },
     OPENCV(cv::divide(v.deepA, v.b, v.deepOut, 1, CV_16U)), Limit::kTwoStreams, Pixel::kDeep},
    {"BW16, BW8 add wrap",
     [](Pictures& p) { ImgOper(KY_OPER_ADD_WRAP, &p.deepA, &p.b, &p.deepOut); }, nullptr,
     Limit::kTwoStreams, Pixel::kDeep},
    {"BW16, BW8 subtract wrap",
     [](Pictures& p) { ImgOper(KY_OPER_SUBTRACT_WRAP, &p.deepA, &p.b, &p.deepOut); }, nullptr,
     Limit::kTwoStreams, Pixel::kDeep},
});

}  // namespace
}  // namespace ky::bench
