#include "ky/uniformize.h"

#include "foundation/frame.h"
#include "foundation/map.h"
#include "point/uniformize_rows.h"

namespace {

using ky::Rows;
using ky::ShadingLevels;

constexpr ky::RoiNames kWithLight = {{"source", "light", "destination"}},
                       kWithBoth = {{"source", "light", "dark", "destination"}};

ShadingLevels LevelsOf(KyBW8 light, KyBW8 dark) noexcept {
  return {{light, light, light}, {dark, dark, dark}};
}
ShadingLevels LevelsOf(KyC24 light, KyC24 dark) noexcept {
  return {{light.c0, light.c1, light.c2}, {dark.c0, dark.c1, dark.c2}};
}

template <class T>
KY_ERRORS ByLight(const char* name, const KyROI<T>* source, const KyROI<T>* light, T lightLevel,
                  KyROI<T>* destination) noexcept {
  return ky::Call(name, [&] {
    Rows<const KyBW8> in, inLight;
    Rows<KyBW8> out;
    if (const KY_ERRORS error =
            ky::OpenAll(kWithLight, source, in, light, inLight, destination, out))
      return error;
    return ky::MapRows(ky::ChooseUniformizeKernels().byLight, out, ky::FromRows(in),
                       ky::FromRows(inLight), ky::FromParameters(LevelsOf(lightLevel, T{})));
  });
}
template <class T>
KY_ERRORS ByBoth(const char* name, const KyROI<T>* source, const KyROI<T>* light, T lightLevel,
                 const KyROI<T>* dark, T darkLevel, KyROI<T>* destination) noexcept {
  return ky::Call(name, [&] {
    Rows<const KyBW8> in, inLight, inDark;
    Rows<KyBW8> out;
    if (const KY_ERRORS error =
            ky::OpenAll(kWithBoth, source, in, light, inLight, dark, inDark, destination, out))
      return error;
    return ky::MapRows(ky::ChooseUniformizeKernels().byBoth, out, ky::FromRows(in),
                       ky::FromRows(inLight), ky::FromRows(inDark),
                       ky::FromParameters(LevelsOf(lightLevel, darkLevel)));
  });
}

}  // namespace

KY_ERRORS ImgUniformize(const KyROI<KyBW8>* source, const KyROI<KyBW8>* light, KyBW8 lightLevel,
                        KyROI<KyBW8>* destination) noexcept {
  return ByLight("ImgUniformize (BW8)", source, light, lightLevel, destination);
}
KY_ERRORS ImgUniformize(const KyROI<KyC24>* source, const KyROI<KyC24>* light, KyC24 lightLevel,
                        KyROI<KyC24>* destination) noexcept {
  return ByLight("ImgUniformize (C24)", source, light, lightLevel, destination);
}
KY_ERRORS ImgUniformize(const KyROI<KyBW8>* source, const KyROI<KyBW8>* light, KyBW8 lightLevel,
                        const KyROI<KyBW8>* dark, KyBW8 darkLevel,
                        KyROI<KyBW8>* destination) noexcept {
  return ByBoth("ImgUniformize (BW8)", source, light, lightLevel, dark, darkLevel, destination);
}
KY_ERRORS ImgUniformize(const KyROI<KyC24>* source, const KyROI<KyC24>* light, KyC24 lightLevel,
                        const KyROI<KyC24>* dark, KyC24 darkLevel,
                        KyROI<KyC24>* destination) noexcept {
  return ByBoth("ImgUniformize (C24)", source, light, lightLevel, dark, darkLevel, destination);
}
