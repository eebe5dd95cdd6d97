/// @file
/// @ingroup status
/// The version of the library; the build reads it from here.
#pragma once

#include "ky/export.h"

#define KY_VERSION_MAJOR 0  ///< changes with the interface
#define KY_VERSION_MINOR 1  ///< changes with additions
#define KY_VERSION_PATCH 0  ///< changes with corrections

/// Returns the version of the library that runs, as "major.minor.patch". The macros give the
/// version of the headers that a program was compiled with.
KY_API const char* KyGetVersion() noexcept;
