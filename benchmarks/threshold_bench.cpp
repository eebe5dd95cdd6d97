#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

// Bits to pack into and to read from, of the pictures' size, filled once.
KyImage<KyBW1>& Bits(Pictures& p) {
  static KyImage<KyBW1> bits;
  if (bits.GetWidth() != p.a.GetWidth() || bits.GetHeight() != p.a.GetHeight()) {
    bits.SetSize(&p.a);
    ImgThreshold(&p.a, &bits, 128);
  }
  return bits;
}

constexpr auto Automatic(IMG_THRESHOLD_MODES mode) {
  return [mode](Pictures& p) { ImgThreshold(&p.a, &p.out, static_cast<unsigned>(mode)); };
}
#define KY_OTSU OPENCV(cv::threshold(v.a, v.out, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU))

const bool registered = Register({
    {"threshold", [](Pictures& p) { ImgThreshold(&p.a, &p.out, 100); },
     OPENCV(cv::threshold(v.a, v.out, 99, 255, cv::THRESH_BINARY)), Limit::kCopy},
    {"threshold, any two levels", [](Pictures& p) { ImgThreshold(&p.a, &p.out, 100, 30, 200); },
     OPENCV(cv::threshold(v.a, v.out, 99, 255, cv::THRESH_BINARY)), Limit::kCopy},
    {"double threshold",
     [](Pictures& p) { ImgDoubleThreshold(&p.a, &p.out, 80, 160, 0, 100, 255); }, nullptr,
     Limit::kCopy},
    {"automatic threshold, min residue", Automatic(IMG_THRESHOLD_MIN_RESIDUE), KY_OTSU,
     Limit::kNone},
    {"automatic threshold, max entropy", Automatic(IMG_THRESHOLD_MAX_ENTROPY), KY_OTSU,
     Limit::kNone},
    {"automatic threshold, isodata", Automatic(IMG_THRESHOLD_ISODATA), KY_OTSU, Limit::kNone},
    {"automatic threshold, relative", Automatic(IMG_THRESHOLD_RELATIVE), KY_OTSU, Limit::kNone},
    {"automatic threshold, black and white", Automatic(IMG_THRESHOLD_QUADRATIC_BLACK_WHITE),
     KY_OTSU, Limit::kNone},
    {"adaptive surface, tiles of 64",
     [](Pictures& p) { ImgAutoAdaptiveThreshold(&p.a, &p.out, IMG_THRESHOLD_ISODATA, 64); },
     nullptr, Limit::kNone},
    {"threshold to bits", [](Pictures& p) { ImgThreshold(&p.a, &Bits(p), 128); }, nullptr,
     Limit::kCopy},
    {"threshold from bits", [](Pictures& p) { ImgThreshold(&Bits(p), &p.out, 10, 20); }, nullptr,
     Limit::kCopy},
    {"colour box",
     [](Pictures& p) { ImgThreshold(&p.colorA, &p.out, KyC24(50, 60, 70), KyC24(200, 190, 180)); },
     OPENCV(cv::inRange(v.colorA, cv::Scalar(50, 60, 70), cv::Scalar(200, 190, 180), v.out)),
     Limit::kNone},
});

}  // namespace
}  // namespace ky::bench
