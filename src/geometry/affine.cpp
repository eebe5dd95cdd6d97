#include <cmath>

#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "geometry/resample.h"
#include "ky/angle.h"
#include "ky/geometry.h"

namespace {

using ky::Call;
using ky::Interpolation;
using ky::InverseMap;
using ky::RowsOf;

// False when the transform has no inverse.
bool Invert(float a, float b, float c, float d, float e, float f, InverseMap& map) noexcept {
  const float det = a * e - b * d;
  if (det == 0.0f || !std::isfinite(det)) return false;
  const float ia = e / det, ib = -b / det, id = -d / det, ie = a / det;
  const float ic = -(ia * c + ib * f), jf = -(id * c + ie * f);
  map = {ky::ToFixed(ia), ky::ToFixed(ib), ky::ToFixed(ic),
         ky::ToFixed(id), ky::ToFixed(ie), ky::ToFixed(jf)};
  return true;
}

bool ReadInterpolation(int bits, Interpolation& interpolation) noexcept {
  switch (bits) {
    case 0: interpolation = Interpolation::kNearest; return true;
    case 4: interpolation = Interpolation::kBilinear4; return true;
    case 8: interpolation = Interpolation::kBilinear8; return true;
    default: return false;
  }
}

template <class T>
KY_ERRORS LinearTransform(const KyROI<T>* source, float a, float b, float c, float d, float e,
                          float f, KyROI<T>* destination, int bits) noexcept {
  return Call("ImgLinearTransform", [&] {
    ky::Rows<const T> in;
    if (const KY_ERRORS error = ky::Open(source, in)) return error;
    if (destination == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "destination");
    const ky::Rows<T> out = RowsOf(destination);
    if (out.first == nullptr) return KY_OK;
    InverseMap map;
    if (!Invert(a, b, c, d, e, f, map)) return KY_ERROR_TRANSFORM_LIMIT;
    Interpolation interpolation;
    if (!ReadInterpolation(bits, interpolation))
      return ky::Explain(KY_ERROR_BAD_INTERVAL, "interpolation is neither 0, 4 nor 8");
    return ky::Resample(out, in, map, interpolation);
  });
}

template <class T>
KY_ERRORS ScaleRotate(const KyROI<T>* source, float sourceX, float sourceY, float destinationX,
                      float destinationY, float scaleX, float scaleY, float angle,
                      KyROI<T>* destination, int interpolation) noexcept {
  return Call("ImgScaleRotate", [&] {
    const double theta = KyToRadians(angle);
    const auto a = static_cast<float>(ky::Cos(theta) * scaleX);
    const auto b = static_cast<float>(ky::Sin(theta) * scaleY);
    const auto d = static_cast<float>(-ky::Sin(theta) * scaleX);
    const auto e = static_cast<float>(ky::Cos(theta) * scaleY);
    const float c = destinationX - (a * sourceX + b * sourceY);
    const float f = destinationY - (d * sourceX + e * sourceY);
    return ImgLinearTransform(source, a, b, c, d, e, f, destination, interpolation);
  });
}

}  // namespace

KY_ERRORS ImgLinearTransform(const KyROI<KyBW8>* source, float a, float b, float c, float d,
                             float e, float f, KyROI<KyBW8>* destination,
                             int interpolation) noexcept {
  return LinearTransform(source, a, b, c, d, e, f, destination, interpolation);
}
KY_ERRORS ImgLinearTransform(const KyROI<KyC24>* source, float a, float b, float c, float d,
                             float e, float f, KyROI<KyC24>* destination,
                             int interpolation) noexcept {
  return LinearTransform(source, a, b, c, d, e, f, destination, interpolation);
}

KY_ERRORS ImgScaleRotate(const KyROI<KyBW8>* source, float sourceX, float sourceY,
                         float destinationX, float destinationY, float scaleX, float scaleY,
                         float angle, KyROI<KyBW8>* destination, int interpolation) noexcept {
  return ScaleRotate(source, sourceX, sourceY, destinationX, destinationY, scaleX, scaleY, angle,
                     destination, interpolation);
}
KY_ERRORS ImgScaleRotate(const KyROI<KyC24>* source, float sourceX, float sourceY,
                         float destinationX, float destinationY, float scaleX, float scaleY,
                         float angle, KyROI<KyC24>* destination, int interpolation) noexcept {
  return ScaleRotate(source, sourceX, sourceY, destinationX, destinationY, scaleX, scaleY, angle,
                     destination, interpolation);
}
