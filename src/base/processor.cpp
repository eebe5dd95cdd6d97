#include "ky/processor.h"

#include <atomic>
#include <cstdlib>
#include <string_view>

#include "foundation/path_names.h"

namespace {

// The path that KyGetMMX returns; nobody has asked yet while it is below 0.
std::atomic<int> widest{-1};

// What the processor has, as far as it need be known here: of x86 the choice between wider sets is
// left to what is compiled for them.
int Capable() noexcept {
#if defined(__x86_64__)
  return __builtin_cpu_supports("ssse3") ? KY_PATH_AVX512 : KY_PATH_PLAIN;
#elif defined(__aarch64__)
  return KY_PATH_NEON;  // it is part of every such processor
#else
  return KY_PATH_PLAIN;
#endif
}

// What the processor has, limited by KY_PATH when that names something less.
int Limit() noexcept {
  static const int kLimit = [] {
    const int capable = Capable();
    // NOLINTNEXTLINE(concurrency-mt-unsafe): it is, beside a thread that changes the environment
    const char* const name = std::getenv("KY_PATH");
    if (name == nullptr) return capable;
    // Sets that are narrower, but of the same kind of processor.
    const int narrower = capable == KY_PATH_NEON ? KY_PATH_SSSE3 : capable;
    for (int path = KY_PATH_PLAIN; path < narrower; ++path)
      if (std::string_view(name) == ky::kPathNames[path]) return path;
    return capable;
  }();
  return kLimit;
}

// A choice that another thread makes meanwhile stands.
[[gnu::noinline, gnu::cold]] int FirstChoice() noexcept {
  int now = -1;
  return widest.compare_exchange_strong(now, Limit(), std::memory_order_relaxed) ? Limit() : now;
}

}  // namespace

int KyGetMMX() noexcept {
  const int now = widest.load(std::memory_order_relaxed);
  return now >= 0 ? now : FirstChoice();
}

void KySetMMX(int allowed) noexcept {
  widest.store(allowed != 0 ? Limit() : KY_PATH_PLAIN, std::memory_order_relaxed);
}
