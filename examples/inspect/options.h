// What the user asks for.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ky/ky.h"

namespace inspect {

enum class Smoothing { kNone, kUniform, kGaussian };

/// How uneven light is made even.
enum class Light {
  kNone,        ///< the picture as it is, or inverted where objects are dark
  kBackground,  ///< less its opening, or its closing less it: what is smaller than the element
  kSurface,     ///< less a surface of local thresholds, or that less the picture
};

/// How the picture becomes a mask of objects.
struct Preparation {
  bool dark = false;
  Smoothing smoothing = Smoothing::kGaussian;
  Light light = Light::kBackground;
  int reach = 64;  // half size of the background's element, size of the surface's tiles
  /// A level, or one of IMG_THRESHOLD_MODES, with the fraction of IMG_THRESHOLD_RELATIVE.
  unsigned int threshold = static_cast<unsigned int>(IMG_THRESHOLD_MIN_RESIDUE);
  float fraction = 0.5f;
  unsigned int clean = 2;
  std::pair<unsigned int, unsigned int> join = {0, 0};  // half width, half height
};

struct Options {
  std::vector<std::string> files;
  std::string folder = "demo";
  Preparation preparation;
  KyBW32 minArea = 150;
  bool steps = false;
};

/// Parses the command line. After --help or a mistake it has told the user, there are no options,
/// and `exitCode` is what the program should end with.
std::optional<Options> ParseOptions(int argc, char** argv, int& exitCode);

}  // namespace inspect
