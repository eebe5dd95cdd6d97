#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/float_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/float_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/widen-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

using DF = hn::ScalableTag<float>;
using DI = hn::RebindToSigned<DF>;
using VF = hn::Vec<DF>;
using VI = hn::Vec<DI>;

void Convert(float* out, size_t n, const KyBW8* in) {
  const DF d;
  const DI d32;
  const size_t lanes = hn::Lanes(d);
  size_t x = 0;
  for (; x + lanes <= n; x += lanes)
    hn::StoreU(hn::ConvertTo(d, hn::PromoteTo(d32, hn::LoadU(hn::Rebind<KyBW8, DF>(), in + x))), d,
               out + x);
  for (; x < n; ++x) out[x] = static_cast<float>(in[x]);
}

// The sum, truncated. What does not fit is limited, what is not a number is 0, unless it is known
// that all sums fit.
template <bool kFits>
HWY_INLINE VI Truncate(VF sum) {
  const DF d;
  if (kFits) return TruncateFitting(d, sum);
  const VF limit = hn::Set(d, 2147483520.0f);  // the last single below 2^31
  const VF number = hn::IfThenElseZero(hn::Eq(sum, sum), sum);
  return TruncateFitting(d, hn::Min(hn::Max(number, hn::Neg(limit)), limit));
}

template <Rectifier kRectifier>
HWY_INLINE VI Rectify(VI r) {
  const VI zero = hn::Zero(DI());
  if (kRectifier == kNegative) return hn::Max(hn::Neg(r), zero);
  if (kRectifier == kPositive) return hn::Max(r, zero);
  if (kRectifier == kMagnitude) return hn::Max(r, hn::Neg(r));
  return r;
}

constexpr int kVectors = 4;
constexpr ptrdiff_t kLanes = hn::MaxLanes(DF());
constexpr ptrdiff_t kPlaces = kVectors * kLanes;
static_assert(kPlaces <= kFloatSlack);

// Stores lanes, limited to 0 to 255, as bytes.
HWY_INLINE void StoreLevels(const VI (&levels)[kVectors], KyBW8* out) {
#if HWY_TARGET == HWY_SCALAR
  for (int v = 0; v < kVectors; ++v)
    out[v] = static_cast<KyBW8>(std::clamp(hn::GetLane(levels[v]), 0, 255));
#else
  // Limited to 16 bits first. Each block then holds the lanes that it has in the four vectors, by
  // vector, and the blocks are put together by vector.
  const hn::Repartition<uint8_t, DI> d8;
  const hn::Repartition<int16_t, DI> d16;
  const DI d;
  const auto blocks =
      hn::BitCast(d, NarrowBlocks(d8, hn::ReorderDemote2To(d16, levels[0], levels[1]),
                                  hn::ReorderDemote2To(d16, levels[2], levels[3])));
  HWY_ALIGN int32_t from[kLanes];
  for (int i = 0; i < kLanes; ++i)
    from[i] = static_cast<int32_t>(i % (kLanes / 4) * 4 + i / (kLanes / 4));
  hn::StoreU(hn::BitCast(d8, hn::TableLookupLanes(blocks, hn::SetTableIndices(d, from))), d8, out);
#endif
}

// The sums of some vectors of each of kRows rows. One tap comes after the other, as the order of
// the sum is part of the result; vectors go across pixels alone.
struct AnySize {
  static constexpr int kRows = 1;

  HWY_INLINE static void Sum(const FloatKernel& kernel, const float* const* rows, ptrdiff_t x,
                             VF (&sums)[kRows][kVectors]) {
    const DF d;
    for (VF& sum : sums[0]) sum = hn::Zero(d);
    const float* coefficient = kernel.coefficients;
    for (ptrdiff_t j = 0; j < kernel.sizeY; ++j) {
      const float* const row = rows[j] + x;
      for (ptrdiff_t i = 0; i < kernel.sizeX; ++i) {
        const VF c = hn::Set(d, *coefficient++);
        for (int v = 0; v < kVectors; ++v)
          sums[0][v] =
              hn::Add(sums[0][v], hn::Mul(c, hn::LoadU(d, row + kernel.step * i + v * kLanes)));
      }
    }
  }
};
struct Size3x3 {
  static constexpr int kRows = 2;

  struct Three {
    VF at[3];
    HWY_INLINE Three(const float* row, ptrdiff_t step)
        : at{hn::LoadU(DF(), row), hn::LoadU(DF(), row + step), hn::LoadU(DF(), row + 2 * step)} {}
    // The first product needs no sum to begin with: that would only turn -0 into 0.
    HWY_INLINE VF First(const float* c) const { return AddTo(Product(0, c), c, 1); }
    HWY_INLINE VF AddTo(VF sum, const float* c, int first = 0) const {
      for (int i = first; i < 3; ++i) sum = hn::Add(sum, Product(i, c));
      return sum;
    }
    HWY_INLINE VF Product(int i, const float* c) const {
      return hn::Mul(hn::Set(DF(), c[i]), at[i]);
    }
  };
  HWY_INLINE static void Sum(const FloatKernel& kernel, const float* const* rows, ptrdiff_t x,
                             VF (&sums)[kRows][kVectors]) {
    const float* const c = kernel.coefficients;
    const ptrdiff_t step = kernel.step;
    for (int v = 0; v < kVectors; ++v, x += kLanes) {
      const Three a(rows[0] + x, step), b(rows[1] + x, step), below(rows[2] + x, step),
          last(rows[3] + x, step);
      sums[0][v] = below.AddTo(b.AddTo(a.First(c), c + 3), c + 6);
      sums[1][v] = last.AddTo(below.AddTo(b.First(c), c + 3), c + 6);
    }
  }
};

template <Rectifier kRectifier, bool kFits, class Size>
HWY_INLINE void WeighAt(const FloatKernel& kernel, KyBW8* const* out, ptrdiff_t x,
                        const float* const* rows) {
  const DI d;
  VF sums[Size::kRows][kVectors];
  Size::Sum(kernel, rows, x, sums);
  for (int y = 0; y < Size::kRows; ++y) {
    VI levels[kVectors];
    for (int v = 0; v < kVectors; ++v) {
      VI r = Rectify<kRectifier>(Truncate<kFits>(sums[y][v]));
      if (!kFits) r = hn::Min(hn::Max(r, hn::Set(d, kernel.least)), hn::Set(d, kernel.greatest));
      levels[v] = hn::Add(r, hn::Set(d, kernel.offset));
    }
    StoreLevels(levels, out[y]);
  }
}
template <Rectifier kRectifier, bool kFits, class Size>
void WeighRows(const FloatKernel& kernel, Rows<KyBW8> out, const float* const* rows) {
  KyBW8* to[Size::kRows];
  ptrdiff_t x = 0;
  for (; x + kPlaces <= out.width; x += kPlaces) {
    for (int y = 0; y < Size::kRows; ++y) to[y] = out.Row(y) + x;
    WeighAt<kRectifier, kFits, Size>(kernel, to, x, rows);
  }
  if (x == out.width) return;
  KyBW8 last[Size::kRows][kPlaces];
  for (int y = 0; y < Size::kRows; ++y) to[y] = last[y];
  WeighAt<kRectifier, kFits, Size>(kernel, to, x, rows);
  for (int y = 0; y < Size::kRows; ++y)
    std::memcpy(out.Row(y) + x, last[y], static_cast<size_t>(out.width - x));
}

template <Rectifier kRectifier, bool kFits>
void Weigh(const FloatKernel& kernel, Rows<KyBW8> out, const float* const* rows) {
  if (kernel.sizeX == 3 && kernel.sizeY == 3 && out.height == Size3x3::kRows)
    return WeighRows<kRectifier, kFits, Size3x3>(kernel, out, rows);
  for (ptrdiff_t y = 0; y < out.height; ++y)
    WeighRows<kRectifier, kFits, AnySize>(kernel, {out.Row(y), out.pitch, out.width, 1}, rows + y);
}

constexpr FloatRowKernels kKernels = {&Convert,
                                      {{&Weigh<kLeave, false>, &Weigh<kLeave, true>},
                                       {&Weigh<kNegative, false>, &Weigh<kNegative, true>},
                                       {&Weigh<kPositive, false>, &Weigh<kPositive, true>},
                                       {&Weigh<kMagnitude, false>, &Weigh<kMagnitude, true>}}};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(FloatRowKernels)
