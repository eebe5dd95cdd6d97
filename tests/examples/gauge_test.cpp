// The gauge example as a user runs it: the plate that it draws, parts whose measures are known, and
// what it says of bad plans.
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ky/ky.h"
#include "support/exact.h"
#include "support/picture_file.h"
#include "tests/examples/program.h"

namespace {

using ky::test::ProgramOutcome;

ProgramOutcome Gauge(const std::string& arguments) {
  return ky::test::RunProgram(KY_GAUGE " " + arguments);
}

// The values of a CSV file by name and measure.
std::map<std::string, double> ReadCsv(const std::string& path) {
  std::ifstream file(path);
  std::map<std::string, double> values;
  std::string line;
  std::getline(file, line);
  EXPECT_EQ(line, "task,name,measure,value,residual,used,points,truth,error");
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    std::string task, name, measure, value;
    std::getline(fields, task, ','), std::getline(fields, name, ',');
    std::getline(fields, measure, ','), std::getline(fields, value, ',');
    values[name + ' ' + measure] = std::stod(value);
  }
  return values;
}

TEST(Gauge, MeasuresItsOwnPlate) {
  const std::string folder = ky::test::TestFolder();
  const ProgramOutcome outcome = Gauge("-o " + folder);
  ASSERT_EQ(outcome.exitCode, 0) << outcome.text;
  EXPECT_EQ(picture::Read<KyC24>(folder + "/plate.gauge.png").GetWidth(), 1280);
  const auto values = ReadCsv(folder + "/plate.csv");
  // What it has written is what it reads.
  const ProgramOutcome again =
      Gauge("-o " + folder + "/again " + folder + "/plate.png " + folder + "/plate.txt");
  ASSERT_EQ(again.exitCode, 0) << again.text;
  EXPECT_EQ(ReadCsv(folder + "/again/plate.csv"), values);
}

TEST(Gauge, MeasuresPictureFiles) {
  const std::string folder = ky::test::TestFolder();
  std::ofstream(folder + "/plan.txt")
      << "edge left 41.5 30 39 170 calipers=60 thickness=5 sigma=2\n"
         "edge right 261 30 260 170 polarity=rising\n"
         "  # a remark\n\n"
         "circle hole 151 99 41 thickness=0 calipers=120 # another\n"
         "distance width left right\n"
         "distance margin hole left\n"
         "angle lean left right\n";
  for (const bool dark : {false, true}) {
    // The right edge leans by atan(1 / 100).
    exact::Look look{.ground = 60, .level = 180, .blur = 0.7, .noise = 1};
    if (dark) std::swap(look.ground, look.level);
    picture::Write(exact::Draw({{{40.25, 10}, {260, 10}, {261.8, 190}, {40.25, 190}},
                                {{{150.6, 100.3}, 40.4}}},
                               320, 200, look),
                   folder + "/part.png");
    const ProgramOutcome outcome =
        Gauge("-o " + folder + ' ' + folder + "/part.png " + folder + "/plan.txt");
    if (dark) {  // seen downwards, the calipers point to the left: now the edge falls
      EXPECT_EQ(outcome.exitCode, 1);
      EXPECT_NE(outcome.text.find("right: no edge found"), outcome.text.npos) << outcome.text;
      continue;
    }
    ASSERT_EQ(outcome.exitCode, 0) << outcome.text;
    auto values = ReadCsv(folder + "/part.csv");
    EXPECT_EQ(values.size(), 8u);
    EXPECT_NEAR(values["width distance"], 260.9 - 40.25, 0.03);
    EXPECT_NEAR(values["hole x"], 150.6, 0.02);
    EXPECT_NEAR(values["hole y"], 100.3, 0.02);
    EXPECT_NEAR(values["hole diameter"], 80.8, 0.03);
    EXPECT_NEAR(values["margin distance"], 150.6 - 40.25, 0.03);
    EXPECT_NEAR(values["lean angle"], -std::atan(0.01) * 180 / 3.14159265, 0.02);
  }
}

TEST(Gauge, TellsWhatIsWrong) {
  const std::string folder = ky::test::TestFolder();
  picture::Write(exact::Draw({{{10, 10}, {50, 10}, {50, 50}, {10, 50}}, {}}, 64, 64, {}),
                 folder + "/part.png");
  const struct {
    const char *plan, *text;
  } plans[] = {
      {"edge a 1 2 3", "plan.txt:1: has fewer than 4 numbers"},
      {"\n# b\ncircle a 1 x 3", "plan.txt:3: 'x' is no number"},
      {"circle a 1 nan 3", "'nan' is no number"},
      {"circle a 1 2 -3", "the radius is below 0"},
      {"square a 1 2 3", "there is no 'square' to measure"},
      {"edge", "a name is missing"},
      {"edge a,b 1 2 3 4", "a name has no commas"},
      {"edge a 1 2 3 4\nedge a 1 2 3 4", "plan.txt:2: there are two 'a'"},
      {"edge a 1 2 3 4 reach=0", "a reach of 0 sees nothing"},
      {"edge a 1 2 3 4 calipers=0", "'0' is less than 1"},
      {"edge a 1 2 3 4 calipers=-3", "'-3' is less than 1"},
      {"edge a 1 2 3 4 sigma=-1", "'sigma=-1' is below 0"},
      {"edge a 1 2 3 4 polarity=up", "not 'up'"},
      {"edge a 1 2 3 4 colour=3", "there is no option 'colour'"},
      {"edge a 1 2 3 4 thickness", "'' is no number"},
      {"edge a 1 2 3 4\ncircle b 1 2 3\nangle c a b", "no edge named 'b' stands above"},
      {"edge a 1 2 3 4\ndistance c a", "has fewer than two features"},
      {"edge a 1 2 3 4\ndistance c a a a", "'a' is too much"},
      {"distance c a b", "no edge or circle named 'a' stands above"},
      {"# nothing\n", "there is nothing to measure"},
      {"edge a 20 30 30 30", "a: no edge found"},
  };
  for (const auto& one : plans) {
    std::ofstream(folder + "/plan.txt") << one.plan;
    const ProgramOutcome outcome =
        Gauge("-o " + folder + ' ' + folder + "/part.png " + folder + "/plan.txt");
    EXPECT_EQ(outcome.exitCode, 1) << one.plan;
    EXPECT_NE(outcome.text.find(one.text), outcome.text.npos) << one.plan << '\n' << outcome.text;
  }
  EXPECT_EQ(Gauge("--help").exitCode, 0);
  EXPECT_EQ(Gauge(folder + "/part.png").exitCode, 2);
  EXPECT_EQ(Gauge("-o " + folder + ' ' + folder + "/part.png " + folder + "/missing").exitCode, 1);
  EXPECT_EQ(Gauge("-o " + folder + " missing.png " + folder + "/plan.txt").exitCode, 1);
}

}  // namespace
