// Measures an edge that rises from left to right: its angle in degrees, and its width in pixels, in
// which the level goes from 10 % to 90 %.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

// Where the profile first reaches a share of its whole step.
static double Reaches(const cv::Mat& profile, float share) {
  const float* const p = profile.ptr<float>();
  const float step = p[profile.cols - 1] - p[0], level = p[0] + share * step;
  int i = 1;
  while (i < profile.cols - 1 && (p[i] - level) * step < 0) ++i;
  return float(i) - (p[i] - level) / (p[i] - p[i - 1]);
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const cv::Mat picture = cv::imread(argv[1], cv::IMREAD_GRAYSCALE);
  // The steepest place of each row, by a parabola through three slopes.
  cv::Mat smooth, slope;
  cv::GaussianBlur(picture, smooth, {7, 7}, 1);
  cv::Sobel(smooth, slope, CV_32F, 1, 0, 1);
  std::vector<cv::Point2f> points;
  for (int y = 0; y < slope.rows; ++y) {
    const float* const row = slope.ptr<float>(y);
    const auto x = std::max_element(row + 1, row + slope.cols - 1) - row;
    const float bend = row[x - 1] - 2 * row[x] + row[x + 1];
    points.emplace_back(float(x) + (row[x - 1] - row[x + 1]) / (2 * bend), float(y));
  }
  cv::Vec4f line;
  cv::fitLine(points, line, cv::DIST_L2, 0, 0.001, 0.001);
  const double angle = std::atan(line[1] / line[0]) * 180 / CV_PI;
  // The profile across the edge: the mean row of the picture, turned until the edge is upright.
  cv::Mat turned, profile;
  cv::Mat upright = cv::getRotationMatrix2D({line[2], line[3]}, angle + 90, 1);
  upright.at<double>(0, 2) += 20 - line[2];
  upright.at<double>(1, 2) += 30 - line[3];
  cv::warpAffine(picture, turned, upright, {41, 61}, cv::INTER_LINEAR, cv::BORDER_REPLICATE);
  cv::reduce(turned, profile, 0, cv::REDUCE_AVG, CV_32F);
  std::printf("%7.2f %5.2f\n", angle, Reaches(profile, 0.9f) - Reaches(profile, 0.1f));
}
