// The mirrors on every path, and there and back.
#include "tests/support/harness.h"

namespace ky::test {
namespace {

const auto kUpsideDown = [](auto& out) {
  const auto old = out;
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x) out.At(x, y) = old.At(x, out.height - 1 - y);
};
const auto kLeftToRight = [](auto& out) {
  const auto old = out;
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x) out.At(x, y) = old.At(out.width - 1 - x, y);
};

TEST(Mirror, EverySize) {
  const auto vertical = [](auto* roi) { return ImgVerticalMirror(roi); };
  const auto horizontal = [](auto* roi) { return ImgHorizontalMirror(roi); };
  CheckOperation<KyBW8>(vertical, kUpsideDown);
  CheckOperation<KyC24>(vertical, kUpsideDown);
  std::vector<Size> sizes = AwkwardSizes();
  for (int width = 66; width < 140; ++width) sizes.push_back({width, 2});
  CheckOperation<KyBW8>(horizontal, kLeftToRight, sizes);
  CheckOperation<KyC24>(horizontal, kLeftToRight, sizes);
  const auto twice = [](auto* roi) {
    ImgHorizontalMirror(roi);
    ImgVerticalMirror(roi);
    ImgHorizontalMirror(roi);
    return ImgVerticalMirror(roi);
  };
  CheckOperation<KyC24>(twice, [](auto&) {});
}

}  // namespace
}  // namespace ky::test
