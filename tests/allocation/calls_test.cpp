// Every call of the registry when memory runs out: each of its allocations fails in turn.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/allocation/failing_new.h"
#include "tests/registry/arguments.h"

namespace {

using namespace ky::test;  // NOLINT

// Whether a step that fails stands in the trace before the function's own name, or alone.
bool TracesSteps(const std::string& name) {
  constexpr const char* kNames[] = {
      "ImgContour",           "ImgConvolKernel", "ImgConvolSymmetricKernel",  "ImgEqualize",
      "ImgGetVectTransition", "ImgHistogram",    "ImgImageToLineSegment",     "ImgLineSegToVect",
      "ImgProfileDerivative", "ImgProjectOn",    "ImgSetRecursiveAverageLUT", "ImgSetupEqualize",
      "ImgTransitionScan",    "ImgVect1c2",
  };
  return name.ends_with("Box") || name.ends_with("Disk") ||
         std::any_of(std::begin(kNames), std::end(kNames),
                     [&](const char* start) { return name.starts_with(start); });
}

// Finds arguments with which the call succeeds; places and sizes of vectors differ from seed to
// seed.
TEST(Allocation, EveryCall) {
  int failures = 0;
  for (const Call* const call : Callable()) {
    SCOPED_TRACE(call->Declaration());
    for (const Sharing sharing : {Sharing::kApart, Sharing::kInPlace, Sharing::kOverlapping}) {
      for (unsigned seed = 1; seed < 12; ++seed) {
        SCOPED_TRACE("sharing " + std::to_string(static_cast<int>(sharing)) + ", seed " +
                     std::to_string(seed));
        Plan plan;
        plan.sharing = sharing;
        const auto make = [&] {
          SeededDraw draw(seed);
          return Arguments(*call, draw, plan);
        };
        if (make().Run().status != KY_OK) continue;
        bool failed = true;
        for (int n = 1; failed; ++n) {
          ASSERT_LT(n, 100) << "the call never stops allocating";
          SCOPED_TRACE("allocation " + std::to_string(n));
          const Arguments arguments = make();
          const std::vector<Bytes> before = arguments.State();
          long leaked = 0;
          const Outcome outcome = arguments.Run([&](const auto& run) {
            const long outstanding = OutstandingAllocations();
            const FailingAllocation failing(n);
            run();
            failed = failing.Happened();
            leaked = OutstandingAllocations() - outstanding;
          });
          if (!failed) {
            EXPECT_EQ(outcome.status, KY_OK);
            break;
          }
          ++failures;
          if (!call->trace.empty() && !TracesSteps(call->trace.back())) {
            EXPECT_EQ(outcome.trace, call->trace);
          }
          EXPECT_EQ(leaked, 0) << "memory leaked";
          EXPECT_TRUE(outcome.status == KY_ERROR_NOT_ENOUGH_MEMORY ||
                      outcome.status ==
                          call->Code(Option::Kind::kNoMemory, "", KY_ERROR_NOT_ENOUGH_MEMORY))
              << outcome.status;
          EXPECT_EQ(arguments.Damage(before, KY_ERROR_NOT_ENOUGH_MEMORY), "");
        }
      }
    }
  }
  RecordProperty("failures", failures);
  EXPECT_GT(failures, 500);
}

}  // namespace
