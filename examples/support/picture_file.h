// Pictures on disk: PNG, and PGM and PPM in their binary forms.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "ky/image.h"

namespace picture {

/// Why a picture cannot be read or written: the file's name and what is wrong with it.
struct FileError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads a PNG, PGM (P5) or PPM (P6) file, whatever its name, as T, which is KyBW8 or KyC24 (red,
/// green, blue). A colour file becomes its luma, a grey one three equal components. Samples are
/// those of the file: of 16 bits the higher 8 count, gamma and transparency do not. Throws
/// FileError.
template <class T>
KyImage<T> Read(const std::string& path);

/// The same from the bytes of a file; `name` stands in the message.
template <class T>
KyImage<T> Decode(const std::vector<std::uint8_t>& bytes, const std::string& name);

/// Writes a PNG, or a PGM or PPM where the name ends in .pgm or .ppm. Throws FileError, also for an
/// ROI without pixels and for a name that belongs to something other than a regular file; what was
/// there before stays then.
template <class T>
void Write(const KyROI<T>& roi, const std::string& path);

extern template KyImage<KyBW8> Read<KyBW8>(const std::string&);
extern template KyImage<KyC24> Read<KyC24>(const std::string&);
extern template KyImage<KyBW8> Decode<KyBW8>(const std::vector<std::uint8_t>&, const std::string&);
extern template KyImage<KyC24> Decode<KyC24>(const std::vector<std::uint8_t>&, const std::string&);
extern template void Write<KyBW8>(const KyROI<KyBW8>&, const std::string&);
extern template void Write<KyC24>(const KyROI<KyC24>&, const std::string&);

}  // namespace picture
