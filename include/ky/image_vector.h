/// @file
/// @ingroup typed_vectors
/// Vectors of images.
#pragma once

#include "ky/image.h"
#include "ky/typed_vector.h"

/// A vector of images owns them and their pixels. AddElement moves an image in, AddElementByRef a
/// copy with pixels of its own. When the vector grows, its images move to other addresses, and ROIs
/// that were placed on them have to be placed anew.
///
/// An image's element in a file is the bytes of the object, addresses included, not its pixels. Of
/// what a file says only the rectangle is taken (KyImage::Restore): a loaded image has its
/// position, width and height but no pixels, and every function fails with `KY_ERROR_NO_IMAGE`
/// (1400) until SetSize or Attach gives it some. The images that stand in for missing ones are
/// KyImage::StandIn.

template <>
struct KyFileType<KyImage<KyBW8>> : KyFileTypeOf<18> {};
template <>
struct KyFileType<KyImage<KyC24>> : KyFileTypeOf<19> {};

extern template struct KyPlaceHolder<KyImage<KyBW8>>;
extern template struct KyPlaceHolder<KyImage<KyC24>>;
extern template class KyVectorTemplate<KyImage<KyBW8>>;
extern template class KyVectorTemplate<KyImage<KyC24>>;
