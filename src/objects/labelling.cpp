#include "objects/labelling.h"

#include <algorithm>
#include <utility>

namespace ky {
namespace {

constexpr KyBW8 kLeft = 1, kTop = 2, kRight = 4, kBottom = 8;

// 0 + 1 + ... + (n - 1)
std::uint64_t Sum(std::uint64_t n) noexcept {
  return n % 2 == 0 ? n / 2 * (n - 1) : (n - 1) / 2 * n;
}

// 0 + 1 + 4 + ... + (n - 1)^2 = n (n - 1) (2 n - 1) / 6, modulo 2^64, where dividing by 3 is
// multiplying by its inverse.
std::uint64_t SumOfSquares(std::uint64_t n) noexcept {
  constexpr std::uint64_t kThird = 0xAAAAAAAAAAAAAAAB;
  return Sum(n) * (2 * n - 1) * kThird;
}

// Adds the measures of `from`, which came later.
void Add(KyObject& to, const KyObject& from) noexcept {
  to.sumLevels += from.sumLevels;
  to.sumX += from.sumX;
  to.sumY += from.sumY;
  to.sumXX += from.sumXX;
  to.sumXY += from.sumXY;
  to.sumYY += from.sumYY;
  to.x = std::min(to.x, from.x);
  to.width = std::max(to.width, from.width);
  to.height = std::max(to.height, from.height);
  to.area += from.area;
  to.straight += from.straight;
  to.diagonal += from.diagonal;
  to.holes += from.holes;
  to.lowest = std::min(to.lowest, from.lowest);
  to.highest = std::max(to.highest, from.highest);
  to.touches |= from.touches;
}

}  // namespace

bool Labelling::Start(std::ptrdiff_t width, std::ptrdiff_t height, CONNEXITY connexity,
                      bool keepRuns) noexcept {
  eight_ = connexity == KY_CONNEXITY_8;
  keepRuns_ = keepRuns;
  width_ = static_cast<std::int32_t>(width);
  height_ = static_cast<std::int32_t>(height);
  if (!keepRuns) return true;
  if (!starts_.Allocate(height + 1)) return false;
  starts_[0] = 0;
  return true;
}

// Room for whatever a row of `count` runs may add.
bool Labelling::Reserve(std::size_t count) noexcept {
  return parents_.size() + count < kNone && runs_.Reserve(count) && components_.Reserve(count) &&
         parents_.Reserve(count) && (eight_ || corners_.Reserve(2 * count));
}

KyBW32 Labelling::Found(std::int32_t x) noexcept {
  const auto component = static_cast<KyBW32>(parents_.size());
  KyObject object{};
  object.x = object.firstX = x;
  object.y = object.firstY = y_;
  object.lowest = 255;
  if (y_ == 0) object.touches = kTop;
  components_.Append(object);
  parents_.Append(component);
  return component;
}

KyBW32 Labelling::RootOf(KyBW32 component) noexcept {
  KyBW32* const parents = parents_.begin();
  while (parents[component] != component) {
    parents[component] = parents[parents[component]];
    component = parents[component];
  }
  return component;
}

KyBW32 Labelling::Unite(KyBW32 a, KyBW32 b) noexcept {
  if (b < a) std::swap(a, b);
  parents_[b] = a;
  Add(components_[a], components_[b]);
  return a;
}

// Each measure is loaded and stored once: the next run often adds to the same object.
inline void Labelling::MeasureRun(KyObject& object, const Run& run, const RunLevels& levels,
                                  const Contacts& contacts) const noexcept {
  const auto begin = static_cast<std::uint64_t>(run.begin), y = static_cast<std::uint64_t>(y_);
  const auto n = static_cast<std::uint64_t>(run.end - run.begin);
  const std::uint64_t sumX = n * begin + Sum(n);
  object.sumLevels += levels.sum;
  object.sumX += sumX;
  object.sumY += n * y;
  object.sumXX += begin * (sumX + Sum(n)) + SumOfSquares(n);
  object.sumXY += sumX * y;
  object.sumYY += n * y * y;
  object.x = std::min(object.x, run.begin);
  object.width = std::max(object.width, run.end);
  object.height = y_ + 1;
  object.area += static_cast<KyBW32>(n);
  object.straight += static_cast<KyBW32>(2 + 2 * n) - 2 * contacts.straight;
  object.diagonal += static_cast<KyBW32>(4 * n) - 2 * contacts.diagonal;
  object.holes += contacts.holes;
  object.lowest = std::min(object.lowest, levels.lowest);
  object.highest = std::max(object.highest, levels.highest);
  if (run.begin == 0) object.touches |= kLeft;
  if (run.end == width_) object.touches |= kRight;
  if (y_ + 1 == height_) object.touches |= kBottom;
}

bool Labelling::AddRow(const std::int32_t* ends, const RunLevels* levels,
                       std::size_t count) noexcept {
  if (!Reserve(count)) return false;
  const Run* above = runs_.begin() + above_;
  const Run* const aboveEnd = runs_.end();
  Run* const row = runs_.end();
  for (std::size_t i = 0; i < count; ++i) {
    Run& run = row[i] = {ends[2 * i], ends[2 * i + 1], kNone};
    KyBW32 root = kNone, corner[2], corners = 0;
    Contacts contacts;
    while (above != aboveEnd && above->end < run.begin) ++above;
    for (const Run* at = above; at != aboveEnd && at->begin <= run.end; ++at) {
      const std::int32_t common = std::min(at->end, run.end) - std::max(at->begin, run.begin);
      if (common == 0 && !eight_) {
        corner[corners++] = at->label;
        continue;
      }
      contacts.straight += static_cast<KyBW32>(common);
      contacts.diagonal +=
          common == 0
              ? 1
              : static_cast<KyBW32>(2 * common - (at->begin == run.begin) - (at->end == run.end));
      const KyBW32 other = RootOf(at->label);
      if (root == kNone)
        root = other;
      else if (root == other)
        ++contacts.holes;
      else
        root = Unite(root, other);
    }
    if (root == kNone) root = Found(run.begin);
    run.label = root;
    MeasureRun(components_[root], run, levels[i], contacts);
    for (KyBW32 k = 0; k < corners; ++k) corners_.Append({corner[k], root});
  }
  if (keepRuns_) {
    above_ = runs_.size();
    runs_.Resize(runs_.size() + count);
    starts_[y_ + 1] = runs_.size();
  } else {
    std::copy(row, row + count, runs_.begin());
    runs_.Resize(count);
  }
  ++y_;
  return true;
}

KyBW32 Labelling::Number() noexcept {
  KyBW32 count = 0;
  // Parents are older, and have their labels already.
  for (KyBW32 i = 0; i < parents_.size(); ++i)
    parents_[i] = parents_[i] == i ? ++count : parents_[parents_[i]];
  return count;
}

void Labelling::Store(KyObject* objects) noexcept {
  KyBW32 count = 0;
  for (KyBW32 i = 0; i < components_.size(); ++i) {
    if (parents_[i] != count + 1) continue;
    KyObject& object = objects[count++] = components_[i];
    object.label = count;
    object.width -= object.x;
    object.height -= object.y;
  }
  for (const Corner& corner : corners_)
    if (parents_[corner.a] == parents_[corner.b]) objects[parents_[corner.a] - 1].diagonal -= 2;
}

}  // namespace ky
