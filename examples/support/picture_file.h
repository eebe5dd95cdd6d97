// Pictures on disk, with failures as exceptions that name the file.
#pragma once

#include <stdexcept>
#include <string>

#include "ky/files.h"

namespace picture {

/// Why a picture cannot be read or written: the file's name and what is wrong with it.
struct FileError : std::runtime_error {
  explicit FileError(const std::string& path)
      : std::runtime_error(path + ": " + KyGetErrorMessage()) {}
};

/// Reads a picture as pixels of T. Throws FileError.
template <class T>
KyImage<T> Read(const std::string& path) {
  KyImage<T> image;
  if (ImgLoad(path.c_str(), &image) != KY_OK) throw FileError(path);
  return image;
}

/// Writes a picture. Throws FileError.
template <class T>
void Write(const KyROI<T>& roi, const std::string& path) {
  if (ImgSave(&roi, path.c_str()) != KY_OK) throw FileError(path);
}

}  // namespace picture
