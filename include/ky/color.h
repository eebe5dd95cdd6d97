// Single components of colour images, and colour lookups.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Converts colours one by one. Derive from it to give functions that take a lookup a conversion of
/// your own. The library's functions are noexcept: an exception that leaves an override ends the
/// program.
class KY_API KyColorLookup {
 public:
  KyColorLookup() noexcept = default;
  KyColorLookup(const KyColorLookup&) = default;
  KyColorLookup& operator=(const KyColorLookup&) = default;
  virtual ~KyColorLookup();

  /// Gives the conversion of `input`. The base class leaves colours as they are.
  virtual void Transform(KyC24 input, KyC24& output) const;
};

/// A lookup by a 3 x 3 matrix: output component i is row i times the input components, rounded to
/// the nearest level (halves up) and clamped to 0..255; products and sums in single precision, left
/// to right.
class KY_API KyColorMatrix : public KyColorLookup {
 public:
  /// `rows` in storage order: rows[3 * i + j] weighs input component j in output component i. A
  /// coefficient that is not a number counts as 0.
  explicit KyColorMatrix(const float (&rows)[9]) noexcept;
  /// All three components become 0.299 c0 + 0.587 c1 + 0.114 c2, the luma of Rec. ITU-R BT.601 for
  /// red, green, blue.
  static KyColorMatrix Luma() noexcept;

  void Transform(KyC24 input, KyC24& output) const override;

 private:
  float rows_[9];
};

/// Writes component `component` (0, 1 or 2) of every source pixel to the destination:
/// destination(x, y) = source(x, y).c[component]; with a lookup, of the transformed source pixel.
/// Both have the same size; where they share memory the source is read before the destination is
/// written. Errors, in this order, the destination untouched: 1400, 1403; 1011 for another
/// component; 1303. Trace "ClrGetComponent".
KY_API KY_ERRORS ClrGetComponent(const KyROI<KyC24>* source, KyROI<KyBW8>* destination,
                                 int component, const KyColorLookup* lookup = nullptr) noexcept;

/// Writes the source's levels into component `component` (0, 1 or 2) of every destination pixel;
/// the other two keep their values. Errors as above. Trace "ClrSetComponent".
KY_API KY_ERRORS ClrSetComponent(const KyROI<KyBW8>* source, KyROI<KyC24>* destination,
                                 int component) noexcept;
