/// @file
/// @ingroup rank
/// Medians and other ranks of windows of any size.
#pragma once

#include "ky/export.h"
#include "ky/morphology.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// A rank filter sorts the n = (2 halfWidth + 1) x (2 halfHeight + 1) pixels of the window that is
/// centred on a pixel and takes one of them:
///
///     destination(x, y) = the rank-th smallest, from 0, of
///                         source(x + i, y + j), |i| <= halfWidth, |j| <= halfHeight
///
/// - Border: a position outside the source has the value of the nearest pixel inside.
/// - Colours: each component by itself, as a grey image of its own.
/// - Size: half sizes are 0 to 2^20. All ranks of 3 x 3 and the median of 5 x 5 are the fastest;
///   windows of up to 11 x 11 take time in proportion to their pixels; the cost of larger ones does
///   not depend on their size.
/// - In place: a null destination, or one on the source's pixels, replaces the source. An area that
///   overlaps the source otherwise is written as if the source were a copy.
/// - Errors, which leave the destination as it was: `KY_ERROR_NO_IMAGE` (1400) for an ROI without
///   pixels; `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes;
///   `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) and `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) for
///   a half width or a half height above 2^20; `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013) for a
///   rank of n or more; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). An ROI of no columns or rows is no
///   error.
/// - Trace: the function's name followed by " (BW8)" or " (C24)", as in "ImgMedian (BW8)".
///
/// The smallest go through networks of exchanges on sorted columns, the next ones through a search
/// for each bit, large ones through histograms of columns in two levels: S. Perreault, P. Hebert,
/// "Median filtering in constant time", IEEE Transactions on Image Processing 16, 2007.

/// The median: rank (n - 1) / 2. It removes what is smaller than half of the window, such as salt
/// and pepper, and leaves straight edges as they are.
KY_API KY_ERRORS ImgMedian(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                           unsigned halfWidth = 1,
                           unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;
KY_API KY_ERRORS ImgMedian(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                           unsigned halfWidth = 1,
                           unsigned halfHeight = KY_HALF_HEIGHT_AS_WIDTH) noexcept;

/// Any rank: 0 is the erosion by the window and n - 1 the dilation. Ranks near these are extremes
/// that a few odd pixels do not upset.
KY_API KY_ERRORS ImgRank(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                         unsigned halfHeight, unsigned rank) noexcept;
KY_API KY_ERRORS ImgRank(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                         unsigned halfHeight, unsigned rank) noexcept;
