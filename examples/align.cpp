// Puts a turned part upright and unrolls a ring: the step before a part is compared with a master,
// or a print around a ring is read.
//
//   align [FOLDER]
//
// draws two parts and writes align.png to FOLDER (demo): above, the parts and the plate turned
// upright by two of its holes; below, the rim of the washer, unrolled.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

using Grey = KyImage<KyBW8>;

constexpr int kWidth = 320, kHeight = 240, kRim = 60;
constexpr scene::Part kPlate = {scene::Kind::kPlate, 215, 120, 42, 0.45f};
constexpr scene::Part kWasher = {scene::Kind::kWasher, 68, 75, 52, 0};

// The plate turned so that its axis is horizontal and its centre in the middle. In production the
// two pivots are holes that were measured; here they are known.
void TurnUpright(const Grey& parts, KyROI<KyBW8>& upright) {
  const float x = std::cos(kPlate.angle), y = std::sin(kPlate.angle);
  constexpr float kMiddleX = kWidth / 2.0f, kMiddleY = kHeight / 2.0f;
  Must(ImgRegister(&parts, &upright, kPlate.x, kPlate.y, kPlate.x + x, kPlate.y + y, kMiddleX,
                   kMiddleY, kMiddleX + 1, kMiddleY, 8, 0));
}

// The rim of the washer, its outer edge above. The tables serve for every washer in this place.
void UnrollRim(const Grey& parts, KyROI<KyBW8>& rim) {
  KyImage<KyBW16> xTable, yTable;
  Must(KySetAngleUnit(KY_ANGLE_DEGREES));
  Must(ImgSetCircleWarp(kWasher.x, kWasher.y, rim.GetHeight(), 0.4f * kWasher.size,
                        1.1f * kWasher.size, rim.GetWidth(), 0, 360, &xTable, &yTable));
  Must(ImgWarp(&parts, &rim, &xTable, &yTable, 0, 0));
}

void Run(const std::string& folder) {
  Grey result = NewImage<KyBW8>(2 * kWidth, kHeight + kRim);
  KyROI<KyBW8> left(&result, 0, 0, kWidth, kHeight), right(&result, kWidth, 0, kWidth, kHeight);
  KyROI<KyBW8> below(&result, 0, kHeight, 2 * kWidth, kRim);

  const Grey parts = scene::Draw({kWidth, kHeight, {kWasher, kPlate}});
  Must(KyGetError());
  Must(ImgCopy(&parts, &left));
  TurnUpright(parts, right);
  UnrollRim(parts, below);

  std::filesystem::create_directories(folder);
  const std::string path = folder + "/align.png";
  picture::Write(result, path);
  std::printf("%s\n", path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}
