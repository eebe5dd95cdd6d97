// Thresholds chosen from a histogram.
#pragma once

#include "ky/export.h"
#include "ky/histogram_vector.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/vector.h"

/// How a threshold is chosen. A mode may stand wherever an absolute threshold of 0 to 255 may: it
/// is stored in the same unsigned argument. With t the threshold, c1 and s1 the number and the sum
/// of the levels below it, c2 and s2 those of the levels from it on:
enum IMG_THRESHOLD_MODES : int {
  /// Least sum over the pixels of the squared distance to black (0) for the lower class, which
  /// includes t itself, and to white (255) for the upper one. The highest t of equals.
  IMG_THRESHOLD_QUADRATIC_BLACK_WHITE = -8,
  /// The same with plain distances.
  IMG_THRESHOLD_LINEAR_BLACK_WHITE = -7,
  /// The t nearest to the middle of the means of both classes (Ridler and Calvard, 1978). The
  /// lowest t of equals, as below.
  IMG_THRESHOLD_ISODATA = -6,
  /// The largest sum of the entropies of both classes (Kapur, Sahoo and Wong, 1985).
  IMG_THRESHOLD_MAX_ENTROPY = -5,
  /// The least variance within the classes: the largest s1^2 / c1 + s2^2 / c2 (Otsu, 1979).
  IMG_THRESHOLD_MIN_RESIDUE = -4,
  /// A given fraction of the pixels lies below t. t may be 256: all of them.
  IMG_THRESHOLD_RELATIVE = -3,
};

/// Splits the levels `minLevel` to `maxLevel` of a histogram of 256 bins. `threshold` is a mode, or
/// an absolute level that is kept; the threshold is written back to it: 0 when no level splits the
/// histogram. `relative` is the fraction of IMG_THRESHOLD_RELATIVE, 0 to 1.
///
/// `averageBelow` and `averageAbove` become the mean levels s1 / c1 and s2 / c2 of the classes, or
/// minLevel and maxLevel + 1 for an empty one. The two black and white modes report their costs
/// instead, divided by the number of pixels: for plain distances the mean of the lower class and
/// 255 less that of the upper, for squared ones the mean squares (the lower with minLevel^2 times
/// the number of all pixels added to the sum). An absolute level T is meant for a minLevel of 0:
/// the classes meet at minLevel + T, and s2 counts the levels from there as if it were T.
///
/// Counts and sums are 32-bit and wrap; criteria are computed in single precision. Errors, in this
/// order, nothing written: 1601 for null; 1613 for other than 256 bins; 1015, 1016 for a level
/// above 255; 1007 when minLevel is not below maxLevel; 1015 for a fraction outside 0..1; 1012 for
/// an absolute level outside the range. Trace "ImgHistogramThreshold".
KY_API KY_ERRORS ImgHistogramThreshold(KyBW8HistogramVector* histogram, unsigned int& threshold,
                                       float& averageBelow, float& averageAbove,
                                       float relative = 0.5f, unsigned int minLevel = 0,
                                       unsigned int maxLevel = 255) noexcept;

/// The low 8 bits of the threshold that ImgHistogramThreshold chooses from the histogram of
/// `source`; 0 on failure, with the errors and traces of ImgHistogram and ImgHistogramThreshold and
/// none of its own.
KY_API KyBW8 ImgAutoThreshold(const KyROI<KyBW8>* source, IMG_THRESHOLD_MODES mode,
                              float relative = 0.5f) noexcept;

/// The isodata threshold in integers: from t = (minLevel + maxLevel + 1) / 2 on, t becomes the half
/// sum of the mean of the levels minLevel to t and the mean of those above, until it stays or 16
/// times; an empty class counts as the half sum of t and minLevel, or maxLevel + 1. Answers t, 0 on
/// failure. Errors: 1601 for null; 1613 for other than 256 bins; 1012, 1013 for a level above 255;
/// 1007 when minLevel is not below maxLevel. Trace "ImgIsodataThreshold (KyBW8HistogramVector)".
KY_API int ImgIsodataThreshold(KyBW8HistogramVector* histogram, unsigned int minLevel = 0,
                               unsigned int maxLevel = 255) noexcept;
/// The same of a generic vector of type 2. 1602 for another type, 1601 without storage for 256
/// counts. Trace "ImgIsodataThreshold (KyVector)".
KY_API int ImgIsodataThreshold(KyVector* histogram, unsigned int minLevel = 0,
                               unsigned int maxLevel = 255) noexcept;

/// The threshold of least variance within both classes over all 256 levels, the lowest of equals; 0
/// when none is better than no split, as for an empty histogram, and then the averages are not
/// written; otherwise they are the mean levels of the classes. Errors: 1601 for null, 1613 for
/// other than 256 bins. Trace "ImgMinResidueThreshold".
KY_API KyBW8 ImgMinResidueThreshold(KyBW8HistogramVector* histogram, float& averageBelow,
                                    float& averageAbove) noexcept;

/// The same by the largest sum of the entropies of both classes. Trace "ImgMaxEntropyThreshold".
KY_API KyBW8 ImgMaxEntropyThreshold(KyBW8HistogramVector* histogram, float& averageBelow,
                                    float& averageAbove) noexcept;

/// A threshold surface for uneven light: a smooth image of levels, one threshold a pixel. Nodes lie
/// on a grid of ceil(width / tileWidth) by ceil(height / tileHeight) steps; each holds the isodata
/// threshold of the tile around it, cut off at the border; the surface between them is interpolated
/// bilinearly (ImgScaleRotate, 8 bits). A tile height of 0 stands for the tile width. The mode does
/// not change the surface.
///
/// The destination is given the source's size if it has another; a source of no pixels leaves all
/// as it is. Errors: 1400; 1014 for a tile width below 1, 1015 for a tile height below 1; 1303.
/// Trace "ImgAutoAdaptiveThreshold".
KY_API KY_ERRORS ImgAutoAdaptiveThreshold(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                          IMG_THRESHOLD_MODES mode, int tileWidth,
                                          int tileHeight = 0) noexcept;
