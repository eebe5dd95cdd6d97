#include <algorithm>
#include <cmath>
#include <cstdint>

#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "foundation/map.h"
#include "foundation/rows.h"
#include "ky/temporal.h"
#include "temporal/temporal_rows.h"

namespace {

using ky::kChanges;
using ky::kFarthest;

int Truncate(double value) noexcept {
  if (std::isnan(value)) return 0;
  return static_cast<int>(std::clamp<double>(value, INT16_MIN, INT16_MAX));
}

// The changes for d = 0 to kFarthest, given to `set` in turn.
template <class Set>
void LinearChanges(float reduction, const Set& set) noexcept {
  const float gain = 2 / (reduction * reduction + 1);
  float value = 0.5f;
  for (int d = 0; d <= kFarthest; ++d, value += gain) set(d, value);
}
template <class Set>
void AdaptiveChanges(double reduction, double noise, const Set& set) noexcept {
  const double squared = reduction * reduction;
  const double range = 16 * noise;
  const double gain = range * (1 - squared) / (1 + squared);
  const double factor = ky::Exp(2 / range);
  double t = 1;
  for (int d = 0; d <= kFarthest; ++d, t *= factor)
    set(d, d + gain * (std::isfinite(t) ? (t - 1) / (t + 1) : 1));
}

ky::Changes ChangesOf(const KyBW16* table) noexcept {
  const auto change = [table](int d) { return static_cast<std::int16_t>(table[kFarthest + d]); };
  ky::Changes changes = {table, true, {}};
  int others = 0;  // bits of values that are not near and odd: without a jump, as vectors
  for (int d = 0; d < ky::kNearChanges; ++d) {
    const int value = change(d);
    others |= (value & ~UINT8_MAX) | (value + change(-d));
    changes.near[d] = static_cast<KyBW8>(value);
  }
  changes.areOdd = others == 0;
  return changes;
}

}  // namespace

KY_ERRORS ImgSetRecursiveAverageLUT(KyBW16Vector* table, float reduction, float noise) noexcept {
  return ky::Call("ImgSetRecursiveAverageLUT", [&] {
    if (table == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = table->SetNumElements(kChanges)) return error;
    KyBW16* const middle = table->GetDataPtr() + kFarthest;
    const auto set = [middle](int d, double value) {
      middle[-d] = static_cast<KyBW16>(-Truncate(value));
      middle[d] = static_cast<KyBW16>(Truncate(value));
    };
    if (noise == 0)
      LinearChanges(reduction, set);
    else
      AdaptiveChanges(reduction, noise, set);
    return KY_OK;
  });
}

KY_ERRORS ImgRecursiveAverage(const KyROI<KyBW8>* source, KyROI<KyBW16>* state,
                              KyROI<KyBW8>* destination, const KyBW16Vector* table) noexcept {
  return ky::Call("ImgRecursiveAverage", [&] {
    ky::Rows<const KyBW8> in;
    ky::Rows<KyBW16> states;
    ky::Rows<KyBW8> out;
    constexpr ky::RoiNames kRois = {{"source", "state", "destination"}};
    if (const KY_ERRORS error = ky::OpenAll(kRois, source, in, state, states, destination, out))
      return error;
    if (table == nullptr || table->GetNumElements() != kChanges) return KY_ERROR_NOT_256_ENTRIES;
    // Where both share memory the destination is written last, and stands.
    return ky::MapRows(ky::ChooseTemporalKernels().recur, ky::Several{states, out},
                       ky::FromRows(in), ky::FromRows(states),
                       ky::FromParameters(ChangesOf(table->GetDataPtr())));
  });
}
