#include "inspect/options.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>

namespace inspect {
namespace {

constexpr int kUsageError = 2;

const std::map<std::string, Smoothing> kSmoothings = {{"none", Smoothing::kNone},
                                                      {"uniform", Smoothing::kUniform},
                                                      {"gaussian", Smoothing::kGaussian}};

const std::map<std::string, Light> kLights = {
    {"none", Light::kNone}, {"background", Light::kBackground}, {"surface", Light::kSurface}};

const std::map<std::string, unsigned int> kModes = {
    {"residue", static_cast<unsigned int>(IMG_THRESHOLD_MIN_RESIDUE)},
    {"isodata", static_cast<unsigned int>(IMG_THRESHOLD_ISODATA)},
    {"entropy", static_cast<unsigned int>(IMG_THRESHOLD_MAX_ENTROPY)},
    {"linear", static_cast<unsigned int>(IMG_THRESHOLD_LINEAR_BLACK_WHITE)},
    {"quadratic", static_cast<unsigned int>(IMG_THRESHOLD_QUADRATIC_BLACK_WHITE)},
    {"relative", static_cast<unsigned int>(IMG_THRESHOLD_RELATIVE)}};

// Takes the names of a map. The type of the option lists them.
template <class T>
CLI::Validator Named(const std::map<std::string, T>& values) {
  const auto replace = [&values](std::string& text) {
    const auto found = values.find(text);
    if (found == values.end()) return "there is no '" + text + "'";
    text = std::to_string(static_cast<unsigned int>(found->second));
    return std::string();
  };
  return {replace, ""};
}

template <class T>
CLI::Validator Between(T least, T most) {
  return CLI::Range(least, most).description("");
}

// Output files are named after the pictures, so that no two may have the same name.
std::string CheckNames(const std::vector<std::string>& files) {
  std::set<std::string> seen;
  for (const std::string& file : files) {
    const std::string stem = std::filesystem::path(file).stem().string();
    if (!seen.insert(stem).second) return "two pictures are named '" + stem + "'";
  }
  return {};
}

void AddOptions(CLI::App& app, Options& options) {
  Preparation& preparation = options.preparation;
  app.option_defaults()->always_capture_default();

  app.add_option("PICTURE", options.files,
                 "PNG, PGM or PPM files; without one, a drawn scene of machined parts")
      ->type_name("")
      ->default_str("");
  app.add_option("-o,--output", options.folder, "folder of the output files")->type_name("FOLDER");
  app.add_flag("--steps", options.steps, "write the steps too: grey levels, even light, mask");

  app.add_flag("-d,--dark", preparation.dark, "objects are darker than their ground");
  app.add_option("-s,--smooth", preparation.smoothing,
                 "3x3 filter against noise: none, uniform, gaussian")
      ->transform(Named(kSmoothings))
      ->type_name("FILTER")
      ->default_str("gaussian");
  app.add_option("-l,--light", preparation.light,
                 "how uneven light is made even. background: all that a box does not\n"
                 "fit into is kept; surface: levels above a surface of thresholds,\n"
                 "one for each tile; none")
      ->transform(Named(kLights))
      ->type_name("METHOD")
      ->default_str("background");
  app.add_option("-r,--reach", preparation.reach,
                 "half size of that box: more than half the width of an object; or size\n"
                 "of those tiles: some objects and some ground in each; in pixels")
      ->check(Between(1, 10000))
      ->type_name("N");
  app.add_option("-t,--threshold", preparation.threshold,
                 "level from which on a pixel in even light belongs to an object, 1 to\n"
                 "255, or how it is chosen from the histogram: residue, isodata,\n"
                 "entropy, linear, quadratic, relative")
      ->transform(Named(kModes) | Between(1, 255))
      ->type_name("LEVEL")
      ->default_str("residue");
  app.add_option("-f,--fraction", preparation.fraction,
                 "how much of the picture is ground, 0 to 1, for -t relative")
      ->check(Between(0.0, 1.0))
      ->type_name("F");
  app.add_option("-c,--clean", preparation.clean,
                 "radius of the disk that opens the mask: removes specks and hairs")
      ->check(Between(0, 1000))
      ->type_name("N");
  app.add_option("-j,--join", preparation.join,
                 "half width and half height of the box that closes the mask: joins\n"
                 "neighbours, such as the letters of a line")
      ->check(Between(0, 1000))
      ->type_name("X Y")
      ->default_str("0 0");
  app.add_option("-a,--min-area", options.minArea, "smallest area of an object, in pixels")
      ->check(Between(0, 1000000000))
      ->type_name("N");
}

}  // namespace

std::optional<Options> ParseOptions(int argc, char** argv, int& exitCode) {
  CLI::App app(
      "Finds the objects in pictures, measures them, and writes for each picture NAME\n"
      "  NAME.objects.png     the picture with contours, boxes, axes and numbers\n"
      "  NAME.histogram.png   the histogram of even light with the level chosen from it\n"
      "  NAME.csv             the measures, in pixels, degrees and grey levels; `strips` is how\n"
      "                       often a line across the middle of the object's box enters it\n",
      "inspect");
  app.footer(
      "Examples:\n"
      "  inspect coins.png                        bright coins on a dark, uneven ground\n"
      "  inspect -t entropy -r 32 coins.png       the same, with their faint parts\n"
      "  inspect -d -r 8 -c 0 -j 8 0 page.png     the lines of a printed page\n"
      "\n"
      "Ends with 0; with 1 when a picture cannot be read or a file not be written; with 2 when\n"
      "the command line is wrong.");
  Options options;
  AddOptions(app, options);
  try {
    app.parse(argc, argv);
    if (const std::string mistake = CheckNames(options.files); !mistake.empty())
      throw CLI::ValidationError("PICTURE", mistake);
  } catch (const CLI::ParseError& error) {
    exitCode = app.exit(error) == 0 ? 0 : kUsageError;
    return std::nullopt;
  }
  return options;
}

}  // namespace inspect
