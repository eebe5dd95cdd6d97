#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/kernels/operators_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/kernels/operators_rows.h"

#include "foundation/dispatch.h"
#include "foundation/kernels/division-inl.h"
#include "foundation/spans-inl.h"
#include "foundation/stream-inl.h"
#include "foundation/widen-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

struct Op8 {
  using Lane = uint8_t;
};
struct Op16 {
  using Lane = uint16_t;
};

// 255 where the mask holds, else 0.
template <class D, class M>
HWY_INLINE hn::Vec<D> Truth(D d, M mask) {
  return hn::VecFromMask(d, mask);
}
template <class D>
HWY_INLINE hn::Vec<D> Ones(D d) {
  return hn::Set(d, hwy::LimitsMax<hn::TFromD<D>>());
}
template <class D, class V>
HWY_INLINE auto IsZero(D d, V v) {
  return hn::Eq(v, hn::Zero(d));
}

struct Invert : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a) const {
    return hn::Xor(a, Ones(d));
  }
};

// For lanes of 8 and 16 bits alike.
template <class Base>
struct Add : Base {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::SaturatedAdd(a, b);
  }
};
template <class Base>
struct Subtract : Base {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::SaturatedSub(a, b);
  }
};

struct Multiply {
  template <class D16, class V>
  HWY_INLINE V operator()(D16 d16, V a, V b) const {
    return hn::Min(hn::Mul(a, b), hn::Set(d16, 255));
  }
};

struct ShiftLeft {
  template <class D16, class V>
  HWY_INLINE V operator()(D16 d16, V a, V factor) const {
    return hn::And(hn::Mul(a, factor), hn::Set(d16, 255));
  }
};
struct ShiftRight {
  template <class D16, class V>
  HWY_INLINE V operator()(D16, V a, V factorLess1) const {
    return hn::ShiftRight<8>(hn::Add(hn::Mul(a, factorLess1), a));
  }
};

struct Average : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    const V roundedUp = hn::And(hn::Xor(a, b), hn::Set(d, 1));
    return hn::Sub(hn::AverageRound(a, b), roundedUp);
  }
};
struct HalfDifference : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    return Average()(d, a, Invert()(d, b));
  }
};
struct ScaledMultiply {
  template <class D16, class V>
  HWY_INLINE V operator()(D16, V a, V b) const {
    return hn::ShiftRight<8>(hn::Mul(a, b));
  }
};

struct And : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::And(a, b);
  }
};
struct Or : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::Or(a, b);
  }
};
struct Xor : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::Xor(a, b);
  }
};
struct LogicalAnd : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    return Invert()(d, Truth(d, IsZero(d, hn::Min(a, b))));
  }
};
struct LogicalOr : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    return Invert()(d, Truth(d, IsZero(d, hn::Or(a, b))));
  }
};
struct LogicalXor : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    return hn::Xor(Truth(d, IsZero(d, a)), Truth(d, IsZero(d, b)));
  }
};

struct Minimum : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::Min(a, b);
  }
};
struct Maximum : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::Max(a, b);
  }
};

struct SetWhereZero : Op8 {
  static constexpr bool kKeeps = true;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V old, V a, V b) const {
    return hn::IfThenElse(IsZero(d, a), b, old);
  }
};
struct SetWhereNonzero : Op8 {
  static constexpr bool kKeeps = true;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V old, V a, V b) const {
    return hn::IfThenElse(IsZero(d, a), old, b);
  }
};
struct OverlayWhere : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b, V c) const {
    return hn::IfThenElse(IsZero(d, b), a, c);
  }
};

struct Equal : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    return Truth(d, hn::Eq(a, b));
  }
};
struct GreaterOrEqual : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    return Truth(d, hn::Eq(hn::Max(a, b), a));
  }
};
// The same question with the operands exchanged, and its opposite.
template <class Question>
struct Exchanged : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    return Question()(d, b, a);
  }
};
template <class Question>
struct Not : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    return Invert()(d, Question()(d, a, b));
  }
};
using LessOrEqual = Exchanged<GreaterOrEqual>;

struct AbsDifference : Op8 {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
  }
};

struct AddWrap : Op16 {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::Add(a, b);
  }
};
struct SubtractWrap : Op16 {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::Sub(a, b);
  }
};
struct Multiply16 : Op16 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    return hn::IfThenElse(IsZero(d, hn::MulHigh(a, b)), hn::Mul(a, b), Ones(d));
  }
};
struct Divide8To16 : Op16 {
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    return hn::Or(Truth(d, IsZero(d, b)), WideDivide()(d, a, b));
  }
};
// One Newton step brings the reciprocal within 2^-21, so that the quotient of a + 1/2 is wrong by
// less than (a + 1/2) * 2^-20 / b. That is less than its distance of 1 / 2b from every integer.
struct Divide16 : Op16 {
  struct Quotient {
    template <class DF, class VF>
    HWY_INLINE VF operator()(DF df, VF a, VF b) const {
      const VF half = hn::Set(df, 0.5f);
      const VF near = RoughReciprocal(b);
      const VF reciprocal = hn::Mul(near, hn::Sub(hn::Set(df, 2.0f), hn::Mul(b, near)));
      const VF quotient = hn::Mul(hn::Add(a, half), reciprocal);
      return hn::Add(hn::Sub(quotient, half), hn::Set(df, 1.5f * (1 << 23)));
    }
  };
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    const V quotient = InFloat(d, Quotient(), a, hn::Max(b, hn::Set(d, 1)));
    return hn::Or(Truth(d, IsZero(d, b)), quotient);
  }
};

struct Overlay : Op8 {
  template <class D, class V>
  HWY_INLINE Planes3<V> operator()(D d, const Planes3<V>& a, const Planes3<V>& b) const {
    const auto black = IsZero(d, hn::Or(b.c0, hn::Or(b.c1, b.c2)));
    return {hn::IfThenElse(black, a.c0, b.c0), hn::IfThenElse(black, a.c1, b.c1),
            hn::IfThenElse(black, a.c2, b.c2)};
  }
};
struct Triple : Op8 {
  template <class D, class V>
  HWY_INLINE SamePlanes3<V> operator()(D, V a) const {
    return {a};
  }
};
struct TripleInverse : Op8 {
  template <class D, class V>
  HWY_INLINE SamePlanes3<V> operator()(D d, V a) const {
    return Triple()(d, Invert()(d, a));
  }
};

#if KY_STREAMS
template <class Op, class... In>
void Stream(KyBW8* out, size_t n, const In*... in) {
  StreamSpan(Op(), out, n, in...);
}
#endif
template <class Op>
void Combine(const Rows<KyBW8>& out, const Rows<const KyBW8>& a, const Rows<const KyBW8>& b) {
  const auto row = [](KyBW8* to, size_t n, const KyBW8* first, const KyBW8* second)
                       HWY_ATTR { MapLongSpan(Op(), to, n, first, second); };
  ForEachRow(row, out, a, b);
}
template <class Op>
constexpr void Put(ARITH_LOGIC_OPERATIONS operation, OperatorKernels& kernels) {
  kernels.combine[operation] = &Combine<Op>;
#if KY_STREAMS
  if constexpr (!Keeping<Op>) kernels.stream[operation] = &Stream<Op>;
#endif
}
constexpr OperatorKernels MakeKernels() {
  OperatorKernels kernels{};
  kernels.invert = &MapFormula<Invert>;
#if KY_STREAMS
  kernels.streamInvert = &Stream<Invert>;
#endif
  kernels.triple = &MapFormula<Triple>;
  kernels.tripleInverse = &MapFormula<TripleInverse>;
  kernels.overlay = &MapFormula<Overlay>;
  kernels.overlayWhere = &MapFormula<OverlayWhere>;

  Put<Add<Op8>>(KY_OPER_ADD, kernels);
  Put<Subtract<Op8>>(KY_OPER_SUBTRACT, kernels);
  Put<OnWideLanes<Multiply>>(KY_OPER_MULTIPLY, kernels);
  Put<Divide>(KY_OPER_DIVIDE, kernels);
  Put<Modulo>(KY_OPER_MODULO, kernels);
  Put<OnWideLanes<ShiftLeft>>(KY_OPER_SHIFT_LEFT, kernels);
  Put<OnWideLanes<ShiftRight>>(KY_OPER_SHIFT_RIGHT, kernels);
  Put<Average>(KY_OPER_AVERAGE, kernels);
  Put<HalfDifference>(KY_OPER_HALF_DIFFERENCE, kernels);
  Put<OnWideLanes<ScaledMultiply>>(KY_OPER_SCALED_MULTIPLY, kernels);
  Put<ScaledDivide>(KY_OPER_SCALED_DIVIDE, kernels);
  Put<And>(KY_OPER_AND, kernels);
  Put<Or>(KY_OPER_OR, kernels);
  Put<Xor>(KY_OPER_XOR, kernels);
  Put<LogicalAnd>(KY_OPER_LOGICAL_AND, kernels);
  Put<LogicalOr>(KY_OPER_LOGICAL_OR, kernels);
  Put<LogicalXor>(KY_OPER_LOGICAL_XOR, kernels);
  Put<Minimum>(KY_OPER_MIN, kernels);
  Put<Maximum>(KY_OPER_MAX, kernels);
  Put<SetWhereZero>(KY_OPER_SET_WHERE_ZERO, kernels);
  Put<SetWhereNonzero>(KY_OPER_SET_WHERE_NONZERO, kernels);
  Put<Equal>(KY_OPER_EQUAL, kernels);
  Put<Not<Equal>>(KY_OPER_NOT_EQUAL, kernels);
  Put<GreaterOrEqual>(KY_OPER_GREATER_OR_EQUAL, kernels);
  Put<LessOrEqual>(KY_OPER_LESS_OR_EQUAL, kernels);
  Put<Not<LessOrEqual>>(KY_OPER_GREATER, kernels);
  Put<Not<GreaterOrEqual>>(KY_OPER_LESS, kernels);
  Put<AbsDifference>(KY_OPER_ABS_DIFFERENCE, kernels);

  auto& combine8To16 = kernels.combine8To16;
  combine8To16[KY_OPER_ADD] = &MapFormula<AddWrap>;
  combine8To16[KY_OPER_SUBTRACT] = &MapFormula<Subtract<Op16>>;
  combine8To16[KY_OPER_MULTIPLY] = &MapFormula<Multiply16>;
  combine8To16[KY_OPER_DIVIDE] = &MapFormula<Divide8To16>;

  auto& combine16 = kernels.combine16;
  combine16[KY_OPER_ADD] = &MapFormula<Add<Op16>>;
  combine16[KY_OPER_SUBTRACT] = &MapFormula<Subtract<Op16>>;
  combine16[KY_OPER_MULTIPLY] = &MapFormula<Multiply16>;
  combine16[KY_OPER_DIVIDE] = &MapFormula<Divide16>;
  combine16[KY_OPER_ADD_WRAP] = &MapFormula<AddWrap>;
  combine16[KY_OPER_SUBTRACT_WRAP] = &MapFormula<SubtractWrap>;
  return kernels;
}

constexpr OperatorKernels kKernels = MakeKernels();

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(OperatorKernels)
