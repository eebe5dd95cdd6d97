#include "ky/status.h"

namespace {

constexpr int kTraceLimit = 16;

struct ThreadStatus {
  KY_ERRORS error;
  int traceCount;
  const char* trace[kTraceLimit];
};

// Initial-exec storage is there from the thread's start: reading the status never allocates.
[[gnu::tls_model("initial-exec")]] thread_local constinit ThreadStatus status{};

struct ErrorText {
  KY_ERRORS error;
  const char* text;
};

constexpr ErrorText kTexts[] = {
    {KY_OK, "KY_OK: success"},
    {KY_ERROR_PATH_STOPPED, "KY_ERROR_PATH_STOPPED: the border of the ROI stopped a path"},
    {KY_ERROR_UNSUPPORTED_OPERATION,
     "KY_ERROR_UNSUPPORTED_OPERATION: this overload has no such operation or mode"},
    {KY_ERROR_BAD_INTERVAL, "KY_ERROR_BAD_INTERVAL: a lower limit exceeds its upper limit"},
    {KY_ERROR_BAD_MODE, "KY_ERROR_BAD_MODE: no such contour mode"},
    {KY_ERROR_PARAMETER_OUT_OF_RANGE,
     "KY_ERROR_PARAMETER_OUT_OF_RANGE: an index lies beyond the vector"},
    {KY_ERROR_PARAMETER_1_OUT_OF_RANGE,
     "KY_ERROR_PARAMETER_1_OUT_OF_RANGE: the first numeric parameter is out of range"},
    {KY_ERROR_PARAMETER_2_OUT_OF_RANGE,
     "KY_ERROR_PARAMETER_2_OUT_OF_RANGE: the second numeric parameter is out of range"},
    {KY_ERROR_PARAMETER_3_OUT_OF_RANGE,
     "KY_ERROR_PARAMETER_3_OUT_OF_RANGE: the third numeric parameter is out of range"},
    {KY_ERROR_PARAMETER_4_OUT_OF_RANGE,
     "KY_ERROR_PARAMETER_4_OUT_OF_RANGE: the fourth numeric parameter is out of range"},
    {KY_ERROR_PARAMETER_5_OUT_OF_RANGE,
     "KY_ERROR_PARAMETER_5_OUT_OF_RANGE: the fifth numeric parameter is out of range"},
    {KY_ERROR_PARAMETER_6_OUT_OF_RANGE,
     "KY_ERROR_PARAMETER_6_OUT_OF_RANGE: the sixth numeric parameter is out of range"},
    {KY_ERROR_PYRAMID_BUILD, "KY_ERROR_PYRAMID_BUILD: the source of a pyramid cannot be used"},
    {KY_ERROR_SINGULAR_SYSTEM,
     "KY_ERROR_SINGULAR_SYSTEM: the determinant of a system of equations is 0"},
    {KY_ERROR_NO_PIXELS, "KY_ERROR_NO_PIXELS: a statistic of no pixels"},
    {KY_ERROR_FILE_OPEN, "KY_ERROR_FILE_OPEN: the file cannot be opened"},
    {KY_ERROR_FILE_READ, "KY_ERROR_FILE_READ: the file ends too early or cannot be read"},
    {KY_ERROR_FILE_WRITE, "KY_ERROR_FILE_WRITE: the file cannot be written"},
    {KY_ERROR_FILE_FORMAT, "KY_ERROR_FILE_FORMAT: the file is of another kind"},
    {KY_ERROR_FILE_CLOSE, "KY_ERROR_FILE_CLOSE: the file cannot be closed"},
    {KY_ERROR_NO_RESULT, "KY_ERROR_NO_RESULT: a scratch table cannot be allocated"},
    {KY_ERROR_NOT_ENOUGH_MEMORY, "KY_ERROR_NOT_ENOUGH_MEMORY: an allocation failed"},
    {KY_ERROR_NO_IMAGE, "KY_ERROR_NO_IMAGE: an ROI has no pixels"},
    {KY_ERROR_SIZE_MISMATCH, "KY_ERROR_SIZE_MISMATCH: two ROIs differ in size"},
    {KY_ERROR_WARP_MAP, "KY_ERROR_WARP_MAP: a warp table points outside the source"},
    {KY_ERROR_TRANSFORM_LIMIT, "KY_ERROR_TRANSFORM_LIMIT: the affine transform cannot be inverted"},
    {KY_ERROR_COLOR_PLANES, "KY_ERROR_COLOR_PLANES: a composite operation cannot work in place"},
    {KY_ERROR_PYRAMID_HALVE, "KY_ERROR_PYRAMID_HALVE: a pyramid cannot be halved"},
    {KY_ERROR_BAD_IMAGE_TYPE, "KY_ERROR_BAD_IMAGE_TYPE: no such image type"},
    {KY_ERROR_CONTOUR_START, "KY_ERROR_CONTOUR_START: the contour starts at no object pixel"},
    {KY_ERROR_CONTOUR_NO_DIRECTION,
     "KY_ERROR_CONTOUR_NO_DIRECTION: the contour has no start direction"},
    {KY_ERROR_CONTOUR_ISOLATED,
     "KY_ERROR_CONTOUR_ISOLATED: the contour starts at an isolated pixel"},
    {KY_ERROR_CONTOUR_TOO_LONG, "KY_ERROR_CONTOUR_TOO_LONG: the contour has too many steps"},
    {KY_ERROR_BAD_VECTOR_TYPE, "KY_ERROR_BAD_VECTOR_TYPE: a vector is missing or of another type"},
    {KY_ERROR_VECTOR_1602,
     "KY_ERROR_VECTOR_1602: a vector is of another type or use, or too short"},
    {KY_ERROR_VECTOR_1603, "KY_ERROR_VECTOR_1603: a vector is not a histogram"},
    {KY_ERROR_VECTOR_1604, "KY_ERROR_VECTOR_1604: a vector is empty"},
    {KY_ERROR_VECTOR_DATA_TYPE,
     "KY_ERROR_VECTOR_DATA_TYPE: a vector has a data type without a case"},
    {KY_ERROR_VECTOR_1606, "KY_ERROR_VECTOR_1606: a vector has a data type without a case"},
    {KY_ERROR_VECTOR_1607, "KY_ERROR_VECTOR_1607: a vector cannot be used here"},
    {KY_ERROR_VECTOR_1608, "KY_ERROR_VECTOR_1608: more results than the vector can hold"},
    {KY_ERROR_VECTOR_1609, "KY_ERROR_VECTOR_1609: a vector cannot be used here"},
    {KY_ERROR_VECTOR_1611, "KY_ERROR_VECTOR_1611: a vector cannot be used here"},
    {KY_ERROR_NOT_256_ENTRIES,
     "KY_ERROR_NOT_256_ENTRIES: a table or histogram has not exactly 256 entries"},
    {KY_ERROR_KERNEL_SIZE, "KY_ERROR_KERNEL_SIZE: a kernel has no coefficients"},
    {KY_ERROR_KERNEL_1701, "KY_ERROR_KERNEL_1701: a kernel cannot be used here"},
    {KY_ERROR_KERNEL_1702, "KY_ERROR_KERNEL_1702: a kernel has rectifier 0"},
    {KY_ERROR_KERNEL_1703, "KY_ERROR_KERNEL_1703: a kernel is not of the size needed"},
    {KY_ERROR_KERNEL_DATA, "KY_ERROR_KERNEL_DATA: a coefficient of a kernel without any"},
    {KY_ERROR_WARP_2200, "KY_ERROR_WARP_2200: a warp table is smaller than the destination"},
    {KY_ERROR_NOT_POWER_OF_TWO,
     "KY_ERROR_NOT_POWER_OF_TWO: a transform of a size that is no power of two"},
    {KY_ERROR_INTERNAL, "KY_ERROR_INTERNAL: a worker without a case for the operation"},
};

}  // namespace

KY_ERRORS KyGetError() noexcept { return status.error; }

void KyOk() noexcept {
  status.error = KY_OK;
  status.traceCount = 0;
}

void KySetError(KY_ERRORS error) noexcept { status.error = error; }

KY_ERRORS KyTraceError(const char* name) noexcept {
  if (status.error != KY_OK && status.traceCount < kTraceLimit)
    status.trace[status.traceCount++] = name;
  return status.error;
}

int KyGetTraceCount() noexcept { return status.traceCount; }

const char* KyGetTrace(int index) noexcept {
  return index >= 0 && index < status.traceCount ? status.trace[index] : nullptr;
}

const char* KyGetErrorText(KY_ERRORS error) noexcept {
  for (const ErrorText& known : kTexts)
    if (known.error == error) return known.text;
  return "unknown error: no function of this library returns it";
}
