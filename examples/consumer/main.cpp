// Processes an image with all three libraries, and fails when a pixel is not what it should be.
#include <cstdio>

#include "ky/ky.h"

int main() {
  KyImage<KyBW8> image(640, 480);
  KyImage<KyC24> color(640, 480);
  KyROI<KyBW8> center(&image, 160, 120, 320, 240);
  ImgCopy(KyBW8{200}, &center);
  ImgOper(KY_OPER_INVERT, &image, &image);
  if (ClrSetComponent(&image, &color, 1) != KY_OK) {
    std::fprintf(stderr, "%s\n", KyGetErrorMessage());
    return 1;
  }
  const KyC24 inside = color.GetPixel(320, 240), outside = color.GetPixel(0, 0);
  std::printf("ky %s: %d inside, %d outside\n", KyGetVersion(), inside.c1, outside.c1);
  return inside == KyC24(0, 55, 0) && outside == KyC24(0, 255, 0) ? 0 : 1;
}
