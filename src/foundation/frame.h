// The frame of every exported function: status, checks of ROIs, trace.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <tuple>
#include <utility>

#include "foundation/rows.h"
#include "ky/roi.h"
#include "ky/status.h"

namespace ky {

// Sets the status. Where it was another error, which the code has coped with, that error's trace is
// cleared.
inline void SetStatus(KY_ERRORS error) noexcept {
  if (KyGetError() != error) KyOk();
  KySetError(error);
}

// Inside the library errors travel by return value; the status of the thread is the frame's alone.
// Clears it, runs `body`, and sets and returns what the body returned, whatever status the code
// called in between has left behind. A failure is not traced.
template <class Body>
KY_ERRORS CallUntraced(Body&& body) noexcept {
  KyOk();
  const KY_ERRORS error = std::forward<Body>(body)();
  SetStatus(error);
  return error;
}

// The same, and a failure appends `name` to the trace. A body returns at its first failing check,
// so that nothing is written before all have passed; the error of another exported function is
// passed on, and stands in the trace with that function's name before this one's.
template <class Body>
KY_ERRORS Call(const char* name, Body&& body) noexcept {
  const KY_ERRORS error = CallUntraced(std::forward<Body>(body));
  if (error != KY_OK) KyTraceError(name);
  return error;
}

// An error that a step of a call raises which is a function of its own elsewhere: puts the names of
// such steps, the innermost first, into the trace before that of the call. Null names are skipped.
inline KY_ERRORS FailIn(KY_ERRORS error, std::initializer_list<const char*> steps) noexcept {
  SetStatus(error);
  for (const char* const name : steps)
    if (name != nullptr) KyTraceError(name);
  return error;
}

// An error with what KyGetErrorMessage says of it: the name that an ROI or a number has in the
// header, or in several words what is wrong.
inline KY_ERRORS Explain(KY_ERRORS error, const char* about) noexcept {
  SetStatus(error);
  KyNameParameter(about);
  return error;
}
// One of the codes KY_ERROR_PARAMETER..._OUT_OF_RANGE.
inline KY_ERRORS OutOfRange(KY_ERRORS error, const char* parameter) noexcept {
  return Explain(error, parameter);
}

// The names of a call's ROIs in the header, in their order; of two also what to say when they
// differ in size.
struct RoiNames {
  const char* of[4];
  const char* unequal = nullptr;
};
inline constexpr RoiNames kSourceAndDestination = {{"source", "destination"},
                                                   "source and destination differ in size"};

// KY_ERROR_NO_IMAGE (1400) when an ROI is missing or has no pixels.
inline KY_ERRORS CheckImage(const KyGenericROI* roi, const char* name) noexcept {
  const bool usable = roi != nullptr && roi->GetPixelPtr(0, 0) != nullptr;
  return usable ? KY_OK : Explain(KY_ERROR_NO_IMAGE, name);
}

inline bool IsSameSize(const KyGenericROI* a, const KyGenericROI* b) noexcept {
  return a->GetWidth() == b->GetWidth() && a->GetHeight() == b->GetHeight();
}

// KY_ERROR_SIZE_MISMATCH (1403) unless each source has the size of the destination, which comes
// last.
template <class... Rois>
KY_ERRORS CheckSizes(const RoiNames& names, const Rois*... rois) noexcept {
  constexpr std::size_t kLast = sizeof...(rois) - 1;
  const KyGenericROI* const all[] = {rois...};
  std::size_t unequal = 0, first = kLast;
  for (std::size_t i = kLast; i-- > 0;)
    if (!IsSameSize(all[i], all[kLast])) {
      ++unequal;
      first = i;
    }
  if (unequal == 0) return KY_OK;
  const char* const odd = names.of[unequal == kLast ? kLast : first];
  return Explain(KY_ERROR_SIZE_MISMATCH, names.unequal != nullptr ? names.unequal : odd);
}

// The checks of every worker: the image of each source, that of the destination, which comes last,
// then the sizes.
template <class... Rois>
KY_ERRORS CheckRois(const RoiNames& names, const Rois*... rois) noexcept {
  const char* const* name = names.of;
  for (const KyGenericROI* roi : {static_cast<const KyGenericROI*>(rois)...})
    if (const KY_ERRORS error = CheckImage(roi, *name++)) return error;
  return CheckSizes(names, rois...);
}

// The checks of an operation whose source gives the size: a larger destination is written in the
// source's area only (RowsIn), a smaller one is refused with 1403.
inline KY_ERRORS CheckCovers(const KyGenericROI* source, const KyGenericROI* destination) noexcept {
  if (const KY_ERRORS error = CheckImage(source, "source")) return error;
  if (const KY_ERRORS error = CheckImage(destination, "destination")) return error;
  const bool covers = destination->GetWidth() >= source->GetWidth() &&
                      destination->GetHeight() >= source->GetHeight();
  return covers ? KY_OK : Explain(KY_ERROR_SIZE_MISMATCH, "destination is smaller than source");
}

// The rows of an ROI: 1400 when it is missing or has no pixels. Rows of bytes on a colour ROI are
// rows of its components.
template <class Roi, class T>
KY_ERRORS Open(Roi* roi, Rows<T>& rows,
               const char* name = std::is_const_v<Roi> ? "source" : "destination") noexcept {
  if (roi != nullptr) rows = RowsAs<T>(roi);
  return roi != nullptr && rows.first != nullptr ? KY_OK : Explain(KY_ERROR_NO_IMAGE, name);
}

// What a filter writes to: the destination or, where that is null, the source. A source is const
// for its rectangle, not for its pixels.
template <class T>
KyROI<T>* DestinationOf(const KyROI<T>* source, KyROI<T>* destination) noexcept {
  return destination != nullptr ? destination : const_cast<KyROI<T>*>(source);
}

// The checks of CheckRois and the rows of all ROIs in one: OpenAll(source, in, destination, out),
// with the names before them where they are others.
template <class... RoisAndRows>
KY_ERRORS OpenAll(const RoiNames& names, RoisAndRows&&... all) noexcept {
  constexpr std::size_t kRois = sizeof...(all) / 2;
  const std::tuple<RoisAndRows&...> pairs(all...);
  KY_ERRORS error = KY_OK;
  const auto openEach = [&]<std::size_t... kIndex>(std::index_sequence<kIndex...>) {
    static_cast<void>((((error = Open(std::get<2 * kIndex>(pairs), std::get<2 * kIndex + 1>(pairs),
                                      names.of[kIndex])) == KY_OK) &&
                       ...));
    return error != KY_OK ? error : CheckSizes(names, std::get<2 * kIndex>(pairs)...);
  };
  return openEach(std::make_index_sequence<kRois>());
}
template <class In, class Out>
KY_ERRORS OpenAll(const KyROI<In>* source, auto& in, KyROI<Out>* destination, auto& out) noexcept {
  return OpenAll(kSourceAndDestination, source, in, destination, out);
}

// The frame of an operation with one source, or two, of the destination's size, and no other
// argument to check before them: opens all and returns what work(source rows..., destination rows)
// returns.
template <class In, class Out, class Work>
KY_ERRORS CallOn(const char* name, const KyROI<In>* source, KyROI<Out>* destination,
                 const Work& work) noexcept {
  return Call(name, [&] {
    Rows<const In> in;
    Rows<Out> out;
    const KY_ERRORS error = OpenAll(source, in, destination, out);
    return error != KY_OK ? error : work(in, out);
  });
}
template <class A, class B, class Out, class Work>
KY_ERRORS CallOn(const char* name, const KyROI<A>* a, const KyROI<B>* b, KyROI<Out>* destination,
                 const Work& work) noexcept {
  return Call(name, [&] {
    Rows<const A> inA;
    Rows<const B> inB;
    Rows<Out> out;
    const KY_ERRORS error =
        OpenAll(RoiNames{{"a", "b", "destination"}}, a, inA, b, inB, destination, out);
    return error != KY_OK ? error : work(inA, inB, out);
  });
}

}  // namespace ky
