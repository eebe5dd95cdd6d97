// Typed vectors in memory; their files are tested with all element types in tests/foundation.
#include "ky/typed_vector.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <numeric>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

std::vector<KyBW8> Levels(const KyBW8Vector& v) { return {v.begin(), v.end()}; }

TEST(TypedVector, TheDocumentedExample) {
  const std::string name = testing::TempDir() + "ky_profile_" + std::to_string(getpid());
  KyBW8Vector profile(3, 10);
  profile.AddElement(40);
  profile[0] = 20;
  unsigned int sum = 0;
  for (KyBW8 level : profile) sum += level;
  EXPECT_EQ(sum, 80u);
  EXPECT_EQ(profile.Save(name.c_str()), KY_OK);
  KyBW8Vector copy;
  EXPECT_EQ(copy.Load(name.c_str()), KY_OK);
  EXPECT_EQ(Levels(copy), (std::vector<KyBW8>{20, 10, 10, 40}));
  std::remove(name.c_str());
}

TEST(TypedVector, ConstructorsFillAndKeepTheStatus) {
  KySetError(KY_ERROR_NO_IMAGE);
  EXPECT_EQ(Levels(KyBW8Vector(3, 7)), (std::vector<KyBW8>{7, 7, 7}));
  EXPECT_EQ(KyBW16Vector(2, 60000)[1], 60000);
  EXPECT_EQ(KyBW32Vector(2, 4000000000)[1], 4000000000);
  EXPECT_EQ(KyC24Vector(2, KyC24(1, 2, 3))[1], KyC24(1, 2, 3));
  EXPECT_EQ(KyC24Vector(1)[0], KyC24(0, 0, 0));
  const KyBW8Vector empty;
  EXPECT_EQ(empty.GetDataPtr(), nullptr);
  EXPECT_EQ(empty.begin(), empty.end());
  EXPECT_EQ(KyGetError(), KY_ERROR_NO_IMAGE);
  KyOk();
}

TEST(TypedVector, GrowsByDoubling) {
  KyBW16Vector v;
  for (unsigned int i = 0; i < 100; ++i) {
    unsigned int room = 1;
    while (room <= i) room *= 2;
    KySetError(KY_ERROR_NO_IMAGE);
    // From the second on, an element of the vector itself, which moves when the vector grows.
    ASSERT_EQ(i == 0 ? v.AddElement(3) : v.AddElementByRef(v[0]), KY_OK);
    ASSERT_EQ(KyGetError(), KY_OK);
    ASSERT_EQ(v.GetMaxElements(), room);
  }
  EXPECT_EQ(std::accumulate(v.begin(), v.end(), 0), 300);
  v.Empty();
  EXPECT_EQ(v.GetNumElements(), 0u);
  EXPECT_EQ(v.GetMaxElements(), 128u);
}

TEST(TypedVector, RoomAndElementsInUse) {
  struct State {
    unsigned int count, capacity;
    bool kept;
  };
  const auto after = [](auto change) {
    KyBW8Vector v(5, 9);
    v.SetMaxElements(8);
    EXPECT_EQ(change(v), KY_OK);
    const bool kept = v.GetNumElements() > 0 && v[0] == 9 && v[4] == 9;
    KyOk();
    return State{v.GetNumElements(), v.GetMaxElements(), kept};
  };
  const auto is = [](const State& s, unsigned int count, unsigned int capacity, bool kept) {
    EXPECT_EQ(s.count, count);
    EXPECT_EQ(s.capacity, capacity);
    EXPECT_EQ(s.kept, kept);
  };
  is(after([](auto& v) { return v.SetMaxElements(20); }), 5, 20, true);
  is(after([](auto& v) { return v.SetMaxElements(8); }), 5, 8, true);
  is(after([](auto& v) { return v.SetMaxElements(5); }), 5, 5, true);
  is(after([](auto& v) { return v.SetMaxElements(4); }), 0, 4, false);
  is(after([](auto& v) { return v.SetMaxElements(0); }), 0, 0, false);
  is(after([](auto& v) { return v.SetNumElements(8); }), 8, 8, true);
  is(after([](auto& v) { return v.SetNumElements(2); }), 2, 8, false);
  KyBW8Vector v(5, 9);
  v.SetNumElements(6);
  EXPECT_EQ(v.GetNumElements(), 6u);
  EXPECT_EQ(v.GetMaxElements(), 6u);
}

TEST(TypedVector, MissingElementsHaveAPlaceHolder) {
  KyC24Vector v(2, KyC24(1, 2, 3));
  KyOk();
  v[2] = KyC24(9, 9, 9);
  EXPECT_EQ(KyGetError(), KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
  EXPECT_STREQ(KyGetTrace(0), "KyVector::operator[]");
  EXPECT_EQ(&v[2], &KyC24Vector::m_PlaceHolder);
  EXPECT_EQ(std::as_const(v)[0xFFFFFFFF], KyC24(0, 0, 0));
  std::thread([&] { EXPECT_NE(&v[2], &std::as_const(v)[1]); }).join();
  const KyC24* const mine = &v[2];
  std::thread([&] { EXPECT_NE(&v[2], mine); }).join();
  KyOk();
}

TEST(TypedVector, AssignmentTakesTheArray) {
  KyBW8Vector a(3, 1), b(4, 2), c(5, 3);
  KyBW8* const former = a.GetDataPtr();
  KyBW8* const taken = b.GetDataPtr();
  a = b;
  EXPECT_EQ(a.GetDataPtr(), taken);
  EXPECT_EQ(Levels(a), std::vector<KyBW8>(4, 2));
  EXPECT_EQ(b.GetNumElements() + b.GetMaxElements(), 0u);
  EXPECT_EQ(b.GetDataPtr(), nullptr);
  EXPECT_EQ(former[2], 1);  // still there
  a = std::move(c);
  EXPECT_EQ(former[2], 1);
  a = *&a;
  EXPECT_EQ(Levels(a), std::vector<KyBW8>(5, 3));
  const KyBW8Vector d(std::move(a));
  EXPECT_EQ(Levels(d), std::vector<KyBW8>(5, 3));
  EXPECT_EQ(a.GetNumElements(), 0u);  // NOLINT: the documented state
  static_assert(!std::is_copy_constructible_v<KyBW8Vector>);
}

// Bytes of this process in memory.
long long Resident() {
  long long total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

TEST(TypedVector, HugeCountsCostNoMemoryUntilUsed) {
  constexpr unsigned int kHuge = 0x80000000;
  const long long before = Resident();
  KyBW8Vector v;
  if (v.SetNumElements(kHuge) != KY_OK) GTEST_SKIP() << "no 2 GB of addresses";
  EXPECT_EQ(v.GetNumElements(), kHuge);
  EXPECT_LT(Resident() - before, 1ll << 30);
  v[kHuge - 1] = 5;
  // Twice that is no 32-bit number.
  EXPECT_EQ(v.AddElement(1), KY_ERROR_NOT_ENOUGH_MEMORY);
  ASSERT_EQ(KyGetTraceCount(), 2);
  EXPECT_STREQ(KyGetTrace(0), "KyVector::SetMaxElements");
  EXPECT_STREQ(KyGetTrace(1), "KyVector::AddElement");
  EXPECT_EQ(v.GetNumElements(), kHuge);
  EXPECT_EQ(v[kHuge - 1], 5);
}

}  // namespace
