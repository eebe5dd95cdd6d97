// The row kernels of thinning: bit planes, and the places where a pattern matches.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

// A plane of bits consists of tiles of 64 columns by kTileRows rows. Bit x of a word is column x,
// and the words of a tile, which stand one below the other, lie one after the other. So do the
// tiles of one column of tiles.
inline constexpr std::ptrdiff_t kTileRows = 16;

// A pattern over a pixel and its neighbours, row by row: a position suits where its bit, exchanged
// where `flipped` is all ones, is 1, and always where `any` is all ones.
struct BitPattern {
  std::uint64_t flipped[9], any[9];
};

// words[x / 64 * step], bit x % 64, becomes whether row[x] is not 0, for n places; the other bits
// of the last word become 0.
using PackKernel = void (*)(std::uint64_t* words, std::ptrdiff_t step, const KyBW8* row,
                            std::ptrdiff_t n);

// out[x] = 0 where the bit is 0, and in[x] where it is 1, or 255 in place of an in[x] of 0. `in`
// may be `out`.
using UnpackKernel = void (*)(KyBW8* out, const KyBW8* in, std::ptrdiff_t n,
                              const std::uint64_t* words, std::ptrdiff_t step);

// Makes the bits of `matches` 1 at the places of a tile that the pattern matches and whose bit of
// `inside` is 1; true when there are any. The tiles on either side are `column` words away, and all
// around there are rows.
using MatchKernel = bool (*)(std::uint64_t* matches, const std::uint64_t* tile,
                             std::ptrdiff_t column, const BitPattern& pattern,
                             const std::uint64_t* inside);

struct ThinningKernels {
  PackKernel pack;
  UnpackKernel unpack;
  MatchKernel match;
};

// The kernels of the instruction set that this call may use.
const ThinningKernels& ChooseThinningKernels() noexcept;

}  // namespace ky
