// The frame of every exported function: status, checks, trace.
#pragma once

#include <utility>

#include "ky/roi.h"
#include "ky/status.h"

namespace ky {

// Clears the status, runs `body`, and sets and returns what it answers; a failure is not traced.
template <class Body>
KY_ERRORS CallUntraced(Body&& body) noexcept {
  KyOk();
  const KY_ERRORS error = std::forward<Body>(body)();
  if (error != KY_OK) KySetError(error);
  return KyGetError();
}

// The same, and a failure appends `name` to the trace. A body returns at its first failing check,
// so that nothing is written before all have passed; what another exported function answered, it
// passes on.
template <class Body>
KY_ERRORS Call(const char* name, Body&& body) noexcept {
  return CallUntraced(std::forward<Body>(body)) == KY_OK ? KY_OK : KyTraceError(name);
}

// 1400 when an ROI is missing or has no pixels.
inline KY_ERRORS HasImage(const KyGenericROI* roi) noexcept {
  if (roi == nullptr) return KY_ERROR_NO_IMAGE;
  roi->CheckImage();
  return KyGetError();
}

// The check of every worker: the image of each source, that of the destination, which comes last,
// then each source's size against the destination's.
template <class... Rois>
KY_ERRORS Ready(const Rois*... rois) noexcept {
  const KyGenericROI* const all[] = {rois...};
  constexpr int kLast = sizeof...(rois) - 1;
  for (const KyGenericROI* roi : all)
    if (const KY_ERRORS error = HasImage(roi)) return error;
  for (int i = 0; i < kLast; ++i) {
    all[i]->CheckSameSize(all[kLast]);
    if (const KY_ERRORS error = KyGetError()) return error;
  }
  return KY_OK;
}

}  // namespace ky
