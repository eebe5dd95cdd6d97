#pragma once

#include <cstdint>

namespace ky {

// The bytes of the largest cache that this processor core uses; 0 where that is not known. The
// processor is asked once, as that takes tens of microseconds on virtual machines.
std::int64_t LargestCache() noexcept;

}  // namespace ky
