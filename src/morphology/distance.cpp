#include "ky/distance.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "foundation/frame.h"
#include "foundation/rows.h"
#include "morphology/distance_rows.h"
#include "morphology/envelope.h"

namespace {

using ky::Rows;
using ky::Scratch;

// Below 2^15 columns and rows, distances fit 16 bits and their squares 31.
constexpr std::ptrdiff_t kNarrow = (1 << 15) - 1;
bool IsNarrow(const Rows<const KyBW8>& rows) noexcept {
  return rows.width <= kNarrow && rows.height <= kNarrow;
}

const auto& KernelsOf(std::uint16_t) noexcept { return ky::ChooseDistanceKernels().narrow; }
const auto& KernelsOf(std::uint32_t) noexcept { return ky::ChooseDistanceKernels().wide; }

// Distances in two passes, down and up the image. What the first has made waits in `store`.
template <class Distance>
class Passes {
 public:
  bool Allocate(std::ptrdiff_t width) noexcept {
    const std::ptrdiff_t pitch = width + 2 * ky::kDistanceSlack;
    if (!memory_.Allocate(2 * pitch) || !pixels_.Allocate(pitch)) return false;
    row_ = memory_.get() + ky::kDistanceSlack;
    next_ = row_ + pitch;
    size_ = 2 * pitch;
    return true;
  }

  // Hands the rows to `finish(y, row)` from the last one up; false when no pixel is 0. Rows of the
  // store are read before they are finished.
  template <class Finish>
  bool Run(Rows<const KyBW8> in, Rows<Distance> store, IMG_DISTANCE_MODES mode,
           const Finish& finish) noexcept {
    const ky::DistanceKernelsOf<Distance>& kernels = KernelsOf(Distance{});
    const auto bytes = static_cast<std::size_t>(store.RowBytes());
    Forget();
    for (std::ptrdiff_t y = 0; y < in.height; ++y) {
      std::memcpy(pixels_.get(), in.Row(y), static_cast<std::size_t>(in.width));
      kernels.down[mode](next_, row_, pixels_.get(), in.width);
      std::memcpy(store.Row(y), next_, bytes);
      std::swap(row_, next_);
    }
    if (std::all_of(row_, row_ + in.width, [](Distance d) { return d == kFar; })) return false;
    Forget();
    for (std::ptrdiff_t y = in.height; y-- > 0;) {
      std::memcpy(next_, store.Row(y), bytes);
      kernels.up[mode](next_, row_, in.width);
      finish(y, next_);
      std::swap(row_, next_);
    }
    return true;
  }

 private:
  static constexpr Distance kFar = std::numeric_limits<Distance>::max();

  void Forget() noexcept { std::fill_n(memory_.get(), size_, kFar); }

  Scratch<Distance> memory_;
  Scratch<KyBW8> pixels_;
  Distance *row_ = nullptr, *next_ = nullptr;
  std::ptrdiff_t size_ = 0;
};

template <class T>
void FillWith(Rows<T> rows, T value) noexcept {
  for (std::ptrdiff_t y = 0; y < rows.height; ++y) std::fill_n(rows.Row(y), rows.width, value);
}

// min(65535, floor(scale * sqrt(square) + 1/2)), exactly.
class ScaledRoot {
 public:
  explicit ScaledRoot(float scale) noexcept : scale_(scale) {
    mantissa_ = static_cast<std::uint32_t>(std::ldexp(std::frexp(scale, &exponent_), 24));
    exponent_ -= 24;
  }
  KyBW16 operator()(std::uint64_t square) const noexcept {
    const double root = std::sqrt(static_cast<double>(square));
    const double product = std::min(65535.0, scale_ * root);
    const int floor = static_cast<int>(product);
    const double rest = product - floor;
    // The root of a square number is exact, and so is its product then; of others, both have been
    // rounded.
    const bool isExact = root == std::floor(root) && square < std::uint64_t{1} << 52;
    const bool isNear = std::abs(rest - 0.5) < 1e-9 && !isExact;
    const bool up = isNear ? IsAtLeastHalfAbove(floor, square) : rest >= 0.5;
    return static_cast<KyBW16>(floor + (up ? 1 : 0));
  }

 private:
  // scale * sqrt(square) >= n + 1/2, that is 4 scale^2 square >= (2 n + 1)^2.
  bool IsAtLeastHalfAbove(int n, std::uint64_t square) const noexcept {
    using Wide = unsigned __int128;
    const Wide left = Wide{mantissa_} * mantissa_ * square * 4;  // times 2^(2 exponent)
    const Wide right = Wide{static_cast<unsigned>(2 * n + 1)} * static_cast<unsigned>(2 * n + 1);
    const int shift = -2 * exponent_;  // above 0: with an exponent of 0, any product is 65535
    return shift < 128 && left >> shift >= right;
  }

  double scale_;
  std::uint32_t mantissa_;
  int exponent_;
};

// Squared Euclidean distances, row by row: from the columns nearby where these are near enough
// throughout the row, else from lower envelopes.
template <class Square>
class SquaredRows {
 public:
  explicit SquaredRows(const ky::DistanceKernels& kernels) noexcept : kernels_(kernels) {}

  bool Allocate(std::ptrdiff_t width) noexcept {
    return envelope_.Allocate(width) && squares_.Allocate(width + kMore) &&
           (!kLooksNearby ||
            (narrow_.Allocate(width + kMore) && squared_.Allocate(width + 2 * kMore)));
  }

  template <class Distance>
  const Square* Make(const Distance* down, std::ptrdiff_t n) noexcept {
    if constexpr (kLooksNearby)
      if (FromNearby(kernels_.nearest, squares_.get(), down, n)) return squares_.get();
    return MakeFar(down, n);
  }
  // The rounded roots, if columns are near enough.
  template <class Distance>
  bool MakeRoots(KyBW16* roots, const Distance* down, std::ptrdiff_t n) noexcept {
    return FromNearby(kernels_.nearestRoots, roots, down, n);
  }
  template <class Distance>
  const Square* MakeFar(const Distance* down, std::ptrdiff_t n) noexcept {
    envelope_.Run(squares_.get(), down, n);
    return squares_.get();
  }

 private:
  static constexpr std::ptrdiff_t kMore = ky::kReach + ky::kDistanceSlack;
  static constexpr bool kLooksNearby = sizeof(Square) == 4;
  // Rows that follow one with far columns and will have some too, most likely.
  static constexpr int kRest = 7;

  template <class Kernel, class To, class Distance>
  bool FromNearby(Kernel nearest, To* to, const Distance* down, std::ptrdiff_t n) noexcept {
    if (rest_ > 0) {
      --rest_;
      return false;
    }
    std::uint16_t* const squared = squared_.get() + kMore;
    kernels_.square(squared, Narrow(down, n), n);
    if (nearest(to, squared, n)) return true;
    rest_ = kRest;
    return false;
  }
  static const std::uint16_t* Narrow(const std::uint16_t* down, std::ptrdiff_t) noexcept {
    return down;
  }
  const std::uint16_t* Narrow(const std::uint32_t* down, std::ptrdiff_t n) noexcept {
    for (std::ptrdiff_t x = 0; x < n; ++x)
      narrow_[x] = static_cast<std::uint16_t>(std::min(down[x], 65535u));
    return narrow_.get();
  }

  const ky::DistanceKernels& kernels_;
  ky::Envelope<Square> envelope_;
  Scratch<Square> squares_;
  Scratch<std::uint16_t> narrow_, squared_;
  int rest_ = 0;
};

// Distances of the type of the store, to 16 bits. The wide ones go through their squares.
template <class Distance>
KY_ERRORS Run16(Rows<const KyBW8> in, Rows<Distance> store, Rows<KyBW16> out,
                IMG_DISTANCE_MODES mode, float scale) noexcept {
  constexpr bool kNarrowRows = sizeof(Distance) == 2;
  using Square = std::conditional_t<kNarrowRows, std::uint32_t, std::uint64_t>;
  const std::ptrdiff_t n = in.width;
  const ky::DistanceKernels& kernels = ky::ChooseDistanceKernels();
  Passes<Distance> passes;
  SquaredRows<Square> squaredRows(kernels);
  Scratch<KyBW16> results;
  Scratch<std::int32_t> unsure;
  if (!passes.Allocate(n) || !squaredRows.Allocate(n) ||
      !results.Allocate(n + ky::kDistanceSlack) || !unsure.Allocate(n))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  const ScaledRoot scaledRoot(scale);
  const auto finish = [&](std::ptrdiff_t y, const Distance* row) {
    const bool isEuclidean = mode == IMG_DISTANCE_EUCLIDEAN;
    if constexpr (kNarrowRows) {
      const KyBW16* made = results.get();
      if (isEuclidean) {
        if (scale == 1 && squaredRows.MakeRoots(out.Row(y), row, n)) return;
        const Square* const squares =
            scale == 1 ? squaredRows.MakeFar(row, n) : squaredRows.Make(row, n);
        const std::ptrdiff_t count = kernels.root(results.get(), squares, n, scale, unsure.get());
        for (std::ptrdiff_t i = 0; i < count; ++i)
          results[unsure[i]] = scaledRoot(squares[unsure[i]]);
      } else if (scale == 1) {
        made = row;
      } else {
        kernels.scale(results.get(), row, n, scale);
      }
      std::memcpy(out.Row(y), made, static_cast<std::size_t>(out.RowBytes()));
    } else {
      const Square* const squares = isEuclidean ? squaredRows.Make(row, n) : nullptr;
      for (std::ptrdiff_t x = 0; x < n; ++x)
        out.Row(y)[x] = scaledRoot(isEuclidean ? squares[x] : Square{row[x]} * row[x]);
    }
  };
  if (!passes.Run(in, store, mode, finish)) FillWith(out, KyBW16{65535});
  return KY_OK;
}

template <class Square>
KY_ERRORS Run32(Rows<const KyBW8> in, Rows<KyBW32> out) noexcept {
  Passes<std::uint32_t> passes;
  SquaredRows<Square> squaredRows(ky::ChooseDistanceKernels());
  if (!passes.Allocate(in.width) || !squaredRows.Allocate(in.width))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  const auto finish = [&](std::ptrdiff_t y, const std::uint32_t* row) {
    const Square* const squares = squaredRows.Make(row, in.width);
    for (std::ptrdiff_t x = 0; x < in.width; ++x)
      out.Row(y)[x] = static_cast<KyBW32>(std::min<std::uint64_t>(squares[x], 0xFFFFFFFF));
  };
  if (!passes.Run(in, out, IMG_DISTANCE_EUCLIDEAN, finish)) FillWith(out, KyBW32{0xFFFFFFFF});
  return KY_OK;
}

}  // namespace

KY_ERRORS ImgDistance(const KyROI<KyBW8>* source, KyROI<KyBW16>* destination,
                      IMG_DISTANCE_MODES mode, float scale) noexcept {
  return ky::Call("ImgDistance (BW8 to BW16)", [&] {
    Rows<const KyBW8> in;
    Rows<KyBW16> out;
    ky::Input<KyBW8> input;
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (mode < IMG_DISTANCE_EUCLIDEAN || mode > IMG_DISTANCE_CHESSBOARD)
      return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, "mode");
    if (!(scale > 0) || !std::isfinite(scale))
      return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "scale");
    if (out.Empty()) return KY_OK;
    if (!input.Open(in, out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (IsNarrow(in)) return Run16(input.rows(), out, out, mode, scale);
    Scratch<std::uint32_t> memory;
    if (!memory.Allocate(in.width * in.height)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    const Rows<std::uint32_t> store = {memory.get(), 4 * in.width, in.width, in.height};
    return Run16(input.rows(), store, out, mode, scale);
  });
}

KY_ERRORS ImgDistance(const KyROI<KyBW8>* source, KyROI<KyBW32>* destination) noexcept {
  return ky::Call("ImgDistance (BW8 to BW32)", [&] {
    Rows<const KyBW8> in;
    Rows<KyBW32> out;
    ky::Input<KyBW8> input;
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (out.Empty()) return KY_OK;
    if (!input.Open(in, out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    return IsNarrow(in) ? Run32<std::uint32_t>(input.rows(), out)
                        : Run32<std::uint64_t>(input.rows(), out);
  });
}
