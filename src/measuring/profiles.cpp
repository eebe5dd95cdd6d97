// Smoothing of profiles, their edges, and how wide these are.
#include <cmath>
#include <numeric>

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

KY_ERRORS KyEdgeWidth(const KyFloatVector* profile, float share, float& width) noexcept {
  return ky::Call("KyEdgeWidth", [&] {
    if (profile == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = ky::Parameters().Real("share", share, 0.01f, 0.49f).Error())
      return error;
    const std::ptrdiff_t n = profile->GetNumElements(), quarter = n / 4;
    if (quarter == 0) return ky::Explain(KY_ERROR_NO_PIXELS, "profile has fewer than 4 samples");
    const float* const p = profile->GetDataPtr();
    const auto mean = [=](const float* first) {
      return std::accumulate(first, first + quarter, 0.0) / static_cast<double>(quarter);
    };
    const double before = mean(p), step = mean(p + n - quarter) - before;
    if (!(std::abs(step) > 0) || !std::isfinite(step))
      return ky::Explain(KY_ERROR_SINGULAR_SYSTEM, "profile ends at the level that it begins with");
    const auto at = [=](std::ptrdiff_t i) { return (p[i] - before) / step; };
    // A mean lies between the least and the greatest of its samples, so each search finds a sample.
    std::ptrdiff_t start = quarter - 1;
    while (start > 0 && !(at(start) <= share)) --start;
    std::ptrdiff_t upper = start + 1;
    while (upper < n - 1 && !(at(upper) >= 1.0 - share)) ++upper;
    std::ptrdiff_t lower = upper - 1;
    while (lower > start && !(at(lower) <= share)) --lower;
    const double u = static_cast<double>(upper) -
                     (at(upper) - (1.0 - share)) / (at(upper) - at(upper - 1)),
                 l = static_cast<double>(lower) + (share - at(lower)) / (at(lower + 1) - at(lower));
    if (!std::isfinite(u - l))
      return ky::Explain(KY_ERROR_SINGULAR_SYSTEM, "profile has samples that are not finite");
    width = static_cast<float>(u - l);
    return KY_OK;
  });
}
