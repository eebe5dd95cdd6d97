// Measuring: the time of a whole call, whatever the size of the picture. 100 calipers of 41 samples
// across an edge, each sample the mean of 11 values; the fits of their points; a profile.
#include <memory>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

// A bright half below a dark one, in a corner of the picture; small pictures have what fits.
void DrawEdge(Pictures& p) {
  KyImage<KyBW8>& out = p.out;
  for (int y = 0; y < out.GetHeight(); ++y)
    for (int x = 0; x < out.GetWidth(); ++x)
      out.SetPixel(static_cast<KyBW8>((y > 60 + x / 20 ? 180 : 40) + (x * 7 + y * 13) % 9), x, y);
}

struct Found {
  KyEdgePointsVector points;
  KyFloatVector profile;
  KyLine line{};
  KyCircle circle{};
};

void FindOnLine(Pictures& p, Found& found) {
  ImgFindEdgePoints(&p.out, 20, 62, 400, 79, 10, 100, 5, 1, TRANS_SCAN_BOTH, 8, &found.points);
}

template <class Work>
Contender On(const Work& work) {
  return [=](Pictures& p) {
    DrawEdge(p);
    auto found = std::make_shared<Found>();
    FindOnLine(p, *found);
    return [&p, found, work] {
      work(p, *found);
      p.numbers = {static_cast<double>(found->points.GetNumElements()), found->line.y};
    };
  };
}

const bool registered = Register({
    {"100 calipers along a segment, a call", On(FindOnLine)},
    {"100 calipers along a circle, a call", On([](Pictures& p, Found& found) {
       ImgFindEdgePointsOnCircle(&p.out, 200, 140, 70, 0, 360, 10, 100, 5, 1, TRANS_SCAN_BOTH, 8,
                                 &found.points);
     })},
    {"KyFitLine of 100 points, a call",
     On([](Pictures&, Found& found) { KyFitLine(&found.points, 1, found.line); })},
    {"KyFitCircle of 100 points, a call",
     On([](Pictures&, Found& found) { KyFitCircle(&found.points, 0, found.circle); })},
    {"ImgSampleSegment of 1000 samples, a call", On([](Pictures& p, Found& found) {
       ImgSampleSegment(&p.out, 20, 62, 400, 79, 1000, 5, &found.profile);
     })},
});

}  // namespace
}  // namespace ky::bench
