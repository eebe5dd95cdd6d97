// Turned, registered, and a ring unrolled.
#include "families.h"
#include "sheet.h"

namespace docs {

void Geometry(const std::string& folder) {
  const Grey source = Parts();
  Grey turned = Panel(), registered = Panel();
  Must(ImgScaleRotate(&source, 99.5f, 74.5f, 99.5f, 74.5f, 0.8f, 0.8f, 30, &turned, 8));
  // The centres of the three parts, laid out anew.
  Must(ImgRegister(&source, &registered, 48, 46, 146, 48, 92, 118, 40, 62, 152, 34, 108, 118, 8));

  const Grey washer = Washer();
  Grey ring = Panel();
  KyImage<KyBW16> x, y;
  Must(ImgSetCircleWarp(100, 75, kHeight, 20, 72, kWidth, 0, 360, &x, &y));
  Must(ImgWarp(&washer, &ring, &x, &y, 0, 0));
  Grey zoomed = Panel();
  Must(ImgScaleRotate(&source, 48, 46, 99.5f, 74.5f, 2.2f, 2.2f, 0, &zoomed, 4));
  Write(folder, "geometry", 3, {&source, &turned, &registered, &zoomed, &washer, &ring});
}

}  // namespace docs
