#include <algorithm>
#include <cstdint>

#include "foundation/frame.h"
#include "foundation/kernels/lookup_rows.h"
#include "histogram/counts.h"
#include "ky/histogram.h"

namespace {

using ky::Call;
using ky::LookupTable;
using ky::Rows;

// level[k] = scale * (counts[0] + ... + counts[k - 1]) / total, all modulo 2^32; 0 when the total
// is.
LookupTable EqualizingTable(const std::uint32_t* counts, std::uint32_t scale) noexcept {
  std::uint32_t total = 0;
  for (int k = 0; k < ky::kLevels; ++k) total += counts[k];
  LookupTable table{};
  if (total == 0) return table;
  std::uint32_t below = 0;
  for (int k = 0; k < ky::kLevels; ++k) {
    table.level[k] = static_cast<KyBW8>(below * scale / total);
    below += counts[k];
  }
  return table;
}

// An image that is black all over stays so.
LookupTable EqualizingTable(const std::uint32_t* counts) noexcept {
  const bool black =
      std::all_of(counts + 1, counts + ky::kLevels, [](std::uint32_t count) { return count == 0; });
  return black ? LookupTable{} : EqualizingTable(counts, 255);
}

}  // namespace

KY_ERRORS ImgSetupEqualize(const KyBW8HistogramVector* histogram, KyBW8Vector* table) noexcept {
  return Call("ImgSetupEqualize (KyBW8HistogramVector)", [&] {
    if (const KY_ERRORS error = ky::CheckLevels(histogram)) return error;
    if (table == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = table->SetNumElements(ky::kLevels)) return error;
    std::copy_n(EqualizingTable(histogram->begin()).level, ky::kLevels, table->begin());
    return KY_OK;
  });
}

KY_ERRORS ImgSetupEqualize(const KyVector* histogram, KyVector* table) noexcept {
  return Call("ImgSetupEqualize (KyVector)", [&] {
    std::uint32_t* counts;
    if (const KY_ERRORS error = ky::CountsOf(histogram, KY_ERROR_VECTOR_1603, counts)) return error;
    if (table == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    // Made first: both may be the same vector.
    const LookupTable levels = EqualizingTable(counts, 256);
    if (!table->IsSameVectType(ky::kTableVector) || table->GetAllocatedSize() < ky::kLevels)
      if (const KY_ERRORS error = table->SetType(ky::kTableVector, ky::kLevels, 0)) return error;
    std::copy_n(levels.level, ky::kLevels, static_cast<KyBW8*>(table->GetDataPtr()));
    ky::UseElements(table, ky::kLevels);
    return KY_OK;
  });
}

KY_ERRORS ImgEqualize(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Call("ImgEqualize", [&] {
    Rows<const KyBW8> in;
    Rows<KyBW8> out;
    // Counting the source is one step, looking its levels up another: each checks what it needs.
    if (const KY_ERRORS error = ky::Open(source, in)) return ky::FailIn(error, {"ImgHistogram"});
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out))
      return ky::FailIn(error, {"ImgLut"});
    ky::Counts counts;
    ky::CountLevels(source, counts);
    const KY_ERRORS error = ky::LookUp(out, in, EqualizingTable(counts));
    return error == KY_OK ? KY_OK : ky::FailIn(error, {"ImgLut"});
  });
}
