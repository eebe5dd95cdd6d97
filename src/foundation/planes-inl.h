// Elements of several bytes as one vector for each byte: their planes, which are taken apart from
// memory and joined again. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_PLANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_PLANES_INL_H_
#undef KY_FOUNDATION_PLANES_INL_H_
#else
#define KY_FOUNDATION_PLANES_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "foundation/pick-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <class V>
struct Planes1 {
  V c0;
};
template <class V>
struct Planes2 {
  V c0, c1;
};
template <class V>
struct Planes3 {
  V c0, c1, c2;
};
template <class V>
struct Planes4 {
  V c0, c1, c2, c3;
};
// Three planes that are all the same: a grey level as a colour.
template <class V>
struct SamePlanes3 {
  V grey;
};

// How planes are taken apart and joined.
template <class D>
class Shuffled {
  using V = hn::Vec<D>;

 public:
  HWY_INLINE static void Load(const uint8_t* from, Planes3<V>& to) {
    hn::LoadInterleaved3(D(), from, to.c0, to.c1, to.c2);
  }
  HWY_INLINE static void Load(const uint8_t* from, Planes4<V>& to) {
    hn::LoadInterleaved4(D(), from, to.c0, to.c1, to.c2, to.c3);
  }
  HWY_INLINE static void Store(const Planes3<V>& v, uint8_t* to) {
    hn::StoreInterleaved3(v.c0, v.c1, v.c2, D(), to);
  }
  HWY_INLINE static void Store(const Planes4<V>& v, uint8_t* to) {
    hn::StoreInterleaved4(v.c0, v.c1, v.c2, v.c3, D(), to);
  }
  HWY_INLINE static void Store(const SamePlanes3<V>& v, uint8_t* to) {
    const D d;
#if HWY_TARGET == HWY_SCALAR
    hn::StoreInterleaved3(v.grey, v.grey, v.grey, d, to);
#else
    constexpr size_t kBytes = hn::MaxLanes(d);
    static_assert(kBytes <= 32);
    // Which of its block's lanes stands in each byte.
    struct Places {
      uint8_t of[3 * kBytes];
    };
    alignas(64) static constexpr Places kPlaces = [] {
      Places places{};
      for (size_t i = 0; i < 3 * kBytes; ++i) places.of[i] = static_cast<uint8_t>(i / 3 % 16);
      return places;
    }();
    const auto store = [&](size_t i, V blocks) HWY_ATTR {
      const auto places = hn::Load(d, kPlaces.of + kBytes * i);
      hn::StoreU(hn::TableLookupBytes(blocks, places), d, to + kBytes * i);
    };
    if constexpr (kBytes == 32) {
      store(0, hn::ConcatLowerLower(d, v.grey, v.grey));
      store(1, v.grey);
      store(2, hn::ConcatUpperUpper(d, v.grey, v.grey));
    } else {
      for (size_t i = 0; i < 3; ++i) store(i, v.grey);
    }
#endif
  }
};

template <class D>
class Interleaving : public Shuffled<D> {};

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_SSE4
// Three blocks of 16 bytes hold 16 colours. A plane's bytes stand at other places in each of them,
// so that they blend into one block, which a shuffle puts in order. Shuffles alone would be nine,
// and many processors make one a cycle.
template <>
class Interleaving<hn::ScalableTag<uint8_t>> : public Shuffled<hn::ScalableTag<uint8_t>> {
  using D = hn::ScalableTag<uint8_t>;
  using V = hn::Vec<D>;

 public:
  using Shuffled<D>::Load;
  using Shuffled<D>::Store;
  HWY_INLINE static void Load(const uint8_t* from, Planes3<V>& to) {
    const V a = BlocksAt(from), b = BlocksAt(from + 16), c = BlocksAt(from + 32);
    to = {InOrder<0>(Blend(a, c, b)), InOrder<1>(Blend(b, a, c)), InOrder<2>(Blend(c, b, a))};
  }
  HWY_INLINE static void Store(const Planes3<V>& v, uint8_t* to) {
    const V c0 = InPlace<0>(v.c0), c1 = InPlace<1>(v.c1), c2 = InPlace<2>(v.c2);
    const V a = Blend(c0, c1, c2), b = Blend(c1, c2, c0), c = Blend(c2, c0, c1);
    const D d;
#if HWY_TARGET == HWY_AVX2
    hn::StoreU(hn::ConcatLowerLower(d, b, a), d, to);
    hn::StoreU(hn::ConcatUpperLower(d, a, c), d, to + 32);
    hn::StoreU(hn::ConcatUpperUpper(d, c, b), d, to + 64);
#else
    hn::StoreU(a, d, to);
    hn::StoreU(b, d, to + 16);
    hn::StoreU(c, d, to + 32);
#endif
  }

 private:
  struct alignas(16) Block {
    uint8_t of[16];
  };
  template <class ByteOf>
  static constexpr Block MakeBlock(const ByteOf& byteOf) {
    Block block{};
    for (int i = 0; i < 16; ++i) block.of[i] = static_cast<uint8_t>(byteOf(i));
    return block;
  }

  // The block there, and for each further block of a vector the one 48 bytes on.
  HWY_INLINE static V BlocksAt(const uint8_t* from) {
    const hn::FixedTag<uint8_t, 16> d;
#if HWY_TARGET == HWY_AVX2
    return hn::Combine(D(), hn::LoadU(d, from + 48), hn::LoadU(d, from));
#else
    return hn::LoadU(d, from);
#endif
  }
  // Bytes 0, 3, ... of a block come from `first`, 1, 4, ... from `second`, others from `third`.
  HWY_INLINE static V Blend(V first, V second, V third) {
    const auto every3rdFrom = [](int begin) {
      return [=](int i) { return i % 3 == begin ? 255 : 0; };
    };
    static constexpr Block kFirst = MakeBlock(every3rdFrom(0)),
                           kSecond = MakeBlock(every3rdFrom(1));
    const auto mask = [](const Block& block)
                          HWY_ATTR { return hn::MaskFromVec(hn::LoadDup128(D(), block.of)); };
    return hn::IfThenElse(mask(kFirst), first, hn::IfThenElse(mask(kSecond), second, third));
  }
  template <int kPlane>
  HWY_INLINE static V InOrder(V v) {
    static constexpr Block kPlaces = MakeBlock([](int i) { return (3 * i + kPlane) % 16; });
    return hn::TableLookupBytes(v, hn::LoadDup128(D(), kPlaces.of));
  }
  template <int kPlane>
  HWY_INLINE static V InPlace(V v) {
    // 3 times 11 is 1, modulo 16.
    static constexpr Block kPlaces = MakeBlock([](int i) { return 11 * (i - kPlane + 16) % 16; });
    return hn::TableLookupBytes(v, hn::LoadDup128(D(), kPlaces.of));
  }
};
#elif HWY_TARGET == HWY_AVX3_DL
// Bytes are picked from anywhere in two whole vectors, which takes a third of the instructions that
// shuffles within blocks of 16 bytes do.
template <>
class Interleaving<hn::ScalableTag<uint8_t>> {
  using D = hn::ScalableTag<uint8_t>;
  using V = hn::Vec<D>;

 public:
  HWY_INLINE static void Load(const uint8_t* from, Planes3<V>& to) {
    const V a = At(from, 0), b = At(from, 1), c = At(from, 2);
    to = {PlaneOf3<0>(a, b, c), PlaneOf3<1>(a, b, c), PlaneOf3<2>(a, b, c)};
  }
  HWY_INLINE static void Store(const Planes3<V>& v, uint8_t* to) {
    Put(VectorOf3<0>(v), to, 0);
    Put(VectorOf3<1>(v), to, 1);
    Put(VectorOf3<2>(v), to, 2);
  }
  HWY_INLINE static void Store(const SamePlanes3<V>& v, uint8_t* to) {
    Put(VectorOf3<0>(v.grey), to, 0);
    Put(VectorOf3<1>(v.grey), to, 1);
    Put(VectorOf3<2>(v.grey), to, 2);
  }
  // Blocks of 16 bytes are the rows and columns of a square that is mirrored at its diagonal.
  HWY_INLINE static void Load(const uint8_t* from, Planes4<V>& to) {
    const auto grouped = [=](size_t i) HWY_ATTR { return Grouped<4>(At(from, i)).raw; };
    const auto a = grouped(0), b = grouped(1), c = grouped(2), d = grouped(3);
    const auto lowAB = _mm512_shuffle_i32x4(a, b, 0x44), highAB = _mm512_shuffle_i32x4(a, b, 0xEE);
    const auto lowCD = _mm512_shuffle_i32x4(c, d, 0x44), highCD = _mm512_shuffle_i32x4(c, d, 0xEE);
    to = {V{_mm512_shuffle_i32x4(lowAB, lowCD, 0x88)}, V{_mm512_shuffle_i32x4(lowAB, lowCD, 0xDD)},
          V{_mm512_shuffle_i32x4(highAB, highCD, 0x88)},
          V{_mm512_shuffle_i32x4(highAB, highCD, 0xDD)}};
  }
  HWY_INLINE static void Store(const Planes4<V>& v, uint8_t* to) {
    const V low01 = Zip<1, 0>(v.c0, v.c1), low23 = Zip<1, 0>(v.c2, v.c3);
    const V high01 = Zip<1, 1>(v.c0, v.c1), high23 = Zip<1, 1>(v.c2, v.c3);
    Put(Zip<2, 0>(low01, low23), to, 0);
    Put(Zip<2, 1>(low01, low23), to, 1);
    Put(Zip<2, 0>(high01, high23), to, 2);
    Put(Zip<2, 1>(high01, high23), to, 3);
  }

 private:
  static constexpr size_t kBytes = BytePlaces::kBytes;

  HWY_INLINE static V At(const uint8_t* from, size_t i) {
    return hn::LoadU(D(), from + kBytes * i);
  }
  HWY_INLINE static void Put(V v, uint8_t* to, size_t i) { hn::StoreU(v, D(), to + kBytes * i); }

  template <size_t kPlane>
  HWY_INLINE static V PlaneOf3(V a, V b, V c) {
    static constexpr BytePlaces kPlaces = MakeBytePlaces([](size_t i) { return 3 * i + kPlane; });
    constexpr uint64_t kLast = MakeByteMask([](size_t i) { return 3 * i + kPlane >= 2 * kBytes; });
    return PickBytes(kPlaces, a, b, c, kLast);
  }
  template <size_t kVector>
  HWY_INLINE static V VectorOf3(const Planes3<V>& v) {
    static constexpr BytePlaces kPlaces = MakeBytePlaces([](size_t i) {
      const size_t byte = kBytes * kVector + i;
      return byte / 3 + (byte % 3 == 1 ? kBytes : 0);
    });
    constexpr uint64_t kLast =
        MakeByteMask([](size_t i) { return (kBytes * kVector + i) % 3 == 2; });
    return PickBytes(kPlaces, v.c0, v.c1, v.c2, kLast);
  }
  template <size_t kVector>
  HWY_INLINE static V VectorOf3(V grey) {
    static constexpr BytePlaces kPlaces =
        MakeBytePlaces([](size_t i) { return (kBytes * kVector + i) / 3; });
    return PickBytes(kPlaces, grey);
  }
  // The first bytes of elements of so many bytes, then the second ones, ...
  template <size_t kSize>
  HWY_INLINE static V Grouped(V v) {
    static constexpr BytePlaces kPlaces = MakeBytePlaces([](size_t i) {
      constexpr size_t kElements = kBytes / kSize;
      return i % kElements * kSize + i / kElements;
    });
    return PickBytes(kPlaces, v);
  }
  // Elements of so many bytes of a and b in turn, of their lower or their upper halves.
  template <size_t kSize, size_t kHalf>
  HWY_INLINE static V Zip(V a, V b) {
    static constexpr BytePlaces kPlaces = MakeBytePlaces([](size_t i) {
      return kBytes / 2 * kHalf + i / (2 * kSize) * kSize + i % kSize + kBytes * (i / kSize % 2);
    });
    return PickBytes(kPlaces, a, b);
  }
};
#endif

// The bytes of elements, from the lowest address up.
template <class D, class T, class V = hn::Vec<D>>
HWY_INLINE auto LoadPlanes(D d, const T* row) {
  const auto* const from = reinterpret_cast<const uint8_t*>(row);
  static_assert(sizeof(T) <= 4);
  if constexpr (sizeof(T) == 1) {
    return Planes1<V>{hn::LoadU(d, from)};
  } else if constexpr (sizeof(T) == 2) {
    Planes2<V> planes;
    hn::LoadInterleaved2(d, from, planes.c0, planes.c1);
    return planes;
  } else {
    std::conditional_t<sizeof(T) == 3, Planes3<V>, Planes4<V>> planes;
    Interleaving<D>::Load(from, planes);
    return planes;
  }
}
template <class V>
HWY_INLINE void StorePlanes(const Planes1<V>& v, uint8_t* to) {
  hn::StoreU(v.c0, hn::DFromV<V>(), to);
}
template <class V>
HWY_INLINE void StorePlanes(const Planes2<V>& v, uint8_t* to) {
  hn::StoreInterleaved2(v.c0, v.c1, hn::DFromV<V>(), to);
}
template <class V>
HWY_INLINE void StorePlanes(const Planes3<V>& v, uint8_t* to) {
  Interleaving<hn::DFromV<V>>::Store(v, to);
}
template <class V>
HWY_INLINE void StorePlanes(const Planes4<V>& v, uint8_t* to) {
  Interleaving<hn::DFromV<V>>::Store(v, to);
}
template <class V>
HWY_INLINE void StorePlanes(const SamePlanes3<V>& v, uint8_t* to) {
  Interleaving<hn::DFromV<V>>::Store(v, to);
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
