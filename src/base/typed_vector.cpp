#include "ky/typed_vector.h"

#include <algorithm>

#include "ky/typed_vector-inl.h"

template <class T>
KyPixelVectorTemplate<T>::KyPixelVectorTemplate(unsigned int count, T value) noexcept {
  if (this->Resize(count) == KY_OK) std::fill(this->begin(), this->end(), value);
}

template struct KyPlaceHolder<KyBW8>;
template struct KyPlaceHolder<KyBW16>;
template struct KyPlaceHolder<unsigned int>;
template struct KyPlaceHolder<KyC24>;
template class KyVectorTemplate<KyBW8>;
template class KyVectorTemplate<KyBW16>;
template class KyVectorTemplate<unsigned int>;
template class KyVectorTemplate<KyC24>;
template class KyPixelVectorTemplate<KyBW8>;
template class KyPixelVectorTemplate<KyBW16>;
template class KyPixelVectorTemplate<KyBW32>;
template class KyPixelVectorTemplate<KyC24>;
