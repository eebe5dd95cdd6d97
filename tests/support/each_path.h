// Tests that run on every path.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/paths.h"

namespace ky::test {

// Runs `body` on every path, and gives it the path's name. What never chooses its kernels by the
// instruction set fails: it has been tested on the plain path alone.
template <class Body>
void ForEachPath(Body body) {
  for (const Path& path : Paths()) {
    const OnPath on(path);
    SCOPED_TRACE(path.name + " path");
    body(path.name);
    if (path.target != 0 && !::testing::Test::HasFailure() && !::testing::Test::IsSkipped()) {
      EXPECT_TRUE(on.Dispatched()) << "nothing was dispatched";
    }
  }
}

}  // namespace ky::test
