// Smoothing of profiles, and their edges.
#include "foundation/frame.h"
#include "foundation/make_room.h"
#include "ky/measuring.h"
#include "measuring/edges.h"
#include "measuring/gaussian.h"
#include "measuring/parameters.h"

KY_ERRORS KySmooth(KyFloatVector* profile, float sigma) noexcept {
  return ky::Call("KySmooth", [&] {
    if (profile == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = ky::Parameters().Real("sigma", sigma, 0, ky::kLargestSigma).Error())
      return error;
    if (sigma == 0) return KY_OK;
    const std::ptrdiff_t n = profile->GetNumElements();
    ky::GaussianSmoothing smoothing;
    ky::Scratch<double> smooth;
    if (!smoothing.Open(sigma, n) || !smooth.Allocate(n)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    std::copy(profile->begin(), profile->end(), smoothing.Samples());
    smoothing.Run(smooth.get());
    std::transform(smooth.get(), smooth.get() + n, profile->begin(),
                   [](double value) { return static_cast<float>(value); });
    return KY_OK;
  });
}

KY_ERRORS KyFindEdges(const KyFloatVector* profile, TRANS_SCAN_EDGE polarity, float minStrength,
                      KyEdgesVector* edges) noexcept {
  return ky::Call("KyFindEdges", [&] {
    if (profile == nullptr || edges == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error =
            ky::Parameters().Polarity(polarity).Real("minStrength", minStrength, 0).Error())
      return error;
    const ky::Slope slope(profile->GetDataPtr(), std::ptrdiff_t{profile->GetNumElements()});
    unsigned count = 0;
    slope.FindEdges(polarity, minStrength, [&](const ky::FoundEdge&) { ++count; });
    if (const KY_ERRORS error = ky::MakeRoom(*edges, count)) return error;
    KyEdge* out = edges->GetDataPtr();
    slope.FindEdges(polarity, minStrength, [&](const ky::FoundEdge& edge) {
      *out++ = {static_cast<float>(edge.position), static_cast<float>(edge.strength)};
    });
    return KY_OK;
  });
}
