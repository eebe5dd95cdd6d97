// The part that is measured when the user has none: a plate whose measures are known.
#pragma once

#include <map>
#include <string>

#include "ky/image.h"

namespace gauge::plate {

/// Draws it.
KyImage<KyBW8> Draw();

/// What to measure: places as someone would read them off the picture, some pixels beside the
/// edges.
extern const char* const kPlan;

/// The true measures by the name of the task and, of edges and circles, of the measure, such as
/// "bore diameter".
std::map<std::string, double> Truth();

}  // namespace gauge::plate
