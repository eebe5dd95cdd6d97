#include "convolution/rolling_means.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "convolution/planes.h"
#include "convolution/rolling_rows.h"
#include "foundation/scratch.h"

namespace ky {
namespace {

// False where `division` cannot do it for windows of so many columns and that area, an odd number.
//
// Sums to divide are a rest and a row's change, at most area / 2 + 255 columns. Quotients of an odd
// area are at least 1 / (2 area) away from where rounding changes, and those by `factor` less than
// that from the quotients.
bool DivideBy(std::int64_t area, std::int64_t columns, MeanDivision& division) noexcept {
  const std::int64_t most = area / 2 + 255 * columns;
  if (most > INT16_MAX) return false;
  int shift = 0;
  while ((std::int64_t{1} << (16 + shift)) / area < (1 << 14)) ++shift;
  const std::int64_t one = std::int64_t{1} << (16 + shift), factor = (one + area / 2) / area;
  if (shift == 0 || factor > INT16_MAX || 2 * most * std::abs(factor * area - one) >= one)
    return false;
  division = {static_cast<std::int16_t>(area), static_cast<std::int16_t>(factor),
              static_cast<std::int16_t>(1 << (15 - shift))};
  return true;
}

class RollingWalk {
 public:
  bool Open(const BoxJob& job) noexcept {
    box_ = job.box;
    width_ = job.Width();
    constexpr std::ptrdiff_t kBoundary = 2 * kCacheLine;
    const auto roundUp = [](std::ptrdiff_t n) {
      return (n + kBoundary - 1) / kBoundary * kBoundary;
    };
    margin_ = roundUp(box_.halfWidth + 1);
    pitch_ = roundUp(width_ + kColumnSlack);
    reach_ = roundUp(margin_ + width_ + box_.halfWidth + kColumnSlack);
    if (!source_.Open(job.in, job.out, job.planes, Border::Nearest(), job.RowsAtOnce()) ||
        !results_.Open(job.out, job.planes) || !sums_.Allocate(reach_) ||
        !rests_.Allocate(job.planes * pitch_) || !levels_.Allocate(job.planes * pitch_))
      return false;
    std::fill_n(rests_.get(), job.planes * pitch_, std::uint16_t{0});
    std::fill_n(levels_.get(), job.planes * pitch_, KyBW8{0});
    return true;
  }

  void Run(const BoxJob& job, const MeanDivision& division, const MeanDivision& ofRow) noexcept {
    const std::ptrdiff_t half = box_.halfHeight;
    for (std::ptrdiff_t y = 0; y < job.in.height; ++y) {
      source_.FetchTo(y + half + 1);
      for (int plane = 0; plane < job.planes; ++plane)
        if (y == 0)
          Start(plane, division, ofRow);
        else
          Advance(y, plane, source_.Row(y + half, plane), source_.Row(y - half - 1, plane),
                  division);
      results_.Done(y);
    }
  }

 private:
  static RowSums At(std::uint16_t* first, std::ptrdiff_t pitch) noexcept {
    return {{first, first + pitch / 2}};
  }

  // A window of one row is divided, its quotient is that of as many such rows as windows have, and
  // their rests are so many times its own. Then all rows but the first half are exchanged.
  void Start(int plane, const MeanDivision& division, const MeanDivision& ofRow) noexcept {
    const KyBW8* const first = source_.Row(0, plane);
    const KyBW8* const zeros = levels_.get() + plane * pitch_;  // so far
    Advance(0, plane, first, zeros, ofRow);
    const auto rows = 2 * box_.halfHeight + 1;
    std::uint16_t* const rests = rests_.get() + plane * pitch_;
    for (std::ptrdiff_t i = 0; i < pitch_; ++i)
      rests[i] = static_cast<std::uint16_t>(rests[i] * rows);
    for (std::ptrdiff_t y = 1; y <= box_.halfHeight; ++y)
      Advance(0, plane, source_.Row(y, plane), first, division);
  }
  void Advance(std::ptrdiff_t y, int plane, const KyBW8* entering, const KyBW8* leaving,
               const MeanDivision& division) noexcept {
    const auto n = static_cast<std::size_t>(width_);
    const std::ptrdiff_t half = box_.halfWidth;
    const RowSums sums = At(sums_.get() + margin_ / 2, reach_);
    const RollingSums windows = {At(rests_.get() + plane * pitch_, pitch_),
                                 levels_.get() + plane * pitch_};
    kernels_.sumChanges(sums, n, static_cast<std::size_t>(half + 1), entering, leaving);
    kernels_.roll(results_.Row(y, plane), n, sums.From(half), sums.From(-half - 1), windows,
                  division);
  }

  const RollingKernels& kernels_ = ChooseRollingKernels();
  Box box_ = {};
  PlaneRows source_;
  PlaneResults results_;
  std::ptrdiff_t width_ = 0, margin_ = 0;
  std::ptrdiff_t reach_ = 0, pitch_ = 0;  // of the sums, and of what is kept of each plane
  Scratch<std::uint16_t> sums_, rests_;
  Scratch<KyBW8> levels_;
};

bool Divisions(const Box& box, MeanDivision& ofBox, MeanDivision& ofRow) noexcept {
  const std::ptrdiff_t columns = 2 * box.halfWidth + 1;
  return columns <= INT16_MAX && box.Area() <= 2 * INT16_MAX &&
         DivideBy(box.Area(), columns, ofBox) && DivideBy(columns, columns, ofRow);
}

}  // namespace

bool RollsMeans(const BoxJob& job) noexcept {
  MeanDivision ofBox, ofRow;
  // The first row takes as long as half a window of others.
  return !job.inside && job.box.halfHeight <= job.in.height / 4 && Divisions(job.box, ofBox, ofRow);
}

KY_ERRORS RollMeans(const BoxJob& job) noexcept {
  MeanDivision ofBox, ofRow;
  RollingWalk walk;
  if (!Divisions(job.box, ofBox, ofRow) || !walk.Open(job)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  walk.Run(job, ofBox, ofRow);
  return KY_OK;
}

}  // namespace ky
