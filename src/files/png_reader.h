// PNG files, as libpng decodes them.
#pragma once

#include <png.h>

#include <cstddef>
#include <cstdint>

#include "files/bytes.h"
#include "files/png_memory.h"

namespace ky {

// Decodes the bytes of a PNG file, which must outlive it. Samples are those of the file, whatever
// it says of gamma and colour spaces; palettes become colours. An alpha channel and transparent
// colours are left out.
class PngReader {
 public:
  explicit PngReader(const Bytes& bytes) noexcept;
  ~PngReader();
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;

  // Reads up to the pixels, and says what they are. Samples become bytes: of 16 bits the higher 8,
  // of fewer than 8 stretched to 0..255. With `mayBeDeep`, grey ones of 16 bits stay such.
  KY_ERRORS ReadHeader(bool mayBeDeep) noexcept;
  std::uint32_t width() const noexcept { return png_get_image_width(png_, info_); }
  std::uint32_t height() const noexcept { return png_get_image_height(png_, info_); }
  bool IsColor() const noexcept {
    return (png_get_color_type(png_, info_) & PNG_COLOR_MASK_COLOR) != 0;
  }
  bool IsDeep() const noexcept { return deep_; }

  // Reads the pixels into rows, `pitch` bytes apart.
  KY_ERRORS ReadPixels(void* first, int pitch) noexcept;

 private:
  static void Fail(png_structp png, png_const_charp message);
  static void Ignore(png_structp, png_const_charp) {}
  static void Take(png_structp png, png_bytep data, std::size_t count);
  KY_ERRORS Error() const noexcept;

  Bytes bytes_;
  std::size_t at_ = 0;
  PngMemory memory_;
  bool endsTooEarly_ = false, deep_ = false;
  png_structp png_;
  png_infop info_ = nullptr;
};

}  // namespace ky
