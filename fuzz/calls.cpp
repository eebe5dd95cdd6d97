// Sequences of calls of every family on random ROIs, vectors and kernels, which may coincide,
// overlap, lie outside their image, be empty or missing: the same calls on the plain and on the
// accelerated path answer alike and leave the same bytes behind, and no call touches memory that is
// not its own.
#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "ky/ky.h"

namespace {

void Require(bool holds, unsigned call, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "call %u: %s\n", call, what);
  std::abort();
}

// Everything random about one call, drawn before it runs on both paths.
struct Draw {
  unsigned call;
  struct Place {
    unsigned image;
    int x, y, width, height;
    bool missing;
  };
  std::array<Place, 4> places;
  std::array<int, 8> numbers;
  std::array<float, 13> floats;
};

int DrawNumber(FuzzedDataProvider& input) {
  constexpr int kOdd[] = {-1, 0, 1, 255, 256, 65535, INT_MAX, INT_MIN};
  const int kind = input.ConsumeIntegralInRange(0, 9);
  if (kind == 0) return input.PickValueInArray(kOdd);
  return input.ConsumeIntegralInRange(-9, kind == 1 ? 300 : 20);
}
float DrawFloat(FuzzedDataProvider& input) {
  using Limits = std::numeric_limits<float>;
  constexpr float kOdd[] = {0,
                            1e-30f,
                            Limits::infinity(),
                            -Limits::infinity(),
                            Limits::quiet_NaN(),
                            Limits::max(),
                            Limits::lowest(),
                            -0.0f};
  const int kind = input.ConsumeIntegralInRange(0, 15);
  if (kind == 0) return input.PickValueInArray(kOdd);
  if (kind < 6) return static_cast<float>(input.ConsumeIntegralInRange(-40, 60));
  return static_cast<float>(input.ConsumeIntegralInRange(-4000, 4000)) / 97.0f;
}

// An image in memory of exactly its size.
template <class T>
struct Sheet {
  std::vector<KyBW8> bytes;
  KyImage<T> image;

  Sheet(int width, int height, unsigned seed) {
    const int pitch = (width * KyPixelTraits<T>::kBits + 31) / 32 * 4;
    bytes.resize(static_cast<std::size_t>(pitch * height));
    for (KyBW8& byte : bytes) {
      seed = seed * 1664525 + 1013904223;
      byte = static_cast<KyBW8>(seed >> 24 & (seed >> 9 & 1 ? 255 : 3));
    }
    image.Attach(reinterpret_cast<typename KyPixelTraits<T>::Memory*>(bytes.data()), width, height,
                 pitch);
  }
};

// All that calls work on. Two worlds with the same seed are equal, and stay so.
struct World {
  Sheet<KyBW8> grey, grey2;
  Sheet<KyC24> color;
  Sheet<KyBW16> deep;
  Sheet<KyBW32> wide;
  Sheet<KyBW1> bits;
  KyImage<KyBW8> lookup;
  KyImage<KyBW16> xTable, yTable;
  KyKernel kernel;
  KyMovingAverage average;
  KyBW8Vector bytes{256}, line, line2;
  KyBW16Vector words;
  KyBW32Vector sums;
  KyBW8HistogramVector histogram;
  KyPathVector path;
  KyBW8PathVector greyPath;
  KyPeaksVector peaks;
  KyVector generic, generic2;
  std::vector<float> results;

  World(int width, int height, unsigned seed)
      : grey(width, height, seed),
        grey2(width, height, seed + 1),
        color(width, height, seed + 2),
        deep(width, height, seed + 3),
        wide(width, height, seed + 4),
        bits(width, height, seed + 5),
        xTable(width, height),
        yTable(width, height) {}

  bool operator==(const World& other) const {
    return grey.bytes == other.grey.bytes && grey2.bytes == other.grey2.bytes &&
           color.bytes == other.color.bytes && deep.bytes == other.deep.bytes &&
           wide.bytes == other.wide.bytes && bits.bytes == other.bits.bytes &&
           Same(bytes, other.bytes) && Same(words, other.words) && Same(sums, other.sums) &&
           Same(histogram, other.histogram) && Same(path, other.path) && Same(line, other.line) &&
           Same(line2, other.line2) && Same(peaks, other.peaks) &&
           SameGroups(generic, other.generic) && SameGroups(generic2, other.generic2) &&
           SameBits(results, other.results);
  }

 private:
  template <class Vector>
  static bool Same(const Vector& a, const Vector& b) {
    return a.GetNumElements() == b.GetNumElements() &&
           (a.GetNumElements() == 0 ||
            std::memcmp(a.GetDataPtr(), b.GetDataPtr(),
                        a.GetNumElements() * sizeof(*a.GetDataPtr())) == 0);
  }
  static bool SameGroups(const KyVector& a, const KyVector& b) {
    return a.GetVectType() == b.GetVectType() && a.GetNbGroup() == b.GetNbGroup() &&
           a.GetAllocatedSize() == b.GetAllocatedSize() &&
           (a.GetAllocatedSize() == 0 ||
            std::memcmp(a.GetDataPtr(), b.GetDataPtr(),
                        static_cast<std::size_t>(a.GetAllocatedSize())) == 0);
  }
  static bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0);
  }
};

// One call: the arguments of a draw on a world.
struct Call {
  World& w;
  const Draw& draw;

  int N(std::size_t i) const { return draw.numbers[i]; }
  unsigned U(std::size_t i) const { return static_cast<unsigned>(draw.numbers[i]); }
  KyBW8 B(std::size_t i) const { return static_cast<KyBW8>(draw.numbers[i]); }
  float F(std::size_t i) const { return draw.floats[i]; }
  template <class Enumeration>
  Enumeration E(std::size_t i) const {
    return static_cast<Enumeration>(draw.numbers[i]);
  }
};

// The ROI of a draw's place, made afresh on the image; null when it is to be missing.
template <class T>
class Place {
 public:
  Place(KyImage<T>& image, const Draw::Place& place)
      : roi_(&image, place.x, place.y, place.width, place.height), missing_(place.missing) {}
  operator KyROI<T>*() { return missing_ ? nullptr : &roi_; }

 private:
  KyROI<T> roi_;
  bool missing_;
};

// Every call, by number. `a`, `b` and `d` are grey places, the others of their own type.
KY_ERRORS Run(const Call& c) {
  World& w = c.w;
  const auto& p = c.draw.places;
  const auto greyOf = [&](std::size_t i) -> KyImage<KyBW8>& {
    return p[i].image % 3 == 0 ? w.grey2.image : w.grey.image;
  };
  Place<KyBW8> a(greyOf(0), p[0]), b(greyOf(1), p[1]), d(greyOf(2), p[2]);
  Place<KyC24> colorA(w.color.image, p[0]), colorB(w.color.image, p[1]),
      colorD(w.color.image, p[2]);
  Place<KyBW16> deepA(w.deep.image, p[0]), deepD(w.deep.image, p[3]);
  Place<KyBW32> wideA(w.wide.image, p[0]), wideD(w.wide.image, p[2]);
  Place<KyBW1> bitsA(w.bits.image, p[0]), bitsD(w.bits.image, p[2]);
  const KyC24 low(c.B(0), c.B(1), c.B(2)), high(c.B(3), c.B(4), c.B(5));
  const auto keep = [&](std::initializer_list<float> values) {
    w.results.insert(w.results.end(), values);
    return KyGetError();
  };

  using Filter = KY_ERRORS (*)(const KyROI<KyBW8>*, KyROI<KyBW8>*) noexcept;
  constexpr Filter kFilters[] = {ImgConvolUniform3x3,  ImgConvolUniform3x3Plain,
                                 ImgConvolGaussian3x3, ImgConvolGaussian3x3Plain,
                                 ImgConvolLowpass2,    ImgConvolHighpass1,
                                 ImgConvolHighpass2,   ImgConvolSobelX,
                                 ImgConvolSobelY,      ImgConvolSobel,
                                 ImgConvolPrewittX,    ImgConvolPrewittY,
                                 ImgConvolPrewitt,     ImgConvolLaplacian4,
                                 ImgConvolLaplacian8};
  using Box = KY_ERRORS (*)(const KyROI<KyBW8>*, KyROI<KyBW8>*, unsigned, unsigned) noexcept;
  constexpr Box kBoxes[] = {ImgDilateBox,      ImgErodeBox,       ImgOpenBox,          ImgCloseBox,
                            ImgWhiteTopHatBox, ImgBlackTopHatBox, ImgMorphoGradientBox};
  using Disk = KY_ERRORS (*)(const KyROI<KyBW8>*, KyROI<KyBW8>*, unsigned) noexcept;
  constexpr Disk kDisks[] = {ImgDilateDisk,        ImgErodeDisk,       ImgOpenDisk,
                             ImgCloseDisk,         ImgWhiteTopHatDisk, ImgBlackTopHatDisk,
                             ImgMorphoGradientDisk};

  float x = 0, y = 0;
  KyBW8 least = 0, most = 0;
  unsigned threshold = c.U(1);
  int offset = 0;
  switch (c.draw.call) {
    case 0: return ImgOper(c.E<ARITH_LOGIC_OPERATIONS>(0), a, b, d);
    case 1: return ImgOper(c.E<ARITH_LOGIC_OPERATIONS>(0), colorA, colorB, colorD);
    case 2: return ImgOper(c.E<ARITH_LOGIC_OPERATIONS>(0), a, c.B(1), d);
    case 3: return ImgLut(a, d, &w.bytes);
    case 4: return ImgNormalize(a, d, c.F(0), c.F(1));
    case 5: return ImgGainOffset(a, d, c.F(0), c.F(1));
    case 6: ImgPixelAverage(a, x); return keep({x});
    case 7: ImgPixelVariance(a, x, y); return keep({x, y});
    case 8: ImgPixelStdDev(a, x, y); return keep({x, y});
    case 9:
      ImgPixelStat(a, least, most, x);
      return keep({x, static_cast<float>(least), static_cast<float>(most)});
    case 10: return ImgHistogram(a, &w.histogram);
    case 11: return ImgHistogram(deepA, &w.histogram, c.U(0), c.U(1) % 17, c.N(2));
    case 12: return ImgHistogram(a, &w.generic);
    case 13: return ImgSetupEqualize(&w.histogram, &w.bytes);
    case 14: return ImgSetupEqualize(&w.generic, &w.generic2);
    case 15: return ImgEqualize(a, d);
    case 16: return ImgProjectOnARow(a, &w.sums);
    case 17: return ImgProjectOnAColumn(a, &w.sums);
    case 18: return ImgProjectOnARow(deepA, &w.sums);
    case 19: return ImgProjectOnAColumn(a, &w.generic);
    case 20:
      return keep(
          {ImgAnalyseHistogram(&w.histogram, c.E<IMG_HISTOGRAM_FEATURE>(0), c.N(1), c.N(2))});
    case 21: return ImgThreshold(a, d, c.U(0), c.B(1), c.B(2), c.F(0));
    case 22: return ImgThreshold(a, bitsD, c.U(0));
    case 23: return ImgThreshold(bitsA, d, c.B(0), c.B(1));
    case 24: return ImgThreshold(colorA, d, low, high);
    case 25: return ImgDoubleThreshold(a, d, c.U(0), c.U(1), c.B(2), c.B(3), c.B(4));
    case 26:
      ImgHistogramThreshold(&w.histogram, threshold, x, y, c.F(0), c.U(2), c.U(3));
      return keep({static_cast<float>(threshold), x, y});
    case 27: return ImgAutoAdaptiveThreshold(a, d, c.E<IMG_THRESHOLD_MODES>(0), c.N(1), c.N(2));
    case 28:
      return kFilters[c.U(0) % std::size(kFilters)](
          a, c.N(1) == 0 ? nullptr : static_cast<KyROI<KyBW8>*>(d));
    case 29: return w.kernel.SetKernel(c.E<KERNEL_TYPE>(0));
    case 30: return w.kernel.SetSizeX(static_cast<std::int16_t>(c.N(0) % 20));
    case 31: return w.kernel.SetSizeY(static_cast<std::int16_t>(c.N(0) % 20));
    case 32: return w.kernel.SetKernelData(c.N(0), c.N(1), c.F(0));
    case 33:
      w.kernel.SetGain(c.F(0));
      w.kernel.SetOffset(c.U(0));
      w.kernel.SetRectifier(static_cast<std::int16_t>(c.N(1)));
      w.kernel.SetOutsideValue(c.U(2));
      return KyGetError();
    case 34: return ImgConvolKernel(a, d, &w.kernel);
    case 35: return ImgConvolSymmetricKernel(a, d, &w.kernel);
    case 36:
      return kBoxes[c.U(0) % std::size(kBoxes)](
          a, c.N(1) == 0 ? nullptr : static_cast<KyROI<KyBW8>*>(d), c.U(2), c.U(3));
    case 37:
      return kDisks[c.U(0) % std::size(kDisks)](
          a, c.N(1) == 0 ? nullptr : static_cast<KyROI<KyBW8>*>(d), c.U(2));
    case 38:
      return ImgLinearTransform(a, c.F(0), c.F(1), c.F(2), c.F(3), c.F(4), c.F(5), d, c.N(0));
    case 39:
      return ImgLinearTransform(colorA, c.F(0), c.F(1), c.F(2), c.F(3), c.F(4), c.F(5), colorD,
                                c.N(0));
    case 40:
      return ImgScaleRotate(a, c.F(0), c.F(1), c.F(2), c.F(3), c.F(4), c.F(5), c.F(6), d, c.N(0));
    case 41:
      return ImgRegister(a, d, c.F(0), c.F(1), c.F(2), c.F(3), c.F(4), c.F(5), c.F(6), c.F(7),
                         c.N(0), c.N(1));
    case 42:
      return ImgRegister(a, d, c.F(0), c.F(1), c.F(2), c.F(3), c.F(4), c.F(5), c.F(6), c.F(7),
                         c.F(8), c.F(9), c.F(10), c.F(11), c.N(0));
    case 43: return ImgWarp(a, d, &w.xTable, &w.yTable, c.N(0), c.N(1));
    case 44: return ImgWarp(colorA, colorD, &w.xTable, &w.yTable, c.N(0), c.N(1));
    case 45: return ImgWarp(a, d, &w.wide.image);
    case 46:
      return ImgSetCircleWarp(c.F(0), c.F(1), c.N(0) % 100, c.F(2), c.F(3), c.N(1) % 100, c.F(4),
                              c.F(5), &w.xTable, &w.yTable);
    case 47: return c.N(0) % 2 == 0 ? ImgVerticalMirror(d) : ImgVerticalMirror(colorD);
    case 48: return c.N(0) % 2 == 0 ? ImgHorizontalMirror(d) : ImgHorizontalMirror(colorD);
    case 49: return w.average.SetSize(c.U(0) % 20, p[0].width, p[0].height, c.N(1));
    case 50: return w.average.Average(a, d);
    case 51: return w.average.Average(d);
    case 52: return ImgSetRecursiveAverageLUT(&w.words, c.F(0), c.F(1));
    case 53: return ImgRecursiveAverage(a, deepD, d, &w.words);
    case 54: return ImgGradientVector(a, wideD);
    case 55: return ImgGradientScalar(a, d, &w.lookup);
    case 56: return ImgGradientScalar(wideA, d, &w.lookup);
    case 57: return ImgModulusImage(&w.lookup, c.F(0));
    case 58: return ImgArgumentImage(&w.lookup, c.B(0), c.F(0));
    case 59: return ImgGetFrame(a, d, c.N(0));
    case 60: return ImgSetFrame(a, d, c.N(0));
    case 61: return ImgRealignFrame(a, d, c.N(0), c.N(1));
    case 62: return ImgRealignFrame(colorA, colorD, c.N(0), c.N(1));
    case 63:
      ImgMatchFrames(a, c.N(0), c.N(1), c.N(2), offset);
      return keep({static_cast<float>(offset)});
    case 64: return ImgRebuildFrame(a, d, c.N(0));
    case 65: return ImgRebuildFrame(colorA, colorD, c.N(0));
    case 66: return ImgSwapFrames(a, d);
    case 67:
      return ImgContour(a, c.E<CONTOUR_MODE>(0), c.N(1), c.N(2), c.E<CONTOUR_THRESHOLD>(3), c.U(4),
                        c.E<CONNEXITY>(5), &w.path);
    case 68:
      return ImgContour(a, c.E<CONTOUR_MODE>(0), c.N(1), c.N(2), c.E<CONTOUR_THRESHOLD>(3), c.U(4),
                        c.E<CONNEXITY>(5), &w.greyPath, c.N(6));
    case 69:
      return ImgContour(a, c.E<CONTOUR_MODE>(0), c.N(1), c.N(2), c.E<CONTOUR_THRESHOLD>(3), c.U(4),
                        c.E<CONNEXITY>(5), &w.generic2);
    case 70: return ClrGetComponent(colorA, d, c.N(0));
    case 71: return ClrSetComponent(a, colorD, c.N(0));
    case 72: return ImgOper(c.E<ARITH_LOGIC_OPERATIONS>(0), deepA, b, deepD);
    case 73: return ImgOper(c.E<ARITH_LOGIC_OPERATIONS>(0), a, colorB, colorD);
    case 74: return ImgImageToPath(a, &w.greyPath);
    case 75: return ImgPathToImage(d, &w.greyPath);
    case 76: return ImgImageToLineSegment(a, &w.line, c.N(0), c.N(1), c.N(2), c.N(3));
    case 77: return ImgLineSegmentToImage(d, &w.line, c.N(0), c.N(1), c.N(2), c.N(3));
    case 78: return ImgLineSegmentToImage(colorD, low, c.N(3), c.N(4), c.N(5), c.N(6));
    case 79: return ImgGetProfilePeaks(&w.line, &w.peaks, c.U(0), c.U(1), c.U(2), c.U(3));
    case 80: return ImgProfileDerivative(&w.line, &w.line2);
    case 81: return ImgConvolUniform(&w.line, &w.line2, c.U(0));
    case 82: return ImgConvolBinomial(&w.line2, &w.line, c.U(0));
    case 83: return ImgDilate(&w.line, &w.line2, c.U(0));
    case 84: return ImgErode(&w.line2, &w.line2, c.U(0));
    case 85: return ImgLineSegToVect(a, &w.generic, c.N(0), c.N(1), c.N(2), c.N(3));
    case 86: return ImgVectToLineSeg(&w.generic, d);
    case 87: return ImgVectToLineSeg(&w.generic, c.N(0), c.N(1), c.N(2), c.N(3), d);
    case 88:
      return ImgTransitionScan(c.E<TRANS_SCAN_EDGE>(0), a, c.N(1), c.N(2), c.N(3), c.N(4), c.N(5),
                               c.N(6) % 1000, &w.generic2);
    case 89: return ImgGetVectTransition(&w.generic, &w.generic2, c.N(0));
    case 90:
      return ImgVect1c2(c.E<ARITH_LOGIC_OPERATIONS>(0), &w.generic, c.N(1), &w.generic2, c.N(2),
                        c.N(3));
    case 91:
      return ImgVect1c2(c.E<ARITH_LOGIC_OPERATIONS>(0), &w.generic, double{c.F(0)}, &w.generic2);
    default: return w.generic.SetStructure(c.N(0), c.N(1) % 999, c.N(2) % 99, c.N(3));
  }
}
constexpr unsigned kCalls = 93;

Draw DrawCall(FuzzedDataProvider& input, int width, int height) {
  Draw draw;
  draw.call = input.ConsumeIntegralInRange(0u, kCalls - 1);
  // Mostly of one size, or nearly every call would be refused for that.
  const int w = input.ConsumeIntegralInRange(0, width), h = input.ConsumeIntegralInRange(0, height);
  for (Draw::Place& place : draw.places) {
    const int oddity = input.ConsumeIntegralInRange(0, 63);
    place = {input.ConsumeIntegral<std::uint8_t>(),
             input.ConsumeIntegralInRange(0, width - w),
             input.ConsumeIntegralInRange(0, height - h),
             w,
             h,
             oddity == 1};
    if (oddity == 2) place.x = DrawNumber(input);
    if (oddity == 3) place.width = DrawNumber(input);
    if (oddity == 4) place.height = DrawNumber(input);
  }
  for (int& number : draw.numbers) number = DrawNumber(input);
  for (float& number : draw.floats) number = DrawFloat(input);
  return draw;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const int width = input.ConsumeIntegralInRange(1, 90),
            height = input.ConsumeIntegralInRange(1, 24);
  const unsigned seed = input.ConsumeIntegral<unsigned>();
  World plain(width, height, seed), accelerated(width, height, seed);
  Require(plain == accelerated, kCalls, "the worlds differ from the start");
  for (int calls = 0; calls < 12 && input.remaining_bytes() > 0; ++calls) {
    const Draw draw = DrawCall(input, width, height);
    KySetMMX(0);
    const KY_ERRORS expected = Run({plain, draw});
    const int traces = KyGetTraceCount();
    KySetMMX(1);
    const KY_ERRORS error = Run({accelerated, draw});
    Require(error == expected, draw.call, "the paths answer differently");
    Require(error == KY_OK || KyGetError() == error, draw.call, "the answer is not the status");
    Require(KyGetTraceCount() == traces, draw.call, "the paths trace differently");
    Require(plain == accelerated, draw.call, "the paths leave different bytes");
  }
  return 0;
}
