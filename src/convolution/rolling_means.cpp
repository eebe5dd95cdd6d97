#include "convolution/rolling_means.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "convolution/box_sums.h"
#include "convolution/planes.h"
#include "convolution/rolling_rows.h"
#include "foundation/scratch.h"

namespace ky {
namespace {

// False where `division` cannot do it for windows of so many columns and that area, an odd number.
//
// Sums to divide are a rest and a row's change: at most area / 2 + 255 columns. Quotients of an odd
// area are at least 1 / (2 area) away from where rounding changes, and those by `factor` are off by
// less than that.
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

constexpr std::ptrdiff_t kBoundary = 4 * kCacheLine;
std::ptrdiff_t RoundUp(std::ptrdiff_t n) noexcept {
  return (n + kBoundary - 1) / kBoundary * kBoundary;
}

// How rows change along their windows.
class RowChanges {
 public:
  explicit RowChanges(const RollingKernels& kernels) noexcept : kernels_(kernels) {}
  bool Allocate(std::ptrdiff_t width, std::ptrdiff_t half, bool nearest) noexcept {
    half_ = half;
    n_ = static_cast<std::size_t>(width);
    nearest_ = nearest;
    const std::ptrdiff_t margin = RoundUp(half + 1);
    const std::ptrdiff_t pitch = RoundUp(margin + width + half + kColumnSlack);
    if (!sums_.Allocate(pitch)) return false;
    std::uint16_t* const first = sums_.get() + margin / 2;
    all_ = {{first, first + pitch / 2}};
    return true;
  }
  void Make(const KyBW8* entering, const KyBW8* leaving) const noexcept {
    kernels_.sumChanges(all_, n_, static_cast<std::size_t>(half_ + 1), nearest_, entering, leaving);
  }
  // Window x changes by upTo(x) - before(x).
  RowSums upTo() const noexcept { return all_.From(half_); }
  RowSums before() const noexcept { return all_.From(-half_ - 1); }
  const RollingKernels& kernels() const noexcept { return kernels_; }

 private:
  const RollingKernels& kernels_;
  std::ptrdiff_t half_ = 0;
  std::size_t n_ = 0;
  bool nearest_ = false;
  RowSums all_ = {};
  Scratch<std::uint16_t> sums_;
};

// What division leaves over of the sums of windows, for each plane.
class Rests {
 public:
  bool Allocate(std::ptrdiff_t width, int planes) noexcept {
    pitch_ = RoundUp(width + kColumnSlack);
    if (!memory_.Allocate(planes * pitch_)) return false;
    std::fill_n(memory_.get(), planes * pitch_, std::uint16_t{0});
    return true;
  }
  RowSums At(int plane) const noexcept {
    std::uint16_t* const rests = memory_.get() + plane * pitch_;
    return {{rests, rests + pitch_ / 2}};
  }
  void Multiply(int plane, std::ptrdiff_t times) const noexcept {
    std::uint16_t* const rests = memory_.get() + plane * pitch_;
    for (std::ptrdiff_t i = 0; i < pitch_; ++i)
      rests[i] = static_cast<std::uint16_t>(rests[i] * times);
  }

 private:
  std::ptrdiff_t pitch_ = 0;
  Scratch<std::uint16_t> memory_;
};

// Where the nearest pixels stand for those outside, all windows are alike.
class NearestWalk {
 public:
  explicit NearestWalk(const RollingKernels& kernels) noexcept : changes_(kernels) {}
  bool Open(const BoxJob& job) noexcept {
    return source_.Open(job.in, job.out, job.planes, Border::Nearest(), job.RowsAtOnce()) &&
           results_.Open(job.out, job.planes) &&
           changes_.Allocate(job.Width(), job.box.halfWidth, true) &&
           rests_.Allocate(job.Width(), job.planes) && zeros_.Allocate(job.Width());
  }
  void Run(const BoxJob& job, const MeanDivision& ofBox, const MeanDivision& ofRow) noexcept {
    const std::ptrdiff_t half = job.box.halfHeight;
    const auto n = static_cast<std::size_t>(job.Width());
    std::fill_n(zeros_.get(), n, KyBW8{0});
    MakePlanes(source_, results_, job.planes, half, [&](std::ptrdiff_t y, int plane) {
      KyBW8* const out = results_.Row(y, plane);
      const auto roll = [&](const KyBW8* above, const KyBW8* entering, const KyBW8* leaving,
                            const MeanDivision& division) {
        changes_.Make(entering, leaving);
        changes_.kernels().roll(out, n, changes_.upTo(), changes_.before(), above, rests_.At(plane),
                                division);
      };
      if (y > 0)
        return roll(results_.Row(y - 1, plane), source_.Row(y + half, plane),
                    source_.Row(y - half - 1, plane), ofBox);
      // A window of the first row alone has the levels, and part of the rests, of one that has
      // that row in all places. The lower half of these is exchanged.
      const KyBW8* const first = source_.Row(0, plane);
      roll(zeros_.get(), first, zeros_.get(), ofRow);
      rests_.Multiply(plane, 2 * half + 1);
      for (std::ptrdiff_t v = 1; v <= half; ++v) roll(out, source_.Row(v, plane), first, ofBox);
    });
  }

 private:
  PlaneRows source_;
  PlaneResults results_;
  RowChanges changes_;
  Rests rests_;
  Scratch<KyBW8> zeros_;
};

// Where only pixels inside count, windows that reach over the border have areas of their own, and
// their sums are kept: those of the first and the last rows, and of either end of all others.
class InsideWalk {
 public:
  explicit InsideWalk(const RollingKernels& kernels) noexcept : changes_(kernels) {}
  bool Open(const BoxJob& job, const MeanDivision& division) noexcept {
    division_ = division;
    threshold_ = job.threshold;
    width_ = job.Width();
    half_ = job.box.halfHeight;
    average_ = job.box.Area() < kMostSmallArea ? kernels_.keptSmall : kernels_.kept;
    pitch_ = RoundUp(width_ + kColumnSlack);
    if (!source_.Open(job.in, job.out, job.planes, Border::Constant(0), job.RowsAtOnce()) ||
        !results_.Open(job.out, job.planes) ||
        !changes_.Allocate(width_, job.box.halfWidth, false) ||
        !rests_.Allocate(width_, job.planes) || !sums_.Allocate(job.planes * pitch_) ||
        !areas_.Allocate(job.box, width_, job.in.height, true) ||
        !averages_.Allocate(threshold_ != nullptr ? width_ : 0))
      return false;
    std::fill_n(sums_.get(), job.planes * pitch_, 0u);
    return true;
  }
  void Run(const BoxJob& job) noexcept {
    const std::ptrdiff_t height = job.in.height;
    MakePlanes(source_, results_, job.planes, half_, [&](std::ptrdiff_t y, int plane) {
      for (std::ptrdiff_t v = 0; y == 0 && v < half_; ++v) {
        changes_.Make(source_.Row(v, plane), source_.Row(-1, plane));
        kernels_.keep(static_cast<std::size_t>(width_), Kept(plane));
      }
      changes_.Make(source_.Row(y + half_, plane), source_.Row(y - half_ - 1, plane));
      if (y == height - half_) EndRolling(y - 1, plane);
      if (y > half_ && y < height - half_)
        MakeWhole(y, plane);
      else
        MakeSums(y, plane);
      if (y == half_) BeginRolling(y, plane);
    });
  }

 private:
  WideColumns Sums(int plane) const noexcept {
    std::uint32_t* const first = sums_.get() + plane * pitch_;
    return {{first, first + pitch_ / 4, first + pitch_ / 2, first + 3 * pitch_ / 4}};
  }
  KeptWindows Kept(int plane) const noexcept {
    return {changes_.upTo(), changes_.before(), Sums(plane)};
  }

  // Where the averages of row y stand. Those to compare with share a row of scratch.
  KyBW8* Averages(std::ptrdiff_t y, int plane) const noexcept {
    return threshold_ != nullptr ? averages_.get() : results_.Row(y, plane);
  }
  void MakeSums(std::ptrdiff_t y, int plane) noexcept {
    const auto n = static_cast<std::size_t>(width_);
    average_(Averages(y, plane), n, Kept(plane), areas_.At(y), RowSpan::kAll);
    if (threshold_ != nullptr)
      thresholds_.compare(results_.Row(y, plane), n, source_.Row(y, plane), averages_.get(),
                          *threshold_);
  }
  // A row whose windows have all their rows. Its ends roll as if they had all columns too, which
  // means nothing, and are made again of the sums that are kept.
  void MakeWhole(std::ptrdiff_t y, int plane) noexcept {
    const auto n = static_cast<std::size_t>(width_);
    const WindowAreas& areas = areas_.At(y);
    KyBW8* const out = results_.Row(y, plane);
    const RowSums upTo = changes_.upTo(), before = changes_.before(), rests = rests_.At(plane);
    if (threshold_ == nullptr) {
      changes_.kernels().roll(out, n, upTo, before, results_.Row(y - 1, plane), rests, division_);
      average_(out, n, Kept(plane), areas, RowSpan::kEnds);
    } else {
      const KyBW8* const source = source_.Row(y, plane);
      changes_.kernels().rollThresholds(out, n, upTo, before, averages_.get(), rests, division_,
                                        source, *threshold_);
      thresholds_.kept(out, n, Kept(plane), areas, RowSpan::kEnds, source, *threshold_);
    }
  }
  // Sums become levels, those of row y, and rests, and again sums.
  void BeginRolling(std::ptrdiff_t y, int plane) noexcept {
    ForMiddle(y, plane, [&](std::uint32_t& sum, std::uint16_t& rest, KyBW8 level) {
      rest = static_cast<std::uint16_t>(static_cast<int>(sum) - level * division_.area);
    });
  }
  void EndRolling(std::ptrdiff_t y, int plane) noexcept {
    ForMiddle(y, plane, [&](std::uint32_t& sum, std::uint16_t& rest, KyBW8 level) {
      sum = static_cast<std::uint32_t>(level * division_.area + static_cast<std::int16_t>(rest));
    });
  }
  template <class Work>
  void ForMiddle(std::ptrdiff_t y, int plane, const Work& work) noexcept {
    const WindowAreas& areas = areas_.At(y);
    const auto begin = static_cast<std::ptrdiff_t>(areas.left);
    const auto end = static_cast<std::ptrdiff_t>(areas.right);
    const WideColumns sums = Sums(plane);
    const RowSums rests = rests_.At(plane);
    const KyBW8* const levels = Averages(y, plane);
    for (std::ptrdiff_t x = begin; x < end; ++x) work(*sums.At(x), *rests.At(x), levels[x]);
  }

  const BoxKernels& kernels_ = ChooseBoxKernels();
  const LocalThresholdKernels& thresholds_ = ChooseLocalThresholdKernels();
  const LocalThreshold* threshold_ = nullptr;
  MeanDivision division_ = {};
  std::ptrdiff_t width_ = 0, half_ = 0, pitch_ = 0;
  KeptAverageKernel average_ = nullptr;
  PlaneRows source_;
  PlaneResults results_;
  RowChanges changes_;
  Rests rests_;
  Scratch<std::uint32_t> sums_;
  Scratch<KyBW8> averages_;
  RowAreas areas_;
};

struct Divisions {
  MeanDivision ofBox, ofRow;
};
bool MakeDivisions(const BoxJob& job, Divisions& divisions) noexcept {
  const std::ptrdiff_t columns = 2 * job.box.halfWidth + 1;
  if (columns > INT16_MAX || job.box.Area() > 2 * INT16_MAX) return false;
  if (!DivideBy(job.box.Area(), columns, divisions.ofBox)) return false;
  return job.inside || DivideBy(columns, columns, divisions.ofRow);
}

}  // namespace

std::optional<KY_ERRORS> RollMeans(const BoxJob& job) noexcept {
  // The first rows take longer than others, and so do the ends of all where these have their own
  // areas.
  constexpr std::ptrdiff_t kLeastMiddle = 256;
  if (job.box.halfHeight > job.in.height / 4) return {};
  if (job.inside && job.Width() < kLeastMiddle + 2 * job.box.halfWidth) return {};
  const RollingKernels& kernels = ChooseRollingKernels();
  if (job.threshold != nullptr && !kernels.rollsThresholds) return {};
  Divisions divisions;
  if (!MakeDivisions(job, divisions)) return {};
  if (job.inside) {
    InsideWalk walk(kernels);
    if (!walk.Open(job, divisions.ofBox)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    walk.Run(job);
    return KY_OK;
  }
  NearestWalk walk(kernels);
  if (!walk.Open(job)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  walk.Run(job, divisions.ofBox, divisions.ofRow);
  return KY_OK;
}

}  // namespace ky
