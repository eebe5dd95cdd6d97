#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "convolution/gaussian_rows.h"
#include "convolution/planes.h"
#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "foundation/pitch.h"
#include "foundation/prefetch.h"
#include "ky/neighbourhoods.h"

namespace {

using namespace ky;  // NOLINT(google-build-using-namespace)

constexpr unsigned kMostHalf = 1024;

// The weights of taps -half to half, where the outermost are not 0 unless half is 0.
class Weights {
 public:
  bool Make(std::ptrdiff_t half, double sigma) noexcept {
    Scratch<double> bells;
    Scratch<std::int32_t> weights;
    const std::ptrdiff_t mostPairs = half / 2 + 1;
    if (!bells.Allocate(half + 1) || !weights.Allocate(half + 1) ||
        !pairs_.Allocate(2 * mostPairs * WeightPairs::kCopies))
      return false;
    double sum = 0;
    for (std::ptrdiff_t i = 0; i <= half; ++i) {
      const auto distance = static_cast<double>(i);
      bells[i] = ky::Exp(-distance * distance / (2 * sigma * sigma));
      sum += i == 0 ? bells[i] : 2 * bells[i];
    }
    double tail = 0;
    std::int32_t roundedTail = 0;
    half_ = 0;
    for (std::ptrdiff_t i = half; i > 0; --i) {
      tail += bells[i] / sum;
      const auto rounded = static_cast<std::int32_t>(std::floor(32768 * tail + 0.5));
      weights[i] = rounded - roundedTail;
      roundedTail = rounded;
      if (weights[i] > 0) half_ = std::max(half_, i);
    }
    weights[0] = 32768 - 2 * roundedTail;
    // A lone centre does not fit 16 bits: half of it weighs the same of half the sum.
    if (half_ == 0) weights[0] = 16384;
    bits_ = half_ == 0 ? 14 : 15;
    outer_ = weights[half_];
    const auto at = [&](std::ptrdiff_t i) { return i <= half_ ? weights[i] : 0; };
    const auto fill = [&](std::int32_t* first, std::ptrdiff_t pair, std::int32_t sign) {
      const auto of = [&](std::ptrdiff_t i) {
        return static_cast<std::uint32_t>(at(i) + sign * at(i + 1)) & 0xFFFF;
      };
      std::fill_n(first + WeightPairs::kCopies * pair, WeightPairs::kCopies,
                  static_cast<std::int32_t>(of(2 * pair + 1) | of(2 * pair) << 16));
    };
    for (std::ptrdiff_t pair = 0; pair < pairs(); ++pair) {
      fill(Sums(), pair, 1);
      fill(Differences(), pair, -1);
    }
    return true;
  }
  std::ptrdiff_t half() const noexcept { return half_; }
  // Pairs of weights from the centre outwards, of which the last may have one beyond the outermost.
  std::ptrdiff_t pairs() const noexcept { return half_ / 2 + 1; }
  // The weight of the outermost taps.
  std::int32_t outer() const noexcept { return outer_; }
  WeightPairs Pairs() const noexcept { return {Sums(), Differences(), pairs(), bits_}; }

 private:
  std::int32_t* Sums() const noexcept { return pairs_.get(); }
  std::int32_t* Differences() const noexcept {
    return pairs_.get() + WeightPairs::kCopies * pairs();
  }

  std::ptrdiff_t half_ = 0;
  std::int32_t outer_ = 0;
  int bits_ = 15;
  Scratch<std::int32_t> pairs_;
};

// Goes down strips of an image two rows at a time. Strips are so narrow that the intermediate
// values of a window, for one plane, stay in a first cache. Row v of these is made of source row
// v - 2 y.pairs() + 1; rows 2 j and 2 j + 1 are a pair.
class GaussianWalk {
 public:
  bool Open(Rows<const KyBW8> in, Rows<KyBW8> out, int planes, const Weights& x,
            const Weights& y) noexcept {
    planeCount_ = planes;
    x_ = &x;
    y_ = &y;
    width_ = out.width / planes;
    out_ = out;
    if (!input_.Open(in, out)) return false;
    in_ = input_.rows();
    prefetches_ = GainFromPrefetches(2 * out.height * out.RowBytes());
    const bool inPlace = SharingOf(in_, out_) == Sharing::kTheSame;
    strip_ = StripWidth(inPlace);
    const std::ptrdiff_t reach = strip_ + 2 * x.half();
    widePitch_ = ScratchPitch(2 * (Places() + kGaussianSlack)) / 2;
    phase_ = strip_ / 2 + kGaussianSlack;
    splitPitch_ = ScratchPitch(reach);
    const std::ptrdiff_t ends = inPlace && strip_ < width_ ? 2 * in_.height * EndBytes() : 0;
    if (!wide_.Allocate(4 * widePitch_) || !pairs_.Allocate(2 * planes * Slots() * phase_) ||
        !window_.Allocate(planes * Slots()) || !split_.Allocate(2 * planes * splitPitch_) ||
        !spare_.Allocate(planes * strip_) || !ends_.Allocate(ends) ||
        !line_.Allocate(ends > 0 ? planes * reach : 0))
      return false;
    keepsEnds_ = ends > 0;
    std::fill_n(wide_.get(), 4 * widePitch_, std::int16_t{0});
    return true;
  }
  void Run() noexcept {
    const GaussianKernels& kernels = ChooseGaussianKernels();
    for (begin_ = 0; begin_ < width_; begin_ = end_) {
      end_ = std::min(begin_ + strip_, width_);
      RunStrip(kernels);
      strips_++;
    }
  }

 private:
  // Rows from what is read, or written, to what is prefetched.
  static constexpr std::ptrdiff_t kAhead = 8, kWrittenAhead = 4;

  std::ptrdiff_t StripWidth(bool inPlace) const {
    constexpr std::ptrdiff_t kFirstCache = 24 << 10, kLeast = 256, kPlaces = 64;
    const std::ptrdiff_t bytes = std::ptrdiff_t{sizeof(std::int32_t)} * Slots();
    // In place, what a strip needs of the one before it is kept.
    const std::ptrdiff_t least = inPlace ? std::max(kLeast, x_->half()) : kLeast;
    const std::ptrdiff_t wanted = std::max(kFirstCache / bytes, least);
    const std::ptrdiff_t count = std::max<std::ptrdiff_t>(width_ / wanted, 1);
    return ((width_ - 1) / count / kPlaces + 1) * kPlaces;
  }

  void RunStrip(const GaussianKernels& kernels) noexcept {
    const WeightPairs weights = y_->Pairs();
    for (int plane = 0; plane < planeCount_; ++plane)
      for (std::ptrdiff_t k = 0; k < Slots(); ++k)
        Window(plane)[k] = pairs_.get() + 2 * (plane * Slots() + k) * phase_;
    for (std::ptrdiff_t k = 0; k + 1 < Slots(); ++k) MakePair(kernels, k, k);
    for (std::ptrdiff_t y = 0; y < out_.height; y += 2) {
      MakePair(kernels, y / 2 + Slots() - 1, Slots() - 1);
      KyBW8* rows[2];
      for (int r = 0; r < 2; ++r)
        rows[r] = y + r < out_.height ? out_.Row(y + r) + begin_ * planeCount_ : spare_.get();
      if (prefetches_)
        for (int r = 0; r < 2; ++r)
          if (y + r + kWrittenAhead < out_.height)
            PrefetchRow(out_.Row(y + r + kWrittenAhead) + begin_ * planeCount_,
                        (end_ - begin_) * planeCount_);
      for (int plane = 0; plane < planeCount_; ++plane) {
        KyBW8* to[2];
        for (int r = 0; r < 2; ++r) to[r] = planeCount_ == 1 ? rows[r] : Split(r, plane);
        kernels.across.For(weights.count)(to, Columns(), {Window(plane), phase_}, weights);
        std::rotate(Window(plane), Window(plane) + 1, Window(plane) + Slots());
      }
      if (planeCount_ > 1)
        for (int r = 0; r < 2; ++r)
          planeKernels_.join(reinterpret_cast<KyC24*>(rows[r]), Columns(), Split(r, 0),
                             static_cast<std::size_t>(splitPitch_));
    }
  }

  // Pairs of rows that are needed at once.
  std::ptrdiff_t Slots() const { return 2 * y_->pairs(); }
  // Places of a row of a strip, with those around it.
  std::ptrdiff_t Places() const { return strip_ + 4 * x_->pairs(); }
  std::size_t Columns() const { return static_cast<std::size_t>(end_ - begin_); }
  // The pairs of rows of a plane, from the one above all others on.
  std::int32_t** Window(int plane) const { return window_.get() + plane * Slots(); }
  // Two rows of planes, of the source or of results.
  KyBW8* Split(int row, int plane) const {
    return split_.get() + (row * planeCount_ + plane) * splitPitch_;
  }
  std::ptrdiff_t SourceRow(std::ptrdiff_t v) const {
    return std::clamp<std::ptrdiff_t>(v - 2 * y_->pairs() + 1, 0, in_.height - 1);
  }
  // The last pixels of a strip's rows, which the next strip overwrites before the one after it
  // reads them.
  std::ptrdiff_t EndBytes() const { return x_->half() * planeCount_; }
  KyBW8* Ends(std::ptrdiff_t strip, std::ptrdiff_t row) const {
    return ends_.get() + (strip % 2 * in_.height + row) * EndBytes();
  }

  // The pixels from column `left` of a source row on, up to column `right`.
  const KyBW8* Source(std::ptrdiff_t row, std::ptrdiff_t left, std::ptrdiff_t right) noexcept {
    const KyBW8* const pixels = in_.Row(row);
    if (!keepsEnds_) return pixels + left * planeCount_;
    const auto copy = [](KyBW8* to, const KyBW8* from, std::ptrdiff_t n) {
      std::memcpy(to, from, static_cast<std::size_t>(n));
    };
    const std::ptrdiff_t before = (begin_ - left) * planeCount_;
    if (end_ < width_)
      copy(Ends(strips_, row), pixels + end_ * planeCount_ - EndBytes(), EndBytes());
    copy(line_.get(), Ends(strips_ + 1, row) + EndBytes() - before, before);
    copy(line_.get() + before, pixels + begin_ * planeCount_, (right - begin_) * planeCount_);
    return line_.get();
  }

  // Makes a pair, which becomes the one at place k of the windows.
  void MakePair(const GaussianKernels& kernels, std::ptrdiff_t pair, std::ptrdiff_t k) noexcept {
    const std::ptrdiff_t rows[2] = {SourceRow(2 * pair), SourceRow(2 * pair + 1)};
    // Beyond the image all pairs are the same.
    if (pair > 0 && SourceRow(2 * pair - 2) == rows[1]) {
      for (int plane = 0; plane < planeCount_; ++plane)
        std::copy_n(Window(plane)[k - 1], 2 * phase_, Window(plane)[k]);
      return;
    }
    const std::ptrdiff_t half = x_->half();
    const std::ptrdiff_t left = std::max<std::ptrdiff_t>(begin_ - half, 0);
    const std::ptrdiff_t right = std::min(end_ + half, width_);
    const auto columns = static_cast<std::size_t>(right - left);
    const KyBW8* source[2];
    for (int r = 0; r < 2; ++r) {
      if (prefetches_ && rows[r] + kAhead < in_.height)
        PrefetchRow(in_.Row(rows[r] + kAhead) + left * planeCount_, (right - left) * planeCount_);
      source[r] = Source(rows[r], left, right);
      if (planeCount_ > 1)
        planeKernels_.split(Split(r, 0), static_cast<std::size_t>(splitPitch_), columns,
                            reinterpret_cast<const KyC24*>(source[r]));
      else if (keepsEnds_)
        source[r] = static_cast<KyBW8*>(std::memcpy(Split(r, 0), source[r], columns));
    }
    const std::ptrdiff_t margin = 2 * x_->pairs() - 1;
    const Margins margins = {static_cast<std::size_t>(margin - (begin_ - left)),
                             static_cast<std::size_t>(margin + 2 - (right - end_))};
    // Pixels begin at a line of the cache, or a place before it: rows that begin anywhere take
    // twice as long to write.
    constexpr std::ptrdiff_t kLine = kCacheLine / std::ptrdiff_t{sizeof(std::int16_t)};
    const std::ptrdiff_t toLine =
        kLine - static_cast<std::ptrdiff_t>(margins.before + 1) / 2 * 2 % kLine;
    for (int plane = 0; plane < planeCount_; ++plane) {
      WideRow wide[2];
      for (int r = 0; r < 2; ++r) {
        std::int16_t* const row = wide_.get() + 2 * r * widePitch_ + toLine;
        wide[r] = {row, row + widePitch_};
        kernels.widen(row, row + widePitch_, margins, columns,
                      planeCount_ == 1 ? source[r] : Split(r, plane));
      }
      const WeightPairs weights = x_->Pairs();
      kernels.along.For(weights.count)({Window(plane) + k, phase_}, Columns(), wide, weights);
    }
  }

  int planeCount_ = 1;
  const Weights *x_ = nullptr, *y_ = nullptr;
  std::ptrdiff_t width_ = 0, strip_ = 0, widePitch_ = 0, phase_ = 0, splitPitch_ = 0;
  bool prefetches_ = false, keepsEnds_ = false;
  // The strip at hand, and how many have been before it.
  std::ptrdiff_t begin_ = 0, end_ = 0, strips_ = 0;
  const PlaneKernels& planeKernels_ = ChoosePlaneKernels();
  Rows<const KyBW8> in_;
  Rows<KyBW8> out_;
  Input<KyBW8> input_;
  Scratch<std::int16_t> wide_;
  Scratch<std::int32_t> pairs_;
  Scratch<std::int32_t*> window_;
  Scratch<KyBW8> split_, spare_, ends_, line_;
};

KY_ERRORS SmallGaussian(Rows<const KyBW8> in, Rows<KyBW8> out, int step, const Weights& x,
                        const Weights& y) noexcept {
  const SmallGaussianKernels& kernels = ChooseSmallGaussianKernels();
  const ThreeTaps taps = {static_cast<std::int16_t>(x.outer()),
                          static_cast<std::int16_t>(y.outer())};
  const auto run = [&](Rows<KyBW8> results, const KyBW8* const* rows, const Layout& layout) {
    (step == 1 ? kernels.grey : kernels.color)(taps, results, rows, layout);
  };
  return FilterWindows(out, in, Border::Nearest(),
                       WindowKernel<decltype(run)>{.radius = 1,
                                                   .lanes = kernels.lanes,
                                                   .run = run,
                                                   .step = step,
                                                   .shortestWithEnds = kernels.shortestWithEnds});
}

template <class Pixel>
KY_ERRORS Gaussian(const char* name, const KyROI<Pixel>* source, KyROI<Pixel>* destination,
                   unsigned halfWidth, unsigned halfHeight, float sigmaX, float sigmaY) noexcept {
  return Call(name, [&] {
    destination = DestinationOf(source, destination);
    Rows<const KyBW8> in;
    Rows<KyBW8> out;
    if (const KY_ERRORS error = OpenAll(source, in, destination, out)) return error;
    if (halfHeight == KY_HALF_HEIGHT_AS_WIDTH) halfHeight = halfWidth;
    if (halfWidth > kMostHalf)
      return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "halfWidth");
    if (halfHeight > kMostHalf)
      return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "halfHeight");
    if (!(sigmaX >= 0 && std::isfinite(sigmaX)))
      return ky::OutOfRange(KY_ERROR_PARAMETER_3_OUT_OF_RANGE, "sigmaX");
    if (!(sigmaY >= 0 && std::isfinite(sigmaY)))
      return ky::OutOfRange(KY_ERROR_PARAMETER_4_OUT_OF_RANGE, "sigmaY");
    if (out.Empty()) return KY_OK;
    const auto usual = [](unsigned half) { return 0.3 * (static_cast<double>(half) - 1) + 0.8; };
    const double x = sigmaX > 0 ? double{sigmaX} : usual(halfWidth);
    const double y = sigmaY > 0 ? double{sigmaY} : sigmaX > 0 ? double{sigmaX} : usual(halfHeight);
    Weights weightsX, weightsY;
    GaussianWalk walk;
    if (!weightsX.Make(halfWidth, x) || !weightsY.Make(halfHeight, y))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (weightsX.half() == 1 && weightsY.half() == 1)
      return SmallGaussian(in, out, sizeof(Pixel), weightsX, weightsY);
    if (!walk.Open(in, out, sizeof(Pixel), weightsX, weightsY)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    walk.Run();
    return KY_OK;
  });
}

}  // namespace

KY_ERRORS ImgConvolGaussian(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                            unsigned halfWidth, unsigned halfHeight, float sigmaX,
                            float sigmaY) noexcept {
  return Gaussian("ImgConvolGaussian (BW8)", source, destination, halfWidth, halfHeight, sigmaX,
                  sigmaY);
}
KY_ERRORS ImgConvolGaussian(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                            unsigned halfWidth, unsigned halfHeight, float sigmaX,
                            float sigmaY) noexcept {
  return Gaussian("ImgConvolGaussian (C24)", source, destination, halfWidth, halfHeight, sigmaX,
                  sigmaY);
}
