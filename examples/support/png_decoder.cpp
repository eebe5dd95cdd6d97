#include "png_decoder.h"

#include <csetjmp>
#include <cstring>

namespace picture {

// Errors come back by a jump to the last setjmp, so that nothing may need a destructor in between.

PngDecoder::PngDecoder(const std::vector<std::uint8_t>& bytes)
    : bytes_(bytes), png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, this, Fail, Ignore)) {
  if (png_ == nullptr) return;
  info_ = png_create_info_struct(png_);
  png_set_read_fn(png_, this, Take);
}

PngDecoder::~PngDecoder() { png_destroy_read_struct(&png_, &info_, nullptr); }

bool PngDecoder::ReadHeader() {
  if (info_ == nullptr || setjmp(png_jmpbuf(png_)) != 0) return false;
  png_read_info(png_, info_);
  png_set_palette_to_rgb(png_);
  if (!isColor()) png_set_expand_gray_1_2_4_to_8(png_);
  png_set_strip_16(png_);
  png_set_strip_alpha(png_);
  return true;
}

bool PngDecoder::ReadPixels(void* first, int pitch) {
  if (setjmp(png_jmpbuf(png_)) != 0) return false;
  const int passes = png_set_interlace_handling(png_);
  png_start_read_image(png_);
  for (int pass = 0; pass < passes; ++pass)
    for (std::uint32_t y = 0; y < height(); ++y)
      png_read_row(png_, static_cast<png_bytep>(first) + std::ptrdiff_t{y} * pitch, nullptr);
  return true;
}

void PngDecoder::Fail(png_structp png, png_const_charp message) {
  static_cast<PngDecoder*>(png_get_error_ptr(png))->message_ = message;
  png_longjmp(png, 1);
}

void PngDecoder::Take(png_structp png, png_bytep data, std::size_t count) {
  auto& self = *static_cast<PngDecoder*>(png_get_io_ptr(png));
  if (count > self.bytes_.size() - self.at_) png_error(png, "it ends too early");
  std::memcpy(data, self.bytes_.data() + self.at_, count);
  self.at_ += count;
}

}  // namespace picture
