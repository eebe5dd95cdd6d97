// Finds a part by a coarse-to-fine search: everywhere in the smallest level of a pyramid, then,
// from level to level, only around the place that the level before has given.
//
//   search [FOLDER]
//
// draws parts and a noisy picture of them, finds a washer in it, and writes search.png to FOLDER
// (demo): the picture with a frame around what was found. It fails when that is the wrong place.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <string>

#include "ky/ky.h"
#include "support/drawing.h"
#include "support/picture_file.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

constexpr int kLevels = 4, kSide = 128, kReach = 2;
constexpr int kPartX = 440, kPartY = 300;

scene::Scene Parts(unsigned seed) {
  return {640,
          480,
          {{scene::Kind::kPlate, 180, 130, 45, 0.3f},
           {scene::Kind::kWasher, 430, 110, 52, 0, true},
           {scene::Kind::kBolt, 170, 350, 40, 0.8f},
           {scene::Kind::kWasher, kPartX, kPartY, 52, 0}},
          seed};
}

struct Match {
  draw::Point at = {0, 0};
  float difference = std::numeric_limits<float>::infinity();
};

// The best place of the part with its upper left corner from `first` to `last`. `tried` counts.
Match Search(const KyROI<KyBW8>& level, const KyROI<KyBW8>& part, draw::Point first,
             draw::Point last, long& tried) {
  Match best;
  // An ROI does not change its parent's pixels here, but could.
  KyROI<KyBW8> window(const_cast<KyROI<KyBW8>*>(&level), 0, 0, part.GetWidth(), part.GetHeight());
  for (int y = std::max(first.y, 0); y <= std::min(last.y, level.GetHeight() - part.GetHeight());
       ++y) {
    for (int x = std::max(first.x, 0); x <= std::min(last.x, level.GetWidth() - part.GetWidth());
         ++x) {
      window.SetPlacement(x, y, part.GetWidth(), part.GetHeight());
      float difference = 0;
      Must(ImgRmsNoise(&window, &part, difference));
      ++tried;
      if (difference < best.difference) best = {{x, y}, difference};
    }
  }
  return best;
}

Match SearchPyramid(const KyPyramid& picture, const KyPyramid& part) {
  const int smallest = picture.GetNumLevels() - 1;
  Match match;
  for (int i = smallest; i >= 0; --i) {
    const KyROI<KyBW8>& level = *picture.GetBW8Level(i);
    const draw::Point twice = {2 * match.at.x, 2 * match.at.y};
    const draw::Point first = {twice.x - kReach, twice.y - kReach};
    const draw::Point last = {twice.x + kReach, twice.y + kReach};
    long tried = 0;
    match = i == smallest ? Search(level, *part.GetBW8Level(i), {0, 0},
                                   {level.GetWidth(), level.GetHeight()}, tried)
                          : Search(level, *part.GetBW8Level(i), first, last, tried);
    std::printf("level %d: %5ld places, best (%d, %d), rms difference %.1f\n", i, tried, match.at.x,
                match.at.y, static_cast<double>(match.difference));
  }
  return match;
}

void Run(const std::string& folder) {
  // The part as it was taught, and a later picture with other noise.
  KyImage<KyBW8> master = scene::Draw(Parts(1)), picture = scene::Draw(Parts(2));
  Must(KyGetError());
  const draw::Point taught = {kPartX - kSide / 2, kPartY - kSide / 2};
  const KyROI<KyBW8> part(&master, taught.x, taught.y, kSide, kSide);

  KyPyramid parts, pictures;
  for (KyPyramid* pyramid : {&parts, &pictures}) Must(pyramid->SetNumLevels(kLevels));
  Must(parts.Build(&part));
  Must(pictures.Build(&picture));
  const Match match = SearchPyramid(pictures, parts);

  KyImage<KyC24> result = SameSize<KyC24>(picture);
  Must(ImgOper(KY_OPER_COPY, &picture, &result));
  draw::Frame(result, {match.at.x, match.at.y, kSide, kSide}, {255, 40, 40});
  std::filesystem::create_directories(folder);
  const std::string path = folder + "/search.png";
  picture::Write(result, path);
  std::printf("%s\n", path.c_str());
  if (match.at.x != taught.x || match.at.y != taught.y)
    throw std::runtime_error("the part was not found where it is");
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}
