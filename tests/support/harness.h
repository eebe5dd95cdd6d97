// The harness that every operation goes through.
//
// CheckOperation runs a call on many sizes and places, separate, in place and overlapping, on every
// path, and compares each result with a model, byte for byte; nothing outside the destination may
// change. CheckRefusals hands it every kind of bad ROI. Both take
//
//   call:  KY_ERRORS(const KyROI<In>*..., KyROI<Out>*)
//   model: void(const Picture<In>&..., Picture<Out>& out), where `out` holds the destination's old
//   pixels;
//          PerPixel makes one from Out(Out old, In...).
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

// Widths up to two vectors and a pixel, so that every mix of whole vectors and tail is met, with
// few rows; and some larger ones.
inline std::vector<Size> AwkwardSizes() {
  std::vector<Size> sizes;
  for (int width = 1; width <= 2 * kLongestVector + 1; ++width) {
    sizes.push_back({width, 1 + width % 3});
    sizes.push_back({width, 4 + width % 2});
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

  template <class Call>
  static void CheckRefusals(Call call, const std::vector<const char*>& trace) {
    Random random(2);
    constexpr std::size_t kSources = sizeof...(In);
    for (std::size_t bad = 0; bad <= kSources; ++bad) {
      for (int kind = 0; kind < 5; ++kind) {
        SCOPED_TRACE("argument " + std::to_string(bad) + ", fault " + std::to_string(kind));
        Refuse(call, trace, bad, kind, random, std::index_sequence_for<In...>());
      }
    }
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

  // Source I is the destination itself, or an area of the same image that overlaps it.
  template <class Call, class Model, std::size_t... I>
  static void RunShared(const Call& call, const Model& model,
                        const std::tuple<Picture<In>...>& sources, Size size, Size from,
                        Placement place, Random& random, std::index_sequence<I...>) {
    constexpr std::pair<int, int> kShifts[] = {{0, 0}, {1, 0}, {-1, 1}, {2, -1}};
    [[maybe_unused]] const auto run = [&]<std::size_t kShared>(
                                          std::integral_constant<std::size_t, kShared>) {
      if constexpr (std::is_same_v<std::tuple_element_t<kShared, std::tuple<In...>>, Out>) {
        for (const auto& [right, down] : kShifts) {
          SCOPED_TRACE("source " + std::to_string(kShared) + " lies (" + std::to_string(right) +
                       ", " + std::to_string(down) + ") from the destination");
          const Canvases canvases = Paint(sources, place, random);
          const Placement roomy = {place.left + 2, place.above + 1, place.right + 2};
          Canvas<Out> shared(std::max(size.width, from.width), std::max(size.height, from.height),
                             roomy, random);
          shared.Put(std::get<kShared>(sources));
          KyROI<Out> out(shared.image(), roomy.left, roomy.above, size.width, size.height);
          KyROI<Out> in(shared.image(), roomy.left + right, roomy.above + down, from.width,
                        from.height);
          auto seen = std::tuple<Picture<In>...>(sources);
          std::get<kShared>(seen) = Canvas<Out>::Get(in);
          Picture<Out> expected = Canvas<Out>::Get(out);
          std::apply([&](const auto&... source) { model(source..., expected); }, seen);
          const auto source = [&]<std::size_t kIndex>(std::integral_constant<std::size_t, kIndex>) {
            if constexpr (kIndex == kShared)
              return static_cast<const KyROI<Out>*>(&in);
            else
              return std::get<kIndex>(canvases)->roi();
          };
          ASSERT_EQ(call(source(std::integral_constant<std::size_t, I>())..., &out), KY_OK);
          EXPECT_TRUE(Same(expected, Canvas<Out>::Get(out)));
          EXPECT_TRUE(shared.OnlyChanged(out)) << "a byte outside the destination changed";
        }
      }
    };
    (run(std::integral_constant<std::size_t, I>()), ...);
  }

  // Argument `bad` is null, without an image, off its parent, or of another size; the last once
  // more beside a destination without an image, which is what must be found first.
  template <class Call, std::size_t... I>
  static void Refuse(const Call& call, const std::vector<const char*>& trace, std::size_t bad,
                     int kind, Random& random, std::index_sequence<I...>) {
    constexpr std::size_t kOut = sizeof...(In);
    if ((kind == 3 && kOut == 0) || (kind == 4 && bad == kOut)) return;
    [[maybe_unused]] const Canvases sources = Paint({Picture<In>(9, 5)...}, kPlacements[1], random);
    Canvas<Out> out(9, 5, kPlacements[1], random);
    const auto faulty = [&]<class T>(Canvas<T>& canvas, std::size_t index,
                                     KyROI<T>& spare) -> KyROI<T>* {
      if (kind == 4 && index == kOut) return &spare;
      if (index != bad) return canvas.roi();
      switch (kind) {
        case 0: return nullptr;
        case 1: return &spare;
        case 2: canvas.roi()->SetPlacement(7, 4, 9, 5); break;
        default: canvas.roi()->SetSize(8, 5);
      }
      return canvas.roi();
    };
    std::tuple<KyROI<In>...> spares;
    KyROI<Out> spare;
    const KY_ERRORS status =
        call(faulty(*std::get<I>(sources), I, std::get<I>(spares))..., faulty(out, kOut, spare));
    EXPECT_EQ(status, kind == 3 ? KY_ERROR_SIZE_MISMATCH : KY_ERROR_NO_IMAGE);
    ExpectTrace(status, trace);
    EXPECT_TRUE(out.Unchanged());
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

// Every null, missing, misplaced and unequal ROI is refused with its code and the trace, innermost
// name first.
template <class Out, class... In, class Call>
void CheckRefusals(Call call, const std::vector<const char*>& trace) {
  Harness<Out, In...>::CheckRefusals(call, trace);
}

}  // namespace ky::test
