// Source rows as operations read them that treat each component of a colour as a grey image of its
// own.
#pragma once

#include <algorithm>
#include <cstring>

#include "foundation/kernels/planes_rows.h"
#include "foundation/prefetch.h"
#include "foundation/ring.h"
#include "foundation/rows.h"

namespace ky {

// Rows from what is read or written to what is prefetched.
inline constexpr std::ptrdiff_t kPlanesAhead = 4;

// The rows of a source, of which `rows` are needed at once. Those of grey images are read where
// they are; in place, and split into planes where there are three, they are copied to a ring.
class PlaneRows {
 public:
  // False when there is no memory. Rows of colours come as rows of their components.
  bool Open(Rows<const KyBW8> source, Rows<KyBW8> destination, int planes, Border border,
            std::ptrdiff_t rows) noexcept {
    if (!input_.Open(source, destination)) return false;
    in_ = input_.rows();
    border_ = border;
    planes_ = planes;
    width_ = in_.width / planes;
    pitch_ = ScratchPitch(width_);
    const std::ptrdiff_t bytes = 2 * in_.height * in_.RowBytes();
    prefetches_ = GainFromPrefetches(bytes) && (planes > 1 || ExceedsThirdCache(bytes));
    copies_ = planes > 1 || SharingOf(in_, destination) == Sharing::kTheSame;
    if (copies_)
      return ring_.Allocate(
          {pitch_ * planes, in_.height, 0, 0, rows, 1, 0, border, pitch_ * planes});
    if (border.kind != Border::kConstant) return true;
    if (!outside_.Allocate(width_)) return false;
    std::fill_n(outside_.get(), width_, static_cast<KyBW8>(border.value));
    return true;
  }

  // Makes the rows before `end` readable.
  void FetchTo(std::ptrdiff_t end) noexcept {
    const std::ptrdiff_t ahead = end - 1 + kPlanesAhead;
    if (prefetches_ && ahead < in_.height) PrefetchRow(in_.Row(ahead), in_.RowBytes());
    if (!copies_) return;
    ring_.FetchTo(end, [&](KyBW8* slot, std::ptrdiff_t y) {
      if (planes_ == 1)
        std::memcpy(slot, in_.Row(y), static_cast<std::size_t>(width_));
      else
        kernels_.split(slot, static_cast<std::size_t>(pitch_), static_cast<std::size_t>(width_),
                       reinterpret_cast<const KyC24*>(in_.Row(y)));
    });
  }
  // What stands at row y, inside or outside.
  const KyBW8* Row(std::ptrdiff_t y, int plane) const noexcept {
    if (copies_) return ring_(y) + plane * pitch_;
    const std::ptrdiff_t place = border_.PlaceOf(y, in_.height);
    return place < 0 ? outside_.get() : in_.Row(place);
  }
  // The source itself.
  const Rows<const KyBW8>& whole() const noexcept { return in_; }
  std::ptrdiff_t width() const noexcept { return width_; }
  std::ptrdiff_t height() const noexcept { return in_.height; }

 private:
  const PlaneKernels& kernels_ = ChoosePlaneKernels();
  Rows<const KyBW8> in_;
  Input<KyBW8> input_;
  Border border_ = {};
  int planes_ = 1;
  std::ptrdiff_t width_ = 0, pitch_ = 0;
  bool prefetches_ = false, copies_ = false;
  RowRing<KyBW8> ring_;
  Scratch<KyBW8> outside_;
};

// A row of the destination, as planes until it is done.
class PlaneResults {
 public:
  bool Open(Rows<KyBW8> destination, int planes) noexcept {
    out_ = destination;
    width_ = destination.width / planes;
    pitch_ = ScratchPitch(width_);
    prefetches_ = GainFromPrefetches(2 * out_.height * out_.RowBytes());
    return planes == 1 || planes_.Allocate(planes * pitch_);
  }
  KyBW8* Row(std::ptrdiff_t y, int plane) const noexcept {
    return planes_.get() == nullptr ? out_.Row(y) : planes_.get() + plane * pitch_;
  }
  void Done(std::ptrdiff_t y) const noexcept {
    if (planes_.get() == nullptr) return;
    const std::ptrdiff_t ahead = y + kPlanesAhead;
    if (prefetches_ && ahead < out_.height) PrefetchRow(out_.Row(ahead), out_.RowBytes());
    kernels_.join(reinterpret_cast<KyC24*>(out_.Row(y)), static_cast<std::size_t>(width_),
                  planes_.get(), static_cast<std::size_t>(pitch_));
  }

 private:
  const PlaneKernels& kernels_ = ChoosePlaneKernels();
  Rows<KyBW8> out_;
  std::ptrdiff_t width_ = 0, pitch_ = 0;
  bool prefetches_ = false;
  Scratch<KyBW8> planes_;
};

// Calls makeRow(y, plane) for all rows, where each plane's follow one another. The source rows up
// to `below` below each are there then, as many as are needed at once.
template <class MakeRow>
void MakePlanes(PlaneRows& source, const PlaneResults& results, int planes, std::ptrdiff_t below,
                const MakeRow& makeRow) noexcept {
  for (std::ptrdiff_t y = 0; y < source.height(); ++y) {
    source.FetchTo(y + below + 1);
    for (int plane = 0; plane < planes; ++plane) makeRow(y, plane);
    results.Done(y);
  }
}

}  // namespace ky
