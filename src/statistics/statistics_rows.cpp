#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "statistics/statistics_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "statistics/statistics_rows.h"

#include "foundation/dispatch.h"
#include "foundation/prefetch.h"
#include "foundation/reduce-inl.h"
#include "foundation/registers-inl.h"
#include "foundation/stream-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// One fold for each component of colours.
template <template <class> class Fold>
struct Components {
  template <class D>
  class Of {
   public:
    static constexpr size_t kMost = MostOf<Fold<D>>();

    HWY_INLINE Of() {}
    HWY_INLINE void Step(D d, const Planes3<hn::Vec<D>>& v, hn::Vec<D> absent) {
      c0_.Step(d, v.c0, absent);
      c1_.Step(d, v.c1, absent);
      c2_.Step(d, v.c2, absent);
    }
    HWY_INLINE auto Done() const {
      return OfComponents<decltype(c0_.Done())>{{c0_.Done(), c1_.Done(), c2_.Done()}};
    }

   private:
    Fold<D> c0_, c1_, c2_;
  };
};

// The smallest or the largest element.
template <class D>
class Smallest {
 public:
  HWY_INLINE Smallest() : smallest_(hn::Not(hn::Zero(D()))) {}
  HWY_INLINE void Step(D, hn::Vec<D> v, hn::Vec<D> absent) {
    smallest_ = hn::Min(smallest_, hn::Or(v, absent));
  }
  HWY_INLINE hn::TFromD<D> Done() const { return SmallestOfAll(smallest_); }

 private:
  hn::Vec<D> smallest_;
};
template <class D>
class Largest {
 public:
  HWY_INLINE Largest() : largest_(hn::Zero(D())) {}
  HWY_INLINE void Step(D, hn::Vec<D> v, hn::Vec<D>) { largest_ = hn::Max(largest_, v); }
  HWY_INLINE hn::TFromD<D> Done() const { return LargestOfAll(largest_); }

 private:
  hn::Vec<D> largest_;
};

// The number of lanes in which a mask is set: each lane counts down from 0.
template <class D>
class CountOfMask {
 public:
  static constexpr size_t kMost = hwy::LimitsMax<hn::TFromD<D>>() * hn::MaxLanes(D());

  HWY_INLINE CountOfMask() : count_(hn::Zero(D())) {}
  template <class M>
  HWY_INLINE void Step(D d, M mask, hn::Vec<D> absent) {
    count_ = hn::Add(count_, hn::AndNot(absent, hn::VecFromMask(d, mask)));
  }
  // The same of lanes that are 0 or 1.
  HWY_INLINE void StepBits(hn::Vec<D> bits, hn::Vec<D> absent) {
    count_ = hn::Sub(count_, hn::AndNot(absent, bits));
  }
  HWY_INLINE uint64_t Done() const {
    std::conditional_t<sizeof(hn::TFromD<D>) == 1, SumOfBytes<D>, SumOfWords<D>> sum;
    sum.Step(D(), hn::Sub(hn::Zero(D()), count_), hn::Zero(D()));
    return sum.Done();
  }

 private:
  hn::Vec<D> count_;
};

template <class D>
class CountBetween {
 public:
  static constexpr size_t kMost = CountOfMask<D>::kMost;

  HWY_INLINE CountBetween(uint8_t low, uint8_t high)
      : low_(hn::Set(D(), low)), range_(hn::Set(D(), static_cast<uint8_t>(high - low))) {}
  HWY_INLINE void Step(D d, hn::Vec<D> v, hn::Vec<D> absent) {
    const auto above = hn::Sub(v, low_);
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2  // whose masks take long to become lanes
    const auto beyond = hn::SaturatedSub(above, range_);
    count_.StepBits(hn::SaturatedSub(hn::Set(d, 1), beyond), absent);
#else
    count_.Step(d, hn::Eq(hn::Min(above, range_), above), absent);
#endif
  }
  HWY_INLINE uint64_t Done() const { return count_.Done(); }

 private:
  hn::Vec<D> low_, range_;
  CountOfMask<D> count_;
};

template <class D>
class CountDifferent {
 public:
  static constexpr size_t kMost = CountOfMask<D>::kMost;

  HWY_INLINE CountDifferent() {}
  HWY_INLINE void Step(D d, hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D> absent) {
    count_.Step(d, hn::Ne(a, b), absent);
  }
  HWY_INLINE void Step(D d, const Planes3<hn::Vec<D>>& a, const Planes3<hn::Vec<D>>& b,
                       hn::Vec<D> absent) {
    const auto differs = hn::Or3(hn::Xor(a.c0, b.c0), hn::Xor(a.c1, b.c1), hn::Xor(a.c2, b.c2));
    count_.Step(d, hn::Ne(differs, hn::Zero(d)), absent);
  }
  HWY_INLINE uint64_t Done() const { return count_.Done(); }

 private:
  CountOfMask<D> count_;
};

// The sums of bytes in lanes of 32 bits, modulo 2^32.
template <class D>
class SumsInLanes {
 public:
  using V = hn::Vec<D>;
#if HWY_TARGET == HWY_SCALAR
  using D32 = hn::Rebind<uint32_t, D>;
#else
  using D32 = hn::Repartition<uint32_t, D>;
#endif

  HWY_INLINE SumsInLanes()
      : ones_(Pinned(hn::Set(D(), 1))), first_(hn::Zero(D32())), second_(hn::Zero(D32())) {}
  HWY_INLINE void Step(V v) { first_ = AddTo(first_, v); }
  HWY_INLINE void StepFour(V a, V b, V c, V d) {
    first_ = AddTo(AddTo(first_, a), c);
    second_ = AddTo(AddTo(second_, b), d);
  }
  // The sums since the last call.
  HWY_INLINE hn::Vec<D32> Take() {
    const auto sums = hn::Add(first_, second_);
    first_ = second_ = hn::Zero(D32());
    return sums;
  }

 private:
  HWY_INLINE hn::Vec<D32> AddTo(hn::Vec<D32> sums, V v) const {
#if HWY_TARGET == HWY_SCALAR
    return hn::Add(sums, hn::PromoteTo(D32(), v));
#elif HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3_DL && HWY_COMPILER_GCC
    // Processors of this target have the instruction, but Highway 1.0.3 does not tell compilers so.
    __asm__("vpdpbusd %2, %1, %0" : "+v"(sums.raw) : "v"(v.raw), "v"(ones_.raw));
    return sums;
#else
    return hn::Add(sums, hn::BitCast(D32(), hn::SumsOf8(v)));
#endif
  }

  V ones_;
  hn::Vec<D32> first_, second_;
};

#if HWY_TARGET != HWY_SCALAR
// A vector's blocks of 16 bytes, added up.
template <class V>
HWY_INLINE auto SumOfBlocks(V v) {
  const hn::DFromV<V> d;
  if constexpr (hn::MaxLanes(d) * sizeof(hn::TFromV<V>) > 16) {
    const hn::Half<decltype(d)> half;
    return SumOfBlocks(hn::Add(hn::LowerHalf(half, v), hn::UpperHalf(half, v)));
  } else {
    return v;
  }
}
// The sums of the lanes of four vectors, in their order.
template <class V>
HWY_INLINE auto SumsOfFour(V a, V b, V c, V e) {
  const hn::DFromV<V> d;
  const hn::Repartition<uint64_t, decltype(d)> dPairs;
  const auto ab = hn::Add(hn::InterleaveLower(d, a, b), hn::InterleaveUpper(d, a, b));
  const auto ce = hn::Add(hn::InterleaveLower(d, c, e), hn::InterleaveUpper(d, c, e));
  const auto lower = hn::InterleaveLower(dPairs, hn::BitCast(dPairs, ab), hn::BitCast(dPairs, ce));
  const auto upper = hn::InterleaveUpper(dPairs, hn::BitCast(dPairs, ab), hn::BitCast(dPairs, ce));
  return SumOfBlocks(hn::Add(hn::BitCast(d, lower), hn::BitCast(d, upper)));
}
#endif

// The smallest and the largest elements of rows, and the sum of each row. Of four vectors the
// extremes are found first, so that few steps wait for the one before. Vectors of 64 bytes come
// faster from far away where every second one is loaded by halves; nearby they come slower.
template <class D, bool kFar>
class ExtremesAndRowSums {
 public:
  using V = hn::Vec<D>;

  HWY_INLINE ExtremesAndRowSums() {}
  HWY_INLINE void Step(D d, V v, V absent) {
    sums_.Step(v);
    smallest_.Step(d, v, absent);
    largest_.Step(d, v, absent);
  }
  HWY_INLINE void StepFour(D d, const KyBW8* from) {
    const V a = At(d, from, 0), b = At(d, from, 1), c = At(d, from, 2), e = At(d, from, 3);
    sums_.StepFour(a, b, c, e);
    smallest_.Step(d, hn::Min(hn::Min(a, b), hn::Min(c, e)), hn::Zero(d));
    largest_.Step(d, hn::Max(hn::Max(a, b), hn::Max(c, e)), hn::Zero(d));
  }
  HWY_INLINE auto TakeSums() { return sums_.Take(); }
  HWY_INLINE KyBW8 SmallestOfRows() const { return smallest_.Done(); }
  HWY_INLINE KyBW8 LargestOfRows() const { return largest_.Done(); }

 private:
  HWY_INLINE static V At(D d, const KyBW8* from, size_t i) {
    from += i * hn::Lanes(d);
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
    if (kFar && i % 2 == 0) return Pinned(LoadByHalves(d, from));
#endif
    return Pinned(hn::LoadU(d, from));
  }

  SumsInLanes<D> sums_;
  Smallest<D> smallest_;
  Largest<D> largest_;
};

// Four rows at a time. Their sums are divided while the next four are read, and their means added
// up while the four after those are: each takes longer than a processor looks ahead.
template <bool kFar>
ExtremesAndMeans ExtremesOf(const Rows<const KyBW8>& rows) {
  const hn::ScalableTag<KyBW8> d;
  const auto n = static_cast<size_t>(rows.width);
  const auto width = static_cast<float>(rows.width);
  ExtremesAndRowSums<hn::ScalableTag<KyBW8>, kFar> fold;
  const auto sumsOf = [&](ptrdiff_t y) HWY_ATTR {
    TakePiece(d, fold, n, rows.Row(y));
    return fold.TakeSums();
  };
  float means = 0;
  ptrdiff_t y = 0;
#if HWY_TARGET != HWY_SCALAR
  constexpr size_t kMost = INT32_MAX / 255;  // elements whose sum fits a signed lane
  const hn::CappedTag<float, 4> dFloat;
  const hn::RebindToSigned<decltype(dFloat)> dSum;
  auto fourSums = hn::Zero(dSum);
  auto fourMeans = hn::Zero(dFloat);
  const auto divide = [&]() HWY_ATTR {
    fourMeans = hn::Div(hn::ConvertTo(dFloat, fourSums), hn::Set(dFloat, width));
  };
  const auto addUp = [&]() HWY_ATTR {
    HWY_ALIGN float four[4];
    hn::Store(fourMeans, dFloat, four);
    for (const float mean : four) means += mean;
  };
  for (; n <= kMost && y + 4 <= rows.height; y += 4) {
    const auto a = sumsOf(y);
    addUp();
    const auto b = sumsOf(y + 1), c = sumsOf(y + 2);
    divide();
    const auto e = sumsOf(y + 3);
    fourSums = AsSigned(SumsOfFour(a, b, c, e));
  }
  addUp();
  divide();
  addUp();
#endif
  for (; y < rows.height; ++y) means += static_cast<float>(SumOfAll(sumsOf(y))) / width;
  return {fold.SmallestOfRows(), fold.LargestOfRows(), means};
}
ExtremesAndMeans Extremes(const Rows<const KyBW8>& rows) {
  constexpr bool kFar = HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2;
  return ExceedsThirdCache(rows.width * rows.height) ? ExtremesOf<kFar>(rows)
                                                     : ExtremesOf<false>(rows);
}

template <template <class> class Fold, class Lane, class T>
auto Reduce(const T* row, size_t n) {
  return ReduceSpan<Fold, Lane>(n, row);
}
uint64_t SumOfAllRows(const Rows<const KyBW8>& rows) {
  return PaysShortVector(rows) ? ReduceAll<SumOfBytes, KyBW8, kShortVector>(rows)
                               : ReduceAll<SumOfBytes, KyBW8>(rows);
}
template <template <class> class Fold, class T>
auto OfAllRows(const Rows<const T>& rows) {
  return ReduceAll<Fold, KyBW8>(rows);
}
template <class Lane, class T>
uint64_t Different(const T* a, const T* b, size_t n) {
  return ReduceSpan<CountDifferent, Lane>(n, a, b);
}
uint64_t Between(const KyBW8* row, size_t n, KyBW8 low, KyBW8 high) {
  const hn::ScalableTag<KyBW8> d;
  return ReduceInto(d, CountBetween<hn::ScalableTag<KyBW8>>(low, high), n, row);
}

template <class T>
constexpr LevelKernels<T> kLevelKernels = {&Reduce<Smallest, T, T>, &Reduce<Largest, T, T>};

constexpr StatisticsKernels kKernels = {&SumOfAllRows,
                                        &OfAllRows<SumAndSquares, KyBW8>,
                                        &OfAllRows<Components<SumOfBytes>::Of, KyC24>,
                                        &OfAllRows<Components<SumAndSquares>::Of, KyC24>,
                                        &Extremes,
                                        kLevelKernels<KyBW8>,
                                        kLevelKernels<KyBW16>,
                                        &Between,
                                        &Different<KyBW8, KyBW8>,
                                        &Different<KyBW16, KyBW16>,
                                        &Different<KyBW8, KyC24>};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(StatisticsKernels)
