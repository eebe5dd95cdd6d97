// Works on a camera's own memory: nothing is copied, and nothing outside the region of interest is
// written.
//
//   camera
//
// A simulated driver hands out one buffer after the other. Each is wrapped in an image, measured,
// and darkened in place around the middle; the driver then finds the result in its buffer.
#include <array>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "ky/ky.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

constexpr int kWidth = 320, kHeight = 240;
// Drivers pad rows as their hardware needs it.
constexpr int kPitch = 384;

// Stands for a driver: it owns some buffers and fills them in turn.
class Camera {
 public:
  Camera() {
    for (auto& buffer : buffers_) buffer.assign(static_cast<std::size_t>(kPitch) * kHeight, kPad);
  }
  std::uint8_t* Grab() {
    std::vector<std::uint8_t>& buffer = buffers_[grabbed_ % buffers_.size()];
    scene::Scene parts{kWidth, kHeight, {}, ++grabbed_};
    parts.parts = {{scene::Kind::kPlate, 160, 120, 40, 0.1f * static_cast<float>(grabbed_)}};
    const KyImage<KyBW8> picture = scene::Draw(parts);
    KyImage<KyBW8> sensor;
    Must(sensor.Attach(buffer.data(), kWidth, kHeight, kPitch));
    Must(ImgCopy(&picture, &sensor));
    return buffer.data();
  }
  static constexpr std::uint8_t kPad = 0xA5;

 private:
  std::array<std::vector<std::uint8_t>, 3> buffers_;
  unsigned grabbed_ = 0;
};

void Check(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

void Run() {
  Camera camera;
  std::printf("%5s  %-14s %6s %9s\n", "frame", "buffer", "mean", "deviation");
  for (int frame = 1; frame <= 6; ++frame) {
    std::uint8_t* const buffer = camera.Grab();
    KyImage<KyBW8> image;
    Must(image.Attach(buffer, kWidth, kHeight, kPitch));
    KyROI<KyBW8> middle(&image, kWidth / 4, kHeight / 4, kWidth / 2, kHeight / 2);

    float deviation = 0, mean = 0;
    Must(ImgPixelStdDev(&middle, deviation, mean));
    std::printf("%5d  %-14p %6.1f %9.1f\n", frame, static_cast<void*>(buffer), double{mean},
                double{deviation});

    const KyBW8 before = image.GetPixel(kWidth / 2, kHeight / 2);
    const KyBW8 outside = image.GetPixel(0, kHeight / 2);
    Must(ImgOper(KY_OPER_SHIFT_RIGHT, &middle, KyBW8{1}, &middle));
    const std::uint8_t* const row = buffer + kPitch * (kHeight / 2);
    Check(row[kWidth / 2] == before / 2, "the driver does not see the result");
    Check(row[0] == outside && row[kWidth] == Camera::kPad, "something else was written");
  }
  std::puts("The driver's buffers hold the results; their padding is as it was.");
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 0, "", [] { Run(); });
}
