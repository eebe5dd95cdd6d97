// Counting the levels of pixels.
#pragma once

#include <cstdint>

#include "ky/roi.h"

namespace ky {

constexpr int kLevels = 256;
using Counts = std::uint32_t[kLevels];

// Counts the pixels of an ROI that has some, or those of its mask.
void CountLevels(const KyROI<KyBW8>* roi, Counts& counts) noexcept;

}  // namespace ky
