// Finds what moves in a stream of frames of 640 x 480 grey pixels: number of the frame, and box.
#include <vector>

#include "ky/ky.h"
#include "support/program.h"

int main() {
  std::vector<unsigned char> buffer(640 * 480);  // the camera's
  KyImage<KyBW8> frame, still(640, 480), moving(640, 480);
  KyImage<KyBW16> background(640, 480);
  KyBW16Vector table;
  KyObjectsVector objects;
  Must(frame.Attach(buffer.data(), 640, 480, 640));
  Must(ImgSetRecursiveAverageLUT(&table, 4.36f));  // the square root of 2 / 0.1 - 1
  for (int n = 0; std::fread(buffer.data(), 1, buffer.size(), stdin) == buffer.size(); ++n) {
    if (n == 0) Must(ImgConvert(&frame, &background, 4));
    Must(ImgRecursiveAverage(&frame, &background, &still, &table));
    Must(ImgOper(KY_OPER_ABS_DIFFERENCE, &frame, &still, &moving));
    Must(ImgOpenBox(&moving, &moving, 2));
    Must(ImgFindObjects(&moving, 60, 255, KY_CONNEXITY_8, &objects));
    for (const KyObject& o : objects)
      std::printf("%3d %4d %4d %4d %4d\n", n, o.x, o.y, o.width, o.height);
  }
}
