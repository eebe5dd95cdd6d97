#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/thinning_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/thinning_rows.h"

#include <cstring>

#include "foundation/bits-inl.h"
#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

constexpr ptrdiff_t kBits = 64;

struct IsObject {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE hn::Mask<D> operator()(D d, V v) const {
    return hn::Ne(v, hn::Zero(d));
  }
};

void Pack(uint64_t* words, ptrdiff_t step, const KyBW8* row, ptrdiff_t n) {
  for (; n >= kBits; n -= kBits, row += kBits, words += step) *words = TruthBits(IsObject(), row);
  if (n == 0) return;
  KyBW8 last[kBits] = {};
  std::memcpy(last, row, static_cast<size_t>(n));
  *words = TruthBits(IsObject(), last);
}

// The 64 places of a word.
HWY_INLINE void UnpackWord(KyBW8* out, const KyBW8* in, uint64_t word) {
  const hn::ScalableTag<uint8_t> d;
  const auto zero = hn::Zero(d), most = hn::Set(d, 255);
  for (size_t i = 0; i < kBits; i += hn::MaxLanes(d)) {
    const uint64_t bits = word >> i;
    const auto isObject = hn::LoadMaskBits(d, reinterpret_cast<const uint8_t*>(&bits));
    const auto level = hn::LoadU(d, in + i);
    const auto object = hn::IfThenElse(hn::Eq(level, zero), most, level);
    hn::StoreU(hn::IfThenElseZero(isObject, object), d, out + i);
  }
}

void Unpack(KyBW8* out, const KyBW8* in, ptrdiff_t n, const uint64_t* words, ptrdiff_t step) {
  for (; n >= kBits; n -= kBits, in += kBits, out += kBits, words += step)
    UnpackWord(out, in, *words);
  if (n == 0) return;
  KyBW8 last[kBits] = {};
  std::memcpy(last, in, static_cast<size_t>(n));
  UnpackWord(last, last, *words);
  std::memcpy(out, last, static_cast<size_t>(n));
}

bool Match(uint64_t* matches, const uint64_t* tile, ptrdiff_t column, const BitPattern& pattern,
           const uint64_t* inside) {
  const hn::ScalableTag<uint64_t> d;
  auto all = hn::Zero(d);
  for (ptrdiff_t y = 0; y < kTileRows; y += static_cast<ptrdiff_t>(hn::MaxLanes(d))) {
    auto match = hn::LoadU(d, inside + y);
    for (int row = 0; row < 3; ++row) {
      const uint64_t* const words = tile + y + row - 1;
      const auto here = hn::LoadU(d, words);
      const auto fromLeft = hn::ShiftRight<63>(hn::LoadU(d, words - column));
      const auto fromRight = hn::ShiftLeft<63>(hn::LoadU(d, words + column));
      const auto join = [&](int i, auto bits) HWY_ATTR {
        const auto suits = hn::Xor(bits, hn::Set(d, pattern.flipped[i]));
        match = hn::And(match, hn::Or(suits, hn::Set(d, pattern.any[i])));
      };
      join(3 * row, hn::Or(hn::ShiftLeft<1>(here), fromLeft));
      join(3 * row + 1, here);
      join(3 * row + 2, hn::Or(hn::ShiftRight<1>(here), fromRight));
    }
    hn::StoreU(match, d, matches + y);
    all = hn::Or(all, match);
  }
  return !hn::AllTrue(d, hn::Eq(all, hn::Zero(d)));
}

constexpr ThinningKernels kKernels = {&Pack, &Unpack, &Match};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ThinningKernels)
