// Finds the objects in pictures, measures and reports them: the way from a file through most
// families of the library to numbers. See inspect --help.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>

#include "inspect/measuring.h"
#include "inspect/options.h"
#include "inspect/pipeline.h"
#include "inspect/report.h"
#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/scene.h"
#include "support/text.h"

namespace inspect {
namespace {

constexpr int kFailure = 1;

// Coordinates of contours have 16 bits.
constexpr int kLargest = 32767;

// `name` is what the output files are called; the picture's own name is for messages.
void Inspect(const KyImage<KyBW8>& grey, const std::string& picture, const std::string& name,
             const Options& options) {
  if (grey.GetWidth() > kLargest || grey.GetHeight() > kLargest)
    throw std::runtime_error(picture + ": is larger than " + std::to_string(kLargest) + " pixels");
  const std::string path = (std::filesystem::path(options.folder) / name).string();

  const Prepared prepared = Prepare(grey, options.preparation);
  if (options.steps) {
    picture::Write(grey, path + ".1-grey.png");
    picture::Write(prepared.even, path + ".2-even.png");
    picture::Write(prepared.mask, path + ".3-mask.png");
  }
  const std::vector<Measured> objects = Measure(prepared, grey, options.minArea);

  picture::Write(Annotate(grey, prepared.mask, objects), path + ".objects.png");
  picture::Write(DrawHistogram(prepared.histogram, prepared.level), path + ".histogram.png");
  text::Write(Csv(objects), path + ".csv");
  std::printf("%s: %zu objects, level %u; see %s.*\n%s\n", picture.c_str(), objects.size(),
              prepared.level, path.c_str(), Table(objects).c_str());
}

void InspectScene(const Options& options) {
  const KyImage<KyBW8> scene = scene::Draw(scene::Bundled(false));
  if (KyGetError() != KY_OK) throw std::runtime_error(KyGetErrorText(KyGetError()));
  Inspect(scene, "the drawn scene", "scene", options);
}

// Goes on with the next file after one that fails.
int InspectFiles(const Options& options) {
  int exitCode = 0;
  for (std::size_t i = 0; i < options.files.size(); ++i) {
    const std::string& file = options.files[i];
    if (options.files.size() > 1)
      std::fprintf(stderr, "[%zu/%zu] %s\n", i + 1, options.files.size(), file.c_str());
    try {
      Inspect(picture::Read<KyBW8>(file), file, std::filesystem::path(file).stem().string(),
              options);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "inspect: %s\n", error.what());
      exitCode = kFailure;
    }
  }
  return exitCode;
}

int Run(const Options& options) {
  try {
    std::filesystem::create_directories(options.folder);
    if (!options.files.empty()) return InspectFiles(options);
    InspectScene(options);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "inspect: %s\n", error.what());
    return kFailure;
  }
}

}  // namespace
}  // namespace inspect

int main(int argc, char** argv) {
  int exitCode = 0;
  const auto options = inspect::ParseOptions(argc, argv, exitCode);
  return options ? inspect::Run(*options) : exitCode;
}
