// Histograms, equalisation, projections. Histograms of noise, of a scene, and of a flat image:
// there a counter that waits for itself is slow.
#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

enum class Picture { kNoise, kScene, kFlat };
template <Picture kPicture>
Contender::Work Histogram(Pictures& p) {
  // Some sixth of the noise remains, as in a picture by a camera.
  if (kPicture == Picture::kScene) ImgGainOffset(&p.a, &p.out, 0.16F, 100);
  if (kPicture == Picture::kFlat) ImgOper(KY_OPER_COPY, KyBW8(100), &p.out);
  return [&p, source = kPicture == Picture::kNoise ? &p.a : &p.out] {
    KyBW8HistogramVector counts;
    ImgHistogram(source, &counts);
    p.numbers.assign(counts.begin(), counts.end());
  };
}
template <bool kFlat>
Contender::Work DeepHistogram(Pictures& p) {
  if (kFlat) ImgOper(KY_OPER_COPY, KyBW16(100), &p.deepOut);
  return [&p, source = kFlat ? &p.deepOut : &p.deepA] {
    KyBW8HistogramVector counts;
    ImgHistogram(source, &counts, 15, 10, 0);
    p.numbers.assign(counts.begin(), counts.end());
  };
}
#if KY_BENCH_OPENCV
Contender::Work CvHistogram(const cv::Mat& source, int bins, int end) {
  return [source, bins, limit = static_cast<float>(end)] {
    const int channel = 0;
    const float range[] = {0, limit};
    const float* ranges[] = {range};
    cv::Mat counts;
    cv::calcHist(&source, 1, &channel, cv::Mat(), counts, 1, &bins, ranges);
  };
}
#define CV_HISTOGRAM(source, bins, end) \
  [](Pictures& p) { return CvHistogram(p.views.source, bins, end); }
#else
#define CV_HISTOGRAM(source, bins, end) nullptr
#endif

template <class T, KyImage<T> Pictures::*kSource, bool kOnARow>
void Project(Pictures& p) {
  KyBW32Vector sums;
  kOnARow ? ImgProjectOnARow(&(p.*kSource), &sums) : ImgProjectOnAColumn(&(p.*kSource), &sums);
  p.numbers.assign(sums.begin(), sums.end());
}

const bool registered = Register({
    {"ImgHistogram, noise", Histogram<Picture::kNoise>, CV_HISTOGRAM(a, 256, 256)},
    {"ImgHistogram, scene", Histogram<Picture::kScene>, CV_HISTOGRAM(out, 256, 256)},
    {"ImgHistogram, flat", Histogram<Picture::kFlat>, CV_HISTOGRAM(out, 256, 256)},
    {"ImgHistogram (BW16), noise", DeepHistogram<false>, CV_HISTOGRAM(deepA, 1024, 65536)},
    {"ImgHistogram (BW16), flat", DeepHistogram<true>, CV_HISTOGRAM(deepOut, 1024, 65536)},
    {"ImgEqualize", [](Pictures& p) { ImgEqualize(&p.a, &p.out); },
     OPENCV(cv::equalizeHist(v.a, v.out)), Limit::kCopy},
    {"ImgProjectOnARow", Project<KyBW8, &Pictures::a, true>,
     OPENCV(cv::reduce(v.a, v.work[0], 0, cv::REDUCE_SUM, CV_32S))},
    {"ImgProjectOnAColumn", Project<KyBW8, &Pictures::a, false>,
     OPENCV(cv::reduce(v.a, v.work[0], 1, cv::REDUCE_SUM, CV_32S))},
    {"ImgProjectOnARow (BW16)", Project<KyBW16, &Pictures::deepA, true>,
     OPENCV(cv::reduce(v.deepA, v.work[0], 0, cv::REDUCE_SUM, CV_32F))},
    {"ImgProjectOnAColumn (BW16)", Project<KyBW16, &Pictures::deepA, false>,
     OPENCV(cv::reduce(v.deepA, v.work[0], 1, cv::REDUCE_SUM, CV_32F))},
});

}  // namespace
}  // namespace ky::bench
