// Calls of the registry on arguments that coincide, overlap, lie outside their image or in the
// memory of a result, are empty or missing: every path does the same, writes nothing but outputs,
// and nothing at all when it fails, but for what the registry names.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>

#include "tests/registry/arguments.h"

namespace {

using namespace ky::test;  // NOLINT

class FuzzedDraw : public Draw {
 public:
  FuzzedDraw(const std::uint8_t* data, std::size_t size) : input_(data, size) {}
  unsigned Below(unsigned limit) override {
    return input_.ConsumeIntegralInRange<unsigned>(0, limit - 1);
  }

 private:
  FuzzedDataProvider input_;
};

struct Result {
  Outcome outcome;
  std::vector<Bytes> state;
};

void Require(bool holds, const Call& call, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "%s: %s\n", call.Declaration().c_str(), what.c_str());
  std::abort();
}

Result RunDrawn(const std::vector<const Call*>& calls, const std::uint8_t* data, std::size_t size) {
  FuzzedDraw draw(data, size);
  const Call& call = *calls[draw.Below(static_cast<unsigned>(calls.size()))];
  Plan plan = DrawPlan(call, draw, 90, 24);
  plan.hostile = !draw.OneIn(3);
  const Arguments arguments(call, draw, plan);
  if (draw.OneIn(8)) arguments.PutSourceIntoResult(true);
  const std::vector<Bytes> before = arguments.State();
  Result result{arguments.Run(), arguments.State()};
  const std::string damage = arguments.Damage(before, result.outcome.status);
  Require(damage.empty(), call, damage);
  return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::vector<const Call*> calls = Callable();
  KySetMMX(0);
  const Result plain = RunDrawn(calls, data, size);
  KySetMMX(1);
  const Result accelerated = RunDrawn(calls, data, size);
  FuzzedDraw draw(data, size);
  const Call& call = *calls[draw.Below(static_cast<unsigned>(calls.size()))];
  Require(plain.outcome == accelerated.outcome, call, "the paths return different results");
  Require(plain.state == accelerated.state, call, "the paths leave different bytes");
  return 0;
}
