#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/kernels/mirror_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/kernels/mirror_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/shifts-inl.h"
#include "foundation/spans-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

struct Exchanged {
  using Lane = uint8_t;
  static constexpr bool kKeeps = true;
  template <class D, class V>
  HWY_INLINE Several<V, V> operator()(D, const Several<V, V>& both) const {
    return {both.more.first, {both.first}};
  }
};
void Exchange(KyBW8* a, KyBW8* b, size_t n) { MapSpan(Exchanged(), Several{a, b}, n); }

// Blocks of pixels at both ends change places, each reversed on the way, while at least one block
// lies between `first` and `end`. The last two may overlap: both are read before either is written.
template <class Block, class T>
HWY_INLINE void ReverseBlocks(T*& first, T*& end) {
  constexpr ptrdiff_t kPixels = Block::kPixels;
  while (end - first >= kPixels) {
    const Block left(first), right(end - kPixels);
    right.StoreReversed(first);
    left.StoreReversed(end - kPixels);
    first += kPixels;
    end -= kPixels;
  }
}

template <class D>
struct GreyBlock {
  static constexpr ptrdiff_t kPixels = hn::MaxLanes(D());
  hn::Vec<D> v;

  explicit HWY_INLINE GreyBlock(const KyBW8* from) : v(hn::LoadU(D(), from)) {}
  HWY_INLINE void StoreReversed(KyBW8* to) const { hn::StoreU(ReverseBytes(D(), v), D(), to); }
};

void Reverse(KyBW8* row, size_t n) {
  KyBW8* end = row + n;
  ReverseBlocks<GreyBlock<hn::ScalableTag<uint8_t>>>(row, end);
  ReverseBlocks<GreyBlock<hn::CappedTag<uint8_t, 16>>>(row, end);
  if (row < end) std::reverse(row, end);
}

struct ColorBlock {
  using D = hn::CappedTag<uint8_t, 16>;
  static constexpr ptrdiff_t kPixels = hn::MaxLanes(D());
  hn::Vec<D> a, b, c;

  explicit HWY_INLINE ColorBlock(const KyC24* from) {
    const KyBW8* const bytes = &from->c0;
    a = hn::LoadU(D(), bytes);
    b = hn::LoadU(D(), bytes + kPixels);
    c = hn::LoadU(D(), bytes + 2 * kPixels);
  }
  HWY_INLINE void StoreReversed(KyC24* to) const {
    KyBW8* const bytes = &to->c0;
    hn::Vec<D> first = a, second = b, third = c;
    ReverseTriples(D(), first, second, third);
    hn::StoreU(first, D(), bytes);
    hn::StoreU(second, D(), bytes + kPixels);
    hn::StoreU(third, D(), bytes + 2 * kPixels);
  }
};

void ReverseColors(KyC24* row, size_t n) {
  KyC24* end = row + n;
  ReverseBlocks<ColorBlock>(row, end);
  if (row < end) std::reverse(row, end);
}

constexpr MirrorKernels kKernels = {&Exchange, &Reverse, &ReverseColors};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(MirrorKernels)
