#include "files/replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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
    default: return "the file cannot be made";
  }
}

}  // namespace

KY_ERRORS Replacement::Open(const char* path) noexcept {
  if (std::strlen(path) >= sizeof target_)
    return Explain(KY_ERROR_FILE_OPEN, "the path is too long");
  // A link goes on leading to the file.
  if (realpath(path, target_) == nullptr) std::strcpy(target_, path);  // NOLINT: it fits
  struct stat status = {};
  const bool replaces = stat(target_, &status) == 0;
  if (replaces && !S_ISREG(status.st_mode))
    return Explain(KY_ERROR_FILE_OPEN, "what has that name is no regular file");
  static std::atomic<unsigned> count{0};
  std::snprintf(temporary_, sizeof temporary_, "%s.%ld.%u.tmp", target_,
                static_cast<long>(getpid()), count.fetch_add(1));
  constexpr mode_t kReadAndWriteForAll = 0666, kPermissions = 07777;
  descriptor_ = open(temporary_, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kReadAndWriteForAll);
  if (descriptor_ < 0) return Explain(KY_ERROR_FILE_OPEN, WhyNotMade());
  exists_ = true;
  // Where the file system has no permissions there are none to keep.
  if (replaces && fchmod(descriptor_, status.st_mode & kPermissions) != 0) errno = 0;
  return KY_OK;
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
