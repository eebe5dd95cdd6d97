#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "statistics/quality_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "statistics/quality_rows.h"

#include "foundation/dispatch.h"
#include "foundation/reduce-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

template <class V>
HWY_INLINE V Distance(V a, V b) {
  return hn::Sub(hn::Max(a, b), hn::Min(a, b));
}

// The energies of 8-bit elements.
template <class D>
class ErrorOfBytes {
 public:
  static constexpr size_t kMost = SumOfProducts<D>::kMost;

  HWY_INLINE ErrorOfBytes() {}
  HWY_INLINE void Step(D d, hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D>) {
#if KY_HAVE_MUL_ADD_BYTES
    sum_.StepDifference(d, a, b);
#else
    const auto distance = Distance(a, b);
    sum_.Step(d, distance, distance);
#endif
  }
  HWY_INLINE uint64_t Done() const { return sum_.Done(); }

 private:
  SumOfProducts<D> sum_;
};
template <class D>
class EnergiesOfBytes {
 public:
  static constexpr size_t kMost = SumOfProducts<D>::kMost;

  HWY_INLINE EnergiesOfBytes() {}
  HWY_INLINE void Step(D d, hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D> absent) {
    error_.Step(d, a, b, absent);
    reference_.Step(d, b, b);
  }
  HWY_INLINE Energies Done() const { return {reference_.Done(), error_.Done()}; }

 private:
  ErrorOfBytes<D> error_;
  SumOfProducts<D> reference_;
};

// The energies of 16-bit elements in lanes of 32 bits, which their squares fill.
template <class D, int kShift>
class ErrorOfWords {
 public:
  HWY_INLINE ErrorOfWords() {}
  HWY_INLINE void Step(D d, hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D>) {
    const auto distance = Distance(hn::ShiftLeft<kShift>(a), b);
    sum_.Step(d, hn::Mul(distance, distance));
  }
  HWY_INLINE uint64_t Done() const { return SumOfAll(sum_.EvenAndOdd()); }

 private:
  SumOfLane<D> sum_;
};
template <class D, int kShift>
class EnergiesOfWords {
 public:
  HWY_INLINE EnergiesOfWords() {}
  HWY_INLINE void Step(D d, hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D> absent) {
    error_.Step(d, a, b, absent);
    reference_.Step(d, hn::Mul(b, b));
  }
  HWY_INLINE Energies Done() const { return {SumOfAll(reference_.EvenAndOdd()), error_.Done()}; }

 private:
  ErrorOfWords<D, kShift> error_;
  SumOfLane<D> reference_;
};

template <class D>
class SumsOfPairs {
 public:
  static constexpr size_t kMost = SumOfProducts<D>::kMost;

  HWY_INLINE SumsOfPairs() {}
  HWY_INLINE void Step(D d, hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D> absent) {
    a_.Step(d, a, absent);
    b_.Step(d, b, absent);
    aa_.Step(d, a, a);
    bb_.Step(d, b, b);
    ab_.Step(d, a, b);
  }
  HWY_INLINE PairSums Done() const {
    return {a_.Done(), b_.Done(), aa_.Done(), bb_.Done(), ab_.Done()};
  }

 private:
  SumOfBytes<D> a_, b_;
  SumOfProducts<D> aa_, bb_, ab_;
};

// The differences of pixels from their right and lower neighbours.
template <class D>
class Sharpness {
 public:
  static constexpr size_t kMost = SumOfProducts<D>::kMost;

  HWY_INLINE Sharpness() {}
  HWY_INLINE void Step(D d, hn::Vec<D> v, hn::Vec<D> right, hn::Vec<D> below, hn::Vec<D> absent) {
    across_.Step(d, v, right, absent);
    down_.Step(d, v, below, absent);
  }
  HWY_INLINE uint64_t Done() const { return across_.Done() + down_.Done(); }

 private:
  ErrorOfBytes<D> across_, down_;
};

template <template <class> class Fold>
auto OfBytes(const KyBW8* a, const KyBW8* b, size_t n) {
  return ReduceSpan<Fold, KyBW8>(n, a, b);
}
uint64_t SharpnessOf(const KyBW8* row, const KyBW8* below, size_t n) {
  return ReduceSpan<Sharpness, KyBW8>(n, row, row + 1, below);
}

template <template <class, int> class Fold, class A>
auto OfWords(const A* a, const KyBW16* b, size_t n) {
  const hn::ScalableTag<uint32_t> d;
  return ReducePiece(d, Fold < decltype(d), sizeof(A) == 1 ? 8 : 0 > (), n, a, b);
}

constexpr QualityKernels kKernels = {&OfBytes<ErrorOfBytes>,
                                     &OfWords<ErrorOfWords, KyBW16>,
                                     &OfWords<ErrorOfWords, KyBW8>,
                                     &OfBytes<EnergiesOfBytes>,
                                     &OfWords<EnergiesOfWords, KyBW16>,
                                     &OfWords<EnergiesOfWords, KyBW8>,
                                     &OfBytes<SumsOfPairs>,
                                     &SharpnessOf};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(QualityKernels)
