#include "foundation/dispatch.h"

#include <utility>

#include "foundation/path_names.h"

const char* KyGetPath() noexcept {
  const std::size_t place = ky::PlaceOfPath();
#if HWY_ARCH_X86
  constexpr std::pair<std::int64_t, KY_PATHS> kPaths[] = {{HWY_AVX3_DL, KY_PATH_AVX512},
                                                          {HWY_AVX3, KY_PATH_AVX512},
                                                          {HWY_AVX2, KY_PATH_AVX2},
                                                          {HWY_SSE4, KY_PATH_SSE4},
                                                          {HWY_SSSE3, KY_PATH_SSSE3}};
#else
  constexpr std::pair<std::int64_t, KY_PATHS> kPaths[] = {{HWY_NEON, KY_PATH_NEON}};
#endif
  for (const auto& [target, path] : kPaths)
    if ((HWY_TARGETS & target) != 0 && place == ky::PlaceOf(target)) return ky::kPathNames[path];
  return ky::kPathNames[KY_PATH_PLAIN];
}
