// The reader of pictures on arbitrary bytes: it gives an image or says why not, and what it has
// read it can write and read again.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "ky/files.h"

namespace {

template <class T>
bool Same(const KyImage<T>& a, const KyImage<T>& b) {
  if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight()) return false;
  const std::size_t row = static_cast<std::size_t>(a.GetWidth()) * sizeof(T);
  for (int y = 0; y < a.GetHeight(); ++y)
    if (std::memcmp(a.GetPixelPtr(0, y), b.GetPixelPtr(0, y), row) != 0) return false;
  return true;
}

// A folder of this process, removed at its end.
struct Folder {
  std::string path =
      std::filesystem::temp_directory_path() / ("ky-fuzz-" + std::to_string(getpid()));
  Folder() { std::filesystem::create_directories(path); }
  ~Folder() { std::filesystem::remove_all(path); }
};

template <class T>
void RoundTrip(const std::uint8_t* data, std::size_t size, const std::string& extension) {
  static const Folder folder;
  KyImage<T> image, again;
  if (ImgDecode(data, size, &image) != KY_OK) {
    if (image.GetWidth() != 0 || KyGetErrorMessage()[0] == '\0') std::abort();
    return;
  }
  if (std::int64_t{image.GetWidth()} * image.GetHeight() > 1 << 16) return;
  for (const std::string& name : {folder.path + "/picture.png", folder.path + "/it" + extension})
    if (ImgSave(&image, name.c_str()) != KY_OK || ImgLoad(name.c_str(), &again) != KY_OK ||
        !Same(image, again))
      std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  RoundTrip<KyBW8>(data, size, ".pgm");
  RoundTrip<KyBW16>(data, size, ".pgm");
  RoundTrip<KyC24>(data, size, ".ppm");
  return 0;
}
