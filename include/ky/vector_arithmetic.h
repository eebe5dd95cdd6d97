/// @file
/// @ingroup vectors
/// Generic vectors combined with constants, shifted, convolved, and their extremes.
#pragma once

#include "ky/export.h"
#include "ky/kernel.h"
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
KY_API KY_ERRORS ImgVect1c2(ARITH_LOGIC_OPERATIONS operation, const KyVector* vector, int constant,
                            KyVector* result, int first, int last) noexcept;

/// Always fails, as there are no operations with floating-point constants. Errors:
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector, `KY_ERROR_VECTOR_DATA_TYPE` (1605) for one
/// of floating-point elements (data type 4), `KY_ERROR_VECTOR_1606` (1606) for any other. Trace:
/// "ImgVect1c2".
KY_API KY_ERRORS ImgVect1c2(ARITH_LOGIC_OPERATIONS operation, const KyVector* vector,
                            double constant, KyVector* result) noexcept;

/// Finds the least and the greatest of the first elements of a vector's groups, which are integers
/// of any size, and with the second form also the numbers of the first groups that have them.
/// Unsigned 32-bit elements are compared as such and returned modulo 2^32. Errors, checked in this
/// order before anything is written: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector;
/// `KY_ERROR_VECTOR_1604` (1604) for a vector without groups; `KY_ERROR_VECTOR_DATA_TYPE` (1605)
/// and `KY_ERROR_VECTOR_1606` (1606) for a data size and a data type that are not those of
/// integers. Trace: "ImgGetVectExtremes".
KY_API KY_ERRORS ImgGetVectExtremes(const KyVector* vector, int& minimum, int& maximum) noexcept;
KY_API KY_ERRORS ImgGetVectExtremes(const KyVector* vector, int& minimum, int& maximum,
                                    int& whereMinimum, int& whereMaximum) noexcept;

/// Moves the groups of a vector: group i goes to place i + `positions`, up with a positive and down
/// with a negative number. Groups that would leave the vector are lost, places that no group comes
/// to become 0, and the number of groups stays. Elements may be of any type. Errors, checked in
/// this order: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null vector; `KY_ERROR_VECTOR_1604` (1604)
/// for a vector without groups; `KY_ERROR_VECTOR_DATA_TYPE` (1605) and `KY_ERROR_VECTOR_1606`
/// (1606) for an unknown data size and data type. Trace: "ImgVectDataShift".
KY_API KY_ERRORS ImgVectDataShift(KyVector* vector, int positions) noexcept;

/// Convolves the first elements v(i) of a vector's groups, integers of any size, with a kernel of
/// one row or one column of n coefficients c(k):
///
///     result(i) = sum over k of c(k) g * v(i - n / 2 + k)
///
/// where n / 2 is rounded down, and the nearest element stands outside the vector. The coefficients
/// are multiplied by the gain g as in ImgConvolKernel, in single precision; products and sums are
/// computed in double precision, in the order of k. A coefficient or a sum that is not a number
/// counts as 0. The sum is rectified by the kernel's rectifier (one outside 0..3 acts like 0), the
/// offset is added, and the result is rounded, floor(x + 1/2), and limited to the elements' type.
///
/// The result gets the data size and the data type of the source, and as many groups, of one
/// element each. It may be the source, which keeps its structure then: only the first elements of
/// its groups are replaced.
///
/// Errors, checked in this order before anything is written: `KY_ERROR_BAD_VECTOR_TYPE` (1601) for
/// a null source; `KY_ERROR_VECTOR_1604` (1604) for one without groups; `KY_ERROR_VECTOR_DATA_TYPE`
/// (1605) and `KY_ERROR_VECTOR_1606` (1606) for a data size and a data type that are not those of
/// integers; `KY_ERROR_KERNEL_SIZE` (1700) for a null kernel or one without coefficients;
/// `KY_ERROR_KERNEL_1701` (1701) for a kernel of several rows and columns;
/// `KY_ERROR_BAD_VECTOR_TYPE` (1601) for a null result; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). Trace:
/// "ImgConvolVect".
KY_API KY_ERRORS ImgConvolVect(const KyVector* source, const KyKernel* kernel,
                               KyVector* result) noexcept;
