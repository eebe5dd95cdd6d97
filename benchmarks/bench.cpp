// ky_bench: a table of all operations, ours on both paths beside OpenCV and the memory limit.
//
// Google Benchmark registers, filters, runs and reports, one benchmark an operation and size. What
// it times by itself, one function over many iterations, is not what is compared here: on a machine
// that others use too, contenders measured minutes apart say little about each other. So an
// iteration is a round in which every contender has its turn, and the least time of each, over all
// rounds, leaves the benchmark as a counter.
#include "benchmarks/bench.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
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
enum { kPlain, kAccelerated, kOpenCv, kSimd, kLimit, kContenders };
constexpr const char* kNames[kContenders] = {"plain", "accelerated", "opencv", "simd", "limit"};
constexpr int kPeers[] = {kOpenCv, kSimd};
// For how many seconds a contender runs in each round, and the plain path in all rounds together.
constexpr double kTurn = 0.004;
constexpr double kPlainInAll = 0.02;
// Ratios up to this one are taken for 1.
constexpr double kNoise = 1.05;

// One operation on one size.
class Comparison {
 public:
  Comparison(const Operation& operation, Pictures& pictures, bool plain) {
    const auto ours = operation.ours.Prepare(pictures);
    works_[kAccelerated] = ours;
    works_[kOpenCv] = operation.opencv.Prepare(pictures);
    works_[kSimd] = operation.simd.Prepare(pictures);
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
  double inAll_[kContenders] = {kForever, kForever, kForever, kForever, kForever};
  double spent_[kContenders] = {};
  double least_[kContenders] = {kForever, kForever, kForever, kForever, kForever};
};

// What our work leaves on one of the paths, from a destination in a known state.
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
  explicit Reporter(std::FILE* csv) : csv_(csv) {
    for (const Operation& operation : Table()) families_[operation.name] = operation.family;
  }

  bool ReportContext(const Context&) override {
    std::printf("Nanoseconds a pixel, least of all calls; one thread.\n\n%-44s %-10s", "operation",
                "size");
    for (const char* name : kNames) std::printf(" %11s", name);
    for (const int peer : kPeers) std::printf("   /%-7s", kNames[peer]);
    std::printf("\n");
    if (csv_ != nullptr) {
      std::fprintf(csv_, "family,operation,size");
      for (const char* name : kNames) std::fprintf(csv_, ",%s", name);
      std::fprintf(csv_, "\n");
    }
    return true;
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) Report(run);
    std::fflush(stdout);
  }

  void Finalize() override {
    for (const int peer : kPeers) {
      if (comparisons_[peer].empty()) continue;
      std::printf("\nTimes as fast as %s, in the geometric mean:\n", kNames[peer]);
      for (const auto& [size, all] : comparisons_[peer])
        std::printf("  %-10s %6.2f  (%d operations)\n", size.c_str(),
                    std::exp(-all.sumOfLogs / all.count), all.count);
    }
    if (!slower_.empty()) std::printf("\nOur time over that of a peer that is faster:\n");
    for (const auto& line : slower_) std::printf("  %s\n", line.c_str());
    if (wrong_ > 0) std::printf("WRONG: %d, see above.\n", wrong_);
  }

  bool AllRight() const { return wrong_ == 0; }

 private:
  struct Comparisons {
    double sumOfLogs = 0;
    int count = 0;
  };

  void Report(const Run& run) {
    // The size is what follows the last slash.
    const std::string& full = run.run_name.function_name;
    const std::size_t slash = full.rfind('/');
    const std::string name = full.substr(0, slash), size = full.substr(slash + 1);
    std::printf("%-44s %-10s", name.c_str(), size.c_str());
    if (run.error_occurred) {
      std::printf(" *** %s\n", run.error_message.c_str());
      ++wrong_;
      return;
    }
    if (csv_ != nullptr)
      std::fprintf(csv_, "%s,\"%s\",%s", families_[name].c_str(), name.c_str(), size.c_str());
    for (const char* contender : kNames) {
      const auto value = Value(run, contender);
      Print(11, 4, value);
      if (csv_ != nullptr) std::fprintf(csv_, value ? ",%.6f" : ",", value.value_or(0));
    }
    if (csv_ != nullptr) std::fprintf(csv_, "\n");
    for (const int peer : kPeers) Compare(run, peer, name, size);
    std::printf("\n");
  }

  void Compare(const Run& run, int peer, const std::string& name, const std::string& size) {
    const auto theirs = Value(run, kNames[peer]);
    const auto ratio =
        theirs ? std::optional(*Value(run, kNames[kAccelerated]) / *theirs) : std::nullopt;
    Print(10, 2, ratio);
    if (!ratio) return;
    Comparisons& all = comparisons_[peer][size];
    all.sumOfLogs += std::log(*ratio);
    ++all.count;
    if (*ratio <= kNoise) return;
    char number[16];
    std::snprintf(number, sizeof number, "%5.2f  ", *ratio);
    slower_.push_back(number + name + ", " + size + ", " + kNames[peer]);
  }

  static void Print(int width, int decimals, std::optional<double> value) {
    if (value)
      std::printf(" %*.*f", width, decimals, *value);
    else
      std::printf(" %*s", width, "-");
  }

  static std::optional<double> Value(const Run& run, const char* counter) {
    const auto found = run.counters.find(counter);
    return found != run.counters.end() ? std::optional<double>(found->second.value) : std::nullopt;
  }

  std::FILE* csv_;
  int wrong_ = 0;
  std::map<std::string, std::string> families_;
  std::map<std::string, Comparisons> comparisons_[kContenders];
  std::vector<std::string> slower_;
};

#if KY_BENCH_OPENCV
// OpenCV reads from the environment what it may not use when it is loaded: the program starts anew.
void LimitOpenCv(const std::string& target, char** argv) {
  constexpr const char* kVariable = "OPENCV_CPU_DISABLE";
  if (target.empty() || target == "avx512" || std::getenv(kVariable) != nullptr) return;
  std::string disabled = "AVX512F,AVX512-SKX,AVX512-ICL";
  if (target != "avx2") disabled += ",AVX,AVX2,FMA3,FP16";
  setenv(kVariable, disabled.c_str(), 1);
  execv("/proc/self/exe", argv);
}
#endif

// Gives operations their contenders of the Simd library; false when one has no operation.
bool AddSimd() {
  for (auto& [name, contender] : SimdContenders()) {
    const auto operation = std::ranges::find(Table(), name, &Operation::name);
    if (operation == Table().end()) return false;
    operation->simd = contender;
  }
  return true;
}

constexpr const char* kUsage =
    "ky_bench [--filter=REGEX] [--size=WxH]... [--pitch=BYTES] [--target=NAME] [--rounds=N]\n"
    "         [--plain=off] [--csv=FILE]\n"
    "The filter is matched against OPERATION/WxH. Rows of grey images are BYTES apart, those of\n"
    "others in proportion; sizes that are wider are left out. The target is the widest path that\n"
    "calls may take, such as avx2; it takes the place of KY_PATH in the environment. OpenCV may\n"
    "use no AVX-512 then, and for targets narrower than avx2 no AVX either.\n";

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
  if (options.sizes.empty()) options.sizes = {{100, 100}, {640, 480}, {1920, 1080}, {4096, 4096}};
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
  if (!AddSimd()) {
    std::fputs("simd_bench.cpp names an operation that there is not.\n", stderr);
    return 1;
  }
#if KY_BENCH_OPENCV
  LimitOpenCv(options->target, argv);
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

bool Register(std::vector<Operation> operations, const char* file) {
  const std::string stem = std::filesystem::path(file).stem().string();
  for (Operation& operation : operations) operation.family = stem.substr(0, stem.rfind("_bench"));
  std::move(operations.begin(), operations.end(), std::back_inserter(Table()));
  return true;
}

}  // namespace ky::bench

int main(int argc, char** argv) { return ky::bench::Main(argc, argv); }
