#include "text.h"

#include <fstream>
#include <stdexcept>

namespace text {

void Write(const std::string& text, const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error(path + ": cannot be written");
}

}  // namespace text
