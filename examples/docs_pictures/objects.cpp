// Objects that are found, selected and measured.
#include <cmath>
#include <numbers>

#include "families.h"
#include "sheet.h"
#include "support/drawing.h"
#include "support/scene.h"

namespace docs {
namespace {

constexpr KyC24 kColors[] = {{230, 80, 70}, {80, 190, 90}, {70, 130, 230}, {235, 190, 50}};
constexpr KyC24 kBox{70, 190, 220}, kAxis{255, 235, 90}, kInk{255, 255, 255}, kPlate{20, 40, 60};

// The label image in colours.
Color Painted(const Grey& picture, const KyROI<KyBW32>& labels) {
  Color painted = InColor(picture);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      if (const KyBW32 label = labels.GetPixel(x, y); label != 0)
        painted.SetPixel(kColors[label % 4], x, y);
  return painted;
}

void DrawAxis(Color& picture, const KyObjectShape& shape, double moment, double angle) {
  const double half = 2 * std::sqrt(moment), radians = angle * std::numbers::pi / 180;
  const auto end = [&](double distance) {
    return draw::Point{static_cast<int>(std::lround(shape.x + distance * std::cos(radians))),
                       static_cast<int>(std::lround(shape.y + distance * std::sin(radians)))};
  };
  draw::Line(picture, end(-half), end(half), kAxis);
}

// Two washers and two bolts, small parts and dirt.
Grey Tray() {
  scene::Scene tray{.width = kWidth, .height = kHeight, .parts = {}, .seed = 3};
  tray.parts = {{scene::Kind::kWasher, 38, 40, 26, 0},
                {scene::Kind::kBolt, 128, 42, 18, 0.5f},
                {scene::Kind::kPlate, 52, 108, 15, 2.8f},
                {scene::Kind::kWasher, 120, 112, 15, 0},
                {scene::Kind::kBolt, 166, 104, 12, 1.9f}};
  Grey picture = scene::Draw(tray);
  Must(KyGetError());
  Must(ImgConvolGaussian3x3(&picture, &picture));
  return picture;
}

}  // namespace

void Objects(const std::string& folder) {
  const Grey source = Tray();
  Grey even = Panel();
  Must(ImgWhiteTopHatBox(&source, &even, 40));
  const auto threshold = static_cast<KyBW8>(ImgAutoThreshold(&even, IMG_THRESHOLD_MIN_RESIDUE));
  auto labels = Panel<KyBW32>();
  KyObjectsVector objects;
  Must(ImgFindObjects(&even, threshold, 255, KY_CONNEXITY_8, &objects, &labels, &source));
  const Color painted = Painted(source, labels);

  // The objects with holes, in white.
  Must(ImgSelectObjects(&objects, {.minArea = 100}));
  Color measured = InColor(source);
  for (const KyObject& object : objects) {
    KyObjectShape shape;
    Must(ImgGetObjectShape(&object, shape));
    draw::Frame(measured, {object.x, object.y, object.width, object.height}, kBox);
    DrawAxis(measured, shape, shape.major, shape.angle);
    DrawAxis(measured, shape, shape.minor, shape.angle + 90);
    const auto holes = static_cast<unsigned>(object.holes);
    draw::Fill(measured,
               {object.x, object.y, draw::NumberWidth(holes) + 4, draw::kNumberHeight + 4}, kPlate);
    draw::Number(measured, holes, {object.x + 2, object.y + 2}, kInk);
  }
  Must(ImgSelectObjects(&objects, {.minHoles = 1}));
  Grey drawn = Panel();
  Must(ImgCopy(&source, &drawn));
  Must(ImgDrawObjects(&labels, &objects, 255, &drawn));
  const Color before = InColor(source), selected = InColor(drawn);
  Write(folder, "objects", 2, {&before, &painted, &measured, &selected});

  Grey mask = Panel(), filled = Panel();
  Must(ImgThreshold(&even, &mask, threshold));
  Must(ImgFillHoles(&mask, &filled));
  const Color open = InColor(mask), closed = InColor(filled);
  Write(folder, "fill_holes", 2, {&open, &closed});
}

}  // namespace docs
