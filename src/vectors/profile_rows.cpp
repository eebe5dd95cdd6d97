#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "vectors/profile_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "vectors/profile_rows.h"

#include <bit>

#include "foundation/bits-inl.h"
#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// floor((after - before) / 2) + 128 = floor((after + (255 - before) + 1) / 2)
struct Slope {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V before, V after) const {
    return hn::AverageRound(after, hn::Xor(before, hn::Set(d, 255)));
  }
};

// The truncated mean of a truncated mean loses nothing more: (before + 2 at + after) / 4.
struct Binomial {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V before, V at, V after) const {
    const auto mean = [&](V a, V b) HWY_ATTR {
      return hn::Sub(hn::AverageRound(a, b), hn::And(hn::Xor(a, b), hn::Set(d, 1)));
    };
    return mean(mean(before, after), at);
  }
};

struct Sum {
  using Lane = uint16_t;
  template <class D, class V, class... More>
  HWY_INLINE V operator()(D, V a, V b, More... more) const {
    V sum = hn::Add(a, b);
    ((sum = hn::Add(sum, more)), ...);
    return sum;
  }
};

// By a number whose reciprocal, scaled to 16 bits and rounded up, gives exact results.
struct Quotient {
  using Lane = uint16_t;
  int shift;
  uint16_t reciprocal;

  explicit HWY_INLINE Quotient(size_t divisor)
      : shift(static_cast<int>(std::bit_width(divisor)) - 1),
        reciprocal(static_cast<uint16_t>((size_t{1} << (16 + shift)) / divisor + 1)) {}
  template <class D, class V>
  HWY_INLINE auto operator()(D d, V sum) const {
    return AsSigned(hn::ShiftRightSame(hn::MulHigh(sum, hn::Set(d, reciprocal)), shift));
  }
};

// From above `lower` to it or below, or from below `upper` to it or above.
struct Transitions {
  using Lane = uint8_t;
  KyBW8 lower, upper;

  template <class D, class V>
  HWY_INLINE hn::Mask<D> operator()(D d, V before, V at) const {
    const auto notAbove = [&](V v) HWY_ATTR { return IsMax(hn::Set(d, lower), v); };
    const auto notBelow = [&](V v) HWY_ATTR { return IsMax(v, hn::Set(d, upper)); };
    return hn::Or(hn::AndNot(notAbove(before), notAbove(at)),
                  hn::AndNot(notBelow(before), notBelow(at)));
  }

 private:
  template <class V>
  static HWY_INLINE auto IsMax(V a, V b) {
    return hn::Eq(hn::Max(a, b), a);
  }
};

void MapSlope(KyBW8* out, size_t n, const KyBW8* before, const KyBW8* after) {
  MapSpan(Slope(), out, n, before, after);
}
void MapBinomial(KyBW8* out, size_t n, const KyBW8* before, const KyBW8* at, const KyBW8* after) {
  MapSpan(Binomial(), out, n, before, at, after);
}
size_t FindTransitions(uint16_t* places, size_t n, const KyBW8* levels, KyBW8 threshold,
                       KyBW8 edges) {
  const Transitions passes{(edges & kFalling) != 0 ? threshold : KyBW8{255},
                           (edges & kRising) != 0 ? threshold : KyBW8{0}};
  uint16_t* next = places;
  for (size_t i = 0; i < n; i += 64) {
    uint64_t bits = TruthBits(passes, levels + i - 1, levels + i);
    if (n - i < 64) bits &= ~(~uint64_t{0} << (n - i));
    // The number of places is hard to predict, that of eights of them is not. When there is no bit
    // left, the last one stands in without a branch.
    uint16_t* const end = next + std::popcount(bits);
    for (; next < end; next += 8) {
      for (int k = 0; k < 8; ++k, bits &= bits - 1) {
        const int first = std::countr_zero(bits | uint64_t{1} << 63);
        next[k] = static_cast<uint16_t>(i + static_cast<size_t>(first));
      }
    }
    next = end;
  }
  return static_cast<size_t>(next - places);
}

// Builds the sums by the binary digits of the number of levels: each digit doubles the levels that
// a sum holds, and a 1 adds one more.
void Uniform(KyBW8* out, size_t n, const KyBW8* levels, size_t length, uint16_t* sums) {
  size_t have = 1, places = n + length - 1;  // sums[i] is that of the `have` levels from i on
  const auto twice = [&](const auto* from, bool andOne) HWY_ATTR {
    places -= have + (andOne ? 1 : 0);
    if (andOne)
      MapSpan(Sum(), sums, places, from, from + have, levels + 2 * have);
    else
      MapSpan(Sum(), sums, places, from, from + have);
    have = 2 * have + (andOne ? 1 : 0);
  };
  for (int digit = static_cast<int>(std::bit_width(length)) - 2; digit >= 0; --digit) {
    const bool andOne = (length >> digit & 1) != 0;
    if (have == 1)
      twice(levels, andOne);
    else
      twice(sums, andOne);
  }
  MapSpan(Quotient(length), out, n, sums);
}

constexpr ProfileKernels kKernels = {&MapSlope, &MapBinomial, &Uniform, &FindTransitions};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ProfileKernels)
