// PGM and PPM files in their binary forms.
#pragma once

#include <cstdint>

#include "files/bytes.h"
#include "ky/image.h"

namespace ky {

struct PnmHeader {
  std::int64_t width = 0, height = 0, maximum = 0;
  std::size_t pixels = 0;  // where they begin
};

KY_ERRORS ReadPnmHeader(const Bytes& bytes, PnmHeader& header) noexcept;

// Decodes the pixels, whose samples are as many as those of T.
template <class T>
KY_ERRORS ReadPnm(const Bytes& bytes, const PnmHeader& header, KyImage<T>& image) noexcept;

extern template KY_ERRORS ReadPnm(const Bytes&, const PnmHeader&, KyImage<KyBW8>&) noexcept;
extern template KY_ERRORS ReadPnm(const Bytes&, const PnmHeader&, KyImage<KyBW16>&) noexcept;
extern template KY_ERRORS ReadPnm(const Bytes&, const PnmHeader&, KyImage<KyC24>&) noexcept;

}  // namespace ky
