// What looks at neighbours: kernels, named filters, morphology, gradients.
#include "families.h"
#include "sheet.h"

namespace docs {

void Kernels(const std::string& folder) {
  const Grey source = Parts();
  Grey smooth = Panel(), relief = Panel(), vertical = Panel();
  KyKernel kernel;
  Must(kernel.SetKernelData(1, 4, 6, 4, 1, 4, 16, 24, 16, 4, 6, 24, 36, 24, 6, 4, 16, 24, 16, 4, 1,
                            4, 6, 4, 1));
  Must(ImgConvolKernel(&source, &smooth, &kernel));
  Must(kernel.SetKernelData(-1, -1, 0, -1, 0, 1, 0, 1, 1));
  kernel.SetRectifier(0);
  kernel.SetOffset(128);
  Must(ImgConvolKernel(&source, &relief, &kernel));
  Must(kernel.SetKernel(KERNEL_SOBEL_X));
  kernel.SetRectifier(3);
  Must(ImgConvolKernel(&source, &vertical, &kernel));
  Write(folder, "convolution", 2, {&source, &smooth, &relief, &vertical});
}

void Filters(const std::string& folder) {
  using Filter = KY_ERRORS (*)(const KyROI<KyBW8>*, KyROI<KyBW8>*) noexcept;
  const Grey source = Parts();
  Grey smooth = Panel();
  Must(ImgConvolGaussian3x3(&source, &smooth));
  const auto filtered = [](const Grey& from, Filter filter, KyBW8 gain = 1) {
    Grey result = Panel();
    Must(filter(&from, &result));
    Must(ImgOper(KY_OPER_MULTIPLY, &result, gain, &result));
    return result;
  };
  const Grey gauss7 = filtered(source, ImgConvolGaussian7x7),
             uniform7 = filtered(source, ImgConvolUniform7x7),
             sharp = filtered(smooth, ImgConvolHighpass1), sobel = filtered(smooth, ImgConvolSobel),
             prewitt = filtered(smooth, ImgConvolPrewittX),
             laplacian = filtered(smooth, ImgConvolLaplacian8),
             gradient = filtered(smooth, ImgConvolGradient, 4),
             roberts = filtered(smooth, ImgConvolRoberts, 4),
             alongX = filtered(smooth, ImgConvolLaplacianX, 4),
             alongY = filtered(smooth, ImgConvolLaplacianY, 4);
  Write(folder, "filters", 3,
        {&source, &smooth, &gauss7, &uniform7, &sharp, &sobel, &prewitt, &laplacian, &gradient,
         &roberts, &alongX, &alongY});
}

void Morphology(const std::string& folder) {
  const Grey source = Parts();
  Grey opened = Panel(), closed = Panel(), gradient = Panel(), bright = Panel(), dark = Panel();
  Must(ImgOpenDisk(&source, &opened, 6));
  Must(ImgCloseDisk(&source, &closed, 6));
  Must(ImgMorphoGradientBox(&source, &gradient, 1));
  Must(ImgWhiteTopHatDisk(&source, &bright, 20));
  Must(ImgBlackTopHatDisk(&source, &dark, 6));
  Write(folder, "morphology", 3, {&source, &opened, &closed, &gradient, &bright, &dark});
}

void Gradients(const std::string& folder) {
  Grey source = Washer(), length, direction, lengths = Panel(), directions = Panel();
  Must(ImgConvolGaussian3x3(&source, &source));
  Must(ImgModulusImage(&length, 3));
  Must(ImgArgumentImage(&direction, 0, 360));
  Must(ImgGradientScalar(&source, &lengths, &length));
  Must(ImgGradientScalar(&source, &directions, &direction));
  Grey edges = Panel();  // the direction, where there is an edge
  Must(ImgOper(KY_OPER_GREATER, &lengths, KyBW8{60}, &edges));
  Must(ImgOper(KY_OPER_AND, &edges, &directions, &directions));
  Write(folder, "gradient", 3, {&source, &lengths, &directions});
}

}  // namespace docs
