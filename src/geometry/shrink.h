// Shrinking by the exact means of areas.
#pragma once

#include "foundation/rows.h"
#include "ky/status.h"

namespace ky {

// destination = the source, shrunk; the destination is neither empty nor larger, and they share no
// pixel. 1303 when there is no scratch memory.
KY_ERRORS ShrinkRows(const Rows<KyBW8>& destination, const Rows<const KyBW8>& source) noexcept;
KY_ERRORS ShrinkRows(const Rows<KyC24>& destination, const Rows<const KyC24>& source) noexcept;

}  // namespace ky
