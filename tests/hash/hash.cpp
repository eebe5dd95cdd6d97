// Prints one line for every call of the registry: its declaration and a hash of all that it gives
// on fixed arguments. Two builds that print the same lines compute the same.
//
//     ky_hash [plain | avx2 | ...]   the path, by its name in lower case; all by default
#include <cstdint>
#include <cstdio>
#include <string>

#include "tests/registry/arguments.h"
#include "tests/support/paths.h"

namespace {

using namespace ky::test;  // NOLINT

class Hash {
 public:
  void Add(const Bytes& bytes) {
    for (const unsigned char byte : bytes) Add(byte);
    Add(bytes.size());
  }
  void Add(std::uint64_t value) { hash_ = (hash_ ^ value) * 1099511628211u; }
  std::uint64_t value() const { return hash_ ^ hash_ >> 32; }

 private:
  std::uint64_t hash_ = 14695981039346656037u;
};

void Print(const Call& call) {
  Hash hash;
  int succeeded = 0;
  constexpr int kTrials = 120;
  for (int trial = 0; trial < kTrials; ++trial) {
    SeededDraw draw(static_cast<unsigned>(trial));
    // Many awkward sizes, and a few beyond the caches.
    const bool large = trial % 40 == 39;
    Plan plan = DrawPlan(call, draw,
                         large            ? 2100
                         : trial % 2 == 0 ? 150
                                          : 40,
                         large            ? 700
                         : trial % 3 == 0 ? 40
                                          : 15);
    plan.hostile = trial % 4 == 3;
    const Arguments arguments(call, draw, plan);
    const Outcome outcome = arguments.Run();
    succeeded += outcome.status == KY_OK;
    hash.Add(static_cast<std::uint64_t>(outcome.status));
    hash.Add(outcome.result);
    for (const std::string& name : outcome.trace) hash.Add(Bytes(name.begin(), name.end()));
    for (const Bytes& bytes : arguments.State()) hash.Add(bytes);
  }
  std::printf("%016llx %3d of %d %s\n", static_cast<unsigned long long>(hash.value()), succeeded,
              kTrials, call.Declaration().c_str());
}

}  // namespace

int main(int argc, char** argv) {
  bool any = false;
  for (const Path& path : Paths()) {
    if (argc > 1 && path.name != argv[1]) continue;
    any = true;
    const OnPath on(path);
    std::printf("# %s\n", path.name.c_str());
    for (const Call* const call : Callable()) Print(*call);
  }
  if (!any) std::fprintf(stderr, "hash: this processor has no path %s\n", argv[1]);
  return any ? 0 : 1;
}
