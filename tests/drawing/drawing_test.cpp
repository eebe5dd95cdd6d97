// What is drawn, read from the pixels of a surface: pictures against the place that each pixel of
// the surface shows, lines against their distance from it, charts column by column.
#include "ky/drawing.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "ky/ky.h"
#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

KyC24 ColorOf(KyBW8 level) { return {level, level, level}; }
KyC24 ColorOf(KyC24 color) { return color; }
constexpr KyC24 kPaper{255, 255, 255};

// White paper.
struct Paper {
  cairo_surface_t* surface;
  cairo_t* context;

  Paper(int width, int height)
      : surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)),
        context(cairo_create(surface)) {
    cairo_set_source_rgb(context, 1, 1, 1);
    cairo_paint(context);
    cairo_set_source_rgb(context, 0, 0, 0);
  }
  Paper(const Paper&) = delete;
  Paper& operator=(const Paper&) = delete;
  ~Paper() {
    cairo_destroy(context);
    cairo_surface_destroy(surface);
  }
  int width() const { return cairo_image_surface_get_width(surface); }
  int height() const { return cairo_image_surface_get_height(surface); }
  KyC24 At(int x, int y) const {
    cairo_surface_flush(surface);
    std::uint32_t rgb;
    std::memcpy(
        &rgb,
        cairo_image_surface_get_data(surface) + y * cairo_image_surface_get_stride(surface) + x * 4,
        sizeof rgb);
    return {static_cast<KyBW8>(rgb >> 16), static_cast<KyBW8>(rgb >> 8), static_cast<KyBW8>(rgb)};
  }
  // The share of ink of any colour but green.
  double Ink(int x, int y) const { return 1 - At(x, y).c1 / 255.0; }
  // Of the rectangle's pixels.
  double InkIn(int left, int top, int right, int bottom) const {
    double ink = 0;
    for (int y = top; y < bottom; ++y)
      for (int x = left; x < right; ++x) ink += At(x, y) == kPaper ? 0 : 1;
    return ink;
  }
};

template <class T>
class DrawnPicture : public testing::Test {};
using PixelTypes = testing::Types<KyBW8, KyC24>;
TYPED_TEST_SUITE(DrawnPicture, PixelTypes);

// Every pixel of the surface shows the picture's pixel in which its centre lies, at any place,
// scale and turn, and nothing beside the picture is touched.
TYPED_TEST(DrawnPicture, IsSharpAtAnyScale) {
  struct Case {
    int width, height;
    double xx, yx, xy, yy, x0, y0, x, y;
  };
  // The last one is larger than an image of Cairo may be.
  const Case cases[] = {{17, 11, 1, 0, 0, 1, 0, 0, 5, 4},
                        {17, 11, 1, 0, 0, 1, 0, 0, -6, -3},
                        {17, 11, 1, 0, 0, 1, 0, 0, 3.3, 2.6},
                        {17, 11, 4, 0, 0, 3, 7, 2, 0, 0},
                        {17, 11, 2.37, 0, 0, 1.81, 5.21, 3.43, 1, 2},
                        {17, 11, -2, 0, 0, 3, 50, 1, 1, 1},
                        {17, 11, 2.11, 1.07, -1.13, 1.93, 19.17, 3.31, 0, 0},
                        {170, 110, 0.213, 0, 0, 0.317, 2, 1, 0, 0},
                        {170, 110, 0.613, 0, 0, -0.517, -20, 40, 0, 0},
                        {170, 110, -0.313, 0, 0, 0.217, 30, -3, 0, 0},
                        {170, 110, 0.213, 0.117, -0.131, 0.317, 9, 1, 0, 0},
                        {170, 110, 0.013, 0, 0, 0.00017, 9, 1.49, 0, 0},
                        {40000, 5, 0.00097, 0, 0, 7, 2, 1, 0, 0},
                        {40000, 5, 3, 0, 0, 2, 2, 1, -32700, 0},
                        {0, 7, 1, 0, 0, 1, 0, 0, 0, 0},
                        {9, 7, 1, 0, 0, 1, 0, 0, 1e300, -1e300}};
  enum class Surface { kPlain, kWithScaleAndOffset, kGroup };
  constexpr double kScale = 2, kOffsetX = 9, kOffsetY = -4;
  Random random(1);
  for (const Case& c : cases) {
    const Picture<TypeParam> picture = RandomPicture<TypeParam>(c.width, c.height, random);
    Canvas<TypeParam> canvas(picture, {3, 2, 5}, random);
    for (const auto kind : {Surface::kPlain, Surface::kWithScaleAndOffset, Surface::kGroup}) {
      SCOPED_TRACE(::testing::Message()
                   << "case " << &c - cases << ", surface " << static_cast<int>(kind));
      Paper paper(64, 48);
      const bool scaled = kind == Surface::kWithScaleAndOffset, group = kind == Surface::kGroup;
      if (scaled) {
        cairo_destroy(paper.context);
        cairo_surface_set_device_scale(paper.surface, kScale, kScale);
        cairo_surface_set_device_offset(paper.surface, kOffsetX, kOffsetY);
        paper.context = cairo_create(paper.surface);
      }
      if (group) {
        cairo_rectangle(paper.context, 8, 5, 40, 39);
        cairo_clip(paper.context);
        cairo_push_group(paper.context);
      }
      const cairo_matrix_t matrix = {c.xx, c.yx, c.xy, c.yy, c.x0, c.y0};
      cairo_set_matrix(paper.context, &matrix);
      ASSERT_EQ(ImgDraw(paper.context, canvas.roi(), c.x, c.y), KY_OK);
      EXPECT_TRUE(canvas.Unchanged());
      if (group) {
        cairo_pop_group_to_source(paper.context);
        cairo_paint(paper.context);
        cairo_set_matrix(paper.context, &matrix);
      }
      for (int y = 0; y < paper.height(); ++y) {
        for (int x = 0; x < paper.width(); ++x) {
          const bool clipped = group && (x < 8 || y < 5 || x >= 48 || y >= 44);
          double atX = x + 0.5, atY = y + 0.5;
          if (scaled) atX = (atX - kOffsetX) / kScale, atY = (atY - kOffsetY) / kScale;
          cairo_device_to_user(paper.context, &atX, &atY);
          atX -= c.x, atY -= c.y;
          // Cairo's coordinates have 16 bits after the point: two pixels may claim a centre that
          // lies between them.
          const auto shows = [&](double dx, double dy) {
            const double column = std::floor(atX + dx), row = std::floor(atY + dy);
            const bool has =
                !clipped && column >= 0 && column < c.width && row >= 0 && row < c.height;
            return paper.At(x, y) ==
                   (has ? ColorOf(picture.At(static_cast<int>(column), static_cast<int>(row)))
                        : kPaper);
          };
          constexpr double kNear = 0.004;
          ASSERT_TRUE(shows(0, 0) || shows(kNear, kNear) || shows(-kNear, -kNear) ||
                      shows(kNear, -kNear) || shows(-kNear, kNear))
              << x << ", " << y;
        }
      }
    }
  }
}

double DistanceToSegment(double x, double y, KyPath a, KyPath b) {
  const double ax = a.x + 0.5, ay = a.y + 0.5, dx = b.x - a.x, dy = b.y - a.y;
  const double length = dx * dx + dy * dy;
  const double t = length == 0 ? 0 : std::clamp(((x - ax) * dx + (y - ay) * dy) / length, 0.0, 1.0);
  return std::hypot(x - ax - t * dx, y - ay - t * dy);
}

// Ink lies where the line is near, and nowhere else; closed paths have one segment more.
TEST(DrawnPath, RunsThroughTheCentresOfPixels) {
  constexpr double kWidth = 5, kZoom = 2;
  const std::vector<KyPath> several = {{4, 5}, {27, 8}, {24, 24}, {24, 24}, {3, 17}};
  const std::vector<KyPath> cases[] = {several, {{9, 9}}, {{5, 6}, {20, 6}}, {}};
  for (const std::vector<KyPath>& points : cases) {
    for (const bool closed : {false, true}) {
      KyPathVector path;
      for (const KyPath point : points) path.AddElement(point);
      path.SetClosed(closed ? 7 : 0);
      const Paper paper(64, 60);
      cairo_scale(paper.context, kZoom, kZoom);
      cairo_set_line_width(paper.context, kWidth / kZoom);
      cairo_set_line_join(paper.context, CAIRO_LINE_JOIN_ROUND);
      if (points.size() > 1) cairo_set_line_cap(paper.context, CAIRO_LINE_CAP_ROUND);
      ASSERT_EQ(KyDraw(paper.context, &path), KY_OK);
      for (int y = 0; y < paper.height(); ++y) {
        for (int x = 0; x < paper.width(); ++x) {
          double nearest = kInfinite;
          for (std::size_t i = 0; i < points.size(); ++i) {
            const bool last = i + 1 == points.size();
            if (last && !closed && points.size() > 1) continue;
            nearest = std::min(nearest, DistanceToSegment((x + 0.5) / kZoom, (y + 0.5) / kZoom,
                                                          points[i], points[last ? 0 : i + 1]));
          }
          const double outside = nearest * kZoom - kWidth / 2;
          const double ink = paper.Ink(x, y);
          ASSERT_TRUE(outside > 0.8 ? ink == 0 : outside > -0.8 || ink > 0.99) << x << ", " << y;
        }
      }
    }
  }
}

// The middle of the ink of a column, within the rows.
double MiddleOfInk(const Paper& paper, int x, int top, int bottom, KyBW8 KyC24::*component) {
  double sum = 0, moment = 0;
  for (int y = top; y < bottom; ++y) {
    const double ink = 255 - paper.At(x, y).*component;
    sum += ink;
    moment += ink * (y + 0.5);
  }
  return moment / sum;
}

constexpr int kLeft = 40, kTop = 10, kWidth = 256, kHeight = 102;

// Draws with the rectangle's corner at (kLeft, kTop).
void DrawChart(const Paper& paper, const std::function<KY_ERRORS(cairo_t*)>& draw) {
  cairo_translate(paper.context, kLeft, kTop);
  ASSERT_EQ(draw(paper.context), KY_OK);
  cairo_identity_matrix(paper.context);
}

// There is ink to the left and below, none above or to the right but half a line, and no more in
// the rectangle than the chart itself has.
void ExpectAxes(const Paper& paper) {
  EXPECT_GT(paper.InkIn(kLeft - 25, 0, kLeft - 8, paper.height()), 40) << "numbers";
  EXPECT_GT(paper.InkIn(0, kTop + kHeight + 6, paper.width(), paper.height()), 40) << "numbers";
  for (int y = kTop; y < kTop + kHeight; ++y) EXPECT_GT(paper.Ink(kLeft - 1, y), 0.3) << "axis";
  for (int x = kLeft; x < kLeft + kWidth; ++x)
    EXPECT_GT(paper.Ink(x, kTop + kHeight), 0.3) << "axis";
  EXPECT_EQ(paper.InkIn(kLeft + 1, 0, paper.width(), kTop - 1), 0);
  EXPECT_EQ(paper.InkIn(kLeft + kWidth + 1, 0, paper.width(), kTop + kHeight), 0);
}

TEST(DrawnProfile, StandsOverItsElements) {
  constexpr int kCount = 16, kStep = kWidth / kCount;
  KyBW8PathVector grey;
  KyC24PathVector color;
  for (int i = 0; i < kCount; ++i) {
    const auto level = static_cast<KyBW8>(30 + 15 * i), other = static_cast<KyBW8>(255 - 17 * i);
    grey.AddElement({0, 0, level});
    color.AddElement({0, 0, {level, 100, other}});
  }
  const auto up = [](double level) { return kTop + kHeight - level * kHeight / 255; };
  const auto expectCurve = [&](const Paper& paper, KyBW8 KyC24::*component, auto level) {
    for (int i = 0; i < kCount; ++i) {
      const int x = kLeft + i * kStep + kStep / 2;
      const double middle = (MiddleOfInk(paper, x - 1, 0, kTop + kHeight, component) +
                             MiddleOfInk(paper, x, 0, kTop + kHeight, component)) /
                            2;
      EXPECT_NEAR(middle, up(level(i)), 0.8) << i;
    }
  };
  const Paper paper(320, 140), colored(320, 140);
  cairo_set_line_width(paper.context, 2);
  cairo_set_line_width(colored.context, 2);
  DrawChart(paper, [&](cairo_t* c) { return KyDraw(c, &grey, kWidth, kHeight); });
  ExpectAxes(paper);
  expectCurve(paper, &KyC24::c0, [](int i) { return 30 + 15 * i; });
  // The ends run level to both sides.
  EXPECT_NEAR(MiddleOfInk(paper, kLeft + 1, 0, kTop + kHeight, &KyC24::c0), up(30), 0.8);
  EXPECT_NEAR(MiddleOfInk(paper, kLeft + kWidth - 1, 0, kTop + kHeight, &KyC24::c0), up(255), 0.8);

  DrawChart(colored, [&](cairo_t* c) { return KyDraw(c, &color, kWidth, kHeight); });
  ExpectAxes(colored);
  // Where the three are far from each other, each has its own colour alone.
  for (const int i : {1, 3, 12, 14}) {
    const int x = kLeft + i * kStep + kStep / 2;
    const auto at = [&](int level) { return colored.At(x, static_cast<int>(up(level))); };
    EXPECT_GT(at(30 + 15 * i).c0, at(30 + 15 * i).c1 + 60) << i;
    EXPECT_GT(at(100).c1, at(100).c0 + 60) << i;
    EXPECT_GT(at(255 - 17 * i).c2, at(255 - 17 * i).c0 + 60) << i;
  }
}

// Profiles and histograms of any number of elements show the extremes of what falls on a pixel.
TEST(DrawnProfile, KeepsExtremesOfManyElements) {
  constexpr unsigned kCount = 3000000;
  KyBW8PathVector path(kCount);
  KyBW8HistogramVector counts(kCount);
  ASSERT_EQ(path.SetNumElements(kCount), KY_OK);
  ASSERT_EQ(counts.SetNumElements(kCount), KY_OK);
  for (unsigned i = 0; i < kCount; ++i) {
    const bool inside = i > kCount / 4 && i < kCount / 2;
    path[i] = {0, 0, static_cast<KyBW8>(inside ? i % 3 * 50 + 50 : 100)};
    counts[i] = inside ? i % 7 : 2;
  }
  path[kCount / 4 * 3] = {0, 0, 255};
  const Paper profile(320, 140), histogram(320, 140);
  cairo_set_line_width(profile.context, 1);
  DrawChart(profile, [&](cairo_t* c) { return KyDraw(c, &path, kWidth, kHeight); });
  DrawChart(histogram, [&](cairo_t* c) { return KyDraw(c, &counts, kWidth, kHeight); });
  const auto up = [](double share) { return kTop + static_cast<int>(kHeight * (1 - share)); };
  for (int x = kWidth / 4 + 3; x < kWidth / 2 - 3; ++x) {
    EXPECT_GT(profile.InkIn(kLeft + x, up(150 / 255.0), kLeft + x + 1, up(50 / 255.0)), 38);
    EXPECT_EQ(profile.InkIn(kLeft + x, 0, kLeft + x + 1, up(150 / 255.0) - 2), 0);
    EXPECT_GT(histogram.Ink(kLeft + x, kTop + 1), 0.9);
  }
  EXPECT_EQ(histogram.InkIn(kLeft, kTop, kLeft + kWidth / 4 - 1, up(2 / 6.0) - 1), 0);
  EXPECT_GT(profile.InkIn(kLeft + kWidth / 4 * 3 - 1, kTop, kLeft + kWidth / 4 * 3 + 2, kTop + 30),
            28);
}

TEST(DrawnHistogram, FillsItsRectangle) {
  const std::vector<unsigned> cases[] = {
      {3, 0, 7, 51, 20, 0, 51, 1}, {4000000000u, 1000000000u}, {0, 0}, {5}};
  for (const std::vector<unsigned>& counts : cases) {
    KyBW8HistogramVector histogram;
    for (const unsigned count : counts) histogram.AddElement(count);
    const Paper paper(320, 140);
    DrawChart(paper, [&](cairo_t* c) { return KyDraw(c, &histogram, kWidth, kHeight); });
    if (counts.size() > 2) ExpectAxes(paper);
    const double highest = std::max(1u, *std::max_element(counts.begin(), counts.end()));
    const int bar = kWidth / static_cast<int>(counts.size());
    for (int x = 0; x < kWidth; ++x) {
      double ink = 0;
      for (int y = kTop; y < kTop + kHeight; ++y) ink += paper.Ink(kLeft + x, y);
      EXPECT_NEAR(ink, counts[static_cast<std::size_t>(x / bar)] / highest * kHeight, 0.02) << x;
    }
  }
}

TEST(DrawnPeaks, AreBandsWithALine) {
  constexpr int kSamples = 64, kStep = kWidth / kSamples;
  KyPeaksVector peaks;
  peaks.AddElement({3, 4, 4.5F, 10, 20});
  peaks.AddElement({10, 1, 10, -10, -20});
  peaks.AddElement({60, 4000000000u, 70, 1, 1});               // beyond the end
  peaks.AddElement({20, 2, std::nanf(""), 1, 1});              // no centre
  peaks.AddElement({30, 2, 32, 1, 1});                         // a centre beside the band
  peaks.AddElement({4000000000u, 4000000000u, -1e30F, 1, 1});  // elsewhere as a whole
  const Paper paper(320, 140);
  cairo_set_line_width(paper.context, 2 * kStep);
  DrawChart(paper, [&](cairo_t* c) { return KyDraw(c, &peaks, kSamples, kWidth, kHeight); });
  const auto inkOf = [](int i) {
    return i == 4 || i == 5 || i == 10                                               ? 1
           : i == 3 || i == 6 || i == 20 || i == 21 || i == 30 || i == 31 || i >= 60 ? 0.25
                                                                                     : 0;
  };
  for (int y = 0; y < paper.height(); ++y)
    for (int x = 0; x < paper.width(); ++x) {
      const bool in = x >= kLeft && x < kLeft + kWidth && y >= kTop && y < kTop + kHeight;
      ASSERT_NEAR(paper.Ink(x, y), in ? inkOf((x - kLeft) / kStep) : 0, 0.01) << x << ", " << y;
    }
}

// Something of every type to draw.
struct Things {
  KyImage<KyBW8> grey{9, 7};
  KyImage<KyC24> color{9, 7};
  KyPathVector path;
  KyBW8PathVector levels;
  KyC24PathVector colors;
  KyPeaksVector peaks;
  KyBW8HistogramVector histogram;
  std::vector<std::function<KY_ERRORS(cairo_t*)>> draw;

  Things() {
    ImgCopy(KyBW8{99}, &grey);
    ImgOper(KY_OPER_COPY, KyC24{9, 99, 199}, &color);
    for (std::int16_t i = 0; i < 20; ++i) {
      path.AddElement({i, static_cast<std::int16_t>(i * i / 20)});
      levels.AddElement({i, 0, static_cast<KyBW8>(i * 12)});
      colors.AddElement({i, 0, {static_cast<KyBW8>(i * 12), 9, 200}});
      histogram.AddElement(static_cast<unsigned>(i));
    }
    peaks.AddElement({3, 4, 4.5F, 10, 20});
    draw = {[&](cairo_t* c) { return ImgDraw(c, &grey, 2, 3); },
            [&](cairo_t* c) { return ImgDraw(c, &color, 2, 3); },
            [&](cairo_t* c) { return KyDraw(c, &path); },
            [&](cairo_t* c) { return KyDraw(c, &levels, 30, 20); },
            [&](cairo_t* c) { return KyDraw(c, &colors, 30, 20); },
            [&](cairo_t* c) { return KyDraw(c, &peaks, 20, 30, 20); },
            [&](cairo_t* c) { return KyDraw(c, &histogram, 30, 20); }};
  }
};

// A context on which all has been drawn draws like a fresh one: transformation, colour, pen,
// dashes, font, clip and the path that was begun are what they were.
TEST(Drawing, KeepsTheContext) {
  Things things;
  Paper used(90, 80), fresh(90, 80);
  for (const Paper* paper : {&used, &fresh}) {
    cairo_t* const c = paper->context;
    const double dashes[] = {5, 3};
    cairo_rectangle(c, 3, 3, 80, 70);
    cairo_clip(c);
    cairo_rotate(c, 0.1);
    cairo_set_source_rgba(c, 0.2, 0.3, 0.9, 0.8);
    cairo_set_line_width(c, 3.3);
    cairo_set_dash(c, dashes, 2, 1);
    cairo_set_line_join(c, CAIRO_LINE_JOIN_BEVEL);
    cairo_set_line_cap(c, CAIRO_LINE_CAP_SQUARE);
    cairo_set_fill_rule(c, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_set_font_size(c, 17);
    cairo_rectangle(c, 9, 9, 30, 40);
    cairo_move_to(c, 50, 20);
    cairo_curve_to(c, 90, 20, 20, 60, 50, 70);
    for (const auto& draw : things.draw) EXPECT_TRUE(paper == &fresh || draw(c) == KY_OK);
    cairo_save(c);  // cover it up again
    cairo_set_source_rgb(c, 1, 1, 1);
    cairo_paint(c);
    cairo_restore(c);
    cairo_rel_line_to(c, 10, -30);
    cairo_stroke(c);
    cairo_move_to(c, 12, 60);
    cairo_show_text(c, "8");
    EXPECT_EQ(cairo_status(c), CAIRO_STATUS_SUCCESS);
  }
  for (int y = 0; y < used.height(); ++y)
    for (int x = 0; x < used.width(); ++x) ASSERT_EQ(used.At(x, y), fresh.At(x, y)) << x << y;
  EXPECT_GT(fresh.InkIn(0, 0, 90, 80), 500);
}

// Operators that replace what lies outside of their source replace no more than the picture's
// place.
TEST(Drawing, OperatorsStayInsideThePicture) {
  KyImage<KyBW8> picture(20000, 2);
  ASSERT_EQ(ImgCopy(KyBW8(90), &picture), KY_OK);
  for (const cairo_operator_t op : {CAIRO_OPERATOR_SOURCE, CAIRO_OPERATOR_IN}) {
    Paper paper(20010, 5);
    cairo_set_operator(paper.context, op);
    ASSERT_EQ(ImgDraw(paper.context, &picture, 3, 1), KY_OK);
    for (const int x : {3, 100, 16386, 16387, 20002}) EXPECT_EQ(paper.At(x, 2), ColorOf(KyBW8(90)));
    for (const int x : {2, 20003}) EXPECT_EQ(paper.At(x, 2), kPaper);
    for (const int y : {0, 3}) EXPECT_EQ(paper.At(100, y), kPaper);
  }
}

// What is refused for all of them by the registry's tests is left out here.
TEST(Drawing, RefusesInOrder) {
  Things things;
  const Paper paper(20, 20);
  cairo_t* const c = paper.context;
  KyROI<KyBW8> none;
  const KyBW8PathVector* const noLevels = nullptr;
  const struct {
    KY_ERRORS got, expected;
    const char* name;
  } cases[] = {
      {ImgDraw(c, &none, kNoNumber, 0), KY_ERROR_NO_IMAGE, "source before numbers"},
      {ImgDraw(c, &things.grey, kNoNumber, kInfinite), KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "x"},
      {ImgDraw(c, &things.color, 0, -kInfinite), KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "y"},
      {KyDraw(nullptr, noLevels, 1, 1), KY_ERROR_NO_IMAGE, "context before vector"},
      {KyDraw(c, noLevels, -1, -1), KY_ERROR_BAD_VECTOR_TYPE, "vector before numbers"},
      {KyDraw(c, &things.levels, -1, -1), KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "width"},
      {KyDraw(c, &things.colors, 0, 4194305), KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "height"},
      {KyDraw(c, &things.histogram, 10, kNoNumber), KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "height"},
      {KyDraw(c, &things.peaks, -1, -1, -1), KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "samples"},
      {KyDraw(c, &things.peaks, 1, -1, -1), KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "width"},
      {KyDraw(c, &things.peaks, 1, 1, kInfinite), KY_ERROR_PARAMETER_3_OUT_OF_RANGE, "height"},
      {KyDraw(c, &things.peaks, 0, 1, 1), KY_OK, "no samples"},
  };
  for (const auto& [got, expected, name] : cases) EXPECT_EQ(got, expected) << name;
  EXPECT_EQ(paper.InkIn(0, 0, 20, 20), 0);
}

// A surface that is finished refuses what is drawn; a context in an error is refused itself.
TEST(Drawing, TellsWhenCairoFails) {
  Things things;
  for (const auto& draw : things.draw) {
    const Paper paper(30, 30);
    cairo_surface_finish(paper.surface);
    EXPECT_EQ(draw(paper.context), KY_ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(KyGetTraceCount(), 1);
    const Paper other(30, 30);
    cairo_restore(other.context);  // nothing has been saved
    EXPECT_EQ(draw(other.context), KY_ERROR_NO_IMAGE);
  }
}

// Cairo makes no more text in a process in which it has once failed to make a huge font.
TEST(Drawing, SurvivesAnyZoom) {
  Things things;
  for (const double zoom : {1e-9, 1e5, 1e9}) {
    const Paper paper(320, 140);
    cairo_scale(paper.context, zoom, zoom);
    for (const auto& draw : things.draw) EXPECT_EQ(draw(paper.context), KY_OK) << zoom;
  }
  const Paper paper(320, 140);
  DrawChart(paper, [&](cairo_t* c) { return KyDraw(c, &things.histogram, kWidth, kHeight); });
  ExpectAxes(paper);
}

cairo_status_t Append(void* text, const unsigned char* data, unsigned length) {
  static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

// Files hold pictures in full resolution, curves as curves and numbers as text or outlines.
TEST(Drawing, GoesToFilesAsItIs) {
  Things things;
  std::string pdf, svg;
  for (const bool isPdf : {true, false}) {
    cairo_surface_t* const surface =
        isPdf ? cairo_pdf_surface_create_for_stream(&Append, &pdf, 200, 100)
              : cairo_svg_surface_create_for_stream(&Append, &svg, 200, 100);
    cairo_t* const c = cairo_create(surface);
    cairo_translate(c, 50, 10);
    cairo_scale(c, 0.5, 0.5);
    for (const auto& draw : things.draw) EXPECT_EQ(draw(c), KY_OK);
    cairo_destroy(c);
    cairo_surface_finish(surface);
    EXPECT_EQ(cairo_surface_status(surface), CAIRO_STATUS_SUCCESS);
    cairo_surface_destroy(surface);
  }
  for (const char* const part : {"/Width 9", "/Height 7", "/DeviceGray", "/DeviceRGB"})
    EXPECT_NE(pdf.find(part), pdf.npos) << part;
  for (const char* const part : {"width=\"9\" height=\"7\"", "<path", "glyph"})
    EXPECT_NE(svg.find(part), svg.npos) << part;
  EXPECT_EQ(pdf.find("Interpolate true"), pdf.npos);
}

}  // namespace
