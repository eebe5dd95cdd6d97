// One call of ImgOper on any three rectangles of one image, which may coincide, overlap or lie
// outside it: the plain and the accelerated path agree on the status and on every byte, and a
// failure changes nothing.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <vector>

#include "ky/ky.h"

namespace {

struct Rectangle {
  int x, y, width, height;
};

struct Arguments {
  int overload;
  ARITH_LOGIC_OPERATIONS operation;
  KyC24 value;
  int width, height;
  Rectangle a, b, destination;
};

// An image in memory of exactly its size, and the three rectangles of the call.
template <class T>
struct Canvas {
  std::vector<KyBW8> bytes;
  KyImage<T> image;
  KyROI<T> a, b, d;

  Canvas(const Arguments& call, const std::vector<KyBW8>& pattern)
      : bytes(sizeof(T) * static_cast<std::size_t>(call.width * call.height)),
        a(&image, call.a.x, call.a.y, call.a.width, call.a.height),
        b(&image, call.b.x, call.b.y, call.b.width, call.b.height),
        d(&image, call.destination.x, call.destination.y, call.destination.width,
          call.destination.height) {
    for (std::size_t i = 0; i < bytes.size() && !pattern.empty(); ++i)
      bytes[i] = pattern[i % pattern.size()];
    image.Attach(reinterpret_cast<T*>(bytes.data()), call.width, call.height,
                 call.width * static_cast<int>(sizeof(T)));
  }
};

struct Canvases {
  Canvas<KyBW8> grey;
  Canvas<KyC24> color;
  Canvas<KyBW16> deep;

  Canvases(const Arguments& call, const std::vector<KyBW8>& pattern)
      : grey(call, pattern), color(call, pattern), deep(call, pattern) {}
  bool operator==(const Canvases& other) const {
    return grey.bytes == other.grey.bytes && color.bytes == other.color.bytes &&
           deep.bytes == other.deep.bytes;
  }
};

constexpr int kOverloads = 18;

KY_ERRORS Run(const Arguments& call, Canvases& on) {
  auto& [grey, color, deep] = on;
  const auto op = call.operation;
  const KyBW8 level = call.value.c0;
  switch (call.overload) {
    case 0: return ImgOper(op, level, &grey.d);
    case 1: return ImgOper(op, &grey.a, &grey.d);
    case 2: return ImgOper(op, &grey.a, &color.d);
    case 3: return ImgOper(op, level, &grey.b, &grey.d);
    case 4: return ImgOper(op, &grey.a, level, &grey.d);
    case 5: return ImgOper(op, &grey.a, &grey.b, &grey.d);
    case 6: return ImgOper(op, call.value, &color.d);
    case 7: return ImgOper(op, &color.a, &color.d);
    case 8: return ImgOper(op, call.value, &color.b, &color.d);
    case 9: return ImgOper(op, &color.a, call.value, &color.d);
    case 10: return ImgOper(op, &color.a, &color.b, &color.d);
    case 11: return ImgOper(op, &grey.a, &color.b, &color.d);
    case 12: return ImgOper(op, &color.a, &grey.b, &color.d);
    case 13: return ImgOper(op, &grey.a, &grey.b, &color.d);
    case 14: return ImgOper(op, KyBW16{call.value.c0}, &deep.d);
    case 15: return ImgOper(op, &grey.a, &grey.b, &deep.d);
    case 16: return ImgOper(op, &deep.a, &grey.b, &deep.d);
    default: return ImgCopy(&grey.a, &grey.d);
  }
}

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  Arguments call;
  call.overload = input.ConsumeIntegralInRange(0, kOverloads - 1);
  call.operation = static_cast<ARITH_LOGIC_OPERATIONS>(input.ConsumeIntegralInRange(-3, 70));
  call.value.c0 = input.ConsumeIntegral<KyBW8>();
  call.value.c1 = input.ConsumeIntegral<KyBW8>();
  call.value.c2 = input.ConsumeIntegral<KyBW8>();
  call.width = input.ConsumeIntegralInRange(1, 200);
  call.height = input.ConsumeIntegralInRange(1, 40);
  // Mostly of one size, or nearly every call would be refused for that.
  const int width = input.ConsumeIntegralInRange(0, call.width);
  const int height = input.ConsumeIntegralInRange(0, call.height);
  for (Rectangle* place : {&call.a, &call.b, &call.destination}) {
    const int oddity = input.ConsumeIntegralInRange(0, 31);
    place->width = oddity == 1 ? input.ConsumeIntegral<int>() : width;
    place->height = oddity == 2 ? input.ConsumeIntegral<int>() : height;
    place->x = oddity == 3 ? input.ConsumeIntegral<int>()
                           : input.ConsumeIntegralInRange(0, call.width - width);
    place->y = oddity == 4 ? input.ConsumeIntegral<int>()
                           : input.ConsumeIntegralInRange(0, call.height - height);
  }
  const auto pattern = input.ConsumeRemainingBytes<KyBW8>();

  const Canvases before(call, pattern);
  Canvases plain(call, pattern), accelerated(call, pattern);
  KySetMMX(0);
  const KY_ERRORS error = Run(call, plain);
  KySetMMX(1);
  Require(Run(call, accelerated) == error);
  Require(plain == accelerated);
  Require(error == KY_OK || plain == before);
  return 0;
}
