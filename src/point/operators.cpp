#include "ky/operators.h"

#include <atomic>
#include <initializer_list>

#include "foundation/frame.h"
#include "foundation/kernels/operators_rows.h"
#include "foundation/map.h"
#include "foundation/stream.h"

namespace {

using ky::Call;
using ky::ChooseOperatorKernels;
using ky::ComponentRowsOf;
using ky::FromConstant;
using ky::FromGreyAsColor;
using ky::FromRows;
using ky::MapRows;
using ky::RoiNames;
using ky::Rows;
using ky::RowsOf;
using ky::ShiftOperand;
using Operation = ARITH_LOGIC_OPERATIONS;

// The operations that an overload accepts. Compared as unsigned, a negative one lies above the
// list.
class Operations {
 public:
  static constexpr Operations Only(std::initializer_list<int> members) { return {0, members}; }
  static constexpr Operations AllBut(std::initializer_list<int> others, bool open = true) {
    return {open ? ~0ull : (1ull << (KY_OPER_ABS_DIFFERENCE + 1)) - 1, others};
  }
  constexpr bool Accept(Operation operation) const {
    const unsigned bit = static_cast<unsigned>(operation);
    return (bits_ >> (bit < 63 ? bit : 63) & 1) != 0;
  }

 private:
  constexpr Operations(unsigned long long start, std::initializer_list<int> flipped)
      : bits_(start) {
    for (const int operation : flipped) bits_ ^= 1ull << operation;
  }
  unsigned long long bits_;
};

constexpr Operations kFill = Operations::Only({KY_OPER_COPY});
constexpr Operations kUnary = Operations::Only({KY_OPER_COPY, KY_OPER_INVERT});
constexpr Operations kUnaryOrOverlay =
    Operations::Only({KY_OPER_COPY, KY_OPER_INVERT, KY_OPER_OVERLAY});
constexpr Operations kConstantAndImage = Operations::AllBut(
    {KY_OPER_SHIFT_LEFT, KY_OPER_SHIFT_RIGHT, KY_OPER_LOGICAL_AND, KY_OPER_LOGICAL_OR,
     KY_OPER_LOGICAL_XOR, KY_OPER_SET_WHERE_ZERO, KY_OPER_SET_WHERE_NONZERO});
constexpr Operations kImageAndConstant =
    Operations::AllBut({KY_OPER_LOGICAL_AND, KY_OPER_LOGICAL_OR, KY_OPER_LOGICAL_XOR});
constexpr Operations kColorImageAndConstant =
    Operations::AllBut({KY_OPER_LOGICAL_AND, KY_OPER_LOGICAL_OR, KY_OPER_LOGICAL_XOR}, false);
constexpr Operations kTwoImages = Operations::AllBut({KY_OPER_SHIFT_LEFT, KY_OPER_SHIFT_RIGHT});
constexpr Operations kOverlay = Operations::Only({KY_OPER_OVERLAY});
constexpr Operations kGreyTo16 =
    Operations::Only({KY_OPER_ADD, KY_OPER_SUBTRACT, KY_OPER_MULTIPLY, KY_OPER_DIVIDE});
constexpr Operations kGrey16 =
    Operations::Only({KY_OPER_ADD, KY_OPER_SUBTRACT, KY_OPER_MULTIPLY, KY_OPER_DIVIDE,
                      KY_OPER_ADD_WRAP, KY_OPER_SUBTRACT_WRAP});

constexpr RoiNames kDestination = {{"destination"}},
                   kA = {{"a", "destination"}, "a and destination differ in size"},
                   kB = {{"b", "destination"}, "b and destination differ in size"},
                   kAAndB = {{"a", "b", "destination"}};

// The frame that all overloads share: the operation against the accepted set, the ROIs, the work.
template <class Work, class... Rois>
KY_ERRORS Operate(const RoiNames& names, const char* name, Operation operation, Operations accepted,
                  Work work, const Rois*... rois) noexcept {
  return Call(name, [&] {
    if (!accepted.Accept(operation))
      return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, "operation");
    if (const KY_ERRORS error = ky::CheckRois(names, rois...)) return error;
    return work(ChooseOperatorKernels());
  });
}

// The kernel of an operation out of a table, null where there is none.
template <class Kernel>
Kernel KernelOf(const Kernel (&table)[KY_OPER_OVERLAY + 1], Operation operation) noexcept {
  const unsigned index = static_cast<unsigned>(operation);
  return index <= KY_OPER_OVERLAY ? table[index] : nullptr;
}
// Two operands of 8-bit elements.
template <class Roi, class A, class B>
KY_ERRORS Combine(const ky::OperatorKernels& kernels, Operation operation, Roi* destination, A&& a,
                  B&& b) noexcept {
  const auto kernel = KernelOf(kernels.combine, operation);
  if (kernel == nullptr) return KY_ERROR_INTERNAL;
  const Rows<KyBW8> out = ComponentRowsOf(destination);
  const bool keeps = operation == KY_OPER_SET_WHERE_ZERO || operation == KY_OPER_SET_WHERE_NONZERO;
  return keeps ? MapRows(kernel, out, a, b)
               : ky::MapFreshRows({kernel, KernelOf(kernels.stream, operation)}, out, a, b);
}
bool IsShift(Operation operation) noexcept {
  return operation == KY_OPER_SHIFT_LEFT || operation == KY_OPER_SHIFT_RIGHT;
}

// A constant as an operand of `operation`.
FromConstant<KyBW8> Constant(KyBW8 value) noexcept { return FromConstant<KyBW8>({value}); }
FromConstant<KyBW8, 3> Constant(KyC24 value) noexcept {
  return FromConstant<KyBW8, 3>({value.c0, value.c1, value.c2});
}
KyBW8 SecondOperand(Operation operation, KyBW8 value) noexcept {
  return IsShift(operation) ? ShiftOperand(operation, value) : value;
}
KyC24 SecondOperand(Operation operation, KyC24 value) noexcept {
  return {SecondOperand(operation, value.c0), SecondOperand(operation, value.c1),
          SecondOperand(operation, value.c2)};
}

// The overloads that differ in nothing but the pixel type.
template <class T>
KY_ERRORS Fill(const char* name, Operation operation, T value, KyROI<T>* destination) noexcept {
  return Operate(
      kDestination, name, operation, kFill,
      [&](const auto&) { return ky::CopyFreshRows(ComponentRowsOf(destination), Constant(value)); },
      destination);
}
template <class T>
KY_ERRORS CopyOrInvert(const ky::OperatorKernels& kernels, Operation operation, const KyROI<T>* a,
                       KyROI<T>* destination) noexcept {
  if (operation == KY_OPER_INVERT)
    return ky::MapFreshRows({kernels.invert, kernels.streamInvert}, ComponentRowsOf(destination),
                            FromRows(ComponentRowsOf(a)));
  return ky::CopyFreshRows(ComponentRowsOf(destination), FromRows(ComponentRowsOf(a)));
}
template <class T>
KY_ERRORS ConstantAndImage(const char* name, Operation operation, T a, const KyROI<T>* b,
                           KyROI<T>* destination) noexcept {
  return Operate(
      kB, name, operation, kConstantAndImage,
      [&](const auto& kernels) {
        return Combine(kernels, operation, destination, Constant(a), FromRows(ComponentRowsOf(b)));
      },
      b, destination);
}
template <class T>
KY_ERRORS ImageAndConstant(const char* name, Operation operation, Operations accepted,
                           const KyROI<T>* a, T b, KyROI<T>* destination) noexcept {
  return Operate(
      kA, name, operation, accepted,
      [&](const auto& kernels) {
        return Combine(kernels, operation, destination, FromRows(ComponentRowsOf(a)),
                       Constant(SecondOperand(operation, b)));
      },
      a, destination);
}
FromGreyAsColor GreyAsColor(const KyROI<KyBW8>* roi, const ky::OperatorKernels& kernels) noexcept {
  return FromGreyAsColor(RowsOf(roi), kernels.triple);
}

constexpr unsigned Pack(KyC24 color) noexcept {
  return color.c0 | unsigned{color.c1} << 8 | unsigned{color.c2} << 16;
}
// Three bytes in one word, as a three-byte atomic would need a lock.
std::atomic<unsigned> overlayColor{Pack({0, 0, 255})};

}  // namespace

void ImgSetOverlayColor(KyC24 color) noexcept {
  overlayColor.store(Pack(color), std::memory_order_relaxed);
}

KyC24 ImgGetOverlayColor() noexcept {
  const unsigned color = overlayColor.load(std::memory_order_relaxed);
  return {static_cast<KyBW8>(color), static_cast<KyBW8>(color >> 8),
          static_cast<KyBW8>(color >> 16)};
}

KY_ERRORS ImgCopy(KyBW8 value, KyROI<KyBW8>* destination) noexcept {
  return Fill("ImgCopy (BW8 Const to Image)", KY_OPER_COPY, value, destination);
}

KY_ERRORS ImgCopy(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Operate(
      ky::kSourceAndDestination, "ImgOper (BW8 Image to Image)", KY_OPER_COPY, kUnary,
      [&](const auto& kernels) { return CopyOrInvert(kernels, KY_OPER_COPY, source, destination); },
      source, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, KyBW8 a, KyROI<KyBW8>* destination) noexcept {
  return Fill("ImgOper (BW8 Const to Image)", operation, a, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a,
                  KyROI<KyBW8>* destination) noexcept {
  return Operate(
      kA, "ImgOper (BW8 Image to Image)", operation, kUnary,
      [&](const auto& kernels) { return CopyOrInvert(kernels, operation, a, destination); }, a,
      destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a,
                  KyROI<KyC24>* destination) noexcept {
  return Operate(
      kA, "ImgOper (BW8 Image to C24 Image)", operation, kUnaryOrOverlay,
      [&](const auto& kernels) {
        if (operation == KY_OPER_OVERLAY)
          return MapRows(kernels.combine[KY_OPER_SET_WHERE_NONZERO], ComponentRowsOf(destination),
                         GreyAsColor(a, kernels), Constant(ImgGetOverlayColor()));
        return ky::MapFreshRows(
            {operation == KY_OPER_COPY ? kernels.triple : kernels.tripleInverse},
            RowsOf(destination), FromRows(RowsOf(a)));
      },
      a, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, KyBW8 a, const KyROI<KyBW8>* b,
                  KyROI<KyBW8>* destination) noexcept {
  return ConstantAndImage("ImgOper (BW8 Const, Image to Image)", operation, a, b, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a, KyBW8 b,
                  KyROI<KyBW8>* destination) noexcept {
  return ImageAndConstant("ImgOper (BW8 Image, Const to Image)", operation, kImageAndConstant, a, b,
                          destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a, const KyROI<KyBW8>* b,
                  KyROI<KyBW8>* destination) noexcept {
  return Operate(
      kAAndB, "ImgOper (BW8 Image, Image to Image)", operation, kTwoImages,
      [&](const auto& kernels) {
        return Combine(kernels, operation, destination, FromRows(ComponentRowsOf(a)),
                       FromRows(ComponentRowsOf(b)));
      },
      a, b, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, KyC24 a, KyROI<KyC24>* destination) noexcept {
  return Fill("ImgOper (C24 Const to Image)", operation, a, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyC24>* a,
                  KyROI<KyC24>* destination) noexcept {
  return Operate(
      kA, "ImgOper (C24 Image to Image)", operation, kUnaryOrOverlay,
      [&](const auto& kernels) {
        if (operation != KY_OPER_OVERLAY) return CopyOrInvert(kernels, operation, a, destination);
        return MapRows(kernels.overlay, RowsOf(destination), FromRows(RowsOf(destination)),
                       FromRows(RowsOf(a)));
      },
      a, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, KyC24 a, const KyROI<KyC24>* b,
                  KyROI<KyC24>* destination) noexcept {
  return ConstantAndImage("ImgOper (C24 Const, Image to Image)", operation, a, b, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyC24>* a, KyC24 b,
                  KyROI<KyC24>* destination) noexcept {
  return ImageAndConstant("ImgOper (C24 Image, Const to Image)", operation, kColorImageAndConstant,
                          a, b, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyC24>* a, const KyROI<KyC24>* b,
                  KyROI<KyC24>* destination) noexcept {
  return Operate(
      kAAndB, "ImgOper (C24 Image, Image to Image)", operation, kTwoImages,
      [&](const auto& kernels) {
        if (operation == KY_OPER_OVERLAY)
          return MapRows(kernels.overlay, RowsOf(destination), FromRows(RowsOf(a)),
                         FromRows(RowsOf(b)));
        return Combine(kernels, operation, destination, FromRows(ComponentRowsOf(a)),
                       FromRows(ComponentRowsOf(b)));
      },
      a, b, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a, const KyROI<KyC24>* b,
                  KyROI<KyC24>* destination) noexcept {
  return Operate(
      kAAndB, "ImgOper (BW8 Image, C24 Image to C24 Image)", operation, kTwoImages,
      [&](const auto& kernels) {
        return Combine(kernels, operation, destination, GreyAsColor(a, kernels),
                       FromRows(ComponentRowsOf(b)));
      },
      a, b, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyC24>* a, const KyROI<KyBW8>* b,
                  KyROI<KyC24>* destination) noexcept {
  return Operate(
      kAAndB, "ImgOper (C24 Image, BW8 Image to C24 Image)", operation, kTwoImages,
      [&](const auto& kernels) {
        return Combine(kernels, operation, destination, FromRows(ComponentRowsOf(a)),
                       GreyAsColor(b, kernels));
      },
      a, b, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a, const KyROI<KyBW8>* b,
                  KyROI<KyC24>* destination) noexcept {
  return Operate(
      kAAndB, "ImgOper (BW8 Image, BW8 Image to C24 Image)", operation, kOverlay,
      [&](const auto& kernels) {
        return MapRows(kernels.overlayWhere, ComponentRowsOf(destination), GreyAsColor(a, kernels),
                       GreyAsColor(b, kernels), Constant(ImgGetOverlayColor()));
      },
      a, b, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, KyBW16 a, KyROI<KyBW16>* destination) noexcept {
  return Operate(
      kDestination, "ImgOper (BW16 Const to BW16 Image)", operation, kFill,
      [&](const auto&) { return ky::CopyRows(RowsOf(destination), FromConstant<KyBW16>({a})); },
      destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a, const KyROI<KyBW8>* b,
                  KyROI<KyBW16>* destination) noexcept {
  return Operate(
      kAAndB, "ImgOper (BW8 Image and BW8 Image to BW16 Image)", operation, kGreyTo16,
      [&](const auto& kernels) {
        return MapRows(KernelOf(kernels.combine8To16, operation), RowsOf(destination),
                       FromRows(RowsOf(a)), FromRows(RowsOf(b)));
      },
      a, b, destination);
}

KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW16>* a, const KyROI<KyBW8>* b,
                  KyROI<KyBW16>* destination) noexcept {
  return Operate(
      kAAndB, "ImgOper (BW16 Image and BW8 Image to BW16 IMage)", operation, kGrey16,
      [&](const auto& kernels) {
        return MapRows(KernelOf(kernels.combine16, operation), RowsOf(destination),
                       FromRows(RowsOf(a)), FromRows(RowsOf(b)));
      },
      a, b, destination);
}
