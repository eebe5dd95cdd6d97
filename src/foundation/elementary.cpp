// Each function brings its argument next to an entry of a table, and expands what is left over into
// a short power series. The tables are made by the compiler.
#include "foundation/elementary.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>

namespace ky {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A number of twice the precision: high + low, where |low| is at most half a unit of high. Sums and
// products are right to some 2^-100.
struct Twice {
  double high, low = 0;
};
// Of |a| >= |b|.
constexpr Twice QuickSum(double a, double b) noexcept {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}
constexpr Twice Sum(double a, double b) noexcept {
  const double sum = a + b, part = sum - a;
  return {sum, (a - (sum - part)) + (b - part)};
}
// Dekker's, for magnitudes below 2^995.
constexpr Twice Product(double a, double b) noexcept {
  constexpr double kSplit = 0x1p27 + 1;
  const double bigA = a * kSplit, highA = bigA - (bigA - a), lowA = a - highA;
  const double bigB = b * kSplit, highB = bigB - (bigB - b), lowB = b - highB;
  const double product = a * b;
  return {product, ((highA * highB - product) + highA * lowB + lowA * highB) + lowA * lowB};
}
constexpr Twice operator-(Twice a) noexcept { return {-a.high, -a.low}; }
constexpr Twice operator+(Twice a, Twice b) noexcept {
  const Twice high = Sum(a.high, b.high), low = Sum(a.low, b.low);
  const Twice part = QuickSum(high.high, high.low + low.high);
  return QuickSum(part.high, part.low + low.low);
}
constexpr Twice operator*(Twice a, Twice b) noexcept {
  const Twice product = Product(a.high, b.high);
  return QuickSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}
constexpr Twice operator/(Twice a, Twice b) noexcept {
  const double quotient = a.high / b.high;
  const Twice product = Product(quotient, b.high);
  const double rest = ((a.high - product.high) - product.low) + (a.low - quotient * b.low);
  return QuickSum(quotient, rest / b.high);
}

// The series sum of x^k / k! from k on in steps of 2, with changing signs, or in steps of 1.
constexpr Twice Exponential(Twice x, int k, int step) noexcept {
  Twice term{1}, sum{0};
  for (int i = 1; i <= k; ++i) term = term * x / Twice{static_cast<double>(i)};
  for (; k < 40; k += step) {
    sum = sum + term;
    for (int i = 1; i <= step; ++i) term = term * x / Twice{static_cast<double>(k + i)};
    if (step == 2) term = -term;
  }
  return sum;
}
// artanh x, or arctan x where odd terms change signs.
constexpr Twice InverseTangent(Twice x, bool changing) noexcept {
  Twice power = x, sum{0};
  for (int k = 1; k < 140; k += 2) {
    sum = sum + power / Twice{static_cast<double>(k)};
    power = power * x * x;
    if (changing) power = -power;
  }
  return sum;
}
constexpr Twice Ratio(int a, int b) noexcept {
  return Twice{static_cast<double>(a)} / Twice{static_cast<double>(b)};
}

constexpr Twice kLog2 = [] {
  const Twice half = InverseTangent(Ratio(1, 3), false);
  return half + half;
}();
// Machin's formula.
constexpr Twice kQuarterPi =
    Twice{4} * InverseTangent(Ratio(1, 5), true) + -InverseTangent(Ratio(1, 239), true);
constexpr Twice kHalfPi = Twice{2} * kQuarterPi, kPi = Twice{4} * kQuarterPi;

// 2^(k / 128).
constexpr int kPowers = 128;
constexpr auto kPowerOf2 = [] {
  std::array<Twice, kPowers> table{};
  for (int k = 0; k < kPowers; ++k)
    table[static_cast<std::size_t>(k)] = Exponential(kLog2 * Ratio(k, kPowers), 0, 1);
  return table;
}();
// log(k / 128) for quotients from the root of 1/2 to that of 2.
constexpr int kLogs = 128, kFirstLog = 90, kLastLog = 182;
constexpr auto kLogOf = [] {
  std::array<Twice, kLastLog - kFirstLog + 1> table{};
  for (int k = kFirstLog; k <= kLastLog; ++k)
    table[static_cast<std::size_t>(k - kFirstLog)] =
        Twice{2} * InverseTangent(Ratio(k - kLogs, k + kLogs), false);
  return table;
}();
// The sine of k pi / 128, a quarter of a turn and more.
constexpr int kTurn = 256;
constexpr auto kSineOf = [] {
  std::array<Twice, kTurn> table{};
  for (int k = 0; k <= kTurn / 8; ++k) {
    const Twice angle = kPi * Ratio(2 * k, kTurn);
    const auto set = [&](int at, Twice value) { table[static_cast<std::size_t>(at)] = value; };
    const Twice sine = Exponential(angle, 1, 2), cosine = Exponential(angle, 0, 2);
    set(k, sine);
    set(kTurn / 2 - k, sine);
    set(kTurn / 4 - k, cosine);
    set(kTurn / 4 + k, cosine);
    set((kTurn - k) % kTurn, -sine);
    set(kTurn / 2 + k, -sine);
    set(kTurn * 3 / 4 - k, -cosine);
    set(kTurn * 3 / 4 + k, -cosine);
  }
  return table;
}();
// arctan(k / 64).
constexpr int kArcs = 64;
constexpr auto kArcOf = [] {
  std::array<Twice, kArcs + 1> table{};
  // Next to 1 the series of arctan converges slowly, so that the angle of 1/2 is taken out.
  const Twice ofHalf = InverseTangent(Ratio(1, 2), true);
  for (int k = 0; k <= kArcs; ++k)
    table[static_cast<std::size_t>(k)] =
        k <= kArcs / 2 ? InverseTangent(Ratio(k, kArcs), true)
                       : ofHalf + InverseTangent(Ratio(2 * k - kArcs, 2 * kArcs + k), true);
  return table;
}();

template <class Table>
Twice At(const Table& table, long long i) noexcept {
  return table[static_cast<std::size_t>(i)];
}

// The nearest integer, for numbers below 2^51.
double Nearest(double x) noexcept {
  constexpr double kShift = 0x1.8p52;
  return (x + kShift) - kShift;
}

// mantissa * 2^exponent, from the root of 1/2 to that of 2, of a finite number above 0.
struct Scaled {
  double mantissa;
  int exponent;
};
Scaled Split(double x) noexcept {
  int below = 0;
  if (x < std::numeric_limits<double>::min()) {
    x *= 0x1p54;
    below = 54;
  }
  // The exponent changes at the root of 1/2.
  constexpr std::uint64_t kRoot = std::bit_cast<std::uint64_t>(std::numbers::sqrt2 / 2);
  constexpr std::uint64_t kExponent = std::uint64_t{0xFFF} << 52;
  const auto bits = std::bit_cast<std::uint64_t>(x);
  const std::uint64_t exponent = (bits - kRoot) & kExponent;
  return {std::bit_cast<double>(bits - exponent),
          static_cast<int>(static_cast<std::int64_t>(exponent) >> 52) - below};
}
// x * 2^exponent, as std::ldexp gives it, of an x of 1/4 to 4.
double Scale(double x, int exponent) noexcept {
  if (exponent < -1000 || exponent > 1000) return std::ldexp(x, exponent);
  return x * std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}
// A constant's leading 33 bits, whose product with an integer below 2^20 is exact, and the others.
struct Parts {
  double leading, others;
};
constexpr Parts PartsOf(Twice x) noexcept {
  constexpr std::uint64_t kCut = (std::uint64_t{1} << 20) - 1;
  const double leading = std::bit_cast<double>(std::bit_cast<std::uint64_t>(x.high) & ~kCut);
  return {leading, (x.high - leading) + x.low};
}

// exp(x) = 2^exponent power (1 + less1), where the power is an entry of the table: for |x| < 2^20.
struct Exponent {
  Twice power, less1;
  int exponent;
};
Exponent Expand(Twice x) noexcept {
  constexpr Twice kStep = kLog2 / Twice{kPowers};
  constexpr Parts kParts = PartsOf(kStep);
  const double steps = Nearest(x.high * (1 / kStep.high));
  // The first difference is exact.
  const Twice rest = QuickSum(x.high - steps * kParts.leading, x.low - steps * kParts.others);
  const double r = rest.high;
  const double tail =
      r * r * (1.0 / 2 + r * (1.0 / 6 + r * (1.0 / 24 + r * (1.0 / 120 + r * (1.0 / 720)))));
  const auto all = static_cast<int>(steps);
  const int exponent = all >> 7, k = all & (kPowers - 1);
  static_assert(kPowers == 1 << 7);
  return {At(kPowerOf2, k), QuickSum(r, rest.low + tail), exponent};
}
double ExpOf(Twice x) noexcept {
  if (x.high > 710) return kInfinity;
  if (x.high < -746) return 0;
  const Exponent e = Expand(x);
  const Twice more = e.power * e.less1;
  return Scale(e.power.high + (more.high + (e.power.low + more.low)), e.exponent);
}

// log(m) = log(entry) + 2 artanh s, where s is the ratio of difference and sum, and artanh s is s +
// tail.
double TailOf(double s) noexcept {
  const double square = s * s;
  return s * square * (1.0 / 3 + square * (1.0 / 5 + square * (1.0 / 7 + square * (1.0 / 9))));
}
constexpr Parts kLog2Parts = PartsOf(kLog2);

// log(x) of a finite x above 0.
Twice LogOf(Twice x) noexcept {
  const auto [mantissa, exponent] = Split(x.high);
  const double nearest = Nearest(mantissa * kLogs), entry = nearest / kLogs;
  const double low = x.low == 0 ? 0 : std::ldexp(x.low, -exponent);
  const Twice s = Sum(mantissa - entry, low) / (Sum(mantissa, entry) + Twice{low});
  const Twice small = QuickSum(2 * s.high, 2 * (s.low + TailOf(s.high)));
  const Twice whole{exponent * kLog2Parts.leading, exponent * kLog2Parts.others};
  return whole + At(kLogOf, static_cast<int>(nearest) - kFirstLog) + small;
}
// Within 3 units in the last place.
double QuickLogOf(double x) noexcept {
  const auto [mantissa, exponent] = Split(x);
  const double nearest = Nearest(mantissa * kLogs), entry = nearest / kLogs;
  const double s = (mantissa - entry) / (mantissa + entry);
  const Twice of = At(kLogOf, static_cast<int>(nearest) - kFirstLog);
  const Twice large = QuickSum(exponent * kLog2Parts.leading, of.high);
  const double low = exponent * kLog2Parts.others + (large.low + of.low);
  return large.high + (2 * s + (2 * TailOf(s) + low));
}
// log(x) of other numbers.
double LogBeyond(double x) noexcept { return x == 0 ? -kInfinity : x > 0 ? kInfinity : kNaN; }
bool HasLog(double x) noexcept { return x > 0 && x < kInfinity; }

// An angle as a multiple of a table's step, and what is left over.
struct Reduced {
  int step;
  Twice rest;
};
Reduced Reduce(double angle) noexcept {
  if (std::abs(angle) > 0x1p30) angle = std::fmod(angle, 2 * std::numbers::pi);
  constexpr Twice kStep = kPi * Ratio(2, kTurn);
  const double steps = Nearest(angle / kStep.high);
  const Twice rest = Twice{angle} + -(kStep * Twice{steps});
  return {static_cast<int>(static_cast<long long>(steps) & (kTurn - 1)), rest};
}
double SineOf(Reduced angle) noexcept {
  const double r = angle.rest.high, square = r * r;
  // sin r, and 1 - cos r.
  const Twice sine = QuickSum(
      r, angle.rest.low + r * square * (-1.0 / 6 + square * (1.0 / 120 + square * (-1.0 / 5040))));
  const double less = square * (1.0 / 2 + square * (-1.0 / 24 + square * (1.0 / 720)));
  const Twice of = At(kSineOf, angle.step);
  const Twice beside = At(kSineOf, (angle.step + kTurn / 4) & (kTurn - 1));
  return (of + beside * sine + Twice{-of.high * less}).high;
}

}  // namespace

double Exp(double x) noexcept { return std::isnan(x) ? x : ExpOf({x}); }

double Expm1(double x) noexcept {
  if (!(x < 710)) return x > 0 ? kInfinity : x;
  if (x < -40) return -1;
  if (x == 0) return x;
  const Exponent e = Expand({x});
  const double unit = std::ldexp(1, -e.exponent);
  const Twice sum = (e.power + Twice{-unit}) + e.power * e.less1;
  return std::ldexp(sum.high, e.exponent);
}

double Tanh(double x) noexcept {
  const double twice = Expm1(2 * std::clamp(x, -20.0, 20.0));
  return twice / (twice + 2);
}

double Log(double x) noexcept { return HasLog(x) ? QuickLogOf(x) : LogBeyond(x); }
double Log1p(double x) noexcept {
  if (std::abs(x) < 0x1p-60) return x;
  return HasLog(1 + x) ? LogOf(Sum(1, x)).high : LogBeyond(1 + x);
}
double Log10(double x) noexcept {
  constexpr Twice kLog10 = kLog2 * Twice{3} + Twice{2} * InverseTangent(Ratio(1, 9), false);
  return HasLog(x) ? (LogOf({x}) / kLog10).high : LogBeyond(x);
}

double Pow(double x, double y) noexcept {
  if (y == 0 || x == 1) return 1;
  if (std::isnan(x) || std::isnan(y) || x < 0) return kNaN;
  if (x == 0 || x == kInfinity) return (x == 0) == (y < 0) ? kInfinity : 0;
  const Twice log = LogOf({x});
  // Beyond this all results are 0 or infinite.
  if (std::abs(log.high * y) > 1000) return (log.high > 0) == (y > 0) ? kInfinity : 0;
  return ExpOf(log * Twice{y});
}

double Sin(double angle) noexcept {
  if (!std::isfinite(angle)) return kNaN;
  return angle == 0 ? angle : SineOf(Reduce(angle));
}
double Cos(double angle) noexcept {
  if (!std::isfinite(angle)) return kNaN;
  Reduced reduced = Reduce(angle);
  reduced.step = (reduced.step + kTurn / 4) & (kTurn - 1);
  return SineOf(reduced);
}

double Atan2(double y, double x) noexcept {
  if (std::isnan(x) || std::isnan(y)) return kNaN;
  if (std::isinf(x) || std::isinf(y)) {
    y = std::copysign(std::isinf(y) ? 1 : 0, y);
    x = std::copysign(std::isinf(x) ? 1 : 0, x);
  }
  double least = std::abs(y), most = std::abs(x);
  const bool isSteep = least > most;
  if (isSteep) std::swap(least, most);
  Twice angle{0};
  if (least != 0) {
    // Next to 1, where nothing overflows. What is too small to matter may become 0.
    int exponent;
    most = std::frexp(most, &exponent);
    const double scaled = std::ldexp(least, -exponent);
    if (scaled < 0x1p-500) {
      angle = {isSteep || std::signbit(x) ? 0 : least / std::abs(x)};
    } else {
      // arctan(a) = arctan(b) + arctan((a - b) / (1 + a b)).
      const double nearest = Nearest(scaled / most * kArcs);
      const Twice b{nearest / kArcs};
      const Twice u = (Twice{scaled} + -(b * Twice{most})) / (Twice{most} + b * Twice{scaled});
      const double square = u.high * u.high;
      const double tail =
          u.high * square *
          (-1.0 / 3 + square * (1.0 / 5 + square * (-1.0 / 7 + square * (1.0 / 9))));
      angle = At(kArcOf, static_cast<int>(nearest)) + QuickSum(u.high, u.low + tail);
    }
  }
  if (isSteep) angle = kHalfPi + -angle;
  if (std::signbit(x)) angle = kPi + -angle;
  return std::copysign(angle.high, y);
}

double Hypot(double x, double y) noexcept {
  if (std::isinf(x) || std::isinf(y)) return kInfinity;
  const double most = std::max(std::abs(x), std::abs(y));
  if (!(most > 0)) return most + std::abs(y);
  if (most > 0x1p-500 && most < 0x1p500) return std::sqrt(x * x + y * y);
  // Squares that neither overflow nor lose what matters.
  int exponent;
  std::frexp(most, &exponent);
  x = std::ldexp(x, -exponent);
  y = std::ldexp(y, -exponent);
  return std::ldexp(std::sqrt(x * x + y * y), exponent);
}

}  // namespace ky
