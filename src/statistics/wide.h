// Integers that sums over whole images need: of 128 bits, and the little that is needed of 192 and
// 256.
#pragma once

#include <cmath>
#include <cstdint>

namespace ky {

__extension__ using Int128 = __int128;
__extension__ using Unsigned128 = unsigned __int128;

// Rounded once.
inline double ToDouble(Int128 value) noexcept { return static_cast<double>(value); }
inline double ToDouble(Unsigned128 value) noexcept { return static_cast<double>(value); }

// A sum of 192 bits: m30 of a row of 2^31 white pixels needs 130.
class WideSum {
 public:
  void Add(Unsigned128 value) noexcept {
    low_ += value;
    high_ += low_ < value;
  }
  void Add(const WideSum& other) noexcept {
    Add(other.low_);
    high_ += other.high_;
  }
  void MultiplyBy(std::uint64_t factor) noexcept {
    const Unsigned128 lower = Unsigned128{static_cast<std::uint64_t>(low_)} * factor;
    const Unsigned128 upper = (low_ >> 64) * factor + (lower >> 64);
    high_ = high_ * factor + static_cast<std::uint64_t>(upper >> 64);
    low_ = upper << 64 | static_cast<std::uint64_t>(lower);
  }
  // Exact below 2^53, otherwise within 2^-52 of the value.
  double ToDouble() const noexcept {
    return static_cast<double>(low_) + std::ldexp(static_cast<double>(high_), 128);
  }

  // The value, of one that fits 127 bits.
  Int128 Low() const noexcept { return static_cast<Int128>(low_); }

 private:
  Unsigned128 low_ = 0;
  std::uint64_t high_ = 0;
};

// A number of 256 bits.
struct Wide {
  Unsigned128 high, low;
};
inline Wide Product(Unsigned128 a, Unsigned128 b) noexcept {
  const auto lower = [](Unsigned128 v) { return v & UINT64_MAX; };
  const Unsigned128 low = lower(a) * lower(b), cross1 = (a >> 64) * lower(b),
                    cross2 = lower(a) * (b >> 64);
  const Unsigned128 middle = (low >> 64) + lower(cross1) + lower(cross2);
  return {(a >> 64) * (b >> 64) + (cross1 >> 64) + (cross2 >> 64) + (middle >> 64),
          middle << 64 | lower(low)};
}
// a - b, of which a is the larger.
inline double Difference(const Wide& a, const Wide& b) noexcept {
  const Unsigned128 low = a.low - b.low, high = a.high - b.high - (a.low < b.low);
  return static_cast<double>(low) + std::ldexp(static_cast<double>(high), 128);
}

}  // namespace ky
