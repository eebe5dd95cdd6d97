#include "foundation/kernels/counts.h"

#include <algorithm>
#include <cstddef>

#include "foundation/kernels/count_rows.h"
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
    for (; i + kTables <= n; i += kTables)
      for (int k = 0; k < kTables; ++k) ++tables_[k][pixels[i + k]];
    for (; i < n; ++i) ++tables_[0][pixels[i]];
  }
  void AddTo(Counts& counts) const noexcept {
    for (int level = 0; level < kLevels; ++level)
      for (const auto& table : tables_) counts[level] += table[level];
  }

 private:
  static constexpr int kTables = 8, kApart = 16;
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

// Counts the pixels in the whole blocks of all rows, where blocks are faster and there are enough
// of them. How many pixels of each row these are.
std::ptrdiff_t CountBlocks(const Rows<const KyBW8>& rows, Counts& counts) noexcept {
  constexpr std::ptrdiff_t kFewest = 64;
  const std::ptrdiff_t blocks = rows.width / kCountBlock;
  if (blocks * rows.height < kFewest) return 0;
  const CountKernel kernel = ChooseCountKernels().count;
  if (kernel == nullptr) return 0;
  kernel(counts, blocks, rows.first, rows.pitch, rows.height);
  return blocks * kCountBlock;
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
    const Rows<const KyBW8> joined = rows.Joined() ? rows.AsOneRow() : rows;
    const std::ptrdiff_t counted = CountBlocks(joined, counts);
    for (std::ptrdiff_t y = 0; y < joined.height; ++y)
      counter.Count(joined.Row(y) + counted, joined.width - counted);
  }
  counter.AddTo(counts);
}

}  // namespace ky
