// The row kernels of distance transforms. All rows lie in scratch, with the greatest number of
// their type, "far", at [-1] and from [n] on for a vector: kDistanceSlack elements on either side.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

inline constexpr std::ptrdiff_t kDistanceSlack = 64;

// How far the kernel of squares looks for nearer columns.
inline constexpr std::ptrdiff_t kReach = 128;

template <class Distance>
struct DistanceKernelsOf {
  // row[i] = 0 where the pixel is 0, else one more than the least of the neighbours: the one above,
  // or the one to the left too, or the three above and the one to the left.
  using Down = void (*)(Distance* row, const Distance* above, const KyBW8* pixels,
                        std::ptrdiff_t n);
  // row[i] = the least of itself and one more than its neighbours on the other sides.
  using Up = void (*)(Distance* row, const Distance* below, std::ptrdiff_t n);
  // By mode: along columns alone for the Euclidean one.
  Down down[3];
  Up up[3];
};

struct DistanceKernels {
  DistanceKernelsOf<std::uint16_t> narrow;
  DistanceKernelsOf<std::uint32_t> wide;
  // down[i]^2, or any square beyond reach in place of such, and kReach of these on either side.
  void (*square)(std::uint16_t* to, const std::uint16_t* down, std::ptrdiff_t n);
  // squares[i] = the least of k^2 + down2[i + k], if that is found from columns within reach for
  // all i; false otherwise.
  bool (*nearest)(std::uint32_t* squares, const std::uint16_t* down2, std::ptrdiff_t n);
  // The same of their rounded roots. Nothing is written beyond the n.
  bool (*nearestRoots)(KyBW16* roots, const std::uint16_t* down2, std::ptrdiff_t n);
  // min(65535, floor(scale * sqrt(squares[i]) + 1/2)) but for those that are too close to call,
  // whose places go to `unsure`; returns how many. Squares are below 2^31.
  std::ptrdiff_t (*root)(KyBW16* out, const std::uint32_t* squares, std::ptrdiff_t n, float scale,
                         std::int32_t* unsure);
  // min(65535, floor(scale * row[i] + 1/2)).
  void (*scale)(KyBW16* out, const std::uint16_t* row, std::ptrdiff_t n, float scale);
};

// The kernels of the instruction set that this call may use.
const DistanceKernels& ChooseDistanceKernels() noexcept;

}  // namespace ky
