// Line segments that cover the picture, so that there are as many points as pixels; and profiles of
// as many elements.
#include <memory>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

enum class Lines { kRows, kBackwards, kColumns, kSlanted };

// body(x0, y0, x1, y1)
template <class Body>
void ForEachLine(Lines lines, int width, int height, Body body) {
  const int right = width - 1, bottom = height - 1;
  if (lines == Lines::kColumns) {
    for (int x = 0; x < width; ++x) body(x, 0, x, bottom);
    return;
  }
  for (int y = 0; y < height; ++y) {
    switch (lines) {
      case Lines::kBackwards: body(right, y, 0, y); break;
      case Lines::kSlanted: body(0, y, right, bottom - y); break;
      default: body(0, y, right, y);
    }
  }
}

template <class Body>
Contender On(Lines lines, Body body) {
  return [=](Pictures& p) {
    ForEachLine(lines, p.a.GetWidth(), p.a.GetHeight(), [&](auto... ends) { body(p, ends...); });
  };
}

Contender Read(Lines lines) {
  return On(lines, [](Pictures& p, auto... ends) {
    static KyBW8Vector levels;
    ImgImageToLineSegment(&p.a, &levels, ends...);
  });
}
Contender Write(Lines lines) {
  return On(lines,
            [](Pictures& p, auto... ends) { ImgLineSegmentToImage(&p.out, KyBW8(77), ends...); });
}
Contender ReadGeneric(Lines lines) {
  return On(lines, [](Pictures& p, auto... ends) {
    static KyVector groups;
    ImgLineSegToVect(&p.a, &groups, ends...);
  });
}
Contender Scan(Lines lines) {
  return On(lines, [](Pictures& p, auto... ends) {
    static KyVector transitions;
    ImgTransitionScan(TRANS_SCAN_BOTH, &p.a, ends..., 250, 0, &transitions);
  });
}
#if KY_BENCH_OPENCV
Contender TheirRead(Lines lines) {
  return On(lines, [](Pictures& p, int x0, int y0, int x1, int y1) {
    static std::vector<KyBW8> levels;
    cv::LineIterator at(p.views.a, {x0, y0}, {x1, y1});
    levels.resize(static_cast<std::size_t>(at.count));
    for (KyBW8& level : levels) {
      level = **at;
      ++at;
    }
  });
}
Contender TheirWrite(Lines lines) {
  return On(lines, [](Pictures& p, int x0, int y0, int x1, int y1) {
    cv::line(p.views.out, {x0, y0}, {x1, y1}, cv::Scalar(77));
  });
}
#else
Contender TheirRead(Lines) { return nullptr; }
Contender TheirWrite(Lines) { return nullptr; }
#endif

template <class Filter>
Contender Profile(Filter filter) {
  return [=](Pictures& p) {
    struct Profiles {
      KyBW8Vector from, to;
    };
    auto profiles = std::make_shared<Profiles>();
    const unsigned n = static_cast<unsigned>(p.a.GetWidth() * p.a.GetHeight());
    profiles->from.SetNumElements(n);
    profiles->to.SetNumElements(n);
    for (unsigned i = 0; i < n; ++i)
      profiles->from[i] =
          p.a.GetPixel(static_cast<int>(i) % p.a.GetWidth(), static_cast<int>(i) / p.a.GetWidth());
    return [profiles, filter] { filter(&profiles->from, &profiles->to); };
  };
}
#if KY_BENCH_OPENCV
// On all rows as one, in a copy without the gaps that the picture may have between rows.
cv::Mat AllAsOneRow(Views& v) {
  cv::Mat& copy = v.work[3];
  if (copy.total() != v.a.total() || copy.type() != CV_8U) v.a.copyTo(copy);
  return copy.reshape(1, 1);
}
#define ON_ROW(...)                                                             \
  OPENCV(const cv::Mat in = AllAsOneRow(v); v.work[0].create(in.size(), CV_8U); \
         cv::Mat& out = v.work[0]; __VA_ARGS__)
#else
#define ON_ROW(...) nullptr
#endif

const bool registered = Register({
    {"segments, rows", Read(Lines::kRows), TheirRead(Lines::kRows), Limit::kCopy},
    {"segments, rows backwards", Read(Lines::kBackwards), TheirRead(Lines::kBackwards),
     Limit::kCopy},
    {"segments, columns", Read(Lines::kColumns), TheirRead(Lines::kColumns)},
    {"segments, slanted", Read(Lines::kSlanted), TheirRead(Lines::kSlanted)},
    {"segments written, rows", Write(Lines::kRows), TheirWrite(Lines::kRows), Limit::kFill},
    {"segments written, slanted", Write(Lines::kSlanted), TheirWrite(Lines::kSlanted)},
    {"generic segments, rows", ReadGeneric(Lines::kRows)},
    {"generic segments, slanted", ReadGeneric(Lines::kSlanted)},
    {"transitions, rows", Scan(Lines::kRows), nullptr, Limit::kCopy},
    {"transitions, rows backwards", Scan(Lines::kBackwards), nullptr, Limit::kCopy},
    {"transitions, slanted", Scan(Lines::kSlanted)},
    {"profile derivative", Profile(ImgProfileDerivative), nullptr, Limit::kCopy},
    {"profile uniform, half width 5", Profile([](auto... v) { ImgConvolUniform(v..., 5); }),
     ON_ROW(cv::blur(in, out, {11, 1}, {-1, -1}, cv::BORDER_REPLICATE)), Limit::kCopy},
    {"profile binomial", Profile([](auto... v) { ImgConvolBinomial(v..., 1); }),
     ON_ROW(cv::sepFilter2D(in, out, CV_8U, cv::Matx13f(0.25F, 0.5F, 0.25F),
                            cv::Matx<float, 1, 1>(1))),
     Limit::kCopy},
    {"profile dilation by 1", Profile([](auto... v) { ImgDilate(v..., 1); }),
     ON_ROW(cv::dilate(in, out, cv::Mat::ones(1, 3, CV_8U))), Limit::kCopy},
    {"profile dilation by 50", Profile([](auto... v) { ImgDilate(v..., 50); }),
     ON_ROW(cv::dilate(in, out, cv::Mat::ones(1, 101, CV_8U))), Limit::kCopy},
    {"profile peaks", Profile([](KyBW8Vector* profile, KyBW8Vector*) {
       static KyPeaksVector peaks;
       ImgGetProfilePeaks(profile, &peaks, 60, 200, 3, 9);
     })},
});

}  // namespace
}  // namespace ky::bench
