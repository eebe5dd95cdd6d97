#include "ky/uniformize.h"

#include "foundation/frame.h"
#include "foundation/map.h"
#include "point/uniformize_rows.h"

namespace {

using ky::Rows;

constexpr ky::RoiNames kWithLight = {{"source", "light", "destination"}},
                       kWithBoth = {{"source", "light", "dark", "destination"}};

// A level as a source: that of each component in turn.
ky::FromConstant<KyBW8> FromLevel(KyBW8 level) noexcept { return ky::FromConstant<KyBW8>({level}); }
ky::FromConstant<KyBW8, 3> FromLevel(KyC24 level) noexcept {
  return ky::FromConstant<KyBW8, 3>({level.c0, level.c1, level.c2});
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
                       ky::FromRows(inLight), FromLevel(lightLevel));
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
                       ky::FromRows(inLight), FromLevel(lightLevel), ky::FromRows(inDark),
                       FromLevel(darkLevel));
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
