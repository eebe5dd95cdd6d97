// Exponentials, logarithms and functions of angles that are the same to the bit on every processor.
// The C library's differ in their last bits between processors and versions; these consist of sums,
// products, quotients and roots, which IEEE 754 defines. Results are within 0.6 units in the last
// place, those of Log, Hypot, Expm1 and Tanh within 3, or within 2^-75 of a sine or cosine next to
// 0. NaN, infinities and zeros give what the C library's functions give. Angles beyond 2^30 are
// first reduced by multiples of the double next to 2 pi.
#pragma once

namespace ky {

double Exp(double x) noexcept;
double Expm1(double x) noexcept;  // exp(x) - 1
double Tanh(double x) noexcept;
double Log(double x) noexcept;
double Log1p(double x) noexcept;  // log(1 + x)
double Log10(double x) noexcept;
// x is 0 or more.
double Pow(double x, double y) noexcept;
double Sin(double angle) noexcept;
double Cos(double angle) noexcept;
double Atan2(double y, double x) noexcept;
double Hypot(double x, double y) noexcept;

}  // namespace ky
