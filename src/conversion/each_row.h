// Row by row, for kernels to which it matters where a row begins.
#pragma once

#include <cstddef>

#include "foundation/frame.h"
#include "foundation/rows.h"

namespace ky {

// Calls row(destination row, width, y, source rows) for every row, after the checks of both images
// and `check()`. The source stays readable. Images without columns have no rows.
template <class A, class B, class Check, class Row>
KY_ERRORS OnEachRow(const KyROI<A>* source, KyROI<B>* destination, const Check& check,
                    const Row& row) noexcept {
  Rows<const A> in;
  Rows<B> out;
  if (const KY_ERRORS error = OpenAll(source, in, destination, out)) return error;
  if (const KY_ERRORS error = check(out)) return error;
  Input<A> input;
  if (!input.OpenApart(in, out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  for (std::ptrdiff_t y = 0; y < out.height && out.width > 0; ++y)
    row(out.Row(y), static_cast<std::size_t>(out.width), y, input.rows());
  return KY_OK;
}

}  // namespace ky
