/// @file
/// @ingroup temporal
/// Averages over the frames of a sequence, against noise.
#pragma once

#include "ky/export.h"
#include "ky/image.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/typed_vector.h"

/// Computes the mean of the last frames of a sequence, **up to 257 of them**, at the cost of one
/// addition and one subtraction a pixel. Totals have 16 bits and wrap for longer periods;
/// ImgRecursiveAverage has no such limit. With f(t) the frames since the last reset and f(t) = f(0)
/// for t < 0,
///
///     destination = (f(t) + f(t - 1) + ... + f(t - period + 1)) / period,    rounded down.
///
/// Frames are passed in one of two ways. Where the object keeps the sources, every frame is put
/// into the image that GetSrcImage returns, and stays there:
///
///     KyMovingAverage average(4, 640, 480, 1);
///     camera.Grab(average.GetSrcImage());
///     average.Average(&smooth);
///
/// Otherwise every frame is passed to Average, and copied:
///
///     KyMovingAverage average(4, 640, 480, 0);
///     average.Average(&frame, &smooth);
///
/// A change of kept frames, or of their images, changes later averages. All members except GetSize
/// clear the status first. An object serves one thread at a time.
class KY_API KyMovingAverage {
 public:
  /// Makes an object without frames, with which every average fails.
  KyMovingAverage() noexcept;
  /// Makes an object and prepares it by SetSize, for **at most 257 frames**: totals of longer
  /// periods wrap, and no error reports it.
  KyMovingAverage(unsigned int period, int width, int height, int keepSource) noexcept;
  KyMovingAverage(const KyMovingAverage&) = delete;
  KyMovingAverage& operator=(const KyMovingAverage&) = delete;
  virtual ~KyMovingAverage();

  /// Prepares for averages of `period` frames, at most 257 for right ones, of `width` x `height`
  /// pixels, and forgets the frames seen so far. `keepSource` other than 0 keeps the sources (see
  /// above). Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) for a negative size or when memory runs
  /// out; the object is then as its default constructor makes it. Trace:
  /// "KyMovingAverage::SetSize".
  KY_ERRORS SetSize(unsigned int period, int width, int height, int keepSource) noexcept;
  /// Writes what SetSize was given, or zeros before that.
  void GetSize(unsigned int& period, int& width, int& height, int& keepSource) const noexcept;

  /// Starts a new sequence: the next frame stands for all earlier ones.
  void Reset() noexcept;

  /// Returns the image that the next frame must be put into; its size must not be changed. Returns
  /// null when the period is 0. Error: `KY_ERROR_UNSUPPORTED_OPERATION` (1003), and null, when the
  /// sources are not kept. Trace: "KyMovingAverage::GetSrcImage".
  KyImage<KyBW8>* GetSrcImage() noexcept;

  /// Adds a frame, the image of GetSrcImage or the source given, and writes the new average. The
  /// source may be the destination. Errors, checked in this order before anything changes:
  /// `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for the form with one argument when the sources are
  /// not kept, and for the form with two when they are; when the period is 0,
  /// `KY_ERROR_UNSUPPORTED_OPERATION` (1003) (one argument) or `KY_ERROR_SIZE_MISMATCH` (1403)
  /// (two); `KY_ERROR_NO_IMAGE` (1400); `KY_ERROR_SIZE_MISMATCH` (1403) for another size than the
  /// object's; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "KyMovingAverage::Average".
  KY_ERRORS Average(KyROI<KyBW8>* destination) noexcept;
  KY_ERRORS Average(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;

 private:
  KY_ERRORS Configure(unsigned int period, int width, int height, int keepSource) noexcept;
  KY_ERRORS Allocate(int width, int height) noexcept;
  void Release() noexcept;
  int Current() const noexcept;
  int Oldest() const noexcept;
  KY_ERRORS Take(const KyROI<KyBW8>* frame, KyROI<KyBW8>* destination) noexcept;

  unsigned int period_ = 0;
  int shift_ = 0;       // log2 of a period that is a power of two, else 0
  int index_ = 0;       // the ring's next slot; less count_ until every slot has been filled
  int count_ = 0;       // slots of the ring
  int keepSource_ = 0;  // 0: the ring holds copies
  KyImage<KyBW8>** ring_ = nullptr;
  KyImage<KyBW16> sum_;  // of the last period - 1 frames
};

/// Fills the table of a recursive average, which says by how much the state changes towards a
/// frame. Its 8191 elements hold the signed change for differences d of -4095 to 4095 sixteenths of
/// a grey level, d = 0 being at index 4095: table[4095 + d] = trunc(c(d)), table[4095 - d] =
/// -trunc(c(d)), for d >= 0.
///
/// - With `noise` 0 the filter is linear: c(d) = 1/2 + d * k, where k = 2 / (reduction^2 + 1),
///   added up in single precision. It divides the standard deviation of noise by `reduction`, which
///   should exceed 1.
/// - With any other `noise` it gives way to motion: c(d) = d + g * tanh(d / B), where B = 16 *
///   noise and g = B * (1 - reduction^2) / (1 + reduction^2). Differences well below `noise` grey
///   levels are damped as by the linear filter; those above it pass almost unchanged. tanh is
///   computed as (t - 1) / (t + 1) for t = exp(2 * d / B), by repeated multiplication.
///
/// Values that are not a number give 0. Errors: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null
/// vector; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303), traced as "KyVector::SetMaxElements" and
/// "KyVector::SetNumElements" first. Trace: "ImgSetRecursiveAverageLUT".
KY_API KY_ERRORS ImgSetRecursiveAverageLUT(KyBW16Vector* table, float reduction,
                                           float noise = 0) noexcept;

/// Takes one step of a first-order recursive filter. The state is the filtered image in signed
/// sixteenths of a grey level; the caller initialises it, with 16 times the first frame for
/// example.
///
///     d = 16 * source - state, limited to -4095..4095
///     state = state + table[4095 + d]                  (16 bits, wrapping)
///     destination = state / 16, rounded down, limited to 0..255
///
/// The source may be the destination. A source that shares memory with the state, or with the
/// destination otherwise, is read first; a destination that shares memory with the state is written
/// last, over it. Errors, checked in this order before anything changes: `KY_ERROR_NO_IMAGE`
/// (1400); `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes; `KY_ERROR_NOT_256_ENTRIES` (1613)
/// for a table that is null or does not have 8191 elements; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).
/// Trace: "ImgRecursiveAverage".
KY_API KY_ERRORS ImgRecursiveAverage(const KyROI<KyBW8>* source, KyROI<KyBW16>* state,
                                     KyROI<KyBW8>* destination, const KyBW16Vector* table) noexcept;
