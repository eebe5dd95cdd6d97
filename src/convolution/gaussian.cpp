#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "convolution/gaussian_rows.h"
#include "convolution/planes.h"
#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "foundation/pitch.h"
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
    if (!bells.Allocate(half + 1) || !weights.Allocate(half + 1) ||
        !pairs_.Allocate(2 * (half + 1)))
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
    const auto at = [&](std::ptrdiff_t tap) {
      const std::ptrdiff_t i = std::abs(tap - half_);
      return i <= half_ ? static_cast<std::uint32_t>(weights[i]) : 0u;
    };
    for (std::ptrdiff_t k = 0; k <= half_; ++k) {
      pairs_[k] = static_cast<std::int32_t>(at(2 * k) | at(2 * k + 1) << 16);
      pairs_[half_ + 1 + k] = static_cast<std::int32_t>(at(2 * k - 1) | at(2 * k) << 16);
    }
    return true;
  }
  std::ptrdiff_t half() const noexcept { return half_; }
  // For windows that begin with the first, or with the second, of a pair.
  WeightPairs At(int first) const noexcept {
    return {pairs_.get() + first * (half_ + 1), half_ + 1, bits_};
  }

 private:
  std::ptrdiff_t half_ = 0;
  int bits_ = 15;
  Scratch<std::int32_t> pairs_;
};

// Goes down an image two rows at a time. Row v of the intermediate values is made of source row v -
// half; rows 2 j and 2 j + 1 are a pair.
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
    widePitch_ = width_ + 2 * x.half() + kGaussianSlack;
    phase_ = width_ / 2 + kGaussianSlack;
    splitPitch_ = ScratchPitch(width_);
    const std::ptrdiff_t slots = planes * Slots();
    if (!wide_.Allocate(2 * widePitch_) || !pairs_.Allocate(2 * slots * phase_) ||
        !window_.Allocate(Slots()) || !split_.Allocate(2 * planes * splitPitch_) ||
        !spare_.Allocate(out.width))
      return false;
    std::fill_n(wide_.get(), 2 * widePitch_, std::int16_t{0});
    return true;
  }
  void Run() noexcept {
    const GaussianKernels& kernels = ChooseGaussianKernels();
    const WeightPairs weights[2] = {y_->At(0), y_->At(1)};
    std::ptrdiff_t made = 0;
    for (std::ptrdiff_t y = 0; y < out_.height; y += 2) {
      for (; made < y / 2 + Slots(); ++made) MakePair(kernels, made);
      KyBW8* const rows[2] = {out_.Row(y), y + 1 < out_.height ? out_.Row(y + 1) : spare_.get()};
      for (int plane = 0; plane < planeCount_; ++plane) {
        for (std::ptrdiff_t k = 0; k < Slots(); ++k) window_[k] = Slot(y / 2 + k, plane);
        KyBW8* const to[2] = {Result(rows[0], 0, plane), Result(rows[1], 1, plane)};
        kernels.across(to, Columns(), window_.get(), weights);
      }
      if (planeCount_ > 1)
        for (int r = 0; r < 2; ++r)
          ChoosePlaneKernels().join(reinterpret_cast<KyC24*>(rows[r]), Columns(), Split(r, 0),
                                    static_cast<std::size_t>(splitPitch_));
    }
  }

 private:
  std::ptrdiff_t Slots() const { return y_->half() + 1; }
  std::size_t Columns() const { return static_cast<std::size_t>(width_); }
  PairRow Slot(std::ptrdiff_t pair, int plane) const {
    std::uint32_t* const at = pairs_.get() + 2 * (pair % Slots() * planeCount_ + plane) * phase_;
    return {at, at + phase_};
  }
  // Two rows of planes, of the source or of results.
  KyBW8* Split(int row, int plane) const {
    return split_.get() + (row * planeCount_ + plane) * splitPitch_;
  }
  KyBW8* Result(KyBW8* row, int r, int plane) const {
    return planeCount_ == 1 ? row : Split(r, plane);
  }
  std::ptrdiff_t SourceRow(std::ptrdiff_t v) const {
    return std::clamp<std::ptrdiff_t>(v - y_->half(), 0, in_.height - 1);
  }

  void MakePair(const GaussianKernels& kernels, std::ptrdiff_t pair) noexcept {
    const std::ptrdiff_t rows[2] = {SourceRow(2 * pair), SourceRow(2 * pair + 1)};
    // Beyond the image all pairs are the same.
    if (pair > 0 && SourceRow(2 * pair - 2) == rows[1]) {
      const auto bytes = static_cast<std::size_t>(2 * planeCount_ * phase_) * sizeof(std::uint32_t);
      if (Slots() > 1) std::memcpy(Slot(pair, 0).even, Slot(pair - 1, 0).even, bytes);
      return;
    }
    if (planeCount_ > 1)
      for (int r = 0; r < 2; ++r)
        ChoosePlaneKernels().split(Split(r, 0), static_cast<std::size_t>(splitPitch_), Columns(),
                                   reinterpret_cast<const KyC24*>(in_.Row(rows[r])));
    for (int plane = 0; plane < planeCount_; ++plane) {
      const std::int16_t* wide[2];
      for (int r = 0; r < 2; ++r) {
        std::int16_t* const row = wide_.get() + r * widePitch_;
        kernels.widen(row + x_->half(), Columns(),
                      planeCount_ == 1 ? in_.Row(rows[r]) : Split(r, plane));
        Border::Nearest().Pad(row + x_->half(), width_, x_->half(), x_->half(), 1);
        wide[r] = row;
      }
      kernels.along(Slot(pair, plane), Columns(), wide, x_->At(0));
    }
  }

  int planeCount_ = 1;
  const Weights *x_ = nullptr, *y_ = nullptr;
  std::ptrdiff_t width_ = 0, widePitch_ = 0, phase_ = 0, splitPitch_ = 0;
  Rows<const KyBW8> in_;
  Rows<KyBW8> out_;
  Input<KyBW8> input_;
  Scratch<std::int16_t> wide_;
  Scratch<std::uint32_t> pairs_;
  Scratch<PairRow> window_;
  Scratch<KyBW8> split_, spare_;
};

template <class Pixel>
KY_ERRORS Gaussian(const char* name, const KyROI<Pixel>* source, const KyROI<Pixel>* destination,
                   unsigned halfWidth, unsigned halfHeight, float sigmaX, float sigmaY) noexcept {
  return Call(name, [&] {
    if (destination == nullptr) destination = source;
    Rows<const KyBW8> in;
    Rows<KyBW8> out;
    // A source is const for its rectangle, not for its pixels.
    auto* const written = const_cast<KyROI<Pixel>*>(destination);
    if (const KY_ERRORS error = OpenAll(source, in, written, out)) return error;
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
    if (!weightsX.Make(halfWidth, x) || !weightsY.Make(halfHeight, y) ||
        !walk.Open(in, out, sizeof(Pixel), weightsX, weightsY))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
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
