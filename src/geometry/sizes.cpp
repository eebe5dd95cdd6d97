#include "ky/sizes.h"

#include "foundation/frame.h"
#include "geometry/resize.h"
#include "geometry/shrink.h"
#include "geometry/sizes.h"
#include "geometry/sizes_rows.h"

namespace {

using ky::HalveKernel;
using ky::Rows;

template <class T>
void Halve(const Rows<T>& out, const Rows<const T>& in, HalveKernel<T> kernel) noexcept {
  for (std::ptrdiff_t y = 0; y < out.height; ++y)
    kernel(out.Row(y), static_cast<std::size_t>(out.width), in.Row(2 * y), in.Row(2 * y + 1));
}

// The frame of all changes of size: work(destination, source) on rows of pixels that share none.
template <class T, class Suits, class Work>
KY_ERRORS Scale(const char* name, const KyROI<T>* source, KyROI<T>* destination, const Suits& suits,
                const char* unsuited, const Work& work) noexcept {
  return ky::Call(name, [&] {
    Rows<const T> in;
    Rows<T> out;
    if (const KY_ERRORS error = ky::Open(source, in)) return error;
    if (const KY_ERRORS error = ky::Open(destination, out)) return error;
    if (!suits(out, in)) return ky::Explain(KY_ERROR_SIZE_MISMATCH, unsuited);
    if (out.Empty()) return KY_OK;
    ky::Input<T> input;
    if (!input.OpenApart(in, out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    return work(out, input.rows());
  });
}

template <class T>
KY_ERRORS Halve(const char* name, const KyROI<T>* source, KyROI<T>* destination) noexcept {
  return Scale(
      name, source, destination,
      [](const auto& out, const auto& in) {
        return out.width == in.width / 2 && out.height == in.height / 2;
      },
      "destination has not half of the width and height of source",
      [](const Rows<T>& out, const Rows<const T>& in) {
        ky::HalveRows(out, in);
        return KY_OK;
      });
}

template <class T>
KY_ERRORS Shrink(const char* name, const KyROI<T>* source, KyROI<T>* destination) noexcept {
  return Scale(
      name, source, destination,
      [](const auto& out, const auto& in) {
        return !out.Empty() && out.width <= in.width && out.height <= in.height;
      },
      "destination has no pixels, or is larger than source",
      [](const Rows<T>& out, const Rows<const T>& in) { return ky::ShrinkRows(out, in); });
}

template <class T>
KY_ERRORS Resize(const char* name, const KyROI<T>* source, KyROI<T>* destination) noexcept {
  return Scale(
      name, source, destination,
      [](const auto& out, const auto& in) { return out.Empty() || !in.Empty(); },
      "source has no columns or rows, but destination has",
      [](const Rows<T>& out, const Rows<const T>& in) { return ky::ResizeRows(out, in); });
}

}  // namespace

namespace ky {

void HalveRows(const Rows<KyBW8>& destination, const Rows<const KyBW8>& source) noexcept {
  Halve(destination, source, ChooseSizeKernels().halve);
}
void HalveRows(const Rows<KyC24>& destination, const Rows<const KyC24>& source) noexcept {
  Halve(destination, source, ChooseSizeKernels().halveColors);
}

}  // namespace ky

KY_ERRORS ImgHalve(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Halve("ImgHalve (BW8)", source, destination);
}
KY_ERRORS ImgHalve(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Halve("ImgHalve (C24)", source, destination);
}
KY_ERRORS ImgShrink(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Shrink("ImgShrink (BW8)", source, destination);
}
KY_ERRORS ImgShrink(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Shrink("ImgShrink (C24)", source, destination);
}
KY_ERRORS ImgResize(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Resize("ImgResize (BW8)", source, destination);
}
KY_ERRORS ImgResize(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Resize("ImgResize (C24)", source, destination);
}
