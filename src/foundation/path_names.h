// The names of the paths, by which users limit and see them.
#pragma once

#include "ky/processor.h"

namespace ky {

inline constexpr const char* kPathNames[] = {"plain", "ssse3", "sse4", "avx2", "avx512", "neon"};
static_assert(sizeof kPathNames / sizeof *kPathNames == KY_PATH_NEON + 1);

}  // namespace ky
