/// @file
/// @ingroup conversion
/// Conversions between pixel types, and from what cameras deliver.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// These functions copy an image into one of another pixel type. Source and destination have the
/// same size. They may share memory in any way: the result is that of a source that has been copied
/// first. Errors, checked in this order before the destination is written: `KY_ERROR_NO_IMAGE`
/// (1400) for an ROI without pixels, `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes, then
/// those of the function, then `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).

/// Convert grey pixels of 8 bits. Black stays black and white stays white: level v becomes 257 v in
/// 16 bits and 16843009 v in 32 bits. In a colour each of the components is v: v >> 3 in 5 bits, v
/// >> 2 in 6 bits; bit 15 of a KyC15 is 0, and alpha is 255. Trace: "ImgConvert (BW8 to BW16)",
/// with the names of the two types.
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW8>* source, KyROI<KyBW16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW8>* source, KyROI<KyBW32>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW8>* source, KyROI<KyC15>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW8>* source, KyROI<KyC16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW8>* source, KyROI<KyC24>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW8>* source, KyROI<KyC24A>* destination) noexcept;

/// Convert grey pixels of 16 bits: level v becomes v >> 8 in 8 bits, 65537 v in 32 bits, and the
/// colour of the grey level v >> 8. Trace: "ImgConvert (BW16 to BW8)", with the names of the two
/// types.
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW16>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW16>* source, KyROI<KyBW32>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW16>* source, KyROI<KyC15>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW16>* source, KyROI<KyC16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW16>* source, KyROI<KyC24>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW16>* source, KyROI<KyC24A>* destination) noexcept;

/// Convert grey pixels of 32 bits: level v becomes v >> 24 in 8 bits, v >> 16 in 16 bits, and the
/// colour of the grey level v >> 24. Trace: "ImgConvert (BW32 to BW8)", with the names of the two
/// types.
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW32>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW32>* source, KyROI<KyBW16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW32>* source, KyROI<KyC15>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW32>* source, KyROI<KyC16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW32>* source, KyROI<KyC24>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW32>* source, KyROI<KyC24A>* destination) noexcept;

/// Convert packed colours of 15 bits. A component v of 5 bits becomes (v << 3) | (v >> 2) in 8
/// bits; everything else is made from these components as from those of a KyC24. Bit 15 is not
/// read. Trace: "ImgConvert (C15 to BW8)", with the names of the two types.
KY_API KY_ERRORS ImgConvert(const KyROI<KyC15>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC15>* source, KyROI<KyBW16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC15>* source, KyROI<KyBW32>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC15>* source, KyROI<KyC16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC15>* source, KyROI<KyC24>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC15>* source, KyROI<KyC24A>* destination) noexcept;

/// Convert packed colours of 16 bits. A component v of 5 bits becomes (v << 3) | (v >> 2) in 8
/// bits, one of 6 bits (v << 2) | (v >> 4); everything else is made from these components as from
/// those of a KyC24. Trace: "ImgConvert (C16 to BW8)", with the names of the two types.
KY_API KY_ERRORS ImgConvert(const KyROI<KyC16>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC16>* source, KyROI<KyBW16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC16>* source, KyROI<KyBW32>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC16>* source, KyROI<KyC15>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC16>* source, KyROI<KyC24>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC16>* source, KyROI<KyC24A>* destination) noexcept;

/// Convert colours. The grey level of 8 bits is that of BT.601 for c0 = red, c1 = green, c2 = blue:
/// (9798 c0 + 19235 c1 + 3735 c2 + 16384) >> 15, which is then widened as from a KyBW8. Components
/// become v >> 3 in 5 bits and v >> 2 in 6 bits; bit 15 of a KyC15 is 0, and alpha is 255. Trace:
/// "ImgConvert (C24 to BW8)", with the names of the two types.
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24>* source, KyROI<KyBW16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24>* source, KyROI<KyBW32>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24>* source, KyROI<KyC15>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24>* source, KyROI<KyC16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24>* source, KyROI<KyC24A>* destination) noexcept;

/// Convert colours with an alpha component as colours without: alpha is dropped. Trace: "ImgConvert
/// (C24A to BW8)", with the names of the two types.
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24A>* source, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24A>* source, KyROI<KyBW16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24A>* source, KyROI<KyBW32>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24A>* source, KyROI<KyC15>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24A>* source, KyROI<KyC16>* destination) noexcept;
KY_API KY_ERRORS ImgConvert(const KyROI<KyC24A>* source, KyROI<KyC24>* destination) noexcept;

/// Keeps 8 of 16 bits: level v becomes min(255, v >> shift). A shift of 2 suits levels of 10 bits,
/// one of 4 those of 12 bits. Error: `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for a shift
/// above 15. Trace: "ImgConvert (BW16 to BW8)".
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW16>* source, KyROI<KyBW8>* destination,
                            unsigned int shift) noexcept;
/// Moves 8 bits up in 16: level v becomes v << shift. Error: `KY_ERROR_PARAMETER_1_OUT_OF_RANGE`
/// (1011) for a shift above 8. Trace: "ImgConvert (BW8 to BW16)".
KY_API KY_ERRORS ImgConvert(const KyROI<KyBW8>* source, KyROI<KyBW16>* destination,
                            unsigned int shift) noexcept;

/// Makes 4:2:2 pixels of colours (c0 = red r, c1 = green g, c2 = blue b), as ITU-R BT.601 defines
/// them for studio range. The low byte of each is Y = ((66 r + 129 g + 25 b + 128) >> 8) + 16. The
/// high byte belongs to the pair (x, x + 1) of an even column x, and is made from the pair's mean
/// components (first + second + 1) >> 1: at x it is Cb = ((-38 r - 74 g + 112 b + 128) >> 8) + 128,
/// at x + 1 it is Cr = ((112 r - 94 g - 18 b + 128) >> 8) + 128. In a last odd column Cb is made of
/// that pixel alone. Trace: "ImgConvertTo422".
KY_API KY_ERRORS ImgConvertTo422(const KyROI<KyC24>* source, KyROI<KyBW16>* destination) noexcept;
/// Makes colours of 4:2:2 pixels: with C = Y - 16, D = Cb - 128 and E = Cr - 128, where both
/// pixels of a pair have the same Cb and Cr, red is (298 C + 409 E + 128) >> 8, green is
/// (298 C - 100 D - 208 E + 128) >> 8 and blue is (298 C + 516 D + 128) >> 8, each limited to
/// 0..255. A last odd column takes the Cr of the pixel before it, or 128 where there is none.
/// Trace: "ImgConvertFrom422".
KY_API KY_ERRORS ImgConvertFrom422(const KyROI<KyBW16>* source, KyROI<KyC24>* destination) noexcept;

/// The colours of the filters on a sensor's pixels (0, 0) and (1, 0); those of the next row are the
/// two that are missing from the name, with green on the diagonal: RG stands for rows RGRG and
/// GBGB.
enum KY_BAYER_ORDER : int {
  KY_BAYER_RG,  ///< red, green
  KY_BAYER_GR,  ///< green, red
  KY_BAYER_GB,  ///< green, blue
  KY_BAYER_BG,  ///< blue, green
};

/// Makes colours (c0 = red, c1 = green, c2 = blue) of the pixels of a sensor under a Bayer mosaic,
/// by bilinear interpolation. A pixel keeps its own component. Each of the two others is the
/// rounded mean of the 2 or 4 nearest pixels of that colour around it: (a + b + 1) >> 1 or (a + b +
/// c + d + 2) >> 2. Outside the image, pixels are those mirrored about the border pixels: column -1
/// is column 1. An ROI inside a larger image sees nothing of its surroundings. Errors:
/// `KY_ERROR_SIZE_MISMATCH` (1403) also below 2 x 2 pixels, then `KY_ERROR_UNSUPPORTED_OPERATION`
/// (1003) for another order. Trace: "ImgConvertBayer".
KY_API KY_ERRORS ImgConvertBayer(const KyROI<KyBW8>* source, KyROI<KyC24>* destination,
                                 KY_BAYER_ORDER order) noexcept;

/// How cameras pack pixels of 10 and 12 bits. The first two are those of the GenICam pixel format
/// naming convention, a little-endian stream of bits; the others are the older ones of GigE Vision,
/// two pixels in three bytes: the 8 highest bits of the first, then the low bits of both, then the
/// 8 highest bits of the second.
enum KY_PACKED_FORMAT : int {
  KY_PACKED_MONO10P,      ///< 4 pixels in 5 bytes
  KY_PACKED_MONO12P,      ///< 2 pixels in 3 bytes
  KY_PACKED_MONO10_GIGE,  ///< 2 pixels in 3 bytes; byte 1: bits 0..1 and 4..5
  KY_PACKED_MONO12_GIGE,  ///< 2 pixels in 3 bytes; byte 1: bits 0..3 and 4..7
};

/// Unpacks the rows of a frame, which are `pitch` bytes apart. A row takes ceil(width bits / 8)
/// bytes, or 3 ceil(width / 2) in the forms of GigE Vision; nothing is read after those of the last
/// row. Pixels of 16 bits get levels up to 1023 or 4095, pixels of 8 bits the 8 highest bits. The
/// packed pixels may lie in the destination. Errors: `KY_ERROR_NO_IMAGE` (1400) for null pixels and
/// for an ROI without pixels, `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for another format,
/// `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for a pitch that is shorter than a row, then
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgUnpack".
KY_API KY_ERRORS ImgUnpack(const void* pixels, int pitch, KY_PACKED_FORMAT format,
                           KyROI<KyBW16>* destination) noexcept;
KY_API KY_ERRORS ImgUnpack(const void* pixels, int pitch, KY_PACKED_FORMAT format,
                           KyROI<KyBW8>* destination) noexcept;
