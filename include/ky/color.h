/// @file
/// @ingroup colors
/// Single components of colour images, and colour lookups.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Converts colours one by one. Derive from it to pass a conversion of your own to the functions
/// that take a lookup. These functions are noexcept: an exception that leaves an override ends the
/// program.
class KY_API KyColorLookup {
 public:
  KyColorLookup() noexcept = default;
  KyColorLookup(const KyColorLookup&) = default;
  KyColorLookup& operator=(const KyColorLookup&) = default;
  virtual ~KyColorLookup();

  /// Writes the converted `input` to `output`. The base class copies it.
  virtual void Transform(KyC24 input, KyC24& output) const;
};

/// A lookup by a 3 x 3 matrix: output component i is row i times the input components, rounded to
/// the nearest level (halves up) and limited to 0..255. Products and sums are computed in single
/// precision, from left to right.
class KY_API KyColorMatrix : public KyColorLookup {
 public:
  /// Takes the matrix in storage order: rows[3 * i + j] weighs input component j in output
  /// component i. A coefficient that is not a number counts as 0.
  explicit KyColorMatrix(const float (&rows)[9]) noexcept;
  /// Returns the lookup that sets all three components to 0.299 c0 + 0.587 c1 + 0.114 c2, the luma
  /// of Rec. ITU-R BT.601 for red, green, blue. ClrGetComponent with it turns colours to grey.
  static KyColorMatrix Luma() noexcept;

  void Transform(KyC24 input, KyC24& output) const override;

 private:
  float rows_[9];
};

/// Writes component `component` (0, 1 or 2) of every source pixel to the destination:
/// destination(x, y) = source(x, y).c[component]. With a lookup, the component is that of the
/// transformed source pixel. Both images have the same size; where they share memory the source is
/// read before the destination is written. Errors, checked in this order before the destination is
/// written: `KY_ERROR_NO_IMAGE` (1400), `KY_ERROR_SIZE_MISMATCH` (1403);
/// `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for any other component; `KY_ERROR_NOT_ENOUGH_MEMORY`
/// (1303). Trace: "ClrGetComponent".
KY_API KY_ERRORS ClrGetComponent(const KyROI<KyC24>* source, KyROI<KyBW8>* destination,
                                 int component, const KyColorLookup* lookup = nullptr) noexcept;

/// Writes the source's levels into component `component` (0, 1 or 2) of every destination pixel;
/// the other two keep their values. The errors are those of ClrGetComponent. Trace:
/// "ClrSetComponent".
KY_API KY_ERRORS ClrSetComponent(const KyROI<KyBW8>* source, KyROI<KyC24>* destination,
                                 int component) noexcept;
