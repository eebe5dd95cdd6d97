#include "foundation/cache_size.h"

#include <algorithm>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace ky {
namespace {

CacheSizes AskProcessor() noexcept {
  CacheSizes sizes = {};
#if defined(__x86_64__)
  // Two leaves describe caches, in the same form; a processor has one of them.
  for (const unsigned leaf : {4u, 0x8000001Du}) {
    constexpr unsigned kMost = 8, kTypes = 31, kLevels = 7 << 5, kFirstOfData = 1 << 5 | 1;
    for (unsigned i = 0; i < kMost; ++i) {
      unsigned eax, ebx, ecx, edx;
      if (__get_cpuid_count(leaf, i, &eax, &ebx, &ecx, &edx) == 0 || (eax & kTypes) == 0) break;
      const std::int64_t line = (ebx & 0xFFF) + 1, partitions = (ebx >> 12 & 0x3FF) + 1,
                         ways = (ebx >> 22) + 1, sets = std::int64_t{ecx} + 1;
      const std::int64_t bytes = line * partitions * ways * sets;
      if ((eax & (kLevels | kTypes)) == kFirstOfData) sizes.firstOfData = bytes;
      sizes.largest = std::max(sizes.largest, bytes);
    }
  }
#endif
  return sizes;
}

}  // namespace

const CacheSizes& SizesOfCaches() noexcept {
  static const CacheSizes kSizes = AskProcessor();
  return kSizes;
}

}  // namespace ky
