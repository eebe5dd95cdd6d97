// Pixels from scattered places. Compiled once per instruction set, as lanes-inl.h is.
#if defined(KY_GEOMETRY_GATHER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_GEOMETRY_GATHER_INL_H_
#undef KY_GEOMETRY_GATHER_INL_H_
#else
#define KY_GEOMETRY_GATHER_INL_H_
#endif

#include "foundation/lanes-inl.h"
#include "geometry/gather.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// Whether the instruction set has loads from scattered places.
constexpr bool kGathers = HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2;

// A pixel and its right neighbour, each from the lowest byte of its lane up; the highest byte of a
// colour's lane is anything.
template <class D>
struct Pairs {
  hn::Vec<D> left, right;
};

#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2

// Where to read `kBytes` bytes from a pixel on. Where the row ends before these do, the read starts
// further left, and the lowest `drop` bits of it are to be dropped. (See CanGather.)
template <class D>
struct Places {
  hn::Vec<D> offset, drop;
};
template <int kBytes, class D, class T>
HWY_INLINE Places<D> PlacesOf(D d, const Rows<const T>& from, hn::Vec<D> x, hn::Vec<D> y) {
  if constexpr (sizeof(T) == 3) x = hn::Add(x, hn::Add(x, x));
  const auto last = hn::Set(d, static_cast<uint32_t>(from.RowBytes() - kBytes));
  const auto start = hn::Min(x, last);
  const auto row = hn::Mul(y, hn::Set(d, static_cast<uint32_t>(from.pitch)));
  return {hn::Add(row, start), hn::ShiftLeft<3>(hn::Sub(x, start))};
}

// The pixels (x, y) from the lowest byte of each lane up; the bytes above are anything.
template <class D, class T>
HWY_INLINE hn::Vec<D> GatherPixels(D d, const Rows<const T>& from, hn::Vec<D> x, hn::Vec<D> y) {
  const auto places = PlacesOf<4>(d, from, x, y);
  const auto* const base = reinterpret_cast<const uint32_t*>(from.first);
  const auto bytes = hn::GatherOffset(d, base, hn::BitCast(hn::RebindToSigned<D>(), places.offset));
  return hn::Shr(bytes, places.drop);
}

template <class D>
HWY_INLINE Pairs<D> GatherPairs(D d, const Rows<const KyBW8>& from, hn::Vec<D> x, hn::Vec<D> y) {
  const auto pixels = GatherPixels(d, from, x, y);
  const auto low = hn::Set(d, 255);
  return {hn::And(pixels, low), hn::And(hn::ShiftRight<8>(pixels), low)};
}
template <class D>
HWY_INLINE Pairs<D> GatherPairs(D d, const Rows<const KyC24>& from, hn::Vec<D> x, hn::Vec<D> y) {
  const hn::Repartition<uint64_t, D> d64;
  const auto places = PlacesOf<8>(d, from, x, y);
  const auto offset = hn::BitCast(d64, places.offset), drop = hn::BitCast(d64, places.drop);
  const auto* const base = reinterpret_cast<const uint64_t*>(from.first);
  const auto gather = [&](auto at, auto bits) HWY_ATTR {
    return hn::Shr(
        hn::GatherOffset(d64, base, hn::BitCast(hn::RebindToSigned<decltype(d64)>(), at)), bits);
  };
  // Both pixels of the even lanes, and of the odd ones.
  const auto low = hn::Set(d64, 0xFFFFFFFF);
  const auto even = gather(hn::And(offset, low), hn::And(drop, low));
  const auto odd = gather(hn::ShiftRight<32>(offset), hn::ShiftRight<32>(drop));
  return {
      hn::OddEven(hn::BitCast(d, hn::ShiftLeft<32>(odd)), hn::BitCast(d, even)),
      hn::OddEven(hn::BitCast(d, hn::ShiftLeft<8>(odd)), hn::BitCast(d, hn::ShiftRight<24>(even)))};
}

#else

HWY_INLINE uint32_t BitsOf(const KyBW8& pixel) { return pixel; }
HWY_INLINE uint32_t BitsOf(const KyC24& pixel) {
  return pixel.c0 | uint32_t{pixel.c1} << 8 | uint32_t{pixel.c2} << 16;
}

// Lane by lane, `right` pixels to the right of (x, y).
template <class D, class T>
HWY_INLINE hn::Vec<D> GatherPixels(D d, const Rows<const T>& from, hn::Vec<D> x, hn::Vec<D> y,
                                   ptrdiff_t right = 0) {
  constexpr size_t kLanes = hn::MaxLanes(D());
  HWY_ALIGN uint32_t xs[kLanes], ys[kLanes], pixels[kLanes];
  hn::Store(x, d, xs);
  hn::Store(y, d, ys);
  for (size_t i = 0; i < kLanes; ++i)
    pixels[i] = BitsOf(from.Row(ptrdiff_t{ys[i]})[ptrdiff_t{xs[i]} + right]);
  return hn::Load(d, pixels);
}

template <class D, class T>
HWY_INLINE Pairs<D> GatherPairs(D d, const Rows<const T>& from, hn::Vec<D> x, hn::Vec<D> y) {
  return {GatherPixels(d, from, x, y), GatherPixels(d, from, x, y, 1)};
}

#endif

// Stores the lowest byte, or the three lowest, of each lane as a pixel.
template <class D>
HWY_INLINE void StorePixels(D, hn::Vec<D> v, KyBW8* to) {
  const hn::Rebind<uint8_t, D> bytes;
#if HWY_TARGET == HWY_AVX3_DL
  hn::StoreU(hn::Vec<decltype(bytes)>{_mm512_cvtepi32_epi8(v.raw)}, bytes, to);
#else
  hn::StoreU(hn::TruncateTo(bytes, v), bytes, to);
#endif
}
template <class D>
HWY_INLINE void StorePixels(D, hn::Vec<D> v, KyC24* to) {
#if HWY_TARGET == HWY_SCALAR
  const uint32_t pixel = hn::GetLane(v);
  std::memcpy(to, &pixel, sizeof *to);
#elif HWY_TARGET == HWY_AVX3_DL
  const hn::Repartition<uint8_t, D> bytes;
  HWY_ALIGN static constexpr auto kTogether = [] {
    struct {
      uint8_t from[64] = {};
    } table;
    for (int i = 0; i < 48; ++i) table.from[i] = static_cast<uint8_t>(i / 3 * 4 + i % 3);
    return table;
  }();
  const auto pixels = _mm512_permutexvar_epi8(hn::Load(bytes, kTogether.from).raw, v.raw);
  _mm512_mask_storeu_epi8(to, 0xFFFFFFFFFFFF, pixels);
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

// The result of a formula whose pixels are the lowest bytes of its lanes.
template <class V>
struct LowBytes {
  V v;
};
template <class V, class T>
HWY_INLINE void StoreLanes(const LowBytes<V>& pixels, T* to) {
  StorePixels(hn::DFromV<V>(), pixels.v, to);
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
