// The sums of windows along a row, and the loop of the row kernels that make something of them.
// Included by row files like lanes-inl.h.
#if defined(KY_CONVOLUTION_BOX_WINDOWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_CONVOLUTION_BOX_WINDOWS_INL_H_
#undef KY_CONVOLUTION_BOX_WINDOWS_INL_H_
#else
#define KY_CONVOLUTION_BOX_WINDOWS_INL_H_
#endif

#include <type_traits>

#include "convolution/box_rows.h"
#include "foundation/registers-inl.h"
#include "foundation/shifts-inl.h"
#include "foundation/spans-inl.h"
#include "foundation/window_lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

using DU32 = hn::RebindToUnsigned<D32>;
using VU32 = hn::Vec<DU32>;
using DF32 = hn::Rebind<float, D32>;
using VF32 = hn::Vec<DF32>;

// The sums of windows, or what is made of them, for each phase: vectors of every fourth place.
#if HWY_TARGET == HWY_SCALAR
constexpr size_t kWindowPhases = 1;
#else
constexpr size_t kWindowPhases = 4;
#endif
struct WindowLanes {
  VU32 of[kWindowPhases];
};

#if HWY_TARGET != HWY_SCALAR
// Lane i is the sum of lanes 0 to i.
HWY_INLINE VU32 PrefixSums(VU32 v) {
  const DU32 d;
  const VU32 zero = hn::Zero(d);
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  v = hn::Add(v, After<15>(d, zero, v));
  v = hn::Add(v, After<14>(d, zero, v));
  v = hn::Add(v, After<12>(d, zero, v));
  return hn::Add(v, After<8>(d, zero, v));
#else
  v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
  v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
  if constexpr (hn::MaxLanes(d) == 8) v = hn::Add(v, After<4>(d, zero, hn::Broadcast<3>(v)));
  return v;
#endif
}
#endif

// How much windows at places x, x + 1 ... differ from the ones to their left: of[p] those of phase
// p + 1, and `all` four phases together.
struct Changes {
  VU32 of[3], all;
};
struct FewRows {
  using Columns = NarrowColumns;
#if HWY_TARGET != HWY_SCALAR
  static HWY_INLINE Changes At(const SlidingWindows<Columns>& windows, size_t x) {
    const hn::RebindToUnsigned<D16> d;
    const D32 d32;
    V16 changes[2];
    for (int p = 0; p < 2; ++p)
      changes[p] = hn::BitCast(D16(), hn::Sub(hn::LoadU(d, windows.entering.of[p] + x / 2),
                                              hn::LoadU(d, windows.leaving.of[p] + x / 2)));
    const V32 even = MulAddPairs(changes[0], 0x10001, hn::Zero(d32));
    const V32 odd = MulAddPairs(changes[1], 0x10001, hn::Zero(d32));
    const V32 second = hn::ShiftRight<16>(hn::BitCast(d32, changes[0]));
    const V32 third = hn::ShiftRight<16>(hn::BitCast(d32, changes[1]));
    const DU32 du;
    return {{hn::BitCast(du, hn::Sub(odd, third)), hn::BitCast(du, second), hn::BitCast(du, third)},
            hn::BitCast(du, hn::Add(even, odd))};
  }
#else
  static uint32_t Of(uint32_t column) { return column; }
#endif
};
#if HWY_TARGET != HWY_SCALAR
HWY_INLINE Changes SumOfChanges(VU32 a, VU32 b, VU32 c, VU32 d) {
  return {{b, c, d}, hn::Add(hn::Add(a, b), hn::Add(c, d))};
}
#endif
struct NarrowRows {
  using Columns = NarrowColumns;
#if HWY_TARGET != HWY_SCALAR
  static HWY_INLINE Changes At(const SlidingWindows<Columns>& windows, size_t x) {
    const hn::RebindToUnsigned<D16> d;
    const DU32 du;
    const VU32 lower = hn::Set(du, 0xFFFF);
    VU32 in[2], out[2];
    for (int p = 0; p < 2; ++p) {
      in[p] = hn::BitCast(du, hn::LoadU(d, windows.entering.of[p] + x / 2));
      out[p] = hn::BitCast(du, hn::LoadU(d, windows.leaving.of[p] + x / 2));
    }
    return SumOfChanges(hn::Sub(hn::And(in[0], lower), hn::And(out[0], lower)),
                        hn::Sub(hn::And(in[1], lower), hn::And(out[1], lower)),
                        hn::Sub(hn::ShiftRight<16>(in[0]), hn::ShiftRight<16>(out[0])),
                        hn::Sub(hn::ShiftRight<16>(in[1]), hn::ShiftRight<16>(out[1])));
  }
#else
  static uint32_t Of(uint32_t column) { return column; }
#endif
};
// The sums of columns in units of 2^kBits, each rounded down.
template <int kBits>
struct ScaledRows {
  using Columns = WideColumns;
#if HWY_TARGET != HWY_SCALAR
  static HWY_INLINE Changes At(const SlidingWindows<Columns>& windows, size_t x) {
    const DU32 d;
    const auto change = [&](int p) HWY_ATTR {
      return Pinned(hn::Sub(hn::ShiftRight<kBits>(hn::LoadU(d, windows.entering.of[p] + x / 4)),
                            hn::ShiftRight<kBits>(hn::LoadU(d, windows.leaving.of[p] + x / 4))));
    };
    return SumOfChanges(change(0), change(1), change(2), change(3));
  }
#else
  static uint32_t Of(uint32_t column) { return column >> kBits; }
#endif
};
using WideRows = ScaledRows<0>;
using CoarseRows = ScaledRows<kCoarse>;

// The sums of windows, from the left to the right.
template <class Rows>
class WindowScan {
 public:
  using Columns = typename Rows::Columns;

  HWY_INLINE explicit WindowScan(const SlidingWindows<Columns>& windows)
      : windows_(windows), before_(hn::Set(DU32(), windows.before)) {}

  // All sums from here on are so much larger, modulo 2^32.
  HWY_INLINE void Add(uint32_t more) { before_ = hn::Add(before_, hn::Set(DU32(), more)); }
  // Those at the places from x on, which follows the places before.
  HWY_INLINE WindowLanes Next(size_t x) {
    const DU32 d;
#if HWY_TARGET == HWY_SCALAR
    const auto place = static_cast<ptrdiff_t>(x);
    const uint32_t entering = Rows::Of(*windows_.entering.At(place));
    before_ = hn::Add(before_, hn::Set(d, entering - Rows::Of(*windows_.leaving.At(place))));
    return {{before_}};
#else
    const auto last = hn::IndicesFromVec(
        d, hn::Set(hn::RebindToSigned<DU32>(), static_cast<int32_t>(hn::Lanes(d) - 1)));
    const Changes changes = Rows::At(windows_, x);
    const VU32 here = PrefixSums(changes.all), third = hn::Add(here, before_);
    before_ = hn::Add(before_, hn::TableLookupLanes(here, last));
    const VU32 second = hn::Sub(third, changes.of[2]), first = hn::Sub(second, changes.of[1]);
    return {{hn::Sub(first, changes.of[0]), first, second, third}};
#endif
  }

 private:
  const SlidingWindows<Columns> windows_;
  VU32 before_;
};

// Those that are kept, in any order.
class KeptSums {
 public:
  HWY_INLINE explicit KeptSums(const KeptWindows& windows) : windows_(windows) {}

  HWY_INLINE WindowLanes Next(size_t x) const {
#if HWY_TARGET == HWY_SCALAR
    const auto place = static_cast<ptrdiff_t>(x);
    const auto change = static_cast<int16_t>(*windows_.upTo.At(place) - *windows_.before.At(place));
    return {{hn::Set(DU32(), *windows_.sums.At(place) += static_cast<uint32_t>(change))}};
#else
    const hn::RebindToUnsigned<D16> d16;
    const D32 d;
    const DU32 du;
    const auto add = [&](size_t phase, V32 change) HWY_ATTR {
      uint32_t* const at = windows_.sums.of[phase] + x / 4;
      const VU32 sums = hn::Add(hn::LoadU(du, at), hn::BitCast(du, change));
      hn::StoreU(sums, du, at);
      return sums;
    };
    const auto changes = [&](size_t phase) HWY_ATTR {
      return hn::BitCast(d, hn::Sub(hn::LoadU(d16, windows_.upTo.of[phase] + x / 2),
                                    hn::LoadU(d16, windows_.before.of[phase] + x / 2)));
    };
    const auto lower = [](V32 v) HWY_ATTR { return hn::ShiftRight<16>(hn::ShiftLeft<16>(v)); };
    const V32 even = changes(0), odd = changes(1);
    return {{add(0, lower(even)), add(1, lower(odd)), add(2, hn::ShiftRight<16>(even)),
             add(3, hn::ShiftRight<16>(odd))}};
#endif
  }

 private:
  const KeptWindows windows_;
};

// The areas of a vector of windows of one phase.
struct Area {
  VU32 area;
  VF32 reciprocal;
};
class SameAreas {
 public:
  HWY_INLINE explicit SameAreas(const WindowAreas& areas)
      : area_{hn::Set(DU32(), static_cast<uint32_t>(areas.area)),
              hn::Set(DF32(), areas.reciprocal)} {}
  HWY_INLINE Area At(size_t, size_t) const { return area_; }

 private:
  Area area_;
};
class VariousAreas {
 public:
  HWY_INLINE explicit VariousAreas(const WindowAreas& areas) : areas_(areas) {}
  HWY_INLINE Area At(size_t phase, size_t x) const {
    const auto place = static_cast<ptrdiff_t>(x + phase);
    return {hn::BitCast(DU32(), hn::LoadU(D32(), areas_.areas.At(place))),
            hn::LoadU(DF32(), areas_.reciprocals.At(place))};
  }

 private:
  const WindowAreas& areas_;
};

// The bytes of the lanes from bit kFirst on, side by side.
template <int kFirst>
HWY_INLINE hn::Vec<D8> JoinBytes(const WindowLanes& lanes) {
  const D8 d8;
#if HWY_TARGET == HWY_SCALAR
  return hn::Set(d8, static_cast<KyBW8>(hn::GetLane(lanes.of[0]) >> kFirst));
#else
  const auto shifted = [](VU32 v, auto toLeft) HWY_ATTR {
    constexpr int kLeft = decltype(toLeft)::value - kFirst;
    if constexpr (kLeft < 0) return hn::ShiftRight<-kLeft>(v);
    return hn::ShiftLeft<(kLeft < 0 ? 0 : kLeft)>(v);
  };
  const auto pair = [](VU32 odd, VU32 even) HWY_ATTR {
    return hn::BitCast(D16(), hn::OddEven(hn::BitCast(D8(), odd), hn::BitCast(D8(), even)));
  };
  const V16 lower = pair(shifted(lanes.of[1], std::integral_constant<int, 8>()),
                         shifted(lanes.of[0], std::integral_constant<int, 0>()));
  const V16 upper = pair(shifted(lanes.of[3], std::integral_constant<int, 24>()),
                         shifted(lanes.of[2], std::integral_constant<int, 16>()));
  return hn::BitCast(d8, hn::OddEven(upper, lower));
#endif
}

// out[x] = op(x, the lanes of each scan), for all places from x to `end` of a row of n.
template <class Op, class... Scan>
HWY_INLINE void MapRange(const Op& op, KyBW8* out, size_t& x, size_t end, size_t n,
                         Scan&... scans) {
  const D8 d8;
  const size_t lanes = hn::Lanes(d8);
  for (; x < end; x += lanes) {
    const auto levels = op(x, scans.Next(x)...);
    if (HWY_LIKELY(n - x >= lanes))
      hn::StoreU(levels, d8, out + x);
    else
      StorePart(d8, levels, out + x, n - x);
  }
}

// The places `begin` to `end` - 1, whole vectors, whose windows have the same area.
struct SamePlaces {
  size_t begin, end;
};
HWY_INLINE SamePlaces SamePlacesOf(const WindowAreas& areas) {
  const size_t lanes = hn::Lanes(D8()), begin = (areas.left + lanes - 1) / lanes * lanes;
  return {begin, HWY_MAX(begin, areas.right / lanes * lanes)};
}

// out[x] = op(areas, x, the lanes of each scan) for all x, or at the ends.
template <class Op, class... Scan>
HWY_INLINE void MapSums(const Op& op, KyBW8* out, size_t n, const WindowAreas& areas, RowSpan span,
                        Scan... scans) {
  static_assert(kAreaMargin >= hn::MaxLanes(D8()) + 4);
  size_t x = 0;
  const auto mapTo = [&](size_t end, const auto& areasHere) KY_INLINE_ATTR {
    const auto levels = [&](size_t at, const auto&... lanes)
                            KY_INLINE_ATTR { return op(areasHere, at, lanes...); };
    MapRange(levels, out, x, HWY_MIN(end, n), n, scans...);
  };
  const SamePlaces same = SamePlacesOf(areas);
  mapTo(same.begin, VariousAreas(areas));
  if (span == RowSpan::kAll) {
    mapTo(same.end, SameAreas(areas));
  } else {
    // As many whole vectors as cover the right end, from a multiple of four on.
    const size_t lanes = hn::Lanes(D8()), last = (n - areas.right + lanes - 1) / lanes * lanes;
    x = HWY_MAX(same.begin, (n - HWY_MIN(n, last)) / 4 * 4);
  }
  mapTo(n, VariousAreas(areas));
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
