// Vectors of which memory holds only the first elements, as in rows shorter than a vector. No byte
// after these is touched, and none is stored that is loaded as part of a larger vector: processors
// wait a dozen cycles for such a store. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_PARTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_PARTS_INL_H_
#undef KY_FOUNDATION_PARTS_INL_H_
#else
#define KY_FOUNDATION_PARTS_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2

// The first n elements, up to a whole vector; lanes without an element are 0.
template <class D, class T>
HWY_INLINE hn::Vec<D> LoadFirst(D d, const T* from, size_t n) {
  return hn::MaskedLoad(hn::FirstN(d, n), d, from);
}
// Stores the first n lanes, up to all.
template <class D, class T>
HWY_INLINE void StoreFirst(D d, hn::Vec<D> v, T* to, size_t n) {
  hn::BlendedStore(v, hn::FirstN(d, n), d, to);
}

#elif HWY_TARGET == HWY_SCALAR  // a vector has no part

template <class D, class T>
HWY_INLINE hn::Vec<D> LoadFirst(D d, const T* from, size_t n) {
  return n == 0 ? hn::Zero(d) : hn::LoadU(d, from);
}
template <class D, class T>
HWY_INLINE void StoreFirst(D d, hn::Vec<D> v, T* to, size_t n) {
  if (n > 0) hn::StoreU(v, d, to);
}

#else

// Two blocks of kBlock bytes at either end of n bytes, which may overlap.
template <size_t kBlock>
HWY_INLINE void CopyEnds(uint8_t* to, const uint8_t* from, size_t n) {
  std::memcpy(to, from, kBlock);
  std::memcpy(to + n - kBlock, from + n - kBlock, kBlock);
}

// Bytes as a vector of at most 16, with 0 after them.
struct Words {
  uint64_t lower, upper;
};
template <class Word>
HWY_INLINE uint64_t WordAt(const uint8_t* from) {
  Word word;
  std::memcpy(&word, from, sizeof word);
  return word;
}
// n may be 0 to 15.
HWY_INLINE Words LoadWords(const uint8_t* from, size_t n) {
  if (n >= 8) {
    const uint64_t last = WordAt<uint64_t>(from + n - 8);
    return {WordAt<uint64_t>(from), last >> (8 * (15 - n)) >> 8};
  }
  if (n >= 4) return {WordAt<uint32_t>(from) | WordAt<uint32_t>(from + n - 4) << (8 * (n - 4)), 0};
  if (n == 0) return {0, 0};
  const size_t middle = n / 2, last = n - 1;
  return {uint64_t{from[0]} | uint64_t{from[middle]} << (8 * middle) |
              uint64_t{from[last]} << (8 * last),
          0};
}
template <class D8>
HWY_INLINE hn::Vec<D8> VectorOf(D8 d, const Words& words) {
  if constexpr (hn::MaxLanes(D8()) == 16) {
    const hn::Repartition<uint64_t, D8> d64;
    const hn::Half<decltype(d64)> half;
    return hn::BitCast(d, hn::Combine(d64, hn::Set(half, words.upper), hn::Set(half, words.lower)));
  } else {
    using Word = hwy::UnsignedFromSize<hn::MaxLanes(D8())>;
    return hn::BitCast(d, hn::Set(hn::CappedTag<Word, 1>(), static_cast<Word>(words.lower)));
  }
}

// The first n bytes, fewer than the vector has; lanes without one are 0.
template <class D8>
HWY_INLINE hn::Vec<D8> LoadFirstBytes(D8 d, const uint8_t* from, size_t n) {
  if constexpr (hn::MaxLanes(D8()) == 32) {
    const hn::Half<D8> half;
    if (n < 16) return hn::ZeroExtendVector(d, VectorOf(half, LoadWords(from, n)));
    // The table's vector from 32 - n on has the places of bytes 16 to n - 1 among the last 16.
    alignas(32) static constexpr uint8_t kPlaces[32] = {
        0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,
        11,   12,   13,   14,   15,   0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
        0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
    const auto last = hn::LoadU(half, from + n - 16), places = hn::LoadU(half, kPlaces + 32 - n);
    return hn::Combine(d, hn::TableLookupBytesOr0(last, places), hn::LoadU(half, from));
  } else {
    return VectorOf(d, LoadWords(from, n));
  }
}

template <class D, class T>
HWY_INLINE hn::Vec<D> LoadFirst(D d, const T* from, size_t n) {
  if (n >= hn::Lanes(d)) return hn::LoadU(d, from);
  const hn::Repartition<uint8_t, D> d8;
  return hn::BitCast(d, LoadFirstBytes(d8, reinterpret_cast<const uint8_t*>(from), n * sizeof(T)));
}
template <class D, class T>
HWY_INLINE void StoreFirst(D d, hn::Vec<D> v, T* to, size_t n) {
  if (n >= hn::Lanes(d)) return hn::StoreU(v, d, to);
  HWY_ALIGN T all[hn::MaxLanes(D())];
  hn::StoreU(v, d, all);
  const size_t bytes = n * sizeof(T);
  const auto* const from = reinterpret_cast<const uint8_t*>(all);
  auto* const bytesTo = reinterpret_cast<uint8_t*>(to);
  if (bytes >= 16)
    CopyEnds<16>(bytesTo, from, bytes);
  else if (bytes >= 8)
    CopyEnds<8>(bytesTo, from, bytes);
  else if (bytes >= 4)
    CopyEnds<4>(bytesTo, from, bytes);
  else if (bytes >= 2)
    CopyEnds<2>(bytesTo, from, bytes);
  else if (bytes == 1)
    *bytesTo = *from;
}

#endif

// Copies n elements to aligned memory for kCount of them, with zeros after them, and from there.
// That memory is stored and loaded by whole vectors.
template <size_t kCount, class T>
HWY_INLINE void ReadPart(T* all, const T* from, size_t n) {
  const hn::CappedTag<uint8_t, kCount> d;
  const size_t lanes = hn::Lanes(d), bytes = n * sizeof(T);
  for (size_t at = 0; at < kCount * sizeof(T); at += lanes) {
    const auto* const first = reinterpret_cast<const uint8_t*>(from) + at;
    const auto v = at < bytes ? LoadFirst(d, first, HWY_MIN(bytes - at, lanes)) : hn::Zero(d);
    hn::Store(v, d, reinterpret_cast<uint8_t*>(all) + at);
  }
}
template <size_t kCount, class T>
HWY_INLINE void WritePart(T* to, const T* all, size_t n) {
  const hn::CappedTag<uint8_t, kCount> d;
  const size_t lanes = hn::Lanes(d), bytes = n * sizeof(T);
  for (size_t at = 0; at < bytes; at += lanes)
    StoreFirst(d, hn::Load(d, reinterpret_cast<const uint8_t*>(all) + at),
               reinterpret_cast<uint8_t*>(to) + at, HWY_MIN(bytes - at, lanes));
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
