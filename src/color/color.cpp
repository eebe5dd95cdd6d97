#include "ky/color.h"

#include <algorithm>
#include <cmath>

#include "foundation/frame.h"
#include "foundation/rows.h"

namespace {

KY_ERRORS CheckComponent(int component) noexcept {
  if (component >= 0 && component <= 2) return KY_OK;
  return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "component");
}

}  // namespace

KyColorLookup::~KyColorLookup() = default;

void KyColorLookup::Transform(KyC24 input, KyC24& output) const { output = input; }

KyColorMatrix::KyColorMatrix(const float (&rows)[9]) noexcept {
  std::transform(rows, rows + 9, rows_, [](float c) { return std::isnan(c) ? 0.0f : c; });
}

KyColorMatrix KyColorMatrix::Luma() noexcept {
  return KyColorMatrix({0.299f, 0.587f, 0.114f, 0.299f, 0.587f, 0.114f, 0.299f, 0.587f, 0.114f});
}

void KyColorMatrix::Transform(KyC24 input, KyC24& output) const {
  const auto level = [&](const float* row) {
    const float sum = row[0] * input.c0 + row[1] * input.c1 + row[2] * input.c2;
    return static_cast<KyBW8>(std::isnan(sum) ? 0.0f : std::clamp(sum + 0.5f, 0.0f, 255.0f));
  };
  output = KyC24(level(rows_), level(rows_ + 3), level(rows_ + 6));
}

KY_ERRORS ClrGetComponent(const KyROI<KyC24>* source, KyROI<KyBW8>* destination, int component,
                          const KyColorLookup* lookup) noexcept {
  return ky::Call("ClrGetComponent", [&] {
    ky::Rows<const KyC24> in;
    ky::Rows<KyBW8> out;
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (const KY_ERRORS error = CheckComponent(component)) return error;
    ky::Input<KyC24> input;
    if (!input.Open(in, out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    KyBW8 KyC24::*const member[] = {&KyC24::c0, &KyC24::c1, &KyC24::c2};
    for (std::ptrdiff_t y = 0; y < out.height; ++y) {
      const KyC24* const from = input.rows().Row(y);
      KyBW8* const to = out.Row(y);
      for (std::ptrdiff_t x = 0; x < out.width; ++x) {
        KyC24 color = from[x];
        if (lookup != nullptr) lookup->Transform(from[x], color);
        to[x] = color.*member[component];
      }
    }
    return KY_OK;
  });
}

KY_ERRORS ClrSetComponent(const KyROI<KyBW8>* source, KyROI<KyC24>* destination,
                          int component) noexcept {
  return ky::Call("ClrSetComponent", [&] {
    ky::Rows<const KyBW8> in;
    ky::Rows<KyBW8> out;  // of components
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (const KY_ERRORS error = CheckComponent(component)) return error;
    ky::Input<KyBW8> input;
    if (!input.Open(in, out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    for (std::ptrdiff_t y = 0; y < out.height; ++y) {
      const KyBW8* const from = input.rows().Row(y);
      KyBW8* const to = out.Row(y) + component;
      for (std::ptrdiff_t x = 0; x < input.rows().width; ++x) to[3 * x] = from[x];
    }
    return KY_OK;
  });
}
