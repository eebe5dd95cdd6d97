/// @file
/// @ingroup morphology
/// Thinning and thickening of binary images by patterns, and skeletons.
#pragma once

#include "ky/export.h"
#include "ky/kernel.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// How a pattern turns from step to step.
enum KERNEL_ROTATION : int {
  KERNEL_ROTATION_NONE,           ///< not at all: one step to an iteration
  KERNEL_ROTATION_CLOCKWISE,      ///< by 45 degrees, as seen with y downwards: eight steps
  KERNEL_ROTATION_ANTICLOCKWISE,  ///< the other way round: eight steps
};

/// A level of 0 is ground, and any other is object. A pattern of 3x3 coefficients asks for object
/// where a coefficient is above 0, for ground where it is below 0, and for nothing where it is 0 or
/// not a number. It matches at (x, y) when all of its coefficients (i, j) find what they ask for at
/// (x + i - 1, y + j - 1).
///
/// - A step of thinning makes 0 of the object pixels at which the pattern matches, a step of
///   thickening makes 255 of the ground pixels at which it matches. All matches of a step are found
///   before any is applied. Other pixels keep their levels.
/// - Border: outside the ROI is ground.
/// - In place: a null destination, or one on the source's pixels, replaces the source. An area that
///   overlaps the source otherwise is written as if the source were a copy.
/// - Cost: an iteration costs what the one before it has changed, not the size of the image.
/// - Errors: `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels, `KY_ERROR_SIZE_MISMATCH` (1403)
///   for different sizes, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Nothing has been written then. An
///   ROI of no columns or rows is no error.
/// - Trace: the name of the function.

/// Thins or thickens the source by `iterations` iterations, or until a whole one changes nothing; 0
/// sets no limit. With a rotation, an iteration is eight steps, and the ring of eight coefficients
/// around the central one turns by one place from each to the next; the first is not turned.
/// Without one, an iteration is one step.
///
/// Errors after the common ones: `KY_ERROR_KERNEL_SIZE` (1700) for a null pattern or one without
/// coefficients, `KY_ERROR_KERNEL_1703` (1703) for one that is not 3x3,
/// `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for another rotation,
/// `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) for a negative number of iterations.
///
/// The hit-or-miss transform that these are made of is described by J. Serra, "Image Analysis and
/// Mathematical Morphology", Academic Press, 1982.
KY_API KY_ERRORS ImgThin(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                         const KyKernel* pattern, KERNEL_ROTATION rotation,
                         int iterations) noexcept;
KY_API KY_ERRORS ImgThick(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                          const KyKernel* pattern, KERNEL_ROTATION rotation,
                          int iterations) noexcept;

/// Thins the source to lines one pixel wide, its skeleton, which is connected in the same way as
/// the source. These two patterns, then both turned clockwise by a quarter, and so on, thin it in
/// turn, until eight steps in a row change nothing:
///
///     -1 -1 -1     0 -1 -1
///      0  1  0     1  1 -1
///      1  1  1     0  1  0
KY_API KY_ERRORS ImgSkeleton(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;
