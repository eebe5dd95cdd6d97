// Connected objects: disks on a noisy ground, with a few specks, and blurred noise, of which half
// of the pixels belong to objects. OpenCV needs a threshold first, and reads no levels.
#include <cstdint>
#include <memory>

#include "benchmarks/bench.h"

namespace ky::bench {
namespace {

struct Scene {
  explicit Scene(const Pictures& p)
      : grey(p.a.GetWidth(), p.a.GetHeight()), labels(p.a.GetWidth(), p.a.GetHeight()) {}
  KyImage<KyBW8> grey;
  KyImage<KyBW32> labels;
  KyObjectsVector objects;
};
using Draw = void (*)(KyImage<KyBW8>& grey);

void DrawDisks(KyImage<KyBW8>& grey) {
  std::uint64_t seed = 1;
  for (int y = 0; y < grey.GetHeight(); ++y) {
    for (int x = 0; x < grey.GetWidth(); ++x) {
      const int dx = x % 64 - 32, dy = y % 64 - 32, radius = 12 + (x / 64 + y / 64) % 16;
      seed = seed * 6364136223846793005u + 1442695040888963407u;
      const auto noise = static_cast<int>(seed >> 40) % 96;
      const bool speck = static_cast<int>(seed >> 33) % 1000 == 0;
      const bool inside = dx * dx + dy * dy <= radius * radius;
      grey.SetPixel(static_cast<KyBW8>(inside || speck ? 140 + noise : 20 + noise), x, y);
    }
  }
}
void DrawNoise(KyImage<KyBW8>& grey) {
  std::uint64_t seed = 1;
  for (int y = 0; y < grey.GetHeight(); ++y)
    for (int x = 0; x < grey.GetWidth(); ++x) {
      seed = seed * 6364136223846793005u + 1442695040888963407u;
      grey.SetPixel(static_cast<KyBW8>(seed >> 56), x, y);
    }
  for (int i = 0; i < 2; ++i) ImgConvolUniform3x3(&grey, &grey);
}

std::shared_ptr<Scene> Make(const Pictures& p, Draw draw) {
  auto scene = std::make_shared<Scene>(p);
  draw(scene->grey);
  return scene;
}
Contender Ours(Draw draw, bool labels) {
  return [=](Pictures& p) {
    return [&p, scene = Make(p, draw), labels] {
      ImgFindObjects(&scene->grey, 128, 255, KY_CONNEXITY_8, &scene->objects,
                     labels ? &scene->labels : nullptr);
      p.numbers = {static_cast<double>(scene->objects.GetNumElements()),
                   static_cast<double>(scene->objects[0].area)};
    };
  };
}
#if KY_BENCH_OPENCV
Contender Theirs(Draw draw, bool statistics) {
  return [=](Pictures& p) {
    return [&p, scene = Make(p, draw), statistics] {
      static cv::Mat mask, labels, numbers, centers;
      const cv::Mat view(scene->grey.GetHeight(), scene->grey.GetWidth(), CV_8U,
                         scene->grey.GetPixelPtr(0, 0),
                         static_cast<std::size_t>(scene->grey.GetPitch()));
      cv::threshold(view, mask, 127, 255, cv::THRESH_BINARY);
      const int count = statistics
                            ? cv::connectedComponentsWithStats(mask, labels, numbers, centers, 8)
                            : cv::connectedComponents(mask, labels, 8);
      p.numbers = {static_cast<double>(count)};
    };
  };
}
#else
Contender Theirs(Draw, bool) { return nullptr; }
#endif

Contender Drawing() {
  return [](Pictures& p) {
    auto scene = Make(p, DrawDisks);
    ImgFindObjects(&scene->grey, 128, 255, KY_CONNEXITY_8, &scene->objects, &scene->labels);
    return [&p, scene] { ImgDrawObjects(&scene->labels, &scene->objects, 255, &p.out); };
  };
}

const bool registered = Register({
    {"objects, disks", Ours(DrawDisks, false), Theirs(DrawDisks, true)},
    {"objects and labels, disks", Ours(DrawDisks, true), Theirs(DrawDisks, true)},
    {"objects and labels, disks; OpenCV labels alone", Ours(DrawDisks, true),
     Theirs(DrawDisks, false)},
    {"objects, blurred noise", Ours(DrawNoise, false), Theirs(DrawNoise, true)},
    {"objects and labels, blurred noise", Ours(DrawNoise, true), Theirs(DrawNoise, true)},
    {"ImgDrawObjects, disks", Drawing()},
});

}  // namespace
}  // namespace ky::bench
