// What two images have in common: noise, correlogram, regression; and how sharp one is.
#include "ky/quality.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "foundation/elementary.h"
#include "foundation/resize.h"
#include "statistics/pixels.h"
#include "statistics/quality_rows.h"
#include "statistics/wide.h"

namespace {

using ky::Call;
using ky::Rows;

constexpr ky::RoiNames kNames = {{"source", "reference"}, "source and reference differ in size"};

// Rows of A and B hold the elements that are compared; bytes on colours are their components. The
// kernel's differences are in units of 1 / kUnit levels.
template <class A, class B, class RoiA, class RoiB>
KY_ERRORS RmsNoise(const char* trace, const RoiA* source, const RoiB* reference,
                   ky::PairKernel<std::uint64_t, A, B> kernel, float& noise) noexcept {
  return Call(trace, [&] {
    Rows<const A> in;
    Rows<const B> from;
    if (const KY_ERRORS error = ky::OpenSome(kNames, source, in, reference, from)) return error;
    ky::Unsigned128 sum = 0;
    ky::ReducePairs(kernel, in, from, [&](std::uint64_t row) { sum += row; });
    constexpr double kUnit = sizeof(A) == sizeof(B) ? 1 : 256;
    const double elements = static_cast<double>(in.width * in.height);
    noise = static_cast<float>(std::sqrt(ky::ToDouble(sum) / elements) / kUnit);
    return KY_OK;
  });
}

template <class A, class B, class RoiA, class RoiB>
KY_ERRORS SignalNoiseRatio(const char* trace, const RoiA* source, const RoiB* reference,
                           ky::PairKernel<ky::Energies, A, B> kernel, float& decibels) noexcept {
  return Call(trace, [&] {
    Rows<const A> in;
    Rows<const B> from;
    if (const KY_ERRORS error = ky::OpenSome(kNames, source, in, reference, from)) return error;
    ky::Unsigned128 signal = 0, noise = 0;
    ky::ReducePairs(kernel, in, from, [&](const ky::Energies& row) {
      signal += row.reference;
      noise += row.error;
    });
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    decibels = noise == 0 ? kInfinity
               : signal == 0
                   ? -kInfinity
                   : static_cast<float>(10 * ky::Log10(ky::ToDouble(signal) / ky::ToDouble(noise)));
    return KY_OK;
  });
}

}  // namespace

KY_ERRORS ImgRmsNoise(const KyROI<KyBW8>* source, const KyROI<KyBW8>* reference,
                      float& noise) noexcept {
  return RmsNoise("ImgRmsNoise (BW8)", source, reference, ky::ChooseQualityKernels().error8, noise);
}
KY_ERRORS ImgRmsNoise(const KyROI<KyBW16>* source, const KyROI<KyBW16>* reference,
                      float& noise) noexcept {
  return RmsNoise("ImgRmsNoise (BW16)", source, reference, ky::ChooseQualityKernels().error16,
                  noise);
}
KY_ERRORS ImgRmsNoise(const KyROI<KyC24>* source, const KyROI<KyC24>* reference,
                      float& noise) noexcept {
  return RmsNoise("ImgRmsNoise (C24)", source, reference, ky::ChooseQualityKernels().error8, noise);
}
KY_ERRORS ImgRmsNoise(const KyROI<KyBW8>* source, const KyROI<KyBW16>* reference,
                      float& noise) noexcept {
  return RmsNoise("ImgRmsNoise (BW8 source and BW16 reference)", source, reference,
                  ky::ChooseQualityKernels().error8From16, noise);
}

KY_ERRORS ImgSignalNoiseRatio(const KyROI<KyBW8>* source, const KyROI<KyBW8>* reference,
                              float& decibels) noexcept {
  return SignalNoiseRatio("ImgSignalNoiseRatio (BW8)", source, reference,
                          ky::ChooseQualityKernels().energies8, decibels);
}
KY_ERRORS ImgSignalNoiseRatio(const KyROI<KyBW16>* source, const KyROI<KyBW16>* reference,
                              float& decibels) noexcept {
  return SignalNoiseRatio("ImgSignalNoiseRatio (BW16)", source, reference,
                          ky::ChooseQualityKernels().energies16, decibels);
}
KY_ERRORS ImgSignalNoiseRatio(const KyROI<KyC24>* source, const KyROI<KyC24>* reference,
                              float& decibels) noexcept {
  return SignalNoiseRatio("ImgSignalNoiseRatio (C24)", source, reference,
                          ky::ChooseQualityKernels().energies8, decibels);
}
KY_ERRORS ImgSignalNoiseRatio(const KyROI<KyBW8>* source, const KyROI<KyBW16>* reference,
                              float& decibels) noexcept {
  return SignalNoiseRatio("ImgSignalNoiseRatio (BW8 source and BW16 reference)", source, reference,
                          ky::ChooseQualityKernels().energies8From16, decibels);
}

KY_ERRORS ImgCorrelogram(const KyROI<KyBW8>* a, const KyROI<KyBW8>* b,
                         KyImage<KyBW32>* counts) noexcept {
  return Call("ImgCorrelogram", [&] {
    constexpr int kLevels = 256;
    Rows<const KyBW8> inA, inB;
    if (const KY_ERRORS error = ky::Open(a, inA, "a")) return error;
    if (const KY_ERRORS error = ky::Open(b, inB, "b")) return error;
    if (counts == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "counts");
    if (const KY_ERRORS error = ky::CheckSizes(ky::kPair, a, b)) return error;
    ky::Scratch<KyBW32> table;
    if (!table.Allocate(kLevels * kLevels)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    std::fill_n(table.get(), kLevels * kLevels, 0u);
    for (std::ptrdiff_t y = 0; y < inA.height; ++y) {
      const KyBW8 *const rowA = inA.Row(y), *const rowB = inB.Row(y);
      for (std::ptrdiff_t x = 0; x < inA.width; ++x) {
        KyBW32& count = table[rowB[x] * kLevels + rowA[x]];
        count += count != UINT32_MAX;
      }
    }
    // A source may lie in the memory of the image: it is not read any more from here on.
    if (const KY_ERRORS error = ky::Resize(counts, kLevels, kLevels)) return error;
    const Rows<KyBW32> out = ky::RowsOf(static_cast<KyROI<KyBW32>*>(counts));
    for (std::ptrdiff_t y = 0; y < kLevels; ++y)
      std::copy_n(table.get() + y * kLevels, kLevels, out.Row(y));
    return KY_OK;
  });
}

KY_ERRORS ImgLinearRegression(const KyROI<KyBW8>* a, const KyROI<KyBW8>* b, float& gain,
                              float& offset, float& correlation) noexcept {
  return Call("ImgLinearRegression", [&] {
    Rows<const KyBW8> inA, inB;
    if (const KY_ERRORS error = ky::OpenSome(ky::kPair, a, inA, b, inB)) return error;
    ky::PairSums sums{};
    ky::ReducePairs(ky::ChooseQualityKernels().pairSums, inA, inB,
                    [&](const ky::PairSums& row) { sums += row; });
    const auto product = [](std::uint64_t p, std::uint64_t q) {
      return static_cast<ky::Int128>(ky::Unsigned128{p} * q);
    };
    const auto n = static_cast<std::uint64_t>(inA.width * inA.height);
    const ky::Int128 varianceA = product(n, sums.aa) - product(sums.a, sums.a);
    const ky::Int128 varianceB = product(n, sums.bb) - product(sums.b, sums.b);
    if (varianceA == 0)
      return ky::Explain(KY_ERROR_SINGULAR_SYSTEM, "all pixels of a have one level");
    const double common = ky::ToDouble(product(n, sums.ab) - product(sums.a, sums.b));
    const double across = ky::ToDouble(product(sums.aa, sums.b) - product(sums.a, sums.ab));
    const double spreadA = ky::ToDouble(varianceA), spreadB = ky::ToDouble(varianceB);
    gain = static_cast<float>(common / spreadA);
    offset = static_cast<float>(across / spreadA);
    correlation = varianceB == 0 ? 0.0f : static_cast<float>(common / std::sqrt(spreadA * spreadB));
    return KY_OK;
  });
}

KY_ERRORS ImgFocusing(const KyROI<KyBW8>* source, float& sharpness) noexcept {
  return Call("ImgFocusing", [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    const std::ptrdiff_t width = rows.width - 1, height = rows.height - 1;
    if (width <= 0 || height <= 0)
      return ky::Explain(KY_ERROR_NO_PIXELS, "source has fewer than 2 x 2 pixels");
    const auto kernel = ky::ChooseQualityKernels().sharpness;
    std::uint64_t sum = 0;
    for (std::ptrdiff_t y = 0; y < height; ++y)
      sum += kernel(rows.Row(y), rows.Row(y + 1), static_cast<std::size_t>(width));
    sharpness = static_cast<float>(static_cast<double>(sum) / static_cast<double>(width * height));
    return KY_OK;
  });
}
