// Things side by side: several destinations, or the results that a formula has for each place.
#pragma once

namespace ky {

template <class First, class... More>
struct Several {
  First first;
  Several<More...> more;
};
template <class Last>
struct Several<Last> {
  Last first;
};
template <class... T>
Several(T...) -> Several<T...>;

}  // namespace ky
