#include "frequency/plans.h"

#include <fftw3.h>
#include <pthread.h>

#include <algorithm>
#include <cstdint>
#include <mutex>

#include "foundation/scratch.h"

namespace ky {
namespace {

// FFTW ends the process where it runs out of memory. More than it takes, to plan and to transform,
// is therefore allocated first, and released: so many numbers for each number of the row. Lengths
// that are large primes take the most, 23.
constexpr std::ptrdiff_t kRoom = 32;

// The plans that are kept. They stay to the end of the process, as threads may still run then.
class Plans {
 public:
  // Null when there is no memory. What is acquired is released again.
  fftwf_plan Acquire(int n, bool inverse, KyComplex64* in, KyComplex64* out) noexcept {
    const std::lock_guard lock(mutex_);
    ++clock_;
    for (Slot& slot : slots_)
      if (slot.plan != nullptr && slot.n == n && slot.inverse == inverse) return Use(slot);
    // Programs that plan by themselves use the same planner, perhaps in another thread.
    if (clock_ == 1) fftwf_make_planner_thread_safe();
    fftwf_plan plan = fftwf_plan_dft_1d(
        n, reinterpret_cast<fftwf_complex*>(in), reinterpret_cast<fftwf_complex*>(out),
        inverse ? FFTW_BACKWARD : FFTW_FORWARD, FFTW_ESTIMATE | FFTW_DESTROY_INPUT);
    if (plan == nullptr) return nullptr;
    Slot* oldest = nullptr;
    for (Slot& slot : slots_)
      if (slot.users == 0 && (oldest == nullptr || slot.used < oldest->used)) oldest = &slot;
    if (oldest == nullptr) return plan;  // so many threads run at once that it is not kept
    if (oldest->plan != nullptr) fftwf_destroy_plan(oldest->plan);
    *oldest = {plan, n, inverse, 0, 0};
    return Use(*oldest);
  }
  void Lock() noexcept { mutex_.lock(); }
  void Unlock() noexcept { mutex_.unlock(); }
  void Release(fftwf_plan plan) noexcept {
    const std::lock_guard lock(mutex_);
    const auto slot = std::ranges::find(slots_, plan, &Slot::plan);
    if (slot != std::end(slots_))
      --slot->users;
    else
      fftwf_destroy_plan(plan);
  }

 private:
  struct Slot {
    fftwf_plan plan = nullptr;
    int n = 0;
    bool inverse = false;
    int users = 0;
    std::uint64_t used = 0;
  };

  fftwf_plan Use(Slot& slot) const noexcept {
    ++slot.users;
    slot.used = clock_;
    return slot.plan;
  }

  std::mutex mutex_;
  std::uint64_t clock_ = 0;
  Slot slots_[32];
};
constinit Plans plans;

// The thread that forks holds the lock then: one that does not exist in the child would hold it for
// ever.
[[maybe_unused]] const int atFork =
    pthread_atfork([] { plans.Lock(); }, [] { plans.Unlock(); }, [] { plans.Unlock(); });

}  // namespace

FourierPlan::~FourierPlan() {
  if (plan_ != nullptr) plans.Release(static_cast<fftwf_plan>(plan_));
}

bool FourierPlan::Open(std::ptrdiff_t n, bool inverse) noexcept {
  n_ = n;
  if (n == 1) return true;
  Scratch<KyComplex64> room;
  if (!room.Allocate(kRoom * n)) return false;
  // Estimates look at the addresses alone.
  plan_ = plans.Acquire(static_cast<int>(n), inverse, room.get(), room.get() + 8 * n);
  return plan_ != nullptr;
}

void FourierPlan::Run(KyComplex64* in, KyComplex64* out) const noexcept {
  if (plan_ == nullptr) {
    *out = *in;
    return;
  }
  fftwf_execute_dft(static_cast<fftwf_plan>(plan_), reinterpret_cast<fftwf_complex*>(in),
                    reinterpret_cast<fftwf_complex*>(out));
}

}  // namespace ky
