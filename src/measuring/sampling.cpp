// Profiles along segments and arcs.
#include "foundation/arrays.h"
#include "foundation/frame.h"
#include "foundation/make_room.h"
#include "ky/measuring.h"
#include "measuring/bilinear.h"
#include "measuring/parameters.h"
#include "measuring/paths.h"

namespace {

using ky::Parameters;
using ky::Rows;

// `makePath()` makes the path once all checks have passed.
template <class MakePath>
KY_ERRORS Sample(const char* name, const KyROI<KyBW8>* source, const Parameters& parameters,
                 unsigned samples, unsigned halfThickness, KyFloatVector* profile,
                 const MakePath& makePath) noexcept {
  return ky::Call(name, [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    if (profile == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = parameters.Error()) return error;
    if (rows.Empty()) samples = 0;
    ky::Input<KyBW8> in;
    if (!in.OpenApart(rows, ky::ArrayOf(*profile))) return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (const KY_ERRORS error = ky::MakeRoom(*profile, samples)) return error;
    const ky::Bilinear picture(in.rows());
    const auto path = makePath();
    float* const out = profile->GetDataPtr();
    for (unsigned i = 0; i < samples; ++i) {
      const ky::Station station = path.At(samples > 1 ? i / (samples - 1.0) : 0);
      out[i] = static_cast<float>(picture.MeanAt(station.at, station.across, halfThickness));
    }
    return KY_OK;
  });
}

}  // namespace

KY_ERRORS ImgSampleSegment(const KyROI<KyBW8>* source, float x0, float y0, float x1, float y1,
                           unsigned samples, unsigned halfThickness,
                           KyFloatVector* profile) noexcept {
  const Parameters parameters =
      Parameters()
          .Real("x0", x0)
          .Real("y0", y0)
          .Real("x1", x1)
          .Real("y1", y1)
          .Count("samples", samples, 1, ky::kMostSamples)
          .Count("halfThickness", halfThickness, 0, ky::kMostHalfThickness);
  return Sample("ImgSampleSegment", source, parameters, samples, halfThickness, profile, [&] {
    return ky::Segment({x0, y0}, {x1, y1});
  });
}

KY_ERRORS ImgSampleArc(const KyROI<KyBW8>* source, float centerX, float centerY, float radius,
                       float startAngle, float endAngle, unsigned samples, unsigned halfThickness,
                       KyFloatVector* profile) noexcept {
  const Parameters parameters =
      Parameters()
          .Real("centerX", centerX)
          .Real("centerY", centerY)
          .Real("radius", radius, 0)
          .Real("startAngle", startAngle)
          .Real("endAngle", endAngle)
          .Count("samples", samples, 1, ky::kMostSamples)
          .Count("halfThickness", halfThickness, 0, ky::kMostHalfThickness);
  return Sample("ImgSampleArc", source, parameters, samples, halfThickness, profile, [&] {
    return ky::Arc({centerX, centerY}, radius, startAngle, endAngle);
  });
}
