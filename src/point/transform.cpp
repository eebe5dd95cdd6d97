#include "ky/transform.h"

#include <algorithm>
#include <cmath>

#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "foundation/kernels/lookup_rows.h"

namespace {

// f(t) for the parameter p. Written so that a tiny p tends to the identity, but in a power.
double TransformedLevel(IMG_TRANSFORM_MODES mode, double t, double p) noexcept {
  switch (mode) {
    case IMG_TRANSFORM_INVERT: return 1 - t;
    case IMG_TRANSFORM_POWER: return ky::Pow(t, p);
    case IMG_TRANSFORM_LOGARITHM: return ky::Log1p(p * t) / ky::Log1p(p);
    case IMG_TRANSFORM_EXPONENTIAL: return ky::Expm1(p * t) / ky::Expm1(p);
    case IMG_TRANSFORM_SIGMOID: break;
  }
  const double atEnds = ky::Tanh(p / 4);
  return (ky::Tanh(p * (t - 0.5) / 2) + atEnds) / (2 * atEnds);
}

KY_ERRORS CheckLaw(IMG_TRANSFORM_MODES mode, float parameter) noexcept {
  if (mode < IMG_TRANSFORM_INVERT || mode > IMG_TRANSFORM_SIGMOID)
    return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, "mode");
  if (mode == IMG_TRANSFORM_INVERT) return KY_OK;
  const bool fits = std::isfinite(parameter) && parameter > 0 &&
                    (mode != IMG_TRANSFORM_EXPONENTIAL || parameter <= 700);
  return fits ? KY_OK : ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "parameter");
}

template <class T>
KY_ERRORS Transform(const char* name, const KyROI<T>* source, KyROI<T>* destination,
                    IMG_TRANSFORM_MODES mode, float parameter) noexcept {
  return ky::Call(name, [&] {
    ky::Rows<const KyBW8> in;
    ky::Rows<KyBW8> out;
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (const KY_ERRORS error = CheckLaw(mode, parameter)) return error;
    ky::LookupTable table;
    for (int i = 0; i < 256; ++i) {
      const double level = std::floor(255 * TransformedLevel(mode, i / 255.0, parameter) + 0.5);
      table.level[i] = static_cast<KyBW8>(std::clamp(level, 0.0, 255.0));
    }
    return ky::LookUp(out, in, table);
  });
}

}  // namespace

KY_ERRORS ImgTransform(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                       IMG_TRANSFORM_MODES mode, float parameter) noexcept {
  return Transform("ImgTransform (BW8)", source, destination, mode, parameter);
}
KY_ERRORS ImgTransform(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                       IMG_TRANSFORM_MODES mode, float parameter) noexcept {
  return Transform("ImgTransform (C24)", source, destination, mode, parameter);
}
