// Against the C library's functions in long double.
#include "foundation/elementary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class Numbers {
 public:
  double Between(double least, double most) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return least + (most - least) * std::ldexp(static_cast<double>(state_ >> 11), -53);
  }
  // Of either sign, with an exponent of 2 from `least` to `most`.
  double Scaled(int least, int most) {
    const double sign = Between(0, 1) < 0.5 ? -1 : 1;
    return sign * std::ldexp(Between(1, 2), static_cast<int>(Between(least, most + 1)));
  }

 private:
  std::uint64_t state_ = 1;
};

// The error in units of the last place.
double ErrorOf(double value, long double exact) {
  const double next = static_cast<double>(exact);
  if (value == next) return 0.5;
  if (!std::isfinite(value) || !std::isfinite(next)) return kInfinity;
  const double unit = std::nextafter(std::abs(next), kInfinity) - std::abs(next);
  return static_cast<double>(std::abs(value - exact) / unit);
}

TEST(Elementary, AsExactAsDocumented) {
  Numbers numbers;
  double worst = 0, worstQuick = 0;
  const auto check = [&](double value, long double exact, const char* name, double x,
                         double y = 0) {
    const double error = ErrorOf(value, exact);
    worst = std::max(worst, error);
    EXPECT_LE(error, 0.6) << name << " " << x << " " << y;
  };
  const auto checkQuick = [&](double value, long double exact, const char* name, double x) {
    worstQuick = std::max(worstQuick, ErrorOf(value, exact));
    EXPECT_LE(ErrorOf(value, exact), 3) << name << " " << x;
  };
  using Long = long double;
  for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
    const double x = numbers.Scaled(-60, 9), y = numbers.Scaled(-60, 9),
                 small = numbers.Scaled(-40, 3);
    const double any = numbers.Scaled(-1000, 1000), other = any * numbers.Scaled(-30, 3);
    check(ky::Exp(x / 2), std::exp(Long{x / 2}), "exp", x / 2);
    checkQuick(ky::Log(std::abs(any)), std::log(Long{std::abs(any)}), "log", any);
    checkQuick(ky::Log(1 + small / 1e3), std::log(Long{1 + small / 1e3}), "log", 1 + small / 1e3);
    check(ky::Log1p(std::abs(any)), std::log1p(Long{std::abs(any)}), "log1p", any);
    check(ky::Log1p(-std::abs(small) / 32), std::log1p(Long{-std::abs(small) / 32}), "log1p",
          small);
    check(ky::Log10(std::abs(x)), std::log10(Long{std::abs(x)}), "log10", x);
    check(ky::Pow(std::abs(x), small), std::pow(Long{std::abs(x)}, Long{small}), "pow", x, small);
    check(ky::Atan2(any, other), std::atan2(Long{any}, Long{other}), "atan2", any, other);
    check(ky::Atan2(x, y), std::atan2(Long{x}, Long{y}), "atan2", x, y);
    checkQuick(ky::Hypot(any, other), std::hypot(Long{any}, Long{other}), "hypot", any);
    const double angle = numbers.Scaled(-40, 29);
    check(ky::Sin(angle), std::sin(Long{angle}), "sin", angle);
    check(ky::Cos(angle), std::cos(Long{angle}), "cos", angle);
    checkQuick(ky::Expm1(x), std::expm1(Long{x}), "expm1", x);
    checkQuick(ky::Tanh(x), std::tanh(Long{x}), "tanh", x);
  }
  // Next to the zeros of sine and cosine.
  for (int k = 1; k < 1000; ++k) {
    const double angle = k * 1.5707963267948966;
    EXPECT_NEAR(ky::Sin(angle), static_cast<double>(std::sin(Long{angle})),
                0x1p-75 + (k % 2) * 0x1p-53);
    EXPECT_NEAR(ky::Cos(angle), static_cast<double>(std::cos(Long{angle})),
                0x1p-75 + (1 - k % 2) * 0x1p-53);
  }
  RecordProperty("worst", std::to_string(worst) + " " + std::to_string(worstQuick));
}

bool Same(double a, double b) {
  return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}

TEST(Elementary, SpecialNumbersAsInTheCLibrary) {
  constexpr double kSmallest = std::numeric_limits<double>::denorm_min();
  constexpr double kNumbers[] = {0.0,   1.0, 0.5, 2.0,       1e-310, kSmallest,
                                 1e308, 710, 746, kInfinity, kNaN};
  for (const double a : kNumbers)
    for (const double x : {a, -a}) {
      SCOPED_TRACE(x);
      EXPECT_TRUE(Same(ky::Exp(x), std::exp(x)) || std::isnormal(ky::Exp(x)));
      EXPECT_TRUE(Same(ky::Expm1(x), std::expm1(x)) || std::abs(x) < 3);
      EXPECT_TRUE(Same(ky::Log(x), std::log(x)));
      EXPECT_TRUE(Same(ky::Log1p(x), std::log1p(x)) || (x >= 1 && x < 1e3));
      EXPECT_TRUE(Same(ky::Log10(x), std::log10(x)));
      EXPECT_TRUE(Same(ky::Tanh(x), std::tanh(x)) || std::abs(x) < 3);
      if (!(std::abs(x) > 1e300)) {
        EXPECT_TRUE(Same(ky::Sin(x), std::sin(x)));
        EXPECT_TRUE(Same(ky::Cos(x), std::cos(x)));
      }
      EXPECT_LE(std::abs(ky::Sin(1e308)), 1);
      for (const double b : kNumbers)
        for (const double y : {b, -b}) {
          EXPECT_TRUE(Same(ky::Atan2(x, y), std::atan2(x, y))) << y;
          EXPECT_TRUE(Same(ky::Hypot(x, y), std::hypot(x, y))) << y;
          EXPECT_TRUE(std::signbit(x) || Same(ky::Pow(x, y), std::pow(x, y))) << y;
        }
    }
}

}  // namespace
