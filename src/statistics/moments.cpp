#include "ky/moments.h"

#include <algorithm>
#include <cstdint>
#include <numbers>

#include "foundation/elementary.h"
#include "ky/angle.h"
#include "statistics/moments_rows.h"
#include "statistics/pixels.h"
#include "statistics/wide.h"

namespace {

using ky::Call;
using ky::Rows;
using ky::TileMoments;
using ky::WideSum;

struct Sums {
  WideSum m00, m10, m01, m20, m11, m02, m30, m21, m12, m03;
};

// The sum of a_k origin^k, coefficients from the highest down.
template <class... Coefficients>
WideSum Polynomial(std::uint64_t origin, WideSum highest, Coefficients... lower) noexcept {
  ((highest.MultiplyBy(origin), highest.Add(lower)), ...);
  return highest;
}
WideSum Times(std::uint64_t factor, const WideSum& sum) noexcept {
  WideSum product = sum;
  product.MultiplyBy(factor);
  return product;
}
WideSum Wide(std::uint64_t value) noexcept {
  WideSum sum;
  sum.Add(value);
  return sum;
}

// Adds the moments of a tile whose first pixel is (x, y): those of (i + x)^p (j + y)^q.
void AddTile(Sums& total, const TileMoments& t, std::uint64_t x, std::uint64_t y) noexcept {
  const WideSum t00 = Wide(t.m00), t10 = Wide(t.m10), t01 = Wide(t.m01), t20 = Wide(t.m20),
                t11 = Wide(t.m11), t02 = Wide(t.m02);
  // What has x added, and no y yet.
  const WideSum x10 = Polynomial(x, t00, t10);
  const WideSum x20 = Polynomial(x, t00, Times(2, t10), t20);
  const WideSum x30 = Polynomial(x, t00, Times(3, t10), Times(3, t20), Wide(t.m30));
  const WideSum x11 = Polynomial(x, t01, t11);
  const WideSum x21 = Polynomial(x, t01, Times(2, t11), Wide(t.m21));
  const WideSum x12 = Polynomial(x, t02, Wide(t.m12));
  total.m00.Add(t00);
  total.m10.Add(x10);
  total.m20.Add(x20);
  total.m30.Add(x30);
  total.m01.Add(Polynomial(y, t00, t01));
  total.m02.Add(Polynomial(y, t00, Times(2, t01), t02));
  total.m03.Add(Polynomial(y, t00, Times(3, t01), Times(3, t02), Wide(t.m03)));
  total.m11.Add(Polynomial(y, x10, x11));
  total.m21.Add(Polynomial(y, x20, x21));
  total.m12.Add(Polynomial(y, x10, Times(2, x11), x12));
}

Sums MomentsOf(const Rows<const KyBW8>& rows, ky::MomentKernel kernel, KyBW8 threshold) noexcept {
  Sums total;
  for (std::ptrdiff_t y = 0; y < rows.height; y += ky::kMomentSide)
    for (std::ptrdiff_t x = 0; x < rows.width; x += ky::kMomentSide) {
      const Rows<const KyBW8> tile = {rows.Row(y) + x, rows.pitch,
                                      std::min(ky::kMomentSide, rows.width - x),
                                      std::min(ky::kMomentSide, rows.height - y)};
      AddTile(total, kernel(tile, threshold), static_cast<std::uint64_t>(x),
              static_cast<std::uint64_t>(y));
    }
  return total;
}

KY_ERRORS WriteMoments(const char* trace, const KyROI<KyBW8>* source, ky::MomentKernel kernel,
                       KyBW8 threshold, KyMoments& moments) noexcept {
  return Call(trace, [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::OpenSome(source, rows)) return error;
    const Sums m = MomentsOf(rows, kernel, threshold);
    moments = {m.m00.ToDouble(), m.m10.ToDouble(), m.m01.ToDouble(), m.m20.ToDouble(),
               m.m11.ToDouble(), m.m02.ToDouble(), m.m30.ToDouble(), m.m21.ToDouble(),
               m.m12.ToDouble(), m.m03.ToDouble()};
    return KY_OK;
  });
}

constexpr const char* kNothingCounts = "no pixel of source counts, so that there is no centre";

KY_ERRORS WriteCenter(const char* trace, const KyROI<KyBW8>* source, ky::MomentKernel kernel,
                      KyBW8 threshold, float& x, float& y) noexcept {
  return Call(trace, [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::OpenSome(source, rows)) return error;
    const Sums m = MomentsOf(rows, kernel, threshold);
    const double sum = m.m00.ToDouble();
    if (sum == 0) return ky::Explain(KY_ERROR_NO_PIXELS, kNothingCounts);
    x = static_cast<float>(m.m10.ToDouble() / sum);
    y = static_cast<float>(m.m01.ToDouble() / sum);
    return KY_OK;
  });
}

// The central second moments of an area, times the area.
struct Spread {
  ky::Int128 u20, u11, u02;
};

}  // namespace

KY_ERRORS ImgBinaryMoments(const KyROI<KyBW8>* source, KyBW8 threshold,
                           KyMoments& moments) noexcept {
  return WriteMoments("ImgBinaryMoments", source, ky::ChooseMomentKernels().binary, threshold,
                      moments);
}
KY_ERRORS ImgWeighedMoments(const KyROI<KyBW8>* source, KyMoments& moments) noexcept {
  return WriteMoments("ImgWeighedMoments", source, ky::ChooseMomentKernels().weighed, 0, moments);
}

KY_ERRORS ImgGravityCenter(const KyROI<KyBW8>* source, KyBW8 threshold, float& x,
                           float& y) noexcept {
  return WriteCenter("ImgGravityCenter", source, ky::ChooseMomentKernels().binary, threshold, x, y);
}
KY_ERRORS ImgCentroid(const KyROI<KyBW8>* source, float& x, float& y) noexcept {
  return WriteCenter("ImgCentroid", source, ky::ChooseMomentKernels().weighed, 0, x, y);
}

KY_ERRORS ImgInertia(const KyROI<KyBW8>* source, KyBW8 threshold, float& major, float& minor,
                     float& angle) noexcept {
  return Call("ImgInertia", [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::OpenSome(source, rows)) return error;
    const Sums m = MomentsOf(rows, ky::ChooseMomentKernels().binary, threshold);
    const ky::Int128 area = m.m00.Low();
    if (area == 0) return ky::Explain(KY_ERROR_NO_PIXELS, kNothingCounts);
    // Differences that fit are right although products may not: unsigned ones wrap.
    const auto product = [](const WideSum& p, const WideSum& q) {
      return static_cast<ky::Unsigned128>(p.Low()) * static_cast<ky::Unsigned128>(q.Low());
    };
    const auto central = [&](const WideSum& pq, const WideSum& p, const WideSum& q) {
      return static_cast<ky::Int128>(product(m.m00, pq) - product(p, q));
    };
    const Spread u = {central(m.m20, m.m10, m.m10), central(m.m11, m.m10, m.m01),
                      central(m.m02, m.m01, m.m01)};
    const double across = 2 * ky::ToDouble(u.u11), along = ky::ToDouble(u.u20 - u.u02);
    const double larger =
        (ky::ToDouble(u.u20) + ky::ToDouble(u.u02) + ky::Hypot(along, across)) / 2;
    const ky::Unsigned128 mixed = static_cast<ky::Unsigned128>(u.u11 < 0 ? -u.u11 : u.u11);
    const double determinant = ky::Difference(
        ky::Product(static_cast<ky::Unsigned128>(u.u20), static_cast<ky::Unsigned128>(u.u02)),
        ky::Product(mixed, mixed));
    const double n = ky::ToDouble(area);
    major = static_cast<float>(larger / n / n);
    minor = larger == 0 ? 0.0f : static_cast<float>(determinant / larger / n / n);
    // Directions that round to -90 degrees are upright.
    constexpr float kUpright = std::numbers::pi_v<float> / 2;
    const auto direction = static_cast<float>(ky::Atan2(across, along) / 2);
    angle = KyFromRadians(direction > -kUpright ? direction : kUpright);
    return KY_OK;
  });
}
