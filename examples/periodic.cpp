// A woven pattern hides a stain on a surface, and a part has moved: both are read in the frequency
// domain.
//
//   periodic [FOLDER]
//
// draws cloth with a stain, removes the peaks of its threads from the spectrum, and tells by how
// much the picture differs from the surface without threads, before and after. Then it draws parts
// under a camera that has moved, finds how far by phase correlation, and compares. periodic.png in
// FOLDER (demo) shows the cloth, its spectrum, the spectrum without peaks, and what is left of the
// cloth. Fails where the pattern stays or the shift is not that of the drawing.
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "ky/frequency.h"
#include "ky/ky.h"
#include "support/frequencies.h"
#include "support/picture_file.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

using Grey = KyImage<KyBW8>;

constexpr int kSide = 400;

void RemoveThreads(const std::string& folder) {
  const Grey clean = frequencies::Cloth(kSide, kSide, false);
  const Grey cloth = frequencies::Cloth(kSide, kSide, true);
  auto spectrum = SameSize<KyComplex64>(cloth);
  Must(ImgSlowDFT(&cloth, &spectrum));
  const Grey before = frequencies::Picture(spectrum);
  const int removed = frequencies::RemovePeaks(spectrum);
  const Grey after = frequencies::Picture(spectrum);
  auto surface = SameSize<KyBW8>(cloth);
  Must(ImgSlowDFT(&spectrum, &spectrum, IMG_DFT_INVERSE));
  Must(ImgComplexReal(&spectrum, &surface));

  float noiseBefore = 0, noiseAfter = 0;
  Must(ImgRmsNoise(&cloth, &clean, noiseBefore));
  Must(ImgRmsNoise(&surface, &clean, noiseAfter));
  std::printf("threads: %.1f levels; with %d of %d frequencies removed: %.1f levels\n",
              double{noiseBefore}, removed, kSide * kSide, double{noiseAfter});
  if (noiseAfter > noiseBefore / 4) throw std::runtime_error("the threads are still there");

  auto sheet = NewImage<KyBW8>(2 * kSide, 2 * kSide);
  int panel = 0;
  for (const Grey* picture : {&cloth, &before, &after, static_cast<const Grey*>(&surface)}) {
    KyROI<KyBW8> place(&sheet, panel % 2 * kSide, panel / 2 * kSide, kSide, kSide);
    Must(ImgCopy(picture, &place));
    ++panel;
  }
  std::filesystem::create_directories(folder);
  picture::Write(sheet, folder + "/periodic.png");
  std::printf("%s/periodic.png\n", folder.c_str());
}

// Two views of one scene, with other noise in each.
void FindShift() {
  scene::Scene drawn = scene::Bundled(false);
  Grey first = scene::Draw(drawn);
  drawn.seed = 2;
  Grey second = scene::Draw(drawn);
  Must(KyGetError());
  constexpr int kWidth = 500, kHeight = 360;
  const KyROI<KyBW8> reference(&first, 70, 60, kWidth, kHeight);
  auto correlation = NewImage<KyBW8>(kWidth, kHeight);
  constexpr frequencies::Shift kShifts[] = {{0, 0}, {1, -1}, {37, -21}, {-64, 55}};
  std::printf("moved by    found\n");
  for (const auto& moved : kShifts) {
    const KyROI<KyBW8> picture(&second, 70 - moved.right, 60 - moved.down, kWidth, kHeight);
    const auto found = frequencies::FindShift(picture, reference, correlation);
    std::printf("%3d, %3d   %3d, %3d\n", moved.right, moved.down, found.right, found.down);
    if (found.right != moved.right || found.down != moved.down)
      throw std::runtime_error("this is not how far the camera has moved");
  }
}

void Run(const std::string& folder) {
  RemoveThreads(folder);
  FindShift();
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}
