// Finds the coins of a picture: centre and diameter of each.
#include <cmath>
#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const cv::Mat picture = cv::imread(argv[1], cv::IMREAD_GRAYSCALE);
  cv::Mat mask, labels, stats, centres;
  cv::GaussianBlur(picture, mask, {5, 5}, 0);
  cv::threshold(mask, mask, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
  const int count = cv::connectedComponentsWithStats(mask, labels, stats, centres, 8);
  for (int i = 1; i < count; ++i) {
    const int area = stats.at<int>(i, cv::CC_STAT_AREA);
    if (area < 200) continue;
    const double x = centres.at<double>(i, 0), y = centres.at<double>(i, 1);
    std::printf("%6.1f %6.1f %6.1f\n", x, y, std::sqrt(4 * area / CV_PI));
  }
}
