// The median of 5 x 5 pixels by exchange networks. Included by row files like lanes-inl.h.
#if defined(KY_MORPHOLOGY_MEDIAN5X5_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_MORPHOLOGY_MEDIAN5X5_INL_H_
#undef KY_MORPHOLOGY_MEDIAN5X5_INL_H_
#else
#define KY_MORPHOLOGY_MEDIAN5X5_INL_H_
#endif

#include <algorithm>
#include <utility>

#include "foundation/registers-inl.h"
#include "morphology/exchanges-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

struct Exchange {
  int least, greatest;
};
template <const auto& kNetwork>
HWY_INLINE void RunNetwork(V8* v) {
  const auto run = [&]<size_t... k>(std::index_sequence<k...>) KY_INLINE_ATTR {
    (Sort2(v[kNetwork[k].least], v[kNetwork[k].greatest]), ...);
  };
  run(std::make_index_sequence<std::size(kNetwork)>());
}

// Merges by odd and even places, of which a search has found forms with fewer operations.

// Sorts the pixels of two rows, which stand at 0 to 4 and at 5 to 9, each sorted, as far as the
// next network needs them sorted.
constexpr Exchange kTwoRows[] = {{3, 8}, {4, 9}, {2, 7}, {4, 7}, {0, 5}, {5, 4}, {1, 6},
                                 {6, 3}, {5, 1}, {4, 3}, {1, 2}, {2, 6}, {7, 8}};
// Joins two such pairs of rows, at 0 to 9 and at 10 to 19. The ranks 7 to 12 of the twenty pixels,
// the only ones that can be the median of 25, stand at the places kMiddle then.
constexpr Exchange kFourRows[] = {{3, 13}, {15, 4}, {5, 14}, {7, 14}, {9, 19}, {2, 12},
                                  {1, 16}, {6, 18}, {6, 11}, {12, 7}, {9, 7},  {4, 17},
                                  {4, 12}, {11, 3}, {10, 0}, {8, 16}, {8, 3},  {0, 11},
                                  {11, 8}, {11, 4}, {12, 9}, {3, 9},  {8, 12}};
constexpr int kMiddle[] = {11, 4, 8, 12, 3, 9};

// Medians, two rows of them at a time. The windows of two results that stand one above the other
// have four rows in common, whose middle six pixels are found once for both; the median is one of
// these or of the five pixels of the row that only one of the windows has. Every row's five pixels
// are sorted once, for five results, and joined with those of a neighbouring row once, for four.
// That makes 57 operations a result, on so many results as a vector has lanes.
//
// What the next rows of results need again is kept in planes, for one chunk of columns at a time.
template <int kStep>
class MediansOf5x5 {
 public:
  // `rows` is the first of the windows.
  HWY_INLINE void Run(Rows<uint8_t> out, const uint8_t* const* rows) {
    for (ptrdiff_t first = 0; first < out.width; first += kChunk) {
      const ptrdiff_t n = std::min(kChunk, out.width - first);
      Start(rows, first, n);
      for (ptrdiff_t y = 0; y < out.height; y += 2) {
        const ptrdiff_t next = std::min(y + 1, out.height - 1);
        MakeTwo(out.Row(y) + first, out.Row(next) + first, rows[y + 4] + first,
                rows[next + 4] + first, n, y / 2 % 2);
      }
    }
  }

 private:
  static constexpr ptrdiff_t kChunk = 512, kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D8()));
  static_assert(kChunk % kLanes == 0);
  using Plane = uint8_t[kChunk + 64];

  template <int n>
  static HWY_INLINE void Load(const Plane* planes, ptrdiff_t x, V8* v) {
    ForEach<n>([&](auto k) KY_INLINE_ATTR { v[k] = hn::Load(D8(), planes[k] + x); });
  }
  template <int n>
  static HWY_INLINE void Store(const V8* v, Plane* planes, ptrdiff_t x) {
    ForEach<n>([&](auto k) KY_INLINE_ATTR { hn::Store(v[k], D8(), planes[k] + x); });
  }
  static HWY_INLINE void SortRow(const uint8_t* at, V8* v) {
    ForEach<5>([&](auto k) KY_INLINE_ATTR { v[k] = LoadOnce(at + (k - 2) * kStep); });
    Sort5(v[0], v[1], v[2], v[3], v[4]);
  }

  void Start(const uint8_t* const* rows, ptrdiff_t first, ptrdiff_t n) {
    for (ptrdiff_t x = 0; x < n; x += kLanes) {
      V8 v[10];
      SortRow(rows[0] + first + x, v);
      Store<5>(v, own_[0], x);
      SortRow(rows[1] + first + x, v);
      SortRow(rows[2] + first + x, v + 5);
      Store<5>(v + 5, own_[1], x);
      RunNetwork<kTwoRows>(v);
      Store<10>(v, pair_, x);
      SortRow(rows[3] + first + x, v);
      Store<5>(v, last_, x);
    }
  }

  // The results above those that end with `row` and with `next`.
  HWY_INLINE void MakeTwo(uint8_t* out, uint8_t* outBelow, const uint8_t* row, const uint8_t* next,
                          ptrdiff_t n, ptrdiff_t parity) {
    Plane* const own = own_[parity];
    for (ptrdiff_t x = 0; x < n; x += kLanes) {
      V8 v[20], upper[5], lower[5];
      Load<10>(pair_, x, v);
      Load<5>(last_, x, v + 10);
      SortRow(row + x, v + 15);
      Load<5>(own, x, upper);
      Store<5>(v + 15, own, x);
      RunNetwork<kTwoRows>(v + 10);
      Store<10>(v + 10, pair_, x);
      RunNetwork<kFourRows>(v);
      const V8 result = Median(v, upper);
      SortRow(next + x, lower);
      Store<5>(lower, last_, x);
      hn::StoreU(Median(v, lower), D8(), outBelow + x);
      hn::StoreU(result, D8(), out + x);
    }
  }
  // The sixth of the middle six and a row's sorted five together: if it is the k-th of the row's,
  // 6 - k of the middle ones are no greater.
  static HWY_INLINE V8 Median(const V8* v, const V8* row) {
    V8 median = v[kMiddle[5]];
    ForEach<5>([&](auto k) KY_INLINE_ATTR {
      median = hn::Min(median, hn::Max(v[kMiddle[4 - k]], row[k]));
    });
    return median;
  }

  // The sorted first rows of the next windows and of those two rows further down, in turn; the two
  // rows before the last one that has been read, joined; and that one, sorted.
  HWY_ALIGN Plane own_[2][5], pair_[10], last_[5];
};

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
