#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/large_smoothing_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/filter_terms-inl.h"
#include "convolution/filters_rows.h"
#include "foundation/dispatch.h"
#include "foundation/window_columns-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// round(sum / count) of kSide x kSide levels, by a factor just above 2^(16 + kShift) / count.
template <int kSide, int kFactor, int kShift>
class MeanColumns {
 public:
  HWY_INLINE MeanColumns() {
    for (auto& sum : sums_) sum.Start(hn::Set(D16(), kHalf));
  }
  HWY_INLINE void Next(V16 (&row)[kPhases]) {
    for (int p = 0; p < kPhases; ++p)
      row[p] = hn::ShiftRight<kShift>(hn::MulHigh(sums_[p].Next(row[p]), hn::Set(D16(), kFactor)));
  }

 private:
  static constexpr int kCount = kSide * kSide, kHalf = kCount / 2;
  static constexpr bool IsExact() {
    for (int sum = 0; sum <= 255 * kCount; ++sum)
      if ((sum + kHalf) / kCount != int64_t{sum + kHalf} * kFactor >> (16 + kShift)) return false;
    return true;
  }
  static_assert(IsExact());

  SumColumn<D16, kSide> sums_[kPhases];
};
struct Uniform5x5 : SymmetricRow<1, 1, 1> {
  static constexpr bool kInUpperBytes = false;
  using Columns = MeanColumns<5, 20972, 3>;
};
struct Uniform7x7 : SymmetricRow<1, 1, 1, 1> {
  static constexpr bool kInUpperBytes = false;
  using Columns = MeanColumns<7, 21400, 4>;
};

// (sum + 128) >> 8. Sums need all 16 bits.
struct Binomial5x5 : SymmetricRow<6, 4, 1> {
  static constexpr bool kInUpperBytes = true;
  class Columns {
   public:
    HWY_INLINE Columns() {}
    HWY_INLINE void Next(V16 (&row)[kPhases]) {
      for (int p = 0; p < kPhases; ++p)
        row[p] = hn::Add(sums_[p].Next(row[p]), hn::Set(D16(), 128));
    }

   private:
    BinomialColumn<D16, 4> sums_[kPhases];
  };
};

// (sum + 2048) >> 12. Rows contribute up to 16320. The sum of three of them under 1 2 1 is 16 h + l
// with l below 16, and the sum of five of these under 1 4 6 4 1 is 16 H + L: H fits 16 bits, and L
// a byte. The first sums get a sixteenth of what rounds.
struct Binomial7x7 : SymmetricRow<20, 15, 6, 1> {
  static constexpr bool kInUpperBytes = true;
  class Columns {
   public:
    HWY_INLINE Columns() {}
    HWY_INLINE void Next(V16 (&row)[kPhases]) {
      const D16 d;
      const V16 low = hn::Set(d, 15);
      V16 threes[kPhases];
      for (int p = 0; p < kPhases; ++p) {
        threes[p] = hn::Add(threes_[p].Next(row[p]), hn::Set(d, 2048 / 16));
        row[p] = high_[p].Next(ShiftRightUnsigned<4>(threes[p]));
      }
#if HWY_TARGET == HWY_SCALAR
      const auto rest = low_.Next(hn::DemoteTo(D8(), hn::And(threes[0], low)));
      row[0] = hn::Add(row[0], ShiftRightUnsigned<4>(hn::PromoteTo(d, rest)));
#else
      const D8 d8;
      const auto rests =
          hn::OddEven(hn::BitCast(d8, hn::ShiftLeft<8>(threes[1])), hn::BitCast(d8, threes[0]));
      const V16 rest = hn::BitCast(d, low_.Next(hn::And(rests, hn::Set(d8, 15))));
      row[0] = hn::Add(row[0], hn::And(ShiftRightUnsigned<4>(rest), low));
      row[1] = hn::Add(row[1], ShiftRightUnsigned<12>(rest));
#endif
    }

   private:
    BinomialColumn<D16, 2> threes_[kPhases];
    BinomialColumn<D16, 4> high_[kPhases];
    BinomialColumn<D8, 4> low_;
  };
};

constexpr LargeSmoothingKernels kKernels = {
    .uniform5x5 = DescendedKernels<Uniform5x5>(),
    .uniform7x7 = DescendedKernels<Uniform7x7>(),
    .binomial5x5 = DescendedKernels<Binomial5x5>(),
    .binomial7x7 = DescendedKernels<Binomial7x7>(),
};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(LargeSmoothingKernels)
