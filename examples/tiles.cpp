// Several operations on all processors: threads work on tiles of one image.
//
//   tiles [ROUNDS]
//
// smooths a large picture and marks its small bright details: on one thread as a whole, on one
// thread tile by tile, and on tiles in parallel. Prints the best times of ROUNDS (5) and the
// speed-up, and fails unless the results are the same.
#include <tbb/blocked_range.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/global_control.h>
#include <tbb/info.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <stdexcept>
#include <string>

#include "ky/ky.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

using Grey = KyImage<KyBW8>;
using Rows = tbb::blocked_range<int>;

constexpr int kCopies = 5;
// Tiles are as wide as the picture: long rows are fast, and two sides have no neighbours.
constexpr int kTileHeight = 300;
constexpr unsigned kRadius = 5;
// A result depends on pixels so far away: 1 for the smoothing, a radius each for the erosion and
// the dilation of the top-hat.
constexpr int kHalo = 1 + 2 * static_cast<int>(kRadius);

// The drawn scene, again and again.
Grey Picture() {
  const Grey scene = scene::Draw(scene::Bundled(true));
  Must(KyGetError());
  const int width = scene.GetWidth(), height = scene.GetHeight();
  Grey picture = NewImage<KyBW8>(kCopies * width, kCopies * height);
  for (int y = 0; y < kCopies; ++y) {
    for (int x = 0; x < kCopies; ++x) {
      KyROI<KyBW8> place(&picture, x * width, y * height, width, height);
      Must(ImgCopy(&scene, &place));
    }
  }
  return picture;
}

void Process(const KyROI<KyBW8>& source, KyROI<KyBW8>& between, KyROI<KyBW8>& destination) {
  Must(ImgConvolGaussian3x3(&source, &between));
  Must(ImgWhiteTopHatDisk(&between, &destination, kRadius));
  Must(ImgThreshold(&destination, &destination, 60));
}

// The images of a thread in which it works on a tile and the halo above and below it.
struct Scratch {
  explicit Scratch(int width)
      : between(NewImage<KyBW8>(width, kTileHeight + 2 * kHalo)),
        result(NewImage<KyBW8>(width, kTileHeight + 2 * kHalo)) {}
  Grey between, result;
};
// Allocated once and kept from picture to picture: fresh memory costs more than the work.
using ScratchOfThreads = tbb::enumerable_thread_specific<Scratch>;

// Reads the halo too, but writes the tile alone: its bytes belong to this thread.
void ProcessTile(Grey& source, Grey& destination, const Rows& rows, Scratch& scratch) {
  const int width = source.GetWidth(), height = rows.end() - rows.begin();
  const int above = std::min(rows.begin(), kHalo);
  const int below = std::min(source.GetHeight() - rows.end(), kHalo);

  const KyROI<KyBW8> from(&source, 0, rows.begin() - above, width, above + height + below);
  KyROI<KyBW8> between(&scratch.between, 0, 0, width, from.GetHeight());
  KyROI<KyBW8> result(&scratch.result, 0, 0, width, from.GetHeight());
  Process(from, between, result);
  const KyROI<KyBW8> inner(&result, 0, above, width, height);
  KyROI<KyBW8> to(&destination, 0, rows.begin(), width, height);
  Must(ImgCopy(&inner, &to));
}

void ProcessTiles(Grey& source, Grey& destination, ScratchOfThreads& scratch) {
  // The simple partitioner halves until no tile is higher.
  tbb::parallel_for(
      Rows(0, source.GetHeight(), kTileHeight),
      [&](const Rows& rows) { ProcessTile(source, destination, rows, scratch.local()); },
      tbb::simple_partitioner());
}

// The least time of some rounds, in milliseconds.
template <class Work>
double Milliseconds(int rounds, Work work) {
  using Clock = std::chrono::steady_clock;
  double least = std::numeric_limits<double>::infinity();
  for (int i = 0; i < rounds; ++i) {
    const Clock::time_point start = Clock::now();
    work();
    least =
        std::min(least, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
  }
  return least;
}

void Run(int rounds) {
  Grey picture = Picture();
  Grey whole = SameSize<KyBW8>(picture), between = SameSize<KyBW8>(picture);
  Grey tiled = SameSize<KyBW8>(picture);
  const double atOnce = Milliseconds(rounds, [&] { Process(picture, between, whole); });
  ScratchOfThreads scratch([&] { return Scratch(picture.GetWidth()); });
  const auto tiles = [&] { ProcessTiles(picture, tiled, scratch); };
  const double parallel = Milliseconds(rounds, tiles);
  const tbb::global_control single(tbb::global_control::max_allowed_parallelism, 1);
  const double serial = Milliseconds(rounds, tiles);

  Must(ImgOper(KY_OPER_ABS_DIFFERENCE, &whole, &tiled, &tiled));
  KyBW8 least = 0, most = 0;
  float mean = 0;
  Must(ImgPixelStat(&tiled, least, most, mean));
  if (most != 0) throw std::runtime_error("the results differ");
  std::printf("%d x %d pixels; the results are the same\n", picture.GetWidth(),
              picture.GetHeight());
  std::printf("%-28s %7s %9s\n", "", "ms", "speed-up");
  const auto print = [&](const std::string& what, double time) {
    std::printf("%-28s %7.2f %9.2f\n", what.c_str(), time, atOnce / time);
  };
  print("one thread, whole picture", atOnce);
  print("one thread, tiles", serial);
  print(std::to_string(tbb::info::default_concurrency()) + " threads, tiles", parallel);
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[ROUNDS]",
                    [&] { Run(argc > 1 ? std::max(1, std::stoi(argv[1])) : 5); });
}
