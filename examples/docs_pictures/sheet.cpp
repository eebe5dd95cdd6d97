#include "sheet.h"

#include <algorithm>

#include "support/picture_file.h"
#include "support/scene.h"

namespace docs {
namespace {

constexpr int kDroppedBits = 3;
constexpr KyBW8 kKept = 256 - (1 << kDroppedBits);

KyBW8 White(const Grey&) { return 255; }
KyC24 White(const Color&) { return {255, 255, 255}; }

void Coarsen(KyROI<KyBW8>& panel) {
  KyBW8Vector table(256);
  for (unsigned level = 0; level < 256; ++level)
    table[level] = static_cast<KyBW8>((level & kKept) * 255 / kKept);
  Must(ImgLut(&panel, &panel, &table));
}
void Coarsen(KyROI<KyC24>& panel) {
  Must(ImgOper(KY_OPER_AND, &panel, KyC24{kKept, kKept, kKept}, &panel));
}

template <class T>
void WriteSheet(const std::string& folder, const char* name, int columns,
                std::initializer_list<const KyImage<T>*> panels) {
  const KyImage<T>& first = **panels.begin();
  const int stepX = first.GetWidth() + kGap, stepY = first.GetHeight() + kGap;
  const int rows = (static_cast<int>(panels.size()) + columns - 1) / columns;
  auto sheet = NewImage<T>(columns * stepX - kGap, rows * stepY - kGap);
  Must(ImgOper(KY_OPER_COPY, White(first), &sheet));
  int i = 0;
  for (const KyImage<T>* panel : panels) {
    KyROI<T> place(&sheet, i % columns * stepX, i / columns * stepY, panel->GetWidth(),
                   panel->GetHeight());
    Must(ImgOper(KY_OPER_COPY, panel, &place));
    Coarsen(place);
    ++i;
  }
  picture::Write(sheet, folder + '/' + name + ".png");
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
