#include "tests/support/paths.h"

#include <hwy/highway.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "ky/processor.h"

namespace ky::test {

std::vector<Path> Paths() {
  std::vector<Path> paths = {{"plain", 0}};
  for (const auto target : hwy::SupportedAndGeneratedTargets()) {
    if (target == HWY_SCALAR) continue;  // it is the plain path
    Path path{hwy::TargetName(target), target};
    for (char& c : path.name) c = static_cast<char>(std::tolower(c));
    paths.push_back(path);
  }
  if (const char* const only = std::getenv("KY_TEST_PATH"))
    std::erase_if(paths, [&](const Path& path) { return path.name != only; });
  if (paths.empty()) {
    std::fprintf(stderr, "KY_TEST_PATH names no path of this processor\n");
    std::abort();
  }
  return paths;
}

OnPath::OnPath(const Path& path) {
  KySetMMX(path.target != 0);
  hwy::SetSupportedTargetsForTest(path.target);
}
OnPath::~OnPath() {
  hwy::SetSupportedTargetsForTest(0);
  KySetMMX(1);
}
bool OnPath::Dispatched() const { return hwy::GetChosenTarget().IsInitialized(); }

}  // namespace ky::test
