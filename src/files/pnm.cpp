#include "files/pnm.h"

#include <type_traits>

#include "files/picture.h"

namespace ky {
namespace {

// The numbers of a header, after its magic number: separated by white space, with comments from #
// to the end of a line.
class Numbers {
 public:
  explicit Numbers(const Bytes& bytes) noexcept : bytes_(bytes) {}

  // The next number, from 0 to `most`; false when there is none.
  bool Next(std::int64_t most, std::int64_t& number) noexcept {
    const std::size_t before = at_;
    SkipSpace();
    if (at_ == before || !IsDigit(Peek())) return false;
    for (number = 0; IsDigit(Peek()) && number <= most; ++at_)
      number = 10 * number + (Peek() - '0');
    return number <= most;
  }
  // Where the pixels begin, one white space after the last number.
  bool End(std::size_t& at) const noexcept {
    at = at_ + 1;
    return IsSpace(Peek());
  }

 private:
  static bool IsDigit(int c) noexcept { return c >= '0' && c <= '9'; }
  static bool IsSpace(int c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }
  int Peek() const noexcept { return at_ < bytes_.size ? bytes_.first[at_] : -1; }
  void SkipSpace() noexcept {
    while (IsSpace(Peek()) || Peek() == '#')
      if (bytes_.first[at_++] == '#')
        while (Peek() != '\n' && Peek() != -1) ++at_;
  }

  const Bytes& bytes_;
  std::size_t at_ = 2;
};

// How samples of a file become those of T: both as the header of the library says.
template <class Sample>
Sample Scaled(std::int64_t v, std::int64_t maximum) noexcept {
  if (sizeof(Sample) > 1 && maximum > 255) return static_cast<Sample>(v);
  return static_cast<Sample>(maximum > 255 ? v * 256 / (maximum + 1)
                                           : (v * 255 + maximum / 2) / maximum);
}

}  // namespace

KY_ERRORS ReadPnmHeader(const Bytes& bytes, PnmHeader& header) noexcept {
  Numbers numbers(bytes);
  const bool complete = numbers.Next(kMostPixels, header.width) &&
                        numbers.Next(kMostPixels, header.height) &&
                        numbers.Next(65535, header.maximum) && numbers.End(header.pixels);
  if (complete && header.maximum > 0) return KY_OK;
  return Explain(KY_ERROR_FILE_FORMAT, "the header of the PGM or PPM file is damaged");
}

template <class T>
KY_ERRORS ReadPnm(const Bytes& bytes, const PnmHeader& header, KyImage<T>& image) noexcept {
  using Sample = std::conditional_t<std::is_same_v<T, KyC24>, KyBW8, T>;
  constexpr std::size_t kSamples = std::is_same_v<T, KyC24> ? 3 : 1;
  const std::size_t size = header.maximum > 255 ? 2 : 1;
  const std::size_t samples = static_cast<std::size_t>(header.width) * kSamples;
  if (samples != 0 &&
      (bytes.size - header.pixels) / (samples * size) < static_cast<std::size_t>(header.height))
    return EndsTooEarly();
  KyImage<T> made;
  if (const KY_ERRORS error = MakeImage(made, header.width, header.height)) return error;
  const std::uint8_t* from = bytes.first + header.pixels;
  for (int y = 0; y < made.GetHeight(); ++y) {
    auto* const to = static_cast<Sample*>(made.GetPixelPtr(0, y));
    for (std::size_t i = 0; i < samples; ++i, from += size) {
      const std::int64_t v = size == 1 ? from[0] : from[0] << 8 | from[1];
      if (v > header.maximum)
        return Explain(KY_ERROR_FILE_READ, "the file has samples above its maximum");
      to[i] = header.maximum == 255 ? static_cast<Sample>(v) : Scaled<Sample>(v, header.maximum);
    }
  }
  image = static_cast<KyImage<T>&&>(made);
  return KY_OK;
}

template KY_ERRORS ReadPnm(const Bytes&, const PnmHeader&, KyImage<KyBW8>&) noexcept;
template KY_ERRORS ReadPnm(const Bytes&, const PnmHeader&, KyImage<KyBW16>&) noexcept;
template KY_ERRORS ReadPnm(const Bytes&, const PnmHeader&, KyImage<KyC24>&) noexcept;

}  // namespace ky
