#include "files/bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "files/picture.h"
#include "foundation/frame.h"

namespace ky {
namespace {

constexpr std::string_view kPng = "\x89PNG\r\n\x1a\n", kPgm = "P5", kPpm = "P6";

bool StartsWith(const Bytes& bytes, std::string_view magic) noexcept {
  return bytes.size >= magic.size() &&
         std::equal(magic.begin(), magic.end(), bytes.first,
                    [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

const char* WhyNotOpened() noexcept {
  switch (errno) {
    case ENOENT: return "there is no such file";
    case EACCES: return "the file may not be read";
    default: return "the file cannot be opened";
  }
}

class Descriptor {
 public:
  explicit Descriptor(const char* path) noexcept
      : number_(open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  int number() const noexcept { return number_; }
  // Pipes are refused: their other end may never be opened. Reads from devices wait for data, as
  // usual.
  bool IsUsable() const noexcept {
    struct stat status = {};
    return fstat(number_, &status) == 0 && !S_ISFIFO(status.st_mode) &&
           fcntl(number_, F_SETFL, O_RDONLY) == 0;
  }

 private:
  int number_;
};

}  // namespace

FileKind KindOf(const Bytes& bytes) noexcept {
  if (StartsWith(bytes, kPng)) return FileKind::kPng;
  if (StartsWith(bytes, kPgm)) return FileKind::kPgm;
  return StartsWith(bytes, kPpm) ? FileKind::kPpm : FileKind::kOther;
}

KY_ERRORS ReadFile(const char* path, Growing<std::uint8_t>& contents) noexcept {
  constexpr std::size_t kChunk = 1 << 16, kMost = std::size_t{kMostPixels} * 8;
  const Descriptor file(path);
  if (file.number() < 0) return Explain(KY_ERROR_FILE_OPEN, WhyNotOpened());
  if (!file.IsUsable())
    return Explain(KY_ERROR_FILE_OPEN, "the file is a pipe: read it, and call ImgDecode");
  for (;;) {
    if (contents.size() > kMost) return TooLarge();
    if (!contents.Reserve(kChunk)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    const ssize_t count = read(file.number(), contents.end(), kChunk);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0)
      return Explain(KY_ERROR_FILE_READ, errno == EISDIR ? "what has that name is a folder"
                                                         : "the file cannot be read");
    if (count == 0) return KY_OK;
    contents.Resize(contents.size() + static_cast<std::size_t>(count));
    // The rest of a file that does not begin like a picture is not read: some devices never end.
    if (contents.size() >= kPng.size() &&
        KindOf({contents.begin(), contents.size()}) == FileKind::kOther)
      return KY_OK;
  }
}

}  // namespace ky
