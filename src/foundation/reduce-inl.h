// The vector loops of reductions. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_REDUCE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_REDUCE_INL_H_
#undef KY_FOUNDATION_REDUCE_INL_H_
#else
#define KY_FOUNDATION_REDUCE_INL_H_
#endif

#include <utility>

#include "foundation/lanes-inl.h"
#include "foundation/prefetch.h"
#include "foundation/reduce.h"
#include "foundation/spans-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// Lanes that are all ones in `absent` become 0.
template <class V>
HWY_INLINE V Without(V absent, V v) {
  return hn::AndNot(absent, v);
}
template <class V>
HWY_INLINE Planes3<V> Without(V absent, const Planes3<V>& v) {
  return {hn::AndNot(absent, v.c0), hn::AndNot(absent, v.c1), hn::AndNot(absent, v.c2)};
}

// Start, step, done over the elements at the same place in each row, in lanes of type Lane, which
// may be wider: Fold<D>() starts, Step(d, v..., absent) takes a vector of each in, Done() gives the
// result. The lanes that the rows leave free in their first and last vectors are 0 in v and all
// ones in `absent`, which is 0 in all others. A fold may have StepFour(d, from) besides, for the
// four vectors of one row from an address on. Vectors of 64 bytes are aligned in the first row:
// unaligned ones, each of which crosses a cache line, take up to a third longer.
template <class D, class Fold, class T, class... More>
HWY_INLINE void TakePiece(D d, Fold& fold, size_t n, const T* first, const More*... more) {
  const size_t lanes = hn::Lanes(d);
  constexpr size_t kAtOnce = 4;
  const auto step = [&](size_t at) HWY_ATTR {
    fold.Step(d, LoadLanes(d, first + at), LoadLanes(d, more + at)..., hn::Zero(d));
  };
  // Takes the vector from `at` on, but for the lanes in the mask, whose elements other steps take.
  const auto stepWithout = [&](hn::Mask<D> mask, size_t at) HWY_ATTR {
    const auto absent = hn::VecFromMask(d, mask);
    fold.Step(d, Without(absent, LoadLanes(d, first + at)),
              Without(absent, LoadLanes(d, more + at))..., absent);
  };
  size_t i = 0;
  if constexpr (sizeof(T) == 1 && hn::MaxLanes(D()) == 64) {
    const size_t before = -reinterpret_cast<uintptr_t>(first) % hn::MaxLanes(D());
    if (before > 0 && n >= 4 * kAtOnce * lanes) {
      stepWithout(hn::Not(hn::FirstN(d, before)), 0);
      i = before;
    }
  }
  // Without prefetches: where the processor's own suffice, as on Zen 4, they cost a third.
  for (; i + kAtOnce * lanes <= n; i += kAtOnce * lanes) {
    if constexpr (requires { fold.StepFour(d, first); })
      fold.StepFour(d, first + i);
    else
      for (size_t k = 0; k < kAtOnce; ++k) step(i + k * lanes);
  }
  for (; i + lanes <= n; i += lanes) step(i);
  if (const size_t rest = n - i; rest > 0 && n >= lanes) {
    stepWithout(hn::FirstN(d, lanes - rest), n - lanes);
  } else if (rest > 0) {
    const auto absent = hn::VecFromMask(d, hn::Not(hn::FirstN(d, rest)));
    fold.Step(d, LoadPart(d, first + i, rest), LoadPart(d, more + i, rest)..., absent);
  }
}
template <class D, class Fold, class... T>
HWY_INLINE auto ReducePiece(D d, Fold fold, size_t n, const T*... row) {
  TakePiece(d, fold, n, row...);
  return fold.Done();
}

// The most bytes of a vector. Memory bounds folds that do little with what they read, such as plain
// sums. Zen 4 takes up to a tenth longer to load 64 bytes at once than twice 32 from beyond the
// third cache, and up to a tenth less from within it.
inline constexpr size_t kAnyVector = 64, kShortVector = 32;
template <class T>
HWY_INLINE bool PaysShortVector(const Rows<const T>& rows) {
  return ExceedsThirdCache(rows.height * rows.width * static_cast<ptrdiff_t>(sizeof(T)));
}

// How many elements a fold is exact for: one that limits them says so by `static constexpr size_t
// kMost`.
template <class Fold>
constexpr size_t MostOf() {
  if constexpr (requires { Fold::kMost; })
    return Fold::kMost;
  else
    return SIZE_MAX;
}

// The same for any n, with a fold that may have parameters, as it is before the first step. A fold
// with a limit gets pieces of so many elements, whose results are added up by +=.
template <class D, class Fold, class... T>
HWY_INLINE auto ReduceInto(D d, const Fold& fold, size_t n, const T*... row) {
  if constexpr (requires { Fold::kMost; }) {
    decltype(fold.Done()) total{};
    for (size_t x = 0; x < n; x += Fold::kMost)
      total += ReducePiece(d, fold, HWY_MIN(n - x, size_t{Fold::kMost}), (row + x)...);
    return total;
  } else {
    return ReducePiece(d, fold, n, row...);
  }
}
// The results of all rows, added up by +=. A fold goes on from row to row while it may.
template <template <class> class Fold, class Lane, size_t kBytes = kAnyVector, class T>
HWY_INLINE auto ReduceAll(const Rows<const T>& rows) {
  using D = hn::CappedTag<Lane, kBytes / sizeof(Lane)>;
  using OfLanes = Fold<D>;
  const D d;
  const auto n = static_cast<size_t>(rows.width);
  OfLanes fold;
  decltype(fold.Done()) total{};
  size_t room = MostOf<OfLanes>();
  for (ptrdiff_t y = 0; y < rows.height; ++y) {
    if (n > MostOf<OfLanes>()) {
      total += ReduceInto(d, OfLanes(), n, rows.Row(y));
      continue;
    }
    if (n > room) {
      total += std::exchange(fold, OfLanes()).Done();
      room = MostOf<OfLanes>();
    }
    TakePiece(d, fold, n, rows.Row(y));
    room -= n;
  }
  return total += fold.Done();
}
template <template <class> class Fold, class Lane, size_t kBytes = kAnyVector, class... T>
HWY_INLINE auto ReduceSpan(size_t n, const T*... row) {
  using D = hn::CappedTag<Lane, kBytes / sizeof(Lane)>;
  return ReduceInto(D(), Fold<D>(), n, row...);
}

#if HWY_TARGET != HWY_SCALAR
// Every second 8-bit lane in 16 bits.
template <class D>
HWY_INLINE auto EvenBytes(D, hn::Vec<D> v) {
  const hn::Repartition<uint16_t, D> d16;
  return hn::And(hn::BitCast(d16, v), hn::Set(d16, 0xFF));
}
template <class D>
HWY_INLINE auto OddBytes(D, hn::Vec<D> v) {
  return hn::ShiftRight<8>(hn::BitCast(hn::Repartition<uint16_t, D>(), v));
}
#endif

// The sum of all lanes, which may wrap. (g++ adds up 64 bytes as signed numbers, which may not.)
template <class V>
HWY_INLINE auto SumOfAll(V v) {
  const hn::DFromV<V> d;
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  const hn::Half<decltype(d)> half;
  return hn::GetLane(hn::SumOfLanes(half, hn::Add(hn::LowerHalf(half, v), hn::UpperHalf(half, v))));
#else
  return hn::GetLane(hn::SumOfLanes(d, v));
#endif
}

// The sum of 8-bit elements.
template <class D>
class SumOfBytes {
 public:
  HWY_INLINE SumOfBytes() : sums_(hn::Zero(hn::DFromV<V64>())) {}
  HWY_INLINE void Step(D, hn::Vec<D> v, hn::Vec<D>) { sums_ = hn::Add(sums_, hn::SumsOf8(v)); }
  HWY_INLINE uint64_t Done() const { return SumOfAll(sums_); }

 private:
  using V64 = decltype(hn::SumsOf8(hn::Vec<D>()));
  V64 sums_;
};

// The sum of the products of pairs of 8-bit elements, at most kMost of them. A part of folds, which
// pass the limit on.
template <class D>
class SumOfProducts {
 public:
  static constexpr size_t kMost = 1 << 16;  // products that 32 bits hold

#if HWY_TARGET == HWY_SCALAR
  HWY_INLINE SumOfProducts() : sum_(hn::Zero(D32())) {}
  HWY_INLINE void Step(D, hn::Vec<D> a, hn::Vec<D> b) {
    sum_ = hn::Add(sum_, hn::Mul(hn::PromoteTo(D32(), a), hn::PromoteTo(D32(), b)));
  }
  HWY_INLINE uint32_t Done() const { return hn::GetLane(sum_); }

 private:
  using D32 = hn::Rebind<uint32_t, D>;
  hn::Vec<D32> sum_;
#else
  HWY_INLINE SumOfProducts()
      : even_(hn::Zero(D32())), odd_(hn::Zero(D32())), more_(hn::Zero(D32())) {}
  HWY_INLINE void Step(D d, hn::Vec<D> a, hn::Vec<D> b) {
    const hn::Repartition<int16_t, D> d16;
    StepWords(hn::BitCast(d16, EvenBytes(d, a)), hn::BitCast(d16, EvenBytes(d, b)), even_);
    StepWords(hn::BitCast(d16, OddBytes(d, a)), hn::BitCast(d16, OddBytes(d, b)), odd_);
  }
#if KY_HAVE_MUL_ADD_BYTES
  // The squares of the differences.
  HWY_INLINE void StepDifference(D d, hn::Vec<D> a, hn::Vec<D> b) {
    const hn::Repartition<uint16_t, D> d16;
    const auto oneAndLess = hn::BitCast(d, hn::Set(d16, 0xFF01));
    const auto lower = MulAddBytes(hn::InterleaveLower(d, a, b), oneAndLess);
    const auto upper = MulAddBytes(hn::InterleaveUpper(d, a, b), oneAndLess);
    StepWords(lower, lower, even_);
    StepWords(upper, upper, odd_);
  }
#endif
  HWY_INLINE uint32_t Done() const {
    const hn::RebindToUnsigned<D32> du32;
    return SumOfAll(hn::BitCast(du32, hn::Add(hn::Add(even_, odd_), more_)));
  }

 private:
  using D32 = hn::Repartition<int32_t, D>;
  template <class V16>
  HWY_INLINE void StepWords(V16 a, V16 b, hn::Vec<D32>& sum) {
    sum = hn::ReorderWidenMulAccumulate(D32(), a, b, sum, more_);
  }
  hn::Vec<D32> even_, odd_, more_;
#endif
};

// The Moments of 8-bit elements.
template <class D>
class SumAndSquares {
 public:
  static constexpr size_t kMost = SumOfProducts<D>::kMost;

  HWY_INLINE SumAndSquares() {}
  HWY_INLINE void Step(D d, hn::Vec<D> v, hn::Vec<D> absent) {
    sum_.Step(d, v, absent);
    squares_.Step(d, v, v);
  }
  HWY_INLINE Moments Done() const { return {sum_.Done(), squares_.Done()}; }

 private:
  SumOfBytes<D> sum_;
  SumOfProducts<D> squares_;
};

// The smallest or the largest of all lanes, of 8 or 16 bits.
template <class V>
HWY_INLINE auto SmallestOfAll(V v) {
  const hn::DFromV<V> d;
  using T = hn::TFromD<decltype(d)>;
#if HWY_TARGET != HWY_SCALAR
  if constexpr (sizeof(T) == 1)
    return static_cast<T>(SmallestOfAll(hn::Min(EvenBytes(d, v), OddBytes(d, v))));
  else
    return hn::GetLane(hn::MinOfLanes(d, v));
#else
  return T{hn::GetLane(v)};
#endif
}
template <class V>
HWY_INLINE auto LargestOfAll(V v) {
  const hn::DFromV<V> d;
  using T = hn::TFromD<decltype(d)>;
#if HWY_TARGET != HWY_SCALAR
  if constexpr (sizeof(T) == 1)
    return static_cast<T>(LargestOfAll(hn::Max(EvenBytes(d, v), OddBytes(d, v))));
  else
    return hn::GetLane(hn::MaxOfLanes(d, v));
#else
  return T{hn::GetLane(v)};
#endif
}

// The smallest and the largest of 8-bit elements, and their sum.
template <class D>
class ExtremesAndSumOfBytes {
 public:
  HWY_INLINE ExtremesAndSumOfBytes() : smallest_(hn::Set(D(), 255)), largest_(hn::Zero(D())) {}
  HWY_INLINE void Step(D d, hn::Vec<D> v, hn::Vec<D> absent) {
    sum_.Step(d, v, absent);
    smallest_ = hn::Min(smallest_, hn::Or(v, absent));
    largest_ = hn::Max(largest_, v);
  }
  HWY_INLINE ExtremesAndSum Done() const {
    return {SmallestOfAll(smallest_), LargestOfAll(largest_), sum_.Done()};
  }

 private:
  SumOfBytes<D> sum_;
  hn::Vec<D> smallest_, largest_;
};

// The sum of every lane, modulo the range of lanes twice as wide. Neighbours are kept in one wide
// lane: their sum as if both were one number, and the sum of the odd one.
template <class D>
class SumOfLane {
 public:
  using Wide = hwy::MakeWide<hn::TFromD<D>>;

#if HWY_TARGET == HWY_SCALAR
  HWY_INLINE SumOfLane() : sum_(hn::Zero(DWide())) {}
  HWY_INLINE void Step(D, hn::Vec<D> v) { sum_ = hn::Add(sum_, hn::PromoteTo(DWide(), v)); }
  HWY_INLINE void Store(Wide* to) const { hn::StoreU(sum_, DWide(), to); }
  HWY_INLINE auto EvenAndOdd() const { return sum_; }

 private:
  using DWide = hn::Rebind<Wide, D>;
  hn::Vec<DWide> sum_;
#else
  HWY_INLINE SumOfLane() : both_(hn::Zero(DWide())), odd_(hn::Zero(DWide())) {}
  HWY_INLINE void Step(D, hn::Vec<D> v) {
    const auto both = hn::BitCast(DWide(), v);
    both_ = hn::Add(both_, both);
    odd_ = hn::Add(odd_, hn::ShiftRight<kBits>(both));
  }
  HWY_INLINE void Store(Wide* to) const { hn::StoreInterleaved2(Even(), odd_, DWide(), to); }
  HWY_INLINE auto EvenAndOdd() const { return hn::Add(Even(), odd_); }

 private:
  using DWide = hn::Repartition<Wide, D>;
  static constexpr int kBits = 8 * sizeof(hn::TFromD<D>);
  HWY_INLINE auto Even() const { return hn::Sub(both_, hn::ShiftLeft<kBits>(odd_)); }
  hn::Vec<DWide> both_, odd_;
#endif
};

// The sum of 16-bit elements.
template <class D>
class SumOfWords {
 public:
  static constexpr size_t kMost = 1 << 16;  // words whose sum 32 bits hold

  HWY_INLINE SumOfWords() {}
  HWY_INLINE void Step(D d, hn::Vec<D> v, hn::Vec<D>) { sums_.Step(d, v); }
  HWY_INLINE uint64_t Done() const { return SumOfAll(sums_.EvenAndOdd()); }

 private:
  SumOfLane<D> sums_;
};

struct AddToSums {
  using Lane = uint32_t;
  static constexpr bool kKeeps = true;
  template <class D, class V>
  HWY_INLINE V operator()(D, V sum, V more) const {
    return hn::Add(sum, more);
  }
};

// Adds kRows rows to sums of columns, a SumOfLane for each vector.
template <int kRows, class Sum, class T>
HWY_INLINE void AddRowsToSums(Sum* sums, size_t vectors, const T* first, ptrdiff_t pitch) {
  const hn::ScalableTag<T> d;
  const Rows<const T> rows{first, pitch, 0, kRows};
  for (size_t k = 0; k < vectors; ++k) {
    Sum sum = sums[k];
    for (int y = 0; y < kRows; ++y) sum.Step(d, hn::LoadU(d, rows.Row(y) + k * hn::Lanes(d)));
    sums[k] = sum;
  }
}

// A ReduceColumnsKernel: the sums of kColumnRows 8-bit elements fit 16 bits. They stay in a first
// cache while few rows at a time are added, as processors read no more of them ahead.
template <class T>
HWY_INLINE void AddColumns(uint32_t* sums, size_t n, const T* first, ptrdiff_t pitch,
                           ptrdiff_t height) {
  using D = hn::ScalableTag<T>;
  using Sum = SumOfLane<D>;
  const D d;
  constexpr size_t kLanes = hn::MaxLanes(D()), kMost = 4096 / sizeof(T) / kLanes;
  constexpr int kAtOnce = 8;
  const Rows<const T> rows{first, pitch, static_cast<ptrdiff_t>(n), height};
  const auto take = [=](const Sum& sum, size_t x, size_t skipped, size_t count) HWY_ATTR {
    HWY_ALIGN typename Sum::Wide columns[kLanes];
    sum.Store(columns);
    MapSpan(AddToSums(), sums + x, count, columns + skipped);
  };
  size_t x = 0;
  while (n - x >= kLanes) {
    const size_t vectors = HWY_MIN((n - x) / kLanes, kMost);
    Sum sum[kMost];
    ptrdiff_t y = 0;
    for (; y + kAtOnce <= height; y += kAtOnce)
      AddRowsToSums<kAtOnce>(sum, vectors, rows.Row(y) + x, pitch);
    for (; y < height; ++y) AddRowsToSums<1>(sum, vectors, rows.Row(y) + x, pitch);
    for (size_t k = 0; k < vectors; ++k, x += kLanes) take(sum[k], x, 0, kLanes);
  }
  // A vector of one lane leaves no rest, which g++ does not see by itself.
  if (const size_t rest = n - x; kLanes > 1 && rest > 0) {
    // The last vector overlaps the one before it, whose columns are not taken twice.
    Sum sum;
    for (ptrdiff_t y = 0; y < height; ++y)
      sum.Step(d,
               n < kLanes ? LoadPart(d, rows.Row(y), n) : hn::LoadU(d, rows.Row(y) + n - kLanes));
    take(sum, x, n < kLanes ? 0 : kLanes - rest, rest);
  }
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
