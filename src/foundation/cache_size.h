#pragma once

#include <cstdint>

namespace ky {

// The bytes of the largest cache that this processor core uses; 0 where that is not known. The
// processor is asked once: virtual machines take a tenth of a millisecond over it.
std::int64_t LargestCache() noexcept;

}  // namespace ky
