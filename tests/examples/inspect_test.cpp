// The inspection example as a user runs it: what it reports of drawn scenes, whose parts are known,
// and what it says of bad input.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/scene.h"
#include "tests/examples/program.h"

namespace {

using scene::Kind;
using scene::Part;

using ky::test::TestFolder;
using Outcome = ky::test::ProgramOutcome;

Outcome Inspect(const std::string& arguments) {
  return ky::test::RunProgram(KY_INSPECT " " + arguments);
}

struct Found {
  double x, y, left, top, width, height, area, perimeter, angle, elongation, circularity, holes,
      mean, lowest, highest, strips;
};

std::vector<Found> ReadCsv(const std::string& path) {
  std::ifstream file(path);
  std::vector<Found> found;
  std::string line;
  std::getline(file, line);
  EXPECT_EQ(line,
            "object,x,y,left,top,width,height,area,perimeter,angle,elongation,circularity,holes,"
            "mean,lowest,highest,strips");
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    std::string field;
    std::array<double, 17> values{};
    for (double& value : values)
      if (std::getline(fields, field, ',')) value = std::stod(field);
    EXPECT_EQ(values[0], static_cast<double>(found.size() + 1));
    found.push_back({values[1], values[2], values[3], values[4], values[5], values[6], values[7],
                     values[8], values[9], values[10], values[11], values[12], values[13],
                     values[14], values[15], values[16]});
  }
  return found;
}

// The mean level half-way between the hole and the rim.
double RingLevel(const KyROI<KyBW8>& picture, const Part& part) {
  constexpr int kPoints = 64;
  double sum = 0;
  for (int i = 0; i < kPoints; ++i) {
    const double angle = 2 * std::numbers::pi * i / kPoints, radius = 0.75 * double{part.size};
    sum += picture.GetPixel(static_cast<int>(double{part.x} + radius * std::cos(angle)),
                            static_cast<int>(double{part.y} + radius * std::sin(angle)));
  }
  return sum / kPoints;
}

void ExpectWasher(const Found& found, const Part& part, const KyROI<KyBW8>& picture) {
  const double side = 2 * double{part.size};
  EXPECT_NEAR(found.x, part.x, 1);
  EXPECT_NEAR(found.y, part.y, 1);
  EXPECT_NEAR(found.left, double{part.x} - double{part.size}, 3);
  EXPECT_NEAR(found.top, double{part.y} - double{part.size}, 3);
  EXPECT_NEAR(found.width, side, 4);
  EXPECT_NEAR(found.height, side, 4);
  // The hole has half of the radius. Both edges may lie 6 % of the radius off.
  EXPECT_NEAR(found.area / (0.75 * std::numbers::pi * side * side / 4), 1, 0.24);
  EXPECT_NEAR(found.perimeter / (1.5 * std::numbers::pi * side), 1, 0.06);
  EXPECT_NEAR(found.elongation, 1, 0.1);
  EXPECT_EQ(found.holes, 1);
  EXPECT_NEAR(found.mean, RingLevel(picture, part), 10);
  EXPECT_EQ(found.strips, 2);  // the hole lies between
}

// Every part is found once, and nothing else.
void ExpectParts(const std::vector<Found>& found, const std::vector<Part>& parts,
                 const KyROI<KyBW8>& picture) {
  EXPECT_EQ(found.size(), parts.size());
  for (const Part& part : parts) {
    std::vector<Found> here;
    for (const Found& one : found)
      if (std::hypot(one.x - double{part.x}, one.y - double{part.y}) < 0.5 * double{part.size})
        here.push_back(one);
    ASSERT_EQ(here.size(), 1u) << "part at " << part.x << ", " << part.y;
    if (part.kind == Kind::kWasher && !part.faulty) ExpectWasher(here[0], part, picture);
  }
}

// Parts of any kind, size and angle, each in a field of its own.
scene::Scene RandomScene(unsigned seed) {
  std::mt19937 random(seed);
  const auto between = [&](int least, int most) {
    return static_cast<float>(least + static_cast<int>(random() % (most - least + 1)));
  };
  scene::Scene scene{.parts = {}, .seed = seed};
  for (int y = 80; y < scene.height; y += 160)
    for (int x = 80; x < scene.width; x += 160)
      scene.parts.push_back({static_cast<Kind>(random() % 3), between(x - 10, x + 10),
                             between(y - 10, y + 10), between(16, 27), between(0, 62) / 10});
  return scene;
}

TEST(Inspect, FindsThePartsOfItsOwnScene) {
  const std::string folder = TestFolder();
  const Outcome outcome = Inspect("-o " + folder);
  ASSERT_EQ(outcome.exitCode, 0) << outcome.text;
  const std::vector<Part> parts = scene::Bundled(false).parts;
  EXPECT_NE(outcome.text.find(std::to_string(parts.size()) + " objects"), std::string::npos)
      << outcome.text;
  ExpectParts(ReadCsv(folder + "/scene.csv"), parts, scene::Draw(scene::Bundled(false)));
  EXPECT_EQ(picture::Read<KyC24>(folder + "/scene.objects.png").GetWidth(), 640);
  EXPECT_GT(picture::Read<KyC24>(folder + "/scene.histogram.png").GetWidth(), 256);
}

TEST(Inspect, FindsThePartsOfPictureFiles) {
  const std::string folder = TestFolder();
  for (const unsigned seed : {1u, 2u, 3u}) {
    const scene::Scene scene = RandomScene(seed);
    KyImage<KyBW8> picture = scene::Draw(scene);
    picture::Write(picture, folder + "/bright.pgm");
    KyImage<KyC24> inverse(picture.GetWidth(), picture.GetHeight());
    ASSERT_EQ(ImgOper(KY_OPER_INVERT, &picture, &inverse), KY_OK);
    picture::Write(inverse, folder + "/dark.png");
    for (const std::string name : {"bright.pgm", "bright.pgm -l surface -r 100", "dark.png -d"}) {
      SCOPED_TRACE(name + " of " + std::to_string(seed));
      const Outcome outcome = Inspect("-o " + folder + ' ' + folder + '/' + name);
      ASSERT_EQ(outcome.exitCode, 0) << outcome.text;
      const std::string file = name.substr(0, name.find(' ')),
                        stem = file.substr(0, file.find('.'));
      ExpectParts(ReadCsv(folder + '/' + stem + ".csv"), scene.parts,
                  picture::Read<KyBW8>(folder + '/' + file));
    }
  }
}

TEST(Inspect, FindsNothingInAFlatPicture) {
  const std::string folder = TestFolder();
  for (const int side : {1, 2, 100}) {
    KyImage<KyBW8> flat(side, side);
    ASSERT_EQ(ImgCopy(KyBW8{90}, &flat), KY_OK);
    picture::Write(flat, folder + "/flat.png");
    for (const char* options : {" -a 0", " -d -l surface", " -l none -t 91"}) {
      const Outcome outcome = Inspect("-o " + folder + ' ' + folder + "/flat.png" + options);
      EXPECT_EQ(outcome.exitCode, 0) << outcome.text;
      EXPECT_TRUE(ReadCsv(folder + "/flat.csv").empty()) << side << options;
    }
  }
}

TEST(Inspect, CountsOneObjectAndSuggestsTheOtherPolarity) {
  const std::string folder = TestFolder();
  KyImage<KyBW8> picture(100, 80);
  KyROI<KyBW8> part(&picture, 40, 30, 20, 20);
  for (const bool dark : {false, true}) {
    ASSERT_EQ(ImgCopy(KyBW8(dark ? 200 : 0), &picture), KY_OK);
    ASSERT_EQ(ImgCopy(KyBW8(dark ? 0 : 200), &part), KY_OK);
    picture::Write(picture, folder + "/part.png");
    const Outcome outcome = Inspect("-l none -o " + folder + ' ' + folder + "/part.png");
    EXPECT_NE(outcome.text.find(": 1 object, level "), std::string::npos) << outcome.text;
    EXPECT_EQ(outcome.text.find("--dark may help") != std::string::npos, dark) << outcome.text;
  }
}

TEST(Inspect, TellsWhatIsWrong) {
  const std::string folder = TestFolder();
  picture::Write(scene::Draw(RandomScene(1)), folder + "/good.png");
  std::ofstream(folder + "/text.png") << "no picture";
  std::filesystem::copy_file(folder + "/good.png", folder + "/short.png",
                             std::filesystem::copy_options::overwrite_existing);
  std::filesystem::resize_file(folder + "/short.png", 5000);

  const struct {
    std::string arguments;
    int exitCode;
    const char* text;
  } cases[] = {
      {"--help", 0, "Usage"},
      {folder + "/missing.png", 1, "missing.png: ImgLoad: there is no such file"},
      {folder + "/text.png", 1, "text.png: ImgLoad: the file is no PNG"},
      {folder + "/short.png", 1, "short.png: ImgLoad: the file ends before"},
      {"-o /dev/null/folder", 1, "'/dev/null/folder' is to be the folder"},
      {"-o " + folder + "/text.png", 1, "and is a file; choose another with --output"},
      {folder + "/good.png " + folder + "/good.pgm", 2, "two pictures are named 'good'"},
      {"--reach 0", 2, "--reach"},
      {"--threshold other", 2, "there is no 'other'"},
      {"--nothing", 2, "--nothing"},
      // The good one is inspected none the less.
      {folder + "/missing.png " + folder + "/good.png", 1, "[2/2] "},
  };
  for (const auto& one : cases) {
    const bool hasFolder = one.arguments.starts_with("-o");
    const Outcome outcome = Inspect((hasFolder ? "" : "-o " + folder + ' ') + one.arguments);
    EXPECT_EQ(outcome.exitCode, one.exitCode) << one.arguments << '\n' << outcome.text;
    EXPECT_NE(outcome.text.find(one.text), std::string::npos) << one.arguments << '\n'
                                                              << outcome.text;
  }
  EXPECT_FALSE(ReadCsv(folder + "/good.csv").empty());
}

}  // namespace
