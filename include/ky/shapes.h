/// @file
/// @ingroup morphology
/// Grey-level and colour morphology with boxes and flat elements of any shape.
#pragma once

#include "ky/export.h"
#include "ky/kernel.h"
#include "ky/morphology.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Erosion is the minimum and dilation the maximum of the source over an element B:
///
///     erosion(p)  = min { source(p + b) : b in B, p + b in the ROI }, 255 where there is none
///     dilation(p) = max { source(p - b) : b in B, p - b in the ROI }, 0 where there is none
///
/// - Elements: a box of (2 halfWidth + 1) x (2 halfHeight + 1) pixels, of any size; or the
///   positions (i - sizeX / 2, j - sizeY / 2) of a kernel's coefficients (i, j) that are not 0.
///   (Not a number is not 0; gain, offset, rectifier and outside value do not matter.)
///   Dilation takes the element point by point mirrored, so that opening never lightens and closing
///   never darkens a pixel, also for elements that are not symmetric.
/// - Colours: each component is a grey image of its own.
/// - Border: only pixels inside the ROI count.
/// - In place: a null destination, or one on the source's pixels, replaces the source. An area that
///   overlaps the source otherwise is written as if the source were a copy.
/// - Cost: boxes cost the same at every size. Other elements cost about what their rows do: the
///   extremes over runs of one length are made once for all the rows that have such a run, and
///   those of runs that stand one below the other are shared too.
/// - Errors: `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels, `KY_ERROR_SIZE_MISMATCH` (1403)
///   for different sizes, `KY_ERROR_KERNEL_SIZE` (1700) for a null kernel or one without
///   coefficients, `KY_ERROR_KERNEL_1701` (1701) for one whose coefficients are all 0,
///   `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Nothing has been written then. An ROI of no columns or
///   rows is no error.
/// - Trace: the name of the function and the type, such as "ImgErode (BW8)" or "ImgErode (C24)".
///
/// Where half sizes are given by literals, the first must not be a plain 0, which could be a null
/// kernel as well.

/// Erodes or dilates the source.
KY_API KY_ERRORS ImgErode(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                          unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgErode(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                          const KyKernel* shape) noexcept;
KY_API KY_ERRORS ImgErode(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                          unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgErode(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                          const KyKernel* shape) noexcept;
KY_API KY_ERRORS ImgDilate(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                           unsigned halfWidth,
                           unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgDilate(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                           const KyKernel* shape) noexcept;
KY_API KY_ERRORS ImgDilate(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                           unsigned halfWidth,
                           unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgDilate(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                           const KyKernel* shape) noexcept;

/// Opens the source, dilation(erosion(source)), which removes what is bright and does not hold the
/// element; or closes it, erosion(dilation(source)), which does the same to what is dark.
KY_API KY_ERRORS ImgOpen(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                         unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgOpen(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                         const KyKernel* shape) noexcept;
KY_API KY_ERRORS ImgOpen(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                         unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgOpen(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                         const KyKernel* shape) noexcept;
KY_API KY_ERRORS ImgClose(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                          unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgClose(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                          const KyKernel* shape) noexcept;
KY_API KY_ERRORS ImgClose(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                          unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgClose(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                          const KyKernel* shape) noexcept;

/// White top-hat: source - opening(source), what the opening removes; black top-hat:
/// closing(source) - source, what the closing fills. Both are right in place too.
KY_API KY_ERRORS ImgWhiteTopHat(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                unsigned halfWidth,
                                unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgWhiteTopHat(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                const KyKernel* shape) noexcept;
KY_API KY_ERRORS ImgWhiteTopHat(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                unsigned halfWidth,
                                unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgWhiteTopHat(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                const KyKernel* shape) noexcept;
KY_API KY_ERRORS ImgBlackTopHat(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                unsigned halfWidth,
                                unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgBlackTopHat(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                const KyKernel* shape) noexcept;
KY_API KY_ERRORS ImgBlackTopHat(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                unsigned halfWidth,
                                unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgBlackTopHat(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                const KyKernel* shape) noexcept;

/// Morphological gradient: dilation(source) - erosion(source).
KY_API KY_ERRORS ImgMorphoGradient(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   unsigned halfWidth,
                                   unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgMorphoGradient(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   const KyKernel* shape) noexcept;
KY_API KY_ERRORS ImgMorphoGradient(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                   unsigned halfWidth,
                                   unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgMorphoGradient(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                   const KyKernel* shape) noexcept;
