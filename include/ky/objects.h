/// @file
/// @ingroup objects
/// Connected objects: how they are found, selected, drawn and measured.
#pragma once

#include <climits>
#include <cstdint>

#include "ky/contour.h"
#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/typed_vector.h"

/// A connected object. Positions count from the origin of the ROI that it was found in. Its shape
/// is judged on the whole plane, where everything that is not one of its own pixels is ground:
/// positions outside the ROI, and other objects, too.
struct KY_API KyObject {
  std::uint64_t sumLevels;  ///< the sum of its levels, like the sums that follow modulo 2^64
  std::uint64_t sumX;       ///< the sum of x over its pixels
  std::uint64_t sumY;       ///< the sum of y
  std::uint64_t sumXX;      ///< the sum of x^2
  std::uint64_t sumXY;      ///< the sum of x y
  std::uint64_t sumYY;      ///< the sum of y^2
  /// Its upright bounding box.
  std::int32_t x, y, width, height;
  std::int32_t
      firstX;  ///< the column of its first pixel in reading order, where ImgContour can start
  std::int32_t firstY;  ///< the row of that pixel
  KyBW32 label;         ///< 1, 2, ... in the order of the first pixels
  KyBW32 area;          ///< the number of its pixels, modulo 2^32
  /// The number of pairs of neighbouring positions of which one belongs to it: neighbours along
  /// rows and columns, and neighbours along both diagonals. A single pixel has 4 and 4.
  KyBW32 straight, diagonal;
  /// The number of its holes: the connected sets of positions that do not belong to it, less one.
  /// The sets are connected by the other connexity.
  std::int32_t holes;
  KyBW8 lowest;    ///< the lowest of its levels
  KyBW8 highest;   ///< the highest one
  KyBW8 touches;   ///< the sides of the ROI that it touches: 1 left, 2 top, 4 right, 8 bottom
  KyBW8 reserved;  ///< 0
  constexpr bool operator==(const KyObject&) const noexcept = default;
};
static_assert(sizeof(KyObject) == 96);

template <>
struct KyFileType<KyObject> : KyFileTypeOf<11> {};

/// A vector of objects.
using KyObjectsVector = KyVectorTemplate<KyObject>;

extern template struct KyPlaceHolder<KyObject>;
extern template class KyVectorTemplate<KyObject>;

/// Finds the connected objects of a picture and measures them. The pixels of objects are those with
/// low <= level <= high, or the bits that are set. The vector is replaced by one element for each
/// object, in the order of their first pixels from top to bottom and from left to right.
///
/// With `labels`, each pixel there becomes the label of its object, and 0 where there is none. With
/// `levels`, the levels of the objects are those of that picture, for example the grey levels of
/// the picture that a mask was made from; otherwise they are those of the source, where each set
/// bit has level 1. Source and levels may be the same pixels. Sources without columns or rows have
/// no objects.
///
/// Runs of object pixels are joined row by row, and all measures follow from the ends of the runs
/// and from the levels within them. The cost is that of one comparison a pixel and a few additions
/// a run; memory goes with the number of objects and, with `labels`, 12 bytes a run. (Rosenfeld and
/// Pfaltz, 1966, for runs; Tarjan, 1975, for sets that are united.)
///
/// Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400) for the source,
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector, `KY_ERROR_NO_IMAGE` (1400) and
/// `KY_ERROR_SIZE_MISMATCH` (1403) for labels that are given, and then the same for levels,
/// `KY_ERROR_COLOR_PLANES` (1413) when the labels share memory with the source, the levels or the
/// vector, `KY_ERROR_BAD_INTERVAL` (1007) when low > high, `KY_ERROR_UNSUPPORTED_OPERATION` (1003)
/// for another connexity, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). After any of them, the vector and
/// the labels are as they were. Traces: "ImgFindObjects (BW8)", "ImgFindObjects (BW1)".
KY_API KY_ERRORS ImgFindObjects(const KyROI<KyBW8>* source, KyBW8 low, KyBW8 high,
                                CONNEXITY connexity, KyObjectsVector* objects,
                                KyROI<KyBW32>* labels = nullptr,
                                const KyROI<KyBW8>* levels = nullptr) noexcept;
KY_API KY_ERRORS ImgFindObjects(const KyROI<KyBW1>* source, CONNEXITY connexity,
                                KyObjectsVector* objects, KyROI<KyBW32>* labels = nullptr,
                                const KyROI<KyBW8>* levels = nullptr) noexcept;

/// Fills the holes of a mask: what of its ground is not connected with the ground at the border of
/// the ROI becomes `level`. The ground is all pixels of level 0; other pixels belong to objects and
/// keep their levels, so make a mask of a grey picture first (ImgThreshold).
///
///     destination(p) = level      if source(p) = 0 and no path of ground joins p and the border,
///                      source(p)  otherwise
///
/// Paths follow the other connexity than that of the objects: with `KY_CONNEXITY_8` they go along
/// rows and columns only. In place: a null destination, or one on the source's pixels, replaces the
/// source; one that overlaps it otherwise is written as if the source were a copy. The cost is that
/// of one comparison a pixel and a few additions a run of ground.
///
/// Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400), `KY_ERROR_SIZE_MISMATCH` (1403),
/// `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for another connexity, `KY_ERROR_NOT_ENOUGH_MEMORY`
/// (1303). Nothing has been written then. Trace: "ImgFillHoles".
KY_API KY_ERRORS ImgFillHoles(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                              CONNEXITY connexity = KY_CONNEXITY_8, KyBW8 level = 255) noexcept;

/// What objects must be to stay: each measure lies within its limits, both included.
struct KyObjectLimits {
  KyBW32 minArea = 1;           ///< the least area
  KyBW32 maxArea = 0xFFFFFFFF;  ///< the largest area
  int minWidth = 1;             ///< the least width of the bounding box
  int maxWidth = INT_MAX;       ///< the largest one
  int minHeight = 1;            ///< the least height of the bounding box
  int maxHeight = INT_MAX;      ///< the largest one
  int minHoles = 0;             ///< the least number of holes
  int maxHoles = INT_MAX;       ///< the largest one
  bool touching = true;         ///< whether objects that touch a side of the ROI stay
};

/// Removes the objects that are not within the limits from the vector. The others keep their order
/// and their labels. Errors, checked in this order: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null
/// vector, `KY_ERROR_BAD_INTERVAL` (1007) for a minimum above its maximum. Trace:
/// "ImgSelectObjects".
KY_API KY_ERRORS ImgSelectObjects(KyObjectsVector* objects, const KyObjectLimits& limits) noexcept;

/// Sets the destination to `level` where `labels` holds the label of one of the objects, and leaves
/// its other pixels as they are. Labels that the picture does not have draw nothing; 0 is the
/// ground and never drawn. A destination that shares memory with the labels gives the result of a
/// copy of them. Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400) for the labels,
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector, `KY_ERROR_NO_IMAGE` (1400) for the
/// destination, `KY_ERROR_SIZE_MISMATCH` (1403), `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace:
/// "ImgDrawObjects".
KY_API KY_ERRORS ImgDrawObjects(const KyROI<KyBW32>* labels, const KyObjectsVector* objects,
                                KyBW8 level, KyROI<KyBW8>* destination) noexcept;

/// What ImgGetObjectShape computes from an object. With area A, u20 = sumXX / A - x^2,
/// u11 = sumXY / A - x y, u02 = sumYY / A - y^2:
struct KyObjectShape {
  double x;          ///< the centre's column, sumX / A
  double y;          ///< the centre's row, sumY / A
  double meanLevel;  ///< sumLevels / A
  /// The **variance** of its pixels' positions along its longer axis, in pixels^2: the larger
  /// eigenvalue of the matrix (u20 u11; u11 u02). The length of the axis, that of an ellipse with
  /// these variances, is 4 sqrt(major) pixels; that of a rectangle is sqrt(12 major).
  double major;
  double minor;  ///< the variance along the shorter axis, the smaller one; 0 for a straight line
  double angle;  ///< of the axis of the larger one, atan2(2 u11, u20 - u02) / 2, in the unit
                 ///< of KySetAngleUnit, above -90 to 90 degrees; y points down
  double elongation;   ///< sqrt(major / minor); infinite for a line, 1 for a single pixel
  double compactness;  ///< A / (width height)
  double perimeter;    ///< pi / 8 (straight + diagonal / sqrt(2))
  double circularity;  ///< 4 pi A / perimeter^2; about 1 for a disk
};

/// Computes the shape of an object. The perimeter is that of Crofton's formula over four directions
/// (Serra, 1982), which is right on average over all directions of an edge. The second moments come
/// from integers, exact unless products exceed 128 bits, so that thin shapes lose no precision.
/// Errors, checked in this order: `KY_ERROR_NO_IMAGE` (1400) for a null object,
/// `KY_ERROR_NO_PIXELS` (1051) for an area of 0. The shape is then as it was. Trace:
/// "ImgGetObjectShape".
KY_API KY_ERRORS ImgGetObjectShape(const KyObject* object, KyObjectShape& shape) noexcept;
