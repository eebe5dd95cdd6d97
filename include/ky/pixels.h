/// @file
/// @ingroup images
/// The pixel types of images and regions of interest.
#pragma once

#include <cstdint>

#include "ky/export.h"

/// Grey levels of 8, 16 and 32 bits.
using KyBW8 = std::uint8_t;
using KyBW16 = std::uint16_t;
using KyBW32 = std::uint32_t;

/// The tag of images of one bit a pixel. Eight pixels share a byte, the leftmost one in its most
/// significant bit.
struct KY_API KyBW1 {};

/// A colour of three 8-bit components, stored one after the other in this order. Functions that
/// need a meaning take them as red, green, blue; the others do not mind.
struct KY_API KyC24 {
  /// The components.
  KyBW8 c0, c1, c2;

  KyC24() = default;
  /// Makes the colour of these components.
  constexpr KyC24(KyBW8 first, KyBW8 second, KyBW8 third) noexcept
      : c0(first), c1(second), c2(third) {}
  constexpr bool operator==(const KyC24&) const noexcept = default;
};

/// A packed colour: component 0 in bits 0..4, component 1 in bits 5..9, component 2 in bits 10..14.
struct KY_API KyC15 {
  std::uint16_t bits;  ///< all three components
  constexpr bool operator==(const KyC15&) const noexcept = default;
};

/// A packed colour: component 0 in bits 0..4, component 1 in bits 5..10, component 2 in bits
/// 11..15.
struct KY_API KyC16 {
  std::uint16_t bits;  ///< all three components
  constexpr bool operator==(const KyC16&) const noexcept = default;
};

/// A colour with an alpha component.
struct KY_API KyC24A {
  /// The components, and alpha.
  KyBW8 c0, c1, c2, a;
  constexpr bool operator==(const KyC24A&) const noexcept = default;
};

/// A complex number.
struct KY_API KyComplex64 {
  /// The real and the imaginary part.
  float re, im;
  constexpr bool operator==(const KyComplex64&) const noexcept = default;
};

/// What a pixel type is in memory.
template <class T>
struct KY_API KyPixelTraits {
  using Memory = T;  ///< what a buffer consists of
  using Value = T;   ///< what one pixel is read and written as
  static constexpr int kBits = 8 * static_cast<int>(sizeof(T));  ///< the bits of one pixel
};
/// The same for bits.
template <>
struct KY_API KyPixelTraits<KyBW1> {
  using Memory = KyBW8;            ///< eight pixels
  using Value = bool;              ///< one of them
  static constexpr int kBits = 1;  ///< the bits of one pixel
};

static_assert(sizeof(KyC24) == 3 && sizeof(KyC15) == 2 && sizeof(KyC16) == 2);
static_assert(sizeof(KyC24A) == 4 && sizeof(KyComplex64) == 8);
