// Finds the coins of a picture: centre and diameter of each.
#include <cmath>
#include <numbers>

#include "ky/files.h"
#include "ky/ky.h"
#include "support/program.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  KyImage<KyBW8> picture;
  KyObjectsVector coins;
  Must(ImgLoad(argv[1], &picture));
  Must(ImgConvolGaussian5x5(&picture, nullptr));
  const KyBW8 threshold = ImgAutoThreshold(&picture, IMG_THRESHOLD_MIN_RESIDUE);
  Must(ImgFindObjects(&picture, threshold, 255, KY_CONNEXITY_8, &coins));
  Must(ImgSelectObjects(&coins, {.minArea = 200}));
  for (const KyObject& coin : coins)
    std::printf("%6.1f %6.1f %6.1f\n", double(coin.sumX) / coin.area, double(coin.sumY) / coin.area,
                std::sqrt(4 * coin.area / std::numbers::pi));
}
