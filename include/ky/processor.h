/// @file
/// @ingroup status
/// The choice between accelerated and plain code.
#pragma once

#include "ky/export.h"

/// Returns a value other than 0 when accelerated code may run, which means that the processor
/// supports it and `KySetMMX(0)` is not in force. Every function reads this once per call; both
/// paths give the same bytes.
KY_API int KyGetMMX() noexcept;

/// Chooses for the whole process: 0 forces the plain path, and any other value allows the
/// accelerated one again where the processor supports it.
KY_API void KySetMMX(int allowed) noexcept;
