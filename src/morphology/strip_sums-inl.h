// Sums of columns' counts over a window, between two bounds. Included by row files like
// lanes-inl.h.
#if defined(KY_MORPHOLOGY_STRIP_SUMS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_MORPHOLOGY_STRIP_SUMS_INL_H_
#undef KY_MORPHOLOGY_STRIP_SUMS_INL_H_
#else
#define KY_MORPHOLOGY_STRIP_SUMS_INL_H_
#endif

#include <type_traits>

#include "foundation/registers-inl.h"
#include "foundation/window_lanes-inl.h"
#include "morphology/strip_rows.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
// Levels between two bounds, and so many counts. Vectors are of at most as many bytes.
constexpr int kLevels = RankStrip::kColumn;
using D = hn::CappedTag<uint8_t, kLevels>;
using V = hn::Vec<D>;
constexpr ptrdiff_t kLanes = hn::MaxLanes(D());

// Calls take(counts) for the counts of n columns.
template <class Take>
HWY_INLINE void ForEachColumn(const uint8_t* counts, ptrdiff_t n, const Take& take) {
  constexpr int kAtOnce = 4;
  for (; n >= kAtOnce; n -= kAtOnce, counts += kAtOnce * RankStrip::kColumn)
    ForEach<kAtOnce>([&]<int i>(std::integral_constant<int, i>)
                         KY_INLINE_ATTR { take(counts + i * RankStrip::kColumn); });
  for (; n > 0; --n, counts += RankStrip::kColumn) take(counts);
}

// The sums of a window's counts between two bounds, less what is given.
template <class Sum>
class Sums;

// In 8 bits. Those up to the rank are below 0, as signed numbers.
template <>
class Sums<uint8_t> {
 public:
  static constexpr uint8_t StartFor(int rank) { return static_cast<uint8_t>(-1 - rank); }

  HWY_INLINE void Set(uint8_t value) {
    for (V& v : v_) v = hn::Set(D(), value);
  }
  HWY_INLINE void Get(const uint8_t* from) {
    for (ptrdiff_t k = 0; k < kVectors; ++k) v_[k] = hn::LoadU(D(), from + k * kLanes);
  }
  HWY_INLINE void Put(uint8_t* to) const {
    for (ptrdiff_t k = 0; k < kVectors; ++k) hn::StoreU(v_[k], D(), to + k * kLanes);
  }
  // n columns of up to so many pixels come, or leave.
  HWY_INLINE void Add(const uint8_t* columns, ptrdiff_t n, ptrdiff_t) {
    ForEachColumn(columns, n, [&](const uint8_t* counts) HWY_ATTR {
      for (ptrdiff_t k = 0; k < kVectors; ++k)
        v_[k] = hn::Add(v_[k], hn::LoadU(D(), counts + k * kLanes));
    });
  }
  HWY_INLINE void Remove(const uint8_t* columns, ptrdiff_t n, ptrdiff_t) {
    ForEachColumn(columns, n, [&](const uint8_t* counts) HWY_ATTR {
      for (ptrdiff_t k = 0; k < kVectors; ++k)
        v_[k] = hn::Sub(v_[k], hn::LoadU(D(), counts + k * kLanes));
    });
  }
  HWY_INLINE void Slide(const uint8_t* leaving, const uint8_t* coming) {
    for (ptrdiff_t k = 0; k < kVectors; ++k)
      v_[k] = hn::Add(v_[k], Pinned(hn::Sub(hn::LoadU(D(), coming + k * kLanes),
                                            hn::LoadU(D(), leaving + k * kLanes))));
  }
  // How many are up to the rank, with so many pixels below.
  HWY_INLINE size_t CountUpToRank(uint8_t below) const {
    const hn::RebindToSigned<D> d;
    size_t count = 0;
    for (const V& v : v_) {
      const auto sum = hn::BitCast(d, hn::Add(v, hn::Set(D(), below)));
#if HWY_ARCH_X86  // only the highest bits count
      count += hn::CountTrue(d, hn::MaskFromVec(sum));
#else
      count += hn::CountTrue(d, hn::Lt(sum, hn::Zero(d)));
#endif
    }
    return count;
  }

 private:
  static constexpr ptrdiff_t kVectors = kLevels / kLanes;
  V v_[kVectors];
};

// In 16 bits, of columns of up to 127 pixels. Those up to the rank are below 0.
template <>
class Sums<uint16_t> {
  // One vector more than 32 bytes where there are such.
  using DSum = hn::CappedTag<int16_t, kLevels>;
  static constexpr ptrdiff_t kSums = hn::MaxLanes(DSum()), kVectors = kLevels / kSums;

 public:
  // Whether vectors of sums are limited to 8 bits and counted two at a time.
  static constexpr bool kPacks = HWY_ARCH_X86 && kVectors > 1;

  static constexpr uint16_t StartFor(int rank) { return static_cast<uint16_t>(-1 - rank); }

  HWY_INLINE void Set(uint16_t value) {
    for (VSum& v : v_) v = hn::BitCast(DSum(), hn::Set(DUnsigned(), value));
  }
  HWY_INLINE void Get(const uint16_t* from) {
    for (ptrdiff_t k = 0; k < kVectors; ++k)
      v_[k] = hn::BitCast(DSum(), hn::LoadU(DUnsigned(), from + k * kSums));
  }
  HWY_INLINE void Put(uint16_t* to) const {
    for (ptrdiff_t k = 0; k < kVectors; ++k)
      hn::StoreU(hn::BitCast(DUnsigned(), v_[k]), DUnsigned(), to + k * kSums);
  }
  // n columns of up to so many pixels come, or leave.
  HWY_INLINE void Add(const uint8_t* columns, ptrdiff_t n, ptrdiff_t pixels) {
    ForEachTotal(columns, n, pixels,
                 [](VSum sum, VSum total) HWY_ATTR { return hn::Add(sum, total); });
  }
  HWY_INLINE void Remove(const uint8_t* columns, ptrdiff_t n, ptrdiff_t pixels) {
    ForEachTotal(columns, n, pixels,
                 [](VSum sum, VSum total) HWY_ATTR { return hn::Sub(sum, total); });
  }
  HWY_INLINE void Slide(const uint8_t* leaving, const uint8_t* coming) {
    for (ptrdiff_t k = 0; k < kLevels; k += kLanes)
      AddSigned(
          k, hn::BitCast(D8(), hn::Sub(hn::LoadU(D(), coming + k), hn::LoadU(D(), leaving + k))));
  }
  // How many are up to the rank, with so many pixels below.
  HWY_INLINE size_t CountUpToRank(uint16_t below) const {
    size_t count = 0;
    for (ptrdiff_t k = 0; k < kVectors; k += kPacked)
      if constexpr (kPacks)
        count += CountNegative(Limited(k, below));
      else
        count += hn::CountTrue(DSum(), hn::Lt(PlusBelow(k, below), hn::Zero(DSum())));
    return count;
  }

  // Both for two windows of up to 63 rows, which widens half as often. Sums that are limited to 8
  // bits keep their sign when the next step is added, as it changes them by less than the limits.
  // `pending` is the last step, which the next call makes up for.
  using Steps = hn::Vec<D>[kLevels / kLanes];
  HWY_INLINE void SlideTwo(const uint8_t* leaving, const uint8_t* coming, const uint16_t* below,
                           uint8_t* levels, Steps& pending) {
    const D d;
    size_t first = 0, second = 0;
    for (ptrdiff_t k = 0; k < kLevels; k += kLanes) {
      const auto step = [&](ptrdiff_t i) HWY_ATTR {
        const ptrdiff_t at = i * RankStrip::kColumn + k;
        return hn::Sub(hn::LoadU(d, coming + at), hn::LoadU(d, leaving + at));
      };
      AddSigned(k, hn::BitCast(D8(), hn::Add(pending[k / kLanes], step(0))));
      const auto sums = Limited(k / kSums, below[0]);
      const V last = step(1);
      const V more = hn::Sub(hn::Set(d, static_cast<uint8_t>(below[1])),
                             hn::Set(d, static_cast<uint8_t>(below[0])));
      first += CountNegative(sums);
      second += CountNegative(hn::SaturatedAdd(sums, hn::BitCast(D8(), hn::Add(last, more))));
      pending[k / kLanes] = last;
    }
    levels[0] = static_cast<uint8_t>(first);
    levels[1] = static_cast<uint8_t>(second);
  }
  HWY_INLINE void MakeUpFor(const Steps& pending) {
    for (ptrdiff_t k = 0; k < kLevels; k += kLanes)
      AddSigned(k, hn::BitCast(D8(), pending[k / kLanes]));
  }

 private:
  using DUnsigned = hn::RebindToUnsigned<DSum>;
  using VSum = hn::Vec<DSum>;
  using D8 = hn::RebindToSigned<D>;
  template <class T>
  using Wide = std::conditional_t<hwy::IsSigned<T>(), int16_t, uint16_t>;
  static constexpr ptrdiff_t kPacked = kPacks ? 2 : 1;

  HWY_INLINE VSum PlusBelow(ptrdiff_t k, uint16_t below) const {
    return hn::Add(v_[k], hn::BitCast(DSum(), hn::Set(DUnsigned(), below)));
  }
  // The sums of the k-th vector and the next one, in the order of a column's counts.
  HWY_INLINE hn::Vec<D8> Limited([[maybe_unused]] ptrdiff_t k,
                                 [[maybe_unused]] uint16_t below) const {
#if HWY_ARCH_X86 && HWY_TARGET == HWY_AVX2
    return {_mm256_packs_epi16(PlusBelow(k, below).raw, PlusBelow(k + 1, below).raw)};
#elif HWY_ARCH_X86 && HWY_TARGET > HWY_AVX2
    return {_mm_packs_epi16(PlusBelow(k, below).raw, PlusBelow(k + 1, below).raw)};
#else
    return hn::Zero(D8());
#endif
  }
  HWY_INLINE static size_t CountNegative(hn::Vec<D8> sums) {
    return hn::CountTrue(D8(), hn::MaskFromVec(sums));  // only the highest bits count
  }

  // A few columns are added up in 8 bits first: four, or two of more than 63 pixels.
  template <class Change>
  HWY_INLINE void ForEachTotal(const uint8_t* columns, ptrdiff_t n, ptrdiff_t pixels,
                               const Change& change) {
    if (pixels <= 63)
      ForEachTotalOf<4>(columns, n, change);
    else
      ForEachTotalOf<2>(columns, n, change);
  }
  template <int kAtOnce, class Change>
  HWY_INLINE void ForEachTotalOf(const uint8_t* columns, ptrdiff_t n, const Change& change) {
    constexpr ptrdiff_t kStep = RankStrip::kColumn;
    const D d;
    for (; n >= kAtOnce; n -= kAtOnce, columns += kAtOnce * kStep)
      for (ptrdiff_t k = 0; k < kLevels; k += kLanes) {
        V total = hn::Add(hn::LoadU(d, columns + k), hn::LoadU(d, columns + k + kStep));
        if constexpr (kAtOnce == 4)
          total = hn::Add(total, hn::Add(hn::LoadU(d, columns + k + 2 * kStep),
                                         hn::LoadU(d, columns + k + 3 * kStep)));
        Widen(total, hn::Zero(d), v_ + k / kSums, change);
      }
    for (; n > 0; --n, columns += kStep)
      for (ptrdiff_t k = 0; k < kLevels; k += kLanes)
        Widen(hn::LoadU(d, columns + k), hn::Zero(d), v_ + k / kSums, change);
  }
  // Lanes with what stands in their upper halves, in the order of Interleave.
  template <class VBytes, class Change>
  HWY_INLINE static void Widen(VBytes bytes, VBytes upper, VSum* sums, const Change& change) {
    const hn::DFromV<VBytes> d;
    if constexpr (kVectors == 1) {
      const auto wide = hn::PromoteTo(hn::Rebind<Wide<hn::TFromD<decltype(d)> >, DSum>(), bytes);
      sums[0] = change(sums[0], hn::BitCast(DSum(), wide));
    } else {
      sums[0] = change(sums[0], hn::BitCast(DSum(), hn::InterleaveLower(d, bytes, upper)));
      sums[1] = change(sums[1], hn::BitCast(DSum(), hn::InterleaveUpper(d, bytes, upper)));
    }
  }
  // In an order that Limited makes up for.
  HWY_INLINE void AddSigned(ptrdiff_t k, hn::Vec<D8> counts) {
    const auto signs = hn::VecFromMask(D8(), hn::Lt(counts, hn::Zero(D8())));
    Widen(counts, signs, v_ + k / kSums,
          [](VSum sum, VSum more) HWY_ATTR { return hn::Add(sum, more); });
  }

  VSum v_[kVectors];
};
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
