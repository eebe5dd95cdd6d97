// The kernels that bring pixels into the order in which rows and columns are transformed, and back.
#pragma once

#include <cstddef>

#include "foundation/rows.h"
#include "ky/pixels.h"

namespace ky {

// Some columns of an image in scratch memory, each one's numbers one after the other.
struct Columns {
  KyComplex64* first;
  std::ptrdiff_t pitch;  // numbers from column to column

  KyComplex64* Column(std::ptrdiff_t i) const noexcept { return first + i * pitch; }
};

struct TransformKernels {
  // Column i of `to` = column i of the image.
  void (*gather)(Rows<const KyComplex64> from, Columns to);
  // The same back.
  void (*scatter)(Columns from, Rows<KyComplex64> to);
  // Column i = column 2 i of the image + i column 2 i + 1; the one beyond an odd width is 0.
  void (*gatherPairs)(Rows<const KyBW8> from, Columns to);
  // The transforms of columns from those of pairs, which are `n` long and have the first number
  // once more at their end. Of the transforms the first rows, as many as `to` has, n / 2 + 1 at
  // most.
  void (*scatterPairs)(Columns from, std::ptrdiff_t n, Rows<KyComplex64> to);
  // out[0] = conj(in[0]), out[n - i] = conj(in[i]).
  void (*mirror)(KyComplex64* out, std::size_t n, const KyComplex64* in);
  // out[i] = in[i] factor.
  void (*scale)(KyComplex64* out, std::size_t n, const KyComplex64* in, float factor);
};

// The kernels of the instruction set that this call may use.
const TransformKernels& ChooseTransformKernels() noexcept;

}  // namespace ky
