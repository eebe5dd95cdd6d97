// Lanes to bits of a byte or a word, and back. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_BITS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_BITS_INL_H_
#undef KY_FOUNDATION_BITS_INL_H_
#else
#define KY_FOUNDATION_BITS_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Bit i is set where op(d, in[i]...), a mask, is true; of 64 elements.
template <class Op, class... In>
HWY_INLINE uint64_t TruthBits(const Op& op, const In*... in) {
  const hn::ScalableTag<typename Op::Lane> d;
  using Part = hwy::UnsignedFromSize<(hn::MaxLanes(d) + 7) / 8>;
  uint64_t bits = 0;
  for (size_t i = 0; i < 64; i += hn::MaxLanes(d)) {
    Part part;
    hn::StoreMaskBits(d, op(d, LoadLanes(d, in + i)...), reinterpret_cast<uint8_t*>(&part));
    bits |= uint64_t{part} << i;
  }
  return bits;
}

// Bits of a byte, the most significant first: bit i of the `n` / 8 bytes is set where op(d, in[i])
// is 255 and clear where it is 0; n is a multiple of 8.
template <class Op>
HWY_INLINE void PackBits(const Op& op, uint8_t* bits, size_t n, const uint8_t* in) {
#if HWY_TARGET == HWY_SCALAR
  const hn::ScalableTag<uint8_t> d;
  for (size_t i = 0; i < n; i += 8) {
    unsigned byte = 0;
    for (size_t bit = 0; bit < 8; ++bit)
      byte = byte << 1 | (hn::GetLane(op(d, hn::LoadU(d, in + i + bit))) & 1u);
    bits[i / 8] = static_cast<uint8_t>(byte);
  }
#else
  const auto pack = [&](auto d, size_t i) HWY_ATTR {
    // Masks are stored from the least significant bit on.
    alignas(16) static constexpr uint8_t kMirrored[] = {7,  6,  5,  4,  3,  2,  1, 0,
                                                        15, 14, 13, 12, 11, 10, 9, 8};
    const auto mirrored = hn::LoadDup128(d, kMirrored);
    const auto truth = hn::TableLookupBytes(op(d, hn::LoadU(d, in + i)), mirrored);
    hn::StoreMaskBits(d, hn::MaskFromVec(truth), bits + i / 8);
  };
  const hn::ScalableTag<uint8_t> d;
  const hn::CappedTag<uint8_t, 8> eight;
  size_t i = 0;
  for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d)) pack(d, i);
  for (; i < n; i += 8) pack(eight, i);
#endif
}

// The reverse: out[i] = op(d, truth), where truth is 255 where bit i is set and 0 where it is
// clear.
template <class Op>
HWY_INLINE void UnpackBits(const Op& op, uint8_t* out, size_t n, const uint8_t* bits) {
#if HWY_TARGET == HWY_SCALAR
  const hn::ScalableTag<uint8_t> d;
  for (size_t i = 0; i < n; ++i) {
    const bool set = (bits[i / 8] >> (7 - i % 8) & 1) != 0;
    hn::StoreU(op(d, hn::Set(d, static_cast<uint8_t>(set ? 255 : 0))), d, out + i);
  }
#else
  const auto unpack = [&](auto d, size_t i) HWY_ATTR {
    const size_t bytes = hn::Lanes(d) / 8;
    HWY_ALIGN uint8_t places[hn::MaxLanes(d)], masks[hn::MaxLanes(d)];
    for (size_t k = 0; k < hn::Lanes(d); ++k) {
      places[k] = static_cast<uint8_t>(k / 8);
      masks[k] = static_cast<uint8_t>(0x80 >> k % 8);
    }
    uint64_t word = 0;
    std::memcpy(&word, bits + i / 8, bytes);
    const hn::Repartition<uint64_t, decltype(d)> d64;
    const auto all = hn::BitCast(d, hn::Set(d64, word));
    const auto spread = hn::TableLookupBytes(all, hn::Load(d, places));
    hn::StoreU(op(d, hn::VecFromMask(d, hn::TestBit(spread, hn::Load(d, masks)))), d, out + i);
  };
  const hn::ScalableTag<uint8_t> d;
  const hn::CappedTag<uint8_t, 8> eight;
  size_t i = 0;
  for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d)) unpack(d, i);
  for (; i < n; i += 8) unpack(eight, i);
#endif
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
