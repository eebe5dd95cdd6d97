// The version of the library; the build reads it from here.
#pragma once

#include "ky/export.h"

#define KY_VERSION_MAJOR 0
#define KY_VERSION_MINOR 1
#define KY_VERSION_PATCH 0

/// The version of the library that runs, as "major.minor.patch". The macros give the version of
/// the headers that a program was compiled with.
KY_API const char* KyGetVersion() noexcept;
