#include "sheet.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "support/drawing.h"
#include "support/picture_file.h"
#include "support/scene.h"

namespace docs {
namespace {

constexpr int kDroppedBits = 3;
constexpr KyBW8 kKept = 256 - (1 << kDroppedBits);

void Coarsen(KyROI<KyBW8>& panel) {
  KyBW8Vector table(256);
  for (unsigned level = 0; level < 256; ++level)
    table[level] = static_cast<KyBW8>((level & kKept) * 255 / kKept);
  Must(ImgLut(&panel, &panel, &table));
}
void Coarsen(KyROI<KyC24>& panel) {
  Must(ImgOper(KY_OPER_AND, &panel, KyC24{kKept, kKept, kKept}, &panel));
}

// The sheet has the type of the panels, which are large enough to see single pixels.
template <class T>
KyImage<T> As(Color sheet) {
  if constexpr (std::is_same_v<T, KyC24>) {
    return sheet;
  } else {
    auto grey = SameSize<KyBW8>(sheet);
    Must(ImgConvert(&sheet, &grey));
    return grey;
  }
}
Color Coloured(const Color& picture) {
  auto copy = SameSize<KyC24>(picture);
  Must(ImgOper(KY_OPER_COPY, &picture, &copy));
  return copy;
}

Color Coloured(const Grey& picture) { return InColor(picture); }

// The number of a panel, which its caption gives, on a plate in the upper left corner.
void Label(Color& panel, unsigned number) {
  constexpr int kMargin = 2;
  draw::Fill(panel,
             {0, 0, draw::NumberWidth(number) + 2 * kMargin, draw::kNumberHeight + 2 * kMargin},
             {20, 40, 60});
  draw::Number(panel, number, {kMargin, kMargin}, {255, 255, 255});
}

template <class T>
void WriteSheet(const std::string& folder, const char* name, int columns,
                std::initializer_list<const KyImage<T>*> panels) {
  const KyImage<T>& first = **panels.begin();
  const int zoom = first.GetWidth() <= kWidth ? 2 : 1;
  const int stepX = zoom * first.GetWidth() + kGap, stepY = zoom * first.GetHeight() + kGap;
  const int rows = (static_cast<int>(panels.size()) + columns - 1) / columns;
  auto sheet = NewImage<KyC24>(columns * stepX - kGap, rows * stepY - kGap);
  Must(ImgOper(KY_OPER_COPY, KyC24{255, 255, 255}, &sheet));
  int i = 0;
  for (const KyImage<T>* source : panels) {
    auto panel = SameSize<T>(*source);
    Must(ImgOper(KY_OPER_COPY, source, &panel));
    Coarsen(panel);
    Color labelled = Coloured(panel);
    if (panels.size() > 1) Label(labelled, static_cast<unsigned>(i) + 1);
    KyROI<KyC24> place(&sheet, i % columns * stepX, i / columns * stepY, zoom * panel.GetWidth(),
                       zoom * panel.GetHeight());
    const auto scale = static_cast<float>(zoom);
    Must(ImgScaleRotate(&labelled, 0, 0, 0, 0, scale, scale, 0, &place, 0));
    ++i;
  }
  picture::Write(As<T>(std::move(sheet)), folder + '/' + name + ".png");
}

}  // namespace

Grey Parts(bool faulty) {
  scene::Scene parts{kWidth, kHeight, {}, faulty ? 2u : 1u};
  parts.parts = {{scene::Kind::kWasher, 48, 46, 30, 0.5f, faulty},
                 {scene::Kind::kPlate, 146, 48, 20, 0.3f, faulty},
                 {scene::Kind::kBolt, 92, 118, 18, -0.1f, faulty}};
  Grey picture = scene::Draw(parts);
  Must(KyGetError());
  return picture;
}

Grey Washer() {
  scene::Scene part{kWidth, kHeight, {{scene::Kind::kWasher, 100, 75, 62, 0, true}}, 3};
  Grey picture = scene::Draw(part);
  Must(KyGetError());
  return picture;
}

Grey Chart(const KyBW32Vector& counts) {
  Grey chart = Panel();
  Must(ImgCopy(KyBW8{232}, &chart));
  const unsigned bars = counts.GetNumElements();
  const KyBW32 highest = std::max(*std::max_element(counts.begin(), counts.end()), KyBW32{1});
  for (int x = 0; x < kWidth; ++x) {
    const unsigned from = static_cast<unsigned>(x) * bars / kWidth;
    const unsigned to = std::max(static_cast<unsigned>(x + 1) * bars / kWidth, from + 1);
    const KyBW32 count = *std::max_element(counts.begin() + from, counts.begin() + to);
    const int height = static_cast<int>(std::uint64_t{count} * (kHeight - 8) / highest);
    KyROI<KyBW8> bar(&chart, x, kHeight - height, 1, height);
    if (height > 0) Must(ImgCopy(KyBW8{64}, &bar));
  }
  return chart;
}

Color InColor(const Grey& picture) {
  auto color = SameSize<KyC24>(picture);
  Must(ImgOper(KY_OPER_COPY, &picture, &color));
  return color;
}

void Mark(Color& picture, int x, int y, KyC24 color, int size) {
  const int left = std::max(x - size / 2, 0), top = std::max(y - size / 2, 0);
  const int right = std::min(x - size / 2 + size, picture.GetWidth());
  const int bottom = std::min(y - size / 2 + size, picture.GetHeight());
  if (left >= right || top >= bottom) return;
  KyROI<KyC24> square(&picture, left, top, right - left, bottom - top);
  Must(ImgOper(KY_OPER_COPY, color, &square));
}

void Write(const std::string& folder, const char* name, int columns,
           std::initializer_list<const Grey*> panels) {
  WriteSheet<KyBW8>(folder, name, columns, panels);
}
void Write(const std::string& folder, const char* name, int columns,
           std::initializer_list<const Color*> panels) {
  WriteSheet<KyC24>(folder, name, columns, panels);
}

}  // namespace docs
