#include "ky/gradient.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "foundation/resize.h"
#include "foundation/scratch.h"
#include "foundation/window.h"
#include "gradient/gradient_rows.h"
#include "ky/angle.h"

namespace {

using ky::Call;
using ky::Rows;
using ky::RowsOf;

constexpr int kSide = 512;
constexpr int kMiddle = kSide / 2;

// The results of all windows that have a pixel of the source at their centre.
template <class Out, class Run>
KY_ERRORS FilterNeighbours(KyROI<Out>* destination, const KyROI<KyBW8>* source,
                           const ky::GradientKernels& kernels, const Run& run) noexcept {
  return ky::FilterWindows(RowsOf(destination), RowsOf(source), ky::Border::Nearest(),
                           ky::WindowKernel<Run>{1, kernels.lanes, run});
}

// The frame of both scalar forms: calls work(kernels, table) when all may be used.
template <class T, class Work>
KY_ERRORS MapGradients(const KyROI<T>* source, KyROI<KyBW8>* destination,
                       const KyROI<KyBW8>* lookup, const Work& work) noexcept {
  return Call("ImgGradientScalar", [&] {
    if (const KY_ERRORS error = ky::CheckRois(ky::kSourceAndDestination, source, destination))
      return error;
    if (lookup == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "lookup");
    const Rows<const KyBW8> rows = RowsOf(lookup);
    if (rows.first == nullptr || rows.width != kSide || rows.height != kSide)
      return ky::OutOfRange(KY_ERROR_PARAMETER_3_OUT_OF_RANGE, "lookup");
    ky::Input<KyBW8> table;
    const bool fits = rows.pitch <= INT_MAX / kSide;
    if (!(fits ? table.OpenApart(rows, RowsOf(destination)) : table.OpenCopy(rows)))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
    return work(
        ky::ChooseGradientKernels(),
        ky::GradientTable{table.rows().first, static_cast<int>(table.rows().pitch), nullptr});
  });
}

// The entries of differences from -128 to 127 as the table's near ones. The rows of a whole lookup
// image stand so far apart that those of usual gradients drive each other out of a first cache.
KY_ERRORS CopyNear(ky::GradientTable& table, ky::Scratch<KyBW8>& near) noexcept {
  constexpr int kNear = kMiddle / 2, kNearSide = 2 * kNear;
  if (!near.Allocate(kNearSide * kNearSide)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const Rows<const KyBW8> all = {table.first, table.pitch, kSide, kSide};
  for (int y = 0; y < kNearSide; ++y)
    std::copy_n(all.Row(kMiddle - kNear + y) + kMiddle - kNear, kNearSide,
                near.get() + y * kNearSide);
  table.near = near.get();
  return KY_OK;
}

// Gives a lookup image its size and entries: entryOf(gx, gy).
template <class EntryOf>
KY_ERRORS MakeLookup(const char* name, KyImage<KyBW8>* lookup, const EntryOf& entryOf) noexcept {
  return Call(name, [&] {
    if (lookup == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "lookup");
    if (const KY_ERRORS error = ky::Resize(lookup, kSide, kSide)) return error;
    const Rows<KyBW8> rows = RowsOf(lookup);
    for (int gy = -kMiddle; gy < kMiddle; ++gy)
      for (int gx = -kMiddle; gx < kMiddle; ++gx)
        rows.Row(gy + kMiddle)[gx + kMiddle] = entryOf(gx, gy);
    return KY_OK;
  });
}

// The low 8 bits of a value truncated to 64 bits; 0 when it does not fit them.
KyBW8 LowByte(double value) noexcept {
  constexpr double kLimit = 0x1p63;
  return std::abs(value) < kLimit ? static_cast<KyBW8>(static_cast<std::int64_t>(value)) : KyBW8{0};
}

}  // namespace

KY_ERRORS ImgGradientVector(const KyROI<KyBW8>* source, KyROI<KyBW32>* destination) noexcept {
  return Call("ImgGradientVector", [&] {
    if (const KY_ERRORS error = ky::CheckRois(ky::kSourceAndDestination, source, destination))
      return error;
    const ky::GradientKernels& kernels = ky::ChooseGradientKernels();
    return FilterNeighbours(destination, source, kernels, kernels.store);
  });
}

KY_ERRORS ImgGradientScalar(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                            const KyROI<KyBW8>* lookup) noexcept {
  return MapGradients(source, destination, lookup, [&](const auto& kernels, auto table) {
    constexpr std::int64_t kWorthCopying = 1 << 13;
    ky::Scratch<KyBW8> near;
    if (std::int64_t{source->GetWidth()} * source->GetHeight() >= kWorthCopying)
      if (const KY_ERRORS error = CopyNear(table, near)) return error;
    return FilterNeighbours(
        destination, source, kernels,
        [&](Rows<KyBW8> out, const KyBW8* const* rows) { kernels.lookUp(out, rows, table); });
  });
}

KY_ERRORS ImgGradientScalar(const KyROI<KyBW32>* source, KyROI<KyBW8>* destination,
                            const KyROI<KyBW8>* lookup) noexcept {
  return MapGradients(source, destination, lookup, [&](const auto& kernels, const auto& table) {
    const Rows<KyBW8> out = RowsOf(destination);
    ky::Input<KyBW32> input;
    if (!input.Open(RowsOf(source), out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    for (std::ptrdiff_t y = 0; y < out.height; ++y)
      kernels.lookUpStored(out.Row(y), static_cast<std::size_t>(out.width), input.rows().Row(y),
                           table);
    return KY_OK;
  });
}

KY_ERRORS ImgModulusImage(KyImage<KyBW8>* lookup, float gain) noexcept {
  return MakeLookup("ImgModulusImage", lookup, [gain](int gx, int gy) {
    const double value = std::sqrt(double(gx * gx + gy * gy)) * gain + 0.5;
    return value > 255 ? KyBW8{255} : LowByte(value);
  });
}

KY_ERRORS ImgArgumentImage(KyImage<KyBW8>* lookup, KyBW8 origin, float angleSpan) noexcept {
  const double scale = angleSpan != 0 ? 256.0 / KyToRadians(angleSpan) : 0;
  const double offset = origin + 256.5;
  return MakeLookup("ImgArgumentImage", lookup, [=](int gx, int gy) {
    return gx == 0 && gy == 0 ? KyBW8{0} : LowByte(ky::Atan2(gy, gx) * scale + offset);
  });
}
