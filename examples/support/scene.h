// A drawn picture of machined parts under a camera, for programs that have no picture of their own.
#pragma once

#include <vector>

#include "ky/image.h"

namespace scene {

enum class Kind {
  kWasher,  ///< a disk of radius `size` with a hole of half of it
  kBolt,    ///< a head and a threaded shank, together 4 x `size` long, 2 x `size` at the head
  kPlate,   ///< 4 x `size` by 2.8 x `size`, with four holes in its corners and one in its middle
};

/// One part: its centre and size in pixels, its angle in radians, clockwise on the screen.
struct Part {
  Kind kind;
  float x, y, size, angle;
  /// A washer with an eccentric hole, a bolt too short, a plate with a hole missing.
  bool faulty = false;
};

struct Scene {
  int width = 640, height = 480;
  std::vector<Part> parts;
  /// Of the noise. The same scene gives the same picture.
  unsigned seed = 1;
};

/// The scene that the examples use: four washers, four bolts and three plates that do not touch.
/// One of each kind is faulty if `faults`.
Scene Bundled(bool faults);

/// Draws bright parts on a darker, unevenly lit background, with bevelled edges, soft shadows and
/// the camera's noise. No pixels when there is no memory; the status tells.
KyImage<KyBW8> Draw(const Scene& scene);

}  // namespace scene
