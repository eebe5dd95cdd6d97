// The typed vectors whose elements belong to this library.
#include "ky/image_vector.h"
#include "ky/records.h"
#include "ky/typed_vector-inl.h"

template <class T>
KyPathVectorTemplate<T>::KyPathVectorTemplate(unsigned int maxElements) noexcept {
  this->Reserve(maxElements);
}

template struct KyPlaceHolder<KyPath>;
template struct KyPlaceHolder<KyBW8Path>;
template struct KyPlaceHolder<KyC24Path>;
template struct KyPlaceHolder<KyPeak>;
template struct KyPlaceHolder<KyRun>;
template struct KyPlaceHolder<KyImage<KyBW8>>;
template struct KyPlaceHolder<KyImage<KyC24>>;
template class KyVectorTemplate<KyPath>;
template class KyVectorTemplate<KyBW8Path>;
template class KyVectorTemplate<KyC24Path>;
template class KyVectorTemplate<KyPeak>;
template class KyVectorTemplate<KyRun>;
template class KyVectorTemplate<KyImage<KyBW8>>;
template class KyVectorTemplate<KyImage<KyC24>>;
template class KyPathVectorTemplate<KyPath>;
template class KyPathVectorTemplate<KyBW8Path>;
template class KyPathVectorTemplate<KyC24Path>;
