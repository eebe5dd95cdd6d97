// From a picture to a mask of its objects.
#pragma once

#include "inspect/options.h"
#include "ky/ky.h"

namespace inspect {

/// The level of objects in a mask.
inline constexpr KyBW8 kObjectLevel = 255;

/// `even` is the picture in even light: objects are bright on black, whatever they were. `mask` is
/// kObjectLevel in objects and 0 elsewhere; `level` is what separates them in the histogram of
/// `even`, 0 or 256 when there are none.
struct Prepared {
  KyImage<KyBW8> even, mask;
  KyBW8HistogramVector histogram;
  unsigned int level = 0;
};

/// Throws when there is no memory.
Prepared Prepare(const KyROI<KyBW8>& grey, const Preparation& preparation);

}  // namespace inspect
