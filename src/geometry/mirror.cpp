#include "foundation/frame.h"
#include "foundation/rows.h"
#include "geometry/mirror_rows.h"
#include "ky/mirrors.h"

namespace {

using ky::Call;
using ky::ChooseMirrorKernels;
using ky::HasImage;
using ky::MirrorKernels;
using ky::Rows;
using ky::RowsOf;

template <class T>
KY_ERRORS VerticalMirror(const char* name, KyROI<T>* image) noexcept {
  return Call(name, [&] {
    if (const KY_ERRORS error = HasImage(image)) return error;
    const Rows<KyBW8> rows = ky::ComponentRowsOf(image);
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
    if (const KY_ERRORS error = HasImage(image)) return error;
    const Rows<T> rows = RowsOf(image);
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
