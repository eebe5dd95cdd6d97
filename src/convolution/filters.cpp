#include "ky/filters.h"

#include "convolution/filters_rows.h"
#include "foundation/frame.h"

namespace {

using namespace ky;  // NOLINT(google-build-using-namespace)

constexpr Border kNearest = Border::Nearest(), kZero = Border::Constant(0);

// The frame of all filters, of grey pixels and of the components of colours. The kernels at the
// border, if there are any, are for the windows that reach over it.
template <class Pixel, class... AtBorder>
KY_ERRORS Filter(const char* name, const KyROI<Pixel>* source, KyROI<Pixel>* destination,
                 Border border, const WindowKernels& kernels,
                 const AtBorder&... atBorder) noexcept {
  return Call(name, [&] {
    Rows<const KyBW8> in;
    Rows<KyBW8> out;
    if (const KY_ERRORS error = OpenAll(source, in, DestinationOf(source, destination), out))
      return error;
    return FilterWindows(out, in, border, kernels.Of<Pixel>(), atBorder.template Of<Pixel>()...);
  });
}

}  // namespace

KY_ERRORS ImgConvolUniform3x3(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolUniform3x3 (BW8)", source, destination, kNearest,
                ChooseSmoothingKernels().uniform);
}
KY_ERRORS ImgConvolUniform3x3(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolUniform3x3 (C24)", source, destination, kNearest,
                ChooseSmoothingKernels().uniform);
}
KY_ERRORS ImgConvolLowpass1(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLowpass1 (BW8)", source, destination, kNearest,
                ChooseSmoothingKernels().uniform);
}
KY_ERRORS ImgConvolLowpass1(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolLowpass1 (C24)", source, destination, kNearest,
                ChooseSmoothingKernels().uniform);
}
KY_ERRORS ImgConvolUniform3x3Plain(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolUniform3x3", source, destination, kNearest,
                ChooseSmoothingKernels().uniformPlain);
}
KY_ERRORS ImgConvolUniform3x3Plain(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolUniform3x3Plain (C24)", source, destination, kNearest,
                ChooseSmoothingKernels().uniformPlain);
}
KY_ERRORS ImgConvolGaussian3x3(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGaussian3x3 (BW8)", source, destination, kNearest,
                ChooseSmoothingKernels().binomial);
}
KY_ERRORS ImgConvolGaussian3x3(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolGaussian3x3 (C24)", source, destination, kNearest,
                ChooseSmoothingKernels().binomial);
}
KY_ERRORS ImgConvolLowpass3(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLowpass3 (BW8)", source, destination, kNearest,
                ChooseSmoothingKernels().binomial);
}
KY_ERRORS ImgConvolLowpass3(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolLowpass3 (C24)", source, destination, kNearest,
                ChooseSmoothingKernels().binomial);
}
KY_ERRORS ImgConvolGaussian3x3Plain(const KyROI<KyBW8>* source,
                                    KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGaussian3x3", source, destination, kNearest,
                ChooseSmoothingKernels().binomial);
}
KY_ERRORS ImgConvolGaussian3x3Plain(const KyROI<KyC24>* source,
                                    KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolGaussian3x3Plain (C24)", source, destination, kNearest,
                ChooseSmoothingKernels().binomial);
}
KY_ERRORS ImgConvolLowpass2(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLowpass2 (BW8)", source, destination, kZero,
                ChooseSmoothingKernels().neighbours);
}
KY_ERRORS ImgConvolLowpass2(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolLowpass2 (C24)", source, destination, kZero,
                ChooseSmoothingKernels().neighbours);
}
KY_ERRORS ImgConvolUniform5x5(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolUniform5x5 (BW8)", source, destination, kNearest,
                ChooseLargeSmoothingKernels().uniform5x5);
}
KY_ERRORS ImgConvolUniform5x5(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolUniform5x5 (C24)", source, destination, kNearest,
                ChooseLargeSmoothingKernels().uniform5x5);
}
KY_ERRORS ImgConvolUniform7x7(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolUniform7x7 (BW8)", source, destination, kNearest,
                ChooseLargeSmoothingKernels().uniform7x7);
}
KY_ERRORS ImgConvolUniform7x7(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolUniform7x7 (C24)", source, destination, kNearest,
                ChooseLargeSmoothingKernels().uniform7x7);
}
KY_ERRORS ImgConvolGaussian5x5(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGaussian5x5 (BW8)", source, destination, kNearest,
                ChooseLargeSmoothingKernels().binomial5x5);
}
KY_ERRORS ImgConvolGaussian5x5(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolGaussian5x5 (C24)", source, destination, kNearest,
                ChooseLargeSmoothingKernels().binomial5x5);
}
KY_ERRORS ImgConvolGaussian7x7(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGaussian7x7 (BW8)", source, destination, kNearest,
                ChooseLargeSmoothingKernels().binomial7x7);
}
KY_ERRORS ImgConvolGaussian7x7(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolGaussian7x7 (C24)", source, destination, kNearest,
                ChooseLargeSmoothingKernels().binomial7x7);
}
KY_ERRORS ImgConvolHighpass1(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolHighpass1 (BW8)", source, destination, kZero,
                ChooseSharpeningKernels().highpass1);
}
KY_ERRORS ImgConvolHighpass1(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolHighpass1 (C24)", source, destination, kZero,
                ChooseSharpeningKernels().highpass1);
}
KY_ERRORS ImgConvolHighpass2(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  // Of one instruction set, whatever another thread sets meanwhile.
  const SharpeningKernels& kernels = ChooseSharpeningKernels();
  return Filter("ImgConvolHighpass2 (BW8)", source, destination, kZero, kernels.highpass2,
                kernels.highpass2AtBorder);
}
KY_ERRORS ImgConvolHighpass2(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  // Of one instruction set, whatever another thread sets meanwhile.
  const SharpeningKernels& kernels = ChooseSharpeningKernels();
  return Filter("ImgConvolHighpass2 (C24)", source, destination, kZero, kernels.highpass2,
                kernels.highpass2AtBorder);
}
KY_ERRORS ImgConvolLaplacian4(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLaplacian4 (BW8)", source, destination, kZero,
                ChooseSharpeningKernels().laplacian4);
}
KY_ERRORS ImgConvolLaplacian4(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolLaplacian4 (C24)", source, destination, kZero,
                ChooseSharpeningKernels().laplacian4);
}
KY_ERRORS ImgConvolLaplacian8(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLaplacian8 (BW8)", source, destination, kZero,
                ChooseSharpeningKernels().laplacian8);
}
KY_ERRORS ImgConvolLaplacian8(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolLaplacian8 (C24)", source, destination, kZero,
                ChooseSharpeningKernels().laplacian8);
}
KY_ERRORS ImgConvolLaplacianX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLaplacianX (BW8)", source, destination, kZero,
                ChooseSharpeningKernels().laplacianX);
}
KY_ERRORS ImgConvolLaplacianX(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolLaplacianX (C24)", source, destination, kZero,
                ChooseSharpeningKernels().laplacianX);
}
KY_ERRORS ImgConvolLaplacianY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolLaplacianY (BW8)", source, destination, kZero,
                ChooseSharpeningKernels().laplacianY);
}
KY_ERRORS ImgConvolLaplacianY(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolLaplacianY (C24)", source, destination, kZero,
                ChooseSharpeningKernels().laplacianY);
}
KY_ERRORS ImgConvolSobelX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolSobelX (BW8)", source, destination, kZero, ChooseEdgeKernels().sobelX);
}
KY_ERRORS ImgConvolSobelX(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolSobelX (C24)", source, destination, kZero, ChooseEdgeKernels().sobelX);
}
KY_ERRORS ImgConvolSobelY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolSobelY (BW8)", source, destination, kZero, ChooseEdgeKernels().sobelY);
}
KY_ERRORS ImgConvolSobelY(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolSobelY (C24)", source, destination, kZero, ChooseEdgeKernels().sobelY);
}
KY_ERRORS ImgConvolSobel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolSobel (BW8)", source, destination, kZero, ChooseEdgeKernels().sobel);
}
KY_ERRORS ImgConvolSobel(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolSobel (C24)", source, destination, kZero, ChooseEdgeKernels().sobel);
}
KY_ERRORS ImgConvolPrewittX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolPrewittX (BW8)", source, destination, kNearest,
                ChooseEdgeKernels().prewittX);
}
KY_ERRORS ImgConvolPrewittX(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolPrewittX (C24)", source, destination, kNearest,
                ChooseEdgeKernels().prewittX);
}
KY_ERRORS ImgConvolPrewittY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolPrewittY (BW8)", source, destination, kZero,
                ChooseEdgeKernels().prewittY);
}
KY_ERRORS ImgConvolPrewittY(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolPrewittY (C24)", source, destination, kZero,
                ChooseEdgeKernels().prewittY);
}
KY_ERRORS ImgConvolPrewitt(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolPrewitt (BW8)", source, destination, kZero, ChooseEdgeKernels().prewitt);
}
KY_ERRORS ImgConvolPrewitt(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolPrewitt (C24)", source, destination, kZero, ChooseEdgeKernels().prewitt);
}
KY_ERRORS ImgConvolGradientX(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGradientX (BW8)", source, destination, kZero,
                ChooseEdgeKernels().gradientX);
}
KY_ERRORS ImgConvolGradientX(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolGradientX (C24)", source, destination, kZero,
                ChooseEdgeKernels().gradientX);
}
KY_ERRORS ImgConvolGradientY(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGradientY (BW8)", source, destination, kZero,
                ChooseEdgeKernels().gradientY);
}
KY_ERRORS ImgConvolGradientY(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolGradientY (C24)", source, destination, kZero,
                ChooseEdgeKernels().gradientY);
}
KY_ERRORS ImgConvolGradient(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolGradient (BW8)", source, destination, kZero,
                ChooseEdgeKernels().gradient);
}
KY_ERRORS ImgConvolGradient(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolGradient (C24)", source, destination, kZero,
                ChooseEdgeKernels().gradient);
}
KY_ERRORS ImgConvolRoberts(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Filter("ImgConvolRoberts (BW8)", source, destination, kZero, ChooseEdgeKernels().roberts);
}
KY_ERRORS ImgConvolRoberts(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Filter("ImgConvolRoberts (C24)", source, destination, kZero, ChooseEdgeKernels().roberts);
}
