/// @file
/// @ingroup status
/// The choice between accelerated and plain code.
#pragma once

#include "ky/export.h"

/// The paths that calls take through the library, the narrower first. All of them give the same
/// bytes. An x86-64 processor has plain to AVX-512, a 64-bit Arm processor plain and NEON.
enum KY_PATHS {
  KY_PATH_PLAIN = 0,   ///< "plain": code for any processor
  KY_PATH_SSSE3 = 1,   ///< "ssse3"
  KY_PATH_SSE4 = 2,    ///< "sse4": SSE 4.2, with AES and carry-less multiplication
  KY_PATH_AVX2 = 3,    ///< "avx2": with FMA, BMI2 and F16C
  KY_PATH_AVX512 = 4,  ///< "avx512": from Ice Lake servers and Zen 4 on
  KY_PATH_NEON = 5,    ///< "neon"
};

/// Returns the name of the path that calls take at present: the widest that the processor supports,
/// that the library was compiled for, and that `KyGetMMX` allows. It is part of `ky::image`.
KY_API const char* KyGetPath() noexcept;

/// Returns the widest path that calls may take, which the processor need not have: a value other
/// than `KY_PATH_PLAIN` (0) when accelerated code may run. That is so when the processor supports
/// it, `KySetMMX(0)` is not in force, and the environment variable `KY_PATH` does not hold "plain".
/// The variable limits the process to the path that it names; it is read once, by the first call
/// that needs it, and limits nothing when it holds another name. Every function reads the limit
/// once per call.
KY_API int KyGetMMX() noexcept;

/// Chooses for the whole process: 0 forces the plain path, and any other value allows the
/// accelerated ones again where the processor supports them and `KY_PATH` allows them.
KY_API void KySetMMX(int allowed) noexcept;
