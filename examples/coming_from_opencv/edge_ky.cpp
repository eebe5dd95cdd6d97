// Measures an edge that rises from left to right: its angle in degrees, and its width in pixels, in
// which the level goes from 10 % to 90 %.
#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/program.h"

// Where the profile first reaches a share of its whole step.
static double Reaches(const KyFloatVector& profile, float share) {
  const unsigned last = profile.GetNumElements() - 1;
  const float step = profile[last] - profile[0], level = profile[0] + share * step;
  unsigned i = 1;
  while (i < last && (profile[i] - level) * step < 0) ++i;
  return float(i) - (profile[i] - level) / (profile[i] - profile[i - 1]);
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const KyImage<KyBW8> picture = picture::Read<KyBW8>(argv[1]);
  const int width = picture.GetWidth(), height = picture.GetHeight();
  // The steepest place of each row.
  const float middle = float(width) / 2, bottom = float(height - 1);
  KyEdgePointsVector points;
  Must(ImgFindEdgePoints(&picture, middle, bottom, middle, 0, middle, unsigned(height), 0, 1,
                         TRANS_SCAN_RISING, 0, &points));
  KyLine line, level = {0, 0, 1, 0, 0, 0};
  Must(KyFitLine(&points, 1, line));
  // The profile across the edge, ten samples a pixel.
  const double acrossX = 20 * line.directionY, acrossY = -20 * line.directionX;
  KyFloatVector profile;
  Must(ImgSampleSegment(&picture, float(line.x - acrossX), float(line.y - acrossY),
                        float(line.x + acrossX), float(line.y + acrossY), 401, 30, &profile));
  std::printf("%7.2f %5.2f\n", KyAngleBetween(level, line),
              (Reaches(profile, 0.9f) - Reaches(profile, 0.1f)) / 10);
}
