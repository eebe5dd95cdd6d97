/// @file
/// @ingroup thresholds
/// Thresholds chosen from a histogram.
#pragma once

#include "ky/export.h"
#include "ky/histogram_vector.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/vector.h"

/// How a threshold is chosen. A mode can be passed wherever an absolute threshold of 0 to 255 can,
/// converted to the same unsigned argument. In the descriptions t is the threshold, c1 and s1 are
/// the number and the sum of the levels below it, and c2 and s2 those of the levels from t on.
enum IMG_THRESHOLD_MODES : int {
  /// Minimises the sum over the pixels of the squared distance to black (0) in the lower class,
  /// which here includes t itself, and to white (255) in the upper one. The highest of equally good
  /// t is taken.
  IMG_THRESHOLD_QUADRATIC_BLACK_WHITE = -8,
  /// Does the same with plain distances.
  IMG_THRESHOLD_LINEAR_BLACK_WHITE = -7,
  /// Takes the t nearest to the middle between the means of both classes (Ridler and Calvard,
  /// 1978). In this mode and in those below the lowest of equally good t is taken.
  IMG_THRESHOLD_ISODATA = -6,
  /// Maximises the sum of the entropies of both classes (Kapur, Sahoo and Wong, 1985).
  IMG_THRESHOLD_MAX_ENTROPY = -5,
  /// Minimises the variance within the classes, that is, maximises s1^2 / c1 + s2^2 / c2 (Otsu,
  /// 1979).
  IMG_THRESHOLD_MIN_RESIDUE = -4,
  /// Puts a given fraction of the pixels below t. For all pixels t becomes 256.
  IMG_THRESHOLD_RELATIVE = -3,
};

/// Chooses the threshold that splits the levels `minLevel` to `maxLevel` of a histogram of 256
/// bins. On entry `threshold` holds a mode, or an absolute level, which is kept; on return it holds
/// the threshold, or 0 when no level splits the histogram. `relative`, from 0 to 1, is the fraction
/// of IMG_THRESHOLD_RELATIVE.
///
/// **Counts, sums of levels and costs have 32 bits and wrap:** the modes are right for images of up
/// to 16,843,009 pixels, IMG_THRESHOLD_QUADRATIC_BLACK_WHITE for up to 66,051, and so are the mean
/// levels. The criteria are computed in single precision.
///
/// `averageBelow` and `averageAbove` become the mean levels s1 / c1 and s2 / c2 of the classes, or
/// minLevel and maxLevel + 1 for an empty one. The two black and white modes report their costs
/// instead, divided by the number of pixels: for plain distances the mean of the lower class and
/// 255 less that of the upper, for squared ones the mean squares (the lower with minLevel^2 times
/// the number of all pixels added to the sum). Absolute levels are meant for a minLevel of 0: with
/// any other, an absolute level T makes the classes meet at minLevel + T, and s2 counts the levels
/// from there on as if they started at T.
///
/// Errors, checked in this order before anything is written: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for
/// a null histogram; `KY_ERROR_NOT_256_ENTRIES` (1613) for a histogram that does not have 256 bins;
/// `KY_ERROR_PARAMETER_5_OUT_OF_RANGE` (1015), `KY_ERROR_PARAMETER_6_OUT_OF_RANGE` (1016) for a
/// level above 255; `KY_ERROR_BAD_INTERVAL` (1007) when minLevel is not below maxLevel;
/// `KY_ERROR_PARAMETER_5_OUT_OF_RANGE` (1015) for a fraction outside 0..1;
/// `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) for an absolute level outside the range. Trace:
/// "ImgHistogramThreshold".
KY_API KY_ERRORS ImgHistogramThreshold(const KyBW8HistogramVector* histogram,
                                       unsigned int& threshold, float& averageBelow,
                                       float& averageAbove, float relative = 0.5f,
                                       unsigned int minLevel = 0,
                                       unsigned int maxLevel = 255) noexcept;

/// Returns the low 8 bits of the threshold that ImgHistogramThreshold chooses from the histogram of
/// `source`, or 0 on failure. Errors and traces are those of ImgHistogram and
/// ImgHistogramThreshold; it adds no trace of its own.
KY_API KyBW8 ImgAutoThreshold(const KyROI<KyBW8>* source, IMG_THRESHOLD_MODES mode,
                              float relative = 0.5f) noexcept;

/// Returns the isodata threshold computed in integers, or 0 on failure. It starts with t =
/// (minLevel + maxLevel + 1) / 2 and replaces t by half the sum of the mean of the levels minLevel
/// to t and the mean of those above, until t no longer changes, at most 16 times. An empty class
/// counts as half the sum of t and minLevel, or of t and maxLevel + 1. Errors:
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for null; `KY_ERROR_NOT_256_ENTRIES` (1613) for a histogram
/// that does not have 256 bins; `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012),
/// `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013) for a level above 255; `KY_ERROR_BAD_INTERVAL` (1007)
/// when minLevel is not below maxLevel. Trace: "ImgIsodataThreshold (KyBW8HistogramVector)".
KY_API int ImgIsodataThreshold(const KyBW8HistogramVector* histogram, unsigned int minLevel = 0,
                               unsigned int maxLevel = 255) noexcept;
/// Does the same for a generic vector of type 2. Errors: `KY_ERROR_VECTOR_1602` (1602) for another
/// type, `KY_ERROR_BAD_VECTOR_TYPE` (1601) for one without storage for 256 counts, and those above
/// for the levels. Trace: "ImgIsodataThreshold (KyVector)".
KY_API int ImgIsodataThreshold(const KyVector* histogram, unsigned int minLevel = 0,
                               unsigned int maxLevel = 255) noexcept;

/// Returns the threshold of least variance within both classes over all 256 levels, the lowest of
/// equally good ones, and writes the mean levels of the classes. Returns 0, and leaves the averages
/// as they were, when no threshold is better than none, as for an empty histogram. Errors:
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for null, `KY_ERROR_NOT_256_ENTRIES` (1613) for a histogram
/// that does not have 256 bins. Trace: "ImgMinResidueThreshold".
KY_API KyBW8 ImgMinResidueThreshold(const KyBW8HistogramVector* histogram, float& averageBelow,
                                    float& averageAbove) noexcept;

/// Does the same by the largest sum of the entropies of both classes. Trace:
/// "ImgMaxEntropyThreshold".
KY_API KyBW8 ImgMaxEntropyThreshold(const KyBW8HistogramVector* histogram, float& averageBelow,
                                    float& averageAbove) noexcept;

/// Makes a threshold surface for uneven light: a smooth image that holds one threshold for each
/// pixel. Nodes lie on a grid of ceil(width / tileWidth) by ceil(height / tileHeight) steps; each
/// holds the isodata threshold of the tile around it, cut off at the border; the surface between
/// them is interpolated bilinearly (ImgScaleRotate, 8 bits). A tile height of 0 stands for the tile
/// width. The mode is not used: every mode gives the same surface. Small tiles cost more: those of
/// one pixel about five times as much as those of 16 x 16 pixels and more.
///
/// The destination is resized to the size of the source; a source of no columns or rows changes
/// nothing. Errors: `KY_ERROR_NO_IMAGE` (1400); `KY_ERROR_PARAMETER_4_OUT_OF_RANGE` (1014) for a
/// tile width below 1, `KY_ERROR_PARAMETER_5_OUT_OF_RANGE` (1015) for a tile height below 1;
/// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgAutoAdaptiveThreshold".
KY_API KY_ERRORS ImgAutoAdaptiveThreshold(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                          IMG_THRESHOLD_MODES mode, int tileWidth,
                                          int tileHeight = 0) noexcept;
