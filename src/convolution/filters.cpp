#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/filters.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "ky/filters.h"

#include "foundation/dispatch.h"
#include "foundation/frame.h"
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
  static constexpr int kMiddle = 1;
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
  static constexpr int kMiddle = 2;
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
template <int kMiddleWeight>
struct GradientY {
  static constexpr int kMiddle = kMiddleWeight;
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

}  // namespace

WindowKernel<WindowRun> UniformWindows() { return RolledWindows<Uniform>(); }
WindowKernel<WindowRun> UniformPlainWindows() { return RolledWindows<UniformPlain>(); }
WindowKernel<WindowRun> BinomialWindows() { return RolledWindows<Binomial>(); }
WindowKernel<WindowRun> RingWindows() { return RolledWindows<Ring>(); }
WindowKernel<WindowRun> Highpass1Windows() { return RolledWindows<Cross<5>>(); }
WindowKernel<WindowRun> Highpass2Windows() { return RolledWindows<Square<9, false>>(); }
WindowKernel<WindowRun> Highpass2BorderWindows() { return RolledWindows<Square<9, true>>(); }
WindowKernel<WindowRun> SobelXWindows() { return RolledWindows<GradientX<2>>(); }
WindowKernel<WindowRun> SobelYWindows() { return RolledWindows<GradientY<2>>(); }
WindowKernel<WindowRun> SobelWindows() { return RolledWindows<Modulus<2>>(); }
WindowKernel<WindowRun> PrewittXWindows() { return RolledWindows<GradientX<1>>(); }
WindowKernel<WindowRun> PrewittYWindows() { return RolledWindows<GradientY<1>>(); }
WindowKernel<WindowRun> PrewittWindows() { return RolledWindows<Modulus<1>>(); }
WindowKernel<WindowRun> Laplacian4Windows() { return RolledWindows<Cross<4>>(); }
WindowKernel<WindowRun> Laplacian8Windows() { return RolledWindows<Square<8, true>>(); }

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ky {
namespace {

HWY_EXPORT(UniformWindows);
HWY_EXPORT(UniformPlainWindows);
HWY_EXPORT(BinomialWindows);
HWY_EXPORT(RingWindows);
HWY_EXPORT(Highpass1Windows);
HWY_EXPORT(Highpass2Windows);
HWY_EXPORT(Highpass2BorderWindows);
HWY_EXPORT(SobelXWindows);
HWY_EXPORT(SobelYWindows);
HWY_EXPORT(SobelWindows);
HWY_EXPORT(PrewittXWindows);
HWY_EXPORT(PrewittYWindows);
HWY_EXPORT(PrewittWindows);
HWY_EXPORT(Laplacian4Windows);
HWY_EXPORT(Laplacian8Windows);

constexpr Border kNearest = Border::Nearest(), kZero = Border::Constant(0);

// The frame of all filters, of grey pixels and of the components of colours.
template <class Pixel, class... Kernels>
KY_ERRORS Filter(const char* name, const KyROI<Pixel>* source, const KyROI<Pixel>* destination,
                 Border border, const Kernels&... kernels) noexcept {
  return Call(name, [&] {
    if (destination == nullptr) destination = source;
    Rows<const KyBW8> in;
    Rows<KyBW8> out;
    // A source is const for its rectangle, not for its pixels.
    auto* const written = const_cast<KyROI<Pixel>*>(destination);
    if (const KY_ERRORS error = OpenAll(source, in, written, out)) return error;
    return FilterWindows(out, in, border, kernels...);
  });
}

}  // namespace
}  // namespace ky

using namespace ky;  // NOLINT(google-build-using-namespace): dispatch looks names up from here

KY_ERRORS ImgConvolUniform3x3(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolUniform3x3 (BW8)", source, destination, kNearest,
                KY_DISPATCH(UniformWindows)());
}
KY_ERRORS ImgConvolLowpass1(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLowpass1 (BW8)", source, destination, kNearest,
                KY_DISPATCH(UniformWindows)());
}
KY_ERRORS ImgConvolUniform3x3Plain(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolUniform3x3", source, destination, kNearest,
                KY_DISPATCH(UniformPlainWindows)());
}
KY_ERRORS ImgConvolGaussian3x3(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGaussian3x3 (BW8)", source, destination, kNearest,
                KY_DISPATCH(BinomialWindows)());
}
KY_ERRORS ImgConvolLowpass3(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLowpass3 (BW8)", source, destination, kNearest,
                KY_DISPATCH(BinomialWindows)());
}
KY_ERRORS ImgConvolGaussian3x3Plain(const KyROI<KyBW8>* source,
                                    KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGaussian3x3", source, destination, kNearest,
                KY_DISPATCH(BinomialWindows)());
}
KY_ERRORS ImgConvolLowpass2(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLowpass2 (BW8)", source, destination, kZero, KY_DISPATCH(RingWindows)());
}
KY_ERRORS ImgConvolHighpass1(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolHighpass1 (BW8)", source, destination, kZero,
                KY_DISPATCH(Highpass1Windows)());
}
KY_ERRORS ImgConvolHighpass2(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolHighpass2 (BW8)", source, destination, kZero,
                KY_DISPATCH(Highpass2Windows)(), KY_DISPATCH(Highpass2BorderWindows)());
}
KY_ERRORS ImgConvolSobelX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolSobelX (BW8)", source, destination, kZero, KY_DISPATCH(SobelXWindows)());
}
KY_ERRORS ImgConvolSobelY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolSobelY (BW8)", source, destination, kZero, KY_DISPATCH(SobelYWindows)());
}
KY_ERRORS ImgConvolSobel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolSobel (BW8)", source, destination, kZero, KY_DISPATCH(SobelWindows)());
}
KY_ERRORS ImgConvolPrewittX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolPrewittX (BW8)", source, destination, kNearest,
                KY_DISPATCH(PrewittXWindows)());
}
KY_ERRORS ImgConvolPrewittY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolPrewittY (BW8)", source, destination, kZero,
                KY_DISPATCH(PrewittYWindows)());
}
KY_ERRORS ImgConvolPrewitt(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolPrewitt (BW8)", source, destination, kZero,
                KY_DISPATCH(PrewittWindows)());
}
KY_ERRORS ImgConvolLaplacian4(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLaplacian4 (BW8)", source, destination, kZero,
                KY_DISPATCH(Laplacian4Windows)());
}
KY_ERRORS ImgConvolLaplacian8(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLaplacian8 (BW8)", source, destination, kZero,
                KY_DISPATCH(Laplacian8Windows)());
}
#endif
