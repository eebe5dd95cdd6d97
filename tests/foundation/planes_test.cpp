// The planes of elements of several bytes, and the rows that are made of them.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tests/foundation/planes_test.cpp"
#include <hwy/foreach_target.h>  // keep first

#include <cstdint>
#include <vector>

#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Levels that are all different for 256 bytes, then in another order.
uint8_t Level(size_t i) { return static_cast<uint8_t>(i * 167 + i / 256 * 59); }

template <size_t kSize>
struct Element {
  uint8_t bytes[kSize];
};

// One vector of every plane, loaded from elements and stored as the same elements.
template <size_t kSize>
bool PlanesOfElements() {
  using D = hn::ScalableTag<uint8_t>;
  constexpr size_t kLanes = hn::MaxLanes(D());
  Element<kSize> from[kLanes];
  uint8_t to[kSize * kLanes], lanes[kSize][kLanes];
  for (size_t i = 0; i < kSize * kLanes; ++i) from[i / kSize].bytes[i % kSize] = Level(i);
  const auto planes = LoadPlanes(D(), from);
  hn::StoreU(planes.c0, D(), lanes[0]);
  if constexpr (kSize > 1) hn::StoreU(planes.c1, D(), lanes[1]);
  if constexpr (kSize > 2) hn::StoreU(planes.c2, D(), lanes[2]);
  if constexpr (kSize > 3) hn::StoreU(planes.c3, D(), lanes[3]);
  StorePlanes(planes, to);
  for (size_t i = 0; i < kSize * kLanes; ++i)
    if (lanes[i % kSize][i / kSize] != Level(i) || to[i] != Level(i)) return false;
  return true;
}

struct Rotated {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE Planes3<V> operator()(D, const Planes3<V>& v) const {
    return {v.c1, v.c2, v.c0};
  }
};
struct Opaque {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE Planes4<V> operator()(D d, const Planes3<V>& v) const {
    return {v.c0, v.c1, v.c2, hn::Set(d, 99)};
  }
};
struct Tripled {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE SamePlanes3<V> operator()(D, V v) const {
    return {v};
  }
};

// Rows of n elements, in memory of their own, where no byte more may be touched: byte k of element
// i is what byteOf(i, k) says.
template <class Op, class From, class To, class ByteOf>
bool Rows(size_t n, const ByteOf& byteOf) {
  std::vector<From> from(n);
  std::vector<To> to(n);
  auto* const in = reinterpret_cast<uint8_t*>(from.data());
  for (size_t i = 0; i < n * sizeof(From); ++i) in[i] = Level(i);
  MapSpan(Op(), to.data(), n, const_cast<const From*>(from.data()));
  const auto* const out = reinterpret_cast<const uint8_t*>(to.data());
  for (size_t i = 0; i < n * sizeof(To); ++i)
    if (out[i] != byteOf(i / sizeof(To), i % sizeof(To))) return false;
  return true;
}

}  // namespace

bool TakesPlanesApart() {
  return PlanesOfElements<1>() && PlanesOfElements<2>() && PlanesOfElements<3>() &&
         PlanesOfElements<4>();
}
bool MakesRows(size_t n) {
  return Rows<Rotated, KyC24, KyC24>(
             n, [](size_t i, size_t k) { return Level(3 * i + (k + 1) % 3); }) &&
         Rows<Opaque, KyC24, Element<4>>(
             n, [](size_t i, size_t k) { return k < 3 ? Level(3 * i + k) : 99; }) &&
         Rows<Tripled, KyBW8, KyC24>(n, [](size_t i, size_t) { return Level(i); });
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <gtest/gtest.h>

#include <string>

#include "tests/support/harness.h"

namespace ky {
namespace {

HWY_EXPORT(TakesPlanesApart);
HWY_EXPORT(MakesRows);

TEST(Planes, OfVectors) {
  test::ForEachPath([](const std::string&) { EXPECT_TRUE(KY_DISPATCH(TakesPlanesApart)()); });
}

TEST(Planes, OfRows) {
  test::ForEachPath([](const std::string&) {
    for (size_t n = 0; n <= 200; ++n) EXPECT_TRUE(KY_DISPATCH(MakesRows)(n)) << n;
  });
}

}  // namespace
}  // namespace ky
#endif
