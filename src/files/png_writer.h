// PNG files, as libpng encodes them.
#pragma once

#include "files/replacement.h"
#include "foundation/rows.h"

namespace ky {

// Pixels of KyBW8, KyBW16 or KyC24; those of 16 bits in the byte order of the machine.
template <class T>
KY_ERRORS WritePng(const Rows<const T>& rows, Replacement& file) noexcept;

extern template KY_ERRORS WritePng(const Rows<const KyBW8>&, Replacement&) noexcept;
extern template KY_ERRORS WritePng(const Rows<const KyBW16>&, Replacement&) noexcept;
extern template KY_ERRORS WritePng(const Rows<const KyC24>&, Replacement&) noexcept;

}  // namespace ky
