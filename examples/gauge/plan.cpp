#include "gauge/plan.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <sstream>
#include <stdexcept>

namespace gauge {
namespace {

// Distances of pictures, strengths, numbers of calipers: nobody needs more.
constexpr float kMost = 32768;

struct Mistake : std::runtime_error {
  using std::runtime_error::runtime_error;
};

float ToNumber(const std::string& text) {
  float number = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || last != end || !(number >= -kMost && number <= kMost))
    throw Mistake("'" + text + "' is no number from -32768 to 32768");
  return number;
}
unsigned ToCount(const std::string& text, unsigned least) {
  const float number = ToNumber(text);
  if (!(number >= static_cast<float>(least)))
    throw Mistake("'" + text + "' is less than " + std::to_string(least));
  return static_cast<unsigned>(number);
}

// An option such as calipers=60.
void SetOption(const std::string& option, Calipers& calipers) {
  static const std::map<std::string, TRANS_SCAN_EDGE> polarities = {
      {"rising", TRANS_SCAN_RISING}, {"falling", TRANS_SCAN_FALLING}, {"both", TRANS_SCAN_BOTH}};
  const std::size_t equals = option.find('=');
  const std::string key = option.substr(0, equals);
  const std::string value = equals == std::string::npos ? "" : option.substr(equals + 1);
  if (key == "polarity") {
    const auto found = polarities.find(value);
    if (found == polarities.end())
      throw Mistake("a polarity is rising, falling or both, not '" + value + "'");
    calipers.polarity = found->second;
  } else if (key == "calipers") {
    calipers.count = ToCount(value, 1);
  } else if (key == "thickness") {
    calipers.thickness = ToCount(value, 0);
  } else {
    const std::map<std::string, float*> numbers = {
        {"reach", &calipers.reach},       {"sigma", &calipers.sigma},
        {"strength", &calipers.strength}, {"outlier", &calipers.outlier},
        {"from", &calipers.from},         {"to", &calipers.to}};
    const auto found = numbers.find(key);
    if (found == numbers.end()) throw Mistake("there is no option '" + key + "'");
    *found->second = ToNumber(value);
    const bool isAngle = key == "from" || key == "to";
    if (!isAngle && *found->second < 0) throw Mistake("'" + option + "' is below 0");
    if (key == "reach" && calipers.reach == 0) throw Mistake("a reach of 0 sees nothing");
  }
}

class Reader {
 public:
  void Read(const std::string& line) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string word;
    if (!(words >> word)) return;
    Task task{KindOf(word), {}, {}, {}};
    if (!(words >> task.name)) throw Mistake("a name is missing");
    if (task.name.find_first_of(",\"") != std::string::npos)  // it goes into the CSV file
      throw Mistake("a name has no commas and quotes");
    const auto same = [&](const Task& other) { return other.name == task.name; };
    if (std::any_of(tasks_.begin(), tasks_.end(), same))
      throw Mistake("there are two '" + task.name + "'");
    if (task.kind == Kind::kEdge || task.kind == Kind::kCircle)
      ReadFeature(words, task);
    else
      ReadRelation(words, task);
    tasks_.push_back(task);
  }
  const std::vector<Task>& tasks() const { return tasks_; }

 private:
  static Kind KindOf(const std::string& word) {
    static const std::map<std::string, Kind> kinds = {{"edge", Kind::kEdge},
                                                      {"circle", Kind::kCircle},
                                                      {"distance", Kind::kDistance},
                                                      {"angle", Kind::kAngle}};
    const auto found = kinds.find(word);
    if (found == kinds.end()) throw Mistake("there is no '" + word + "' to measure");
    return found->second;
  }

  static void ReadFeature(std::istream& words, Task& task) {
    const std::size_t count = task.kind == Kind::kEdge ? 4 : 3;
    std::string word;
    while (task.numbers.size() < count) {
      if (!(words >> word)) throw Mistake("has fewer than " + std::to_string(count) + " numbers");
      task.numbers.push_back(ToNumber(word));
    }
    if (task.kind == Kind::kCircle && task.numbers[2] < 0) throw Mistake("the radius is below 0");
    while (words >> word) SetOption(word, task.calipers);
  }

  void ReadRelation(std::istream& words, Task& task) const {
    task.first = ReadFeatureName(words, task.kind);
    task.second = ReadFeatureName(words, task.kind);
    std::string word;
    if (words >> word) throw Mistake("'" + word + "' is too much");
  }
  std::size_t ReadFeatureName(std::istream& words, Kind kind) const {
    std::string name;
    if (!(words >> name)) throw Mistake("has fewer than two features");
    const auto found = std::find_if(tasks_.begin(), tasks_.end(),
                                    [&](const Task& task) { return task.name == name; });
    const bool fits =
        found != tasks_.end() &&
        (found->kind == Kind::kEdge || (found->kind == Kind::kCircle && kind == Kind::kDistance));
    if (!fits)
      throw Mistake(std::string("no ") + (kind == Kind::kAngle ? "edge" : "edge or circle") +
                    " named '" + name + "' stands above");
    return static_cast<std::size_t>(found - tasks_.begin());
  }

  std::vector<Task> tasks_;
};

}  // namespace

const char* const kPlanHelp =
    "A plan is a text file of lines such as\n"
    "  edge left 100 80 100 300                 a line; it lies near this segment\n"
    "  edge top 120 60 400 60 reach=12          the same with an option\n"
    "  circle bore 250 190 60 from=-90 to=90    a circle near this one: centre, radius\n"
    "  distance offset bore left                between two circles or edges\n"
    "  angle corner left top                    from one edge to another, clockwise\n"
    "  # a remark\n"
    "Options of edges and circles: reach=8 pixels to either side, calipers=40, thickness=2\n"
    "values to either side, sigma=1 pixels of smoothing, polarity=both (rising, falling) in the\n"
    "direction of the calipers: to the right of the segment, away from the centre; strength=8\n"
    "levels a pixel of the weakest edge, outlier=0.5 pixels, from=0 to=360 degrees of a circle.\n";

std::vector<Task> ReadPlan(std::istream& file, const std::string& name) {
  Reader reader;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    try {
      reader.Read(line);
    } catch (const Mistake& mistake) {
      throw std::runtime_error(name + ":" + std::to_string(number) + ": " + mistake.what());
    }
  }
  if (reader.tasks().empty()) throw std::runtime_error(name + ": there is nothing to measure");
  return reader.tasks();
}

}  // namespace gauge
