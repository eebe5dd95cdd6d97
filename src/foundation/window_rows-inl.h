// One row of the pixels around a vector of places, within the row and at its ends. Included by row
// files like lanes-inl.h.
#if defined(KY_FOUNDATION_WINDOW_ROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_WINDOW_ROWS_INL_H_
#undef KY_FOUNDATION_WINDOW_ROWS_INL_H_
#else
#define KY_FOUNDATION_WINDOW_ROWS_INL_H_
#endif

#include <array>
#include <cstddef>
#include <cstdint>

#include "foundation/pick-inl.h"
#include "foundation/registers-inl.h"
#include "foundation/window.h"
#include "foundation/window_lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// Elements around a vector of places, each vector loaded from memory: at(right) are those that lie
// so many elements to the right.
class LoadedRow {
 public:
  HWY_INLINE explicit LoadedRow(const uint8_t* places) : places_(places) {}
  HWY_INLINE V8 operator()(int right) const { return hn::LoadU(D8(), places_ + right); }

 private:
  const uint8_t* places_;
};

#if HWY_TARGET == HWY_SCALAR

template <class Op>
using InnerRow = LoadedRow;
template <class Op>
constexpr ptrdiff_t kShortestRow = kNoRowsWithEnds;

#else

// The same, picked from three vectors: at the places, before and after them. It reaches three
// pixels to either side, of one component or of three.
class PickedRow {
 public:
  HWY_INLINE PickedRow() {}
  HWY_INLINE explicit PickedRow(const uint8_t* places)
      : PickedRow(hn::LoadU(D8(), places - kLanes), hn::LoadU(D8(), places),
                  hn::LoadU(D8(), places + kLanes)) {}
  HWY_INLINE PickedRow(V8 before, V8 here, V8 after)
      : before_(before), here_(here), after_(after) {}

  HWY_INLINE V8 operator()(int right) const {
    switch (right) {
      case 1: return After<1>();
      case 2: return After<2>();
      case 3: return After<3>();
      case 6: return After<6>();
      case 9: return After<9>();
      case -1: return Before<1>();
      case -2: return Before<2>();
      case -3: return Before<3>();
      case -6: return Before<6>();
      case -9: return Before<9>();
      default: HWY_DASSERT(right == 0); return here_;
    }
  }

 private:
  static constexpr ptrdiff_t kLanes = hn::MaxLanes(D8());

#if HWY_TARGET == HWY_AVX3_DL
  template <size_t kFirst>
  static constexpr BytePlaces kPlacesFrom = MakeBytePlaces([](size_t i) { return kFirst + i; });
  template <int kRight>
  HWY_INLINE V8 After() const {
    return PickBytes(kPlacesFrom<kRight>, here_, after_);
  }
  template <int kLeft>
  HWY_INLINE V8 Before() const {
    return PickBytes(kPlacesFrom<kLanes - kLeft>, before_, here_);
  }
#else
  // The first vector from its second block on, continued by the next.
  static HWY_INLINE V8 NextBlocks(V8 first, V8 next) {
    if constexpr (kLanes > 16) return hn::ConcatLowerUpper(D8(), next, first);
    return next;
  }
  template <int kRight>
  HWY_INLINE V8 After() const {
    return hn::CombineShiftRightBytes<kRight>(D8(), NextBlocks(here_, after_), here_);
  }
  template <int kLeft>
  HWY_INLINE V8 Before() const {
    if constexpr (kLanes == 16) return hn::CombineShiftRightBytes<16 - kLeft>(D8(), here_, before_);
    return hn::CombineShiftRightBytes<16 - kLeft>(D8(), here_, NextBlocks(before_, here_));
  }
#endif

  V8 before_, here_, after_;
};

// Within a row, most loads of 64 bytes cross a line of the cache and take twice as long: formulas
// that do little else would wait for them.
template <class Op>
using InnerRow =
    std::conditional_t<HWY_TARGET == HWY_AVX3_DL && !Op::kIsLong, PickedRow, LoadedRow>;

// The shortest rows with ends that a formula gets, in elements: where there are no masks for bytes,
// rows must hold three vectors. Long formulas over large windows lose more by picking at the ends
// than copies of rows cost.
constexpr bool kHasByteMasks = HWY_TARGET == HWY_AVX3_DL;
template <class Op>
constexpr ptrdiff_t ShortestRow() {
  if (Op::kIsLong && Op::kRadius > 1) return kNoRowsWithEnds;
  return kHasByteMasks ? 1 : 3 * ptrdiff_t{hn::MaxLanes(D8())};
}
template <class Op>
constexpr ptrdiff_t kShortestRow = ShortestRow<Op>();

// The vector of places from column x on, at an end of rows of `width` elements.
template <int kStep>
class RowEnd {
 public:
  HWY_INLINE RowEnd(const RowBorder& border, ptrdiff_t width, ptrdiff_t x)
      : outside_(border.outside),
        first_(border.inset),
        last_(width - kStep - border.inset),
        here_(x),
        before_(x == 0 ? 0 : x - kLanes),
        after_(width - x > kLanes ? x + kLanes : x),
        hasBefore_(FirstN(x)),
        hasHere_(FirstN(width - x)),
        hasAfter_(FirstN(width - x - kLanes)),
        isWhole_(!kHasByteMasks || width - x >= kLanes),
        placesBefore_(Places(kLanes * (kStep - 1))),
        placesHere_(Places(x)),
        placesAfter_(Places(x + kLanes)) {}

  // The vectors of a row, and its border.
  HWY_INLINE PickedRow Of(const uint8_t* row) const {
    const V8 first = PixelAt(outside_ != nullptr ? outside_ : row + first_);
    const V8 last = PixelAt(outside_ != nullptr ? outside_ : row + last_);
    const V8 here = kHasByteMasks ? Load(row + here_, hasHere_, Repeated(last, placesHere_))
                                  : hn::LoadU(D8(), row + here_);
    return {Load(row + before_, hasBefore_, Repeated(first, placesBefore_)), here,
            Load(row + after_, hasAfter_, Repeated(last, placesAfter_))};
  }
  // Stores those results that lie in the row.
  HWY_INLINE void Store(V8 v, uint8_t* row) const {
    if (isWhole_)
      hn::StoreU(v, D8(), row + here_);
    else
      hn::BlendedStore(v, hasHere_, D8(), row + here_);
  }

 private:
  using Mask = hn::Mask<D8>;
  static constexpr ptrdiff_t kLanes = hn::MaxLanes(D8());

  static HWY_INLINE Mask FirstN(ptrdiff_t n) {
    return hn::FirstN(D8(), static_cast<size_t>(HWY_MIN(HWY_MAX(n, 0), kLanes)));
  }
  static HWY_INLINE V8 Load(const uint8_t* from, Mask isInside, V8 outside) {
    if constexpr (kHasByteMasks)
      return hn::IfThenElse(isInside, hn::MaskedLoad(isInside, D8(), from), outside);
    return hn::IfThenElse(isInside, hn::LoadU(D8(), from), outside);
  }

  // A pixel in all lanes, whose components come in the right places from column x on.
  static HWY_INLINE V8 PixelAt(const uint8_t* pixel) {
    if constexpr (kStep == 1) return hn::Set(D8(), *pixel);
    const uint32_t components = pixel[0] | uint32_t{pixel[1]} << 8 | uint32_t{pixel[2]} << 16;
    return hn::BitCast(D8(), hn::Set(hn::Repartition<uint32_t, D8>(), components));
  }
  static HWY_INLINE V8 Places(ptrdiff_t x) {
    if constexpr (kStep == 1) return hn::Zero(D8());
    return hn::Load(D8(), kComponents[static_cast<size_t>(x % kStep)].data());
  }
  static HWY_INLINE V8 Repeated(V8 pixel, V8 places) {
    return kStep == 1 ? pixel : hn::TableLookupBytes(pixel, places);
  }
  HWY_ALIGN static constexpr auto kComponents = [] {
    std::array<std::array<uint8_t, kLanes>, kStep> all{};
    for (size_t x = 0; x < kStep; ++x)
      for (size_t i = 0; i < kLanes; ++i) all[x][i] = static_cast<uint8_t>((x + i) % kStep);
    return all;
  }();

  const uint8_t* outside_;
  ptrdiff_t first_, last_, here_, before_, after_;
  Mask hasBefore_, hasHere_, hasAfter_;
  bool isWhole_;
  V8 placesBefore_, placesHere_, placesAfter_;
};

#endif

// Goes along rows a vector of places at a time: inner(x) where all around it lies in the row, or is
// readable in rows without ends, and end(RowEnd, x) at the ends.
template <int kStep, class Inner, class End>
HWY_INLINE void GoAlong(ptrdiff_t width, [[maybe_unused]] const Layout& layout, const Inner& inner,
                        [[maybe_unused]] const End& end) {
  constexpr ptrdiff_t kLanes = hn::MaxLanes(D8());
#if HWY_TARGET == HWY_SCALAR
  for (ptrdiff_t x = 0; x < width; x += kLanes) inner(x);
#else
  const bool hasEnds = layout.border != nullptr;
  const ptrdiff_t last = width - (hasEnds ? 2 : 1) * kLanes;
  // Without masks the last vectors are whole ones, which overlap those before.
  const auto place = [&](ptrdiff_t x) {
    return kHasByteMasks || x <= last || x >= width - kLanes ? x : last;
  };
  for (ptrdiff_t x = 0; x < width;) {
    if (hasEnds) {
      end(RowEnd<kStep>(*layout.border, width, x), x);
      x += kLanes;
    }
    for (; (x = place(x)) <= last; x += kLanes) inner(x);
  }
#endif
}
// The one or the other.
template <int kStep, class Inner>
HWY_INLINE void GoWithin(ptrdiff_t width, const Layout& layout, const Inner& inner) {
  GoAlong<kStep>(width, layout, inner, [](const auto&, ptrdiff_t) {});
}
template <int kStep, class End>
HWY_INLINE void GoToEnds(ptrdiff_t width, const Layout& layout, const End& end) {
  if (layout.border != nullptr)
    GoAlong<kStep>(
        width, layout, [](ptrdiff_t) {}, end);
}

// Calls run(x, n) for each stretch of n places, in whole vectors, that GoAlong leaves to inner.
template <class Run>
HWY_INLINE void ForEachStretch(ptrdiff_t width, const Layout& layout, const Run& run) {
  constexpr ptrdiff_t kLanes = hn::MaxLanes(D8());
  if (layout.border == nullptr) return run(0, width);
  const ptrdiff_t whole = (width / kLanes - 2) * kLanes;
  if (whole > 0) run(kLanes, whole);
#if HWY_TARGET != HWY_SCALAR
  if (!kHasByteMasks && width % kLanes != 0) run(width - 2 * kLanes, kLanes);
#endif
}

// The kernel that makes results of the formula Op by `run`, which goes along rows in these ways.
template <class Op, int kStep>
constexpr WindowKernel<WindowRun> KernelOf(WindowRun run, bool descends = false) {
  static_assert(kStep == 1 || kStep == 3);
  return {.radius = Op::kRadius,
          .lanes = hn::MaxLanes(D8()),
          .run = run,
          .step = kStep,
          .descends = descends,
          .shortestWithEnds = kShortestRow<Op>};
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
