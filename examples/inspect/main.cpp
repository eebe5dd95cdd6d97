// Finds the objects in pictures, measures and reports them: the way from a file through most
// families of the library to numbers. See inspect --help.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>

#include "inspect/measuring.h"
#include "inspect/options.h"
#include "inspect/pipeline.h"
#include "inspect/progress.h"
#include "inspect/report.h"
#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/program.h"
#include "support/scene.h"
#include "support/text.h"

namespace inspect {
namespace {

constexpr int kFailure = 1;

// Coordinates of contours have 16 bits.
constexpr int kLargest = 32767;

// Whether the mask holds more of the picture than its ground.
bool IsMostlyObject(const KyROI<KyBW8>& mask) {
  KyBW32 pixels = 0;
  Must(ImgCount(&mask, kObjectLevel, pixels));
  return 2 * std::int64_t{pixels} > std::int64_t{mask.GetWidth()} * mask.GetHeight();
}

// `name` is what the output files are called; the picture's own name is for messages.
void Inspect(const KyImage<KyBW8>& grey, const std::string& picture, const std::string& name,
             const Options& options, Progress& progress) {
  if (grey.GetWidth() > kLargest || grey.GetHeight() > kLargest)
    throw std::runtime_error("is larger than " + std::to_string(kLargest) + " pixels");
  const std::string path = (std::filesystem::path(options.folder) / name).string();
  const auto write = [&](const auto& image, const std::string& file) {
    progress.Step("writing " + file);
    picture::Write(image, file);
  };

  progress.Step("separating objects from their ground");
  const Prepared prepared = Prepare(grey, options.preparation);
  if (options.steps) {
    write(grey, path + ".1-grey.png");
    write(prepared.even, path + ".2-even.png");
    write(prepared.mask, path + ".3-mask.png");
  }
  progress.Step("measuring");
  const std::vector<Measured> objects = Measure(prepared, grey, options.minArea);

  progress.Step("drawing");
  write(Annotate(grey, prepared.mask, objects), path + ".objects.png");
  write(DrawHistogram(prepared.histogram, prepared.level), path + ".histogram.png");
  text::Write(Csv(objects), path + ".csv");
  std::printf("%s: %zu object%s, level %u; see %s.*\n%s\n", picture.c_str(), objects.size(),
              objects.size() == 1 ? "" : "s", prepared.level, path.c_str(), Table(objects).c_str());
  if (IsMostlyObject(prepared.mask))
    std::fprintf(stderr,
                 "%s: most of the picture came out as object; --dark may help if objects are "
                 "darker than their ground, or another --threshold\n",
                 picture.c_str());
}

void InspectScene(const Options& options) {
  Progress progress("the drawn scene");
  const KyImage<KyBW8> scene = scene::Draw(scene::Bundled(false));
  Must(KyGetError());
  Inspect(scene, "the drawn scene", "scene", options, progress);
}

// Throws what begins with the name of the file.
void InspectFile(const std::string& file, const Options& options) {
  try {
    Progress progress(file);
    progress.Step("reading");
    Inspect(picture::Read<KyBW8>(file), file, std::filesystem::path(file).stem().string(), options,
            progress);
  } catch (const picture::FileError&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw std::runtime_error(file + ": memory ran out");
  } catch (const std::exception& error) {
    throw std::runtime_error(file + ": " + error.what());
  }
}

// Goes on with the next file after one that fails.
int InspectFiles(const Options& options) {
  int exitCode = 0;
  for (std::size_t i = 0; i < options.files.size(); ++i) {
    const std::string& file = options.files[i];
    if (options.files.size() > 1)
      std::fprintf(stderr, "[%zu/%zu] %s\n", i + 1, options.files.size(), file.c_str());
    try {
      InspectFile(file, options);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "inspect: %s\n", error.what());
      exitCode = kFailure;
    }
  }
  return exitCode;
}

void MakeFolder(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (std::filesystem::is_directory(folder, error)) return;
  throw std::runtime_error(
      "'" + folder + "' is to be the folder of the output files, and " +
      (std::filesystem::exists(folder, error) ? "is a file" : "cannot be made") +
      "; choose another with --output");
}

int Run(const Options& options) {
  try {
    MakeFolder(options.folder);
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
