/// @file
/// @ingroup files
/// Pictures on disk: PNG, and PGM and PPM in their binary forms (P5, P6). The functions are in a
/// library of their own, ky::files.
#pragma once

#include <cstddef>

#include "ky/export.h"
#include "ky/image.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Colours are red, green, blue in the components c0, c1, c2. Files may be read and written by any
/// number of threads. After any error the image, and a file that was there before, are as they
/// were, and KyGetErrorMessage says what is wrong in a few words; the caller knows the file's name.

/// Loads a picture into an image, which takes the picture's size. What the file is follows from
/// its bytes, not from its name:
///
/// - `KyBW8`: grey levels 0 to 255. Of 16 bits the higher 8 count; levels of fewer than 8 bits are
///   stretched to 0 to 255. Colours become their luma, as by ImgConvert.
/// - `KyBW16`: grey samples of more than 8 bits as they stand in the file, neither stretched nor
///   shifted; of all other files 257 times the levels that `KyBW8` gives, as by ImgConvert.
/// - `KyC24`: colours, with samples as for `KyBW8`. Grey levels become three equal components.
///
/// Samples are those of the file: gamma, colour profiles and transparency do not matter, and a
/// palette becomes its colours. Samples v of a PGM or PPM with a maximum m other than 255 become
/// (255 v + m / 2) / m, and 256 v / (m + 1) where m exceeds 255, both rounded down.
///
/// Errors: `KY_ERROR_FILE_OPEN` (1102) for a null path, `KY_ERROR_NO_IMAGE` (1400) for a null
/// image, `KY_ERROR_FILE_OPEN` (1102) for a file that cannot be opened or is a pipe, at which a
/// call could wait for ever, `KY_ERROR_FILE_READ` (1103) for one that cannot be read, ends too
/// early or is damaged, `KY_ERROR_FILE_FORMAT` (1105) for one of another kind, or whose header is
/// damaged, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when memory runs out, and for a picture of more
/// than 2^28 pixels. Traces: "ImgLoad (BW8)", "ImgLoad (BW16)", "ImgLoad (C24)".
KY_API KY_ERRORS ImgLoad(const char* path, KyImage<KyBW8>* image) noexcept;
KY_API KY_ERRORS ImgLoad(const char* path, KyImage<KyBW16>* image) noexcept;
KY_API KY_ERRORS ImgLoad(const char* path, KyImage<KyC24>* image) noexcept;

/// The same from the `size` bytes of a file in memory, with `KY_ERROR_FILE_OPEN` (1102) for a null
/// address. Traces: "ImgDecode (BW8)", "ImgDecode (BW16)", "ImgDecode (C24)".
KY_API KY_ERRORS ImgDecode(const void* bytes, std::size_t size, KyImage<KyBW8>* image) noexcept;
KY_API KY_ERRORS ImgDecode(const void* bytes, std::size_t size, KyImage<KyBW16>* image) noexcept;
KY_API KY_ERRORS ImgDecode(const void* bytes, std::size_t size, KyImage<KyC24>* image) noexcept;

/// Saves the pixels of an ROI as what the name ends in: .png, .pgm (grey) or .ppm (colours).
/// `KyBW16` has 16 bits a sample there. ImgLoad gives the same pixels again. A file of that name is
/// replaced when the new one is complete, and keeps its permissions; what a link leads to is
/// replaced, not the link. PNG files of more than 2^20 pixels are compressed lightly, because the
/// best compression would take seconds.
///
/// Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400), `KY_ERROR_NO_PIXELS` (1051) for an
/// ROI of no columns or rows, `KY_ERROR_FILE_OPEN` (1102) for a null path, `KY_ERROR_FILE_FORMAT`
/// (1105) for another ending, `KY_ERROR_FILE_OPEN` (1102) where no file can be made, and for a name
/// that belongs to something other than a regular file, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303),
/// `KY_ERROR_FILE_WRITE` (1104), `KY_ERROR_FILE_CLOSE` (1106). Traces: "ImgSave (BW8)", "ImgSave
/// (BW16)", "ImgSave (C24)".
KY_API KY_ERRORS ImgSave(const KyROI<KyBW8>* source, const char* path) noexcept;
KY_API KY_ERRORS ImgSave(const KyROI<KyBW16>* source, const char* path) noexcept;
KY_API KY_ERRORS ImgSave(const KyROI<KyC24>* source, const char* path) noexcept;
