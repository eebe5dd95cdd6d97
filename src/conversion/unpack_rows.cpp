#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "conversion/unpack_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "conversion/unpack_rows.h"

#include <algorithm>
#include <cstring>

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

using D16 = hn::ScalableTag<uint16_t>;
using V16 = hn::Vec<D16>;
constexpr size_t kLanes = hn::MaxLanes(D16());

// 8 pixels, which start with a byte, are read as 8 words, low byte first: `places` says which
// bytes these are. The words are multiplied by `factors`, which moves the pixel to the top of a
// bit stream, or the low bits to bits 4 to 7 in the forms of two pixels in three bytes.
struct Layout {
  uint8_t places[16];
  uint16_t factors[8];
};

// A little-endian stream.
template <int kBitsOfPixel>
struct Stream {
  static constexpr size_t kBits = kBitsOfPixel, kBytes = kBits;  // of 8 pixels
  static constexpr size_t BytesOf(size_t n) { return (n * kBits + 7) / 8; }
  static constexpr Layout kLayout = [] {
    Layout layout{};
    for (size_t i = 0; i < 8; ++i) {
      layout.places[2 * i] = static_cast<uint8_t>(i * kBits / 8);
      layout.places[2 * i + 1] = static_cast<uint8_t>(i * kBits / 8 + 1);
      layout.factors[i] = static_cast<uint16_t>(1 << (16 - kBits - i * kBits % 8));
    }
    return layout;
  }();
  static HWY_INLINE V16 Level(V16, V16 product) { return hn::ShiftRight<16 - kBits>(product); }
  static HWY_INLINE V16 HighBits(V16, V16 product) { return hn::ShiftRight<8>(product); }
};
// Three bytes for two pixels.
template <int kBitsOfPixel>
struct Triples {
  static constexpr size_t kBits = kBitsOfPixel, kBytes = 12;  // of 8 pixels
  static constexpr size_t BytesOf(size_t n) { return (n + 1) / 2 * 3; }
  static constexpr Layout kLayout = [] {
    Layout layout{};
    for (size_t i = 0; i < 8; ++i) {
      layout.places[2 * i] = static_cast<uint8_t>(i / 2 * 3 + 1);
      layout.places[2 * i + 1] = static_cast<uint8_t>(i / 2 * 3 + i % 2 * 2);
      layout.factors[i] = i % 2 == 0 ? 16 : 1;
    }
    return layout;
  }();
  static HWY_INLINE V16 Level(V16 word, V16 product) {
    const V16 low = hn::And(hn::ShiftRight<4>(product), hn::Set(D16(), (1 << (kBits - 8)) - 1));
    return hn::Or(hn::ShiftLeft<kBits - 8>(hn::ShiftRight<8>(word)), low);
  }
  static HWY_INLINE V16 HighBits(V16 word, V16) { return hn::ShiftRight<8>(word); }
};

#if HWY_TARGET == HWY_SCALAR
// The pixel that is the i-th of its 8; its word.
constexpr size_t kSlack = 0;
template <class Format>
HWY_INLINE V16 LoadWords(const uint8_t* row, size_t i) {
  const uint8_t* const places = Format::kLayout.places + 2 * (i % 8);
  const uint8_t* const from = row + i / 8 * Format::kBytes;
  return hn::Set(D16(), static_cast<uint16_t>(from[places[0]] | from[places[1]] << 8));
}
template <class Format>
HWY_INLINE V16 Factors(size_t i) {
  return hn::Set(D16(), Format::kLayout.factors[i % 8]);
}
#else
// Blocks of 16 bytes are read, of which not all belong to the 8 pixels.
constexpr size_t kSlack = 16;
template <class Format, class D>
HWY_INLINE hn::Vec<D> LoadBlocks(D d, const uint8_t* from) {
  if constexpr (hn::MaxLanes(D()) == 16) {
    return hn::LoadU(d, from);
  } else {
    const hn::Half<D> half;
    constexpr size_t kHalfBytes = hn::MaxLanes(half) / 16 * Format::kBytes;
    return hn::Combine(d, LoadBlocks<Format>(half, from + kHalfBytes),
                       LoadBlocks<Format>(half, from));
  }
}
template <class Format>
HWY_INLINE V16 LoadWords(const uint8_t* row, size_t i) {
  const hn::ScalableTag<uint8_t> d8;
  const auto places = hn::LoadDup128(d8, Format::kLayout.places);
  const auto bytes = LoadBlocks<Format>(d8, row + i / 8 * Format::kBytes);
  return hn::BitCast(D16(), hn::TableLookupBytes(bytes, places));
}
template <class Format>
HWY_INLINE V16 Factors(size_t) {
  return hn::LoadDup128(D16(), Format::kLayout.factors);
}
#endif

template <class Format, class T>
HWY_INLINE void UnpackVector(T* out, const uint8_t* row, size_t i) {
  const V16 words = LoadWords<Format>(row, i);
  const V16 products = hn::Mul(words, Factors<Format>(i));
  if constexpr (sizeof(T) == 2)
    StoreLanes(Format::Level(words, products), out);
  else
    StoreLanes(Format::HighBits(words, products), out);
}

template <class Format, class T>
void UnpackRow(T* out, size_t n, const uint8_t* row) {
  constexpr size_t kGroup = std::max<size_t>(kLanes, 8), kGroupBytes = kGroup / 8 * Format::kBytes;
  const size_t bytes = Format::BytesOf(n), readable = bytes + Format::kBytes;
  const size_t groups =
      std::min(n / kGroup, readable < kSlack ? 0 : (readable - kSlack) / kGroupBytes);
  for (size_t k = 0; k < groups; ++k, out += kGroup, row += kGroupBytes)
    for (size_t i = 0; i < kGroup; i += kLanes) UnpackVector<Format>(out + i, row, i);
  // The rest, of less than two groups, from a copy that may be read beyond its end.
  const size_t rest = n - groups * kGroup;
  if (rest == 0) return;
  uint8_t copy[(2 * kLanes / 8 + 3) * 16 + kSlack] = {};
  T results[2 * kLanes + 32];
  std::memcpy(copy, row, std::min(bytes - groups * kGroupBytes, sizeof copy));
  for (size_t i = 0; i < rest; i += kLanes) UnpackVector<Format>(results + i, copy, i);
  std::copy_n(results, rest, out);
}

constexpr UnpackKernels kKernels = {
    {&UnpackRow<Stream<10>, KyBW16>, &UnpackRow<Stream<12>, KyBW16>,
     &UnpackRow<Triples<10>, KyBW16>, &UnpackRow<Triples<12>, KyBW16>},
    {&UnpackRow<Stream<10>, KyBW8>, &UnpackRow<Stream<12>, KyBW8>, &UnpackRow<Triples<10>, KyBW8>,
     &UnpackRow<Triples<12>, KyBW8>}};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(UnpackKernels)
