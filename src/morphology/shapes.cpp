#include "ky/shapes.h"

#include "foundation/frame.h"
#include "foundation/kernels/kernel_view.h"
#include "morphology/shape.h"
#include "morphology/workers.h"

namespace {

using ky::Element;
using ky::kDilation;
using ky::kErosion;
using ky::Operands;

// What an operation does with a place to work on and an element; false when there is no memory.
using Worker = bool (*)(const Operands& on, const Element& element) noexcept;

bool Erode(const Operands& on, const Element& element) noexcept {
  return ky::RunExtreme(on, kErosion, element);
}
bool Dilate(const Operands& on, const Element& element) noexcept {
  return ky::RunExtreme(on, kDilation, element);
}
bool Open(const Operands& on, const Element& element) noexcept {
  return ky::RunOpenOrClose(on, kErosion, element);
}
bool Close(const Operands& on, const Element& element) noexcept {
  return ky::RunOpenOrClose(on, kDilation, element);
}
bool WhiteTopHat(const Operands& on, const Element& element) noexcept {
  return ky::RunTopHat(on, kErosion, element);
}
bool BlackTopHat(const Operands& on, const Element& element) noexcept {
  return ky::RunTopHat(on, kDilation, element);
}

KY_ERRORS StatusOf(bool hadMemory) noexcept {
  return hadMemory ? KY_OK : KY_ERROR_NOT_ENOUGH_MEMORY;
}

template <class T>
KY_ERRORS RunBox(const char* name, Worker worker, const KyROI<T>* source, KyROI<T>* destination,
                 unsigned halfWidth, unsigned halfHeight) noexcept {
  return ky::Call(name, [&]() -> KY_ERRORS {
    Operands on;
    if (const KY_ERRORS error = on.Open(source, destination)) return error;
    if (halfHeight == KY_HALF_HEIGHT_AS_WIDTH) halfHeight = halfWidth;
    return StatusOf(worker(on, Element::Box(halfWidth, halfHeight, sizeof(T))));
  });
}

template <class T>
KY_ERRORS RunShape(const char* name, Worker worker, const KyROI<T>* source, KyROI<T>* destination,
                   const KyKernel* kernel) noexcept {
  return ky::Call(name, [&]() -> KY_ERRORS {
    Operands on;
    if (const KY_ERRORS error = on.Open(source, destination)) return error;
    if (kernel == nullptr) return KY_ERROR_KERNEL_SIZE;
    const ky::KernelView view(*kernel);
    if (view.data == nullptr || view.sizeX <= 0 || view.sizeY <= 0) return KY_ERROR_KERNEL_SIZE;
    const ky::Shape shape(view);
    if (!shape.HasMembers()) return KY_ERROR_KERNEL_1701;
    return StatusOf(worker(on, Element::Of(shape, sizeof(T))));
  });
}

}  // namespace

KY_ERRORS ImgErode(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                   unsigned halfHeight) noexcept {
  return RunBox("ImgErode (BW8)", Erode, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgErode(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                   const KyKernel* shape) noexcept {
  return RunShape("ImgErode (BW8)", Erode, source, destination, shape);
}

KY_ERRORS ImgErode(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                   unsigned halfHeight) noexcept {
  return RunBox("ImgErode (C24)", Erode, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgErode(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                   const KyKernel* shape) noexcept {
  return RunShape("ImgErode (C24)", Erode, source, destination, shape);
}

KY_ERRORS ImgDilate(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                    unsigned halfHeight) noexcept {
  return RunBox("ImgDilate (BW8)", Dilate, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgDilate(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                    const KyKernel* shape) noexcept {
  return RunShape("ImgDilate (BW8)", Dilate, source, destination, shape);
}

KY_ERRORS ImgDilate(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                    unsigned halfHeight) noexcept {
  return RunBox("ImgDilate (C24)", Dilate, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgDilate(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                    const KyKernel* shape) noexcept {
  return RunShape("ImgDilate (C24)", Dilate, source, destination, shape);
}

KY_ERRORS ImgOpen(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                  unsigned halfHeight) noexcept {
  return RunBox("ImgOpen (BW8)", Open, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgOpen(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                  const KyKernel* shape) noexcept {
  return RunShape("ImgOpen (BW8)", Open, source, destination, shape);
}

KY_ERRORS ImgOpen(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                  unsigned halfHeight) noexcept {
  return RunBox("ImgOpen (C24)", Open, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgOpen(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                  const KyKernel* shape) noexcept {
  return RunShape("ImgOpen (C24)", Open, source, destination, shape);
}

KY_ERRORS ImgClose(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                   unsigned halfHeight) noexcept {
  return RunBox("ImgClose (BW8)", Close, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgClose(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                   const KyKernel* shape) noexcept {
  return RunShape("ImgClose (BW8)", Close, source, destination, shape);
}

KY_ERRORS ImgClose(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                   unsigned halfHeight) noexcept {
  return RunBox("ImgClose (C24)", Close, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgClose(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                   const KyKernel* shape) noexcept {
  return RunShape("ImgClose (C24)", Close, source, destination, shape);
}

KY_ERRORS ImgWhiteTopHat(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                         unsigned halfHeight) noexcept {
  return RunBox("ImgWhiteTopHat (BW8)", WhiteTopHat, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgWhiteTopHat(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                         const KyKernel* shape) noexcept {
  return RunShape("ImgWhiteTopHat (BW8)", WhiteTopHat, source, destination, shape);
}

KY_ERRORS ImgWhiteTopHat(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                         unsigned halfHeight) noexcept {
  return RunBox("ImgWhiteTopHat (C24)", WhiteTopHat, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgWhiteTopHat(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                         const KyKernel* shape) noexcept {
  return RunShape("ImgWhiteTopHat (C24)", WhiteTopHat, source, destination, shape);
}

KY_ERRORS ImgBlackTopHat(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                         unsigned halfHeight) noexcept {
  return RunBox("ImgBlackTopHat (BW8)", BlackTopHat, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgBlackTopHat(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                         const KyKernel* shape) noexcept {
  return RunShape("ImgBlackTopHat (BW8)", BlackTopHat, source, destination, shape);
}

KY_ERRORS ImgBlackTopHat(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                         unsigned halfHeight) noexcept {
  return RunBox("ImgBlackTopHat (C24)", BlackTopHat, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgBlackTopHat(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                         const KyKernel* shape) noexcept {
  return RunShape("ImgBlackTopHat (C24)", BlackTopHat, source, destination, shape);
}

KY_ERRORS ImgMorphoGradient(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                            unsigned halfWidth, unsigned halfHeight) noexcept {
  return RunBox("ImgMorphoGradient (BW8)", ky::RunGradient, source, destination, halfWidth,
                halfHeight);
}
KY_ERRORS ImgMorphoGradient(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                            const KyKernel* shape) noexcept {
  return RunShape("ImgMorphoGradient (BW8)", ky::RunGradient, source, destination, shape);
}

KY_ERRORS ImgMorphoGradient(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                            unsigned halfWidth, unsigned halfHeight) noexcept {
  return RunBox("ImgMorphoGradient (C24)", ky::RunGradient, source, destination, halfWidth,
                halfHeight);
}
KY_ERRORS ImgMorphoGradient(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                            const KyKernel* shape) noexcept {
  return RunShape("ImgMorphoGradient (C24)", ky::RunGradient, source, destination, shape);
}

KY_ERRORS ImgDilateBox(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                       unsigned halfHeight) noexcept {
  return RunBox("ImgDilateBox (C24)", Dilate, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgErodeBox(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                      unsigned halfHeight) noexcept {
  return RunBox("ImgErodeBox (C24)", Erode, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgOpenBox(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                     unsigned halfHeight) noexcept {
  return RunBox("ImgOpenBox (C24)", Open, source, destination, halfWidth, halfHeight);
}
KY_ERRORS ImgCloseBox(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                      unsigned halfHeight) noexcept {
  return RunBox("ImgCloseBox (C24)", Close, source, destination, halfWidth, halfHeight);
}
