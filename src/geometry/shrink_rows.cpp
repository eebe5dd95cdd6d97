// Means of areas are computed for as many rows of results at once as a vector has lanes: sums down
// the columns, turned so that a vector holds one column of them, sums across, which then need no
// shuffles whatever the ratio, and the means turned back.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/shrink_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "geometry/shrink_rows.h"

#include <algorithm>
#include <type_traits>

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"
#include "foundation/prefetch-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// sums[x] = the weighed sum down column x of the rows that a result covers.
template <class T>
HWY_INLINE void SumDown(T* HWY_RESTRICT sums, ptrdiff_t n, const KyBW8* top, ptrdiff_t pitch,
                        const Cover& cover, T middle) {
  const hn::ScalableTag<T> d;
  const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(d));
  const auto first = hn::Set(d, static_cast<T>(cover.first));
  const auto last = hn::Set(d, static_cast<T>(cover.last)), others = hn::Set(d, middle);
  const ptrdiff_t end = cover.count - 1;
  const auto sumAt = [&](const auto& load) HWY_ATTR {
    auto sum = hn::Mul(load(top), first);
    if (end == 0) return sum;
    sum = hn::Add(sum, hn::Mul(load(top + end * pitch), last));
    if (end == 1) return sum;
    auto between = load(top + pitch);
    for (ptrdiff_t i = 2; i < end; ++i) between = hn::Add(between, load(top + i * pitch));
    return hn::Add(sum, hn::Mul(between, others));
  };
  if (n < lanes) {
    const auto part = [&](const KyBW8* row)
                          HWY_ATTR { return LoadPart(d, row, static_cast<size_t>(n)); };
    return StorePart(d, sumAt(part), sums, static_cast<size_t>(n));
  }
  for (ptrdiff_t i = 0;; i = std::min(i + lanes, n - lanes)) {
    hn::StoreU(sumAt([&](const KyBW8* row) HWY_ATTR { return LoadLanes(d, row + i); }), d,
               sums + i);
    if (i == n - lanes) return;
  }
}

// Strips are too short for processors to foresee, and rows too many: those of the next strip are
// prefetched.
HWY_INLINE void PrefetchNext(const KyBW8* top, ptrdiff_t n, ptrdiff_t pitch, ptrdiff_t rows) {
  constexpr ptrdiff_t kLine = 64;
  for (ptrdiff_t i = 0; i < rows; ++i)
    for (ptrdiff_t x = 0; x < n; x += kLine) PrefetchToSecondCache(top + i * pitch, n + x);
}

#if HWY_TARGET != HWY_SCALAR
// 8 x 8 numbers, rows to columns.
struct Block {
  using D = hn::FixedTag<uint16_t, 8>;
  hn::Vec<D> rows[8];

  HWY_INLINE void Turn() {
    const D d;
    // Interleaving rows i and i + 4 three times turns the block.
    for (int turn = 0; turn < 3; ++turn) {
      hn::Vec<D> next[8];
      for (int i = 0; i < 4; ++i) {
        next[2 * i] = hn::InterleaveLower(d, rows[i], rows[i + 4]);
        next[2 * i + 1] = hn::InterleaveUpper(d, rows[i], rows[i + 4]);
      }
      std::copy_n(next, 8, rows);
    }
  }
};
#endif

// Calls turn(x) for blocks of 8 columns that cover n, 8 or more. The last may overlap the one
// before.
template <class TurnAt>
HWY_INLINE void ForEachBlock(ptrdiff_t n, const TurnAt& turn) {
  for (ptrdiff_t x = 0; x < n - 8; x += 8) turn(x);
  turn(n - 8);
}

// turned[x * kLanes + y] = sums[y * n + x] for n columns and kLanes rows.
template <ptrdiff_t kLanes, class T>
HWY_INLINE void Turn(T* HWY_RESTRICT turned, const T* HWY_RESTRICT sums, ptrdiff_t n) {
#if HWY_TARGET != HWY_SCALAR
  if constexpr (sizeof(T) == 2) {
    const Block::D d;
    const auto turn = [=](ptrdiff_t x) HWY_ATTR {
      for (ptrdiff_t y = 0; y < kLanes; y += 8) {
        Block block;
        for (ptrdiff_t i = 0; i < 8; ++i) block.rows[i] = hn::LoadU(d, sums + (y + i) * n + x);
        block.Turn();
        for (ptrdiff_t i = 0; i < 8; ++i)
          hn::StoreU(block.rows[i], d, turned + (x + i) * kLanes + y);
      }
    };
    if (n >= 8) return ForEachBlock(n, turn);
  }
#endif
  for (ptrdiff_t x = 0; x < n; ++x)
    for (ptrdiff_t y = 0; y < kLanes; ++y) turned[x * kLanes + y] = sums[y * n + x];
}

// out(x, y) = means[x * lanes + y] for n results of some rows.
template <ptrdiff_t kLanes>
HWY_INLINE void TurnBack(const Rows<KyBW8>& out, const uint16_t* HWY_RESTRICT means) {
#if HWY_TARGET != HWY_SCALAR
  if constexpr (kLanes % 8 == 0) {
    const Block::D d;
    const hn::Rebind<uint8_t, Block::D> narrow;
    const auto turn = [&](ptrdiff_t x) HWY_ATTR {
      for (ptrdiff_t y = 0; y < out.height; y += 8) {
        Block block;
        for (ptrdiff_t i = 0; i < 8; ++i)
          block.rows[i] = hn::LoadU(d, means + (x + i) * kLanes + y);
        block.Turn();
        for (ptrdiff_t i = 0; i < std::min<ptrdiff_t>(8, out.height - y); ++i)
          hn::StoreU(hn::DemoteTo(narrow, AsSigned(block.rows[i])), narrow, out.Row(y + i) + x);
      }
    };
    if (out.width >= 8) return ForEachBlock(out.width, turn);
  }
#endif
  for (ptrdiff_t x = 0; x < out.width; ++x)
    for (ptrdiff_t y = 0; y < out.height; ++y)
      out.Row(y)[x] = static_cast<KyBW8>(means[x * kLanes + y]);
}

// round(sum / area) of sums of 16 and of 32 bits, and of whole numbers in double precision.
template <class T>
class Divide;
template <>
class Divide<uint16_t> {
 public:
  using D = hn::ScalableTag<uint16_t>;
  explicit HWY_INLINE Divide(ptrdiff_t area)
      : area_(static_cast<uint16_t>(area)),
        reciprocal_(static_cast<uint16_t>(std::min<ptrdiff_t>(65536 / area, 65535))) {}
  // The product with the reciprocal is the quotient or one less.
  HWY_INLINE hn::Vec<D> operator()(hn::Vec<D> sum) const {
    const D d;
    const hn::RebindToSigned<D> compared;
    const auto area = hn::Set(d, area_);
    const auto total = hn::Add(sum, hn::Set(d, static_cast<uint16_t>(area_ / 2)));
    const auto quotient = hn::MulHigh(total, hn::Set(d, reciprocal_));
    const auto rest = hn::BitCast(compared, hn::Sub(total, hn::Mul(quotient, area)));
    const auto less = hn::VecFromMask(compared, hn::Lt(rest, hn::BitCast(compared, area)));
    return hn::Add(hn::Add(quotient, hn::Set(d, 1)), hn::BitCast(d, less));
  }

 private:
  uint16_t area_, reciprocal_;
};
template <>
class Divide<uint32_t> {
 public:
  using D = hn::ScalableTag<uint32_t>;
  explicit HWY_INLINE Divide(ptrdiff_t area)
      : area_(static_cast<int32_t>(area)), reciprocal_(1.0f / static_cast<float>(area)) {}
  // The product with the reciprocal is less than one off.
  HWY_INLINE hn::Vec<hn::Rebind<uint16_t, D>> operator()(hn::Vec<D> sum) const {
    const hn::RebindToSigned<D> d;
    const hn::Rebind<float, D> df;
    const auto area = hn::Set(d, area_);
    const auto total = hn::Add(hn::BitCast(d, sum), hn::Set(d, area_ / 2));
    auto quotient = hn::ConvertTo(d, hn::Mul(hn::ConvertTo(df, total), hn::Set(df, reciprocal_)));
    const auto rest = hn::Sub(total, hn::Mul(quotient, area));
    quotient = hn::Add(quotient, hn::VecFromMask(d, hn::Lt(rest, hn::Zero(d))));
    quotient = hn::Sub(quotient, hn::VecFromMask(d, hn::Gt(rest, hn::Set(d, area_ - 1))));
    return hn::DemoteTo(hn::Rebind<uint16_t, D>(), quotient);
  }

 private:
  int32_t area_;
  float reciprocal_;
};

template <>
class Divide<double> {
 public:
  using D = hn::ScalableTag<double>;
  explicit HWY_INLINE Divide(ptrdiff_t area)
      : area_(static_cast<double>(area)), half_(static_cast<double>(area / 2)) {}
  // Rounding moves a quotient by less than its distance from the next whole number.
  HWY_INLINE hn::Vec<hn::Rebind<uint16_t, D>> operator()(hn::Vec<D> sum) const {
    const D d;
    const auto quotient = hn::Div(hn::Add(sum, hn::Set(d, half_)), hn::Set(d, area_));
    return hn::DemoteTo(hn::Rebind<uint16_t, D>(),
                        hn::DemoteTo(hn::Rebind<int32_t, D>(), quotient));
  }

 private:
  double area_, half_;
};

// Sums down the columns have lanes of type T, those across lanes of type Across.
template <class T, class Across = T>
void Shrink(const ShrinkBand& band) {
  const hn::ScalableTag<Across> d;
  constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
  T* const sums = static_cast<T*>(band.scratch);
  T* const turned = sums + band.columns * kLanes;
  auto* const means = reinterpret_cast<uint16_t*>(turned + band.columns * kLanes);
  // Rows beyond the last are summed as if they were the last.
  for (ptrdiff_t y = 0; y < kLanes; ++y) {
    const Cover cover = band.down.At(band.row + std::min(y, band.rows - 1));
    const KyBW8* const top = band.source.Row(cover.start) + band.from;
    PrefetchNext(top, band.columns, band.source.pitch, cover.count);
    SumDown(sums + y * band.columns, band.columns, top, band.source.pitch, cover,
            static_cast<T>(band.down.middle));
  }
  Turn<kLanes>(turned, sums, band.columns);
  const Divide<Across> divide(band.across.total * band.down.total);
  const hn::Rebind<uint16_t, decltype(d)> d16;
  const auto others = hn::Set(d, static_cast<Across>(band.across.middle));
  uint16_t* out = means;
  for (ptrdiff_t x = 0; x < band.results; x += band.step) {
    const Cover cover = band.covers[(band.to + x) / band.step];
    const T* const left = turned + (cover.start * band.step - band.from) * kLanes;
    for (ptrdiff_t c = 0; c < band.step; ++c, out += kLanes) {
      const auto at = [&](ptrdiff_t i) HWY_ATTR {
        const T* const column = left + (i * band.step + c) * kLanes;
        if constexpr (std::is_same_v<T, Across>) {
          return hn::LoadU(d, column);
        } else {
          const hn::Rebind<int32_t, decltype(d)> narrow;
          return hn::PromoteTo(d, hn::LoadU(narrow, reinterpret_cast<const int32_t*>(column)));
        }
      };
      auto sum = hn::Mul(at(0), hn::Set(d, static_cast<Across>(cover.first)));
      if (cover.count > 1) {
        sum =
            hn::Add(sum, hn::Mul(at(cover.count - 1), hn::Set(d, static_cast<Across>(cover.last))));
        if (cover.count > 2) {
          auto between = at(1);
          for (ptrdiff_t i = 2; i < cover.count - 1; ++i) between = hn::Add(between, at(i));
          sum = hn::Add(sum, hn::Mul(between, others));
        }
      }
      hn::StoreU(divide(sum), d16, out);
    }
  }
  const Rows<KyBW8> results = {band.destination.Row(band.row) + band.to, band.destination.pitch,
                               band.results, band.rows};
  TurnBack<kLanes>(results, means);
}

constexpr ptrdiff_t LanesOf(auto d) { return static_cast<ptrdiff_t>(hn::MaxLanes(d)); }
constexpr ShrinkKernels kKernels = {&Shrink<uint16_t>,         LanesOf(hn::ScalableTag<uint16_t>()),
                                    &Shrink<uint32_t>,         LanesOf(hn::ScalableTag<uint32_t>()),
                                    &Shrink<uint32_t, double>, LanesOf(hn::ScalableTag<double>())};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ShrinkKernels)
