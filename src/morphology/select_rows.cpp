#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/select_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/select_rows.h"

#include <algorithm>
#include <utility>

#include "foundation/dispatch.h"
#include "foundation/registers-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Comparisons are signed, of pixels less 128. Those of longer vectors would make masks, and take
// longer.
using D = hn::CappedTag<uint8_t, 32>;
using DS = hn::RebindToSigned<D>;
using VS = hn::Vec<DS>;
constexpr ptrdiff_t kLanes = hn::MaxLanes(D());

// A chunk of the source rows of a band of results.
constexpr ptrdiff_t kChunk = 512, kMostHalf = SelectWindow::kMostHalf;
constexpr ptrdiff_t kBand = 12;
struct Chunk {
  static constexpr ptrdiff_t kPitch = kChunk + 3 * 2 * kMostHalf + 2 * 64;
  HWY_ALIGN int8_t pixels[(kBand + 2 * kMostHalf) * kPitch];

  HWY_INLINE const int8_t* Row(ptrdiff_t y) const { return pixels + y * kPitch; }
  // n elements, a vector at least.
  HWY_INLINE void Set(ptrdiff_t y, const KyBW8* row, ptrdiff_t n) {
    const D d;
    uint8_t* const to = reinterpret_cast<uint8_t*>(pixels + y * kPitch);
    const auto put = [&](ptrdiff_t x) HWY_ATTR {
      hn::StoreU(hn::Xor(hn::LoadU(d, row + x), hn::Set(d, 128)), d, to + x);
    };
    for (ptrdiff_t x = 0; x < n - kLanes; x += kLanes) put(x);
    put(n - kLanes);
  }
};

// Adds 1 where the pixel is below the level.
HWY_INLINE void CountBelow(VS& count, VS pixel, VS level) {
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  count.raw = _mm256_sub_epi8(count.raw, _mm256_cmpgt_epi8(level.raw, pixel.raw));
#else
  count = hn::Sub(count, hn::VecFromMask(DS(), hn::Lt(pixel, level)));
#endif
}

// first, first + 1, ..., end - 1.
template <int end, int first, int... k>
constexpr std::integer_sequence<int, first + k...> LastOf(std::integer_sequence<int, k...>) {
  static_assert(first + sizeof...(k) == end);
  return {};
}

// The results of kCount neighbouring rows of one vector of places. Bit by bit, a level is the
// result or below it when as many pixels as the rank, or fewer, are below the level.
template <int kHalfWidth, int kStep, int kCount>
HWY_INLINE void Select(const Rows<KyBW8>& out, ptrdiff_t y, ptrdiff_t x, const int8_t* first,
                       const SelectWindow& window) {
  const DS d;
  const D d8;
  const ptrdiff_t height = 2 * window.halfHeight + 1;
  const auto rank = hn::Set(d8, static_cast<uint8_t>(window.rank));
  VS result[kCount];
  for (VS& v : result) v = hn::Set(d, -128);
  for (int bit = 128; bit != 0; bit >>= 1) {
    VS level[kCount], count[kCount];
    for (int k = 0; k < kCount; ++k) {
      level[k] = hn::Add(result[k], hn::Set(d, static_cast<int8_t>(bit)));
      count[k] = hn::Zero(d);
    }
    const auto countRow = [&]<int... k>(const int8_t* row, std::integer_sequence<int, k...>)
        KY_INLINE_ATTR {
      ForEach<2 * kHalfWidth + 1>([&]<int i>(std::integral_constant<int, i>) KY_INLINE_ATTR {
        const VS pixel = hn::LoadU(d, row + i * kStep);
        (CountBelow(count[k], pixel, level[k]), ...);
      });
    };
    // The first rows are of the windows of the first results only, the last ones of the last.
    const int8_t* row = first;
    ForEach<kCount - 1>([&]<int j>(std::integral_constant<int, j>) KY_INLINE_ATTR {
      countRow(row, std::make_integer_sequence<int, j + 1>());
      row += Chunk::kPitch;
    });
    for (ptrdiff_t j = kCount - 1; j < height; ++j, row += Chunk::kPitch)
      countRow(row, std::make_integer_sequence<int, kCount>());
    ForEach<kCount - 1>([&]<int j>(std::integral_constant<int, j>) KY_INLINE_ATTR {
      countRow(row, LastOf<kCount, j + 1>(std::make_integer_sequence<int, kCount - 1 - j>()));
      row += Chunk::kPitch;
    });
    for (int k = 0; k < kCount; ++k)
      result[k] =
          hn::IfThenElse(hn::RebindMask(d, hn::Eq(hn::Max(hn::BitCast(d8, count[k]), rank), rank)),
                         level[k], result[k]);
  }
  for (int k = 0; k < kCount; ++k)
    hn::StoreU(hn::Xor(hn::BitCast(d8, result[k]), hn::Set(d8, 128)), d8, out.Row(y + k) + x);
}

template <int kHalfWidth, int kStep>
void RunBand(const Rows<KyBW8>& out, const KyBW8* const* rows, const SelectWindow& window) {
  constexpr ptrdiff_t kReach = kHalfWidth * kStep;
#if KY_SANITIZED  // compilers take minutes over long code that they instrument
  constexpr int kMany = 2;
#else
  constexpr int kMany = 4;
#endif
  Chunk chunk;
  for (ptrdiff_t x = 0; x < out.width; x += kChunk) {
    const ptrdiff_t n = std::min(kChunk, out.width - x);
    for (ptrdiff_t k = 0; k < out.height + 2 * window.halfHeight; ++k)
      chunk.Set(k, rows[k] + x - kReach, n + 2 * kReach);
    for (ptrdiff_t y = 0; y < out.height;) {
      const bool isMany = y + kMany <= out.height && window.halfHeight >= kMany / 2;
      for (ptrdiff_t i = 0; i < n; i += kLanes)
        if (isMany)
          Select<kHalfWidth, kStep, kMany>(out, y, x + i, chunk.Row(y) + i, window);
        else
          Select<kHalfWidth, kStep, 1>(out, y, x + i, chunk.Row(y) + i, window);
      y += isMany ? kMany : 1;
    }
  }
}

template <int kHalfWidth, int kStep>
void Run(Rows<KyBW8> out, const KyBW8* const* rows, const SelectWindow& window) {
  for (ptrdiff_t y = 0; y < out.height; y += kBand)
    RunBand<kHalfWidth, kStep>({out.Row(y), out.pitch, out.width, std::min(kBand, out.height - y)},
                               rows + y, window);
}

template <int... half>
constexpr SelectKernels KernelsOf(std::integer_sequence<int, half...>) {
  constexpr int kMost = kLanes == 32 ? 121 : kLanes == 16 ? 63 : 0;
  return {kMost, kLanes, {&Run<half, 1>...}, {&Run<half, 3>...}};
}
constexpr SelectKernels kKernels = KernelsOf(std::make_integer_sequence<int, kMostHalf + 1>());

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(SelectKernels)
