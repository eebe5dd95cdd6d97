// Points of edges by calipers across segments and arcs.
#include <cmath>

#include "foundation/frame.h"
#include "foundation/make_room.h"
#include "ky/measuring.h"
#include "measuring/bilinear.h"
#include "measuring/edges.h"
#include "measuring/gaussian.h"
#include "measuring/parameters.h"
#include "measuring/paths.h"

namespace {

using ky::Parameters;
using ky::Rows;
using ky::Scratch;
using ky::Vector2;
using std::ptrdiff_t;

// What the calipers of a call have in common.
struct Caliper {
  float halfLength;
  unsigned halfThickness;
  float sigma;
  TRANS_SCAN_EDGE polarity;
  float minStrength;
};

class CaliperReader {
 public:
  explicit CaliperReader(const Caliper& caliper) noexcept
      : caliper_(caliper),
        intervals_(2 * static_cast<ptrdiff_t>(std::ceil(2.0 * caliper.halfLength))),
        step_(2.0 * caliper.halfLength / static_cast<double>(intervals_)) {}

  // False when there is no memory.
  bool Open() noexcept {
    return smoothing_.Open(caliper_.sigma / step_, intervals_ + 1) &&
           smooth_.Allocate(intervals_ + 1);
  }

  // Whether the caliper at a place of a path finds a point, which lies inside the picture.
  bool Find(const ky::Bilinear& picture, const ky::Station& place, KyEdgePoint& point) noexcept {
    double* const samples = smoothing_.Samples();
    const Vector2 along = ky::Turned(place.across);
    for (ptrdiff_t i = 0; i <= intervals_; ++i)
      samples[i] = picture.MeanAt(place.at + DistanceOf(static_cast<double>(i)) * place.across,
                                  along, caliper_.halfThickness);
    smoothing_.Run(smooth_.get());
    const ky::FoundEdge edge = Strongest();
    if (edge.strength == 0) return false;
    const Vector2 at = place.at + DistanceOf(edge.position) * place.across;
    if (!picture.IsInside(at)) return false;
    point.x = static_cast<float>(at.x);
    point.y = static_cast<float>(at.y);
    point.strength = static_cast<float>(edge.strength / step_);
    return true;
  }

 private:
  // Of a sample, or a place between samples, from the path.
  double DistanceOf(double sample) const noexcept { return sample * step_ - caliper_.halfLength; }

  // The first of the strongest edges, or one of strength 0.
  ky::FoundEdge Strongest() const noexcept {
    const ky::Slope slope(static_cast<const double*>(smooth_.get()), intervals_ + 1,
                          2 * ky::Bilinear::ErrorOf(caliper_.halfThickness));
    ky::FoundEdge strongest{0, 0};
    slope.FindEdges(
        caliper_.polarity, caliper_.minStrength * step_, [&](const ky::FoundEdge& edge) {
          if (std::abs(edge.strength) > std::abs(strongest.strength) + slope.Tolerance())
            strongest = edge;
        });
    return strongest;
  }

  Caliper caliper_;
  ptrdiff_t intervals_;  // between samples
  double step_;          // between samples, in pixels
  ky::GaussianSmoothing smoothing_;
  Scratch<double> smooth_;
};

Parameters& Take(Parameters& parameters, const Caliper& caliper, unsigned calipers) noexcept {
  return parameters.Real("halfLength", caliper.halfLength, FLT_TRUE_MIN, ky::kLongestHalf)
      .Count("calipers", calipers, 1, ky::kMostCalipers)
      .Count("halfThickness", caliper.halfThickness, 0, ky::kMostHalfThickness)
      .Real("sigma", caliper.sigma, 0, ky::kLargestSigma)
      .Polarity(caliper.polarity)
      .Real("minStrength", caliper.minStrength, 0);
}

// `parameters` has taken those of the path, which `makePath()` makes once all checks have passed.
template <class MakePath>
KY_ERRORS FindPoints(const char* name, const KyROI<KyBW8>* source, Parameters& parameters,
                     const Caliper& caliper, unsigned calipers, KyEdgePointsVector* points,
                     const MakePath& makePath) noexcept {
  return ky::Call(name, [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    if (points == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = Take(parameters, caliper, calipers).Error()) return error;
    if (rows.Empty()) return ky::MakeRoom(*points, 0);
    CaliperReader reader(caliper);
    Scratch<KyEdgePoint> found;
    if (!reader.Open() || !found.Allocate(calipers)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    const ky::Bilinear picture(rows);
    const auto path = makePath();
    unsigned count = 0;
    for (unsigned i = 0; i < calipers; ++i) {
      KyEdgePoint& point = found[count];
      point.caliper = static_cast<std::int32_t>(i);
      if (reader.Find(picture, path.At((i + 0.5) / calipers), point)) ++count;
    }
    if (const KY_ERRORS error = ky::MakeRoom(*points, count)) return error;
    std::copy_n(found.get(), count, points->GetDataPtr());
    return KY_OK;
  });
}

}  // namespace

KY_ERRORS ImgFindEdgePoints(const KyROI<KyBW8>* source, float x0, float y0, float x1, float y1,
                            float halfLength, unsigned calipers, unsigned halfThickness,
                            float sigma, TRANS_SCAN_EDGE polarity, float minStrength,
                            KyEdgePointsVector* points) noexcept {
  Parameters parameters;
  parameters.Real("x0", x0).Real("y0", y0).Real("x1", x1).Real("y1", y1);
  return FindPoints("ImgFindEdgePoints", source, parameters,
                    {halfLength, halfThickness, sigma, polarity, minStrength}, calipers, points,
                    [&] {
                      return ky::Segment({x0, y0}, {x1, y1});
                    });
}

KY_ERRORS ImgFindEdgePointsOnCircle(const KyROI<KyBW8>* source, float centerX, float centerY,
                                    float radius, float startAngle, float endAngle,
                                    float halfLength, unsigned calipers, unsigned halfThickness,
                                    float sigma, TRANS_SCAN_EDGE polarity, float minStrength,
                                    KyEdgePointsVector* points) noexcept {
  Parameters parameters;
  parameters.Real("centerX", centerX)
      .Real("centerY", centerY)
      .Real("radius", radius, 0)
      .Real("startAngle", startAngle)
      .Real("endAngle", endAngle);
  return FindPoints("ImgFindEdgePointsOnCircle", source, parameters,
                    {halfLength, halfThickness, sigma, polarity, minStrength}, calipers, points,
                    [&] {
                      return ky::Arc({centerX, centerY}, radius, startAngle, endAngle);
                    });
}
