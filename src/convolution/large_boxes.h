// Windows so large that their sums do not fit 32-bit lanes: the same results one pixel at a time.
#pragma once

#include "convolution/box_job.h"
#include "ky/status.h"

namespace ky {

KY_ERRORS AverageOfLargeBoxes(const BoxJob& job) noexcept;
KY_ERRORS DeviationOfLargeBoxes(const BoxJob& job) noexcept;

}  // namespace ky
