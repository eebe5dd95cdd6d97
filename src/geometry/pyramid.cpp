#include "ky/pyramid.h"

#include <algorithm>
#include <utility>

#include "foundation/frame.h"
#include "foundation/map.h"
#include "foundation/resize.h"
#include "geometry/sizes.h"

namespace {

// Halves an image that has been opened before.
template <class T>
void HalveImage(KyImage<T>& source, KyImage<T>& destination) noexcept {
  ky::HalveRows(ky::RowsOf(&destination), ky::RowsOf(&source));
}

}  // namespace

KyPyramid::KyPyramid() noexcept = default;

KyPyramid::KyPyramid(KyPyramid&& other) noexcept : KyPyramid() { *this = std::move(other); }

KyPyramid& KyPyramid::operator=(KyPyramid&& other) noexcept {
  if (this == &other) return *this;
  std::move(other.grey_, other.grey_ + kMostLevels, grey_);
  std::move(other.color_, other.color_ + kMostLevels, color_);
  levels_ = std::exchange(other.levels_, 0);
  type_ = std::exchange(other.type_, KY_IMAGE_BW8);
  return *this;
}

KyPyramid::~KyPyramid() = default;

void KyPyramid::Release() noexcept {
  for (KyImage<KyBW8>& image : grey_) image = KyImage<KyBW8>();
  for (KyImage<KyC24>& image : color_) image = KyImage<KyC24>();
}

KY_ERRORS KyPyramid::SetNumLevels(int levels, KY_IMAGE_TYPES type) noexcept {
  return ky::Call("KyPyramid::SetNumLevels", [&] {
    constexpr int kMost = 30;
    if (levels < 1 || levels > kMost)
      return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "levels");
    if (type != KY_IMAGE_BW8 && type != KY_IMAGE_C24)
      return ky::Explain(KY_ERROR_BAD_IMAGE_TYPE, "type is neither KY_IMAGE_BW8 nor KY_IMAGE_C24");
    Release();
    levels_ = levels;
    type_ = type;
    return KY_OK;
  });
}

// Gives new images the sizes of the levels; false when there is no memory.
template <class T>
bool KyPyramid::MakeImages(KyImage<T>* images, int levels, int width, int height) noexcept {
  for (int i = 0; i < levels; ++i)
    if (ky::Resize(&images[i], width >> i, height >> i) != KY_OK) return false;
  return true;
}

template <class T>
KY_ERRORS KyPyramid::BuildLevels(const KyROI<T>* source, KyImage<T>* images) noexcept {
  return ky::Call("KyPyramid::Build", [&] {
    ky::Rows<const T> in;
    const bool rightType = (type_ == KY_IMAGE_BW8) == (sizeof(T) == 1);
    const auto fail = [](const char* why) { return ky::Explain(KY_ERROR_PYRAMID_BUILD, why); };
    if (levels_ == 0) return fail("the pyramid has no levels: call SetNumLevels");
    if (!rightType) return fail("the pyramid is of the other type of pixels");
    if (ky::Open(source, in) != KY_OK) return fail("source is null or has no pixels");
    const int width = source->GetWidth(), height = source->GetHeight();
    if (std::min(width, height) >> (levels_ - 1) == 0)
      return fail("source is too small for the levels");

    bool fits = true;
    for (int i = 0; i < levels_; ++i)
      fits = fits && ky::CheckImage(&images[i], "source") == KY_OK &&
             images[i].GetWidth() == width >> i && images[i].GetHeight() == height >> i;
    KyImage<T> fresh[kMostLevels];
    if (!fits && !MakeImages(fresh, levels_, width, height)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    KyImage<T>* const levels = fits ? images : fresh;
    if (const KY_ERRORS error = ky::CopyRows(ky::RowsOf(&levels[0]), ky::FromRows(in)))
      return error;
    for (int i = 1; i < levels_; ++i) HalveImage(levels[i - 1], levels[i]);
    if (!fits) std::move(fresh, fresh + kMostLevels, images);
    return KY_OK;
  });
}

KY_ERRORS KyPyramid::Build(const KyROI<KyBW8>* source) noexcept {
  return BuildLevels(source, grey_);
}
KY_ERRORS KyPyramid::Build(const KyROI<KyC24>* source) noexcept {
  return BuildLevels(source, color_);
}

template <class T>
KY_ERRORS KyPyramid::AddLevel(KyImage<T>* images) noexcept {
  if (levels_ == 0 || levels_ == kMostLevels)
    return ky::Explain(KY_ERROR_PYRAMID_HALVE, "the pyramid has no level, or all that it may");
  KyImage<T>& last = images[levels_ - 1];
  const int width = last.GetWidth() / 2, height = last.GetHeight() / 2;
  if (ky::CheckImage(&last, "source") != KY_OK || width == 0 || height == 0)
    return ky::Explain(KY_ERROR_PYRAMID_HALVE, "the last level is too small, or not built");
  if (const KY_ERRORS error = ky::Resize(&images[levels_], width, height)) return error;
  HalveImage(last, images[levels_]);
  ++levels_;
  return KY_OK;
}

KY_ERRORS KyPyramid::Halve() noexcept {
  return ky::Call("KyPyramid::Halve",
                  [&] { return type_ == KY_IMAGE_BW8 ? AddLevel(grey_) : AddLevel(color_); });
}

bool KyPyramid::Has(int level, KY_IMAGE_TYPES type) const noexcept {
  return type == type_ && level >= 0 && level < levels_;
}

const KyROI<KyBW8>* KyPyramid::GetBW8Level(int level) const noexcept {
  return Has(level, KY_IMAGE_BW8) ? &grey_[level] : nullptr;
}
const KyROI<KyC24>* KyPyramid::GetC24Level(int level) const noexcept {
  return Has(level, KY_IMAGE_C24) ? &color_[level] : nullptr;
}
const KyGenericROI* KyPyramid::GetLevel(int level) const noexcept {
  if (type_ == KY_IMAGE_BW8) return GetBW8Level(level);
  return GetC24Level(level);
}
