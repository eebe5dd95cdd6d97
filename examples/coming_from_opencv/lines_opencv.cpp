// Finds the lines of a page of text in uneven light: the box of each.
#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const cv::Mat page = cv::imread(argv[1], cv::IMREAD_GRAYSCALE);
  cv::Mat ink, labels, lines, centres;
  // Ink is darker than its surroundings by 12 levels; letters of a line become one object.
  cv::adaptiveThreshold(page, ink, 255, cv::ADAPTIVE_THRESH_MEAN_C, cv::THRESH_BINARY_INV, 41, 12);
  const cv::Mat gap = cv::getStructuringElement(cv::MORPH_RECT, {41, 5});
  cv::morphologyEx(ink, ink, cv::MORPH_CLOSE, gap);
  const int count = cv::connectedComponentsWithStats(ink, labels, lines, centres, 8);
  for (int i = 1; i < count; ++i) {
    const int x = lines.at<int>(i, cv::CC_STAT_LEFT), y = lines.at<int>(i, cv::CC_STAT_TOP);
    const int width = lines.at<int>(i, cv::CC_STAT_WIDTH);
    const int height = lines.at<int>(i, cv::CC_STAT_HEIGHT);
    if (width >= 60 && height >= 8) std::printf("%4d %4d %4d %4d\n", x, y, width, height);
  }
}
