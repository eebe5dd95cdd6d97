// Measures distances, angles and diameters in a picture to fractions of a pixel. See gauge --help.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "gauge/measuring.h"
#include "gauge/plan.h"
#include "gauge/plate.h"
#include "gauge/report.h"
#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/program.h"
#include "support/text.h"

namespace gauge {
namespace {

constexpr int kFailure = 1, kUsageError = 2;

struct Options {
  std::string picture, plan, folder = kOutputFolder;
};

// Writes the results to FOLDER/NAME.*. Throws when something cannot be measured.
Measurement Gauge(const KyROI<KyBW8>& picture, const std::vector<Task>& plan, const Truth& truth,
                  const std::string& name, const std::string& folder) {
  const std::string path = (std::filesystem::path(folder) / name).string();
  Measurement measurement = Run(picture, plan);
  picture::Write(Annotate(picture, plan, measurement), path + ".gauge.png");
  text::Write(Csv(plan, measurement, truth), path + ".csv");
  std::printf("%s; see %s.*\n", Table(plan, measurement, truth).c_str(), path.c_str());
  if (!measurement.missing.empty())
    throw std::runtime_error(std::to_string(measurement.missing.size()) + " not measured");
  return measurement;
}

void GaugePlate(const Options& options) {
  constexpr double kTolerance = 0.02;
  const KyImage<KyBW8> picture = plate::Draw();
  // For the user to try: gauge demo/plate.png demo/plate.txt
  const std::string path = (std::filesystem::path(options.folder) / "plate").string();
  picture::Write(picture, path + ".png");
  text::Write(plate::kPlan, path + ".txt");

  std::istringstream lines(plate::kPlan);
  const std::vector<Task> plan = ReadPlan(lines, "the plan of the drawn plate");
  const Truth truth = plate::Truth();
  const Measurement measurement = Gauge(picture, plan, truth, "plate", options.folder);
  const double error = LargestError(plan, measurement, truth);
  std::printf("largest error: %.4f pixels or degrees\n", error);
  if (error > kTolerance) throw std::runtime_error("the drawn plate is measured wrongly");
}

void GaugeFile(const Options& options) {
  std::ifstream file(options.plan);
  if (!file) throw std::runtime_error(options.plan + ": cannot be opened");
  const std::vector<Task> plan = ReadPlan(file, options.plan);
  Gauge(picture::Read<KyBW8>(options.picture), plan, {},
        std::filesystem::path(options.picture).stem().string(), options.folder);
}

int Main(int argc, char** argv) {
  CLI::App app(
      "Measures what a plan says in a picture, and writes\n"
      "  NAME.gauge.png   the picture with calipers, points of edges, fits and numbers\n"
      "  NAME.csv         the measures, in pixels and degrees\n"
      "Without arguments it draws a plate whose measures are known, writes its picture and its\n"
      "plan, too, and compares.\n",
      "gauge");
  app.footer(std::string(kPlanHelp) +
             "\n"
             "Ends with 0; with 1 when something cannot be read, written or measured; with 2 when\n"
             "the command line is wrong.");
  Options options;
  auto* const picture =
      app.add_option("PICTURE", options.picture, "PNG, PGM or PPM file")->type_name("");
  auto* const plan = app.add_option("PLAN", options.plan, "what to measure where")->type_name("");
  picture->needs(plan);
  app.add_option("-o,--output", options.folder, "folder of the output files")
      ->type_name("FOLDER")
      ->capture_default_str();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsageError;
  }
  std::filesystem::create_directories(options.folder);
  if (options.picture.empty())
    GaugePlate(options);
  else
    GaugeFile(options);
  return 0;
}

}  // namespace
}  // namespace gauge

int main(int argc, char** argv) {
  try {
    return gauge::Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "gauge: %s\n", error.what());
    return gauge::kFailure;
  }
}
