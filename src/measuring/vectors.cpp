// The typed vectors of profiles, positions and edges.
#include "ky/measuring.h"
#include "ky/typed_vector-inl.h"

template struct KyPlaceHolder<float>;
template struct KyPlaceHolder<KyPosition>;
template struct KyPlaceHolder<KyEdge>;
template struct KyPlaceHolder<KyEdgePoint>;
template class KyVectorTemplate<float>;
template class KyVectorTemplate<KyPosition>;
template class KyVectorTemplate<KyEdge>;
template class KyVectorTemplate<KyEdgePoint>;
