// Pictures out of files.
#include <type_traits>
#include <utility>

#include "files/bytes.h"
#include "files/picture.h"
#include "files/png_reader.h"
#include "files/pnm.h"
#include "ky/conversion.h"
#include "ky/files.h"

namespace {

using ky::Bytes;

// Gives `image` what has been decoded, converted where its type is another.
template <class To, class From>
KY_ERRORS Hand(KyImage<From>&& decoded, KyImage<To>& image) noexcept {
  if constexpr (std::is_same_v<To, From>) {
    image = std::move(decoded);
    return KY_OK;
  } else if constexpr (std::is_same_v<From, KyC24> && std::is_same_v<To, KyBW16>) {
    KyImage<KyBW8> grey;
    if (const KY_ERRORS error = Hand(std::move(decoded), grey)) return error;
    return Hand(std::move(grey), image);
  } else {
    KyImage<To> converted;
    if (const KY_ERRORS error = ky::Resize(&converted, decoded.GetWidth(), decoded.GetHeight()))
      return error;
    if (const KY_ERRORS error = ImgConvert(&decoded, &converted)) return error;
    image = std::move(converted);
    return KY_OK;
  }
}

template <class From, class To>
KY_ERRORS DecodePng(ky::PngReader& png, KyImage<To>& image) noexcept {
  KyImage<From> decoded;
  if (const KY_ERRORS error = ky::MakeImage(decoded, png.width(), png.height())) return error;
  if (const KY_ERRORS error = png.ReadPixels(decoded.GetPixelPtr(0, 0), decoded.GetPitch()))
    return error;
  return Hand(std::move(decoded), image);
}

template <class From, class To>
KY_ERRORS DecodePnm(const Bytes& bytes, const ky::PnmHeader& header, KyImage<To>& image) noexcept {
  KyImage<From> decoded;
  if (const KY_ERRORS error = ky::ReadPnm(bytes, header, decoded)) return error;
  return Hand(std::move(decoded), image);
}

template <class T>
KY_ERRORS Decode(const Bytes& bytes, KyImage<T>& image) noexcept {
  constexpr bool kMayBeDeep = std::is_same_v<T, KyBW16>;
  const ky::FileKind kind = ky::KindOf(bytes);
  if (kind == ky::FileKind::kOther)
    return ky::Explain(KY_ERROR_FILE_FORMAT, "the file is no PNG, PGM (P5) or PPM (P6) picture");
  if (kind == ky::FileKind::kPng) {
    ky::PngReader png(bytes);
    if (const KY_ERRORS error = png.ReadHeader(kMayBeDeep)) return error;
    if (png.IsColor()) return DecodePng<KyC24>(png, image);
    if constexpr (kMayBeDeep)
      if (png.IsDeep()) return DecodePng<KyBW16>(png, image);
    return DecodePng<KyBW8>(png, image);
  }
  ky::PnmHeader header;
  if (const KY_ERRORS error = ky::ReadPnmHeader(bytes, header)) return error;
  if (kind == ky::FileKind::kPpm) return DecodePnm<KyC24>(bytes, header, image);
  if constexpr (kMayBeDeep)
    if (header.maximum > 255) return DecodePnm<KyBW16>(bytes, header, image);
  return DecodePnm<KyBW8>(bytes, header, image);
}

template <class T>
KY_ERRORS Load(const char* name, const char* path, KyImage<T>* image) noexcept {
  return ky::Call(name, [&] {
    if (path == nullptr) return ky::Explain(KY_ERROR_FILE_OPEN, "path is null");
    if (image == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "image is null");
    ky::Growing<std::uint8_t> contents;
    if (const KY_ERRORS error = ky::ReadFile(path, contents)) return error;
    return Decode(Bytes{contents.begin(), contents.size()}, *image);
  });
}

template <class T>
KY_ERRORS DecodeBytes(const char* name, const void* bytes, std::size_t size,
                      KyImage<T>* image) noexcept {
  return ky::Call(name, [&] {
    if (bytes == nullptr) return ky::Explain(KY_ERROR_FILE_OPEN, "bytes is null");
    if (image == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "image is null");
    return Decode(Bytes{static_cast<const std::uint8_t*>(bytes), size}, *image);
  });
}

}  // namespace

KY_ERRORS ImgLoad(const char* path, KyImage<KyBW8>* image) noexcept {
  return Load("ImgLoad (BW8)", path, image);
}
KY_ERRORS ImgLoad(const char* path, KyImage<KyBW16>* image) noexcept {
  return Load("ImgLoad (BW16)", path, image);
}
KY_ERRORS ImgLoad(const char* path, KyImage<KyC24>* image) noexcept {
  return Load("ImgLoad (C24)", path, image);
}

KY_ERRORS ImgDecode(const void* bytes, std::size_t size, KyImage<KyBW8>* image) noexcept {
  return DecodeBytes("ImgDecode (BW8)", bytes, size, image);
}
KY_ERRORS ImgDecode(const void* bytes, std::size_t size, KyImage<KyBW16>* image) noexcept {
  return DecodeBytes("ImgDecode (BW16)", bytes, size, image);
}
KY_ERRORS ImgDecode(const void* bytes, std::size_t size, KyImage<KyC24>* image) noexcept {
  return DecodeBytes("ImgDecode (C24)", bytes, size, image);
}
