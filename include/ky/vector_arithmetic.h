// Generic vectors combined with constants.
#pragma once

#include "ky/export.h"
#include "ky/operators.h"
#include "ky/status.h"
#include "ky/vector.h"

/// Combines the elements a number `first` to `last`, both included, of a vector's groups in use
/// with a constant b and puts the results into a second vector at the same places. The operations
/// are 0 to 30 and 33 of ImgOper, with the greatest value of the elements' type in place of 255 and
/// one more in place of 256; results are limited to the type, but for the shifts and 29 and 30,
/// which wrap. Divisions truncate. The constant is taken modulo the size of the elements. The
/// second vector may be the first. One without data gets the structure of the first; its groups in
/// use reach at least to the last result.
///
/// Errors, in this order: 1003 for another operation, 1601 for a missing vector, 1605, 1606 for a
/// data size or type of no integers, 1602 when the second vector has others, 1010 unless 0 <= first
/// <= last and both vectors reach that far, 1303. Trace "ImgVect1c2".
KY_API KY_ERRORS ImgVect1c2(ARITH_LOGIC_OPERATIONS operation, KyVector* vector, int constant,
                            KyVector* result, int first, int last) noexcept;

/// There are no operations with floating-point constants: 1601 for a missing vector, 1605 for one
/// of floating-point elements (data type 4), 1606 for any other. Trace "ImgVect1c2".
KY_API KY_ERRORS ImgVect1c2(ARITH_LOGIC_OPERATIONS operation, KyVector* vector, double constant,
                            KyVector* result) noexcept;
