#include "picture_file.h"

#include <fcntl.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>

#include "ky/conversion.h"
#include "png_decoder.h"

namespace picture {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A damaged header must not ask for all the memory that there is, nor a file that never ends.
constexpr std::int64_t kMostPixels = 1 << 28, kMostBytes = 8 * kMostPixels;

[[noreturn]] void Fail(const std::string& name, const std::string& why) {
  throw FileError(name + ": " + why);
}

template <class T>
constexpr bool kColor = std::is_same_v<T, KyC24>;

template <class T>
KyImage<T> NewImage(std::int64_t width, std::int64_t height, const std::string& name) {
  const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
  if (width < 1 || height < 1) Fail(name, "has no pixels (" + size + ")");
  if (width > kMostPixels / height) Fail(name, "is too large (" + size + ")");
  KyImage<T> image(static_cast<int>(width), static_cast<int>(height));
  if (KyGetError() != KY_OK) Fail(name, "no memory for " + size);
  return image;
}

// The image as it is, or converted between grey and colour.
template <class To, class From>
KyImage<To> As(KyImage<From> image, const std::string& name) {
  if constexpr (std::is_same_v<To, From>) {
    return image;
  } else {
    KyImage<To> converted = NewImage<To>(image.GetWidth(), image.GetHeight(), name);
    if (ImgConvert(&image, &converted) != KY_OK) Fail(name, KyGetErrorMessage());
    return converted;
  }
}

// libpng's picture, released whatever happens.
struct Png {
  png_image image = {};

  Png() { image.version = PNG_IMAGE_VERSION; }
  ~Png() { png_image_free(&image); }
  Png(const Png&) = delete;
  Png& operator=(const Png&) = delete;
};

template <class T>
KyImage<T> ReadPixels(PngDecoder& png, const std::string& name) {
  KyImage<T> image = NewImage<T>(png.width(), png.height(), name);
  if (!png.ReadPixels(image.GetPixelPtr(0, 0), image.GetPitch()))
    Fail(name, "is a damaged PNG file (" + png.message() + ")");
  return image;
}

template <class T>
KyImage<T> DecodePng(const Bytes& bytes, const std::string& name) {
  PngDecoder png(bytes);
  if (!png.ReadHeader()) Fail(name, "is a damaged PNG file (" + png.message() + ")");
  if (png.isColor()) return As<T>(ReadPixels<KyC24>(png, name), name);
  return As<T>(ReadPixels<KyBW8>(png, name), name);
}

// The numbers of a PGM or PPM header, after its magic number: separated by white space, with
// comments from # to the end of a line.
class PnmHeader {
 public:
  PnmHeader(const Bytes& bytes, const std::string& name) : bytes_(bytes), name_(name) {}

  // The next number, up to `limit`.
  std::int64_t Number(std::int64_t limit) {
    const std::size_t before = at_;
    SkipSpace();
    if (at_ == before || !IsDigit(Peek())) Fail(name_, "has a damaged header: a number is missing");
    std::int64_t number = 0;
    for (; IsDigit(Peek()); ++at_) {
      number = 10 * number + (Peek() - '0');
      if (number > limit)
        Fail(name_, "has a number above " + std::to_string(limit) + " in its header");
    }
    return number;
  }

  // The offset of the pixels, one white space after the last number.
  std::size_t Pixels() {
    if (!IsSpace(Peek())) Fail(name_, "has a damaged header: it does not end");
    return at_ + 1;
  }

 private:
  static bool IsDigit(int c) { return c >= '0' && c <= '9'; }
  static bool IsSpace(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
  int Peek() const { return at_ < bytes_.size() ? bytes_[at_] : -1; }
  void SkipSpace() {
    while (IsSpace(Peek()) || Peek() == '#')
      if (bytes_[at_++] == '#')
        while (Peek() != '\n' && Peek() != -1) ++at_;
  }

  const Bytes& bytes_;
  const std::string& name_;
  std::size_t at_ = 2;
};

// Copies the samples of a PGM or PPM; those of a lower maximum are stretched to 0..255.
template <class T>
KyImage<T> DecodePnm(const Bytes& bytes, const std::string& name) {
  PnmHeader header(bytes, name);
  const std::int64_t width = header.Number(kMostPixels);
  const std::int64_t height = header.Number(kMostPixels);
  const std::int64_t maximum = header.Number(65535);
  const std::size_t first = header.Pixels();
  if (maximum == 0) Fail(name, "has a damaged header: its maximum is 0");
  if (maximum > 255) Fail(name, "has 16 bits a sample; only 8 are supported");

  const std::size_t row = static_cast<std::size_t>(width) * sizeof(T);
  if (row != 0 && (bytes.size() - first) / row < static_cast<std::size_t>(height))
    Fail(name, "ends before its last pixel");
  KyImage<T> image = NewImage<T>(width, height, name);
  for (int y = 0; y < image.GetHeight(); ++y) {
    const std::uint8_t* const from = bytes.data() + first + static_cast<std::size_t>(y) * row;
    const auto to = static_cast<std::uint8_t*>(image.GetPixelPtr(0, y));
    if (maximum == 255) {
      std::copy_n(from, row, to);
    } else {
      if (std::any_of(from, from + row, [&](std::uint8_t v) { return v > maximum; }))
        Fail(name, "has samples above its maximum");
      std::transform(from, from + row, to, [&](std::uint8_t v) {
        return static_cast<std::uint8_t>((v * 255 + maximum / 2) / maximum);
      });
    }
  }
  return image;
}

bool StartsWith(const Bytes& bytes, std::string_view magic) {
  return bytes.size() >= magic.size() &&
         std::equal(magic.begin(), magic.end(), bytes.begin(),
                    [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}
constexpr std::string_view kPngMagic = "\x89PNG\r\n\x1a\n", kPgmMagic = "P5", kPpmMagic = "P6";

// Fails for what is no picture by its first bytes.
void CheckMagic(const Bytes& bytes, const std::string& name) {
  if (bytes.empty()) Fail(name, "is empty");
  for (const std::string_view magic : {kPngMagic, kPgmMagic, kPpmMagic})
    if (StartsWith(bytes, magic)) return;
  Fail(name, "is not a PNG, PGM (P5) or PPM (P6) file");
}

std::string Reason() { return std::generic_category().message(errno); }

Bytes ReadFile(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) Fail(path, "cannot be opened: " + Reason());
  Bytes bytes;
  char chunk[1 << 16];
  while (file.read(chunk, sizeof chunk), file.gcount() > 0) {
    bytes.insert(bytes.end(), chunk, chunk + file.gcount());
    CheckMagic(bytes, path);
    if (std::ssize(bytes) > kMostBytes) Fail(path, "is too large for a picture");
  }
  if (file.bad()) Fail(path, "cannot be read");
  return bytes;
}

// A file that is written beside another and takes its place when it is complete, so that a failure
// leaves that one as it was, and nothing else. What is no regular file is not replaced.
class Replacement {
 public:
  explicit Replacement(const std::string& path) : name_(path), path_(path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    if (!error) path_ = real;  // a link goes on leading to the file
    struct stat status = {};
    const bool exists = stat(path_.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) Fail(name_, "is not a regular file");
    static std::atomic<unsigned> count{0};
    constexpr mode_t kReadAndWriteForAll = 0666, kPermissions = 07777;
    temporary_ = path_.string() + "." + std::to_string(getpid()) + "." +
                 std::to_string(count.fetch_add(1)) + ".tmp";
    const int descriptor =
        open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kReadAndWriteForAll);
    if (descriptor < 0) Fail(name_, "cannot be written: " + Reason());
    if (exists && fchmod(descriptor, status.st_mode & kPermissions) != 0) errno = 0;
    file_ = fdopen(descriptor, "wb");
    if (file_ != nullptr) return;
    close(descriptor);
    unlink(temporary_.c_str());
    Fail(name_, "cannot be written: " + Reason());
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement() {
    if (file_ != nullptr) std::fclose(file_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
  }
  std::FILE* file() const { return file_; }
  void Commit() {
    const bool failed = std::ferror(file_) != 0;
    const bool closed = std::fclose(std::exchange(file_, nullptr)) == 0;
    if (failed || !closed || std::rename(temporary_.c_str(), path_.c_str()) != 0)
      Fail(name_, "cannot be written: " + Reason());
    temporary_.clear();
  }

 private:
  std::string name_;
  std::filesystem::path path_;
  std::string temporary_;
  std::FILE* file_ = nullptr;
};

template <class T>
void WritePng(const KyROI<T>& roi, const std::string& path) {
  Png png;
  png.image.width = static_cast<png_uint_32>(roi.GetWidth());
  png.image.height = static_cast<png_uint_32>(roi.GetHeight());
  png.image.format = kColor<T> ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
  // Small files where that is quick: large pictures would take seconds.
  constexpr std::int64_t kLarge = 1 << 20;
  if (std::int64_t{roi.GetWidth()} * roi.GetHeight() > kLarge)
    png.image.flags = PNG_IMAGE_FLAG_FAST;
  Replacement file(path);
  if (!png_image_write_to_stdio(&png.image, file.file(), 0, roi.GetPixelPtr(0, 0), roi.GetPitch(),
                                nullptr))
    Fail(path, std::string("cannot be written: ") + png.image.message);
  file.Commit();
}

template <class T>
void WritePnm(const KyROI<T>& roi, const std::string& path) {
  Replacement file(path);
  std::fprintf(file.file(), "%s\n%d %d\n255\n", kColor<T> ? "P6" : "P5", roi.GetWidth(),
               roi.GetHeight());
  const auto width = static_cast<std::size_t>(roi.GetWidth());
  for (int y = 0; y < roi.GetHeight(); ++y)
    std::fwrite(roi.GetPixelPtr(0, y), sizeof(T), width, file.file());
  file.Commit();
}

}  // namespace

template <class T>
KyImage<T> Decode(const std::vector<std::uint8_t>& bytes, const std::string& name) {
  CheckMagic(bytes, name);
  if (StartsWith(bytes, kPngMagic)) return DecodePng<T>(bytes, name);
  if (StartsWith(bytes, kPgmMagic)) return As<T>(DecodePnm<KyBW8>(bytes, name), name);
  return As<T>(DecodePnm<KyC24>(bytes, name), name);
}

template <class T>
KyImage<T> Read(const std::string& path) {
  return Decode<T>(ReadFile(path), path);
}

template <class T>
void Write(const KyROI<T>& roi, const std::string& path) {
  if (roi.GetPixelPtr(0, 0) == nullptr || roi.GetWidth() == 0 || roi.GetHeight() == 0)
    Fail(path, "there are no pixels to write");
  if (path.ends_with(kColor<T> ? ".ppm" : ".pgm")) return WritePnm(roi, path);
  WritePng(roi, path);
}

template KyImage<KyBW8> Read<KyBW8>(const std::string&);
template KyImage<KyC24> Read<KyC24>(const std::string&);
template KyImage<KyBW8> Decode<KyBW8>(const std::vector<std::uint8_t>&, const std::string&);
template KyImage<KyC24> Decode<KyC24>(const std::vector<std::uint8_t>&, const std::string&);
template void Write<KyBW8>(const KyROI<KyBW8>&, const std::string&);
template void Write<KyC24>(const KyROI<KyC24>&, const std::string&);

}  // namespace picture
