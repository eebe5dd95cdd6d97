#include "files/png_writer.h"

#include <png.h>

#include <bit>
#include <csetjmp>
#include <type_traits>

#include "files/png_memory.h"
#include "foundation/frame.h"

namespace ky {
namespace {

class PngWriter {
 public:
  explicit PngWriter(Replacement& file) noexcept
      : file_(file),
        png_(png_create_write_struct_2(PNG_LIBPNG_VER_STRING, this, Fail, Ignore, &memory_,
                                       PngMemory::Allocate, PngMemory::Free)) {
    if (png_ == nullptr) return;
    info_ = png_create_info_struct(png_);
    png_set_write_fn(png_, this, Give, Flush);
  }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;
  ~PngWriter() { png_destroy_write_struct(&png_, &info_); }

  template <class T>
  KY_ERRORS Write(const Rows<const T>& rows) noexcept {
    if (info_ == nullptr) return KY_ERROR_NOT_ENOUGH_MEMORY;
    // Failures come back here by a jump, over nothing that needs a destructor.
    if (setjmp(png_jmpbuf(png_)) != 0)
      return memory_.failed ? KY_ERROR_NOT_ENOUGH_MEMORY
                            : Explain(KY_ERROR_FILE_WRITE, "the picture cannot be written as PNG");
    constexpr bool kColor = std::is_same_v<T, KyC24>;
    constexpr int kBits = std::is_same_v<T, KyBW16> ? 16 : 8;
    png_set_IHDR(png_, info_, static_cast<png_uint_32>(rows.width),
                 static_cast<png_uint_32>(rows.height), kBits,
                 kColor ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    // Small files where that is quick: large pictures would take seconds.
    constexpr std::ptrdiff_t kLarge = 1 << 20;
    if (rows.width * rows.height > kLarge) {
      png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_NO_FILTERS);
      png_set_compression_level(png_, 3);
    }
    png_write_info(png_, info_);
    if (kBits == 16 && std::endian::native == std::endian::little) png_set_swap(png_);
    for (std::ptrdiff_t y = 0; y < rows.height; ++y)
      png_write_row(png_, reinterpret_cast<png_const_bytep>(rows.Row(y)));
    png_write_end(png_, nullptr);
    return KY_OK;
  }

 private:
  static void Fail(png_structp png, png_const_charp) { png_longjmp(png, 1); }
  static void Ignore(png_structp, png_const_charp) {}
  static void Flush(png_structp) {}
  static void Give(png_structp png, png_bytep data, std::size_t count) {
    // What the file cannot take it reports at its end.
    static_cast<PngWriter*>(png_get_io_ptr(png))->file_.Write(data, count);
  }

  Replacement& file_;
  PngMemory memory_;
  png_structp png_;
  png_infop info_ = nullptr;
};

}  // namespace

template <class T>
KY_ERRORS WritePng(const Rows<const T>& rows, Replacement& file) noexcept {
  return PngWriter(file).Write(rows);
}

template KY_ERRORS WritePng(const Rows<const KyBW8>&, Replacement&) noexcept;
template KY_ERRORS WritePng(const Rows<const KyBW16>&, Replacement&) noexcept;
template KY_ERRORS WritePng(const Rows<const KyC24>&, Replacement&) noexcept;

}  // namespace ky
