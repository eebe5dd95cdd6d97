#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "statistics/statistics_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "statistics/statistics_rows.h"

#include "foundation/dispatch.h"
#include "foundation/reduce-inl.h"

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

// A fold that another one's owner goes on with after a row.
template <class Fold>
struct Lent {
  Fold* fold;
  template <class... V>
  HWY_INLINE void Step(V... v) {
    fold->Step(v...);
  }
  HWY_INLINE uint64_t Done() const { return fold->TakeSum(); }
};
ExtremesAndSum Extremes(const Rows<const KyBW8>& rows, uint64_t* sums) {
  const hn::ScalableTag<KyBW8> d;
  ExtremesAndSumOfBytes<hn::ScalableTag<KyBW8>> fold;
  for (ptrdiff_t y = 0; y < rows.height; ++y)
    sums[y] =
        ReducePiece(d, Lent<decltype(fold)>{&fold}, static_cast<size_t>(rows.width), rows.Row(y));
  return fold.Done();
}

template <template <class> class Fold, class Lane, class T>
auto Reduce(const T* row, size_t n) {
  return ReduceSpan<Fold, Lane>(n, row);
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

constexpr StatisticsKernels kKernels = {&OfAllRows<SumOfBytes, KyBW8>,
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
