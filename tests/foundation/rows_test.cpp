// How areas of memory lie to each other, against a comparison byte by byte.
#include "foundation/rows.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "ky/operators.h"
#include "tests/support/picture.h"

namespace ky {
namespace {

using test::Random;

// Any rows in a small piece of memory, of half the pitches the same, so that all cases are met.
template <class T>
Rows<const T> AnyRows(const KyBW8* memory, Random& random) {
  constexpr std::ptrdiff_t kSize = sizeof(T), kPitches[] = {12, 12, 14, 18};
  const std::ptrdiff_t pitch = kPitches[random() % 4];
  return {reinterpret_cast<const T*>(memory + 2 * (random() % 40)), pitch,
          static_cast<std::ptrdiff_t>(random()) % (pitch / kSize + 1),
          static_cast<std::ptrdiff_t>(random() % 4)};
}
template <class T>
std::set<const void*> BytesOf(const Rows<const T>& rows) {
  std::set<const void*> bytes;
  for (std::ptrdiff_t y = 0; y < rows.height; ++y)
    for (std::ptrdiff_t i = 0; i < rows.RowBytes(); ++i)
      bytes.insert(reinterpret_cast<const char*>(rows.Row(y)) + i);
  return bytes;
}

template <class A, class B>
void CheckSharing() {
  alignas(8) static constexpr KyBW8 kMemory[200] = {};
  Random random(1);
  int met[3] = {};
  for (int i = 0; i < 20000; ++i) {
    const auto a = AnyRows<A>(kMemory, random);
    const auto b = AnyRows<B>(kMemory, random);
    const auto bytesA = BytesOf(a), bytesB = BytesOf(b);
    bool meet = false;
    for (const void* byte : bytesA) meet |= bytesB.contains(byte);
    const bool same = meet && sizeof(A) == sizeof(B) && bytesA == bytesB && a.height == b.height;
    const Sharing sharing = SharingOf(a, b);
    ++met[static_cast<int>(sharing)];
    ASSERT_EQ(sharing == Sharing::kTheSame, same);
    // Of different pitches, areas that do not meet may count as sharing.
    if (meet || a.pitch == b.pitch) {
      ASSERT_EQ(sharing != Sharing::kNothing, meet);
    }
  }
  for (const Sharing sharing : {Sharing::kNothing, Sharing::kPartly})
    EXPECT_GT(met[static_cast<int>(sharing)], 100);
}

TEST(Rows, Sharing) {
  CheckSharing<KyBW8, KyBW8>();
  CheckSharing<KyBW16, KyBW16>();
  CheckSharing<KyC24, KyC24>();
  CheckSharing<KyBW8, KyBW16>();
  CheckSharing<KyC24, KyBW8>();
}

// Images of two pixel types and pitches that wrap the same memory.
TEST(Rows, SourcesOfAnotherTypeAreReadBeforeTheyAreOverwritten) {
  for (const int pitch : {16, 22}) {
    std::vector<KyBW8> memory(8 * 16);
    for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<KyBW8>(5 * i);
    const std::vector<KyBW8> before = memory;
    KyImage<KyBW8> source;
    KyImage<KyBW16> destination;
    ASSERT_EQ(source.Attach(memory.data(), 8, 5, 8), KY_OK);
    ASSERT_EQ(destination.Attach(reinterpret_cast<KyBW16*>(memory.data()), 8, 5, pitch), KY_OK);
    ASSERT_EQ(ImgOper(KY_OPER_MULTIPLY, &source, &source, &destination), KY_OK);
    for (int y = 0; y < 5; ++y)
      for (int x = 0; x < 8; ++x) {
        const int level = before[static_cast<std::size_t>(8 * y + x)];
        EXPECT_EQ(destination.GetPixel(x, y), level * level);
      }
  }
}

}  // namespace
}  // namespace ky
