// ky_bench: a table of all operations, ours on both paths beside OpenCV and the memory limit.
//
// Google Benchmark registers, filters, runs and reports, one benchmark an operation and size. What
// it times by itself, one function over many iterations, is not what is compared here: on a machine
// that others use too, contenders measured minutes apart say little about each other. So an
// iteration is a round in which every contender has its turn, and the least time of each, over all
// rounds, leaves the benchmark as a counter.
#include "benchmarks/bench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace ky::bench {
namespace {

using std::chrono::duration;
using Clock = std::chrono::steady_clock;
constexpr double kForever = std::numeric_limits<double>::infinity();

struct Size {
  int width, height;
  std::string Name() const { return std::to_string(width) + "x" + std::to_string(height); }
};

struct Options {
  std::vector<Size> sizes;
  std::string filter = ".", csv, target;  // the widest path that calls may take
  int rounds = 10, pitch = 0;
  bool plain = true;
};

std::vector<Operation>& Table() {
  static std::vector<Operation> table;
  return table;
}

// The contenders, by the names of their counters.
enum { kPlain, kAccelerated, kOpenCv, kLimit, kContenders };
constexpr const char* kNames[kContenders] = {"plain", "accelerated", "opencv", "limit"};
// The seconds that a contender calls its work for in one round, and in all.
constexpr double kTurn = 0.004;
constexpr double kPlainInAll = 0.02;
// Ratios up to this one are taken for 1.
constexpr double kNoise = 1.02;

// One operation on one size.
class Comparison {
 public:
  Comparison(const Operation& operation, Pictures& pictures, bool plain) {
    const auto ours = operation.ours.Prepare(pictures);
    works_[kAccelerated] = ours;
    works_[kOpenCv] = operation.opencv.Prepare(pictures);
    works_[kLimit] = MemoryLimit(operation.limit, operation.pixel, pictures);
    if (!plain) return;
    works_[kPlain] = ours;
    inAll_[kPlain] = kPlainInAll;
  }

  void Round() {
    for (int i = 0; i < kContenders; ++i) {
      if (!works_[i] || spent_[i] >= inAll_[i]) continue;
      KySetMMX(i != kPlain);
      const double end = spent_[i] + kTurn;
      do {
        const auto start = Clock::now();
        works_[i]();
        benchmark::ClobberMemory();
        const double seconds = duration<double>(Clock::now() - start).count();
        least_[i] = std::min(least_[i], seconds);
        spent_[i] += seconds;
      } while (spent_[i] < std::min(end, inAll_[i]));
    }
    KySetMMX(1);
  }

  // The seconds of a contender's fastest call, if it had one.
  std::optional<double> Least(int contender) const {
    return least_[contender] < kForever ? std::optional(least_[contender]) : std::nullopt;
  }

 private:
  Contender::Work works_[kContenders];
  double inAll_[kContenders] = {kForever, kForever, kForever, kForever};
  double spent_[kContenders] = {};
  double least_[kContenders] = {kForever, kForever, kForever, kForever};
};

// What our work leaves behind on one of the paths, from a destination in a known state.
struct Result {
  KY_ERRORS error;
  std::vector<KyBW8> pixels;
  std::vector<double> numbers;
  bool operator==(const Result&) const = default;
};
template <class T>
Result ResultOf(const Contender& ours, bool plain, Pictures& p, KyImage<T>& out) {
  const Contender::Work work = ours.Prepare(p);
  auto* const first = static_cast<KyBW8*>(out.GetPixelPtr(0, 0));
  const auto bytes =
      static_cast<std::size_t>(out.GetPitch()) * static_cast<std::size_t>(out.GetHeight());
  std::memset(first, 0x5A, bytes);
  p.numbers.clear();
  KySetMMX(!plain);
  work();
  KySetMMX(1);
  return {KyGetError(), std::vector<KyBW8>(first, first + bytes), p.numbers};
}

// Null when both paths work and give the same, else what is wrong.
template <class T>
const char* Check(const Contender& ours, Pictures& p, KyImage<T>& out) {
  const Result plain = ResultOf(ours, true, p, out);
  if (plain.error != KY_OK) return KyGetErrorText(plain.error);
  return plain == ResultOf(ours, false, p, out) ? nullptr : "DIFFERS FROM PLAIN";
}
const char* Check(const Operation& operation, Pictures& p) {
  switch (operation.pixel) {
    case Pixel::kGrey: return Check(operation.ours, p, p.out);
    case Pixel::kDeep: return Check(operation.ours, p, p.deepOut);
    case Pixel::kColor: return Check(operation.ours, p, p.colorOut);
  }
  return nullptr;
}

Pictures& PicturesOf(const Size& size, int pitch) {
  static std::map<std::pair<int, int>, Pictures> all;
  return all.try_emplace({size.width, size.height}, size.width, size.height, pitch).first->second;
}

void Run(benchmark::State& state, const Operation& operation, const Size& size,
         const Options& options) {
  const bool plain = options.plain;
  Pictures& pictures = PicturesOf(size, options.pitch);
  // A wrong result is not worth a time.
  if (const char* wrong = Check(operation, pictures)) {
    state.SkipWithError(wrong);
    return;
  }
  Comparison comparison(operation, pictures, plain);
  for (auto _ : state) comparison.Round();
  for (int i = 0; i < kContenders; ++i)
    if (const auto seconds = comparison.Least(i))
      state.counters[kNames[i]] = *seconds * 1e9 / size.width / size.height;
}

// Prints the table while the benchmarks run, and what follows from it.
class Reporter : public benchmark::BenchmarkReporter {
 public:
  explicit Reporter(std::FILE* csv) : csv_(csv) {}

  bool ReportContext(const Context&) override {
    std::printf("Nanoseconds a pixel, least of all calls; one thread.\n\n%-44s %-10s", "operation",
                "size");
    for (const char* name : kNames) std::printf(" %11s", name);
    std::printf(" %9s %9s\n", "/opencv", "/limit");
    if (csv_ != nullptr)
      std::fprintf(csv_, "operation,size,plain,accelerated,opencv,limit,to_opencv,to_limit\n");
    return true;
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) Report(run);
    std::fflush(stdout);
  }

  void Finalize() override {
    if (compared_ > 0)
      std::printf("\nFaster than OpenCV by %.2f (geometric mean of %d comparisons).\n",
                  std::exp(-sumOfLogs_ / compared_), compared_);
    if (!slower_.empty()) std::printf("Slower than OpenCV, by more than the noise:\n");
    for (const auto& [operation, ratio] : slower_)
      std::printf("  %-55s %9.2f\n", operation.c_str(), ratio);
    if (wrong_ > 0) std::printf("WRONG: %d, see above.\n", wrong_);
  }

  bool AllRight() const { return wrong_ == 0; }

 private:
  void Report(const Run& run) {
    // Operations' names hold no slash.
    const std::string& full = run.run_name.function_name;
    const std::size_t slash = full.find('/');
    const std::string name = full.substr(0, slash), size = full.substr(slash + 1);
    std::printf("%-44s %-10s", name.c_str(), size.c_str());
    if (run.error_occurred) {
      std::printf(" *** %s\n", run.error_message.c_str());
      ++wrong_;
      return;
    }
    if (csv_ != nullptr) std::fprintf(csv_, "\"%s\",%s", name.c_str(), size.c_str());
    for (const char* contender : kNames) Print(11, 4, Value(run, contender));
    const auto toOpenCv = Ratio(run, kNames[kOpenCv]);
    Print(9, 2, toOpenCv);
    Print(9, 2, Ratio(run, kNames[kLimit]));
    std::printf("\n");
    if (csv_ != nullptr) std::fprintf(csv_, "\n");
    if (!toOpenCv) return;
    ++compared_;
    sumOfLogs_ += std::log(*toOpenCv);
    if (*toOpenCv > kNoise) slower_.emplace_back(name + ", " + size, *toOpenCv);
  }

  void Print(int width, int decimals, std::optional<double> value) const {
    if (value)
      std::printf(" %*.*f", width, decimals, *value);
    else
      std::printf(" %*s", width, "-");
    if (csv_ == nullptr) return;
    std::fprintf(csv_, ",");
    if (value) std::fprintf(csv_, "%.6f", *value);
  }

  static std::optional<double> Value(const Run& run, const char* counter) {
    const auto found = run.counters.find(counter);
    return found != run.counters.end() ? std::optional<double>(found->second.value) : std::nullopt;
  }
  // Our accelerated time over that of another contender.
  static std::optional<double> Ratio(const Run& run, const char* other) {
    const auto theirs = Value(run, other);
    return theirs ? std::optional(*Value(run, kNames[kAccelerated]) / *theirs) : std::nullopt;
  }

  std::FILE* csv_;
  int compared_ = 0, wrong_ = 0;
  double sumOfLogs_ = 0;
  std::vector<std::pair<std::string, double>> slower_;
};

constexpr const char* kUsage =
    "ky_bench [--filter=REGEX] [--size=WxH]... [--pitch=BYTES] [--target=NAME] [--rounds=N]\n"
    "         [--plain=off] [--csv=FILE]\n"
    "The filter is matched against OPERATION/WxH. Rows of grey images are BYTES apart, those of\n"
    "others in proportion; sizes that are wider are left out. The target is the widest path that\n"
    "calls may take, such as avx2; it takes the place of KY_PATH in the environment.\n";

std::optional<Options> Parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    const std::size_t equals = argument.find('=');
    const std::string_view key = argument.substr(0, equals);
    const std::string value(equals == argument.npos ? "" : argument.substr(equals + 1));
    Size size{};
    if (key == "--filter") {
      options.filter = value;
    } else if (key == "--size" &&
               std::sscanf(value.c_str(), "%dx%d", &size.width, &size.height) == 2 &&
               size.width > 0 && size.height > 0) {
      options.sizes.push_back(size);
    } else if (key == "--rounds" && std::atoi(value.c_str()) > 0) {
      options.rounds = std::atoi(value.c_str());
    } else if (key == "--pitch" && std::atoi(value.c_str()) > 0) {
      options.pitch = std::atoi(value.c_str());
    } else if (key == "--target" && !value.empty()) {
      options.target = value;
    } else if (key == "--plain" && (value == "off" || value == "on")) {
      options.plain = value == "on";
    } else if (key == "--csv" && !value.empty()) {
      options.csv = value;
    } else {
      return std::nullopt;
    }
  }
  if (options.sizes.empty()) options.sizes = {{640, 480}, {1920, 1080}, {4096, 4096}};
  if (options.pitch != 0)
    std::erase_if(options.sizes, [&](const Size& size) { return size.width > options.pitch; });
  return options;
}

int Main(int argc, char** argv) {
  const auto options = Parse(argc, argv);
  if (!options) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  if (!options->target.empty()) setenv("KY_PATH", options->target.c_str(), 1);
  if (!options->target.empty() && KyGetPath() != options->target) {
    std::fprintf(stderr, "This processor has no path %s.\n", options->target.c_str());
    return 2;
  }
#if KY_BENCH_OPENCV
  cv::setNumThreads(1);
#endif
  std::FILE* const csv = options->csv.empty() ? nullptr : std::fopen(options->csv.c_str(), "w");
  if (csv == nullptr && !options->csv.empty()) {
    std::perror(options->csv.c_str());
    return 1;
  }
  for (const Operation& operation : Table())
    for (const Size& size : options->sizes)
      benchmark::RegisterBenchmark((operation.name + "/" + size.Name()).c_str(), Run, operation,
                                   size, *options)
          ->Iterations(options->rounds);
  Reporter reporter(csv);
  benchmark::RunSpecifiedBenchmarks(&reporter, options->filter);
  if (csv != nullptr) std::fclose(csv);
  return reporter.AllRight() ? 0 : 1;
}

}  // namespace

bool Register(std::vector<Operation> operations) {
  std::move(operations.begin(), operations.end(), std::back_inserter(Table()));
  return true;
}

}  // namespace ky::bench

int main(int argc, char** argv) { return ky::bench::Main(argc, argv); }
