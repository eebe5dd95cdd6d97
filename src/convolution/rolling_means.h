// Means over boxes that roll down an image: the fastest way where windows are not too large.
#pragma once

#include <optional>

#include "convolution/box_job.h"
#include "ky/status.h"

namespace ky {

// Serves a job of means, or of thresholds by them, or returns nothing where it cannot, or another
// way is faster.
std::optional<KY_ERRORS> RollMeans(const BoxJob& job) noexcept;

}  // namespace ky
