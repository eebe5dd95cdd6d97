#include "foundation/cache_size.h"

#include <algorithm>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace ky {
namespace {

std::int64_t AskProcessor() noexcept {
  std::int64_t largest = 0;
#if defined(__x86_64__)
  // Two leaves describe caches, one after the other and in the same form; processors have one.
  for (const unsigned leaf : {4u, 0x8000001Du}) {
    constexpr unsigned kMost = 8, kTypes = 31;
    for (unsigned i = 0; i < kMost; ++i) {
      unsigned eax, ebx, ecx, edx;
      if (__get_cpuid_count(leaf, i, &eax, &ebx, &ecx, &edx) == 0 || (eax & kTypes) == 0) break;
      const std::int64_t line = (ebx & 0xFFF) + 1, partitions = (ebx >> 12 & 0x3FF) + 1,
                         ways = (ebx >> 22) + 1, sets = std::int64_t{ecx} + 1;
      largest = std::max(largest, line * partitions * ways * sets);
    }
  }
#endif
  return largest;
}

}  // namespace

std::int64_t LargestCache() noexcept {
  static const std::int64_t kBytes = AskProcessor();
  return kBytes;
}

}  // namespace ky
