#include "tests/support/paths.h"

#include <gtest/gtest.h>
#include <hwy/highway.h>

#include "ky/processor.h"

namespace ky::test {

void ForEachPath(const std::function<void(const std::string& path)>& body) {
  KySetMMX(0);
  {
    SCOPED_TRACE("plain path");
    body("plain");
  }
  KySetMMX(1);
  for (const auto target : hwy::SupportedAndGeneratedTargets()) {
    hwy::SetSupportedTargetsForTest(target);
    SCOPED_TRACE(hwy::TargetName(target));
    body(hwy::TargetName(target));
  }
  hwy::SetSupportedTargetsForTest(0);
}

}  // namespace ky::test
