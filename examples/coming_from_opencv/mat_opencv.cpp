// Shows what is small and bright: cv::Mat in, cv::Mat out.
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

static cv::Mat SmallAndBright(const cv::Mat& in) {
  cv::Mat out;
  cv::medianBlur(in, out, 5);
  const cv::Mat element = cv::getStructuringElement(cv::MORPH_RECT, {31, 31});
  cv::morphologyEx(out, out, cv::MORPH_TOPHAT, element);
  return out;
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  cv::imwrite(argv[2], SmallAndBright(cv::imread(argv[1], cv::IMREAD_GRAYSCALE)));
}
