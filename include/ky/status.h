// The error status of the calling thread, and the trace of the routines that failed.
#pragma once

#include "ky/export.h"

/// What a call can answer. 0 is success.
enum KY_ERRORS : int {
  KY_OK = 0,                                 ///< success
  KY_ERROR_PATH_STOPPED = 106,               ///< the border of the ROI stopped a path
  KY_ERROR_UNSUPPORTED_OPERATION = 1003,     ///< this overload has no such operation or mode
  KY_ERROR_BAD_INTERVAL = 1007,              ///< a lower limit exceeds its upper limit
  KY_ERROR_BAD_MODE = 1009,                  ///< no such contour mode
  KY_ERROR_PARAMETER_OUT_OF_RANGE = 1010,    ///< an index lies beyond the vector
  KY_ERROR_PARAMETER_1_OUT_OF_RANGE = 1011,  ///< the first numeric parameter is out of range
  KY_ERROR_PARAMETER_2_OUT_OF_RANGE = 1012,  ///< the second numeric parameter is out of range
  KY_ERROR_PARAMETER_3_OUT_OF_RANGE = 1013,  ///< the third numeric parameter is out of range
  KY_ERROR_PARAMETER_4_OUT_OF_RANGE = 1014,  ///< the fourth numeric parameter is out of range
  KY_ERROR_PARAMETER_5_OUT_OF_RANGE = 1015,  ///< the fifth numeric parameter is out of range
  KY_ERROR_PARAMETER_6_OUT_OF_RANGE = 1016,  ///< the sixth numeric parameter is out of range
  KY_ERROR_PYRAMID_BUILD = 1024,             ///< the source of a pyramid cannot be used
  KY_ERROR_SINGULAR_SYSTEM = 1050,           ///< the determinant of a system of equations is 0
  KY_ERROR_NO_PIXELS = 1051,                 ///< a statistic of no pixels
  KY_ERROR_FILE_OPEN = 1102,                 ///< the file cannot be opened
  KY_ERROR_FILE_READ = 1103,                 ///< the file ends too early or cannot be read
  KY_ERROR_FILE_WRITE = 1104,                ///< the file cannot be written
  KY_ERROR_FILE_FORMAT = 1105,               ///< the file is of another kind
  KY_ERROR_FILE_CLOSE = 1106,                ///< the file cannot be closed
  KY_ERROR_NO_RESULT = 1301,                 ///< a scratch table cannot be allocated
  KY_ERROR_NOT_ENOUGH_MEMORY = 1303,         ///< an allocation failed
  KY_ERROR_NO_IMAGE = 1400,                  ///< an ROI has no pixels
  KY_ERROR_SIZE_MISMATCH = 1403,             ///< two ROIs differ in size
  KY_ERROR_WARP_MAP = 1405,                  ///< a warp table points outside the source
  KY_ERROR_TRANSFORM_LIMIT = 1411,           ///< the affine transform cannot be inverted
  KY_ERROR_COLOR_PLANES = 1413,              ///< a composite operation cannot work in place
  KY_ERROR_PYRAMID_HALVE = 1414,             ///< a pyramid cannot be halved
  KY_ERROR_BAD_IMAGE_TYPE = 1419,            ///< no such image type
  KY_ERROR_CONTOUR_START = 1500,             ///< the contour starts at no object pixel
  KY_ERROR_CONTOUR_NO_DIRECTION = 1501,      ///< the contour has no start direction
  KY_ERROR_CONTOUR_ISOLATED = 1502,          ///< the contour starts at an isolated pixel
  KY_ERROR_CONTOUR_TOO_LONG = 1504,          ///< the contour has too many steps
  KY_ERROR_BAD_VECTOR_TYPE = 1601,           ///< a vector is missing or of another type
  KY_ERROR_VECTOR_1602 = 1602,               ///< a vector is of another type or use, or too short
  KY_ERROR_VECTOR_1603 = 1603,               ///< a vector is not a histogram
  KY_ERROR_VECTOR_1604 = 1604,               ///< a vector is empty
  KY_ERROR_VECTOR_DATA_TYPE = 1605,          ///< a vector has a data type without a case
  KY_ERROR_VECTOR_1606 = 1606,               ///< a vector has a data type without a case
  KY_ERROR_VECTOR_1607 = 1607,               ///< a vector cannot be used here
  KY_ERROR_VECTOR_1608 = 1608,               ///< more results than the vector can hold
  KY_ERROR_VECTOR_1609 = 1609,               ///< a vector cannot be used here
  KY_ERROR_VECTOR_1611 = 1611,               ///< a vector cannot be used here
  KY_ERROR_NOT_256_ENTRIES = 1613,           ///< a table or histogram has not exactly 256 entries
  KY_ERROR_KERNEL_SIZE = 1700,               ///< a kernel has no coefficients
  KY_ERROR_KERNEL_1701 = 1701,               ///< a kernel cannot be used here
  KY_ERROR_KERNEL_1702 = 1702,               ///< a kernel has rectifier 0
  KY_ERROR_KERNEL_1703 = 1703,               ///< a kernel is not of the size needed
  KY_ERROR_KERNEL_DATA = 1704,               ///< a coefficient of a kernel without any
  KY_ERROR_WARP_2200 = 2200,                 ///< a warp table is smaller than the destination
  KY_ERROR_NOT_POWER_OF_TWO = 2600,          ///< a transform of a size that is no power of two
  KY_ERROR_INTERNAL = 32767,                 ///< a worker without a case for the operation
};

/// The status of the calling thread. Every processing function clears it on entry and returns it;
/// it stays readable here until the thread's next call. Threads never see each other's status.
KY_API KY_ERRORS KyGetError() noexcept;

/// Clears the status and the trace.
KY_API void KyOk() noexcept;

/// Sets the status; the trace stays as it is.
KY_API void KySetError(KY_ERRORS error) noexcept;

/// Appends `name` to the trace if the status is not 0, and returns the status. The pointer is kept,
/// not the text, so `name` must outlive the trace. Names after the sixteenth are dropped.
KY_API KY_ERRORS KyTraceError(const char* name) noexcept;

/// The number of names in the trace: the routines that the last failure passed through.
KY_API int KyGetTraceCount() noexcept;

/// The name at `index` of the trace, the innermost routine first; null outside 0..count - 1.
KY_API const char* KyGetTrace(int index) noexcept;

/// The name of a status and what it means, on one line: "KY_ERROR_NO_IMAGE: an ROI has no pixels".
/// Never null.
KY_API const char* KyGetErrorText(KY_ERRORS error) noexcept;
