// Pictures into files.
#include <cstdio>
#include <string_view>
#include <type_traits>

#include "files/png_writer.h"
#include "files/replacement.h"
#include "foundation/frame.h"
#include "ky/files.h"

namespace {

using ky::Replacement;
using ky::Rows;

void WriteSamples(const KyBW16* row, std::ptrdiff_t n, Replacement& file) noexcept {
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    const unsigned char sample[] = {static_cast<unsigned char>(row[i] >> 8),
                                    static_cast<unsigned char>(row[i])};
    file.Write(sample, sizeof sample);
  }
}
template <class T>
void WriteSamples(const T* row, std::ptrdiff_t n, Replacement& file) noexcept {
  file.Write(row, static_cast<std::size_t>(n) * sizeof(T));
}

template <class T>
void WritePnm(const Rows<const T>& rows, Replacement& file) noexcept {
  char header[64];
  const int length = std::snprintf(header, sizeof header, "%s\n%td %td\n%d\n",
                                   std::is_same_v<T, KyC24> ? "P6" : "P5", rows.width, rows.height,
                                   std::is_same_v<T, KyBW16> ? 65535 : 255);
  file.Write(header, static_cast<std::size_t>(length));
  for (std::ptrdiff_t y = 0; y < rows.height; ++y) WriteSamples(rows.Row(y), rows.width, file);
}

template <class T>
KY_ERRORS Save(const char* name, const KyROI<T>* source, const char* path) noexcept {
  return ky::Call(name, [&] {
    Rows<const T> rows;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    if (rows.Empty()) return ky::Explain(KY_ERROR_NO_PIXELS, "source has no columns or rows");
    if (path == nullptr) return ky::Explain(KY_ERROR_FILE_OPEN, "path is null");
    constexpr bool kColor = std::is_same_v<T, KyC24>;
    const std::string_view file = path;
    const bool isPng = file.ends_with(".png");
    if (!isPng && !file.ends_with(kColor ? ".ppm" : ".pgm"))
      return ky::Explain(KY_ERROR_FILE_FORMAT, kColor ? "path ends neither in .png nor in .ppm"
                                                      : "path ends neither in .png nor in .pgm");
    Replacement replacement;
    if (const KY_ERRORS error = replacement.Open(path)) return error;
    if (isPng) {
      if (const KY_ERRORS error = ky::WritePng(rows, replacement)) return error;
    } else {
      WritePnm(rows, replacement);
    }
    return replacement.Commit();
  });
}

}  // namespace

KY_ERRORS ImgSave(const KyROI<KyBW8>* source, const char* path) noexcept {
  return Save("ImgSave (BW8)", source, path);
}
KY_ERRORS ImgSave(const KyROI<KyBW16>* source, const char* path) noexcept {
  return Save("ImgSave (BW16)", source, path);
}
KY_ERRORS ImgSave(const KyROI<KyC24>* source, const char* path) noexcept {
  return Save("ImgSave (C24)", source, path);
}
