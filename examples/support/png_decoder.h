// PNG files as libpng decodes them, with 8 bits a sample.
#pragma once

#include <png.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace picture {

/// Decodes the bytes of a PNG file, which must outlive it. Samples are those of the file, whatever
/// it says of gamma and colour spaces: of 16 bits the higher 8, of fewer than 8 stretched to
/// 0..255. Palettes become colours. An alpha channel and transparent colours are left out.
class PngDecoder {
 public:
  explicit PngDecoder(const std::vector<std::uint8_t>& bytes);
  ~PngDecoder();
  PngDecoder(const PngDecoder&) = delete;
  PngDecoder& operator=(const PngDecoder&) = delete;

  /// Reads up to the pixels, and says what they are. False when the file is damaged; message() is
  /// libpng's then.
  bool ReadHeader();
  std::uint32_t width() const { return png_get_image_width(png_, info_); }
  std::uint32_t height() const { return png_get_image_height(png_, info_); }
  bool isColor() const { return (png_get_color_type(png_, info_) & PNG_COLOR_MASK_COLOR) != 0; }

  /// Reads the pixels into rows, `pitch` bytes apart: a byte a pixel, or three of a colour.
  bool ReadPixels(void* first, int pitch);

  const std::string& message() const { return message_; }

 private:
  static void Fail(png_structp png, png_const_charp message);
  static void Ignore(png_structp, png_const_charp) {}
  static void Take(png_structp png, png_bytep data, std::size_t count);

  const std::vector<std::uint8_t>& bytes_;
  std::size_t at_ = 0;
  png_structp png_;
  png_infop info_ = nullptr;
  std::string message_ = "memory ran out";
};

}  // namespace picture
