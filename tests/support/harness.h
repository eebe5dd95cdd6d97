// The harness that every operation goes through.
//
// CheckOperation runs a call on many sizes and places, separate, in place and overlapping, on every
// path, and compares each result with a model, byte for byte; nothing outside the destination may
// change. It takes
//
//   call:  KY_ERRORS(const KyROI<In>*..., KyROI<Out>*)
//   model: void(const Picture<In>&..., Picture<Out>& out), where `out` holds the destination's old
//          pixels; PerPixel makes one from Out(Out old, In...).
//
// Sources have the size of the destination, unless an operation allows others: then a last argument
// of CheckOperation makes their size from the destination's.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/each_path.h"
#include "tests/support/picture.h"

namespace ky::test {

struct Size {
  int width, height;
};

#ifdef KY_SANITIZED
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

// Widths up to two vectors and a pixel, so that every mix of whole vectors and tail is met, with
// few rows; and some larger ones. Under sanitizers, which take long, each width has one height.
inline std::vector<Size> AwkwardSizes() {
  std::vector<Size> sizes;
  for (int width = 1; width <= 2 * kLongestVector + 1; ++width) {
    if (!kSanitized || width % 2 == 0) sizes.push_back({width, 1 + width % 3});
    if (!kSanitized || width % 2 != 0) sizes.push_back({width, 4 + width / 2 % 2});
  }
  sizes.push_back({0, 3});
  sizes.push_back({3, 0});
  sizes.push_back({1, 70});
  sizes.push_back({131, 17});
  sizes.push_back({6200, 2});
  return sizes;
}

// What a test asks for and, with GTEST_RANDOM_SEED=N in the environment, random sizes, others for
// each N: a longer look for what hides between the usual ones.
inline std::vector<Size> SizesToTry(std::vector<Size> sizes) {
  const int seed = GTEST_FLAG_GET(random_seed);
  Random random(static_cast<unsigned>(seed));
  for (int i = 0; seed != 0 && i < 12; ++i) {
    const int longer = 1 + static_cast<int>(random() % 330);
    const int shorter = 1 + static_cast<int>(random() % (i < 8 ? 45 : 200));
    sizes.push_back(i % 2 == 0 ? Size{longer, shorter} : Size{shorter, longer});
  }
  return sizes;
}

inline constexpr Placement kPlacements[] = {{0, 0, 0}, {1, 1, 3}, {13, 2, 0}};

template <class F>
auto PerPixel(F f) {
  return [f](const auto&... pictures) {
    auto all = std::tie(pictures...);
    constexpr std::size_t kOut = sizeof...(pictures) - 1;
    using OutPicture = std::remove_cvref_t<decltype(std::get<kOut>(all))>;
    auto& out = const_cast<OutPicture&>(std::get<kOut>(all));
    for (int y = 0; y < out.height; ++y)
      for (int x = 0; x < out.width; ++x) [&]<std::size_t... I>(std::index_sequence<I...>) {
          out.At(x, y) = f(out.At(x, y), std::get<I>(all).At(x, y)...);
        }
    (std::make_index_sequence<kOut>());
  };
}

inline constexpr auto kSameSize = [](Size destination) { return destination; };

// What may share pixels with the destination.
enum class Aliasing { kInPlaceAndOverlap, kNone };

template <class Out, class... In>
class Harness {
 public:
  template <class Call, class Model, class SourceSize>
  static void CheckOperation(Call call, Model model, const std::vector<Size>& sizes,
                             Aliasing aliasing, SourceSize sourceSize) {
    ForEachPath([&](const std::string&) {
      Random random(1);
      int turn = 0;
      for (const Size size : SizesToTry(sizes)) {
        if (::testing::Test::HasFailure()) return;
        SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
        const Placement place = kPlacements[turn++ % 3];
        const Placement other = kPlacements[turn % 3];
        [[maybe_unused]] const Size from = sourceSize(size);
        std::tuple<Picture<In>...> sources(RandomPicture<In>(from.width, from.height, random)...);
        RunSeparate(call, model, sources, size, place, other, random);
        if (aliasing == Aliasing::kInPlaceAndOverlap)
          (RunShared(call, model, sources, size, from, place, random,
                     std::index_sequence_for<In...>()));
      }
    });
  }

 private:
  using Canvases = std::tuple<std::unique_ptr<Canvas<In>>...>;
  static Canvases Paint(const std::tuple<Picture<In>...>& sources, Placement place,
                        Random& random) {
    return std::apply(
        [&](const auto&... source) {
          return Canvases(std::make_unique<Canvas<In>>(source, place, random)...);
        },
        sources);
  }

  template <class Call, class Model>
  static void RunSeparate(const Call& call, const Model& model,
                          const std::tuple<Picture<In>...>& sources, Size size, Placement place,
                          Placement other, Random& random) {
    SCOPED_TRACE("separate");
    const Canvases canvases = Paint(sources, other, random);
    const Picture<Out> old = RandomPicture<Out>(size.width, size.height, random);
    Canvas<Out> out(old, place, random);
    const KY_ERRORS status =
        std::apply([&](auto&... canvas) { return call(canvas->roi()..., out.roi()); }, canvases);
    ASSERT_EQ(status, KY_OK);
    Picture<Out> expected = old;
    std::apply([&](const auto&... source) { model(source..., expected); }, sources);
    EXPECT_TRUE(Same(expected, out.Get()));
    EXPECT_TRUE(out.OnlyChanged(*out.roi())) << "a byte outside the destination changed";
    std::apply(
        [&](auto&... canvas) { EXPECT_TRUE((canvas->Unchanged() && ...)) << "a source changed"; },
        canvases);
  }

  // Source I is the destination itself, or an area of the same memory that overlaps it. Pixels of
  // another type lie in another image of that memory.
  template <class Call, class Model, std::size_t... I>
  static void RunShared(const Call& call, const Model& model,
                        const std::tuple<Picture<In>...>& sources, Size size, Size from,
                        Placement place, Random& random, std::index_sequence<I...>) {
    constexpr std::pair<int, int> kShifts[] = {{0, 0}, {1, 0}, {-1, 1}, {2, -1}};
    [[maybe_unused]] const auto run = [&]<std::size_t kShared>(
                                          std::integral_constant<std::size_t, kShared>) {
      using T = std::tuple_element_t<kShared, std::tuple<In...>>;
      constexpr bool kSameType = std::is_same_v<T, Out>;
      constexpr int kSize = static_cast<int>(sizeof(Out));
      for (const auto& [right, down] : kShifts) {
        SCOPED_TRACE("source " + std::to_string(kShared) + " lies (" + std::to_string(right) +
                     ", " + std::to_string(down) + ") from the destination");
        const Canvases canvases = Paint(sources, place, random);
        Placement roomy = {place.left + 2, place.above + 1, place.right + 2};
        int width = std::max(size.width, from.width);
        if (!kSameType) {  // rows of whole pixels of either type
          width = std::max(width, (from.width + 20) * static_cast<int>(sizeof(T)) / kSize + 30);
          roomy.right += 12 - (roomy.left + width + roomy.right) % 12;
        }
        Canvas<Out> shared(width, std::max(size.height, from.height), roomy, random);
        if constexpr (kSameType) shared.Put(std::get<kShared>(sources));
        KyROI<Out> out(shared.image(), roomy.left, roomy.above, size.width, size.height);
        const int pitch = shared.image()->GetPitch();
        const auto start =
            reinterpret_cast<std::uintptr_t>(shared.image()->GetPixelPtr(0, 0)) + alignof(T) - 1;
        KyImage<T> other;
        ASSERT_EQ(other.Attach(reinterpret_cast<T*>(start / alignof(T) * alignof(T)),
                               (pitch - (kSameType ? 0 : 4)) / static_cast<int>(sizeof(T)),
                               shared.image()->GetHeight() - 1, pitch),
                  KY_OK);
        KyROI<T> in(&other, roomy.left + right, roomy.above + down, from.width, from.height);
        auto seen = std::tuple<Picture<In>...>(sources);
        std::get<kShared>(seen) = Canvas<T>::Get(in);
        Picture<Out> expected = Canvas<Out>::Get(out);
        std::apply([&](const auto&... source) { model(source..., expected); }, seen);
        const auto source = [&]<std::size_t kIndex>(std::integral_constant<std::size_t, kIndex>) {
          if constexpr (kIndex == kShared)
            return static_cast<const KyROI<T>*>(&in);
          else
            return std::get<kIndex>(canvases)->roi();
        };
        ASSERT_EQ(call(source(std::integral_constant<std::size_t, I>())..., &out), KY_OK);
        EXPECT_TRUE(Same(expected, Canvas<Out>::Get(out)));
        EXPECT_TRUE(shared.OnlyChanged(out)) << "a byte outside the destination changed";
      }
    };
    (run(std::integral_constant<std::size_t, I>()), ...);
  }

 public:
  static void ExpectTrace(KY_ERRORS status, const std::vector<const char*>& trace) {
    EXPECT_EQ(KyGetError(), status);
    ASSERT_EQ(KyGetTraceCount(), static_cast<int>(trace.size()));
    for (std::size_t i = 0; i < trace.size(); ++i)
      EXPECT_STREQ(KyGetTrace(static_cast<int>(i)), trace[i]);
  }
};

// The types are the destination's and the sources', in the order of the call: CheckOperation<Out,
// In...>.
template <class Out, class... In, class Call, class Model, class SourceSize = decltype(kSameSize)>
void CheckOperation(Call call, Model model, const std::vector<Size>& sizes = AwkwardSizes(),
                    Aliasing aliasing = Aliasing::kInPlaceAndOverlap,
                    SourceSize sourceSize = kSameSize) {
  Harness<Out, In...>::CheckOperation(call, model, sizes, aliasing, sourceSize);
}

}  // namespace ky::test
