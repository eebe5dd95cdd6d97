// Counts levels without tables. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_KERNELS_BLOCK_COUNTER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_KERNELS_BLOCK_COUNTER_INL_H_
#undef KY_FOUNDATION_KERNELS_BLOCK_COUNTER_INL_H_
#else
#define KY_FOUNDATION_KERNELS_BLOCK_COUNTER_INL_H_
#endif

#include <utility>

#include "foundation/kernels/count_rows.h"
#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_AVX3_DL
// A table takes one store a pixel, and processors do one a cycle. Here a block of pixels becomes 16
// sets, by the upper four bits of the levels, and 16 more by the lower four; the pixels of a level
// are what two sets have in common. A set is a vector with one bit a pixel, so that a level costs
// three instructions a block. This pays where one of them counts the bits of a vector.
class BlockCounter {
 public:
  HWY_INLINE BlockCounter() {
    for (auto& count : counts_) hn::Store(hn::Zero(D()), D(), count);
  }
  HWY_INLINE void Take(const KyBW8* block) {
    V planes[8];
    SplitBits(block, planes);
    const size_t place = taken_++;
    Combine(planes, lower_, place);
    Combine(planes + 4, upper_, place);
    if (taken_ == kBatch) CountBatch();
  }
  HWY_INLINE void AddTo(uint32_t* counts) {
    CountBatch();
    for (size_t i = 0; i < kSets; ++i)
      for (size_t k = 0; k < kSets; ++k)
        counts[kSets * i + k] += static_cast<uint32_t>(
            hn::GetLane(hn::SumOfLanes(D(), hn::Load(D(), counts_[Place(i, k)]))));
  }

 private:
  using D = hn::ScalableTag<uint64_t>;
  using V = hn::Vec<D>;
  static constexpr size_t kLanes = hn::MaxLanes(D());
  static_assert(kCountBlock == 8 * 8 * kLanes);
  // Sets go by groups, the levels of two groups being counted in registers, and a batch of blocks
  // together with all counts fits a first cache.
  static constexpr size_t kSets = 16, kGroup = 4, kGroups = kSets / kGroup, kBatch = 8;
  using Group = uint64_t[kBatch][kGroup][kLanes];
  using Sets = Group[kGroups];

  // Where the counts of a level stand, by its halves.
  static constexpr size_t Place(size_t upper, size_t lower) {
    return kSets * (upper / kGroup * kGroups + lower / kGroup) + kGroup * (upper % kGroup) +
           lower % kGroup;
  }

  // Exchanges the bits of places j + kApart in vector v with those of places j in vector v + kApart
  // wherever neither j nor v has the bit kApart.
  template <size_t kApart>
  static HWY_INLINE void Exchange(V* v, uint64_t places) {
    const V kept = hn::Set(D(), places);
    for (size_t i = 0; i < 8; ++i) {
      if ((i & kApart) != 0) continue;
      const V a = v[i], b = v[i + kApart];
      v[i] = hn::IfVecThenElse(kept, a, hn::ShiftLeft<kApart>(b));
      v[i + kApart] = hn::IfVecThenElse(kept, hn::ShiftRight<kApart>(a), b);
    }
  }
  // planes[j] = bit j of all pixels, in an order of its own.
  static HWY_INLINE void SplitBits(const KyBW8* block, V* planes) {
    const hn::Repartition<uint8_t, D> d8;
    for (size_t i = 0; i < 8; ++i)
      planes[i] = hn::BitCast(D(), hn::LoadU(d8, block + i * hn::Lanes(d8)));
    Exchange<4>(planes, 0x0F0F0F0F0F0F0F0F);
    Exchange<2>(planes, 0x3333333333333333);
    Exchange<1>(planes, 0x5555555555555555);
  }
  // The sets of pixels by four of their bits.
  static HWY_INLINE void Combine(const V* planes, Sets& sets, size_t block) {
    const auto pairs = [](V low, V high, V* pair) HWY_ATTR {
      pair[0] = hn::Not(hn::Or(low, high));
      pair[1] = hn::AndNot(high, low);
      pair[2] = hn::AndNot(low, high);
      pair[3] = hn::And(low, high);
    };
    V lower[4], upper[4];
    pairs(planes[0], planes[1], lower);
    pairs(planes[2], planes[3], upper);
    for (size_t i = 0; i < 4; ++i)
      for (size_t k = 0; k < 4; ++k) hn::Store(hn::And(upper[i], lower[k]), D(), sets[i][block][k]);
  }
  HWY_INLINE void CountBatch() {
    const size_t blocks = std::exchange(taken_, 0);
    for (size_t i = 0; i < kGroups; ++i)
      for (size_t k = 0; k < kGroups; ++k)
        CountGroup(upper_[i], lower_[k], blocks, counts_ + Place(kGroup * i, kGroup * k));
  }
  static HWY_INLINE void CountGroup(const Group& upper, const Group& lower, size_t blocks,
                                    uint64_t (*counts)[kLanes]) {
    V sums[kGroup * kGroup];
    for (size_t i = 0; i < kGroup * kGroup; ++i) sums[i] = hn::Load(D(), counts[i]);
    for (size_t block = 0; block < blocks; ++block)
      for (size_t k = 0; k < kGroup; ++k) {
        const V set = hn::Load(D(), lower[block][k]);
        for (size_t i = 0; i < kGroup; ++i) {
          const V common = hn::And(hn::Load(D(), upper[block][i]), set);
          V& sum = sums[kGroup * i + k];
          sum = hn::Add(sum, hn::PopulationCount(common));
        }
      }
    for (size_t i = 0; i < kGroup * kGroup; ++i) hn::Store(sums[i], D(), counts[i]);
  }

  alignas(64) Sets lower_, upper_;
  alignas(64) uint64_t counts_[kSets * kSets][kLanes];
  size_t taken_ = 0;  // blocks of the batch
};
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
