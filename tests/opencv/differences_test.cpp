// What docs/coming-from-opencv.md says about results, found by running both.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <tuple>
#include <vector>

#include "ky/ky.h"
#include "ky/opencv.h"

namespace {

using Grey = KyImage<KyBW8>;
using Color = KyImage<KyC24>;

struct Pictures {
  cv::Mat a, b, color;
};

Pictures RandomPictures(int width, int height) {
  cv::RNG random(5);
  Pictures p = {cv::Mat(height, width, CV_8UC1), cv::Mat(height, width, CV_8UC1),
                cv::Mat(height, width, CV_8UC3)};
  for (cv::Mat* mat : {&p.a, &p.b, &p.color}) random.fill(*mat, cv::RNG::UNIFORM, 0, 256);
  // Something smooth beside the noise, and levels at both ends.
  cv::blur(p.a.colRange(0, width / 2), p.a.colRange(0, width / 2), {5, 5});
  p.b.rowRange(0, 4) = 0;
  p.b.rowRange(4, 8) = 255;
  return p;
}

// Ours: what a call on grey images makes of a and b.
template <class Call>
std::function<cv::Mat(const Pictures&)> Ours(Call call) {
  return [call](const Pictures& p) {
    KyMatImage<KyBW8> a(p.a), b(p.b);
    Grey out(p.a.cols, p.a.rows);
    EXPECT_EQ(call(&a, &b, &out), KY_OK);
    return KyAsMat(out).clone();
  };
}
#define OURS(call)                                                                     \
  Ours([]([[maybe_unused]] const auto* a, [[maybe_unused]] const auto* b, Grey* out) { \
    return call;                                                                       \
  })
#define THEIRS(call)                                   \
  [](const Pictures& p) {                              \
    [[maybe_unused]] const cv::Mat &a = p.a, &b = p.b; \
    cv::Mat out;                                       \
    call;                                              \
    return out;                                        \
  }

// Both give the same inside a frame of so many pixels, give or take `most` levels. The frame and
// the levels are as small as that: `most` is reached, and the frame differs.
struct Claim {
  const char* what;
  std::function<cv::Mat(const Pictures&)> ours, theirs;
  int most = 0, frame = 0;
};

int MostDifferent(const cv::Mat& a, const cv::Mat& b) {
  return static_cast<int>(cv::norm(a, b, cv::NORM_INF));
}

void Check(const std::vector<Claim>& claims) {
  const Pictures pictures = RandomPictures(98, 71);
  for (const Claim& claim : claims) {
    SCOPED_TRACE(claim.what);
    const cv::Mat ours = claim.ours(pictures), theirs = claim.theirs(pictures);
    ASSERT_EQ(ours.size(), theirs.size());
    ASSERT_EQ(ours.type(), theirs.type());
    const auto inside = [&](int n) { return cv::Rect(n, n, ours.cols - 2 * n, ours.rows - 2 * n); };
    const cv::Rect inner = inside(claim.frame);
    EXPECT_EQ(MostDifferent(ours(inner), theirs(inner)), claim.most);
    if (claim.frame > 0) {
      const cv::Rect outer = inside(claim.frame - 1);
      EXPECT_GT(MostDifferent(ours(outer), theirs(outer)), claim.most);
    }
  }
}

KyKernel& ShapeOf(const cv::Mat& element) {
  static KyKernel kernel;
  kernel.SetSizeX(static_cast<std::int16_t>(element.cols));
  kernel.SetSizeY(static_cast<std::int16_t>(element.rows));
  for (int y = 0; y < element.rows; ++y)
    for (int x = 0; x < element.cols; ++x) kernel.SetKernelData(x, y, element.at<uchar>(y, x));
  return kernel;
}
const cv::Mat& Corner() {  // an element without symmetry
  static const cv::Mat element = (cv::Mat_<uchar>(3, 3) << 1, 1, 0, 1, 1, 0, 0, 0, 0);
  return element;
}
cv::Mat Turned(const cv::Mat& element) {
  cv::Mat turned;
  cv::flip(element, turned, -1);
  return turned;
}

KyBW8* Squares() {
  static std::vector<KyBW8> table(256);
  for (int i = 0; i < 256; ++i)
    table[static_cast<std::size_t>(i)] = static_cast<KyBW8>(i * i / 255);
  return table.data();
}

TEST(ComingFromOpenCV, PixelByPixel) {
  Check({
      {"add", OURS(ImgOper(KY_OPER_ADD, a, b, out)), THEIRS(cv::add(a, b, out))},
      {"subtract", OURS(ImgOper(KY_OPER_SUBTRACT, a, b, out)), THEIRS(cv::subtract(a, b, out))},
      {"absdiff", OURS(ImgOper(KY_OPER_ABS_DIFFERENCE, a, b, out)), THEIRS(cv::absdiff(a, b, out))},
      {"multiply", OURS(ImgOper(KY_OPER_MULTIPLY, a, b, out)), THEIRS(cv::multiply(a, b, out))},
      {"divide truncates",
       OURS((ImgOper(KY_OPER_MAX, b, KyBW8{1}, out), ImgOper(KY_OPER_DIVIDE, a, out, out))),
       THEIRS(cv::divide(a, cv::max(b, 1), out)), 1},
      {"average truncates", OURS(ImgOper(KY_OPER_AVERAGE, a, b, out)),
       THEIRS(cv::addWeighted(a, 0.5, b, 0.5, 0, out)), 1},
      {"min", OURS(ImgOper(KY_OPER_MIN, a, b, out)), THEIRS(cv::min(a, b, out))},
      {"max", OURS(ImgOper(KY_OPER_MAX, a, b, out)), THEIRS(cv::max(a, b, out))},
      {"and", OURS(ImgOper(KY_OPER_AND, a, b, out)), THEIRS(cv::bitwise_and(a, b, out))},
      {"not", OURS(ImgOper(KY_OPER_INVERT, a, out)), THEIRS(cv::bitwise_not(a, out))},
      {"compare", OURS(ImgOper(KY_OPER_GREATER, a, b, out)),
       THEIRS(cv::compare(a, b, out, cv::CMP_GT))},
      {"threshold is the level above", OURS(ImgThreshold(a, out, 101)),
       THEIRS(cv::threshold(a, out, 100, 255, cv::THRESH_BINARY))},
      {"Otsu", OURS(ImgThreshold(a, out, unsigned(IMG_THRESHOLD_MIN_RESIDUE))),
       THEIRS(cv::threshold(a, out, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU))},
      {"adaptive", OURS(ImgLocalThreshold(a, out, 7, 7, 1 - 10)),
       THEIRS(cv::adaptiveThreshold(a, out, 255, cv::ADAPTIVE_THRESH_MEAN_C, cv::THRESH_BINARY, 15,
                                    10)),
       0, 7},
      {"gain and offset", OURS(ImgGainOffset(a, out, 1.5f, -20)),
       THEIRS(a.convertTo(out, -1, 1.5, -20)), 1},
      {"table", OURS(ImgLut(a, out, Squares())),
       THEIRS(cv::LUT(a, cv::Mat(1, 256, CV_8U, Squares()), out))},
      {"copy under a mask",
       OURS((ImgCopy(KyBW8{7}, out), ImgOper(KY_OPER_SET_WHERE_NONZERO, b, a, out))),
       THEIRS(out = cv::Mat(a.size(), CV_8U, cv::Scalar(7)); a.copyTo(out, b))},
      {"equalise by the levels below", OURS(ImgEqualize(a, out)), THEIRS(cv::equalizeHist(a, out)),
       5},
  });
  // A division by 0 is white here and black there.
  Grey one(1, 1), zero(1, 1);
  one.SetPixel(7, 0, 0);
  EXPECT_EQ(ImgOper(KY_OPER_DIVIDE, &one, &zero, &one), KY_OK);
  EXPECT_EQ(one.GetPixel(0, 0), 255);
  EXPECT_EQ(cv::Mat(cv::Mat(1, 1, CV_8U, cv::Scalar(7)) / KyAsMat(zero)).at<uchar>(0, 0), 0);
}

constexpr int kNearest = cv::BORDER_REPLICATE, kZero = cv::BORDER_CONSTANT;

void Absolute(const cv::Mat& signedLevels, cv::Mat& out) { cv::convertScaleAbs(signedLevels, out); }

TEST(ComingFromOpenCV, Filters) {
  static const float kernel3[9] = {1, 2, 3, 4, 5, 6, 7, 8, 4};
  static const float kernel5[25] = {1, 0, 0, 0, 2, 0, 3, 1, 1, 0, 5, 1, 4,
                                    1, 0, 0, 2, 0, 7, 0, 1, 1, 1, 0, 2};
  static KyKernel k3, k5, differences;
  k3.SetKernelData(kernel3);
  k5.SetKernelData(kernel5);
  k5.SetRectifier(3);
  differences.SetKernelData(0, 0, 0, -1, 0, 1, 0, 0, 0);  // rectifier 2: what is negative becomes 0
  Check({
      {"blur", OURS(ImgConvolUniform(a, out, 3, 2)),
       THEIRS(cv::blur(a, out, {7, 5}, {-1, -1}, kNearest))},
      {"blur, default border", OURS(ImgConvolUniform(a, out, 3)), THEIRS(cv::blur(a, out, {7, 7})),
       0, 3},
      {"blur 3x3 by shift darkens", OURS(ImgConvolUniform3x3(a, out)),
       THEIRS(cv::blur(a, out, {3, 3}, {-1, -1}, kNearest)), 4},
      {"Gaussian 3x3 truncates", OURS(ImgConvolGaussian3x3(a, out)),
       THEIRS(cv::GaussianBlur(a, out, {3, 3}, 0, 0, kNearest)), 1},
      {"Gaussian 5x5", OURS(ImgConvolGaussian5x5(a, out)),
       THEIRS(cv::GaussianBlur(a, out, {5, 5}, 0, 0, kNearest))},
      {"Gaussian by sigma", OURS(ImgConvolGaussian(a, out, 6, 6, 2)),
       THEIRS(cv::GaussianBlur(a, out, {13, 13}, 2, 2, kNearest)), 1},
      {"median", OURS(ImgMedian(a, out, 3)), THEIRS(cv::medianBlur(a, out, 7))},
      {"Sobel", OURS(ImgConvolSobelX(a, out)),
       THEIRS(cv::Sobel(a, out, CV_16S, 1, 0, 3, 1, 0, kZero); Absolute(out, out))},
      {"Sobel, default border", OURS(ImgConvolSobelX(a, out)),
       THEIRS(cv::Sobel(a, out, CV_16S, 1, 0); Absolute(out, out)), 0, 1},
      {"Laplacian", OURS(ImgConvolLaplacian4(a, out)),
       THEIRS(cv::Laplacian(a, out, CV_16S, 1, 1, 0, kZero); Absolute(out, out))},
      {"3x3, coefficients in steps of 1/256", OURS(ImgConvolKernel(a, out, &k3)),
       THEIRS(cv::filter2D(a, out, -1, cv::Mat(3, 3, CV_32F, (void*)kernel3) / 40, {-1, -1}, 0,
                           kNearest)),
       4},
      {"5x5, truncated", OURS(ImgConvolKernel(a, out, &k5)),
       THEIRS(cv::filter2D(a, out, -1, cv::Mat(5, 5, CV_32F, (void*)kernel5) / 33, {-1, -1}, 0,
                           kNearest)),
       1},
      {"kernels of differences", OURS(ImgConvolKernel(a, out, &differences)),
       THEIRS(cv::filter2D(a, out, -1, cv::Mat((cv::Mat_<float>(1, 3) << -1, 0, 1)), {-1, -1}, 0,
                           kNearest))},
  });
}

// Only one of them reads what lies around a region.
TEST(ComingFromOpenCV, Regions) {
  const Pictures p = RandomPictures(98, 71);
  const cv::Mat part = p.a(cv::Rect(60, 20, 20, 20)), alone = part.clone();
  cv::Mat withSurroundings, theirs;
  cv::blur(part, withSurroundings, {5, 5}, {-1, -1}, kNearest);
  cv::blur(alone, theirs, {5, 5}, {-1, -1}, kNearest);
  KyMatImage<KyBW8> source(part);
  Grey ours(20, 20);
  EXPECT_EQ(ImgConvolUniform(&source, &ours, 2), KY_OK);
  EXPECT_EQ(MostDifferent(KyAsMat(ours), theirs), 0);
  EXPECT_GT(MostDifferent(withSurroundings, theirs), 0);
}

TEST(ComingFromOpenCV, Morphology) {
  const auto rectangle = [](int halfWidth, int halfHeight) {
    return cv::getStructuringElement(cv::MORPH_RECT, {2 * halfWidth + 1, 2 * halfHeight + 1});
  };
  static const cv::Mat box = rectangle(3, 2);
  static const cv::Mat ellipse = cv::getStructuringElement(cv::MORPH_ELLIPSE, {11, 11});
  Check({
      {"dilate by a box", OURS(ImgDilateBox(a, out, 3, 2)), THEIRS(cv::dilate(a, out, box))},
      {"erode by a box", OURS(ImgErodeBox(a, out, 3, 2)), THEIRS(cv::erode(a, out, box))},
      {"open by a box", OURS(ImgOpenBox(a, out, 3, 2)),
       THEIRS(cv::morphologyEx(a, out, cv::MORPH_OPEN, box))},
      {"top-hat", OURS(ImgWhiteTopHat(a, out, 3, 2)),
       THEIRS(cv::morphologyEx(a, out, cv::MORPH_TOPHAT, box))},
      {"black-hat", OURS(ImgBlackTopHat(a, out, 3, 2)),
       THEIRS(cv::morphologyEx(a, out, cv::MORPH_BLACKHAT, box))},
      {"gradient", OURS(ImgMorphoGradientBox(a, out, 3, 2)),
       THEIRS(cv::morphologyEx(a, out, cv::MORPH_GRADIENT, box))},
      {"an ellipse is a shape", OURS(ImgClose(a, out, &ShapeOf(ellipse))),
       THEIRS(cv::morphologyEx(a, out, cv::MORPH_CLOSE, ellipse))},
      {"erode by a corner", OURS(ImgErode(a, out, &ShapeOf(Corner()))),
       THEIRS(cv::erode(a, out, Corner()))},
      {"dilation mirrors the element", OURS(ImgDilate(a, out, &ShapeOf(Corner()))),
       THEIRS(cv::dilate(a, out, Turned(Corner())))},
  });
}

// Colours, which OpenCV keeps as blue, green, red.
std::function<cv::Mat(const Pictures&)> OfColors(KY_ERRORS (*call)(const KyROI<KyC24>*, Grey*)) {
  return [call](const Pictures& p) {
    KyMatImage<KyC24> color(p.color);
    Grey out(p.a.cols, p.a.rows);
    EXPECT_EQ(call(&color, &out), KY_OK);
    return KyAsMat(out).clone();
  };
}
// Ours and theirs under every order of filters that both have.
template <KY_BAYER_ORDER order>
cv::Mat Mosaic(const Pictures& p) {
  KyMatImage<KyBW8> source(p.a);
  Color out(p.a.cols, p.a.rows);
  EXPECT_EQ(ImgConvertBayer(&source, &out, order), KY_OK);
  return KyAsMat(out).clone();
}
template <int code>
cv::Mat Converted(const Pictures& p) {
  cv::Mat out;
  cv::cvtColor(p.a, out, code);
  return out;
}

// The components of `color` as pairs of a luma, which is at least 16, and a chroma.
cv::Mat Pairs(const Pictures& p) {
  const cv::Mat levels = cv::max(p.color, cv::Scalar::all(16));
  return cv::Mat(levels.rows, levels.cols / 4 * 2, CV_16UC1, levels.data, levels.step).clone();
}
cv::Mat Of422(const Pictures& p) {
  KyMatImage<KyBW16> source(Pairs(p));
  Color out(source.GetWidth(), source.GetHeight());
  EXPECT_EQ(ImgConvertFrom422(&source, &out), KY_OK);
  return KyAsMat(out).clone();
}
cv::Mat Converted422(const Pictures& p) {
  const cv::Mat pairs = Pairs(p);
  cv::Mat out;
  cv::cvtColor(cv::Mat(pairs.rows, pairs.cols, CV_8UC2, pairs.data, pairs.step), out,
               cv::COLOR_YUV2RGB_YUY2);
  return out;
}

TEST(ComingFromOpenCV, Colors) {
  Check({
      {"grey of red, green, blue",
       OfColors(+[](const KyROI<KyC24>* c, Grey* out) { return ImgConvert(c, out); }),
       [](const Pictures& p) {
         cv::Mat out;
         cv::cvtColor(p.color, out, cv::COLOR_RGB2GRAY);
         return out;
       }},
      {"a range", OfColors(+[](const KyROI<KyC24>* c, Grey* out) {
         return ImgThreshold(c, out, KyC24{40, 50, 60}, KyC24{200, 180, 220});
       }),
       [](const Pictures& p) {
         cv::Mat out;
         cv::inRange(p.color, cv::Scalar(40, 50, 60), cv::Scalar(200, 180, 220), out);
         return out;
       }},
      {"a component",
       OfColors(+[](const KyROI<KyC24>* c, Grey* out) { return ClrGetComponent(c, out, 2); }),
       [](const Pictures& p) {
         cv::Mat out;
         cv::extractChannel(p.color, out, 2);
         return out;
       }},
      {"4:2:2", Of422, Converted422, 1},
      // Named after the first two pixels of the first row here, after those of the second row from
      // the second column on there.
      {"RG", Mosaic<KY_BAYER_RG>, Converted<cv::COLOR_BayerBG2RGB>, 0, 1},
      {"GR", Mosaic<KY_BAYER_GR>, Converted<cv::COLOR_BayerGB2RGB>, 0, 1},
      {"GB", Mosaic<KY_BAYER_GB>, Converted<cv::COLOR_BayerGR2RGB>, 0, 1},
      {"BG", Mosaic<KY_BAYER_BG>, Converted<cv::COLOR_BayerRG2RGB>, 0, 1},
  });
}

// A picture of another size.
template <class Call>
std::function<cv::Mat(const Pictures&)> Sized(cv::Size size, Call call) {
  return [=](const Pictures& p) {
    KyMatImage<KyBW8> source(p.a);
    Grey out(size.width, size.height);
    EXPECT_EQ(call(&source, &out), KY_OK);
    return KyAsMat(out).clone();
  };
}
std::function<cv::Mat(const Pictures&)> Resized(cv::Size size, int interpolation) {
  return [=](const Pictures& p) {
    cv::Mat out;
    cv::resize(p.a, out, size, 0, 0, interpolation);
    return out;
  };
}

TEST(ComingFromOpenCV, Geometry) {
  const auto resize = [](const auto* a, Grey* out) { return ImgResize(a, out); };
  const auto shrink = [](const auto* a, Grey* out) { return ImgShrink(a, out); };
  Check({
      {"flip about the vertical axis", OURS((ImgCopy(a, out), ImgHorizontalMirror(out))),
       THEIRS(cv::flip(a, out, 1))},
      {"flip about the horizontal axis", OURS((ImgCopy(a, out), ImgVerticalMirror(out))),
       THEIRS(cv::flip(a, out, 0))},
      {"larger", Sized({150, 101}, resize), Resized({150, 101}, cv::INTER_LINEAR), 1},
      {"areas", Sized({41, 30}, shrink), Resized({41, 30}, cv::INTER_AREA)},
  });
  // Both turn counter-clockwise, and pixel (0, 0) lies at (0, 0). Apart from the border, results
  // differ by what positions are rounded to: 1/256 of a pixel here, 1/32 there.
  Check({
      {"turned and scaled", OURS(ImgScaleRotate(a, 48, 35, 48, 35, 2, 2, 30, out, 8)),
       THEIRS(cv::warpAffine(a, out, cv::getRotationMatrix2D({48, 35}, 30, 2), a.size())), 5},
  });
}

TEST(ComingFromOpenCV, Numbers) {
  const Pictures p = RandomPictures(98, 71);
  KyMatImage<KyBW8> a(p.a);
  // The threshold of Otsu is the first level above it here, the last one below there.
  cv::Mat out;
  const double otsu = cv::threshold(p.a, out, 0, 255, cv::THRESH_OTSU);
  EXPECT_EQ(ImgAutoThreshold(&a, IMG_THRESHOLD_MIN_RESIDUE), otsu + 1);

  float variance = 0, mean = 0;
  cv::Scalar theirMean, theirDeviation;
  cv::meanStdDev(p.a, theirMean, theirDeviation);
  EXPECT_EQ(ImgVariance(&a, variance, mean), KY_OK);
  EXPECT_FLOAT_EQ(mean, static_cast<float>(theirMean[0]));
  EXPECT_FLOAT_EQ(std::sqrt(variance), static_cast<float>(theirDeviation[0]));

  KyBW32Vector sums;
  const auto compareSums = [&](const cv::Mat& theirs) {
    ASSERT_EQ(sums.GetNumElements(), theirs.total());
    for (unsigned i = 0; i < sums.GetNumElements(); ++i)
      EXPECT_EQ(sums[i], static_cast<KyBW32>(theirs.at<int>(static_cast<int>(i))));
  };
  EXPECT_EQ(ImgProjectOnAColumn(&a, &sums), KY_OK);
  cv::reduce(p.a, out, 1, cv::REDUCE_SUM, CV_32S);
  compareSums(out);
  EXPECT_EQ(ImgProjectOnARow(&a, &sums), KY_OK);
  cv::reduce(p.a, out, 0, cv::REDUCE_SUM, CV_32S);
  compareSums(out);

  KyBW8HistogramVector histogram;
  EXPECT_EQ(ImgHistogram(&a, &histogram), KY_OK);
  const float range[] = {0, 256};
  const float* ranges = range;
  const int bins = 256, channel = 0;
  cv::calcHist(&p.a, 1, &channel, cv::Mat(), out, 1, &bins, &ranges);
  for (unsigned i = 0; i < 256; ++i)
    EXPECT_EQ(float(histogram[i]), out.at<float>(static_cast<int>(i)));

  KyBW8 least = 0, most = 0;
  KyBW32 area = 0;
  KyMoments moments;
  double theirLeast = 0, theirMost = 0;
  cv::minMaxLoc(p.a, &theirLeast, &theirMost);
  EXPECT_EQ(ImgPixelStat(&a, least, most, mean), KY_OK);
  EXPECT_EQ(least, theirLeast);
  EXPECT_EQ(most, theirMost);
  EXPECT_EQ(ImgArea(&a, 1, area), KY_OK);
  EXPECT_EQ(area, static_cast<KyBW32>(cv::countNonZero(p.a)));
  EXPECT_EQ(ImgWeighedMoments(&a, moments), KY_OK);
  EXPECT_EQ(moments.m00, cv::moments(p.a).m00);
  EXPECT_EQ(moments.m11, cv::moments(p.a).m11);
  EXPECT_EQ(moments.m03, cv::moments(p.a).m03);

  // Distances, rounded to the scale.
  Grey mask(98, 71);
  KyImage<KyBW16> distances(98, 71);
  EXPECT_EQ(ImgThreshold(&a, &mask, 40), KY_OK);
  EXPECT_EQ(ImgDistance(&mask, &distances, IMG_DISTANCE_EUCLIDEAN, 16), KY_OK);
  cv::distanceTransform(KyAsMat(mask), out, cv::DIST_L2, cv::DIST_MASK_PRECISE);
  out.convertTo(out, CV_16U, 16);
  EXPECT_EQ(MostDifferent(KyAsMat(distances), out), 0);
}

TEST(ComingFromOpenCV, Objects) {
  const Pictures p = RandomPictures(98, 71);
  KyMatImage<KyBW8> a(p.a);
  cv::Mat labels, stats, centroids, mask = p.a >= 150;
  const int count = cv::connectedComponentsWithStats(mask, labels, stats, centroids, 8);
  KyObjectsVector objects;
  KyImage<KyBW32> ourLabels(98, 71);
  EXPECT_EQ(ImgFindObjects(&a, 150, 255, KY_CONNEXITY_8, &objects, &ourLabels), KY_OK);
  ASSERT_EQ(objects.GetNumElements(), static_cast<unsigned>(count - 1));  // they count the ground
  using Found = std::tuple<int, int, int, int, int>;
  std::vector<Found> ours, theirs;
  for (const KyObject& o : objects)
    ours.push_back({o.x, o.y, o.width, o.height, static_cast<int>(o.area)});
  for (int i = 1; i < count; ++i) {
    const int* const row = stats.ptr<int>(i);
    theirs.push_back({row[0], row[1], row[2], row[3], row[4]});
  }
  std::ranges::sort(ours);
  std::ranges::sort(theirs);
  EXPECT_EQ(ours, theirs);
  EXPECT_EQ(cv::countNonZero((KyAsMat(ourLabels) > 0) != (labels > 0)), 0);
  EXPECT_GT(count, 20);
}

}  // namespace
