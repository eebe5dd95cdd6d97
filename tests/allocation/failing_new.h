// Allocations that fail on demand. This program replaces every form of operator new and delete, so
// it stands apart from the other tests.
#pragma once

#include <functional>
#include <vector>

#include "ky/status.h"

namespace ky::test {

// Blocks allocated and not yet freed in the whole program.
long OutstandingAllocations();

// What those blocks take on the heap, and the largest one asked for since it was last forgotten.
long OutstandingBytes();
long LargestAllocation();
void ForgetLargestAllocation();

// While it lives, the n-th allocation from its making on fails, and no other.
class FailingAllocation {
 public:
  explicit FailingAllocation(int n);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();
  bool Happened() const;
};

// Makes the first, the second, ... allocation of `call` fail until it needs no more of them. Each
// failure must be answered with `code` and `trace`, leave things as `unchanged` wants them and leak
// nothing; then the call must succeed. `fewest` is the number of allocations that the call is known
// to make.
void CheckAllocationFailures(const std::function<KY_ERRORS()>& call, KY_ERRORS code,
                             const std::vector<const char*>& trace,
                             const std::function<bool()>& unchanged, int fewest = 1);

}  // namespace ky::test
