// What cameras deliver: 4:2:2, mosaics and packed pixels.
#include <cstdint>

#include "conversion/bayer_rows.h"
#include "conversion/chroma_rows.h"
#include "conversion/each_row.h"
#include "conversion/unpack_rows.h"
#include "foundation/frame.h"
#include "foundation/ring.h"
#include "ky/conversion.h"

namespace {

using ky::Call;
using ky::Rows;
using std::ptrdiff_t;

constexpr auto kNoCheck = [](const auto&) { return KY_OK; };

template <class T>
KY_ERRORS Unpack(const void* pixels, int pitch, KY_PACKED_FORMAT format, KyROI<T>* destination,
                 ky::UnpackKernel<T> (ky::UnpackKernels::*kernels)[4]) noexcept {
  return Call("ImgUnpack", [&] {
    if (pixels == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "pixels is null");
    Rows<T> out;
    if (const KY_ERRORS error = ky::Open(destination, out)) return error;
    if (format < KY_PACKED_MONO10P || format > KY_PACKED_MONO12_GIGE)
      return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, "format");
    const ptrdiff_t bytes = format == KY_PACKED_MONO10P   ? (out.width * 10 + 7) / 8
                            : format == KY_PACKED_MONO12P ? (out.width * 12 + 7) / 8
                                                          : (out.width + 1) / 2 * 3;
    if (pitch < bytes) return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "pitch");
    const Rows<const std::uint8_t> packed = {static_cast<const std::uint8_t*>(pixels), pitch, bytes,
                                             out.height};
    ky::Input<std::uint8_t> input;
    if (!input.OpenApart(packed, out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    const auto unpack = (ky::ChooseUnpackKernels().*kernels)[format];
    for (ptrdiff_t y = 0; y < out.height; ++y)
      unpack(out.Row(y), static_cast<std::size_t>(out.width), input.rows().Row(y));
    return KY_OK;
  });
}

}  // namespace

KY_ERRORS ImgConvertTo422(const KyROI<KyC24>* source, KyROI<KyBW16>* destination) noexcept {
  return Call("ImgConvertTo422", [&] {
    const auto kernel = ky::ChooseChromaKernels().toPairs;
    return ky::OnEachRow(source, destination, kNoCheck,
                         [=](KyBW16* out, std::size_t n, ptrdiff_t y, const Rows<const KyC24>& in) {
                           kernel(out, n, in.Row(y));
                         });
  });
}
KY_ERRORS ImgConvertFrom422(const KyROI<KyBW16>* source, KyROI<KyC24>* destination) noexcept {
  return Call("ImgConvertFrom422", [&] {
    const auto kernel = ky::ChooseChromaKernels().toColors;
    return ky::OnEachRow(source, destination, kNoCheck,
                         [=](KyC24* out, std::size_t n, ptrdiff_t y, const Rows<const KyBW16>& in) {
                           kernel(out, n, in.Row(y));
                         });
  });
}

KY_ERRORS ImgConvertBayer(const KyROI<KyBW8>* source, KyROI<KyC24>* destination,
                          KY_BAYER_ORDER order) noexcept {
  return Call("ImgConvertBayer", [&] {
    const auto check = [&](const Rows<KyC24>& out) {
      if (out.width < 2 || out.height < 2)
        return ky::Explain(KY_ERROR_SIZE_MISMATCH, "a mosaic has 2 x 2 pixels at least");
      return order < KY_BAYER_RG || order > KY_BAYER_BG
                 ? ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, "order")
                 : KY_OK;
    };
    const auto demosaic = ky::ChooseBayerKernels().demosaic;
    const bool hasRed = order == KY_BAYER_RG || order == KY_BAYER_GR;
    const bool startsOnGreen = order == KY_BAYER_GR || order == KY_BAYER_GB;
    return ky::OnEachRow(
        source, destination, check,
        [=](KyC24* out, std::size_t n, ptrdiff_t y, const Rows<const KyBW8>& in) {
          const auto row = [&](ptrdiff_t at) {
            return in.Row(ky::Border::Mirror().PlaceOf(at, in.height));
          };
          const bool isOther = y % 2 != 0;
          demosaic(out, n,
                   {row(y - 1), row(y), row(y + 1), hasRed != isOther, startsOnGreen != isOther});
        });
  });
}

KY_ERRORS ImgUnpack(const void* pixels, int pitch, KY_PACKED_FORMAT format,
                    KyROI<KyBW16>* destination) noexcept {
  return Unpack(pixels, pitch, format, destination, &ky::UnpackKernels::toDeep);
}
KY_ERRORS ImgUnpack(const void* pixels, int pitch, KY_PACKED_FORMAT format,
                    KyROI<KyBW8>* destination) noexcept {
  return Unpack(pixels, pitch, format, destination, &ky::UnpackKernels::toGrey);
}
