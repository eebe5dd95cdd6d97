#include "ky/morphology.h"

#include <cstring>

#include "foundation/frame.h"
#include "morphology/workers.h"

namespace {

using ky::Element;
using ky::Extreme;
using ky::kDilation;
using ky::kErosion;
using ky::Operands;
using Source = const KyROI<KyBW8>*;
using Destination = KyROI<KyBW8>*;

// The trace names of the functions of one kind of element.
struct Names {
  const char *dilate, *erode, *open, *close, *whiteTopHat, *blackTopHat, *gradient;
};
constexpr Names kBox = {"ImgDilateBox",        "ImgErodeBox",       "ImgOpenBox",
                        "ImgCloseBox",         "ImgWhiteTopHatBox", "ImgBlackTopHatBox",
                        "ImgMorphoGradientBox"};
constexpr Names kDisk = {"ImgDilateDisk",        "ImgErodeDisk",       "ImgOpenDisk",
                         "ImgCloseDisk",         "ImgWhiteTopHatDisk", "ImgBlackTopHatDisk",
                         "ImgMorphoGradientDisk"};

const char* NameOf(const Names& names, Extreme extreme) noexcept {
  return extreme == kDilation ? names.dilate : names.erode;
}

// The trace name of the first of the steps that an element is made of; null for a horizontal one,
// which has none.
const char* FirstStep(Extreme extreme, const Element& element) noexcept {
  const bool dilates = extreme == kDilation;
  if (element.halfWidth > 0 && element.halfHeight > 0)
    return dilates ? "ImgDilate3x3 (BW8)" : "ImgErode3x3 (BW8)";
  if (element.halfHeight > 0) return dilates ? "ImgDilateY (BW8)" : "ImgErodeY (BW8)";
  if (element.halfWidth > 0) return nullptr;
  if (element.crosses > 0) return dilates ? "ImgDilateXY (BW8)" : "ImgErodeXY (BW8)";
  return "ImgOper (BW8 Image to Image)";
}

Element BoxOf(unsigned halfWidth, unsigned halfHeight) noexcept {
  return Element::Box(halfWidth, halfHeight == KY_HALF_HEIGHT_AS_WIDTH ? halfWidth : halfHeight);
}

bool IsInPlace(Source source, Destination destination) noexcept {
  return destination == nullptr || destination == source;
}

// The frames.

KY_ERRORS Single(const Names& names, Extreme extreme, const Element& element, Source source,
                 Destination destination) noexcept {
  bool traced = true;
  ky::CallUntraced([&] {
    Operands on;
    if (const KY_ERRORS error = on.Open(source, destination)) return error;
    if (ky::RunExtreme(on, extreme, element)) return KY_OK;
    traced = !on.inPlace;
    return ky::FailIn(KY_ERROR_NOT_ENOUGH_MEMORY, {FirstStep(extreme, element)});
  });
  return traced ? KyTraceError(NameOf(names, extreme)) : KyGetError();
}

// What a composite operation fails with when its first part, a dilation or an erosion, has no
// memory.
KY_ERRORS NoMemory(const Names& names, Extreme first, const Element& element, bool inPlace,
                   const char* outer = nullptr) noexcept {
  return ky::FailIn(KY_ERROR_NOT_ENOUGH_MEMORY,
                    {FirstStep(first, element), inPlace ? nullptr : NameOf(names, first), outer});
}

KY_ERRORS OpenOrClose(const Names& names, Extreme first, const Element& element, Source source,
                      Destination destination) noexcept {
  return ky::Call(first == kErosion ? names.open : names.close, [&] {
    Operands on;
    if (const KY_ERRORS error = on.Open(source, destination)) return error;
    return ky::RunOpenOrClose(on, first, element) ? KY_OK
                                                  : NoMemory(names, first, element, on.inPlace);
  });
}

KY_ERRORS TopHat(const Names& names, Extreme first, const Element& element, Source source,
                 Destination destination) noexcept {
  const bool white = first == kErosion;
  const bool refusesInPlace = white && &names == &kBox;
  const char* const inner = white ? names.open : names.close;
  return ky::Call(white ? names.whiteTopHat : names.blackTopHat, [&]() -> KY_ERRORS {
    if (refusesInPlace && IsInPlace(source, destination)) return KY_ERROR_COLOR_PLANES;
    Operands on;
    if (const KY_ERRORS error = on.Open(source, destination)) return ky::FailIn(error, {inner});
    if (on.inPlace) {
      if (refusesInPlace) return KY_ERROR_COLOR_PLANES;
      // Whatever replaced the source is subtracted from itself.
      for (std::ptrdiff_t y = 0; y < on.source.height; ++y)
        std::memset(on.destination.Row(y), 0, static_cast<std::size_t>(on.source.width));
      return KY_OK;
    }
    return ky::RunTopHat(on, first, element) ? KY_OK
                                             : NoMemory(names, first, element, false, inner);
  });
}

KY_ERRORS Gradient(const Names& names, const Element& element, Source source,
                   Destination destination) noexcept {
  return ky::Call(names.gradient, [&]() -> KY_ERRORS {
    if (const KY_ERRORS error = ky::CheckImage(source, "source")) return error;
    if (destination != nullptr) {
      destination->CheckSameSize(source);
      if (const KY_ERRORS error = KyGetError())
        return ky::Explain(error, error == KY_ERROR_SIZE_MISMATCH
                                      ? "source and destination differ in size"
                                      : "destination");
    }
    Operands on;
    if (const KY_ERRORS error = on.Open(source, destination))
      return ky::FailIn(error, {names.dilate});
    return ky::RunGradient(on, element) ? KY_OK : NoMemory(names, kErosion, element, false);
  });
}

}  // namespace

KY_ERRORS ImgDilateBox(Source source, Destination destination, unsigned halfWidth,
                       unsigned halfHeight) noexcept {
  return Single(kBox, kDilation, BoxOf(halfWidth, halfHeight), source, destination);
}

KY_ERRORS ImgErodeBox(Source source, Destination destination, unsigned halfWidth,
                      unsigned halfHeight) noexcept {
  return Single(kBox, kErosion, BoxOf(halfWidth, halfHeight), source, destination);
}

KY_ERRORS ImgOpenBox(Source source, Destination destination, unsigned halfWidth,
                     unsigned halfHeight) noexcept {
  return OpenOrClose(kBox, kErosion, BoxOf(halfWidth, halfHeight), source, destination);
}

KY_ERRORS ImgCloseBox(Source source, Destination destination, unsigned halfWidth,
                      unsigned halfHeight) noexcept {
  return OpenOrClose(kBox, kDilation, BoxOf(halfWidth, halfHeight), source, destination);
}

KY_ERRORS ImgWhiteTopHatBox(Source source, Destination destination, unsigned halfWidth,
                            unsigned halfHeight) noexcept {
  return TopHat(kBox, kErosion, BoxOf(halfWidth, halfHeight), source, destination);
}

KY_ERRORS ImgBlackTopHatBox(Source source, Destination destination, unsigned halfWidth,
                            unsigned halfHeight) noexcept {
  return TopHat(kBox, kDilation, BoxOf(halfWidth, halfHeight), source, destination);
}

KY_ERRORS ImgMorphoGradientBox(Source source, Destination destination, unsigned halfWidth,
                               unsigned halfHeight) noexcept {
  return Gradient(kBox, BoxOf(halfWidth, halfHeight), source, destination);
}

KY_ERRORS ImgDilateDisk(Source source, Destination destination, unsigned radius) noexcept {
  return Single(kDisk, kDilation, Element::Disk(radius), source, destination);
}

KY_ERRORS ImgErodeDisk(Source source, Destination destination, unsigned radius) noexcept {
  return Single(kDisk, kErosion, Element::Disk(radius), source, destination);
}

KY_ERRORS ImgOpenDisk(Source source, Destination destination, unsigned radius) noexcept {
  return OpenOrClose(kDisk, kErosion, Element::Disk(radius), source, destination);
}

KY_ERRORS ImgCloseDisk(Source source, Destination destination, unsigned radius) noexcept {
  return OpenOrClose(kDisk, kDilation, Element::Disk(radius), source, destination);
}

KY_ERRORS ImgWhiteTopHatDisk(Source source, Destination destination, unsigned radius) noexcept {
  return TopHat(kDisk, kErosion, Element::Disk(radius), source, destination);
}

KY_ERRORS ImgBlackTopHatDisk(Source source, Destination destination, unsigned radius) noexcept {
  return TopHat(kDisk, kDilation, Element::Disk(radius), source, destination);
}

KY_ERRORS ImgMorphoGradientDisk(Source source, Destination destination, unsigned radius) noexcept {
  return Gradient(kDisk, Element::Disk(radius), source, destination);
}
