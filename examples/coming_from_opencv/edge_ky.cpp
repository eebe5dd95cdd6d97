// Measures an edge that rises from left to right: its angle in degrees, and its width in pixels, in
// which the level goes from 10 % to 90 %.
#include "ky/files.h"
#include "ky/ky.h"
#include "support/program.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  KyImage<KyBW8> picture;
  Must(ImgLoad(argv[1], &picture));
  const int width = picture.GetWidth(), height = picture.GetHeight();
  // The steepest place of each row.
  const float middle = float(width) / 2, bottom = float(height - 1);
  KyEdgePointsVector points;
  Must(ImgFindEdgePoints(&picture, middle, bottom, middle, 0, middle, unsigned(height), 0, 1,
                         TRANS_SCAN_RISING, 0, &points));
  KyLine line, row;
  Must(KyFitLine(&points, 1, line));
  // The profile across the edge, ten samples a pixel.
  const double acrossX = 20 * line.directionY, acrossY = -20 * line.directionX;
  KyFloatVector profile;
  Must(ImgSampleSegment(&picture, float(line.x - acrossX), float(line.y - acrossY),
                        float(line.x + acrossX), float(line.y + acrossY), 401, 30, &profile));
  float samples = 0;
  Must(KyEdgeWidth(&profile, 0.1f, samples));
  std::printf("%7.2f %5.2f\n", KyAngleBetween(row, line), samples / 10);
}
