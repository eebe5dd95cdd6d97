/// @file
/// @ingroup morphology
/// Grey-level morphology with boxes and disks of any size.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// A half height that stands for the half width of the box.
inline constexpr unsigned KY_HALF_HEIGHT_AS_WIDTH = 0xFFFFFFFFu;

/// Dilation is the maximum and erosion the minimum of the source over an element B centred on each
/// pixel:
///
///     dilation(x, y) = max { source(x + i, y + j) : (i, j) in B, (x + i, y + j) in the ROI }
///     erosion(x, y)  = min { the same }
///
/// - Elements: a box of (2 halfWidth + 1) x (2 halfHeight + 1) pixels; a disk of radius r, which is
///   the octagon of all (i, j) with |i|, |j| <= r and |i| + |j| <= 2 r - h, h = (r + 1) / 2: r - h
///   square steps and h cross steps. Any size is accepted, and the cost does not depend on it.
/// - Border: only pixels inside the ROI count.
/// - In place: a null destination, or one on the source's pixels, replaces the source. An area that
///   overlaps the source otherwise is written as if the source were a copy.
/// - Errors: `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels, `KY_ERROR_SIZE_MISMATCH` (1403)
///   for different sizes, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when there is no memory for some
///   rows. Nothing has been written then. An ROI of no columns or rows is no error.
/// - Trace: the name of the function. A `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) is traced under the
///   name of the first step, such as "ImgDilate3x3 (BW8)" (a step along the rows has no name);
///   ImgDilateBox, ImgErodeBox, ImgDilateDisk and ImgErodeDisk add their own name to that only when
///   they do not work in place.
///
/// The extremes are computed as described by M. van Herk, "A fast algorithm for local minimum and
/// maximum filters on rectangular and octagonal kernels", Pattern Recognition Letters 13, 1992; J.
/// Gil, M. Werman, "Computing 2-D min, median, and max filters", IEEE PAMI 15, 1993.
KY_API KY_ERRORS ImgDilateBox(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                              unsigned halfWidth,
                              unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgErodeBox(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                             unsigned halfWidth,
                             unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgDilateDisk(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                               unsigned radius) noexcept;
KY_API KY_ERRORS ImgErodeDisk(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                              unsigned radius) noexcept;

/// Opens the source, dilation(erosion(source)), which removes what is bright and smaller than the
/// element. A `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) is traced under the inner dilation or erosion
/// too, as described above.
KY_API KY_ERRORS ImgOpenBox(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                            unsigned halfWidth,
                            unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgOpenDisk(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                             unsigned radius) noexcept;

/// Closes the source, erosion(dilation(source)), which removes what is dark and smaller than the
/// element.
KY_API KY_ERRORS ImgCloseBox(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                             unsigned halfWidth,
                             unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgCloseDisk(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                              unsigned radius) noexcept;

/// White top-hat, **for a destination of its own** (ImgWhiteTopHat works in place too): source -
/// opening(source), which keeps what is bright and smaller than the element. In place the box form
/// fails with `KY_ERROR_COLOR_PLANES` (1413), and the disk form gives 0 everywhere, as the source
/// is gone when the opening is subtracted from it. Failures of the opening are traced as
/// "ImgOpenBox" or "ImgOpenDisk" first.
KY_API KY_ERRORS ImgWhiteTopHatBox(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   unsigned halfWidth,
                                   unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgWhiteTopHatDisk(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                    unsigned radius) noexcept;

/// Black top-hat, **for a destination of its own** (ImgBlackTopHat works in place too):
/// closing(source) - source, which keeps what is dark and smaller than the element. In place both
/// forms give 0 everywhere. Failures of the closing are traced as "ImgCloseBox" or "ImgCloseDisk"
/// first.
KY_API KY_ERRORS ImgBlackTopHatBox(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   unsigned halfWidth,
                                   unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgBlackTopHatDisk(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                    unsigned radius) noexcept;

/// Morphological gradient: dilation(source) - erosion(source), in place or not. The size of the
/// destination is checked first; a destination of the right size but without pixels is found by the
/// dilation, and traced as "ImgDilateBox" or "ImgDilateDisk" first.
KY_API KY_ERRORS ImgMorphoGradientBox(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                      unsigned halfWidth,
                                      unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgMorphoGradientDisk(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                       unsigned radius) noexcept;

/// The same by boxes for colours: each component is a grey image of its own. A failure, also one of
/// memory, is traced as the name of the function and the type alone, such as "ImgOpenBox (C24)".
KY_API KY_ERRORS ImgDilateBox(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                              unsigned halfWidth,
                              unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgErodeBox(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                             unsigned halfWidth,
                             unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgOpenBox(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                            unsigned halfWidth,
                            unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgCloseBox(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                             unsigned halfWidth,
                             unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
