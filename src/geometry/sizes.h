// Halving of rows, which pyramids share.
#pragma once

#include "foundation/rows.h"

namespace ky {

// destination = the halves of the source, which has at least twice its size and shares no pixel
// with it.
void HalveRows(const Rows<KyBW8>& destination, const Rows<const KyBW8>& source) noexcept;
void HalveRows(const Rows<KyC24>& destination, const Rows<const KyC24>& source) noexcept;

}  // namespace ky
