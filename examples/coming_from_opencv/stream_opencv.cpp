// Finds what moves in a stream of frames of 640 x 480 grey pixels: number of the frame, and box.
#include <cstdio>
#include <opencv2/imgproc.hpp>
#include <vector>

int main() {
  std::vector<unsigned char> buffer(640 * 480);  // the camera's
  const cv::Mat frame(480, 640, CV_8UC1, buffer.data());
  cv::Mat background, still, moving, labels, boxes, centres;
  for (int n = 0; std::fread(buffer.data(), 1, buffer.size(), stdin) == buffer.size(); ++n) {
    if (n == 0) frame.convertTo(background, CV_32F);
    cv::accumulateWeighted(frame, background, 0.1);
    background.convertTo(still, CV_8U);
    cv::absdiff(frame, still, moving);
    cv::morphologyEx(moving, moving, cv::MORPH_OPEN, cv::Mat::ones(5, 5, CV_8U));
    cv::threshold(moving, moving, 59, 255, cv::THRESH_BINARY);
    const int count = cv::connectedComponentsWithStats(moving, labels, boxes, centres, 8);
    for (int i = 1; i < count; ++i) {
      const int* const box = boxes.ptr<int>(i);
      std::printf("%3d %4d %4d %4d %4d\n", n, box[0], box[1], box[2], box[3]);
    }
  }
}
