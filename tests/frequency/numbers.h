// Pictures of complex numbers, as the harness wants them.
#pragma once

#include "ky/frequency.h"
#include "tests/support/harness.h"

inline std::ostream& operator<<(std::ostream& out, KyComplex64 z) {
  return out << '(' << z.re << ", " << z.im << ')';
}

namespace ky::test {

// Multiples of a quarter, so that results often lie in the middle between two levels; or any
// numbers; one picture in eight is 0.
template <>
inline Picture<KyComplex64> RandomPicture<KyComplex64>(int width, int height, Random& random) {
  Picture<KyComplex64> picture(width, height);
  const unsigned kind = random() % 8;
  const auto part = [&] {
    const auto quarters = static_cast<float>(random() % 2001) - 1000;
    const auto rest = static_cast<float>(random() % 65536) / 65536;
    return kind == 0 ? 0 : kind < 4 ? quarters / 4 : quarters * (rest + 0.01f);
  };
  for (KyComplex64& z : picture.pixels) z = {part(), part()};
  return picture;
}

}  // namespace ky::test
