#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frequency/transform_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "frequency/transform_rows.h"

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Complex numbers are moved as lanes of their size.
using Tiles = hn::CappedTag<double, 4>;
constexpr ptrdiff_t kSide = hn::MaxLanes(Tiles());

template <class D>
HWY_INLINE hn::Vec<D> LoadNumbers(D d, const KyComplex64* from) {
  return hn::LoadU(d, reinterpret_cast<const double*>(from));
}
template <class D>
HWY_INLINE void StoreNumbers(D d, hn::Vec<D> v, KyComplex64* to) {
  hn::StoreU(v, d, reinterpret_cast<double*>(to));
}
// Changes the signs of the imaginary parts.
template <class D>
HWY_INLINE hn::Vec<D> Conjugate(D d, hn::Vec<D> v) {
  const hn::RebindToUnsigned<D> d64;
  return hn::Xor(v, hn::BitCast(d, hn::Set(d64, uint64_t{1} << 63)));
}

// Rows and columns of complex numbers, as what a transposition reads or writes. A tile of kSide
// rows and columns is so many vectors, of which Load and Store take vector k: in row y + k from
// column x on, or in column x + k from row y on.
template <class T>
struct ImageTiles {
  Rows<T> rows;

  template <ptrdiff_t k, class D>
  HWY_INLINE hn::Vec<D> Load(D d, ptrdiff_t y, ptrdiff_t x) const {
    return LoadNumbers(d, rows.Row(y + k) + x);
  }
  template <ptrdiff_t k, class D>
  HWY_INLINE void Store(D d, hn::Vec<D> v, ptrdiff_t y, ptrdiff_t x) const {
    StoreNumbers(d, v, rows.Row(y + k) + x);
  }
  HWY_INLINE T& At(ptrdiff_t y, ptrdiff_t x) const { return rows.Row(y)[x]; }
};
struct ColumnTiles {
  Columns columns;

  template <ptrdiff_t k, class D>
  HWY_INLINE hn::Vec<D> Load(D d, ptrdiff_t y, ptrdiff_t x) const {
    return LoadNumbers(d, columns.Column(x + k) + y);
  }
  template <ptrdiff_t k, class D>
  HWY_INLINE void Store(D d, hn::Vec<D> v, ptrdiff_t y, ptrdiff_t x) const {
    StoreNumbers(d, v, columns.Column(x + k) + y);
  }
  HWY_INLINE KyComplex64& At(ptrdiff_t y, ptrdiff_t x) const { return columns.Column(x)[y]; }
};
// Two neighbouring pixels as one number.
struct PairTiles {
  Rows<const KyBW8> rows;

  template <ptrdiff_t k, class D>
  HWY_INLINE hn::Vec<D> Load(D d, ptrdiff_t y, ptrdiff_t x) const {
    const hn::Repartition<int32_t, D> d32;
    const auto pixels = LoadLanes(d32, rows.Row(y + k) + 2 * x);
    return hn::BitCast(d, hn::ConvertTo(hn::Repartition<float, D>(), pixels));
  }
  HWY_INLINE KyComplex64 At(ptrdiff_t y, ptrdiff_t x) const {
    const KyBW8* const pair = rows.Row(y) + 2 * x;
    return {static_cast<float>(pair[0]), 2 * x + 1 < rows.width ? static_cast<float>(pair[1]) : 0};
  }
};
// The transforms of columns, from transforms Z of pairs of them. With Z' for the conjugate of
// Z(n - y), (Z + Z') / 2 is that of the even column, and (Z - Z') / 2i that of the odd one.
struct SplitTiles {
  Columns columns;
  ptrdiff_t n;

  template <ptrdiff_t k, class D>
  HWY_INLINE hn::Vec<D> Load(D d, ptrdiff_t y, ptrdiff_t x) const {
    const hn::Repartition<float, D> df;
    const KyComplex64* const column = columns.Column(x / 2 + k / 2);
    const auto z = hn::BitCast(df, LoadNumbers(d, column + y));
    const auto mirrored = hn::Reverse(d, LoadNumbers(d, column + n - y - (kSide - 1)));
    const auto other = hn::BitCast(df, Conjugate(d, mirrored));
    const auto half = hn::Set(df, 0.5f);
    if constexpr (k % 2 == 0) {
      return hn::BitCast(d, hn::Mul(hn::Add(z, other), half));
    } else {
      const auto difference = hn::Mul(hn::Sub(z, other), half);
      return Conjugate(d, hn::BitCast(d, hn::Reverse2(df, difference)));
    }
  }
  HWY_INLINE KyComplex64 At(ptrdiff_t y, ptrdiff_t x) const {
    const KyComplex64* const column = columns.Column(x / 2);
    const KyComplex64 z = column[y], other = column[n - y];
    return x % 2 == 0 ? KyComplex64{(z.re + other.re) * 0.5f, (z.im - other.im) * 0.5f}
                      : KyComplex64{(z.im + other.im) * 0.5f, -((z.re - other.re) * 0.5f)};
  }
};

#if HWY_TARGET != HWY_SCALAR
// One tile. Vectors of two numbers are a tile of 2 x 2.
template <class From, class To>
HWY_INLINE void TransposeTile(const From& from, const To& to, ptrdiff_t y, ptrdiff_t x) {
  const Tiles d;
  const auto a = from.template Load<0>(d, y, x), b = from.template Load<1>(d, y, x);
  if constexpr (kSide == 2) {
    to.template Store<0>(d, hn::InterleaveLower(d, a, b), y, x);
    to.template Store<1>(d, hn::InterleaveUpper(d, a, b), y, x);
  } else {
    const auto c = from.template Load<2>(d, y, x), e = from.template Load<3>(d, y, x);
    const auto evenAB = hn::InterleaveLower(d, a, b), oddAB = hn::InterleaveUpper(d, a, b);
    const auto evenCE = hn::InterleaveLower(d, c, e), oddCE = hn::InterleaveUpper(d, c, e);
    to.template Store<0>(d, hn::ConcatLowerLower(d, evenCE, evenAB), y, x);
    to.template Store<1>(d, hn::ConcatLowerLower(d, oddCE, oddAB), y, x);
    to.template Store<2>(d, hn::ConcatUpperUpper(d, evenCE, evenAB), y, x);
    to.template Store<3>(d, hn::ConcatUpperUpper(d, oddCE, oddAB), y, x);
  }
}
#endif

// Of `width` columns, those from `whole` on are taken number by number, and so is what does not
// fill a tile.
template <class From, class To>
HWY_INLINE void Transpose(ptrdiff_t width, [[maybe_unused]] ptrdiff_t whole, ptrdiff_t height,
                          const From& from, const To& to) {
  const auto each = [&](ptrdiff_t y, ptrdiff_t endY, ptrdiff_t x) {
    for (; y < endY; ++y)
      for (ptrdiff_t at = x; at < width; ++at) to.At(y, at) = from.At(y, at);
  };
  ptrdiff_t y = 0;
#if HWY_TARGET != HWY_SCALAR
  for (; y + kSide <= height; y += kSide) {
    ptrdiff_t x = 0;
    for (; x + kSide <= whole; x += kSide) TransposeTile(from, to, y, x);
    each(y, y + kSide, x);
  }
#endif
  each(y, height, 0);
}

void Gather(Rows<const KyComplex64> from, Columns to) {
  Transpose(from.width, from.width, from.height, ImageTiles<const KyComplex64>{from},
            ColumnTiles{to});
}
void Scatter(Columns from, Rows<KyComplex64> to) {
  Transpose(to.width, to.width, to.height, ColumnTiles{from}, ImageTiles<KyComplex64>{to});
}
void GatherPairs(Rows<const KyBW8> from, Columns to) {
  Transpose((from.width + 1) / 2, from.width / 2, from.height, PairTiles{from}, ColumnTiles{to});
}
void ScatterPairs(Columns from, ptrdiff_t n, Rows<KyComplex64> to) {
  Transpose(to.width, to.width, to.height, SplitTiles{from, n}, ImageTiles<KyComplex64>{to});
}

void Mirror(KyComplex64* out, size_t n, const KyComplex64* in) {
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  out[0] = {in[0].re, -in[0].im};
  size_t i = 1;
  for (; i + lanes <= n; i += lanes)
    StoreNumbers(d, Conjugate(d, hn::Reverse(d, LoadNumbers(d, in + i))), out + n - i - lanes + 1);
  for (; i < n; ++i) out[n - i] = {in[i].re, -in[i].im};
}

void Scale(KyComplex64* out, size_t n, const KyComplex64* in, float factor) {
  const hn::ScalableTag<float> d;
  const size_t lanes = hn::Lanes(d);
  const float* const from = &in->re;
  float* const to = &out->re;
  size_t i = 0;
  for (; i + lanes <= 2 * n; i += lanes)
    hn::StoreU(hn::Mul(hn::LoadU(d, from + i), hn::Set(d, factor)), d, to + i);
  for (; i < 2 * n; ++i) to[i] = from[i] * factor;
}

constexpr TransformKernels kKernels = {&Gather,       &Scatter, &GatherPairs,
                                       &ScatterPairs, &Mirror,  &Scale};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(TransformKernels)
