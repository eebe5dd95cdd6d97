// Pictures in files as they are read: the samples of the file, and nothing else.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ky/files.h"

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

template <class T>
KyImage<T> Decoded(const Bytes& bytes) {
  KyImage<T> image;
  EXPECT_EQ(ImgDecode(bytes.data(), bytes.size(), &image), KY_OK) << KyGetErrorMessage();
  return image;
}

template <class T>
std::vector<int> LevelsOf(const KyImage<T>& image) {
  std::vector<int> levels;
  for (int i = 0; i < image.GetWidth() * image.GetHeight(); ++i)
    levels.push_back(image.GetPixel(i % image.GetWidth(), i / image.GetWidth()));
  return levels;
}

// What 8 bits become in 16.
std::vector<int> Times257(std::vector<int> levels) {
  for (int& level : levels) level *= 257;
  return levels;
}

TEST(PngFiles, AreReadAsTheyAre) {
  for (const auto& file : kFiles) {
    SCOPED_TRACE(file.what);
    const Bytes bytes = BytesOf(file.bytes);
    const bool isDeep = &file == kFiles;
    EXPECT_EQ(LevelsOf(Decoded<KyBW8>(bytes)), file.levels);
    EXPECT_EQ(LevelsOf(Decoded<KyBW16>(bytes)),
              isDeep ? std::vector({0x80FF, 0x0001, 0xFF00}) : Times257(file.levels));
    const KyImage<KyC24> color = Decoded<KyC24>(bytes);
    for (std::size_t i = 0; i < file.levels.size(); ++i) {
      const auto level = static_cast<KyBW8>(file.levels[i]);
      EXPECT_EQ(color.GetPixel(static_cast<int>(i) % color.GetWidth(),
                               static_cast<int>(i) / color.GetWidth()),
                KyC24(level, level, level));
    }
  }
}

TEST(PngFiles, DamagedOnesAreRefused) {
  for (const auto& file : kFiles) {
    SCOPED_TRACE(file.what);
    const Bytes whole = BytesOf(file.bytes);
    const std::size_t end = whole.size() - 16;  // of the pixels; their check sum and IEND follow
    KyImage<KyBW8> image(7, 7);
    for (std::size_t length = 8; length < end; ++length)
      EXPECT_EQ(ImgDecode(whole.data(), length, &image), KY_ERROR_FILE_READ);
    Bytes damaged = whole;
    damaged[damaged.size() - 20] ^= 1;  // in the compressed pixels, or their check sum
    EXPECT_EQ(ImgDecode(damaged.data(), damaged.size(), &image), KY_ERROR_FILE_READ);
    EXPECT_EQ(image.GetWidth(), 7);
  }
}

TEST(PnmFiles, SamplesOfEveryMaximum) {
  const struct {
    std::string bytes;
    std::vector<int> grey, deep;
  } cases[] = {
      {"P5\n3 1\n255\n\x01\x80\xFF", {1, 128, 255}, {}},
      {"P5 # comment\n#\n2\t1 1 \x01\x01", {255, 255}, {}},
      {"P5 3 1 6 " + std::string("\x00\x02\x06", 3), {0, 85, 255}, {}},
      {"P5 2 1 65535 \x12\x34\xFF\xFF", {0x12, 255}, {0x1234, 0xFFFF}},
      {"P5 1 2 4095 " + std::string("\x0F\xFF\x00\x10", 4), {255, 1}, {4095, 16}},
      {"P6 1 1 255 \x0A\x0A\x0A", {10}, {}},
      {"P6 1 1 511 " + std::string("\x01\xFF\x01\xFF\x01\xFF", 6), {255}, {}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.bytes);
    const Bytes bytes(one.bytes.begin(), one.bytes.end());
    EXPECT_EQ(LevelsOf(Decoded<KyBW8>(bytes)), one.grey);
    EXPECT_EQ(LevelsOf(Decoded<KyBW16>(bytes)), one.deep.empty() ? Times257(one.grey) : one.deep);
    const auto level = static_cast<KyBW8>(one.grey[0]);
    EXPECT_EQ(Decoded<KyC24>(bytes).GetPixel(0, 0), KyC24(level, level, level));
  }
  const std::pair<std::string, KY_ERRORS> bad[] = {
      {"P5 1 1 255", KY_ERROR_FILE_FORMAT},
      {"P5 1 1 0 \x01", KY_ERROR_FILE_FORMAT},
      {"P5 1 1 65536 \x01", KY_ERROR_FILE_FORMAT},
      {"P5 0 1 255 ", KY_ERROR_FILE_FORMAT},
      {"P5 x 1 255 ", KY_ERROR_FILE_FORMAT},
      {"P51 1 1 255 \x01", KY_ERROR_FILE_FORMAT},
      {"P2 1 1 255 1", KY_ERROR_FILE_FORMAT},
      {"P5 2 1 255 \x01", KY_ERROR_FILE_READ},
      {"P6 1 1 300 \x01\x01", KY_ERROR_FILE_READ},
      {"P5 1 1 9 \x0A", KY_ERROR_FILE_READ},
      {"P5 268435456 268435456 255 ", KY_ERROR_FILE_READ},
  };
  for (const auto& [bytes, code] : bad) {
    SCOPED_TRACE(bytes);
    KyImage<KyC24> image;
    EXPECT_EQ(ImgDecode(bytes.data(), bytes.size(), &image), code);
  }
}

}  // namespace
