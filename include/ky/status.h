/// @file
/// @ingroup status
/// The error status of the calling thread, and the trace of the routines that failed.
#pragma once

#include "ky/export.h"

/// The codes that calls return. KY_OK is 0. The comment of each code names the calls that raise it;
/// the descriptions of the calls say when.
enum KY_ERRORS : int {
  KY_OK = 0,  ///< success
  /// The border of the ROI stopped a path. ImgContour: the contour met the border in a mode that
  /// stops there. ImgImageToPath, ImgPathToImage: at least one element lay outside and was skipped.
  KY_ERROR_PATH_STOPPED = 106,
  /// The call has no such operation, mode, order, format, direction, rotation, connexity, polarity,
  /// edge or unit. KyMovingAverage: frames are passed in the wrong way.
  KY_ERROR_UNSUPPORTED_OPERATION = 1003,
  /// A lower limit exceeds its upper limit: thresholds of histograms and profiles, ImgMatchFrames.
  /// Geometric transforms: an interpolation other than 0, 4 and 8. ImgVectToLineSeg: the first or
  /// the last group of the vector lies out of bounds.
  KY_ERROR_BAD_INTERVAL = 1007,
  /// ImgContour has no such mode.
  KY_ERROR_BAD_MODE = 1009,
  /// ImgVect1c2: the interval of elements is empty or reaches beyond a vector.
  KY_ERROR_PARAMETER_OUT_OF_RANGE = 1010,
  /// The first numeric parameter is out of range: an x, an index, a component, a half width, a
  /// number of levels, a shift, a pitch. KyImage::Attach: the address.
  KY_ERROR_PARAMETER_1_OUT_OF_RANGE = 1011,
  /// The second numeric parameter is out of range: a y, a width, a half height, a scale, a level, a
  /// number of groups or iterations, the row of ImgMatchFrames, or the first end of a segment.
  KY_ERROR_PARAMETER_2_OUT_OF_RANGE = 1012,
  /// The third numeric parameter is out of range: a height, a group length, a level, a rank, a
  /// sigma, the most significant bit of ImgHistogram, an end of a segment. ImgGradientScalar: the
  /// lookup does not have 512 x 512 pixels.
  KY_ERROR_PARAMETER_3_OUT_OF_RANGE = 1013,
  /// The fourth numeric parameter is out of range: a pitch, a data type, a sigma, the bits of
  /// ImgHistogram, the tile width of ImgAutoAdaptiveThreshold, an end of a segment.
  KY_ERROR_PARAMETER_4_OUT_OF_RANGE = 1014,
  /// The fifth numeric parameter is out of range: a fraction or the lower level of
  /// ImgHistogramThreshold, the tile height of ImgAutoAdaptiveThreshold, an end of a segment.
  KY_ERROR_PARAMETER_5_OUT_OF_RANGE = 1015,
  /// The sixth numeric parameter, or of measuring also a later one, is out of range: the upper
  /// level of ImgHistogramThreshold, the last end of a segment.
  KY_ERROR_PARAMETER_6_OUT_OF_RANGE = 1016,
  /// KyPyramid::Build: the source cannot be used, or is too small for the levels.
  KY_ERROR_PYRAMID_BUILD = 1024,
  /// A system without a solution. ImgRegister, KyFitCircle: points lie on one line. KyFitLine: all
  /// are equal. KyIntersect: parallel lines. KyEdgeWidth: no step. ImgLinearRegression: one level.
  KY_ERROR_SINGULAR_SYSTEM = 1050,
  /// A statistic of an ROI of no columns or rows, also as part of ImgNormalize; a centre, inertia
  /// or level statistics of no pixels; a fit of too few points, KyEdgeWidth of too few samples.
  KY_ERROR_NO_PIXELS = 1051,
  /// Load, Save, Serialize, pictures: the file cannot be opened, or its name or stream is null.
  KY_ERROR_FILE_OPEN = 1102,
  /// Load, Serialize, pictures: the file ends too early, is damaged or cannot be read.
  KY_ERROR_FILE_READ = 1103,
  /// Save, Serialize, pictures: the file cannot be written.
  KY_ERROR_FILE_WRITE = 1104,
  /// Load, pictures: the file is of another kind; a name to save to has another ending.
  KY_ERROR_FILE_FORMAT = 1105,
  /// Load, Save, pictures: the file cannot be closed.
  KY_ERROR_FILE_CLOSE = 1106,
  /// ImgWarp with a packed table: there is no memory for a scratch table.
  KY_ERROR_NO_RESULT = 1301,
  /// An allocation failed: memory ran out, or a size is negative. Any call that allocates, filters
  /// and copies of overlapping sources included. ImgDraw, KyDraw: Cairo fails while it draws.
  KY_ERROR_NOT_ENOUGH_MEMORY = 1303,
  /// An ROI is null or has no pixels, because it has no parent or does not lie inside it. Any call
  /// that takes an ROI or image. ImgDraw, KyDraw: the context is null or in an error.
  KY_ERROR_NO_IMAGE = 1400,
  /// Two ROIs differ in size. Any call that takes several of them.
  KY_ERROR_SIZE_MISMATCH = 1403,
  /// ImgWarp: an entry of a packed table lies outside the source. Pixels before it have been
  /// written.
  KY_ERROR_WARP_MAP = 1405,
  /// The affine transform cannot be inverted. ImgRegister with scaling: pivots coincide.
  KY_ERROR_TRANSFORM_LIMIT = 1411,
  /// ImgWhiteTopHatBox cannot work in place. ImgFindObjects: the labels share memory with a source
  /// or the vector.
  KY_ERROR_COLOR_PLANES = 1413,
  /// KyPyramid::Halve: there is no level, or it cannot be halved.
  KY_ERROR_PYRAMID_HALVE = 1414,
  /// KyPyramid::SetNumLevels: no such image type. KyMatImage: the matrix has another type.
  KY_ERROR_BAD_IMAGE_TYPE = 1419,
  /// ImgContour: the start is no pixel of an object in the ROI.
  KY_ERROR_CONTOUR_START = 1500,
  /// ImgContour: there is no first step, and the last neighbour visited belongs to the object, as
  /// it does inside an object.
  KY_ERROR_CONTOUR_NO_DIRECTION = 1501,
  /// ImgContour: there is no first step, and the last neighbour visited is background, as it is
  /// around an isolated pixel.
  KY_ERROR_CONTOUR_ISOLATED = 1502,
  /// ImgContour: the contour has more steps than a generic vector may hold.
  KY_ERROR_CONTOUR_TOO_LONG = 1504,
  /// A vector is null, or has no storage for what is wanted. Any call that takes a vector.
  KY_ERROR_BAD_VECTOR_TYPE = 1601,
  /// A generic vector has another type or use, or fewer groups than needed.
  KY_ERROR_VECTOR_1602 = 1602,
  /// ImgSetupEqualize: the vector is not a histogram.
  KY_ERROR_VECTOR_1603 = 1603,
  /// Functions of generic vectors: the vector has no groups.
  KY_ERROR_VECTOR_1604 = 1604,
  /// Functions of generic vectors: not for elements of this data size.
  KY_ERROR_VECTOR_DATA_TYPE = 1605,
  /// Functions of generic vectors: not for elements of this data type.
  KY_ERROR_VECTOR_1606 = 1606,
  /// A vector cannot be used here. No call raises it yet.
  KY_ERROR_VECTOR_1607 = 1607,
  /// ImgGetVectTransition: there are more transitions than the vector can hold.
  KY_ERROR_VECTOR_1608 = 1608,
  /// A vector cannot be used here. No call raises it yet.
  KY_ERROR_VECTOR_1609 = 1609,
  /// ImgComplexDiscEnergy: a vector is null, not of single 32-bit floats, or without room.
  KY_ERROR_VECTOR_1611 = 1611,
  /// A table, histogram or profile does not have the number of elements needed, which for most
  /// calls is exactly 256; ImgRecursiveAverage needs 8191, segments one for each point, and
  /// ImgConvolUniform 2 halfWidth + 1 or more.
  KY_ERROR_NOT_256_ENTRIES = 1613,
  /// ImgConvolKernel, ImgConvolSymmetricKernel, ImgConvolVect, ImgThin, ImgThick and morphology by
  /// a shape: the kernel is null or has no coefficients.
  KY_ERROR_KERNEL_SIZE = 1700,
  /// Morphology by a shape: no coefficient of the kernel is other than 0. ImgConvolVect: the kernel
  /// has several rows and columns.
  KY_ERROR_KERNEL_1701 = 1701,
  /// ImgConvolSymmetricKernel: the kernel has a rectifier of 0 or below.
  KY_ERROR_KERNEL_1702 = 1702,
  /// ImgConvolSymmetricKernel: the kernel is not of 3x3, 5x5 or 7x7 coefficients; ImgThin,
  /// ImgThick: it is not of 3x3.
  KY_ERROR_KERNEL_1703 = 1703,
  /// KyKernel::GetKernelData, KyKernel::SetKernelData: the kernel has no coefficients.
  KY_ERROR_KERNEL_DATA = 1704,
  /// ImgWarp: a packed table is smaller than the destination.
  KY_ERROR_WARP_2200 = 2200,
  /// ImgFastDFT: the width or the height is no power of two.
  KY_ERROR_NOT_POWER_OF_TWO = 2600,
  /// ImgOper accepts the operation, but does nothing for it with these operands.
  KY_ERROR_INTERNAL = 32767,
};

/// The descriptions of functions give the errors in the order in which they are checked where that
/// matters, and as "Trace" the name that a failing call appends to the trace. Of several traces
/// each belongs to one overload, in their order, unless they are joined by "then".

/// Returns the status of the calling thread. Every processing function clears it on entry and
/// returns it; it can be read here until the thread's next call. Threads never see each other's
/// status.
KY_API KY_ERRORS KyGetError() noexcept;

/// Clears the status and the trace.
KY_API void KyOk() noexcept;

/// Sets the status; the trace stays as it is.
KY_API void KySetError(KY_ERRORS error) noexcept;

/// Appends `name` to the trace if the status is not 0, and returns the status. The pointer is kept,
/// not the text, so `name` must outlive the trace. Names after the sixteenth are dropped, and so is
/// null.
KY_API KY_ERRORS KyTraceError(const char* name) noexcept;

/// Returns the number of names in the trace: the routines that the last failure passed through.
KY_API int KyGetTraceCount() noexcept;

/// Returns the name at `index` of the trace, which starts with the innermost routine; null outside
/// 0..count - 1.
KY_API const char* KyGetTrace(int index) noexcept;

/// Names the parameter that the status is about, or says in several words what is wrong, for
/// KyGetErrorMessage. Returns the status. The pointer is kept, not the text, so `name` must outlive
/// the status.
KY_API KY_ERRORS KyNameParameter(const char* name) noexcept;

/// Returns the status of the calling thread as one line: the routine that failed, what the code
/// means, and the code's name; where the code is about a parameter, the parameter's name; then the
/// routines, if any, through which the failure passed:
///
///     ImgConvolGaussian: sigmaX is out of range (KY_ERROR_PARAMETER_3_OUT_OF_RANGE)
///     ImgConvolSobelX: source and destination differ in size (KY_ERROR_SIZE_MISMATCH)
///
/// The text is the thread's own, and stays until the thread calls this function again; never null.
/// Lines are cut after 255 characters; without memory for the line, the text is that of
/// KyGetErrorText.
KY_API const char* KyGetErrorMessage() noexcept;

/// Returns the name of a status and its meaning on one line, such as "KY_ERROR_NO_IMAGE: an ROI is
/// missing or has no pixels"; never null.
KY_API const char* KyGetErrorText(KY_ERRORS error) noexcept;
