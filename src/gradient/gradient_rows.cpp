#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "gradient/gradient_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "gradient/gradient_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"
#include "foundation/window-inl.h"

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
    LookUpEach(out + i, length, offsets, table.first);
  }
}
void LookUp(Rows<KyBW8> out, const KyBW8* const* rows, const GradientTable& table) {
  HWY_ALIGN KyBW32 gradients[kPiece];
  const size_t width = static_cast<size_t>(out.width);
  for (ptrdiff_t y = 0; y < out.height; ++y) {
    for (size_t i = 0; i < width; i += kPiece) {
      const size_t length = std::min(kPiece, width - i);
      StoreRow(gradients, length, rows[y] + i, rows[y + 1] + i, rows[y + 2] + i);
      LookUpStored(out.Row(y) + i, length, gradients, table);
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
