// The pixels of an ROI of bits, the first of a byte in its most significant bit.
#pragma once

#include <algorithm>
#include <cstddef>

#include "foundation/rows.h"
#include "ky/roi.h"

namespace ky {

// The bytes that hold the bits. The first bit of every row lies at the same place in its byte, and
// the first and the last byte of a row may hold bits of neighbours, too.
struct BitRows {
  Rows<KyBW8> bytes;
  std::ptrdiff_t firstBit, width;

  explicit BitRows(const KyROI<KyBW1>* roi) noexcept
      : BitRows(roi, roi->GetWidth(), roi->GetHeight()) {}
  // The first `columns` pixels of the first `height` rows.
  BitRows(const KyROI<KyBW1>* roi, std::ptrdiff_t columns, std::ptrdiff_t height) noexcept
      : firstBit(roi->GetBitOffset(0, 0)), width(columns) {
    bytes = {static_cast<KyBW8*>(roi->GetPixelPtr(0, 0)), roi->GetPitch(),
             width == 0 ? 0 : (firstBit + width + 7) / 8, height};
  }

  // The pixels before the first whole byte of a row, and those in whole bytes.
  std::ptrdiff_t Head() const noexcept { return std::min(width, (8 - firstBit) % 8); }
  std::ptrdiff_t Whole() const noexcept { return (width - Head()) / 8 * 8; }
  std::ptrdiff_t WholeByte() const noexcept { return (firstBit + Head()) / 8; }
};

}  // namespace ky
