// Pictures in files when memory runs out, that of libpng included.
#include "ky/files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/allocation/failing_new.h"

namespace {

using namespace ky::test;  // NOLINT

// Each allocation of the call fails in turn: the call fails, too, and leaves things unchanged, or
// does without. Returns how many there were.
int EachAllocationOf(const std::function<KY_ERRORS()>& call,
                     const std::function<bool()>& unchanged) {
  for (int n = 1;; ++n) {
    SCOPED_TRACE(n);
    const long before = OutstandingAllocations();
    KY_ERRORS status;
    bool failed;
    {
      const FailingAllocation failing(n);
      status = call();
      failed = failing.Happened();
    }
    EXPECT_EQ(status, failed && status != KY_OK ? KY_ERROR_NOT_ENOUGH_MEMORY : KY_OK);
    if (!failed) return n - 1;
    if (status == KY_OK) continue;
    EXPECT_TRUE(unchanged());
    EXPECT_EQ(OutstandingAllocations(), before) << "memory leaked";
  }
}

TEST(Allocation, PicturesInFiles) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::path(testing::TempDir()) / ("ky_memory_" + std::to_string(getpid()));
  fs::create_directories(folder);
  KyImage<KyC24> image(50, 40), other(50, 40);
  other.SetPixel({1, 2, 3}, 7, 7);
  for (const char* const name : {"picture.png", "picture.ppm"}) {
    SCOPED_TRACE(name);
    const std::string path = folder / name;
    const auto contents = [&] {
      std::stringstream text;
      text << std::ifstream(path).rdbuf();
      return text.str();
    };
    ASSERT_EQ(ImgSave(&image, path.c_str()), KY_OK);
    const std::string former = contents();
    const int saving = EachAllocationOf([&] { return ImgSave(&other, path.c_str()); },
                                        [&] { return contents() == former; });
    EXPECT_NE(contents(), former);
    KyImage<KyBW16> read(3, 3);
    const int loading = EachAllocationOf(
        [&] {
          read.SetSize(3, 3);
          return ImgLoad(path.c_str(), &read);
        },
        [&] { return read.GetWidth() == 3; });
    EXPECT_EQ(read.GetWidth(), 50);
    EXPECT_GE(loading, 4);
    EXPECT_GE(saving, path.ends_with("png") ? 4 : 0);
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 2);
  fs::remove_all(folder);
}

}  // namespace
