#pragma once

#include <cstdint>

namespace ky {

// The bytes of caches that this processor core uses; 0 where they are not known.
struct CacheSizes {
  std::int64_t firstOfData, largest;
};
// The processor is asked once, as that takes tens of microseconds on virtual machines.
const CacheSizes& SizesOfCaches() noexcept;

}  // namespace ky
