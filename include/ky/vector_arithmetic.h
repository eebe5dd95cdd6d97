/// @file
/// @ingroup vectors
/// Generic vectors combined with constants.
#pragma once

#include "ky/export.h"
#include "ky/operators.h"
#include "ky/status.h"
#include "ky/vector.h"

/// Combines the elements a of a vector, from number `first` to number `last`, both included, with a
/// constant b, and writes the results to a second vector at the same places. The operations are 0
/// to 30 and 33 of ImgOper, with the greatest value of the elements' type in place of 255 and one
/// more in place of 256. Results are limited to the type, except those of the shifts and of 29 and
/// 30, which wrap. Divisions truncate. The constant is taken modulo the size of the elements. The
/// second vector may be the first; one without data gets the structure of the first. Afterwards its
/// groups in use reach at least to the last result.
///
/// Errors, checked in this order: `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for another operation,
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector; `KY_ERROR_VECTOR_DATA_TYPE` (1605) and
/// `KY_ERROR_VECTOR_1606` (1606) for a data size and a data type that are not those of integers;
/// `KY_ERROR_VECTOR_1602` (1602) when those of the second vector differ;
/// `KY_ERROR_PARAMETER_OUT_OF_RANGE` (1010) unless 0 <= first <= last and both vectors reach that
/// far, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace: "ImgVect1c2".
KY_API KY_ERRORS ImgVect1c2(ARITH_LOGIC_OPERATIONS operation, KyVector* vector, int constant,
                            KyVector* result, int first, int last) noexcept;

/// Always fails, as there are no operations with floating-point constants. Errors:
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector, `KY_ERROR_VECTOR_DATA_TYPE` (1605) for one
/// of floating-point elements (data type 4), `KY_ERROR_VECTOR_1606` (1606) for any other. Trace:
/// "ImgVect1c2".
KY_API KY_ERRORS ImgVect1c2(ARITH_LOGIC_OPERATIONS operation, KyVector* vector, double constant,
                            KyVector* result) noexcept;
