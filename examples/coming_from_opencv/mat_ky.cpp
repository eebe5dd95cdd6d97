// Shows what is small and bright: cv::Mat in, cv::Mat out.
#include <opencv2/imgcodecs.hpp>

#include "ky/ky.h"
#include "ky/opencv.h"

static cv::Mat SmallAndBright(const cv::Mat& in) {
  KyMatImage<KyBW8> image(in.clone());
  if (ImgMedian(&image, nullptr, 2) || ImgWhiteTopHat(&image, nullptr, 15)) return {};
  return image.GetMat();
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  cv::imwrite(argv[2], SmallAndBright(cv::imread(argv[1], cv::IMREAD_GRAYSCALE)));
}
