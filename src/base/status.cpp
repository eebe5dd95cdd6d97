#include "ky/status.h"

#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <string_view>

namespace {

constexpr int kTraceLimit = 16;

struct ThreadStatus {
  KY_ERRORS error;
  int origin;         // of an error: how many routines older ones of its code left in the trace
  const char* about;  // a parameter or a sentence, or null
  int traceCount;
  int traceCountBefore;  // of an error: when it was set last
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
    {KY_ERROR_PATH_STOPPED, "KY_ERROR_PATH_STOPPED: a path met or left the border of the ROI"},
    {KY_ERROR_UNSUPPORTED_OPERATION,
     "KY_ERROR_UNSUPPORTED_OPERATION: there is no such operation, mode, unit or edge, or not for "
     "this object"},
    {KY_ERROR_BAD_INTERVAL,
     "KY_ERROR_BAD_INTERVAL: a lower limit exceeds its upper limit, an interval or group lies out "
     "of bounds, or there is no such interpolation"},
    {KY_ERROR_BAD_MODE, "KY_ERROR_BAD_MODE: no such contour mode"},
    {KY_ERROR_PARAMETER_OUT_OF_RANGE, "KY_ERROR_PARAMETER_OUT_OF_RANGE: an index is out of range"},
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
    {KY_ERROR_PYRAMID_BUILD,
     "KY_ERROR_PYRAMID_BUILD: the source of a pyramid cannot be used, or is too small"},
    {KY_ERROR_SINGULAR_SYSTEM,
     "KY_ERROR_SINGULAR_SYSTEM: a system of equations has no single solution"},
    {KY_ERROR_NO_PIXELS,
     "KY_ERROR_NO_PIXELS: there are no pixels or points to compute this from, or too few"},
    {KY_ERROR_FILE_OPEN, "KY_ERROR_FILE_OPEN: the file cannot be opened, or has no name"},
    {KY_ERROR_FILE_READ, "KY_ERROR_FILE_READ: the file ends too early or cannot be read"},
    {KY_ERROR_FILE_WRITE, "KY_ERROR_FILE_WRITE: the file cannot be written"},
    {KY_ERROR_FILE_FORMAT, "KY_ERROR_FILE_FORMAT: the file is of another kind"},
    {KY_ERROR_FILE_CLOSE, "KY_ERROR_FILE_CLOSE: the file cannot be closed"},
    {KY_ERROR_NO_RESULT, "KY_ERROR_NO_RESULT: a scratch table cannot be allocated"},
    {KY_ERROR_NOT_ENOUGH_MEMORY,
     "KY_ERROR_NOT_ENOUGH_MEMORY: memory ran out, or a size is negative or too large"},
    {KY_ERROR_NO_IMAGE, "KY_ERROR_NO_IMAGE: an ROI is missing or has no pixels"},
    {KY_ERROR_SIZE_MISMATCH, "KY_ERROR_SIZE_MISMATCH: ROIs differ in size"},
    {KY_ERROR_WARP_MAP, "KY_ERROR_WARP_MAP: a warp table points outside the source"},
    {KY_ERROR_TRANSFORM_LIMIT, "KY_ERROR_TRANSFORM_LIMIT: the affine transform cannot be inverted"},
    {KY_ERROR_COLOR_PLANES,
     "KY_ERROR_COLOR_PLANES: a destination must not share memory with the source here"},
    {KY_ERROR_PYRAMID_HALVE, "KY_ERROR_PYRAMID_HALVE: a pyramid cannot be halved"},
    {KY_ERROR_BAD_IMAGE_TYPE, "KY_ERROR_BAD_IMAGE_TYPE: an image or a matrix is of another type"},
    {KY_ERROR_CONTOUR_START, "KY_ERROR_CONTOUR_START: the contour starts at no object pixel"},
    {KY_ERROR_CONTOUR_NO_DIRECTION,
     "KY_ERROR_CONTOUR_NO_DIRECTION: the contour starts inside an object"},
    {KY_ERROR_CONTOUR_ISOLATED,
     "KY_ERROR_CONTOUR_ISOLATED: the contour starts at an isolated pixel"},
    {KY_ERROR_CONTOUR_TOO_LONG, "KY_ERROR_CONTOUR_TOO_LONG: the contour has too many steps"},
    {KY_ERROR_BAD_VECTOR_TYPE,
     "KY_ERROR_BAD_VECTOR_TYPE: a vector is missing, of another type, or without room"},
    {KY_ERROR_VECTOR_1602,
     "KY_ERROR_VECTOR_1602: a vector is of another type or use, or too short"},
    {KY_ERROR_VECTOR_1603, "KY_ERROR_VECTOR_1603: a vector is not a histogram"},
    {KY_ERROR_VECTOR_1604, "KY_ERROR_VECTOR_1604: a vector has no groups"},
    {KY_ERROR_VECTOR_DATA_TYPE,
     "KY_ERROR_VECTOR_DATA_TYPE: a vector has elements of a size that cannot be used here"},
    {KY_ERROR_VECTOR_1606,
     "KY_ERROR_VECTOR_1606: a vector has elements of a type that cannot be used here"},
    {KY_ERROR_VECTOR_1607, "KY_ERROR_VECTOR_1607: a vector cannot be used here"},
    {KY_ERROR_VECTOR_1608, "KY_ERROR_VECTOR_1608: more results than the vector can hold"},
    {KY_ERROR_VECTOR_1609, "KY_ERROR_VECTOR_1609: a vector cannot be used here"},
    {KY_ERROR_VECTOR_1611, "KY_ERROR_VECTOR_1611: a vector cannot be used here"},
    {KY_ERROR_NOT_256_ENTRIES,
     "KY_ERROR_NOT_256_ENTRIES: a table, histogram or profile is missing or of another length"},
    {KY_ERROR_KERNEL_SIZE, "KY_ERROR_KERNEL_SIZE: a kernel is missing or has no coefficients"},
    {KY_ERROR_KERNEL_1701,
     "KY_ERROR_KERNEL_1701: a kernel holds no shape, or is neither a row nor a column"},
    {KY_ERROR_KERNEL_1702, "KY_ERROR_KERNEL_1702: a kernel has rectifier 0"},
    {KY_ERROR_KERNEL_1703, "KY_ERROR_KERNEL_1703: a kernel is not of the size needed"},
    {KY_ERROR_KERNEL_DATA, "KY_ERROR_KERNEL_DATA: the kernel has no coefficients"},
    {KY_ERROR_WARP_2200, "KY_ERROR_WARP_2200: a warp table is smaller than the destination"},
    {KY_ERROR_NOT_POWER_OF_TWO,
     "KY_ERROR_NOT_POWER_OF_TWO: a transform of a size that is no power of two"},
    {KY_ERROR_INTERNAL, "KY_ERROR_INTERNAL: the operation does nothing with these operands"},
};

// The line of KyGetErrorMessage.
class Line {
 public:
  Line& operator<<(std::string_view text) noexcept {
    const std::size_t n = std::min(text.size(), kMost - length_);
    std::copy_n(text.data(), n, text_ + length_);
    length_ += n;
    text_[length_] = '\0';
    return *this;
  }
  void Empty() noexcept { length_ = 0; }
  const char* Text() const noexcept { return text_; }

 private:
  static constexpr std::size_t kMost = 255;

  std::size_t length_ = 0;
  char text_[kMost + 1] = {};
};

// The line of each thread is there from its first message to its end. It is no thread_local object,
// because storage of that kind is scarce where libraries are loaded at run time.
class Lines {
 public:
  Lines() noexcept : usable_(pthread_key_create(&key_, &Delete) == 0) {}
  ~Lines() {
    if (usable_) pthread_key_delete(key_);
    usable_ = false;
  }
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;

  // Null when there is no memory for it, or the library is being unloaded.
  Line* OfThread() const noexcept {
    if (!usable_) return nullptr;
    auto* line = static_cast<Line*>(pthread_getspecific(key_));
    if (line != nullptr) return line;
    line = new (std::nothrow) Line;
    if (line == nullptr || pthread_setspecific(key_, line) == 0) return line;
    delete line;
    return nullptr;
  }

 private:
  static void Delete(void* line) { delete static_cast<Line*>(line); }

  pthread_key_t key_ = 0;
  bool usable_;
};
Lines lines;

// What an error says of the parameter that it is about.
std::string_view FaultOf(KY_ERRORS error) noexcept {
  switch (error) {
    case KY_ERROR_NO_IMAGE:
      return " is null or has no pixels: call SetSize, or place it inside its parent";
    case KY_ERROR_SIZE_MISMATCH: return " differs in size from the other ROIs";
    case KY_ERROR_UNSUPPORTED_OPERATION: return " is none of the values that it may have";
    default: return " is out of range";
  }
}

// A name of the trace without the types of the overload: "ImgOper (BW8)" is ImgOper.
std::string_view RoutineOf(const char* name) noexcept {
  const std::string_view all = name;
  return all.substr(0, all.find(" ("));
}

}  // namespace

KY_ERRORS KyGetError() noexcept { return status.error; }

void KyOk() noexcept {
  status.error = KY_OK;
  status.about = nullptr;
  status.traceCount = 0;
}

void KySetError(KY_ERRORS error) noexcept {
  status.traceCountBefore = status.traceCount;
  if (error != status.error) {
    status.origin = status.traceCount;
    status.about = nullptr;
  }
  status.error = error;
}

KY_ERRORS KyNameParameter(const char* name) noexcept {
  // Parameters are named where errors come from, once they are set: what stood in the trace before
  // belongs to another error.
  if (status.error != KY_OK) {
    status.origin = status.traceCountBefore;
    status.about = name;
  }
  return status.error;
}

KY_ERRORS KyTraceError(const char* name) noexcept {
  if (name != nullptr && status.error != KY_OK && status.traceCount < kTraceLimit)
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

const char* KyGetErrorMessage() noexcept {
  constexpr std::string_view kBetween = ": ";
  const std::string_view text = KyGetErrorText(status.error);
  const std::size_t name = text.find(kBetween);
  Line* const ofThread = lines.OfThread();
  if (ofThread == nullptr) return text.data();
  Line& line = *ofThread;
  line.Empty();
  const int origin = status.origin;
  if (status.traceCount > origin) line << RoutineOf(status.trace[origin]) << kBetween;
  if (status.about == nullptr) {
    line << text.substr(name + kBetween.size());
  } else {
    const std::string_view about = status.about;
    line << about;
    if (about.find(' ') == std::string_view::npos) line << FaultOf(status.error);
  }
  line << " (" << text.substr(0, name) << ")";
  for (int i = origin + 1; i < status.traceCount; ++i)
    line << ", in " << RoutineOf(status.trace[i]);
  return line.Text();
}
