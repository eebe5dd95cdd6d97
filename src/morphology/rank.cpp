#include "ky/rank.h"

#include <algorithm>

#include "foundation/frame.h"
#include "foundation/rows.h"
#include "foundation/window.h"
#include "morphology/rank_rows.h"
#include "morphology/select_rows.h"
#include "morphology/small_rank_rows.h"
#include "morphology/strip_ranks.h"

namespace {

using ky::kColumnCounts;
using ky::Rows;
using ky::Scratch;

constexpr unsigned kLargestHalf = 1u << 20;

struct Window {
  std::ptrdiff_t halfWidth, halfHeight;

  std::int64_t Rows() const noexcept { return 2 * halfHeight + 1; }
  std::int64_t Pixels() const noexcept { return (2 * halfWidth + 1) * Rows(); }
};

// Columns whose counts are kept at a time, apart from the margins: so many that the margins cost
// little and the counts stay in a second cache.
constexpr std::ptrdiff_t kStrip = 512;

// The rank of windows of any size. `in` shares nothing with `out`; its rows are those of components
// that are `step` apart.
template <class Count>
bool RunCounts(const ky::RankKernelsOf<Count>& kernels, Rows<const KyBW8> in, Rows<KyBW8> out,
               int step, const Window& window, std::int64_t rank) noexcept {
  const std::ptrdiff_t pixels = in.width / step, last = in.height - 1;
  const std::ptrdiff_t halfWidth = window.halfWidth, halfHeight = window.halfHeight;
  const std::ptrdiff_t strip = std::max(kStrip / step, 2 * halfWidth);
  const std::ptrdiff_t most = std::min(pixels, strip + 2 * halfWidth) * step;
  Scratch<Count> counts;
  if (!counts.Allocate(most * kColumnCounts)) return false;
  for (std::ptrdiff_t start = 0; start < pixels; start += strip) {
    const std::ptrdiff_t end = std::min(start + strip, pixels);
    const std::ptrdiff_t left = std::max<std::ptrdiff_t>(start - halfWidth, 0);
    const std::ptrdiff_t columns = std::min(end + halfWidth, pixels) - left, n = columns * step;
    const auto row = [&](std::ptrdiff_t y) {
      return in.Row(std::clamp<std::ptrdiff_t>(y, 0, last)) + left * step;
    };
    std::fill_n(counts.get(), n * kColumnCounts, Count{0});
    kernels.add(counts.get(), n, row(0), static_cast<Count>(halfHeight + 1));
    for (std::ptrdiff_t y = 1; y <= std::min(halfHeight, last); ++y)
      kernels.add(counts.get(), n, row(y), 1);
    if (halfHeight > last)
      kernels.add(counts.get(), n, row(last), static_cast<Count>(halfHeight - last));
    const ky::RankWindows windows = {columns, start - left, end - left, halfWidth, rank, step};
    for (std::ptrdiff_t y = 0; y <= last; ++y) {
      if (y > 0) kernels.slide(counts.get(), n, row(y - 1 - halfHeight), row(y + halfHeight));
      for (int k = 0; k < step; ++k)
        kernels.run(counts.get() + k * kColumnCounts, windows, out.Row(y) + start * step + k);
    }
  }
  return true;
}

KY_ERRORS Run(Rows<const KyBW8> source, Rows<KyBW8> destination, int step, const Window& window,
              std::int64_t rank) noexcept {
  const std::int64_t above = window.Pixels() - 1 - rank;
  const bool is3x3 = window.halfWidth == 1 && window.halfHeight == 1;
  const bool is5x5 = window.halfWidth == 2 && window.halfHeight == 2;
  if (is3x3 || (is5x5 && rank == above)) {
    const ky::SmallRankKernels& small = ky::ChooseSmallRankKernels();
    const auto& pair = is3x3 ? small.ranks3x3[rank] : small.median5x5;
    return FilterWindows(destination, source, ky::Border::Nearest(),
                         step == 1 ? pair.grey : pair.color);
  }
  const ky::SelectKernels& select = ky::ChooseSelectKernels();
  const std::ptrdiff_t radius = std::max(window.halfWidth, window.halfHeight);
  if (radius <= ky::SelectWindow::kMostHalf && window.Pixels() <= select.most) {
    const ky::SelectWindow selected = {window.halfWidth, window.halfHeight, static_cast<int>(rank)};
    const auto kernel = (step == 1 ? select.grey : select.color)[window.halfWidth];
    const auto run = [&](Rows<KyBW8> out, const KyBW8* const* rows) {
      kernel(out, rows + (radius - window.halfHeight), selected);
    };
    return FilterWindows(
        destination, source, ky::Border::Nearest(),
        ky::WindowKernel<decltype(run)>{static_cast<int>(radius), select.lanes, run, step});
  }
  const ky::RankKernels& kernels = ky::ChooseRankKernels();
  ky::Input<KyBW8> input;
  if (destination.Empty()) return KY_OK;
  if (!input.OpenApart(source, destination)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const ky::StripKernels& strips = ky::ChooseStripKernels();
  if (strips.isFast && ky::StripRanks::Fits(window.halfWidth, window.halfHeight, rank, above)) {
    ky::StripRanks ranks(strips, input.rows(), destination, step);
    return ranks.Run(window.halfWidth, window.halfHeight, static_cast<int>(rank),
                     static_cast<int>(above))
               ? KY_OK
               : KY_ERROR_NOT_ENOUGH_MEMORY;
  }
  const bool isSmall = window.Rows() <= 255 && rank < 1 << 15 && above < 1 << 15;
  const bool done = isSmall
                        ? RunCounts(kernels.small, input.rows(), destination, step, window, rank)
                        : RunCounts(kernels.large, input.rows(), destination, step, window, rank);
  return done ? KY_OK : KY_ERROR_NOT_ENOUGH_MEMORY;
}

// The frame of all. `rankOf` gives the rank, or -1 when there is no such one, from the number of
// pixels.
template <class Pixel, class RankOf>
KY_ERRORS Filter(const char* name, const KyROI<Pixel>* source, KyROI<Pixel>* destination,
                 unsigned halfWidth, unsigned halfHeight, const RankOf& rankOf) noexcept {
  return ky::Call(name, [&]() -> KY_ERRORS {
    destination = ky::DestinationOf(source, destination);
    if (halfHeight == KY_HALF_HEIGHT_AS_WIDTH) halfHeight = halfWidth;
    Rows<const KyBW8> in;
    Rows<KyBW8> out;
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (halfWidth > kLargestHalf)
      return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "halfWidth");
    if (halfHeight > kLargestHalf)
      return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "halfHeight");
    const Window window = {halfWidth, halfHeight};
    const std::int64_t rank = rankOf(window.Pixels());
    if (rank < 0) return ky::OutOfRange(KY_ERROR_PARAMETER_3_OUT_OF_RANGE, "rank");
    return Run(in, out, sizeof(Pixel), window, rank);
  });
}

std::int64_t Middle(std::int64_t pixels) noexcept { return (pixels - 1) / 2; }
auto Given(unsigned rank) noexcept {
  return [rank](std::int64_t pixels) { return rank < pixels ? std::int64_t{rank} : -1; };
}

}  // namespace

KY_ERRORS ImgMedian(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                    unsigned halfHeight) noexcept {
  return Filter("ImgMedian (BW8)", source, destination, halfWidth, halfHeight, Middle);
}
KY_ERRORS ImgMedian(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                    unsigned halfHeight) noexcept {
  return Filter("ImgMedian (C24)", source, destination, halfWidth, halfHeight, Middle);
}
KY_ERRORS ImgRank(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                  unsigned halfHeight, unsigned rank) noexcept {
  return Filter("ImgRank (BW8)", source, destination, halfWidth, halfHeight, Given(rank));
}
KY_ERRORS ImgRank(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                  unsigned halfHeight, unsigned rank) noexcept {
  return Filter("ImgRank (C24)", source, destination, halfWidth, halfHeight, Given(rank));
}
