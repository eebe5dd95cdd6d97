#include "files/png_reader.h"

#include <bit>
#include <csetjmp>
#include <cstring>

#include "files/picture.h"

namespace ky {

// Errors come back by a jump to the last setjmp, so that nothing may need a destructor in between.

PngReader::PngReader(const Bytes& bytes) noexcept
    : bytes_(bytes),
      png_(png_create_read_struct_2(PNG_LIBPNG_VER_STRING, this, Fail, Ignore, &memory_,
                                    PngMemory::Allocate, PngMemory::Free)) {
  if (png_ == nullptr) return;
  info_ = png_create_info_struct(png_);
  png_set_read_fn(png_, this, Take);
}

PngReader::~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }

KY_ERRORS PngReader::Error() const noexcept {
  if (memory_.failed) return KY_ERROR_NOT_ENOUGH_MEMORY;
  return endsTooEarly_ ? EndsTooEarly() : Explain(KY_ERROR_FILE_READ, "the PNG file is damaged");
}

KY_ERRORS PngReader::ReadHeader(bool mayBeDeep) noexcept {
  if (info_ == nullptr) return KY_ERROR_NOT_ENOUGH_MEMORY;
  if (setjmp(png_jmpbuf(png_)) != 0) return Error();
  png_read_info(png_, info_);
  png_set_palette_to_rgb(png_);
  if (!IsColor()) png_set_expand_gray_1_2_4_to_8(png_);
  deep_ = mayBeDeep && !IsColor() && png_get_bit_depth(png_, info_) == 16;
  if (!deep_)
    png_set_strip_16(png_);
  else if (std::endian::native == std::endian::little)
    png_set_swap(png_);
  png_set_strip_alpha(png_);
  return KY_OK;
}

KY_ERRORS PngReader::ReadPixels(void* first, int pitch) noexcept {
  if (setjmp(png_jmpbuf(png_)) != 0) return Error();
  const int passes = png_set_interlace_handling(png_);
  png_start_read_image(png_);
  for (int pass = 0; pass < passes; ++pass)
    for (std::uint32_t y = 0; y < height(); ++y)
      png_read_row(png_, static_cast<png_bytep>(first) + std::ptrdiff_t{y} * pitch, nullptr);
  return KY_OK;
}

void PngReader::Fail(png_structp png, png_const_charp) { png_longjmp(png, 1); }

void PngReader::Take(png_structp png, png_bytep data, std::size_t count) {
  auto& self = *static_cast<PngReader*>(png_get_io_ptr(png));
  if (count > self.bytes_.size - self.at_) {
    self.endsTooEarly_ = true;
    png_longjmp(png, 1);
  }
  std::memcpy(data, self.bytes_.first + self.at_, count);
  self.at_ += count;
}

}  // namespace ky
