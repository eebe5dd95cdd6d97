// The row kernels of erosion and dilation.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

enum class Extreme { kMaximum, kMinimum };

// Readable and writable bytes that the kernels want behind the rows of scratch that they are given.
inline constexpr std::ptrdiff_t kRowSlack = 64;
// Those that they want in front of the scratch `row`, and the elements that this has room for even
// when there are fewer.
inline constexpr std::ptrdiff_t kRowFront = 384, kLeastRow = 128;

// One block of the running extremes of n rows, in columns from..to - 1 of every pointer:
//
//   out[i] = extreme(before[i], rows[0], ..., rows[i])   for i < outputs
//   rows[i] = extreme(rows[i], ..., rows[suffixEnd - 1])   for suffixFrom <= i < suffixEnd
//
// `before` and `rows` lie in scratch; of `out` nothing but its columns is written.
struct RowBlock {
  std::ptrdiff_t from, to;
  const KyBW8* const* before;
  KyBW8* const* rows;
  KyBW8* const* out;
  std::ptrdiff_t outputs;
  std::ptrdiff_t suffixFrom, suffixEnd;
};

struct ExtremeKernels {
  KyBW8 neutral;  // the level that is no extreme: what stands outside the ROI
  // out[x] = extreme(in[x - half], ..., in[x + half]) for n places, of the elements that there are.
  // `row` and `spare` are scratch of n + 2 half elements, and `out` is scratch too, perhaps `row`
  // or in front of it.
  void (*along)(KyBW8* out, std::ptrdiff_t n, const KyBW8* in, KyBW8* row, KyBW8* spare,
                std::ptrdiff_t half);
  void (*across)(const RowBlock& block);
  // out[x] = extreme(above[x], row[x - 1], row[x], row[x + 1], below[x]) for n places. All rows but
  // `out` lie in scratch.
  void (*cross)(KyBW8* out, std::ptrdiff_t n, const KyBW8* above, const KyBW8* row,
                const KyBW8* below);
};

// The kernels of the instruction set that this call may use.
const ExtremeKernels& ChooseExtremeKernels(Extreme extreme) noexcept;

}  // namespace ky
