// The energy of spectra within discs.
#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/frame.h"
#include "foundation/scratch.h"
#include "ky/frequency.h"

namespace {

using ky::Rows;
using std::ptrdiff_t;

constexpr int kFloat = 4, kBits32 = 8;  // in descriptions of vectors

double EnergyOf(KyComplex64 z) noexcept {
  const double re = z.re, im = z.im;
  return re * re + im * im;
}

// The smallest radius whose square is not below x^2 + y^2.
ptrdiff_t RadiusOf(ptrdiff_t x, ptrdiff_t y) noexcept {
  const ptrdiff_t square = x * x + y * y;
  auto radius = static_cast<ptrdiff_t>(std::sqrt(static_cast<double>(square)));
  while (radius > 0 && (radius - 1) * (radius - 1) >= square) --radius;
  while (radius * radius < square) ++radius;
  return radius;
}

// Adds each energy of a row, whose frequency across it is v, to that of the ring of its radius.
void AddRow(const KyComplex64* row, ptrdiff_t width, ptrdiff_t v, double* rings) noexcept {
  ptrdiff_t radius = v;
  for (ptrdiff_t u = 0; u <= width / 2; ++u) {
    while (radius * radius < u * u + v * v) ++radius;
    double energy = EnergyOf(row[u]);
    if (u != 0 && u != width - u) energy += EnergyOf(row[width - u]);
    rings[radius] += energy;
  }
}

}  // namespace

KY_ERRORS ImgComplexDiscEnergy(const KyROI<KyComplex64>* source, KyVector* energies) noexcept {
  return ky::Call("ImgComplexDiscEnergy", [&] {
    Rows<const KyComplex64> in;
    if (const KY_ERRORS error = ky::Open(source, in)) return error;
    if (energies == nullptr || energies->GetDataType() != kFloat ||
        energies->GetDataSize() != kBits32 || energies->GetGroupLength() != 1 ||
        energies->GetNbMaxGroup() < 1)
      return KY_ERROR_VECTOR_1611;

    const ptrdiff_t radii = RadiusOf(in.width / 2, in.height / 2) + 1;
    ky::Scratch<double> rings;
    if (!rings.Allocate(radii)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    std::fill_n(rings.get(), radii, 0.0);
    if (!in.Empty())
      for (ptrdiff_t y = 0; y < in.height; ++y)
        AddRow(in.Row(y), in.width, std::min(y, in.height - y), rings.get());

    const auto groups = static_cast<int>(std::min<ptrdiff_t>(energies->GetNbMaxGroup(), radii));
    auto* const sums = static_cast<float*>(energies->GetDataPtr());
    double sum = 0;
    for (int i = 0; i < groups; ++i) {
      sum += rings[i];
      // The bits of another NaN would depend on the processor.
      sums[i] = std::isnan(sum) ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(sum);
    }
    return energies->SetNbGroup(groups);
  });
}
