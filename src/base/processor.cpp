#include "ky/processor.h"

#include <atomic>

namespace {

std::atomic<int> allowed{1};

int Capable() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  return __builtin_cpu_supports("ssse3") ? 1 : 0;
#else
  return 1;  // elsewhere the vector unit is part of every processor that the library is built for
#endif
}

}  // namespace

int KyGetMMX() noexcept { return allowed.load(std::memory_order_relaxed) & Capable(); }

void KySetMMX(int allow) noexcept { allowed.store(allow != 0, std::memory_order_relaxed); }
