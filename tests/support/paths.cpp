#include "tests/support/paths.h"

#include <hwy/highway.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "ky/processor.h"

namespace ky::test {

std::vector<Path> Paths() {
  std::vector<Path> paths;
  const auto add = [&](std::int64_t target) {
    const OnPath on({"", target});
    const std::string name = KyGetPath();
    // Under KY_PATH several targets may be the same path.
    if (std::none_of(paths.begin(), paths.end(), [&](const Path& p) { return p.name == name; }))
      paths.push_back({name, target});
  };
  add(0);
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) add(target);
#if HWY_ARCH_ARM
  add(HWY_NEON);  // Highway takes processors without instructions for AES not to have it
#endif
  if (const char* const only = std::getenv("KY_TEST_PATH"))
    std::erase_if(paths, [&](const Path& path) { return path.name != only; });
  if (paths.empty()) {
    std::fprintf(stderr, "KY_TEST_PATH names no path of this processor\n");
    std::abort();
  }
  return paths;
}

OnPath::OnPath(const Path& path) {
  KySetMMX((path.target & ~(HWY_SCALAR | HWY_EMU128)) != 0);
  hwy::SetSupportedTargetsForTest(path.target);
}
OnPath::~OnPath() {
  hwy::SetSupportedTargetsForTest(0);
  KySetMMX(1);
}
// On Arm there is nothing to choose from, and Highway is not asked.
bool OnPath::Dispatched() const { return HWY_ARCH_ARM || hwy::GetChosenTarget().IsInitialized(); }

}  // namespace ky::test
