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

}  // namespace
