// Affine transforms, warps by table and mirrors.
#include <cmath>
#include <memory>
#include <numbers>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

// Scaled and turned about the middle of the picture, and shifted.
struct Motion {
  float angle, scaleX, scaleY, shift;
};
constexpr Motion kTurn15 = {15, 1, 1, 0}, kTurn90 = {90, 1, 1, 0.25f},
                 kTurn40 = {40, 0.5f, 0.5f, 0};
constexpr Motion kEnlarge = {0, 1.37f, 1.21f, 0}, kReduce = {0, 0.61f, 0.7f, 0};
constexpr Motion kShift = {0, 1, 1, 3}, kShiftByPart = {0, 1, 1, 3.3f};

KyImage<KyBW8>& In(Pictures& p, KyBW8) { return p.a; }
KyImage<KyC24>& In(Pictures& p, KyC24) { return p.colorA; }
KyImage<KyBW8>& Out(Pictures& p, KyBW8) { return p.out; }
KyImage<KyC24>& Out(Pictures& p, KyC24) { return p.colorOut; }

template <class T>
Contender Ours(Motion m, int bits) {
  return [=](Pictures& p) {
    const float x = static_cast<float>(p.a.GetWidth()) / 2;
    const float y = static_cast<float>(p.a.GetHeight()) / 2;
    ImgScaleRotate(&In(p, T()), x, y, x + m.shift, y - m.shift, m.scaleX, m.scaleY, m.angle,
                   &Out(p, T()), bits);
  };
}

// Tables that turn the picture by 15 degrees, with black corners; the packed one stays inside.
struct Tables {
  explicit Tables(Pictures& p)
      : x(p.a.GetWidth(), p.a.GetHeight()),
        y(x.GetWidth(), x.GetHeight()),
        packed(x.GetWidth(), x.GetHeight()) {
    const double cosine = std::cos(std::numbers::pi / 12), sine = std::sin(std::numbers::pi / 12);
    const int width = x.GetWidth(), height = x.GetHeight();
    for (int row = 0; row < height; ++row) {
      for (int column = 0; column < width; ++column) {
        const double dx = column - width / 2, dy = row - height / 2;
        const int u = static_cast<int>(cosine * dx - sine * dy) + width / 2;
        const int v = static_cast<int>(sine * dx + cosine * dy) + height / 2;
        x.SetPixel(static_cast<KyBW16>(u), column, row);
        y.SetPixel(static_cast<KyBW16>(v), column, row);
        const auto clamped = [](int at, int limit) {
          return static_cast<KyBW32>(std::min(std::max(at, 0), limit - 1));
        };
        packed.SetPixel(clamped(u, width) | clamped(v, height) << 16, column, row);
      }
    }
  }
  KyImage<KyBW16> x, y;
  KyImage<KyBW32> packed;
};

template <class T>
Contender OursByTables() {
  return [](Pictures& p) {
    return [&p, tables = std::make_shared<Tables>(p)] {
      ImgWarp(&In(p, T()), &Out(p, T()), &tables->x, &tables->y, 0, 0);
    };
  };
}
template <class T>
Contender OursByPacked() {
  return [](Pictures& p) {
    return [&p, tables = std::make_shared<Tables>(p)] {
      ImgWarp(&In(p, T()), &Out(p, T()), &tables->packed);
    };
  };
}

#if KY_BENCH_OPENCV
Contender OpenCvAffine(Motion m, int flags, bool color) {
  return [=](Pictures& p) {
    const cv::Mat& in = color ? p.views.colorA : p.views.a;
    cv::Mat& out = color ? p.views.colorOut : p.views.out;
    const cv::Point2f center(static_cast<float>(in.cols) / 2, static_cast<float>(in.rows) / 2);
    cv::Mat matrix = cv::getRotationMatrix2D(center, m.angle, m.scaleX);
    if (m.angle == 0) {
      matrix.at<double>(1, 1) = m.scaleY;
      matrix.at<double>(1, 2) = (1 - m.scaleY) * center.y;
    }
    matrix.at<double>(0, 2) += m.shift;
    matrix.at<double>(1, 2) -= m.shift;
    return [&in, &out, matrix, flags] {
      cv::warpAffine(in, out, matrix, out.size(), flags, cv::BORDER_CONSTANT);
    };
  };
}
Contender OpenCvRemap(bool color) {
  return [=](Pictures& p) {
    const Tables tables(p);
    cv::Mat positions(p.views.a.size(), CV_16SC2);
    for (int y = 0; y < positions.rows; ++y)
      for (int x = 0; x < positions.cols; ++x)
        positions.at<cv::Vec2s>(y, x) = {static_cast<short>(tables.x.GetPixel(x, y)),
                                         static_cast<short>(tables.y.GetPixel(x, y))};
    const cv::Mat& in = color ? p.views.colorA : p.views.a;
    cv::Mat& out = color ? p.views.colorOut : p.views.out;
    return [&in, &out, positions] {
      cv::remap(in, out, positions, cv::noArray(), cv::INTER_NEAREST, cv::BORDER_CONSTANT);
    };
  };
}
constexpr int kNearest = cv::INTER_NEAREST, kLinear = cv::INTER_LINEAR;
#else
Contender OpenCvAffine(Motion, int, bool) { return nullptr; }
Contender OpenCvRemap(bool) { return nullptr; }
constexpr int kNearest = 0, kLinear = 1;
#endif

std::vector<Operation> Transforms() {
  const struct {
    const char* name;
    Motion motion;
  } motions[] = {{"turn by 15", kTurn15},
                 {"turn by 90", kTurn90},
                 {"turn and reduce", kTurn40},
                 {"enlarge", kEnlarge},
                 {"reduce", kReduce},
                 {"shift", kShift},
                 {"shift by a part", kShiftByPart}};
  std::vector<Operation> all;
  for (const auto& [name, motion] : motions) {
    for (const int bits : {0, 4, 8}) {
      const int flags = bits == 0 ? kNearest : kLinear;
      const std::string text = name + std::string(", ") + std::to_string(bits) + " bits";
      all.push_back(
          {text, Ours<KyBW8>(motion, bits), OpenCvAffine(motion, flags, false), Limit::kCopy});
      all.push_back({"C24 " + text, Ours<KyC24>(motion, bits), OpenCvAffine(motion, flags, true),
                     Limit::kCopy, Pixel::kColor});
    }
  }
  return all;
}

const bool transforms = Register(Transforms());
const bool others = Register({
    {"warp by two tables", OursByTables<KyBW8>(), OpenCvRemap(false), Limit::kCopy},
    {"warp by packed table", OursByPacked<KyBW8>(), OpenCvRemap(false), Limit::kCopy},
    {"C24 warp by two tables", OursByTables<KyC24>(), OpenCvRemap(true), Limit::kCopy,
     Pixel::kColor},
    {"C24 warp by packed table", OursByPacked<KyC24>(), OpenCvRemap(true), Limit::kCopy,
     Pixel::kColor},
    {"circle warp tables",
     [](Pictures& p) {
       return [xs = std::make_shared<KyImage<KyBW16>>(), ys = std::make_shared<KyImage<KyBW16>>(),
               &p] {
         ImgSetCircleWarp(500, 500, p.a.GetHeight(), 100, 400, p.a.GetWidth(), 0, 360, xs.get(),
                          ys.get());
       };
     }},
    {"mirror horizontally", [](Pictures& p) { ImgHorizontalMirror(&p.out); },
     OPENCV(cv::flip(v.a, v.out, 1)), Limit::kCopy},
    {"C24 mirror horizontally", [](Pictures& p) { ImgHorizontalMirror(&p.colorOut); },
     OPENCV(cv::flip(v.colorA, v.colorOut, 1)), Limit::kCopy, Pixel::kColor},
    {"mirror vertically", [](Pictures& p) { ImgVerticalMirror(&p.out); },
     OPENCV(cv::flip(v.a, v.out, 0)), Limit::kCopy},
    {"C24 mirror vertically", [](Pictures& p) { ImgVerticalMirror(&p.colorOut); },
     OPENCV(cv::flip(v.colorA, v.colorOut, 0)), Limit::kCopy, Pixel::kColor},
});

}  // namespace
}  // namespace ky::bench
