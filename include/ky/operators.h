/// @file
/// @ingroup operators
/// Arithmetic and logic, pixel by pixel.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// The operations of ImgOper. In the formulas a is the first operand and b the second, in the order
/// of the arguments, and d is the value that the destination had. Results have 8 bits unless the
/// destination is KyBW16. Divisions truncate; comparisons and logical operations give exactly 0 or
/// 255.
enum ARITH_LOGIC_OPERATIONS : int {
  KY_OPER_COPY = 0,                ///< a; of a constant: fill
  KY_OPER_INVERT = 1,              ///< 255 - a
  KY_OPER_ADD = 2,                 ///< min(a + b, 255)
  KY_OPER_SUBTRACT = 3,            ///< max(a - b, 0)
  KY_OPER_MULTIPLY = 4,            ///< min(a * b, 255)
  KY_OPER_DIVIDE = 5,              ///< a / b, 255 when b = 0
  KY_OPER_MODULO = 6,              ///< a mod b, 0 when b = 0
  KY_OPER_SHIFT_LEFT = 7,          ///< the low 8 bits of a << (b mod 32); b is a constant
  KY_OPER_SHIFT_RIGHT = 8,         ///< a >> (b mod 32); b is a constant
  KY_OPER_AVERAGE = 9,             ///< (a + b) / 2
  KY_OPER_HALF_DIFFERENCE = 10,    ///< (a + 255 - b) / 2
  KY_OPER_SCALED_MULTIPLY = 11,    ///< a * b / 256
  KY_OPER_SCALED_DIVIDE = 12,      ///< min(256 * a / b, 255), 255 when b = 0
  KY_OPER_AND = 13,                ///< bits of a and b
  KY_OPER_OR = 14,                 ///< bits of a or b
  KY_OPER_XOR = 15,                ///< bits of a xor b
  KY_OPER_LOGICAL_AND = 16,        ///< a != 0 and b != 0
  KY_OPER_LOGICAL_OR = 17,         ///< a != 0 or b != 0
  KY_OPER_LOGICAL_XOR = 18,        ///< exactly one of a, b is 0
  KY_OPER_MIN = 19,                ///< the smaller
  KY_OPER_MAX = 20,                ///< the larger
  KY_OPER_SET_WHERE_ZERO = 21,     ///< b where a = 0, else d
  KY_OPER_SET_WHERE_NONZERO = 22,  ///< b where a != 0, else d
  KY_OPER_EQUAL = 23,              ///< a = b
  KY_OPER_NOT_EQUAL = 24,          ///< a != b
  KY_OPER_GREATER_OR_EQUAL = 25,   ///< a >= b
  KY_OPER_LESS_OR_EQUAL = 26,      ///< a <= b
  KY_OPER_GREATER = 27,            ///< a > b
  KY_OPER_LESS = 28,               ///< a < b
  KY_OPER_ADD_WRAP = 29,           ///< (a + b) mod 65536; KyBW16 destinations only
  KY_OPER_SUBTRACT_WRAP = 30,      ///< (a - b) mod 65536; KyBW16 destinations only
  KY_OPER_RESERVED_31 = 31,        ///< no overload does anything for it
  KY_OPER_RESERVED_32 = 32,        ///< no overload does anything for it
  KY_OPER_ABS_DIFFERENCE = 33,     ///< |a - b|
  KY_OPER_OVERLAY = 34,            ///< colour overlay; see the overloads
};

/// Sets, or returns, the colour that operation 34 writes where a grey source is not 0. The whole
/// process has one, (0, 0, 255) at first. Both functions leave the status alone.
KY_API void ImgSetOverlayColor(KyC24 color) noexcept;
KY_API KyC24 ImgGetOverlayColor() noexcept;

/// Fills the destination with a level, or copies the source, which may overlap it. Errors:
/// `KY_ERROR_NO_IMAGE` (1400), `KY_ERROR_SIZE_MISMATCH` (1403); `KY_ERROR_NOT_ENOUGH_MEMORY` (1303)
/// for a source that overlaps the destination without coinciding. Traces: "ImgCopy (BW8 Const to
/// Image)", "ImgOper (BW8 Image to Image)".
KY_API KY_ERRORS ImgCopy(KyBW8 value, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgCopy(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination) noexcept;

/// ImgOper combines one or two operands, images or constants, into a destination of the same size:
/// destination(x, y) = operation(a(x, y), b(x, y)), from the enumeration above.
///
/// - Colours: every component is combined with the same component of the other operand; a grey
///   operand stands for all three components. Only operation 34 looks at whole pixels.
/// - In place: sources and destination may be the same rectangle; a source that overlaps the
///   destination otherwise is read before it is written, through a copy.
/// - Constants are passed as a pixel value: KyBW8(0), because a plain 0 could also be a null
///   pointer.
/// - Errors, checked in this order before the destination is written:
///   `KY_ERROR_UNSUPPORTED_OPERATION` (1003) for an operation that the overload does not accept;
///   `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels; `KY_ERROR_SIZE_MISMATCH` (1403) for
///   different sizes; `KY_ERROR_INTERNAL` (32767) for an operation that it accepts without doing
///   anything for it (in the forms with three operands 0, 1, 29 to 32, and all above 34; 34 onto
///   grey, with a constant, or with one grey and one colour source); `KY_ERROR_NOT_ENOUGH_MEMORY`
///   (1303).

/// Fills the destination. Accepts operation 0. Trace: "ImgOper (BW8 Const to Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, KyBW8 a,
                         KyROI<KyBW8>* destination) noexcept;
/// Copies or inverts a. Accepts operations 0 and 1. Trace: "ImgOper (BW8 Image to Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a,
                         KyROI<KyBW8>* destination) noexcept;
/// Copies, inverts or overlays a. Operations 0 and 1 write all three components; 34 writes the
/// overlay colour where a is not 0 and keeps the other pixels. Trace: "ImgOper (BW8 Image to C24
/// Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a,
                         KyROI<KyC24>* destination) noexcept;
/// Combines both operands. Accepts all operations but 7, 8, 16, 17, 18, 21, 22. Trace: "ImgOper
/// (BW8 Const, Image to Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, KyBW8 a, const KyROI<KyBW8>* b,
                         KyROI<KyBW8>* destination) noexcept;
/// Combines both operands. Accepts all operations but 16, 17, 18. Trace: "ImgOper (BW8 Image, Const
/// to Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a, KyBW8 b,
                         KyROI<KyBW8>* destination) noexcept;
/// Combines both operands. Accepts all operations but 7, 8. Trace: "ImgOper (BW8 Image, Image to
/// Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a,
                         const KyROI<KyBW8>* b, KyROI<KyBW8>* destination) noexcept;

/// Fills the destination. Accepts operation 0. Trace: "ImgOper (C24 Const to Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, KyC24 a,
                         KyROI<KyC24>* destination) noexcept;
/// Copies, inverts or overlays a. Accepts operations 0, 1, and 34: a where it is not (0, 0, 0),
/// else the destination's own pixel. Trace: "ImgOper (C24 Image to Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyC24>* a,
                         KyROI<KyC24>* destination) noexcept;
/// Combines both operands. Accepts all operations but 7, 8, 16, 17, 18, 21, 22. Trace: "ImgOper
/// (C24 Const, Image to Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, KyC24 a, const KyROI<KyC24>* b,
                         KyROI<KyC24>* destination) noexcept;
/// Combines both operands. Accepts all operations but 16, 17, 18, up to 33. Trace: "ImgOper (C24
/// Image, Const to Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyC24>* a, KyC24 b,
                         KyROI<KyC24>* destination) noexcept;
/// Combines both operands. Accepts all operations but 7, 8; 34 gives b where it is not (0, 0, 0),
/// else a. Trace: "ImgOper (C24 Image, Image to Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyC24>* a,
                         const KyROI<KyC24>* b, KyROI<KyC24>* destination) noexcept;

/// Combines both operands. Accepts all operations but 7, 8. Trace: "ImgOper (BW8 Image, C24 Image
/// to C24 Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a,
                         const KyROI<KyC24>* b, KyROI<KyC24>* destination) noexcept;
/// Combines both operands. Accepts all operations but 7, 8. Trace: "ImgOper (C24 Image, BW8 Image
/// to C24 Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyC24>* a,
                         const KyROI<KyBW8>* b, KyROI<KyC24>* destination) noexcept;
/// Overlays b on a. Accepts operation 34: the overlay colour where b is not 0, else the grey level
/// of a in all three components. Trace: "ImgOper (BW8 Image, BW8 Image to C24 Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a,
                         const KyROI<KyBW8>* b, KyROI<KyC24>* destination) noexcept;

/// Fills the destination. Accepts operation 0. Trace: "ImgOper (BW16 Const to BW16 Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, KyBW16 a,
                         KyROI<KyBW16>* destination) noexcept;
/// Combines both operands into 16 bits. Accepts operations 2 (a + b), 3 (max(a - b, 0)), 4 (a * b),
/// 5 (a / b, 65535 when b = 0). Trace: "ImgOper (BW8 Image and BW8 Image to BW16 Image)".
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW8>* a,
                         const KyROI<KyBW8>* b, KyROI<KyBW16>* destination) noexcept;
/// Combines both operands into 16 bits. Accepts operations 2 (min(a + b, 65535)), 3 (max(a - b,
/// 0)), 4 (min(a * b, 65535)), 5 (a / b, 65535 when b = 0), and 29 and 30, modulo 65536. Trace:
/// "ImgOper (BW16 Image and BW8 Image to BW16 IMage)", spelt like this.
KY_API KY_ERRORS ImgOper(ARITH_LOGIC_OPERATIONS operation, const KyROI<KyBW16>* a,
                         const KyROI<KyBW8>* b, KyROI<KyBW16>* destination) noexcept;
