// Draws the pictures of docs/, with the library itself:
//
//   docs_pictures [FOLDER]
//
// writes them to FOLDER (demo).
#include <filesystem>

#include "families.h"
#include "support/program.h"

namespace {

void Run(const char* folder) {
  std::filesystem::create_directories(folder);
  for (const auto family :
       {docs::Operators,    docs::Lookup,    docs::Thresholds,  docs::ThresholdModes,
        docs::Frames,       docs::Kernels,   docs::Filters,     docs::Morphology,
        docs::Geometry,     docs::Mirrors,   docs::Histograms,  docs::Temporal,
        docs::Profiles,     docs::Contours,  docs::Objects,     docs::Gradients,
        docs::TypedVectors, docs::Moments,   docs::Noise,       docs::Focus,
        docs::Transforms,   docs::Shading,   docs::Conversions, docs::Shapes,
        docs::Thinning,     docs::Windows,   docs::Medians,     docs::DistanceMaps,
        docs::Sizes,        docs::Measuring, docs::Accuracy})
    family(folder);
#ifdef KY_HAS_DRAWING
  docs::Drawing(folder);
#endif
#ifdef KY_HAS_FREQUENCY
  docs::Frequencies(folder);
#endif
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}
