#include "foundation/frame.h"
#include "foundation/kernels/mirror_rows.h"
#include "foundation/rows.h"
#include "ky/mirrors.h"

namespace {

using ky::Call;
using ky::ChooseMirrorKernels;
using ky::MirrorKernels;
using ky::Rows;

template <class T>
KY_ERRORS VerticalMirror(const char* name, KyROI<T>* image) noexcept {
  return Call(name, [&] {
    Rows<KyBW8> rows;  // of components
    if (const KY_ERRORS error = ky::Open(image, rows, "image")) return error;
    const MirrorKernels& kernels = ChooseMirrorKernels();
    for (std::ptrdiff_t top = 0, bottom = rows.height - 1; top < bottom; ++top, --bottom)
      kernels.exchange(rows.Row(top), rows.Row(bottom), static_cast<std::size_t>(rows.width));
    return KY_OK;
  });
}

template <class T>
KY_ERRORS HorizontalMirror(KyROI<T>* image,
                           void (*MirrorKernels::*reverse)(T*, std::size_t)) noexcept {
  return Call("ImgHorizontalMirror (gray-level)", [&] {
    Rows<T> rows;
    if (const KY_ERRORS error = ky::Open(image, rows, "image")) return error;
    const MirrorKernels& kernels = ChooseMirrorKernels();
    for (std::ptrdiff_t y = 0; y < rows.height; ++y)
      (kernels.*reverse)(rows.Row(y), static_cast<std::size_t>(rows.width));
    return KY_OK;
  });
}

}  // namespace

KY_ERRORS ImgVerticalMirror(KyROI<KyBW8>* image) noexcept {
  return VerticalMirror("ImgVerticalMirror (gray-level)", image);
}
KY_ERRORS ImgVerticalMirror(KyROI<KyC24>* image) noexcept {
  return VerticalMirror("ImgVerticalMirror (color)", image);
}

KY_ERRORS ImgHorizontalMirror(KyROI<KyBW8>* image) noexcept {
  return HorizontalMirror(image, &MirrorKernels::reverse);
}
KY_ERRORS ImgHorizontalMirror(KyROI<KyC24>* image) noexcept {
  return HorizontalMirror(image, &MirrorKernels::reverseColors);
}
