// PNG files as the examples read them: the samples of the file, and nothing else.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/picture_file.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes BytesOf(std::string_view hexadecimal) {
  Bytes bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13, 'I', 'H', 'D', 'R'};
  for (std::size_t i = 0; i < hexadecimal.size(); i += 2)
    bytes.push_back(
        static_cast<std::uint8_t>(std::stoi(std::string(hexadecimal.substr(i, 2)), nullptr, 16)));
  return bytes;
}

// Files from their header's data on, and their pixels.
const struct {
  const char* what;
  const char* bytes;
  std::vector<int> levels;
} kFiles[] = {
    {"80FF 0001 FF00, 16 bits, which a gamma of 1 would brighten",
     "000000030000000110000000006e1b972b0000000467414d41000186a031e8965f0000000f4944415478da6368f8"
     "cfc0f89f01000a0302805247c45c0000000049454e44ae426082",
     {128, 0, 255}},
    {"levels of which one is transparent and one half transparent",
     "000000020000000108040000005e2bb7010000000d4944415478da6338c1c0d5000003b90153b93b29cb00000000"
     "49454e44ae426082",
     {200, 10}},
    {"a palette whose first colours are transparent",
     "00000003000000010203000000668efc2700000009504c54453232325a5a5affffff0008d4c00000000374524e53"
     "0080ffecf7b3180000000a4944415478da63900000001a001980008ebb0000000049454e44ae426082",
     {50, 90, 255}},
    {"one bit",
     "000000090000000101000000"
     "0024b9b9d00000000b4944415478da63d8d0000001e3013120f3791e0000000049454e44ae426082",
     {255, 0, 255, 255, 0, 0, 0, 0, 255}},
    {"interlaced rows",
     "0000000300000002080000000"
     "1cf180950000000124944415478da636064606660626061650300004e0016cb5302d00000000049454e44ae42608"
     "2",
     {1, 2, 3, 4, 5, 6}},
};

TEST(PngFiles, AreReadAsTheyAre) {
  for (const auto& file : kFiles) {
    SCOPED_TRACE(file.what);
    const KyImage<KyBW8> grey = picture::Decode<KyBW8>(BytesOf(file.bytes), "file");
    const KyImage<KyC24> color = picture::Decode<KyC24>(BytesOf(file.bytes), "file");
    std::vector<int> levels;
    for (int y = 0; y < grey.GetHeight(); ++y)
      for (int x = 0; x < grey.GetWidth(); ++x) {
        const KyBW8 level = grey.GetPixel(x, y);
        levels.push_back(level);
        EXPECT_EQ(color.GetPixel(x, y), KyC24(level, level, level));
      }
    EXPECT_EQ(levels, file.levels);
  }
}

TEST(PngFiles, DamagedOnesAreRefused) {
  for (const auto& file : kFiles) {
    SCOPED_TRACE(file.what);
    const Bytes whole = BytesOf(file.bytes);
    const std::size_t end = whole.size() - 16;  // of the pixels; their check sum and IEND follow
    for (std::size_t length = 8; length < end; ++length)
      EXPECT_THROW(picture::Decode<KyBW8>(Bytes(whole.begin(), whole.begin() + length), "file"),
                   picture::FileError);
  }
}

}  // namespace
