#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "gradient/gradient_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "gradient/gradient_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/look_up-inl.h"
#include "foundation/spans-inl.h"
#include "foundation/window_lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Differences have 9 bits: the low byte wraps, the high one is the sign.
struct Gradient {
  using Lane = uint8_t;

  template <class D, class V>
  HWY_INLINE Planes4<V> operator()(D d, V left, V right, V up, V down) const {
    const auto sign = [=](V a, V b) HWY_ATTR {
      return hn::Not(hn::VecFromMask(d, hn::Eq(hn::Max(a, b), a)));
    };
    return {hn::Sub(left, right), sign(left, right), hn::Sub(up, down), sign(up, down)};
  }
};

void StoreRow(KyBW32* out, size_t n, const KyBW8* above, const KyBW8* row, const KyBW8* below) {
  MapSpan(Gradient(), out, n, row - 1, row + 1, above, below);
}

void Store(Rows<KyBW32> out, const KyBW8* const* rows) {
  for (ptrdiff_t y = 0; y < out.height; ++y)
    StoreRow(out.Row(y), static_cast<size_t>(out.width), rows[y], rows[y + 1], rows[y + 2]);
}

// Where a gradient's entry lies: the low 9 bits of both differences count, and 256 more.
struct Offset {
  using Lane = int32_t;
  int32_t pitch;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V gradient) const {
    const auto place = [=](V g) HWY_ATTR {
      return hn::And(hn::Add(g, hn::Set(d, 256)), hn::Set(d, 511));
    };
    const V row = place(hn::ShiftRight<16>(gradient));
    return hn::Add(hn::Mul(row, hn::Set(d, pitch)), place(gradient));
  }
};

// Tables are read a pixel at a time, from offsets of a piece that stays in the first cache.
constexpr size_t kPiece = 512;

void LookUpStored(KyBW8* out, size_t n, const KyBW32* gradients, const GradientTable& table) {
  HWY_ALIGN int32_t offsets[kPiece];
  for (size_t i = 0; i < n; i += kPiece) {
    const size_t length = std::min(kPiece, n - i);
    MapSpan(Offset{table.pitch}, offsets, length, reinterpret_cast<const int32_t*>(gradients + i));
    LookUpBytes(out + i, length, offsets, table.first);
  }
}
HWY_NOINLINE void LookUpAll(KyBW8* out, size_t n, const KyBW8* const* rows,
                            const GradientTable& table) {
  HWY_ALIGN KyBW32 gradients[kPiece];
  StoreRow(gradients, n, rows[0], rows[1], rows[2]);
  LookUpStored(out, n, gradients, table);
}

#if HWY_TARGET != HWY_SCALAR
// The same from the near entries, for whole vectors; the results of differences that are not near,
// which are few, are replaced.
HWY_INLINE void LookUpNear(KyBW8* out, size_t n, const KyBW8* const* rows,
                           const GradientTable& table) {
  const hn::CappedTag<uint8_t, 32> d;  // half as many loads of neighbours cross a line of the cache
  const hn::RebindToSigned<decltype(d)> signed8;
  const size_t lanes = hn::Lanes(d);
  HWY_ALIGN uint16_t places[kPiece];
  uint64_t far[kPiece / 64] = {};
  size_t count = 0;
  for (size_t i = 0; i < n; i += lanes) {
    const auto at = [=](const KyBW8* from) HWY_ATTR { return hn::LoadU(d, from + i); };
    const auto left = at(rows[1] - 1), right = at(rows[1] + 1), up = at(rows[0]),
               down = at(rows[2]);
    const auto sizeOf = [](auto a, auto b) HWY_ATTR {
      return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
    };
    const auto sizes = hn::BitCast(signed8, hn::Or(sizeOf(left, right), sizeOf(up, down)));
    const auto isFar = hn::Lt(sizes, hn::Zero(signed8));
    hn::StoreMaskBits(signed8, isFar, reinterpret_cast<uint8_t*>(far) + i / 8);
    count += hn::CountTrue(signed8, isFar);
    const auto placeOf = [=](auto a, auto b)
                             HWY_ATTR { return hn::Xor(hn::Sub(a, b), hn::Set(d, 128)); };
    hn::StoreInterleaved2(placeOf(left, right), placeOf(up, down), d,
                          reinterpret_cast<uint8_t*>(places + i));
  }
  if (count > kPiece / 16) return LookUpAll(out, n, rows, table);
  LookUpBytes(out, n, places, table.near);
  for (size_t word = 0; count != 0; ++word)
    for (uint64_t bits = far[word]; bits != 0; bits &= bits - 1, --count) {
      const size_t x = 64 * word + hwy::Num0BitsBelowLS1Bit_Nonzero64(bits);
      const int gx = rows[1][static_cast<ptrdiff_t>(x) - 1] - rows[1][x + 1];
      const int gy = rows[0][x] - rows[2][x];
      out[x] = table.first[(gy + 256) * table.pitch + gx + 256];
    }
}
#endif

void LookUp(Rows<KyBW8> out, const KyBW8* const* rows, const GradientTable& table) {
  const size_t width = static_cast<size_t>(out.width);
  for (ptrdiff_t y = 0; y < out.height; ++y) {
    for (size_t i = 0; i < width; i += kPiece) {
      const size_t length = std::min(kPiece, width - i);
      const KyBW8* const from[3] = {rows[y] + i, rows[y + 1] + i, rows[y + 2] + i};
#if HWY_TARGET != HWY_SCALAR
      if (table.near != nullptr) {
        LookUpNear(out.Row(y) + i, length, from, table);
        continue;
      }
#endif
      LookUpAll(out.Row(y) + i, length, from, table);
    }
  }
}

constexpr GradientKernels kKernels = {hn::MaxLanes(hn::ScalableTag<uint8_t>()), &Store, &LookUp,
                                      &LookUpStored};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(GradientKernels)
