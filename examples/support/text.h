// Text for reports, and text files.
#pragma once

#include <cstdio>
#include <string>

namespace text {

/// As std::printf, into a string of at most 255 characters.
template <class... T>
std::string Format(const char* format, T... values) {
  char line[256];
  std::snprintf(line, sizeof line, format, values...);
  return line;
}

/// Writes a file. Throws std::runtime_error.
void Write(const std::string& text, const std::string& path);

}  // namespace text
