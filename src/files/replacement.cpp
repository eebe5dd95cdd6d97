#include "files/replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "foundation/frame.h"

namespace ky {
namespace {

const char* WhyNotMade() noexcept {
  switch (errno) {
    case ENOENT: return "there is no such folder";
    case EACCES: return "no file may be made in that folder";
    case ENOSPC: return "the disk is full";
    case ENAMETOOLONG: return "the name is too long";
    default: return "the file cannot be made";
  }
}

}  // namespace

KY_ERRORS Replacement::Open(const char* path) noexcept {
  if (std::strlen(path) >= sizeof target_)
    return Explain(KY_ERROR_FILE_OPEN, "the path is too long");
  // Where the path is a link, the file that it leads to is replaced, and the link stays.
  struct stat status = {};
  if (realpath(path, target_) == nullptr) {
    std::strcpy(target_, path);  // NOLINT: it fits
    if (lstat(path, &status) == 0 && S_ISLNK(status.st_mode))
      return Explain(KY_ERROR_FILE_OPEN, "the link leads to no file");
  }
  const bool replaces = stat(target_, &status) == 0;
  if (!replaces && errno != ENOENT) return Explain(KY_ERROR_FILE_OPEN, WhyNotMade());
  if (replaces && !S_ISREG(status.st_mode))
    return Explain(KY_ERROR_FILE_OPEN, "what has that name is no regular file");
  if (!MakeTemporary()) return Explain(KY_ERROR_FILE_OPEN, WhyNotMade());
  constexpr mode_t kPermissions = 07777;
  // Where the file system has no permissions there are none to keep.
  if (replaces && fchmod(descriptor_, status.st_mode & kPermissions) != 0) errno = 0;
  return KY_OK;
}

// Makes a file beside the target, under a name that no other file has and that is not too long.
// Names that another process with the same ID, in another container say, has left are passed over.
bool Replacement::MakeTemporary() noexcept {
  static std::atomic<unsigned> count{0};
  constexpr std::ptrdiff_t kLongestStem = 200;
  constexpr int kMostTries = 100;
  constexpr mode_t kReadAndWriteForAll = 0666;
  const char* const slash = std::strrchr(target_, '/');
  const char* const name = slash == nullptr ? target_ : slash + 1;
  const auto length = static_cast<std::ptrdiff_t>(std::strlen(name));
  const auto kept = static_cast<int>(name - target_ + std::min(length, kLongestStem));
  for (int i = 0; i < kMostTries && !exists_; ++i) {
    std::snprintf(temporary_, sizeof temporary_, "%.*s.%ld.%u.tmp", kept, target_,
                  static_cast<long>(getpid()), count.fetch_add(1));
    descriptor_ = open(temporary_, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kReadAndWriteForAll);
    exists_ = descriptor_ >= 0;
    if (!exists_ && errno != EEXIST) return false;
  }
  return exists_;
}

Replacement::~Replacement() {
  if (descriptor_ >= 0) close(descriptor_);
  if (exists_) unlink(temporary_);
}

bool Replacement::Flush() noexcept {
  for (std::size_t at = 0; at < used_ && !failed_;) {
    const ssize_t count = ::write(descriptor_, buffer_ + at, used_ - at);
    if (count >= 0)
      at += static_cast<std::size_t>(count);
    else
      failed_ = errno != EINTR;
  }
  used_ = 0;
  return !failed_;
}

bool Replacement::Write(const void* bytes, std::size_t count) noexcept {
  const auto* from = static_cast<const unsigned char*>(bytes);
  while (count > 0 && !failed_) {
    const std::size_t n = count < kBuffer - used_ ? count : kBuffer - used_;
    std::memcpy(buffer_ + used_, from, n);
    used_ += n, from += n, count -= n;
    if (used_ == kBuffer) Flush();
  }
  return !failed_;
}

KY_ERRORS Replacement::Commit() noexcept {
  if (!Flush())
    return Explain(KY_ERROR_FILE_WRITE, "the file cannot be written; the disk may be full");
  if (close(std::exchange(descriptor_, -1)) != 0)
    return Explain(KY_ERROR_FILE_CLOSE, "the file cannot be closed");
  if (std::rename(temporary_, target_) != 0)
    return Explain(KY_ERROR_FILE_WRITE, "the file cannot take the place of the one before");
  exists_ = false;
  return KY_OK;
}

}  // namespace ky
