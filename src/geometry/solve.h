// Small systems of equations.
#pragma once

#include <cstddef>

#include "ky/status.h"

namespace ky {

// Solves sum over i of m[i][k] * u[i] = r[k] for k = 0, 1, 2 by Cramer's rule and writes u over r.
// m lies by rows, `rowLength` elements apart; its columns are the equations. Determinants are
// computed in double precision by the rule of Sarrus. 1050 when that of m is 0; r stays as it is.
inline KY_ERRORS SolveCramer3(const float* m, std::ptrdiff_t rowLength, float (&r)[3]) noexcept {
  struct Row {
    double x, y, z;
  };
  const auto determinant = [](const Row& a, const Row& b, const Row& c) {
    return a.x * b.y * c.z + a.y * b.z * c.x + a.z * b.x * c.y - a.z * b.y * c.x - a.x * b.z * c.y -
           a.y * b.x * c.z;
  };
  const auto row = [&](const float* first) { return Row{first[0], first[1], first[2]}; };
  const Row a = row(m), b = row(m + rowLength), c = row(m + 2 * rowLength), right = row(r);
  const double all = determinant(a, b, c);
  if (all == 0.0) return KY_ERROR_SINGULAR_SYSTEM;
  r[0] = static_cast<float>(determinant(right, b, c) / all);
  r[1] = static_cast<float>(determinant(a, right, c) / all);
  r[2] = static_cast<float>(determinant(a, b, right) / all);
  return KY_OK;
}

}  // namespace ky
