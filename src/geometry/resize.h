// Bilinear resizing.
#pragma once

#include "foundation/rows.h"
#include "ky/status.h"

namespace ky {

// destination = the source, resized; neither is empty, and they share no pixel. 1303 when there is
// no scratch memory.
KY_ERRORS ResizeRows(const Rows<KyBW8>& destination, const Rows<const KyBW8>& source) noexcept;
KY_ERRORS ResizeRows(const Rows<KyC24>& destination, const Rows<const KyC24>& source) noexcept;

}  // namespace ky
