#include "picture_file.h"

#include <png.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "ky/conversion.h"
#include "png_decoder.h"

namespace picture {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A damaged header must not ask for all the memory that there is.
constexpr std::int64_t kMostPixels = 1 << 28;

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

// The numbers of a PGM or PPM header, behind its magic number: separated by white space, with
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

  // The offset of the pixels, one white space behind the last number.
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

Bytes ReadFile(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) Fail(path, "cannot be opened: " + std::generic_category().message(errno));
  Bytes bytes;
  char chunk[1 << 16];
  while (file.read(chunk, sizeof chunk), file.gcount() > 0)
    bytes.insert(bytes.end(), chunk, chunk + file.gcount());
  if (file.bad()) Fail(path, "cannot be read");
  return bytes;
}

bool StartsWith(const Bytes& bytes, std::string_view magic) {
  return bytes.size() >= magic.size() &&
         std::equal(magic.begin(), magic.end(), bytes.begin(),
                    [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

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
  if (!png_image_write_to_file(&png.image, path.c_str(), 0, roi.GetPixelPtr(0, 0), roi.GetPitch(),
                               nullptr))
    Fail(path, std::string("cannot be written: ") + png.image.message);
}

template <class T>
void WritePnm(const KyROI<T>& roi, const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  file << (kColor<T> ? "P6\n" : "P5\n") << roi.GetWidth() << ' ' << roi.GetHeight() << "\n255\n";
  const std::streamsize row = roi.GetWidth() * std::streamsize{sizeof(T)};
  for (int y = 0; y < roi.GetHeight(); ++y)
    file.write(static_cast<const char*>(roi.GetPixelPtr(0, y)), row);
  file.close();
  if (!file) Fail(path, "cannot be written");
}

}  // namespace

template <class T>
KyImage<T> Decode(const std::vector<std::uint8_t>& bytes, const std::string& name) {
  if (bytes.empty()) Fail(name, "is empty");
  if (StartsWith(bytes, "\x89PNG\r\n\x1a\n")) return DecodePng<T>(bytes, name);
  if (StartsWith(bytes, "P5")) return As<T>(DecodePnm<KyBW8>(bytes, name), name);
  if (StartsWith(bytes, "P6")) return As<T>(DecodePnm<KyC24>(bytes, name), name);
  Fail(name, "is not a PNG, PGM (P5) or PPM (P6) file");
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
