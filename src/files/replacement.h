// Files that replace others.
#pragma once

#include <climits>
#include <cstddef>

#include "ky/status.h"

namespace ky {

// A file that is written beside another and takes its place when it is complete, so that a failure
// leaves that one as it was, and nothing else. What is no regular file is not replaced.
class Replacement {
 public:
  Replacement() = default;
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement();

  KY_ERRORS Open(const char* path) noexcept;
  // False when the bytes cannot be written; Commit fails then.
  bool Write(const void* bytes, std::size_t count) noexcept;
  KY_ERRORS Commit() noexcept;

 private:
  static constexpr std::size_t kBuffer = 1 << 14;

  bool MakeTemporary() noexcept;
  bool Flush() noexcept;

  int descriptor_ = -1;
  bool failed_ = false, exists_ = false;
  std::size_t used_ = 0;
  char target_[PATH_MAX], temporary_[PATH_MAX + 64];
  unsigned char buffer_[kBuffer];
};

}  // namespace ky
