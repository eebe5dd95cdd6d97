#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <new>

#include "foundation/frame.h"
#include "foundation/pitch.h"
#include "foundation/resize.h"
#include "foundation/rows.h"
#include "ky/temporal.h"
#include "temporal/temporal_rows.h"

namespace {

// Exact for every 16-bit total; those are all less than the longest period.
ky::Reciprocal ReciprocalOf(unsigned int period) noexcept {
  constexpr unsigned int kLongest = 1u << 16;
  const unsigned int divisor = std::min(period, kLongest);
  const int bits = std::bit_width(divisor - 1);
  const std::uint64_t excess = (std::uint64_t{1} << bits) - divisor;
  return {static_cast<KyBW16>((excess << 16) / divisor + 1), std::min(bits, 1),
          std::max(bits - 1, 0)};
}

constexpr const char* kNotPrepared = "the object is not prepared: call SetSize";
constexpr const char* kNotKept = "sources are not kept: call Average(source, destination)";
constexpr ky::RoiNames kRois = {{"source", "source", "destination", "destination"}};

// True when so much memory can be had at all. An absurd ring is refused before it has eaten up
// what there is.
bool CanBeHad(std::int64_t bytes) noexcept {
  void* const memory = ::operator new(static_cast<std::size_t>(bytes), std::nothrow);
  ::operator delete(memory);
  return memory != nullptr;
}

}  // namespace

KyMovingAverage::KyMovingAverage() noexcept = default;

KyMovingAverage::KyMovingAverage(unsigned int period, int width, int height,
                                 int keepSource) noexcept
    : KyMovingAverage() {
  SetSize(period, width, height, keepSource);
}

KyMovingAverage::~KyMovingAverage() { Release(); }

KY_ERRORS KyMovingAverage::SetSize(unsigned int period, int width, int height,
                                   int keepSource) noexcept {
  return ky::Call("KyMovingAverage::SetSize", [&] {
    Release();
    const KY_ERRORS error = Configure(period, width, height, keepSource);
    if (error != KY_OK) Release();
    return error;
  });
}

// Gives back all memory and leaves the object as its default constructor does.
void KyMovingAverage::Release() noexcept {
  for (int i = 0; ring_ != nullptr && i < count_; ++i) delete ring_[i];
  delete[] ring_;
  ring_ = nullptr;
  sum_ = KyImage<KyBW16>();
  period_ = 0;
  shift_ = index_ = count_ = keepSource_ = 0;
}

KY_ERRORS KyMovingAverage::Configure(unsigned int period, int width, int height,
                                     int keepSource) noexcept {
  const std::int64_t slots = std::max<std::int64_t>(std::int64_t{period} - (keepSource == 0), 0);
  if (slots > INT_MAX) return KY_ERROR_NOT_ENOUGH_MEMORY;
  count_ = static_cast<int>(slots);
  if (const KY_ERRORS error = Allocate(width, height)) return error;
  period_ = period;
  shift_ = std::has_single_bit(period) ? std::countr_zero(period) : 0;
  index_ = -count_;
  keepSource_ = keepSource;
  return KY_OK;
}

KY_ERRORS KyMovingAverage::Allocate(int width, int height) noexcept {
  if (const KY_ERRORS error = ky::Resize(&sum_, width, height)) return error;
  if (count_ == 0) return KY_OK;
  const std::int64_t pitch = ky::ImagePitch(std::max(width, 1));
  const std::int64_t perSlot = ky::HeapBytes(ky::ImageBytes(pitch, height)) +
                               ky::HeapBytes(sizeof(KyImage<KyBW8>)) +
                               std::int64_t{sizeof(KyImage<KyBW8>*)};
  if (perSlot > PTRDIFF_MAX / count_ || !CanBeHad(perSlot * count_))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  ring_ = new (std::nothrow) KyImage<KyBW8>* [static_cast<std::size_t>(count_)] {};
  if (ring_ == nullptr) return KY_ERROR_NOT_ENOUGH_MEMORY;
  for (int i = 0; i < count_; ++i) {
    ring_[i] = new (std::nothrow) KyImage<KyBW8>();
    if (ring_[i] == nullptr) return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (const KY_ERRORS error = ky::Resize(ring_[i], width, height)) return error;
  }
  return KY_OK;
}

void KyMovingAverage::GetSize(unsigned int& period, int& width, int& height,
                              int& keepSource) const noexcept {
  period = period_;
  width = sum_.GetWidth();
  height = sum_.GetHeight();
  keepSource = keepSource_;
}

void KyMovingAverage::Reset() noexcept {
  KyOk();
  index_ = -count_;
}

KyImage<KyBW8>* KyMovingAverage::GetSrcImage() noexcept {
  KyImage<KyBW8>* image = nullptr;
  ky::Call("KyMovingAverage::GetSrcImage", [&] {
    if (period_ == 0) return KY_OK;
    if (keepSource_ == 0) return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, kNotKept);
    image = ring_[Current()];
    return KY_OK;
  });
  return image;
}

KY_ERRORS KyMovingAverage::Average(KyROI<KyBW8>* destination) noexcept {
  return ky::Call("KyMovingAverage::Average", [&] {
    if (keepSource_ == 0 || period_ == 0)
      return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, period_ == 0 ? kNotPrepared : kNotKept);
    return Take(ring_[Current()], destination);
  });
}

KY_ERRORS KyMovingAverage::Average(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept {
  return ky::Call("KyMovingAverage::Average", [&] {
    if (keepSource_ != 0)
      return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION,
                         "sources are kept: call Average(destination) after GetSrcImage");
    if (period_ == 0) return ky::Explain(KY_ERROR_SIZE_MISMATCH, kNotPrepared);
    return Take(source, destination);
  });
}

// The slot of the current frame.
int KyMovingAverage::Current() const noexcept { return index_ < 0 ? index_ + count_ : index_; }

// The slot of the frame that leaves the sum. While the ring fills up it is the first one, which
// stands for the frames that are missing. Copies take the place of the frame that leaves.
int KyMovingAverage::Oldest() const noexcept {
  if (keepSource_ == 0) return std::max(index_, 0);
  return index_ >= 0 && index_ < count_ - 1 ? index_ + 1 : 0;
}

KY_ERRORS KyMovingAverage::Take(const KyROI<KyBW8>* frame, KyROI<KyBW8>* destination) noexcept {
  // One frame alone, copied, needs no ring.
  const KyROI<KyBW8>* const oldest = count_ > 0 ? ring_[Oldest()] : frame;
  KyROI<KyBW8>* const slot = keepSource_ == 0 && count_ > 0 ? ring_[Current()] : nullptr;
  ky::Rows<const KyBW8> current, former;
  ky::Rows<KyBW8> out;
  ky::Rows<KyBW16> sum;
  KyROI<KyBW16>* const sums = &sum_;
  if (const KY_ERRORS error =
          ky::OpenAll(kRois, frame, current, oldest, former, destination, out, sums, sum))
    return error;
  ky::Input<KyBW8> frameInput, oldestInput;
  if (!frameInput.Open(current, out) || !oldestInput.Open(former, out))
    return KY_ERROR_NOT_ENOUGH_MEMORY;

  const ky::TemporalKernels& kernels = ky::ChooseTemporalKernels();
  const ky::Rows<KyBW8> copy = slot != nullptr ? ky::RowsOf(slot) : ky::Rows<KyBW8>();
  const ky::Reciprocal reciprocal = ReciprocalOf(period_);
  for (std::ptrdiff_t y = 0; y < out.height; ++y) {
    const ky::MovingRow row = {frameInput.rows().Row(y),
                               oldestInput.rows().Row(y),
                               sum.Row(y),
                               out.Row(y),
                               slot != nullptr ? copy.Row(y) : nullptr,
                               static_cast<std::size_t>(out.width)};
    if (index_ == -count_)
      kernels.start(row, static_cast<KyBW16>(period_ - 1));
    else if (shift_ > 0)
      kernels.stepByShift(row, shift_);
    else
      kernels.stepByReciprocal(row, reciprocal);
  }
  if (++index_ >= count_) index_ = 0;
  return KY_OK;
}
