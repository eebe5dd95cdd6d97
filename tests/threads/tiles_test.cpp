// Two threads on neighbouring tiles of one image: no byte of the other's tile is touched, and each
// has its own status. ThreadSanitizer watches.
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT

// Runs `work` on the left and the right part of an image of odd width at the same time.
void OnTiles(KyImage<KyBW8>& image,
             const std::function<void(KyROI<KyBW8>& tile, int index)>& work) {
  const int split = image.GetWidth() / 2 + 3;
  const auto run = [&](int index) {
    KyROI<KyBW8> tile(&image, index == 0 ? 0 : split, 0,
                      index == 0 ? split : image.GetWidth() - split, image.GetHeight());
    for (int i = 0; i < 50; ++i) work(tile, index);
  };
  std::thread left(run, 0), right(run, 1);
  left.join();
  right.join();
}

TEST(Threads, OperatorsOnNeighbouringTiles) {
  KyImage<KyBW8> image(131, 40);
  OnTiles(image, [](KyROI<KyBW8>& tile, int index) {
    EXPECT_EQ(ImgOper(KY_OPER_ADD, &tile, KyBW8(index + 1), &tile), KY_OK);
    EXPECT_EQ(ImgOper(KY_OPER_INVERT, &tile, &tile), KY_OK);
    // A failure stays in its own thread.
    const KY_ERRORS expected = index == 0 ? KY_ERROR_UNSUPPORTED_OPERATION : KY_ERROR_NO_IMAGE;
    ImgOper(index == 0 ? KY_OPER_SHIFT_LEFT : KY_OPER_ADD, index == 0 ? &tile : nullptr, &tile,
            &tile);
    EXPECT_EQ(KyGetError(), expected);
  });
  for (int x = 0; x < image.GetWidth(); ++x)
    ASSERT_EQ(image.GetPixel(x, 39), image.GetPixel(x < 68 ? 0 : 130, 0));
}

// Every family at the same time on both tiles, from one image into another and in place: each tile
// comes out as it does alone.
TEST(Threads, EveryFamilyOnNeighbouringTiles) {
  using Work = KY_ERRORS (*)(KyROI<KyBW8> * source, KyROI<KyBW8> * destination);
  const Work works[] = {
      [](auto* in, auto* out) { return ImgOper(KY_OPER_DIVIDE, in, out, out); },
      [](auto* in, auto* out) { return ImgNormalize(in, out, 100, 30); },
      [](auto* in, auto* out) { return ImgEqualize(in, out); },
      [](auto* in, auto* out) {
        return ImgThreshold(in, out, static_cast<unsigned>(IMG_THRESHOLD_MAX_ENTROPY), 9, 200);
      },
      [](auto* in, auto* out) {
        return ImgAutoAdaptiveThreshold(in, out, IMG_THRESHOLD_ISODATA, 8);
      },
      [](auto* in, auto* out) { return ImgConvolSobel(in, out); },
      [](auto*, auto* out) { return ImgConvolGaussian3x3(out, nullptr); },
      [](auto* in, auto* out) {
        const KyKernel kernel(KERNEL_BINOMIAL_3X3);
        return ImgConvolKernel(in, out, &kernel);
      },
      [](auto* in, auto* out) { return ImgOpenDisk(in, out, 5); },
      [](auto*, auto* out) { return ImgDilateBox(out, nullptr, 4, 3); },
      [](auto* in, auto* out) { return ImgScaleRotate(in, 9, 9, 9, 9, 1.1f, 1.1f, 20, out, 4); },
      [](auto*, auto* out) { return ImgHorizontalMirror(out); },
      [](auto* in, auto* out) { return ImgRebuildFrame(in, out, 1); },
      [](auto* in, auto* out) {
        KyPathVector path;
        ImgContour(in, KY_CONTOUR_CW_ALONG_BORDER, 3, 3, KY_CONTOUR_ABOVE_THRESHOLD, 90,
                   KY_CONNEXITY_8, &path);
        return ImgLineSegmentToImage(out, KyBW8(77), 0, 0, out->GetWidth() - 1,
                                     out->GetHeight() - 1);
      },
  };
  Random random(5);
  for (std::size_t i = 0; i < std::size(works); ++i) {
    SCOPED_TRACE("work " + std::to_string(i));
    Canvas<KyBW8> source(RandomPicture<KyBW8>(131, 33, random), {}, random);
    const Picture<KyBW8> old = RandomPicture<KyBW8>(131, 33, random);
    Canvas<KyBW8> alone(old, {}, random), together(old, {}, random);
    const auto run = [&](Canvas<KyBW8>& out, int index) {
      const int left = index == 0 ? 0 : 68, width = index == 0 ? 68 : 63;
      KyROI<KyBW8> from(source.image(), left, 0, width, 33), to(out.image(), left, 0, width, 33);
      for (int turn = 0; turn < 3; ++turn) EXPECT_EQ(works[i](&from, &to), KY_OK);
    };
    run(alone, 0);
    run(alone, 1);
    std::thread first([&] { run(together, 0); }), second([&] { run(together, 1); });
    first.join();
    second.join();
    EXPECT_TRUE(Same(alone.Get(), together.Get()));
    EXPECT_TRUE(together.OnlyChanged(*together.roi()));
  }
}

}  // namespace
