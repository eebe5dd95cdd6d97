#include "ky/frames.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "foundation/frame.h"
#include "foundation/kernels/operators_rows.h"
#include "foundation/map.h"
#include "point/frames_rows.h"

namespace {

using ky::Call;
using ky::CheckImage;
using ky::Rows;
using ky::RowsOf;
using std::ptrdiff_t;

// Rows first, first + 2, ... of an area.
template <class T>
Rows<T> EveryOther(const Rows<T>& rows, ptrdiff_t first) noexcept {
  return {rows.Row(first), 2 * rows.pitch, rows.width,
          std::max<ptrdiff_t>(rows.height - first + 1, 0) / 2};
}

// The first row of the frame opposite to the one named.
constexpr ptrdiff_t OppositeFrame(int frame) noexcept { return frame % 2 == 0 ? 1 : 0; }

// True when the position just below the ROI's first pixel is one of the root image.
bool HasRowBelow(const KyGenericROI* roi) noexcept {
  return roi->GetRootPixelPtr(0, roi->GetHeight()) != nullptr;
}

// The checks of a whole image and one of its frames, whose first row is `first`.
KY_ERRORS CheckInterlaced(const KyGenericROI* source, const KyGenericROI* destination,
                          const KyGenericROI* whole, const KyGenericROI* part,
                          ptrdiff_t first) noexcept {
  if (const KY_ERRORS error = CheckImage(source, "source")) return error;
  if (const KY_ERRORS error = CheckImage(destination, "destination")) return error;
  const bool fits = part->GetWidth() == whole->GetWidth() &&
                    part->GetHeight() == (whole->GetHeight() + first) / 2;
  return fits ? KY_OK
              : ky::Explain(KY_ERROR_SIZE_MISMATCH,
                            "the frame has not half of the rows, or another width than the image");
}

// Calls work(destination, source) on the rows of two ROIs of the same size, once the source can
// stay readable.
template <class T, class Work>
KY_ERRORS OnFrames(const char* name, const KyROI<T>* source, KyROI<T>* destination,
                   const Work& work) noexcept {
  return ky::CallOn(name, source, destination, [&](const Rows<const T>& in, const Rows<T>& out) {
    ky::Input<T> input;
    if (!input.Open(in, out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    work(out, input.rows());
    return KY_OK;
  });
}

template <class T>
KY_ERRORS Realign(const char* name, const KyROI<T>* source, KyROI<T>* destination, int shift,
                  int frame) noexcept {
  return OnFrames(name, source, destination, [&](const Rows<T>& out, const Rows<const T>& in) {
    const ptrdiff_t width = out.width;
    if (width == 0) return;
    const ptrdiff_t distance = std::min(std::abs(ptrdiff_t{shift}), width);
    const ptrdiff_t kept = width - distance;
    for (ptrdiff_t y = OppositeFrame(frame); y < out.height; y += 2) {
      T* const to = out.Row(y);
      const T* const from = in.Row(y);
      const T end = shift < 0 ? from[width - 1] : from[0];
      std::memmove(to + (shift < 0 ? 0 : distance), from + (shift < 0 ? distance : 0),
                   static_cast<std::size_t>(kept) * sizeof(T));
      std::fill_n(to + (shift < 0 ? kept : 0), distance, end);
    }
  });
}

template <class T>
KY_ERRORS Match(const char* name, const KyROI<T>* roi, int line, int minimum, int maximum,
                int& bestOffset) noexcept {
  return Call(name, [&] {
    Rows<const KyBW8> rows;  // of components
    if (const KY_ERRORS error = ky::Open(roi, rows, "roi")) return error;
    const ptrdiff_t first = minimum, last = maximum;
    if (first > last || roi->GetWidth() < last - first)
      return ky::Explain(KY_ERROR_BAD_INTERVAL,
                         "minimum to maximum is no interval within the width");
    if (line < 0 || line + ptrdiff_t{1} >= rows.height)
      return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "line");

    const ky::InterlacedKernels& kernels = ky::ChooseInterlacedKernels();
    constexpr ptrdiff_t kComponents = sizeof(T);
    const ptrdiff_t left = std::max<ptrdiff_t>(last, 0);
    const ptrdiff_t right = roi->GetWidth() + std::min<ptrdiff_t>(first, 0);
    const auto compared =
        static_cast<std::size_t>(std::max<ptrdiff_t>(right - left, 0) * kComponents);
    std::uint32_t least = UINT32_MAX;
    ptrdiff_t best = first;
    for (ptrdiff_t offset = first; offset <= last && compared > 0; ++offset) {
      const std::uint32_t distance =
          kernels.squaredDistance(rows.Row(line) + left * kComponents,
                                  rows.Row(line + 1) + (left - offset) * kComponents, compared);
      if (distance >= least) continue;
      least = distance;
      best = offset;
    }
    bestOffset = static_cast<int>(best);
    return KY_OK;
  });
}

template <class T>
KY_ERRORS Rebuild(const char* name, const KyROI<T>* source, KyROI<T>* destination,
                  int frame) noexcept {
  return OnFrames(name, source, destination, [&](const Rows<T>& out, const Rows<const T>& in) {
    const auto average = ky::ChooseOperatorKernels().combine[KY_OPER_AVERAGE];
    // Makes `count` rows, every other one from y on, from every other one from `above` and `below`
    // on.
    const auto make = [&](ptrdiff_t y, ptrdiff_t count, ptrdiff_t above, ptrdiff_t below) {
      const auto from = [&](ptrdiff_t row) {
        return Rows<const KyBW8>{reinterpret_cast<const KyBW8*>(in.Row(row)), 2 * in.pitch};
      };
      average({reinterpret_cast<KyBW8*>(out.Row(y)), 2 * out.pitch, out.RowBytes(), count},
              from(above), from(below));
    };
    const ptrdiff_t height = out.height;
    ptrdiff_t y = OppositeFrame(frame);
    if (y == 0 && height > 0) {
      const ptrdiff_t nearest = std::min<ptrdiff_t>(1, height - 1);
      make(y, 1, nearest, nearest);
      y = 2;
    }
    const ptrdiff_t inner = std::max<ptrdiff_t>(0, height - y) / 2;
    if (inner > 0) make(y, inner, y - 1, y + 1);
    y += 2 * inner;
    if (y < height) make(y, 1, y - 1, y - 1);
  });
}

template <class T>
KY_ERRORS Swap(const char* name, const KyROI<T>* source, KyROI<T>* destination) noexcept {
  return OnFrames(name, source, destination, [](const Rows<T>& out, const Rows<const T>& in) {
    const bool inPlace = ky::SharingOf(in, out) == ky::Sharing::kTheSame;
    for (ptrdiff_t y = 0; y + 1 < out.height; y += 2) {
      T *const upper = out.Row(y), *const lower = out.Row(y + 1);
      if (inPlace) {
        std::swap_ranges(upper, upper + out.width, lower);
      } else {
        std::memcpy(upper, in.Row(y + 1), static_cast<std::size_t>(out.RowBytes()));
        std::memcpy(lower, in.Row(y), static_cast<std::size_t>(out.RowBytes()));
      }
    }
  });
}

}  // namespace

KY_ERRORS ImgGetFrame(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, int frame) noexcept {
  return Call("ImgGetFrame (KyBW8)", [&] {
    const ptrdiff_t first = frame != 0 ? 1 : 0;
    if (const KY_ERRORS error = CheckInterlaced(source, destination, source, destination, first))
      return error;
    const Rows<const KyBW8> from = EveryOther(RowsOf(source), first);
    Rows<KyBW8> to = RowsOf(destination);
    to.height = from.height <= to.height || HasRowBelow(destination) ? from.height : to.height;
    return ky::CopyRows(to, ky::FromRows(from));
  });
}

KY_ERRORS ImgSetFrame(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, int frame) noexcept {
  return Call("ImgSetFrame (KyBW8)", [&] {
    const ptrdiff_t first = frame != 0 ? 1 : 0;
    if (const KY_ERRORS error = CheckInterlaced(source, destination, destination, source, first))
      return error;
    Rows<const KyBW8> from = RowsOf(source);
    Rows<KyBW8> to = EveryOther(RowsOf(destination), first);
    const bool lacksRow = to.height > from.height && !HasRowBelow(source);
    if (lacksRow) --to.height;
    from.height = to.height;
    const KY_ERRORS error = ky::CopyRows(to, ky::FromRows(from));
    if (error == KY_OK && lacksRow) std::fill_n(to.Row(to.height), to.width, KyBW8{0});
    return error;
  });
}

KY_ERRORS ImgRealignFrame(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, int shift,
                          int frame) noexcept {
  return Realign("ImgRealignFrame (KyBW8)", source, destination, shift, frame);
}
KY_ERRORS ImgRealignFrame(const KyROI<KyC24>* source, KyROI<KyC24>* destination, int shift,
                          int frame) noexcept {
  return Realign("ImgRealignFrame (KyC24)", source, destination, shift, frame);
}

KY_ERRORS ImgMatchFrames(const KyROI<KyBW8>* roi, int line, int minimum, int maximum,
                         int& bestOffset) noexcept {
  return Match("ImgMatchFrames (KyBW8)", roi, line, minimum, maximum, bestOffset);
}
KY_ERRORS ImgMatchFrames(const KyROI<KyC24>* roi, int line, int minimum, int maximum,
                         int& bestOffset) noexcept {
  return Match("ImgMatchFrames (KyC24)", roi, line, minimum, maximum, bestOffset);
}

KY_ERRORS ImgRebuildFrame(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                          int frame) noexcept {
  return Rebuild("ImgRebuildFrame (KyBW8)", source, destination, frame);
}
KY_ERRORS ImgRebuildFrame(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                          int frame) noexcept {
  return Rebuild("ImgRebuildFrame (KyC24)", source, destination, frame);
}

KY_ERRORS ImgSwapFrames(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return Swap("ImgSwapFrames (KyBW8)", source, destination);
}
KY_ERRORS ImgSwapFrames(const KyROI<KyC24>* source, KyROI<KyC24>* destination) noexcept {
  return Swap("ImgSwapFrames (KyC24)", source, destination);
}
