// Files of pictures that cannot be read or written: what is there stays, and nothing else appears.
#include "support/picture_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <utility>

#include "ky/operators.h"

namespace {

namespace fs = std::filesystem;

std::string Folder() {
  const fs::path folder =
      fs::path(testing::TempDir()) / ("ky_pictures_" + std::to_string(getpid()));
  fs::remove_all(folder);
  fs::create_directories(folder);
  return folder;
}

// While it lives, files cannot grow beyond so many bytes.
class SmallFiles {
 public:
  explicit SmallFiles(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit = {bytes, former_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  SmallFiles(const SmallFiles&) = delete;
  SmallFiles& operator=(const SmallFiles&) = delete;
  ~SmallFiles() {
    setrlimit(RLIMIT_FSIZE, &former_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  void (*handler_)(int);
  rlimit former_ = {};
};

TEST(PictureFiles, AFailureLeavesWhatWasThere) {
  const std::string folder = Folder();
  KyImage<KyBW8> first(200, 100), second(200, 100);
  for (int i = 0; i < 200 * 100; ++i)
    second.SetPixel(static_cast<KyBW8>(i * i % 251), i % 200, i / 200);
  for (const std::string name : {"picture.png", "picture.pgm"}) {
    SCOPED_TRACE(name);
    const std::string path = folder + "/" + name, link = path + ".link";
    picture::Write(first, path);
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    fs::create_symlink(path, link);
    for (const std::string& target : {path, link}) {
      const SmallFiles limit(1000);
      EXPECT_THROW(picture::Write(second, target), picture::FileError);
    }
    EXPECT_EQ(picture::Read<KyBW8>(path).GetPixel(7, 3), 0);
    // A link goes on leading to the file, which keeps its permissions.
    picture::Write(second, link);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(picture::Read<KyBW8>(path).GetPixel(7, 3), second.GetPixel(7, 3));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    fs::remove(path);
    fs::remove(link);
  }
  EXPECT_TRUE(fs::is_empty(folder));
}

TEST(PictureFiles, WhatIsNoFileIsNotReplaced) {
  const std::string folder = Folder(), pipe = folder + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const KyImage<KyBW8> image(5, 4);
  for (const std::string& name : {pipe, folder, std::string("/dev/null")}) {
    EXPECT_THROW(picture::Write(image, name), picture::FileError);
    EXPECT_TRUE(fs::exists(name) && !fs::is_regular_file(name));
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
  // What never ends is no picture from its first bytes on.
  EXPECT_THROW(picture::Read<KyBW8>("/dev/zero"), picture::FileError);
}

}  // namespace
