// Boxes and disks of several sizes.
#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

#if KY_BENCH_OPENCV
Contender Nearest(int operation, int shape, unsigned half) {
  const int size = 2 * static_cast<int>(half) + 1;
  return [=, element = cv::getStructuringElement(shape, {size, size})](Pictures& p) {
    cv::morphologyEx(p.views.a, p.views.out, operation, element);
  };
}
#define NEAREST(...) Nearest(__VA_ARGS__)
#else
#define NEAREST(...) nullptr
#endif

using Box = KY_ERRORS (*)(const KyROI<KyBW8>*, KyROI<KyBW8>*, unsigned, unsigned) noexcept;
using Disk = KY_ERRORS (*)(const KyROI<KyBW8>*, KyROI<KyBW8>*, unsigned) noexcept;

// Compared with OpenCV's operation number `opencv`.
struct Kind {
  const char* name;
  Box box;
  Disk disk;
  int opencv;
  std::vector<unsigned> boxes, disks;
};
const Kind kKinds[] = {
    {"dilate", ImgDilateBox, ImgDilateDisk, 1, {1, 3, 7, 50, 300}, {1, 3, 7, 50}},
    {"erode", ImgErodeBox, ImgErodeDisk, 0, {7}, {7}},
    {"open", ImgOpenBox, ImgOpenDisk, 2, {1, 3, 7, 50}, {7}},
    {"close", ImgCloseBox, ImgCloseDisk, 3, {3}, {7}},
    {"gradient", ImgMorphoGradientBox, ImgMorphoGradientDisk, 4, {1, 3, 7, 50}, {7}},
    {"white top-hat", ImgWhiteTopHatBox, ImgWhiteTopHatDisk, 5, {3}, {7}},
    {"black top-hat", ImgBlackTopHatBox, ImgBlackTopHatDisk, 6, {3}, {7}},
};

std::vector<Operation> Table() {
  std::vector<Operation> table;
  for (const Kind& kind : kKinds) {
    const std::string name = kind.name;
    for (const unsigned half : kind.boxes)
      table.push_back({name + " box " + std::to_string(half),
                       [=, f = kind.box](Pictures& p) { f(&p.a, &p.out, half, half); },
                       NEAREST(kind.opencv, cv::MORPH_RECT, half), Limit::kCopy});
    for (const unsigned radius : kind.disks)
      table.push_back({name + " disk " + std::to_string(radius),
                       [=, f = kind.disk](Pictures& p) { f(&p.a, &p.out, radius); },
                       NEAREST(kind.opencv, cv::MORPH_ELLIPSE, radius), Limit::kCopy});
  }
  table.push_back({"dilate box 7, in place",
                   [](Pictures& p) { ImgDilateBox(&p.out, nullptr, 7, 7); },
                   NEAREST(cv::MORPH_DILATE, cv::MORPH_RECT, 7), Limit::kCopy});
  return table;
}

const bool kRegistered = Register(Table());

}  // namespace
}  // namespace ky::bench
