#include "ky/filters.h"

#include "convolution/filters_rows.h"
#include "foundation/frame.h"
#include "foundation/window.h"

namespace {

using ky::Border;
using Kernel = ky::FilterKernels::Kernel ky::FilterKernels::*;
constexpr Border kNearest = Border::Repeat(), kZero = Border::Constant(0);

// A source is const for its rectangle, not for its pixels.
ky::Rows<KyBW8> PixelsOf(const KyROI<KyBW8>* roi) noexcept {
  return ky::RowsOf(const_cast<KyROI<KyBW8>*>(roi));
}

// The frame of all filters. `frame`, where there is one, makes the results along the border.
KY_ERRORS Filter(const char* name, const KyROI<KyBW8>* source, const KyROI<KyBW8>* destination,
                 Border border, Kernel inside, Kernel frame = nullptr) noexcept {
  return ky::Call(name, [&] {
    if (destination == nullptr) destination = source;
    if (const KY_ERRORS error = ky::Ready(source, destination)) return error;
    const ky::FilterKernels& kernels = ky::ChooseFilterKernels();
    const auto out = PixelsOf(destination);
    const auto in = ky::RowsOf(source);
    return frame == nullptr ? ky::FilterWindows(out, in, 1, border, kernels.lanes, kernels.*inside)
                            : ky::FilterWindows(out, in, 1, border, kernels.lanes, kernels.*inside,
                                                kernels.*frame);
  });
}

}  // namespace

KY_ERRORS ImgConvolUniform3x3(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolUniform3x3 (BW8)", source, destination, kNearest,
                &ky::FilterKernels::uniform);
}
KY_ERRORS ImgConvolLowpass1(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLowpass1 (BW8)", source, destination, kNearest,
                &ky::FilterKernels::uniform);
}
KY_ERRORS ImgConvolUniform3x3Plain(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolUniform3x3", source, destination, kNearest,
                &ky::FilterKernels::uniformPlain);
}
KY_ERRORS ImgConvolGaussian3x3(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGaussian3x3 (BW8)", source, destination, kNearest,
                &ky::FilterKernels::binomial);
}
KY_ERRORS ImgConvolLowpass3(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLowpass3 (BW8)", source, destination, kNearest,
                &ky::FilterKernels::binomial);
}
KY_ERRORS ImgConvolGaussian3x3Plain(const KyROI<KyBW8>* source,
                                    KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGaussian3x3", source, destination, kNearest,
                &ky::FilterKernels::binomial);
}
KY_ERRORS ImgConvolLowpass2(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLowpass2 (BW8)", source, destination, kZero, &ky::FilterKernels::ring);
}
KY_ERRORS ImgConvolHighpass1(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolHighpass1 (BW8)", source, destination, kZero,
                &ky::FilterKernels::highpass1);
}
KY_ERRORS ImgConvolHighpass2(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolHighpass2 (BW8)", source, destination, kZero,
                &ky::FilterKernels::highpass2, &ky::FilterKernels::highpass2Frame);
}
KY_ERRORS ImgConvolSobelX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolSobelX (BW8)", source, destination, kZero, &ky::FilterKernels::sobelX);
}
KY_ERRORS ImgConvolSobelY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolSobelY (BW8)", source, destination, kZero, &ky::FilterKernels::sobelY);
}
KY_ERRORS ImgConvolSobel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolSobel (BW8)", source, destination, kZero, &ky::FilterKernels::sobel);
}
KY_ERRORS ImgConvolPrewittX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolPrewittX (BW8)", source, destination, kNearest,
                &ky::FilterKernels::prewittX);
}
KY_ERRORS ImgConvolPrewittY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolPrewittY (BW8)", source, destination, kZero,
                &ky::FilterKernels::prewittY);
}
KY_ERRORS ImgConvolPrewitt(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolPrewitt (BW8)", source, destination, kZero, &ky::FilterKernels::prewitt);
}
KY_ERRORS ImgConvolLaplacian4(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLaplacian4 (BW8)", source, destination, kZero,
                &ky::FilterKernels::laplacian4);
}
KY_ERRORS ImgConvolLaplacian8(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLaplacian8 (BW8)", source, destination, kZero,
                &ky::FilterKernels::laplacian8);
}
