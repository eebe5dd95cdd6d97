// Pixels from scattered places. Compiled once per instruction set, as rows-inl.h is.
#if defined(KY_GEOMETRY_GATHER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_GEOMETRY_GATHER_INL_H_
#undef KY_GEOMETRY_GATHER_INL_H_
#else
#define KY_GEOMETRY_GATHER_INL_H_
#endif

#include "foundation/rows-inl.h"
#include "geometry/gather.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// Whether the instruction set has loads from scattered places.
constexpr bool kGathers = HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2;

// The pixels (x, y), from the lowest byte of each lane up. Only the first `kBytes` bytes from the
// pixel's place on are meant, and they must lie inside the row; the bytes above are anything.
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
// Reads four bytes, further left where the row ends earlier. (See CanGather.)
template <int kBytes, class D, class T>
HWY_INLINE hn::Vec<D> GatherPixels(D d, const Rows<const T>& from, hn::Vec<D> x, hn::Vec<D> y) {
  const hn::RebindToSigned<D> signedD;
  if constexpr (sizeof(T) == 3) x = hn::Add(x, hn::Add(x, x));
  const auto last = hn::Set(d, static_cast<uint32_t>(from.RowBytes() - 4));
  const auto start = hn::Min(x, last);
  const auto offset = hn::Add(hn::Mul(y, hn::Set(d, static_cast<uint32_t>(from.pitch))), start);
  const auto* const base = reinterpret_cast<const uint32_t*>(from.first);
  const auto bytes = hn::GatherOffset(d, base, hn::BitCast(signedD, offset));
  return hn::Shr(bytes, hn::ShiftLeft<3>(hn::Sub(x, start)));
}
#else
template <int kBytes, class D, class T>
HWY_INLINE hn::Vec<D> GatherPixels(D d, const Rows<const T>& from, hn::Vec<D> x, hn::Vec<D> y) {
  constexpr size_t kLanes = hn::MaxLanes(D());
  HWY_ALIGN uint32_t xs[kLanes], ys[kLanes], pixels[kLanes] = {};
  hn::Store(x, d, xs);
  hn::Store(y, d, ys);
  for (size_t i = 0; i < kLanes; ++i)
    std::memcpy(&pixels[i], from.Row(ptrdiff_t{ys[i]}) + xs[i], kBytes);
  return hn::Load(d, pixels);
}
#endif

// Stores the lowest byte, or the three lowest, of each lane as a pixel.
template <class D>
HWY_INLINE void StorePixels(D, hn::Vec<D> v, KyBW8* to) {
  const hn::Rebind<uint8_t, D> bytes;
  hn::StoreU(hn::TruncateTo(bytes, v), bytes, to);
}
template <class D>
HWY_INLINE void StorePixels(D, hn::Vec<D> v, KyC24* to) {
#if HWY_TARGET == HWY_SCALAR
  const uint32_t pixel = hn::GetLane(v);
  std::memcpy(to, &pixel, sizeof *to);
#else
  // Four pixels of a block come together in its first 12 bytes.
  const hn::Repartition<uint8_t, D> bytes;
  alignas(16) static constexpr uint8_t kTogether[16] = {0,  1,  2,  4,  5,    6,    8,    9,
                                                        10, 12, 13, 14, 0x80, 0x80, 0x80, 0x80};
  HWY_ALIGN uint8_t blocks[hn::MaxLanes(bytes)];
  hn::Store(hn::TableLookupBytes(hn::BitCast(bytes, v), hn::LoadDup128(bytes, kTogether)), bytes,
            blocks);
  for (size_t i = 0; i < hn::MaxLanes(D()); i += 4) std::memcpy(to + i, blocks + 4 * i, 12);
#endif
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
