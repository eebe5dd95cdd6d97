// Tests that run on every path.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/paths.h"

namespace ky::test {

// Runs `body` on every path, and gives it the path's name.
template <class Body>
void ForEachPath(Body body) {
  for (const Path& path : Paths()) {
    const OnPath on(path);
    SCOPED_TRACE(path.name + " path");
    body(path.name);
  }
}

}  // namespace ky::test
