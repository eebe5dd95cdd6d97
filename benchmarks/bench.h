// How an operation enters the table of ky_bench: one entry in a FAMILY_bench.cpp,
//
//   const bool registered = Register({
//       {"invert", [](Pictures& p) { ImgOper(KY_OPER_INVERT, &p.a, &p.out); },
//        OPENCV(cv::bitwise_not(v.a, v.out)), Limit::kCopy},
//   });
//
// that is, its name, our call, OpenCV's nearest equivalent (or nullptr) and what memory allows. The
// Simd library's equivalents stand in simd_bench.cpp. A call that needs more than the pictures
// prepares it and returns the work to be timed:
//
//   [](Pictures& p) { return [&p, kernel = MakeKernel()] { ImgConvolKernel(...); }; }
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "ky/ky.h"
#if KY_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace ky::bench {

#if KY_BENCH_OPENCV
// The same pixels as OpenCV sees them. The matrices of `work` are for intermediate results: OpenCV
// gives them their type at the first call, and they keep their memory.
struct Views {
  cv::Mat a, b, out, colorA, colorB, colorOut, deepA, deepB, deepOut, work[4];
};
// The body of OpenCV's contender, with the views as `v`; nothing where OpenCV is missing.
#define OPENCV(...)                                          \
  [](::ky::bench::Pictures& pictures) {                      \
    [[maybe_unused]] ::ky::bench::Views& v = pictures.views; \
    __VA_ARGS__;                                             \
  }
#else
struct Views {};
#define OPENCV(...) nullptr
#endif

// What the contenders work on: textured noise in the sources, all levels among it. Results go to
// the destination of the operation's pixel type and, where they are not pixels, to `numbers`.
struct Pictures {
  // Rows of grey images are `pitch` bytes apart, the others in proportion; 0 leaves it to the
  // library.
  Pictures(int width, int height, int pitch = 0);

  KyImage<KyBW8> a, b, out;
  KyImage<KyC24> colorA, colorB, colorOut;
  KyImage<KyBW16> deepA, deepB, deepOut;
  std::vector<double> numbers;
  Views views;
  std::vector<std::unique_ptr<KyBW8[]>> memory;  // of images with a given pitch
};

// Bytes of a pixel of the destination.
enum class Pixel { kGrey = 1, kDeep = 2, kColor = 3 };

// The least that memory allows, on the destination's pixel type.
enum class Limit {
  kNone,
  kFill,        // one stream written
  kCopy,        // one read, one written
  kTwoStreams,  // two read, one written
};

// A call on the pictures, or a preparation that returns the call.
class Contender {
 public:
  using Work = std::function<void()>;

  Contender(std::nullptr_t) {}
  template <class F>
  Contender(F f) {
    if constexpr (std::is_void_v<std::invoke_result_t<F, Pictures&>>) {
      prepare_ = [f](Pictures& p) { return Work([f, &p] { f(p); }); };
    } else {
      prepare_ = [f](Pictures& p) { return Work(f(p)); };
    }
  }
  Work Prepare(Pictures& p) const { return prepare_ ? prepare_(p) : Work(); }

 private:
  std::function<Work(Pictures&)> prepare_;
};

// Operations are registered without `simd` and `family`.
struct Operation {
  std::string name;
  Contender ours;
  Contender opencv = nullptr;
  Limit limit = Limit::kNone;
  Pixel pixel = Pixel::kGrey;
  Contender simd = nullptr;
  std::string family = {};
};

// Appends to the table operations of the family that the file is named after. Returns true, for the
// initialisation of a constant.
bool Register(std::vector<Operation> operations, const char* file = __builtin_FILE());

// The contenders of the Simd library, by the names of operations. Empty without it.
std::map<std::string, Contender> SimdContenders();

// The contender that stands for a limit.
Contender::Work MemoryLimit(Limit limit, Pixel pixel, Pictures& pictures);

}  // namespace ky::bench
