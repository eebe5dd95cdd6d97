// Files of pictures that cannot be read or written: what is there stays, and nothing else appears.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <utility>

#include "ky/files.h"

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

TEST(Saving, AFailureLeavesWhatWasThere) {
  const std::string folder = Folder();
  KyImage<KyBW8> first(200, 100), second(200, 100);
  for (int i = 0; i < 200 * 100; ++i)
    second.SetPixel(static_cast<KyBW8>(i * i % 251), i % 200, i / 200);
  for (const std::string name : {"picture.png", "picture.pgm"}) {
    SCOPED_TRACE(name);
    const std::string path = folder + "/" + name, link = folder + "/link_" + name;
    ASSERT_EQ(ImgSave(&first, path.c_str()), KY_OK);
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    fs::create_symlink(path, link);
    for (const std::string& target : {path, link}) {
      const SmallFiles limit(1000);
      EXPECT_EQ(ImgSave(&second, target.c_str()), KY_ERROR_FILE_WRITE);
    }
    KyImage<KyBW8> read;
    EXPECT_EQ(ImgLoad(path.c_str(), &read), KY_OK);
    EXPECT_EQ(read.GetPixel(7, 3), 0);
    // A link goes on leading to the file, which keeps its permissions.
    EXPECT_EQ(ImgSave(&second, link.c_str()), KY_OK);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(ImgLoad(path.c_str(), &read), KY_OK);
    EXPECT_EQ(read.GetPixel(7, 3), second.GetPixel(7, 3));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    fs::remove(path);
    fs::remove(link);
  }
  EXPECT_TRUE(fs::is_empty(folder));
}

TEST(Saving, WhatIsNoFileIsNotReplaced) {
  const std::string folder = Folder(), pipe = folder + "/pipe.png", inner = folder + "/folder.png";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  fs::create_directory(inner);
  fs::create_symlink("/dev/null", folder + "/null.png");
  const KyImage<KyBW8> image(5, 4);
  fs::create_symlink("/none/at/all.png", folder + "/link.png");
  for (const std::string& name :
       {pipe, inner, folder + "/null.png", folder + "/link.png", folder + "/none/a.png"})
    EXPECT_EQ(ImgSave(&image, name.c_str()), KY_ERROR_FILE_OPEN);
  EXPECT_STREQ(KyGetErrorMessage(), "ImgSave: there is no such folder (KY_ERROR_FILE_OPEN)");
  EXPECT_TRUE(fs::is_fifo(pipe) && fs::is_directory(inner) && fs::exists("/dev/null"));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 4);
  // What never ends is no picture from its first bytes on.
  KyImage<KyBW8> read(2, 1);
  EXPECT_EQ(ImgLoad("/dev/zero", &read), KY_ERROR_FILE_FORMAT);
  // A call that waited for somebody to write to a pipe would not return.
  EXPECT_EQ(ImgLoad(pipe.c_str(), &read), KY_ERROR_FILE_OPEN);
  EXPECT_EQ(ImgLoad(folder.c_str(), &read), KY_ERROR_FILE_READ);
  EXPECT_EQ(ImgLoad((folder + "/none").c_str(), &read), KY_ERROR_FILE_OPEN);
  EXPECT_STREQ(KyGetErrorMessage(), "ImgLoad: there is no such file (KY_ERROR_FILE_OPEN)");
  EXPECT_EQ(read.GetWidth(), 2);
}

TEST(Saving, LongNamesAndWhatAnEarlierProcessLeft) {
  const std::string folder = Folder(), longest = folder + "/" + std::string(251, 'n') + ".png";
  const KyImage<KyBW8> image(5, 4);
  EXPECT_EQ(ImgSave(&image, longest.c_str()), KY_OK);
  EXPECT_EQ(ImgSave(&image, (folder + "/n" + fs::path(longest).filename().string()).c_str()),
            KY_ERROR_FILE_OPEN);
  EXPECT_STREQ(KyGetErrorMessage(), "ImgSave: the name is too long (KY_ERROR_FILE_OPEN)");
  // Half-written files of a process that had the same number.
  const std::string path = folder + "/a.png", stem = path + "." + std::to_string(getpid()) + ".";
  for (int i = 0; i < 50; ++i) fs::copy_file(longest, stem + std::to_string(i) + ".tmp");
  EXPECT_EQ(ImgSave(&image, path.c_str()), KY_OK);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 52);
}

// A random picture in the middle of another comes back the same, from every kind of file.
template <class T>
void CheckThatItComesBack(const std::string& folder, const char* ending) {
  std::mt19937 random(1);
  for (const auto& [width, height] : {std::pair{1, 1}, {37, 5}, {1, 30000}, {1100, 1000}}) {
    KyImage<T> image(width + 2, height + 1), read;
    for (int y = 0; y <= height; ++y)
      for (int x = 0; x < (width + 2) * static_cast<int>(sizeof(T)); ++x)
        static_cast<unsigned char*>(image.GetPixelPtr(0, y))[x] =
            static_cast<unsigned char>(random());
    const KyROI<T> part(&image, 1, 1, width, height);
    const std::string path = folder + "/picture" + ending;
    ASSERT_EQ(ImgSave(&part, path.c_str()), KY_OK);
    ASSERT_EQ(ImgLoad(path.c_str(), &read), KY_OK);
    ASSERT_TRUE(read.GetWidth() == width && read.GetHeight() == height);
    for (int y = 0; y < height; ++y)
      ASSERT_EQ(std::memcmp(read.GetPixelPtr(0, y), part.GetPixelPtr(0, y),
                            static_cast<std::size_t>(width) * sizeof(T)),
                0);
  }
}

TEST(Saving, PixelsComeBack) {
  const std::string folder = Folder();
  for (const char* const ending : {".png", ".pgm"}) {
    CheckThatItComesBack<KyBW8>(folder, ending);
    CheckThatItComesBack<KyBW16>(folder, ending);
  }
  for (const char* const ending : {".png", ".ppm"}) CheckThatItComesBack<KyC24>(folder, ending);
}

TEST(Saving, BadArguments) {
  const KyImage<KyBW8> image(3, 2);
  const KyROI<KyBW8> empty(&image, 1, 1, 0, 1), none;
  KyImage<KyBW8> read;
  const std::string longPath = std::string(5000, 'a') + ".png";
  EXPECT_EQ(ImgSave(static_cast<KyROI<KyBW8>*>(nullptr), "a.png"), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(ImgSave(&none, "a.png"), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(ImgSave(&empty, "a.png"), KY_ERROR_NO_PIXELS);
  EXPECT_EQ(ImgSave(&image, nullptr), KY_ERROR_FILE_OPEN);
  EXPECT_EQ(ImgSave(&image, longPath.c_str()), KY_ERROR_FILE_OPEN);
  for (const char* const path : {"a.jpg", "png", "", "a.ppm"})
    EXPECT_EQ(ImgSave(&image, path), KY_ERROR_FILE_FORMAT);
  EXPECT_EQ(ImgLoad(nullptr, &read), KY_ERROR_FILE_OPEN);
  EXPECT_EQ(ImgLoad("a.png", static_cast<KyImage<KyC24>*>(nullptr)), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(ImgDecode(nullptr, 3, &read), KY_ERROR_FILE_OPEN);
  EXPECT_EQ(ImgDecode("P5", 2, static_cast<KyImage<KyC24>*>(nullptr)), KY_ERROR_NO_IMAGE);
  EXPECT_EQ(ImgDecode("", 0, &read), KY_ERROR_FILE_FORMAT);
}

}  // namespace
