// Bytes picked from anywhere in two vectors of 64, which AVX-512 has an instruction for. Included
// by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_PICK_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_PICK_INL_H_
#undef KY_FOUNDATION_PICK_INL_H_
#else
#define KY_FOUNDATION_PICK_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_AVX3_DL
// Where bytes come from: places in the first vector, followed by those in the second.
struct alignas(64) BytePlaces {
  static constexpr size_t kBytes = 64;
  uint8_t of[kBytes];
};
// The i-th byte comes from placeOf(i).
template <class PlaceOf>
constexpr BytePlaces MakeBytePlaces(const PlaceOf& placeOf) {
  BytePlaces places{};
  for (size_t i = 0; i < BytePlaces::kBytes; ++i) places.of[i] = static_cast<uint8_t>(placeOf(i));
  return places;
}
// A bit for each byte that isOf(i) holds for.
template <class IsOf>
constexpr uint64_t MakeByteMask(const IsOf& isOf) {
  uint64_t mask = 0;
  for (size_t i = 0; i < BytePlaces::kBytes; ++i) mask |= uint64_t{isOf(i)} << i;
  return mask;
}

using Bytes64 = hwy::HWY_NAMESPACE::Vec<hwy::HWY_NAMESPACE::ScalableTag<uint8_t>>;
HWY_INLINE Bytes64 PickBytes(const BytePlaces& places, Bytes64 a) {
  return Bytes64{_mm512_permutexvar_epi8(_mm512_load_si512(places.of), a.raw)};
}
HWY_INLINE Bytes64 PickBytes(const BytePlaces& places, Bytes64 a, Bytes64 b) {
  return Bytes64{_mm512_permutex2var_epi8(a.raw, _mm512_load_si512(places.of), b.raw)};
}
// Those in the mask come from c, from their places modulo 64.
HWY_INLINE Bytes64 PickBytes(const BytePlaces& places, Bytes64 a, Bytes64 b, Bytes64 c,
                             uint64_t mask) {
  return Bytes64{_mm512_mask_permutexvar_epi8(PickBytes(places, a, b).raw, mask,
                                              _mm512_load_si512(places.of), c.raw)};
}
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
