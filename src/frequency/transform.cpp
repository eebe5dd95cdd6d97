// Fourier transforms of images: of the columns, then of the rows. Columns are brought into scratch
// memory, a few neighbouring ones at a time, so that lines of the cache are read as a whole.
#include <algorithm>
#include <bit>
#include <cstring>

#include "foundation/frame.h"
#include "foundation/pitch.h"
#include "foundation/rows.h"
#include "foundation/scratch.h"
#include "frequency/plans.h"
#include "frequency/transform_rows.h"
#include "ky/frequency.h"

namespace {

using ky::Columns;
using ky::Rows;
using std::ptrdiff_t;

constexpr ptrdiff_t kNumber = sizeof(KyComplex64);
constexpr ptrdiff_t kColumns = 8;

// The plans of rows and columns, and what they work in.
class Workshop {
 public:
  // False when there is no memory.
  bool Open(ptrdiff_t width, ptrdiff_t height, bool inverse) noexcept {
    height_ = height;
    columnPitch_ = ky::ScratchPitch((height + 1) * kNumber) / kNumber;
    rowPitch_ = ky::ScratchPitch(width * kNumber) / kNumber;
    // The plans come last, as they make sure of what FFTW itself will allocate.
    return memory_.Allocate(2 * (kColumns * columnPitch_ + rowPitch_)) &&
           rowPlan_.Open(width, inverse) && columnPlan_.Open(height, inverse);
  }

  // Columns to be transformed, and where the transforms go, each with its first number once more at
  // its end.
  Columns ColumnsIn() const noexcept { return {memory_.get(), columnPitch_}; }
  Columns ColumnsOut() const noexcept {
    return {memory_.get() + kColumns * columnPitch_, columnPitch_};
  }
  void TransformColumns(ptrdiff_t count) const noexcept {
    const Columns in = ColumnsIn(), out = ColumnsOut();
    for (ptrdiff_t i = 0; i < count; ++i) {
      KyComplex64* const column = out.Column(i);
      columnPlan_.Run(in.Column(i), column);
      column[height_] = column[0];
    }
  }

  // The transform of the row, which stays until the next one.
  const KyComplex64* TransformRow(const KyComplex64* row, ptrdiff_t width) const noexcept {
    KyComplex64* const in = memory_.get() + 2 * kColumns * columnPitch_;
    KyComplex64* const out = in + rowPitch_;
    std::memcpy(in, row, static_cast<std::size_t>(width * kNumber));
    rowPlan_.Run(in, out);
    return out;
  }

 private:
  ky::FourierPlan rowPlan_, columnPlan_;
  ky::Scratch<KyComplex64> memory_;
  ptrdiff_t height_ = 0, columnPitch_ = 0, rowPitch_ = 0;
};

// The area of columns x.. x + width - 1.
template <class T>
Rows<T> Slice(const Rows<T>& rows, ptrdiff_t x, ptrdiff_t width) noexcept {
  return {rows.first + x, rows.pitch, width, rows.height};
}

// Two columns of pixels are transformed as one of complex numbers, and of their transforms and all
// that follows from them the rows to the middle are computed; the others mirror them.
KY_ERRORS Transform(const Rows<const KyBW8>& source, const Rows<KyComplex64>& out) noexcept {
  if (out.Empty()) return KY_OK;
  const ptrdiff_t width = out.width, height = out.height;
  ky::Input<KyBW8> input;
  Workshop shop;
  if (!input.OpenApart(source, out) || !shop.Open(width, height, false))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  const ky::TransformKernels& kernels = ky::ChooseTransformKernels();

  const Rows<KyComplex64> half{out.first, out.pitch, width, height / 2 + 1};
  for (ptrdiff_t x = 0; x < width; x += 2 * kColumns) {
    const ptrdiff_t count = std::min(2 * kColumns, width - x);
    kernels.gatherPairs(Slice(input.rows(), x, count), shop.ColumnsIn());
    shop.TransformColumns((count + 1) / 2);
    kernels.scatterPairs(shop.ColumnsOut(), height, Slice(half, x, count));
  }

  const auto n = static_cast<std::size_t>(width);
  for (ptrdiff_t y = 0; y < half.height; ++y) {
    KyComplex64* const row = out.Row(y);
    const KyComplex64* const transform = shop.TransformRow(row, width);
    std::memcpy(row, transform, n * kNumber);
    const ptrdiff_t mirrored = y == 0 ? 0 : height - y;
    if (mirrored != y) {
      kernels.mirror(out.Row(mirrored), n, transform);
    } else {
      for (ptrdiff_t x = 1; x < (width + 1) / 2; ++x) row[width - x] = {row[x].re, -row[x].im};
    }
  }
  return KY_OK;
}

KY_ERRORS Transform(const Rows<const KyComplex64>& source, const Rows<KyComplex64>& out,
                    bool inverse) noexcept {
  if (out.Empty()) return KY_OK;
  const ptrdiff_t width = out.width, height = out.height;
  ky::Input<KyComplex64> input;
  Workshop shop;
  if (!input.Open(source, out) || !shop.Open(width, height, inverse))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  const ky::TransformKernels& kernels = ky::ChooseTransformKernels();

  for (ptrdiff_t x = 0; x < width; x += kColumns) {
    const ptrdiff_t count = std::min(kColumns, width - x);
    kernels.gather(Slice(input.rows(), x, count), shop.ColumnsIn());
    shop.TransformColumns(count);
    kernels.scatter(shop.ColumnsOut(), Slice(out, x, count));
  }

  const double pixels = static_cast<double>(width) * static_cast<double>(height);
  const float factor = inverse ? static_cast<float>(1 / pixels) : 1.0f;
  for (ptrdiff_t y = 0; y < height; ++y) {
    KyComplex64* const row = out.Row(y);
    kernels.scale(row, static_cast<std::size_t>(width), shop.TransformRow(row, width), factor);
  }
  return KY_OK;
}

KY_ERRORS CheckPowersOfTwo(const KyGenericROI* roi) noexcept {
  const auto isPower = [](int n) { return std::has_single_bit(static_cast<unsigned>(n)); };
  return isPower(roi->GetWidth()) && isPower(roi->GetHeight()) ? KY_OK : KY_ERROR_NOT_POWER_OF_TWO;
}

template <bool kFast>
KY_ERRORS CallTransform(const char* name, const KyROI<KyBW8>* source,
                        KyROI<KyComplex64>* destination) noexcept {
  return ky::CallOn(name, source, destination, [&](const auto& in, const auto& out) {
    if (kFast)
      if (const KY_ERRORS error = CheckPowersOfTwo(destination)) return error;
    return Transform(in, out);
  });
}
template <bool kFast>
KY_ERRORS CallTransform(const char* name, const KyROI<KyComplex64>* source,
                        KyROI<KyComplex64>* destination, IMG_DFT_DIRECTION direction) noexcept {
  return ky::CallOn(name, source, destination, [&](const auto& in, const auto& out) {
    if (kFast)
      if (const KY_ERRORS error = CheckPowersOfTwo(destination)) return error;
    if (direction != IMG_DFT_FORWARD && direction != IMG_DFT_INVERSE)
      return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, "direction");
    return Transform(in, out, direction == IMG_DFT_INVERSE);
  });
}

}  // namespace

KY_ERRORS ImgSlowDFT(const KyROI<KyBW8>* source, KyROI<KyComplex64>* destination) noexcept {
  return CallTransform<false>("ImgSlowDFT (BW8)", source, destination);
}
KY_ERRORS ImgSlowDFT(const KyROI<KyComplex64>* source, KyROI<KyComplex64>* destination,
                     IMG_DFT_DIRECTION direction) noexcept {
  return CallTransform<false>("ImgSlowDFT (Complex64)", source, destination, direction);
}
KY_ERRORS ImgFastDFT(const KyROI<KyBW8>* source, KyROI<KyComplex64>* destination) noexcept {
  return CallTransform<true>("ImgFastDFT (BW8)", source, destination);
}
KY_ERRORS ImgFastDFT(const KyROI<KyComplex64>* source, KyROI<KyComplex64>* destination,
                     IMG_DFT_DIRECTION direction) noexcept {
  return CallTransform<true>("ImgFastDFT (Complex64)", source, destination, direction);
}
