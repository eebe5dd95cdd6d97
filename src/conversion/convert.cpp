#include "conversion/convert_rows.h"
#include "foundation/frame.h"
#include "foundation/stream.h"
#include "ky/conversion.h"

namespace {

using ky::ConvertKernels;

template <class A, class B>
KY_ERRORS Convert(const char* name, const KyROI<A>* source, KyROI<B>* destination) noexcept {
  return ky::CallOn(name, source, destination, [&](const auto& in, const auto& out) {
    return ky::MapFreshRows({ky::ChooseConvertKernels().Get<B, A>()}, out, ky::FromRows(in));
  });
}
template <class A, class B>
KY_ERRORS Shift(const char* name, const KyROI<A>* source, KyROI<B>* destination, unsigned shift,
                unsigned most, ky::MapKernel<B, A, int> ConvertKernels::*kernel) noexcept {
  return ky::CallOn(name, source, destination, [&](const auto& in, const auto& out) {
    if (shift > most) return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "shift");
    return ky::MapRows(ky::ChooseConvertKernels().*kernel, out, ky::FromRows(in),
                       ky::FromParameters(static_cast<int>(shift)));
  });
}

}  // namespace

#define KY_CONVERT(A, B)                                                                 \
  KY_ERRORS ImgConvert(const KyROI<Ky##A>* source, KyROI<Ky##B>* destination) noexcept { \
    return Convert("ImgConvert (" #A " to " #B ")", source, destination);                \
  }
#define KY_CONVERT_ALL(A, B1, B2, B3, B4, B5, B6) \
  KY_CONVERT(A, B1)                               \
  KY_CONVERT(A, B2) KY_CONVERT(A, B3) KY_CONVERT(A, B4) KY_CONVERT(A, B5) KY_CONVERT(A, B6)

KY_CONVERT_ALL(BW8, BW16, BW32, C15, C16, C24, C24A)
KY_CONVERT_ALL(BW16, BW8, BW32, C15, C16, C24, C24A)
KY_CONVERT_ALL(BW32, BW8, BW16, C15, C16, C24, C24A)
KY_CONVERT_ALL(C15, BW8, BW16, BW32, C16, C24, C24A)
KY_CONVERT_ALL(C16, BW8, BW16, BW32, C15, C24, C24A)
KY_CONVERT_ALL(C24, BW8, BW16, BW32, C15, C16, C24A)
KY_CONVERT_ALL(C24A, BW8, BW16, BW32, C15, C16, C24)

KY_ERRORS ImgConvert(const KyROI<KyBW16>* source, KyROI<KyBW8>* destination,
                     unsigned int shift) noexcept {
  return Shift("ImgConvert (BW16 to BW8)", source, destination, shift, 15,
               &ConvertKernels::shiftRight);
}
KY_ERRORS ImgConvert(const KyROI<KyBW8>* source, KyROI<KyBW16>* destination,
                     unsigned int shift) noexcept {
  return Shift("ImgConvert (BW8 to BW16)", source, destination, shift, 8,
               &ConvertKernels::shiftLeft);
}
