// What is made of erosions and dilations, by boxes, disks and shapes.
#pragma once

#include "foundation/frame.h"
#include "foundation/rows.h"
#include "morphology/passes.h"

namespace ky {

inline constexpr Extreme kDilation = Extreme::kMaximum, kErosion = Extreme::kMinimum;

// What a call works on, colours as rows of components, with a null destination resolved.
struct Operands {
  Rows<const KyBW8> source;
  Rows<KyBW8> destination;
  bool inPlace = false;

  template <class T>
  KY_ERRORS Open(const KyROI<T>* from, KyROI<T>* to) noexcept {
    to = DestinationOf(from, to);
    if (const KY_ERRORS error = OpenAll(from, source, to, destination)) return error;
    inPlace = from == to || SharingOf(source, destination) == Sharing::kTheSame;
    return KY_OK;
  }
};

// The workers. False when there is no memory; nothing has been written then.

// An erosion or a dilation.
bool RunExtreme(const Operands& on, Extreme extreme, const Element& element) noexcept;
// The `first` of the two, then the other.
bool RunOpenOrClose(const Operands& on, Extreme first, const Element& element) noexcept;
// The source minus its opening, which erodes first, or its closing minus the source.
bool RunTopHat(const Operands& on, Extreme first, const Element& element) noexcept;
// The dilation minus the erosion.
bool RunGradient(const Operands& on, const Element& element) noexcept;

}  // namespace ky
