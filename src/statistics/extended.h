// Numbers of 64 significant bits. Each result is rounded to the nearest of them, and halfway cases
// to the even one: what x86 calls extended precision, made of integers so that every processor has
// it.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>

#include "statistics/wide.h"

namespace ky {

class Extended {
 public:
  explicit Extended(std::uint64_t value) noexcept : Extended(false, value, 0) {}
  explicit Extended(std::int32_t value) noexcept
      : Extended(value < 0, static_cast<std::uint64_t>(value < 0 ? -std::int64_t{value} : value),
                 0) {}

  float ToFloat() const noexcept {
    const float magnitude = std::ldexp(static_cast<float>(digits_), exponent_);
    return isNegative_ ? -magnitude : magnitude;
  }

  friend Extended operator*(const Extended& a, const Extended& b) noexcept {
    return {a.isNegative_ != b.isNegative_, Unsigned128{a.digits_} * b.digits_,
            a.exponent_ + b.exponent_};
  }
  // b must not be 0.
  friend Extended operator/(const Extended& a, const Extended& b) noexcept {
    const Unsigned128 upper = Unsigned128{a.digits_} << 64;
    const Unsigned128 rest = upper % b.digits_ << 2;
    // Two bits more than the quotient needs; the lower one also stands for all that follow it.
    const Unsigned128 quotient =
        upper / b.digits_ << 2 | rest / b.digits_ | (rest % b.digits_ != 0 ? 1 : 0);
    return {a.isNegative_ != b.isNegative_, quotient, a.exponent_ - b.exponent_ - 66};
  }
  friend Extended operator-(Extended a, Extended b) noexcept {
    b.isNegative_ = !b.isNegative_;
    if (a.digits_ == 0) return b;
    if (b.digits_ == 0) return a;
    if (a.exponent_ < b.exponent_) std::swap(a, b);
    // With all bits of the smaller one, or so many that the lowest can stand for what follows.
    constexpr int kMost = 62;
    const int apart = a.exponent_ - b.exponent_;
    const int up = apart < kMost ? apart : kMost, down = apart - up;
    const Unsigned128 larger = Unsigned128{a.digits_} << up;
    Unsigned128 smaller = down < 64 ? b.digits_ >> down : 0;
    if (down >= 64 || smaller << down != b.digits_) smaller |= 1;
    if (a.isNegative_ == b.isNegative_) return {a.isNegative_, larger + smaller, a.exponent_ - up};
    if (larger >= smaller) return {a.isNegative_, larger - smaller, a.exponent_ - up};
    return {b.isNegative_, smaller - larger, a.exponent_ - up};
  }

 private:
  // value * 2^exponent, rounded.
  Extended(bool isNegative, Unsigned128 value, int exponent) noexcept : isNegative_(isNegative) {
    if (value == 0) return;
    const auto high = static_cast<std::uint64_t>(value >> 64);
    const auto low = static_cast<std::uint64_t>(value);
    const int surplus = high != 0 ? 64 - std::countl_zero(high) : -std::countl_zero(low);
    exponent_ = exponent + surplus;
    if (surplus <= 0) {
      digits_ = low << -surplus;
      return;
    }
    digits_ = static_cast<std::uint64_t>(value >> surplus);
    const Unsigned128 half = Unsigned128{1} << (surplus - 1), rest = value & (2 * half - 1);
    if (rest > half || (rest == half && digits_ % 2 != 0)) ++digits_;
    if (digits_ == 0) {
      digits_ = std::uint64_t{1} << 63;
      ++exponent_;
    }
  }

  // digits * 2^exponent; the highest bit is set, but in 0.
  bool isNegative_;
  int exponent_ = 0;
  std::uint64_t digits_ = 0;
};

}  // namespace ky
