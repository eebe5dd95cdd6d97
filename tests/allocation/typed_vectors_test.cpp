// Typed vectors and their files when memory runs out.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <type_traits>
#include <vector>

#include "ky/ky.h"
#include "tests/allocation/failing_new.h"

namespace {

using namespace ky::test;  // NOLINT

TEST(Allocation, TypedVectorsKeepTheirElements) {
  KyBW8Vector v(2, 9);
  const auto unchanged = [&] {
    return v.GetNumElements() == 2 && v.GetMaxElements() == 2 && v[0] == 9 && v[1] == 9;
  };
  const KY_ERRORS code = KY_ERROR_NOT_ENOUGH_MEMORY;
  CheckAllocationFailures([&] { return v.AddElement(1); }, code,
                          {"KyVector::SetMaxElements", "KyVector::AddElement"}, unchanged);
  v = KyBW8Vector(2, 9);
  CheckAllocationFailures([&] { return v.AddElementByRef(v[0]); }, code,
                          {"KyVector::SetMaxElements", "KyVector::AddElementByRef"}, unchanged);
  v = KyBW8Vector(2, 9);
  CheckAllocationFailures([&] { return v.SetNumElements(7); }, code,
                          {"KyVector::SetMaxElements", "KyVector::SetNumElements"}, unchanged);
  v = KyBW8Vector(2, 9);
  CheckAllocationFailures([&] { return v.SetMaxElements(1); }, code, {"KyVector::SetMaxElements"},
                          unchanged);
}

TEST(Allocation, TypedVectorsAreBuiltEmpty) {
  const auto construct = [](const auto& make, std::vector<const char*> trace) {
    unsigned int room = 1;
    CheckAllocationFailures(
        [&] {
          KyOk();
          const auto v = make();
          room = v.GetNumElements() + v.GetMaxElements();
          return KyGetError();
        },
        KY_ERROR_NOT_ENOUGH_MEMORY, trace, [&] { return room == 0; });
    EXPECT_GT(room, 0u);
  };
  construct([] { return KyC24Vector(5, KyC24(1, 2, 3)); },
            {"KyVector::SetMaxElements", "KyVector::SetNumElements"});
  construct([] { return KyC24PathVector(5); }, {"KyVector::SetMaxElements"});
  construct([] { return KyBW8HistogramVector(5); }, {"KyVector::SetMaxElements"});
}

TEST(Allocation, LoadedVectorsAreEmpty) {
  const std::string name = testing::TempDir() + "ky_allocation_" + std::to_string(getpid());
  const auto load = [&](auto& saved) {
    ASSERT_EQ(saved.Save(name.c_str()), KY_OK);
    std::remove_reference_t<decltype(saved)> v;
    v.SetNumElements(1);
    CheckAllocationFailures([&] { return v.Load(name.c_str()); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                            {"KyVector::SetMaxElements", "KyVector::Load"},
                            [&] { return v.GetNumElements() == 0; });
    EXPECT_EQ(v.GetNumElements(), 3u);
    std::remove(name.c_str());
  };
  KyBW8Vector levels(3, 4);
  load(levels);
  KyVectorTemplate<KyImage<KyBW8>> images;
  images.SetNumElements(3);
  load(images);
}

TEST(Allocation, CopiesOfImages) {
  KyImage<KyBW8> image(6, 4), other(2, 2);
  const auto unchanged = [&] { return other.GetWidth() == 2 && other.GetMaskCount() == 0; };
  CheckAllocationFailures([&] { return other.CopyFrom(image); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                          {"KyImage::CopyFrom"}, unchanged);
  // The second allocation is the mask's.
  const KyMaskRun run = {1, 2};
  image.SetMask(&run, 1, false);
  other.SetSize(2, 2);
  const long before = OutstandingAllocations();
  {
    FailingAllocation failing(2);
    EXPECT_EQ(other.CopyFrom(image), KY_ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_TRUE(failing.Happened());
  }
  EXPECT_TRUE(unchanged());
  EXPECT_EQ(OutstandingAllocations(), before);

  KyVectorTemplate<KyImage<KyBW8>> v;
  {
    FailingAllocation failing(1);
    EXPECT_EQ(v.AddElementByRef(image), KY_ERROR_NOT_ENOUGH_MEMORY);
  }
  EXPECT_STREQ(KyGetTrace(1), "KyVector::AddElementByRef");
  EXPECT_EQ(v.GetNumElements(), 0u);
  EXPECT_EQ(OutstandingAllocations(), before);
}

// The array of a named vector's target is kept, that of a temporary's is not.
TEST(Allocation, AssigningTemporariesKeepsNothing) {
  KyBW8Vector profile(640);
  KyVectorTemplate<KyImage<KyBW8>> images;
  const long before = OutstandingAllocations();
  for (int i = 0; i < 3; ++i) profile = KyBW8Vector(640);
  EXPECT_EQ(OutstandingAllocations(), before);
  for (int i = 0; i < 3; ++i) {
    KyVectorTemplate<KyImage<KyBW8>> more;
    more.AddElement(KyImage<KyBW8>(5, 5));
    images = std::move(more);
  }
  EXPECT_EQ(OutstandingAllocations(), before + 2);  // one array, one image
  KyBW8Vector named(640);
  profile = named;
  EXPECT_EQ(OutstandingAllocations(), before + 3);
}

}  // namespace
