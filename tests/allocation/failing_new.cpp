#include "tests/allocation/failing_new.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> outstanding{0}, outstandingBytes{0}, largest{0};
std::atomic<int> countdown{0};  // allocations until the one that fails; 0 when none does
std::atomic<bool> happened{false};

// With the allocator's own word.
long BytesOf(void* memory) {
  return static_cast<long>(malloc_usable_size(memory) + sizeof(std::size_t));
}

void* Allocate(std::size_t bytes, std::size_t alignment) noexcept {
  if (countdown.load() > 0 && countdown.fetch_sub(1) == 1) {
    happened = true;
    return nullptr;
  }
  const std::size_t rounded = (bytes + alignment - 1) / alignment * alignment;
  if (rounded < bytes) return nullptr;
  void* const memory = std::aligned_alloc(alignment, rounded == 0 ? alignment : rounded);
  if (memory == nullptr) return nullptr;
  ++outstanding;
  outstandingBytes += BytesOf(memory);
  largest = std::max(largest.load(), static_cast<long>(bytes));
  return memory;
}
void* AllocateOrThrow(std::size_t bytes, std::size_t alignment) {
  if (void* const memory = Allocate(bytes, alignment)) return memory;
  throw std::bad_alloc();
}
void Release(void* memory) noexcept {
  if (memory == nullptr) return;
  --outstanding;
  outstandingBytes -= BytesOf(memory);
  std::free(memory);
}

constexpr std::size_t kDefault = alignof(std::max_align_t);
std::size_t Of(std::align_val_t alignment) { return static_cast<std::size_t>(alignment); }

}  // namespace

void* operator new(std::size_t n) { return AllocateOrThrow(n, kDefault); }
void* operator new[](std::size_t n) { return AllocateOrThrow(n, kDefault); }
void* operator new(std::size_t n, std::align_val_t a) { return AllocateOrThrow(n, Of(a)); }
void* operator new[](std::size_t n, std::align_val_t a) { return AllocateOrThrow(n, Of(a)); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return Allocate(n, kDefault); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
  return Allocate(n, kDefault);
}
void* operator new(std::size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
  return Allocate(n, Of(a));
}
void* operator new[](std::size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
  return Allocate(n, Of(a));
}
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }
void operator delete(void* p, std::align_val_t) noexcept { Release(p); }
void operator delete[](void* p, std::align_val_t) noexcept { Release(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { Release(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { Release(p); }

namespace ky::test {

long OutstandingAllocations() { return outstanding; }
long OutstandingBytes() { return outstandingBytes; }
long LargestAllocation() { return largest; }
void ForgetLargestAllocation() { largest = 0; }

FailingAllocation::FailingAllocation(int n) {
  happened = false;
  countdown = n;
}
FailingAllocation::~FailingAllocation() { countdown = 0; }
bool FailingAllocation::Happened() const { return happened; }

void CheckAllocationFailures(const std::function<KY_ERRORS()>& call, KY_ERRORS code,
                             const std::vector<const char*>& trace,
                             const std::function<bool()>& unchanged, int fewest) {
  constexpr int kMany = 100;
  for (int n = 1; n <= kMany; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    const long before = OutstandingAllocations();
    KY_ERRORS status;
    bool failed;
    {
      FailingAllocation failing(n);
      status = call();
      failed = failing.Happened();
    }
    if (!failed) {
      EXPECT_EQ(status, KY_OK);
      EXPECT_GT(n, fewest) << "the call made fewer allocations than it should";
      return;
    }
    EXPECT_EQ(OutstandingAllocations(), before) << "memory leaked";
    EXPECT_EQ(status, code);
    EXPECT_EQ(KyGetError(), code);
    EXPECT_TRUE(unchanged()) << "something changed";
    ASSERT_EQ(KyGetTraceCount(), static_cast<int>(trace.size()));
    for (std::size_t i = 0; i < trace.size(); ++i)
      EXPECT_STREQ(KyGetTrace(static_cast<int>(i)), trace[i]);
  }
  FAIL() << "the call never stops allocating";
}

}  // namespace ky::test
