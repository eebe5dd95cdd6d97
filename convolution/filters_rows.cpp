#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/filters_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/filters_rows.h"

#include "foundation/dispatch.h"
#include "foundation/window-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

HWY_INLINE V16 SumOf3(const V16* at) { return hn::Add(hn::Add(at[-1], at[0]), at[1]); }
HWY_INLINE V16 SumOf3(V16 a, V16 b, V16 c) { return hn::Add(hn::Add(a, c), b); }
// The magnitude, limited to 255.
HWY_INLINE V16 Magnitude(D16 d, V16 v) { return hn::Min(hn::Abs(v), hn::Set(d, 255)); }

struct RowSums {
  HWY_INLINE V16 Row(D16, const V16* at) const { return SumOf3(at); }
};
// (14 * sum) >> 7
struct Uniform : RowSums {
  HWY_INLINE V16 operator()(D16 d, V16 a, V16 b, V16 c) const {
    return hn::MulHigh(SumOf3(a, b, c), hn::Set(d, 14 << 9));
  }
};
// (932067 * sum) >> 23, which for all sums but 0 is (sum - 1) / 9: the factor is just below 2^23 /
// 9. So is 7282 just above 2^16 / 9.
struct UniformPlain : RowSums {
  HWY_INLINE V16 operator()(D16 d, V16 a, V16 b, V16 c) const {
    const V16 less1 = hn::Max(hn::Sub(SumOf3(a, b, c), hn::Set(d, 1)), hn::Zero(d));
    return hn::MulHigh(less1, hn::Set(d, 7282));
  }
};

// Weights 1, kMiddle, 1.
template <int kMiddle>
HWY_INLINE V16 Weigh(V16 a, V16 b, V16 c) {
  return hn::Add(hn::Add(a, c), kMiddle == 2 ? hn::Add(b, b) : b);
}
struct Binomial {
  HWY_INLINE V16 Row(D16, const V16* at) const { return Weigh<2>(at[-1], at[0], at[1]); }
  HWY_INLINE V16 operator()(D16, V16 a, V16 b, V16 c) const {
    return hn::ShiftRight<4>(Weigh<2>(a, b, c));
  }
};

// Sobel's gradients with a middle of 2, Prewitt's with 1.
template <int kMiddle>
struct GradientX {
  HWY_INLINE V16 Row(D16, const V16* at) const { return hn::Sub(at[1], at[-1]); }
  HWY_INLINE V16 operator()(D16 d, V16 a, V16 b, V16 c) const {
    return Magnitude(d, Weigh<kMiddle>(a, b, c));
  }
};
template <int kMiddle>
struct GradientY {
  HWY_INLINE V16 Row(D16, const V16* at) const { return Weigh<kMiddle>(at[-1], at[0], at[1]); }
  HWY_INLINE V16 operator()(D16 d, V16 a, V16, V16 c) const { return Magnitude(d, hn::Sub(c, a)); }
};
template <int kMiddle>
struct Modulus {
  struct Part {
    V16 difference, sum;
  };
  HWY_INLINE Part Row(D16, const V16* at) const {
    return {hn::Sub(at[1], at[-1]), Weigh<kMiddle>(at[-1], at[0], at[1])};
  }
  HWY_INLINE V16 operator()(D16 d, const Part& a, const Part& b, const Part& c) const {
    const V16 x = Weigh<kMiddle>(a.difference, b.difference, c.difference);
    const V16 y = hn::Sub(c.sum, a.sum);
    return hn::Min(hn::Add(hn::Abs(x), hn::Abs(y)), hn::Set(d, 255));
  }
};

// The 8 neighbours.
struct Ring {
  struct Part {
    V16 all, ends;
  };
  HWY_INLINE Part Row(D16, const V16* at) const {
    const V16 ends = hn::Add(at[-1], at[1]);
    return {hn::Add(ends, at[0]), ends};
  }
  HWY_INLINE V16 operator()(D16, const Part& a, const Part& b, const Part& c) const {
    return hn::ShiftRight<3>(SumOf3(a.all, b.ends, c.all));
  }
};

// |kCentre * centre - the 4 neighbours at its edges|
template <int kCentre>
struct Cross {
  struct Part {
    V16 middle, own;
  };
  HWY_INLINE Part Row(D16 d, const V16* at) const {
    return {at[0], hn::Sub(hn::Mul(at[0], hn::Set(d, kCentre)), hn::Add(at[-1], at[1]))};
  }
  HWY_INLINE V16 operator()(D16 d, const Part& a, const Part& b, const Part& c) const {
    return Magnitude(d, hn::Sub(b.own, hn::Add(a.middle, c.middle)));
  }
};

// kCentre * centre - the 8 neighbours, its magnitude or its positive part.
template <int kCentre, bool kMagnitude>
struct Square {
  struct Part {
    V16 all, own;
  };
  HWY_INLINE Part Row(D16 d, const V16* at) const {
    const V16 ends = hn::Add(at[-1], at[1]);
    return {hn::Add(ends, at[0]), hn::Sub(hn::Mul(at[0], hn::Set(d, kCentre)), ends)};
  }
  HWY_INLINE V16 operator()(D16 d, const Part& a, const Part& b, const Part& c) const {
    const V16 response = hn::Sub(b.own, hn::Add(a.all, c.all));
    if (kMagnitude) return Magnitude(d, response);
    return hn::Min(hn::Max(response, hn::Zero(d)), hn::Set(d, 255));
  }
};

template <class Op>
void Filter(Rows<KyBW8> out, const KyBW8* const* rows) {
  RollWindows(Op(), out, rows);
}

constexpr FilterKernels MakeKernels() {
  FilterKernels kernels = {};
  kernels.lanes = hn::MaxLanes(D8());
  kernels.uniform = &Filter<Uniform>;
  kernels.uniformPlain = &Filter<UniformPlain>;
  kernels.binomial = &Filter<Binomial>;
  kernels.ring = &Filter<Ring>;
  kernels.highpass1 = &Filter<Cross<5>>;
  kernels.highpass2 = &Filter<Square<9, false>>;
  kernels.highpass2Frame = &Filter<Square<9, true>>;
  kernels.sobelX = &Filter<GradientX<2>>;
  kernels.sobelY = &Filter<GradientY<2>>;
  kernels.sobel = &Filter<Modulus<2>>;
  kernels.prewittX = &Filter<GradientX<1>>;
  kernels.prewittY = &Filter<GradientY<1>>;
  kernels.prewitt = &Filter<Modulus<1>>;
  kernels.laplacian4 = &Filter<Cross<4>>;
  kernels.laplacian8 = &Filter<Square<8, true>>;
  return kernels;
}

constexpr FilterKernels kKernels = MakeKernels();

}  // namespace

const FilterKernels* TableOfFilterKernels() { return &kKernels; }

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ky {
HWY_EXPORT(TableOfFilterKernels);
const FilterKernels& ChooseFilterKernels() noexcept { return *KY_DISPATCH(TableOfFilterKernels)(); }
}  // namespace ky
#endif
