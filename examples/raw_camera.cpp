// From what cameras deliver to pictures:
//
//   raw_camera [FOLDER]
//
// A simulated driver delivers a packed frame of 12 bits a pixel and a frame under a Bayer mosaic,
// both unevenly lit, and with them pictures of a white and of a dark surface. The frames are
// unpacked and given their colours straight from the driver's memory, corrected for shading in
// place, and written to FOLDER (demo) as PNG.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

constexpr int kWidth = 640, kHeight = 480;
constexpr int kPackedPitch = kWidth * 3 / 2;  // 2 pixels of 12 bits in 3 bytes

// How much of the light reaches a place, and what the sensor shows without any.
double Shading(int x, int y) {
  const double dx = (x - 0.35 * kWidth) / kWidth, dy = (y - 0.4 * kHeight) / kHeight;
  return 1 / (1 + 2.5 * (dx * dx + dy * dy));
}
constexpr int kDark = 160;  // of 4095

// Stands for a driver: what a sensor of 12 bits sees of a surface of the given level.
int Sensed(double level, int x, int y) {
  return static_cast<int>(std::clamp(kDark + level * 14 * Shading(x, y), 0.0, 4095.0));
}
using Buffer = std::vector<std::uint8_t>;
template <class Level>
Buffer GrabPacked(Level level) {
  Buffer frame(static_cast<std::size_t>(kPackedPitch) * kHeight);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; x += 2) {
      const int first = Sensed(level(x, y), x, y), second = Sensed(level(x + 1, y), x + 1, y);
      std::uint8_t* const at = &frame[std::size_t{0} + y * kPackedPitch + x / 2 * 3];
      at[0] = static_cast<std::uint8_t>(first);
      at[1] = static_cast<std::uint8_t>(first >> 8 | second << 4);
      at[2] = static_cast<std::uint8_t>(second >> 4);
    }
  return frame;
}
// The filter over a pixel lets one component through.
template <class Color>
Buffer GrabMosaic(Color color) {
  Buffer frame(static_cast<std::size_t>(kWidth) * kHeight);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const KyC24 c = color(x, y);
      const KyBW8 level = x % 2 != y % 2 ? c.c1 : y % 2 == 0 ? c.c0 : c.c2;
      frame[std::size_t{0} + y * kWidth + x] = static_cast<std::uint8_t>(Sensed(level, x, y) >> 4);
    }
  return frame;
}

KyImage<KyBW8> Unpacked(const Buffer& frame) {
  auto image = NewImage<KyBW8>(kWidth, kHeight);
  Must(ImgUnpack(frame.data(), kPackedPitch, KY_PACKED_MONO12P, &image));
  return image;
}
KyImage<KyC24> Colored(Buffer& frame) {
  KyImage<KyBW8> mosaic;
  Must(mosaic.Attach(frame.data(), kWidth, kHeight, kWidth));
  auto image = NewImage<KyC24>(kWidth, kHeight);
  Must(ImgConvertBayer(&mosaic, &image, KY_BAYER_RG));
  return image;
}

// The mean difference from what the scene is like.
float ErrorOf(const KyImage<KyBW8>& image, const KyImage<KyBW8>& scene) {
  auto difference = NewImage<KyBW8>(kWidth, kHeight);
  Must(ImgOper(KY_OPER_ABS_DIFFERENCE, &image, &scene, &difference));
  float deviation = 0, mean = 0;
  Must(ImgPixelStdDev(&difference, deviation, mean));
  return mean;
}

void Run(const std::string& folder) {
  std::filesystem::create_directories(folder);
  scene::Scene parts = scene::Bundled(false);
  const KyImage<KyBW8> bench = scene::Draw(parts);
  const auto scene = [&](int x, int y) { return bench.GetPixel(x, y); };
  const auto surface = [](double level) { return [=](int, int) { return level; }; };
  const auto write = [&](const auto& image, const char* name) {
    picture::Write(image, folder + "/" + name);
  };

  // Packed grey pixels: the references are a white and a dark picture.
  const Buffer packed = GrabPacked(scene);
  const KyImage<KyBW8> light = Unpacked(GrabPacked(surface(255)));
  const KyImage<KyBW8> dark = Unpacked(GrabPacked(surface(0)));
  KyImage<KyBW8> grey = Unpacked(packed);
  write(grey, "raw_grey.png");
  const float before = ErrorOf(grey, bench);
  Must(ImgUniformize(&grey, &light, 255, &dark, 0, &grey));
  write(grey, "raw_grey_corrected.png");
  const float after = ErrorOf(grey, bench);
  std::printf("the grey picture is off by %.1f levels, corrected by %.1f\n", double{before},
              double{after});
  if (after > 1) throw std::runtime_error("the correction does not give the scene back");

  // A mosaic: coloured parts on a grey bench.
  const auto colors = [&](int x, int y) {
    const KyBW8 level = bench.GetPixel(x, y);
    if (level < 140) return KyC24(level, level, level);
    const auto part = static_cast<KyBW8>(level * 3 / 5);
    return x < kWidth / 3       ? KyC24(level, part, 40)
           : x < 2 * kWidth / 3 ? KyC24(part, level, 60)
                                : KyC24(40, part, level);
  };
  Buffer mosaic = GrabMosaic(colors);
  Buffer whiteMosaic = GrabMosaic([](int, int) { return KyC24(255, 255, 255); });
  const KyImage<KyC24> white = Colored(whiteMosaic);
  KyImage<KyC24> color = Colored(mosaic);
  write(color, "raw_color.png");
  Must(ImgUniformize(&color, &white, KyC24(235, 235, 235), &color));
  write(color, "raw_color_corrected.png");
  std::printf("wrote four pictures to %s\n", folder.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}
