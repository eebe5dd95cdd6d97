// Measuring: the time of a whole call on a picture of its own, whatever the size of the others. 100
// calipers of 41 samples, each the mean of 11 values; fits to their points; a profile.
#include <memory>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

struct Scene {
  KyImage<KyBW8> picture{640, 480};
  KyEdgePointsVector points;
  KyFloatVector profile;
  KyLine line{};
  KyCircle circle{};
};

// A bright plate below a dark ground, with a dark hole.
void DrawPlate(KyImage<KyBW8>& picture) {
  for (int y = 0; y < picture.GetHeight(); ++y) {
    for (int x = 0; x < picture.GetWidth(); ++x) {
      const int dx = x - 200, dy = y - 240;
      const bool bright = y > 60 + x / 20 && dx * dx + dy * dy > 70 * 70;
      picture.SetPixel(static_cast<KyBW8>((bright ? 180 : 40) + (x * 7 + y * 13) % 9), x, y);
    }
  }
}

void FindOnLine(Scene& s) {
  ImgFindEdgePoints(&s.picture, 20, 62, 400, 79, 10, 100, 5, 1, TRANS_SCAN_BOTH, 8, &s.points);
}
void FindOnCircle(Scene& s) {
  ImgFindEdgePointsOnCircle(&s.picture, 200, 240, 70, 0, 360, 10, 100, 5, 1, TRANS_SCAN_BOTH, 8,
                            &s.points);
}

// `find` finds the points that `work` may fit to.
template <class Find, class Work>
Contender On(Find find, Work work) {
  return [=](Pictures& p) {
    auto scene = std::make_shared<Scene>();
    DrawPlate(scene->picture);
    find(*scene);
    return [&p, scene, work] {
      work(*scene);
      p.numbers = {static_cast<double>(scene->points.GetNumElements()), scene->line.y};
    };
  };
}

const bool registered = Register({
    {"100 calipers along a segment, a call", On(FindOnLine, FindOnLine)},
    {"100 calipers along a circle, a call", On(FindOnCircle, FindOnCircle)},
    {"KyFitLine of 100 points, a call",
     On(FindOnLine, [](Scene& s) { KyFitLine(&s.points, 1, s.line); })},
    {"KyFitCircle of 100 points, a call",
     On(FindOnCircle, [](Scene& s) { KyFitCircle(&s.points, 1, s.circle); })},
    {"ImgSampleSegment of 1000 samples, a call",
     On(FindOnLine,
        [](Scene& s) { ImgSampleSegment(&s.picture, 20, 62, 400, 79, 1000, 5, &s.profile); })},
});

}  // namespace
}  // namespace ky::bench
