// The harness of operations that read an image and give numbers, beside harness.h.
#pragma once

#include "tests/support/harness.h"

namespace ky::test {

// call(const KyROI<T>*) must give what model(const Picture<T>&) gives, on every path, at awkward
// sizes and places, and change no pixel. What they give is compared with ==.
template <class T, class Call, class Model>
void CheckReading(Call call, Model model, const std::vector<Size>& sizes = AwkwardSizes()) {
  ForEachPath([&](const std::string&) {
    Random random(1);
    int turn = 0;
    for (const Size size : SizesToTry(sizes)) {
      if (::testing::Test::HasFailure()) return;
      SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
      const Picture<T> picture = RandomPicture<T>(size.width, size.height, random);
      Canvas<T> canvas(picture, kPlacements[turn++ % 3], random);
      EXPECT_EQ(call(static_cast<const KyROI<T>*>(canvas.roi())), model(picture));
      EXPECT_TRUE(canvas.Unchanged()) << "the source changed";
    }
  });
}

}  // namespace ky::test
