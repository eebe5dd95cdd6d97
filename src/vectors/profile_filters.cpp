// Filters of profiles.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "foundation/frame.h"
#include "foundation/kernels/operators_rows.h"
#include "foundation/scratch.h"
#include "ky/profile.h"
#include "vectors/profile_rows.h"

namespace {

using ky::Call;
using ky::Scratch;
using std::ptrdiff_t;

// The frame of the filters: `body(source, n, destination)` once there is room for the results.
// `prepare(n)` comes before that, and returns false when there is no memory.
template <class Prepare, class Body>
KY_ERRORS Filter(const char* name, const KyBW8Vector* source, KyBW8Vector* destination,
                 Prepare prepare, Body body) noexcept {
  return Call(name, [&] {
    if (source == nullptr || destination == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    const unsigned count = source->GetNumElements();
    if (!prepare(ptrdiff_t{count})) return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (const KY_ERRORS error = destination->SetNumElements(count)) return error;
    if (count > 0) body(source->GetDataPtr(), ptrdiff_t{count}, destination->GetDataPtr());
    return KY_OK;
  });
}

// Elements with `reach` more on either side, which repeat the first and the last one, in pieces
// that are small beside a first cache unless the reach is long. (A profile is one row, read in
// pieces: there are no neighbouring rows that a RowRing could keep.)
class ProfileWindows {
 public:
  bool Allocate(ptrdiff_t n, ptrdiff_t reach) noexcept {
    n_ = n;
    reach_ = reach;
    piece_ = std::min(n, std::max(kPiece, 2 * reach));
    return window_.Allocate(Longest());
  }
  ptrdiff_t Longest() const noexcept { return piece_ + 2 * reach_; }

  // Runs `body(window, count, out)` for all pieces: window[i + reach] is the element of out[i].
  // `out` may be `levels`.
  template <class Body>
  void Run(const KyBW8* levels, KyBW8* out, Body body) noexcept {
    KyBW8* const window = window_.get();
    const KyBW8 last = levels[n_ - 1];
    KyBW8* end = std::fill_n(window, reach_, levels[0]);
    ptrdiff_t next = 0;  // the element that comes at `end`
    for (ptrdiff_t begin = 0; begin < n_; begin += piece_) {
      const ptrdiff_t count = std::min(piece_, n_ - begin), after = begin + count + reach_;
      const ptrdiff_t real = std::max<ptrdiff_t>(std::min(n_, after) - next, 0);
      end = std::copy_n(levels + std::min(next, n_), real, end);
      end = std::fill_n(end, after - next - real, last);
      next = after;
      body(static_cast<const KyBW8*>(window), count, out + begin);
      end = std::copy(end - 2 * reach_, end, window);
    }
  }

 private:
  static constexpr ptrdiff_t kPiece = 8192;

  ptrdiff_t n_ = 0, reach_ = 0, piece_ = 0;
  Scratch<KyBW8> window_;
};

// The extremes of windows with `passes` elements on either side: so many passes with one element on
// either side give the same. The extreme of a window is that of any two shorter ones that cover it,
// so that lengths double from step to step.
template <ARITH_LOGIC_OPERATIONS kExtreme>
KY_ERRORS Extremes(const char* name, const KyBW8Vector* source, KyBW8Vector* destination,
                   unsigned passes) noexcept {
  ptrdiff_t reach = 0;
  ProfileWindows windows;
  Scratch<KyBW8> extremes;
  const auto prepare = [&](ptrdiff_t n) {
    reach = std::min<ptrdiff_t>(passes, n);
    return windows.Allocate(n, reach) && extremes.Allocate(windows.Longest());
  };
  const auto body = [&](const KyBW8* levels, ptrdiff_t, KyBW8* out) {
    if (passes == 0) return;
    const auto combine = ky::ChooseOperatorKernels().combine[kExtreme];
    windows.Run(levels, out, [&](const KyBW8* from, ptrdiff_t count, KyBW8* to) {
      // from[i]: the extreme of the `length` elements from i on
      const ptrdiff_t window = 2 * reach + 1;
      ptrdiff_t length = 1, places = count + 2 * reach;
      for (; 2 * length < window; length *= 2) {
        places -= length;
        ky::MapRow(combine, extremes.get(), static_cast<std::size_t>(places), from, from + length);
        from = extremes.get();
      }
      ky::MapRow(combine, to, static_cast<std::size_t>(count), from, from + (window - length));
    });
  };
  return Filter(name, source, destination, prepare, body);
}

// The truncated means of n windows of 2 half + 1 elements, up to kLongestMean; false when there is
// no memory. `out` may be `levels`.
bool ShortMeans(const KyBW8* levels, ptrdiff_t n, ptrdiff_t half, KyBW8* out) noexcept {
  ProfileWindows windows;
  Scratch<std::uint16_t> sums;
  if (!windows.Allocate(n, half) || !sums.Allocate(windows.Longest())) return false;
  const auto means = ky::ChooseProfileKernels().uniform;
  windows.Run(levels, out, [&](const KyBW8* window, ptrdiff_t count, KyBW8* to) {
    means(to, static_cast<std::size_t>(count), window, static_cast<std::size_t>(2 * half + 1),
          sums.get());
  });
  return true;
}

// The same of windows of any length above 1.
bool LongMeans(const KyBW8* levels, ptrdiff_t n, ptrdiff_t half, KyBW8* out) noexcept {
  const ptrdiff_t length = 2 * half + 1;
  Scratch<std::uint32_t> sums;
  if (!sums.Allocate(n + length)) return false;
  // sums[i] is the sum of the first i elements of the extended source.
  std::uint32_t sum = 0;
  std::uint32_t* next = sums.get();
  *next++ = 0;
  for (ptrdiff_t i = 0; i < half; ++i) *next++ = sum += levels[0];
  for (ptrdiff_t i = 0; i < n; ++i) *next++ = sum += levels[i];
  for (ptrdiff_t i = 0; i < half; ++i) *next++ = sum += levels[n - 1];
  // The quotient of 32-bit integers is the upper half of the product with 2^64 / length, rounded
  // up: that is too large by less than 2^-32, and only 1 / length or more could change the result.
  // NOLINTBEGIN(clang-analyzer-core.*): length is at least 3, and all of sums is filled
  __extension__ using Product = unsigned __int128;
  const std::uint64_t reciprocal = UINT64_MAX / static_cast<std::uint64_t>(length) + 1;
  for (ptrdiff_t i = 0; i < n; ++i)
    out[i] = static_cast<KyBW8>(Product{sums[i + length] - sums[i]} * reciprocal >> 64);
  // NOLINTEND(clang-analyzer-core.*)
  return true;
}

// Passes of a filter of three elements over a profile, in place. Where a pass has changed nothing
// nearby, the next one changes nothing either, so it runs on the other blocks only. These soon are
// few, as a profile becomes level from its lowest elements outwards.
class BinomialPasses {
 public:
  bool Allocate(ptrdiff_t n) noexcept {
    n_ = n;
    const ptrdiff_t blocks = (n + kBlock - 1) / kBlock;
    if (!window_.Allocate(kBlock + 2) || !active_.Allocate(blocks) || !next_.Allocate(blocks))
      return false;
    for (count_ = 0; count_ < blocks; ++count_) active_[count_] = count_;
    return true;
  }
  // `from` is the source in the first pass, and `out` in all others.
  void Run(const KyBW8* from, KyBW8* out) noexcept {
    const auto smooth = ky::ChooseProfileKernels().binomial;
    KyBW8* const window = window_.get();
    ptrdiff_t nextCount = 0, passed = -1;  // the block before the one being filtered
    KyBW8 left = 0;                        // the last element of `passed` before this pass
    for (ptrdiff_t i = 0; i < count_; ++i) {
      const ptrdiff_t block = active_[i], begin = block * kBlock;
      const ptrdiff_t end = std::min(begin + kBlock, n_), size = end - begin;
      window[0] = block == 0 ? from[0] : block == passed + 1 ? left : from[begin - 1];
      std::copy_n(from + begin, size, window + 1);
      window[size + 1] = from[std::min(end, n_ - 1)];
      left = window[size];
      passed = block;
      const auto elements = static_cast<std::size_t>(size);
      smooth(out + begin, elements, window, window + 1, window + 2);
      if (std::memcmp(out + begin, window + 1, elements) == 0) continue;
      ptrdiff_t near = std::max<ptrdiff_t>(block - 1, nextCount > 0 ? next_[nextCount - 1] + 1 : 0);
      for (; near <= block + 1 && near * kBlock < n_; ++near) next_[nextCount++] = near;
    }
    count_ = nextCount;
    std::copy_n(next_.get(), nextCount, active_.get());
  }
  bool Done() const noexcept { return count_ == 0; }

 private:
  static constexpr ptrdiff_t kBlock = 1024;

  ptrdiff_t n_ = 0, count_ = 0;
  Scratch<KyBW8> window_;
  Scratch<ptrdiff_t> active_, next_;  // blocks, ascending
};

}  // namespace

KY_ERRORS ImgProfileDerivative(const KyBW8Vector* source, KyBW8Vector* destination) noexcept {
  ProfileWindows windows;
  const auto prepare = [&](ptrdiff_t n) { return windows.Allocate(n, 1); };
  const auto body = [&](const KyBW8* levels, ptrdiff_t n, KyBW8* out) {
    const auto difference = [](int from, int to) {
      return static_cast<KyBW8>(std::clamp(to - from + 128, 0, 255));
    };
    const KyBW8 first = difference(levels[0], levels[std::min<ptrdiff_t>(1, n - 1)]);
    const KyBW8 last = difference(levels[std::max<ptrdiff_t>(n - 2, 0)], levels[n - 1]);
    const auto slope = ky::ChooseProfileKernels().slope;
    windows.Run(levels, out, [&](const KyBW8* window, ptrdiff_t count, KyBW8* to) {
      slope(to, static_cast<std::size_t>(count), window, window + 2);
    });
    out[0] = first;
    out[n - 1] = last;
  };
  return Filter("ImgProfileDerivative", source, destination, prepare, body);
}

KY_ERRORS ImgConvolUniform(const KyBW8Vector* source, KyBW8Vector* destination,
                           unsigned int halfWidth) noexcept {
  return Call("ImgConvolUniform", [&] {
    if (source == nullptr || destination == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    const ptrdiff_t n = source->GetNumElements(), half = halfWidth, length = 2 * half + 1;
    if (n < length || destination->GetNumElements() != n) return KY_ERROR_NOT_256_ENTRIES;
    const KyBW8* const levels = source->GetDataPtr();
    KyBW8* const out = destination->GetDataPtr();
    if (half == 0) {
      std::copy_n(levels, n, out);
      return KY_OK;
    }
    const bool hadMemory = length <= ky::kLongestMean ? ShortMeans(levels, n, half, out)
                                                      : LongMeans(levels, n, half, out);
    return hadMemory ? KY_OK : KY_ERROR_NOT_ENOUGH_MEMORY;
  });
}

KY_ERRORS ImgConvolBinomial(const KyBW8Vector* source, KyBW8Vector* destination,
                            unsigned int passes) noexcept {
  BinomialPasses smoothing;
  const auto prepare = [&](ptrdiff_t n) { return smoothing.Allocate(n); };
  const auto body = [&](const KyBW8* levels, ptrdiff_t, KyBW8* out) {
    // Each pass lowers the sum of the levels or, with the sum the same, that of their squares; or
    // it changes nothing, and no later one will.
    for (unsigned pass = 0; pass < passes && !smoothing.Done(); ++pass, levels = out)
      smoothing.Run(levels, out);
  };
  return Filter("ImgConvolBinomial (KyBW8Vector)", source, destination, prepare, body);
}

KY_ERRORS ImgDilate(const KyBW8Vector* source, KyBW8Vector* destination,
                    unsigned int passes) noexcept {
  return Extremes<KY_OPER_MAX>("ImgDilate (KyBW8Vector)", source, destination, passes);
}
KY_ERRORS ImgErode(const KyBW8Vector* source, KyBW8Vector* destination,
                   unsigned int passes) noexcept {
  return Extremes<KY_OPER_MIN>("ImgErode (KyBW8Vector)", source, destination, passes);
}
