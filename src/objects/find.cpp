#include <algorithm>
#include <cstring>

#include "foundation/arrays.h"
#include "foundation/bit_rows.h"
#include "foundation/frame.h"
#include "foundation/make_room.h"
#include "ky/objects.h"
#include "objects/connexity.h"
#include "objects/labelling.h"
#include "objects/object_rows.h"

namespace {

using ky::BitRows;
using ky::Call;
using ky::ChooseObjectKernels;
using ky::EndsOfRow;
using ky::Labelling;
using ky::RowsOf;
using ky::RunLevels;
using ky::Scratch;

// The checks that both functions share, in their order.
template <class Roi>
KY_ERRORS CheckFinding(const Roi* source, const KyObjectsVector* objects,
                       const KyROI<KyBW32>* labels, const KyROI<KyBW8>* levels) noexcept {
  if (const KY_ERRORS error = ky::CheckImage(source, "source")) return error;
  if (objects == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
  const auto check = [&](const KyGenericROI* given, const char* name, const char* unequal) {
    if (given == nullptr) return KY_OK;
    if (const KY_ERRORS error = ky::CheckImage(given, name)) return error;
    return ky::IsSameSize(given, source) ? KY_OK : ky::Explain(KY_ERROR_SIZE_MISMATCH, unequal);
  };
  if (const KY_ERRORS error = check(labels, "labels", "source and labels differ in size"))
    return error;
  return check(levels, "levels", "source and levels differ in size");
}

// findRuns(y, ends) writes the ends of the runs of a row and returns their number,
// measure(y, ends, count, levels) their levels.
template <class FindRuns, class Measure>
KY_ERRORS Find(std::ptrdiff_t width, std::ptrdiff_t height, CONNEXITY connexity,
               KyObjectsVector& objects, KyROI<KyBW32>* labels, const FindRuns& findRuns,
               const Measure& measure) noexcept {
  if (width == 0) height = 0;
  Labelling labelling;
  Scratch<std::int32_t> ends;
  Scratch<RunLevels> levels;
  if (!labelling.Start(width, height, connexity, labels != nullptr) ||
      !ends.Allocate(EndsOfRow(width)) || !levels.Allocate(EndsOfRow(width) / 2))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    const std::size_t count = findRuns(y, ends.get());
    measure(y, ends.get(), count, levels.get());
    if (!labelling.AddRow(ends.get(), levels.get(), count)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  }
  if (const KY_ERRORS error = ky::MakeRoom(objects, labelling.Number())) return error;
  labelling.Store(objects.GetDataPtr());
  if (labels != nullptr) {
    const ky::Rows<KyBW32> out = RowsOf(labels);
    const auto paint = ChooseObjectKernels().paintRuns;
    for (std::ptrdiff_t y = 0; y < height; ++y)
      paint(out.Row(y), static_cast<std::size_t>(width), labelling.RunsOf(y), labelling.CountOf(y),
            labelling.Labels());
  }
  return KY_OK;
}

// Measures runs in the rows of a picture.
auto LevelsIn(const KyROI<KyBW8>* levels) noexcept {
  return [rows = RowsOf(levels), kernel = ChooseObjectKernels().measureLevels](
             std::ptrdiff_t y, const std::int32_t* ends, std::size_t count, RunLevels* runs) {
    kernel(rows.Row(y), static_cast<std::size_t>(rows.width), ends, count, runs);
  };
}

template <class T>
bool Share(const ky::Rows<const T>& rows, const KyROI<KyBW32>* labels) noexcept {
  return labels != nullptr && SharingOf(rows, RowsOf(labels)) != ky::Sharing::kNothing;
}
bool Share(const KyROI<KyBW8>* levels, const KyROI<KyBW32>* labels) noexcept {
  return levels != nullptr && Share(RowsOf(levels), labels);
}

// The bits of up to eight bytes, the first pixel in the least significant one.
std::uint64_t WordOf(const KyBW8* bytes, std::ptrdiff_t count) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, static_cast<std::size_t>(count));
  const auto swap = [&](int shift, std::uint64_t low) {
    word = (word >> shift & low) | (word & low) << shift;
  };
  swap(1, 0x5555555555555555);
  swap(2, 0x3333333333333333);
  swap(4, 0x0F0F0F0F0F0F0F0F);
  return word;
}

// Writes the ends of the runs of set bits in row y, and returns the number of runs.
std::size_t FindRuns(const BitRows& bits, std::ptrdiff_t y, std::int32_t* ends) noexcept {
  ky::RunEnds runEnds(ends);
  // Places of bits, counted from the first byte of the row: the first word begins with bits of
  // neighbours, and so may the last one end.
  const KyBW8* const row = bits.bytes.Row(y);
  const std::ptrdiff_t end = bits.firstBit + bits.width;
  for (std::ptrdiff_t at = 0; at < end; at += 64) {
    const std::ptrdiff_t left = bits.bytes.width - at / 8;
    std::uint64_t word = WordOf(row + at / 8, std::min<std::ptrdiff_t>(8, left));
    if (at == 0) word = word >> bits.firstBit << bits.firstBit;
    if (end - at < 64) word &= (std::uint64_t{1} << (end - at)) - 1;
    runEnds.Add(word, static_cast<std::int32_t>(at - bits.firstBit));
  }
  return static_cast<std::size_t>(runEnds.Finish(static_cast<std::int32_t>(bits.width)) - ends) / 2;
}

}  // namespace

KY_ERRORS ImgFindObjects(const KyROI<KyBW8>* source, KyBW8 low, KyBW8 high, CONNEXITY connexity,
                         KyObjectsVector* objects, KyROI<KyBW32>* labels,
                         const KyROI<KyBW8>* levels) noexcept {
  return Call("ImgFindObjects (BW8)", [&] {
    if (const KY_ERRORS error = CheckFinding(source, objects, labels, levels)) return error;
    const auto rows = RowsOf(source);
    if (Share(rows, labels) || Share(levels, labels) || Share(ky::ArrayOf(*objects), labels))
      return KY_ERROR_COLOR_PLANES;
    if (low > high) return ky::Explain(KY_ERROR_BAD_INTERVAL, "low exceeds high");
    if (const KY_ERRORS error = ky::CheckConnexity(connexity)) return error;
    const auto findRuns = [&, kernel = ChooseObjectKernels().findRuns](std::ptrdiff_t y,
                                                                       std::int32_t* ends) {
      return kernel(rows.Row(y), static_cast<std::size_t>(rows.width), low, high, ends);
    };
    return Find(rows.width, rows.height, connexity, *objects, labels, findRuns,
                LevelsIn(levels != nullptr ? levels : source));
  });
}

KY_ERRORS ImgFindObjects(const KyROI<KyBW1>* source, CONNEXITY connexity, KyObjectsVector* objects,
                         KyROI<KyBW32>* labels, const KyROI<KyBW8>* levels) noexcept {
  return Call("ImgFindObjects (BW1)", [&] {
    if (const KY_ERRORS error = CheckFinding(source, objects, labels, levels)) return error;
    const BitRows bits(source);
    if (Share<KyBW8>(bits.bytes, labels) || Share(levels, labels) ||
        Share(ky::ArrayOf(*objects), labels))
      return KY_ERROR_COLOR_PLANES;
    if (const KY_ERRORS error = ky::CheckConnexity(connexity)) return error;
    const auto find = [&](const auto& measure) {
      return Find(
          source->GetWidth(), source->GetHeight(), connexity, *objects, labels,
          [&](std::ptrdiff_t y, std::int32_t* ends) { return FindRuns(bits, y, ends); }, measure);
    };
    if (levels != nullptr) return find(LevelsIn(levels));
    return find([](std::ptrdiff_t, const std::int32_t* ends, std::size_t count, RunLevels* runs) {
      for (std::size_t i = 0; i < count; ++i)
        runs[i] = {static_cast<std::uint64_t>(ends[2 * i + 1] - ends[2 * i]), 1, 1};
    });
  });
}
