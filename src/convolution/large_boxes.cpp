#include "convolution/large_boxes.h"

#include <cmath>

#include "convolution/box_sums.h"

namespace ky {
namespace {

__extension__ using Wide = unsigned __int128;

// Sums, and sums of squares, of columns or windows.
struct Sums {
  std::uint64_t levels = 0, squares = 0;

  void Add(const Sums& other, std::uint64_t times = 1) noexcept {
    levels += times * other.levels;
    squares += times * other.squares;
  }
  void Subtract(const Sums& other) noexcept { Add(other, ~std::uint64_t{0}); }
};
Sums SumsOf(KyBW8 level) noexcept { return {level, std::uint64_t{level} * level}; }

KyBW8 AverageOf(const Sums& sums, std::uint64_t n) noexcept {
  return static_cast<KyBW8>((2 * sums.levels + n) / (2 * n));
}

// The largest k with k - 1/2 <= sqrt(n Q - S^2) / n: an estimate, and a test where that may be one
// off.
KyBW8 DeviationOf(const Sums& sums, std::uint64_t n) noexcept {
  const Wide fourfold = 4 * (Wide{n} * sums.squares - Wide{sums.levels} * sums.levels);
  const auto reaches = [&](int k) {
    const Wide twice = Wide{n} * static_cast<unsigned>(2 * k - 1);
    return twice * twice <= fourfold;
  };
  const auto area = static_cast<double>(n);
  const double mean = static_cast<double>(sums.levels) / area;
  const double variance = static_cast<double>(sums.squares) / area - mean * mean;
  const double rounded = std::sqrt(std::max(variance, 0.0)) + 0.5;
  int k = static_cast<int>(rounded);
  // The estimate is off by less than 2^-30 where it is next to a change.
  constexpr double kNear = 1e-6;
  const double rest = rounded - k;
  if (rest > kNear && rest < 1 - kNear) return static_cast<KyBW8>(k);
  while (k > 0 && !reaches(k)) --k;
  while (reaches(k + 1)) ++k;
  return static_cast<KyBW8>(k);
}

// result(sums, n) is the level of a window of n pixels, or positions.
template <class Result>
class LargeBoxes {
 public:
  KY_ERRORS Run(const BoxJob& job, const Result& result) noexcept {
    width_ = job.Width();
    height_ = job.in.height;
    box_ = job.box;
    inside_ = job.inside;
    PlaneRows source;
    PlaneResults results;
    if (!source.Open(job.in, job.out, job.planes, Border::Nearest(), job.RowsAtOnce()) ||
        !results.Open(job.out, job.planes) || !columns_.Allocate(job.planes * width_) ||
        !averages_.Allocate(job.threshold != nullptr ? width_ : 0))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
    const LocalThresholdKernels& thresholds = ChooseLocalThresholdKernels();
    std::fill_n(columns_.get(), job.planes * width_, Sums());
    MakePlanes(source, results, job.planes, box_.halfHeight, [&](std::ptrdiff_t y, int plane) {
      Advance(source, y, plane);
      KyBW8* const row = results.Row(y, plane);
      MakeRow(job.threshold != nullptr ? averages_.get() : row, y, plane, result);
      if (job.threshold != nullptr)
        thresholds.compare(row, static_cast<std::size_t>(width_), source.whole().Row(y),
                           averages_.get(), *job.threshold);
    });
    return KY_OK;
  }

 private:
  // The position that stands at i among n; false where none does.
  bool Find(std::ptrdiff_t& i, std::ptrdiff_t n) const {
    if (inside_) return i >= 0 && i < n;
    i = std::clamp<std::ptrdiff_t>(i, 0, n - 1);
    return true;
  }

  void Advance(const PlaneRows& source, std::ptrdiff_t y, int plane) noexcept {
    Sums* const columns = columns_.get() + plane * width_;
    if (y == 0)
      return AddFirstWindow(box_.halfHeight, height_, !inside_,
                            [&](std::ptrdiff_t at, std::uint64_t times) {
                              const KyBW8* const row = source.Row(at, plane);
                              for (std::ptrdiff_t x = 0; x < width_; ++x)
                                columns[x].Add(SumsOf(row[x]), times);
                            });
    std::ptrdiff_t in = y + box_.halfHeight, out = y - box_.halfHeight - 1;
    if (Find(in, height_))
      for (std::ptrdiff_t x = 0; x < width_; ++x) columns[x].Add(SumsOf(source.Row(in, plane)[x]));
    if (Find(out, height_))
      for (std::ptrdiff_t x = 0; x < width_; ++x)
        columns[x].Subtract(SumsOf(source.Row(out, plane)[x]));
  }

  void MakeRow(KyBW8* row, std::ptrdiff_t y, int plane, const Result& result) const noexcept {
    const Sums* const columns = columns_.get() + plane * width_;
    const auto count = [&](std::ptrdiff_t i, std::ptrdiff_t half, std::ptrdiff_t n) {
      return static_cast<std::uint64_t>(inside_ ? CountInside(i, half, n) : 2 * half + 1);
    };
    const std::uint64_t rows = count(y, box_.halfHeight, height_);
    Sums sums;
    AddFirstWindow(box_.halfWidth, width_, !inside_,
                   [&](std::ptrdiff_t x, std::uint64_t times) { sums.Add(columns[x], times); });
    for (std::ptrdiff_t x = 0; x < width_; ++x) {
      row[x] = result(sums, rows * count(x, box_.halfWidth, width_));
      std::ptrdiff_t in = x + box_.halfWidth + 1, out = x - box_.halfWidth;
      if (Find(in, width_)) sums.Add(columns[in]);
      if (Find(out, width_)) sums.Subtract(columns[out]);
    }
  }

  std::ptrdiff_t width_ = 0, height_ = 0;
  Box box_ = {};
  bool inside_ = false;
  Scratch<Sums> columns_;
  Scratch<KyBW8> averages_;
};

}  // namespace

KY_ERRORS AverageOfLargeBoxes(const BoxJob& job) noexcept {
  return LargeBoxes<decltype(&AverageOf)>().Run(job, &AverageOf);
}
KY_ERRORS DeviationOfLargeBoxes(const BoxJob& job) noexcept {
  return LargeBoxes<decltype(&DeviationOf)>().Run(job, &DeviationOf);
}

}  // namespace ky
