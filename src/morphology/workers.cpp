#include "morphology/workers.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "foundation/kernels/operators_rows.h"
#include "foundation/window.h"
#include "morphology/unit_rows.h"

namespace ky {
namespace {

template <class T>
Lines<T> LinesOf(const Rows<T>& rows) noexcept {
  return {rows.first, rows.pitch, rows.height};
}

// Rows that passes advance by: what one has made is still in a cache when the next reads it.
constexpr std::ptrdiff_t kRowsAtOnce = 8;

// Goes down an image of `height` rows: `advance(ready)` makes what it can of so many rows.
template <class Advance>
void GoDown(std::ptrdiff_t height, const Advance& advance) noexcept {
  for (std::ptrdiff_t ready = 0; ready < height;) {
    ready = std::min(ready + kRowsAtOnce, height);
    advance(ready);
  }
}

// The windows of an element that IsUnit.
const ExtremeWindows& WindowsOf(const Element& element) noexcept {
  const UnitKernels& kernels = ChooseUnitKernels();
  return element.crosses == 0 ? kernels.square : kernels.cross;
}
const WindowKernel<WindowRun>& KernelOf(const WindowKernels& kernels,
                                        const Element& element) noexcept {
  return element.step == 1 ? kernels.grey : kernels.color;
}
const WindowKernel<WindowRun>& KernelOf(const ExtremeWindows& windows, Extreme extreme,
                                        const Element& element) noexcept {
  return KernelOf(extreme == kDilation ? windows.maximum : windows.minimum, element);
}

// RunBoth by an element that IsUnit: two walks go down the image, one closely after the other.
template <class Finish>
bool RunBothUnits(const Operands& on, Extreme first, const Element& element, bool keepsSource,
                  const Finish& finish) noexcept {
  constexpr std::ptrdiff_t kBand = 24;  // rows, as many as a WindowWalk makes at a time
  const Extreme second = first == kDilation ? kErosion : kDilation;
  const ExtremeWindows& windows = WindowsOf(element);
  const WindowKernel<WindowRun>& kernel = KernelOf(windows, first, element);
  const WindowKernel<WindowRun>& kernelBack = KernelOf(windows, second, element);
  WindowWalk<KyBW8, KyBW8> there(kernel, Border::Nearest()), back(kernelBack, Border::Nearest());
  Input<KyBW8> input;
  if (keepsSource && !input.OpenApart(on.source, on.destination)) return false;
  const Rows<const KyBW8> in = keepsSource ? input.rows() : on.source;
  const Rows<KyBW8>& out = on.destination;
  if (!there.Open(out, in) || !back.Open(out, out)) return false;
  for (std::ptrdiff_t y = 0; y < out.height;) {
    const std::ptrdiff_t begin = std::exchange(y, std::min(y + kBand, out.height));
    there.MakeTo(std::min(y + 1, out.height), kernel);
    back.MakeTo(y, kernelBack);
    for (std::ptrdiff_t row = begin; row < y; ++row) finish(out.Row(row), in.Row(row));
  }
  return true;
}

// One extreme, then the other. `finish(row, source)` is run on every row of the result; in place,
// it finds the source there only if that is kept.
template <class Finish>
bool RunBoth(const Operands& on, Extreme first, const Element& element, bool keepsSource,
             const Finish& finish) noexcept {
  const std::ptrdiff_t width = on.source.width, height = on.source.height;
  const Extreme second = first == kDilation ? kErosion : kDilation;
  Input<KyBW8> input;
  ExtremePass there, back;
  if (on.source.Empty()) return true;
  if (element.IsUnit()) return RunBothUnits(on, first, element, keepsSource, finish);
  if (!(keepsSource ? input.OpenApart(on.source, on.destination)
                    : input.Open(on.source, on.destination)) ||
      !there.Allocate(first, element, width, height) ||
      !back.Allocate(second, element, width, height))
    return false;
  const Lines<const KyBW8> in = LinesOf(input.rows());
  const Lines<KyBW8> out = LinesOf(on.destination);
  std::ptrdiff_t finished = 0;
  GoDown(height, [&](std::ptrdiff_t ready) {
    const std::ptrdiff_t between = there.Advance(ready, in, out);
    const std::ptrdiff_t made = back.Advance(between, {out.first, out.pitch, out.count}, out);
    for (; finished < made; ++finished) finish(out(finished), in(finished));
  });
  return true;
}

}  // namespace

bool RunExtreme(const Operands& on, Extreme extreme, const Element& element) noexcept {
  const std::ptrdiff_t width = on.source.width, height = on.source.height;
  if (element.IsUnit())
    return FilterWindows(on.destination, on.source, Border::Nearest(),
                         KernelOf(WindowsOf(element), extreme, element)) == KY_OK;
  Input<KyBW8> input;
  ExtremePass pass;
  if (on.source.Empty()) return true;
  if (!input.Open(on.source, on.destination) || !pass.Allocate(extreme, element, width, height))
    return false;
  GoDown(height, [&](std::ptrdiff_t ready) {
    pass.Advance(ready, LinesOf(input.rows()), LinesOf(on.destination));
  });
  return true;
}

bool RunOpenOrClose(const Operands& on, Extreme first, const Element& element) noexcept {
  return RunBoth(on, first, element, false, [](KyBW8*, const KyBW8*) {});
}

bool RunTopHat(const Operands& on, Extreme first, const Element& element) noexcept {
  const auto subtract = ChooseOperatorKernels().combine[KY_OPER_SUBTRACT];
  const auto width = static_cast<std::size_t>(on.source.width);
  return RunBoth(on, first, element, true, [&](KyBW8* row, const KyBW8* from) {
    first == kErosion ? MapRow(subtract, row, width, from, row)
                      : MapRow(subtract, row, width, row, from);
  });
}

bool RunGradient(const Operands& on, const Element& element) noexcept {
  const std::ptrdiff_t width = on.source.width, height = on.source.height;
  Input<KyBW8> input;
  ExtremePass dilation, erosion;
  Scratch<KyBW8> memory;
  if (element.IsUnit())
    return FilterWindows(on.destination, on.source, Border::Nearest(),
                         KernelOf(WindowsOf(element).range, element)) == KY_OK;
  if (on.source.Empty()) return true;
  if (!input.Open(on.source, on.destination) ||
      !erosion.Allocate(kErosion, element, width, height) ||
      !dilation.Allocate(kDilation, element, width, height))
    return false;
  // The two may lag by different numbers of rows.
  const std::ptrdiff_t rows =
      std::max(erosion.RowsInUse(kRowsAtOnce), dilation.RowsInUse(kRowsAtOnce));
  if (!memory.Allocate(rows * width)) return false;
  const Lines<KyBW8> eroded = {memory.get(), width, rows};
  const Lines<const KyBW8> in = LinesOf(input.rows());
  const Lines<KyBW8> out = LinesOf(on.destination);
  const auto subtract = ChooseOperatorKernels().combine[KY_OPER_SUBTRACT];
  std::ptrdiff_t finished = 0;
  GoDown(height, [&](std::ptrdiff_t ready) {
    // The erosion first: in place, the dilation writes over what it reads.
    const std::ptrdiff_t erosions = erosion.Advance(ready, in, eroded);
    const std::ptrdiff_t made = std::min(erosions, dilation.Advance(ready, in, out));
    for (; finished < made; ++finished)
      MapRow(subtract, out(finished), static_cast<std::size_t>(width), out(finished),
             eroded(finished));
  });
  return true;
}

}  // namespace ky
