// Objects and what is measured of them.
#pragma once

#include <vector>

#include "inspect/pipeline.h"
#include "ky/ky.h"

namespace inspect {

struct Measured {
  KyObject object;
  KyObjectShape shape;
  unsigned int strips = 0;  ///< how often a line across its middle enters it
};

/// Finds the objects of at least `minArea` pixels, from top to bottom, and measures them. Pixels of
/// the mask that share an edge or a corner are connected. Levels are read from `grey`, the strips
/// from the picture in even light. Throws when there is no memory.
std::vector<Measured> Measure(const Prepared& prepared, const KyROI<KyBW8>& grey, KyBW32 minArea);

}  // namespace inspect
