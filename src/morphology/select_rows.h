// The row kernels of all ranks of windows of some pixels, by a search for each bit of the results.
#pragma once

#include <cstddef>

#include "foundation/rows.h"
#include "ky/pixels.h"

namespace ky {

// Half sizes of windows, up to kMostHalf each.
struct SelectWindow {
  static constexpr std::ptrdiff_t kMostHalf = 5;
  std::ptrdiff_t halfWidth, halfHeight;
  int rank;
};

struct SelectKernels {
  int most;  // pixels of a window: more take longer than by histograms
  std::size_t lanes;
  // The run of a WindowKernel, whose rows are those of the windows. By half width.
  using Run = void (*)(Rows<KyBW8> out, const KyBW8* const* rows, const SelectWindow& window);
  Run grey[SelectWindow::kMostHalf + 1], color[SelectWindow::kMostHalf + 1];
};

// The kernels of the instruction set that this call may use.
const SelectKernels& ChooseSelectKernels() noexcept;

}  // namespace ky
