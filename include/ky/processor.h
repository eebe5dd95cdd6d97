// The choice between accelerated and plain code.
#pragma once

#include "ky/export.h"

/// Nonzero when accelerated code may run: the processor can, and `KySetMMX(0)` is not in force.
/// Every function reads this once a call; both paths give the same bytes.
KY_API int KyGetMMX() noexcept;

/// 0 forces the plain path in the whole process, any other value allows the accelerated one again
/// where the processor has it.
KY_API void KySetMMX(int allowed) noexcept;
