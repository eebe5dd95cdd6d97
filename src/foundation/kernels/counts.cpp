#include "foundation/kernels/counts.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/kernels/pair_counter.h"
#include "foundation/rows.h"

namespace ky {
namespace {

// Neighbours are counted in different tables: were they in one, an increment would have to wait for
// the one before wherever neighbours are equal. The tables stand a little apart, as processors also
// take places for the same that lie a multiple of 4096 bytes from each other.
class LevelCounter {
 public:
  void Count(const KyBW8* pixels, std::ptrdiff_t n) noexcept {
    std::ptrdiff_t i = 0;
    for (; i + kTables <= n; i += kTables) {
      std::uint32_t four;
      std::memcpy(&four, pixels + i, sizeof four);
      for (int k = 0; k < kTables; ++k) ++tables_[k][four >> 8 * k & 0xFF];
    }
    for (; i < n; ++i) ++tables_[0][pixels[i]];
  }
  void AddTo(Counts& counts) const noexcept {
    for (int level = 0; level < kLevels; ++level)
      for (const auto& table : tables_) counts[level] += table[level];
  }

 private:
  static constexpr int kTables = 4, kApart = 16;
  std::uint32_t tables_[kTables][kLevels + kApart] = {};
};

// Where an ROI's first pixel lies in the root image, as its masks count.
std::int64_t AbsoluteOffset(const KyROI<KyBW8>* roi) noexcept {
  std::int64_t x = 0, y = 0;
  const std::int64_t pitch = roi->GetPitch();
  for (; roi != nullptr; roi = roi->GetParent()) {
    x += roi->GetX();
    y += roi->GetY();
  }
  return y * pitch + x;
}

// The pixels of one run, [begin, end) counted from the ROI's first pixel, that lie in it.
void CountRun(LevelCounter& counter, const Rows<const KyBW8>& rows, std::int64_t begin,
              std::int64_t end) noexcept {
  begin = std::max<std::int64_t>(begin, 0);
  end = std::min<std::int64_t>(end, rows.height * rows.pitch);
  for (std::int64_t y = begin / rows.pitch; y * rows.pitch < end; ++y) {
    const std::int64_t left = std::max<std::int64_t>(begin - y * rows.pitch, 0);
    const std::int64_t right = std::min<std::int64_t>(end - y * rows.pitch, rows.width);
    if (left < right) counter.Count(rows.Row(y) + left, right - left);
  }
}

// Pairs where there are enough pixels for them, and memory.
void CountRows(LevelCounter& counter, const Rows<const KyBW8>& rows, Counts& counts) noexcept {
  PairCounter pairs;
  const std::ptrdiff_t steps = rows.width / PairCounter::kStep;
  const bool inPairs =
      steps * PairCounter::kStep * rows.height >= PairCounter::kFewest && pairs.Allocate();
  for (std::ptrdiff_t y = 0; y < rows.height; ++y) {
    const KyBW8* const row = rows.Row(y);
    const std::ptrdiff_t x = inPairs ? pairs.Count(row, steps) * PairCounter::kStep : 0;
    counter.Count(row + x, rows.width - x);
  }
  if (inPairs) pairs.AddTo(counts);
}

}  // namespace

void CountLevels(const KyROI<KyBW8>* roi, Counts& counts) noexcept {
  LevelCounter counter;
  std::fill_n(counts, kLevels, 0u);
  const Rows<const KyBW8> rows = RowsOf(roi);
  if (rows.Empty()) {
    // Nothing to count, and perhaps no pitch.
  } else if (const KyMaskRun* const runs = roi->GetMaskOffsets()) {
    const std::int64_t origin = roi->IsMaskAbsolute() ? AbsoluteOffset(roi) : 0;
    for (unsigned i = 0; i < roi->GetMaskCount(); ++i) {
      const std::int64_t begin = runs[i].offset - origin;
      CountRun(counter, rows, begin, begin + runs[i].length);
    }
  } else {
    CountRows(counter, rows.Joined() ? rows.AsOneRow() : rows, counts);
  }
  counter.AddTo(counts);
}

}  // namespace ky
