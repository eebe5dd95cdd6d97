#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/across_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/across_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/prefetch-inl.h"
#include "morphology/extremes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Some vectors of a row, joined with those of others.
template <class Op, int kVectors>
struct Vectors {
  HWY_INLINE Vectors() {
    for (V& e : extreme) e = hn::Set(D(), Op::kNeutral);
  }
  HWY_INLINE explicit Vectors(const KyBW8* row) {
    for (int k = 0; k < kVectors; ++k) extreme[k] = hn::LoadU(D(), row + k * Lanes());
  }
  HWY_INLINE void Join(const KyBW8* row) {
    for (int k = 0; k < kVectors; ++k)
      extreme[k] = Op()(extreme[k], hn::LoadU(D(), row + k * Lanes()));
  }
  HWY_INLINE void Put(KyBW8* row) const {
    for (int k = 0; k < kVectors; ++k) hn::StoreU(extreme[k], D(), row + k * Lanes());
  }

  V extreme[kVectors];
};

// out = extreme(a, b). Of a strip that reaches beyond its block, `part` elements are written.
template <class Op, int kVectors>
HWY_INLINE void PutResult(const Vectors<Op, kVectors>& a, const Vectors<Op, kVectors>& b,
                          KyBW8* out, ptrdiff_t part) {
  for (int k = 0; k < kVectors; ++k) {
    const V result = Op()(a.extreme[k], b.extreme[k]);
    // The next strip's line: processors foresee rows, but not strips.
    if (k * Lanes() % 64 == 0) PrefetchAhead<64>(out, (kVectors + k) * Lanes());
    if (part < Lanes())
      StorePart(D(), result, out, static_cast<size_t>(part));
    else
      hn::StoreU(result, D(), out + k * Lanes());
  }
}

// A strip of some vectors through the rows of a block.
template <class Op, int kVectors>
HWY_INLINE void AcrossStrip(const RowBlock& block, ptrdiff_t x, ptrdiff_t part) {
  const ptrdiff_t width = kVectors * Lanes(), n = block.n, outputs = block.outputs;
  KyBW8* const toEnds = block.toEnds;
  if (outputs > 0) {
    const KyBW8* const* const first = block.first;
    Vectors<Op, kVectors> toEnd;
    for (ptrdiff_t i = 0; i < block.betweenCount; ++i) toEnd.Join(block.between[i] + x);
    for (ptrdiff_t i = n - 1; i >= 0; --i) {
      toEnd.Join(first[i] + x);
      toEnd.Put(toEnds + i * width);
    }
  }
  const KyBW8* const* const last = block.last;
  KyBW8* const* const out = block.out;
  Vectors<Op, kVectors> fromStart;
  for (ptrdiff_t i = 0; i < outputs; ++i) {
    fromStart.Join(last[i] + x);
    PutResult(fromStart, Vectors<Op, kVectors>(toEnds + i * width), out[i] + x, part);
  }
  if (block.total == nullptr) return;
  for (ptrdiff_t i = outputs; i < n; ++i) fromStart.Join(last[i] + x);
  fromStart.Put(block.total + x);
}

// The same of a whole block of kRows, with none between, which keeps in registers what fits there.
template <class Op, int kRows, int kVectors>
HWY_INLINE void AcrossFew(const RowBlock& block, ptrdiff_t x) {
  Vectors<Op, kVectors> toEnd[kRows];
  toEnd[kRows - 1] = Vectors<Op, kVectors>(block.first[kRows - 1] + x);
  for (int i = kRows - 2; i >= 0; --i) {
    toEnd[i] = toEnd[i + 1];
    toEnd[i].Join(block.first[i] + x);
  }
  Vectors<Op, kVectors> fromStart;
  for (int i = 0; i < kRows; ++i) {
    fromStart.Join(block.last[i] + x);
    PutResult(fromStart, toEnd[i], block.out[i] + x, Lanes());
  }
}

// Strips are some lines of a cache wide, also where a vector is one element.
constexpr int kMostVectors = hn::MaxLanes(D()) == 1 ? 64 : kStripWidth / hn::MaxLanes(D());

// The columns from x on.
template <class Op>
void AcrossFrom(ptrdiff_t x, const RowBlock& block) {
  constexpr int kSome = std::max(kMostVectors / 8, 2);
  for (; x + kMostVectors * Lanes() <= block.to; x += kMostVectors * Lanes())
    AcrossStrip<Op, kMostVectors>(block, x, Lanes());
  if constexpr (kSome < kMostVectors) {
    for (; x + kSome * Lanes() <= block.to; x += kSome * Lanes())
      AcrossStrip<Op, kSome>(block, x, Lanes());
  }
  for (; x < block.to; x += Lanes()) AcrossStrip<Op, 1>(block, x, std::min(Lanes(), block.to - x));
}

template <class Op, int kRows>
void AcrossFewFrom(ptrdiff_t x, const RowBlock& block) {
  for (; x + kMostVectors * Lanes() <= block.to; x += kMostVectors * Lanes())
    AcrossFew<Op, kRows, kMostVectors>(block, x);
  AcrossFrom<Op>(x, block);
}

// Windows of 3, 5 and 7 rows, those of the least boxes, and of 2 to 4, of the least disks, have
// kernels of their own.
template <class Op>
void Across(const RowBlock& block) {
  if constexpr (hn::MaxLanes(D()) > 1) {
    const bool isWhole = block.outputs == block.n;
    switch (isWhole && block.betweenCount == 0 && block.total == nullptr ? block.n : 0) {
      case 1: return AcrossFewFrom<Op, 1>(block.from, block);
      case 2: return AcrossFewFrom<Op, 2>(block.from, block);
      case 3: return AcrossFewFrom<Op, 3>(block.from, block);
      case 4: return AcrossFewFrom<Op, 4>(block.from, block);
      case 6: return AcrossFewFrom<Op, 6>(block.from, block);
      default: break;
    }
  }
  AcrossFrom<Op>(block.from, block);
}

template <class Op>
void Cross(KyBW8* out, ptrdiff_t n, const KyBW8* above, const KyBW8* row, const KyBW8* below) {
  const D d;
  const auto extreme = [=](ptrdiff_t x) HWY_ATTR {
    return ExtremeOf<Op>(ExtremeAt<Op>(row + x, -1, 0, 1), hn::LoadU(d, above + x),
                         hn::LoadU(d, below + x));
  };
  ptrdiff_t x = 0;
  for (; x + Lanes() <= n; x += Lanes()) hn::StoreU(extreme(x), d, out + x);
  if (x < n) StorePart(d, extreme(x), out + x, static_cast<size_t>(n - x));
}

constexpr AcrossKernels kKernels = {
    {&Across<Maximum>, &Across<Minimum>},
    {&Cross<Maximum>, &Cross<Minimum>},
};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(AcrossKernels)
