// Means over boxes that roll down an image: the fastest way where windows are not too large.
#pragma once

#include "convolution/box_job.h"
#include "ky/status.h"

namespace ky {

// Whether RollMeans serves a job, and is the fastest to do so. It makes no thresholds.
bool RollsMeans(const BoxJob& job) noexcept;
KY_ERRORS RollMeans(const BoxJob& job) noexcept;

}  // namespace ky
