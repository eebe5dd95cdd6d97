// Resampling through an inverse map.
#pragma once

#include "foundation/rows.h"
#include "geometry/inverse_map.h"
#include "ky/status.h"

namespace ky {

enum class Interpolation { kNearest, kBilinear4, kBilinear8 };

// destination(x, y) = source at map.At(x, y), 0 outside the source. 1303 when there is no scratch
// memory.
KY_ERRORS Resample(Rows<KyBW8> destination, Rows<const KyBW8> source, const InverseMap& map,
                   Interpolation interpolation) noexcept;
KY_ERRORS Resample(Rows<KyC24> destination, Rows<const KyC24> source, const InverseMap& map,
                   Interpolation interpolation) noexcept;

}  // namespace ky
