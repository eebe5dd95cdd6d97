// Draws what the programs beside it work on: coins.png, page.png, edge.png and frames.raw in the
// folder that is given.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

namespace {

using cv::Mat;

constexpr double kPi = CV_PI;

// Light that falls off towards the lower right, as a factor.
Mat Light(cv::Size size, double least) {
  Mat light(size, CV_32F);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x)
      light.at<float>(y, x) =
          static_cast<float>(1 - (1 - least) * (x + y) / (size.width + size.height));
  return light;
}

// What a camera makes of levels: blurred, lit, with noise.
Mat Seen(const Mat& levels, double blur, const Mat& light, double noise) {
  Mat seen, grain(levels.size(), CV_32F);
  cv::RNG random(1);
  random.fill(grain, cv::RNG::NORMAL, 0, noise);
  levels.convertTo(seen, CV_32F);
  cv::GaussianBlur(seen, seen, {0, 0}, blur);
  seen = seen.mul(light) + grain;
  seen.convertTo(seen, CV_8U);
  return seen;
}

Mat Coins() {
  Mat levels(360, 480, CV_8U, cv::Scalar(60));
  for (int i = 0; i < 20; ++i)
    cv::circle(levels, {60 + 90 * (i % 5), 50 + 86 * (i / 5)}, 22 + 3 * (i % 4), 190, cv::FILLED,
               cv::LINE_AA);
  return Seen(levels, 1.2, Light(levels.size(), 0.85), 5);
}

Mat Page() {
  Mat levels(400, 560, CV_8U, cv::Scalar(235));
  const char* const lines[] = {"The quick brown fox", "jumps over the lazy dog.",
                               "Sphinx of black quartz,", "judge my vow.", "0123456789"};
  for (int i = 0; i < 5; ++i)
    cv::putText(levels, lines[i], {40, 70 + 70 * i}, cv::FONT_HERSHEY_COMPLEX, 1, 50, 2,
                cv::LINE_AA);
  return Seen(levels, 0.8, Light(levels.size(), 0.3), 2);
}

// The area of each pixel under an edge that leans by 8 degrees, blurred by a Gaussian of sigma 2:
// its levels go from 10 % to 90 % within 5.13 pixels.
Mat Edge() {
  Mat levels(120, 160, CV_32F);
  const double normalX = std::cos(8 * kPi / 180), normalY = std::sin(8 * kPi / 180);
  for (int y = 0; y < levels.rows; ++y)
    for (int x = 0; x < levels.cols; ++x) {
      const double distance = (x - 81.3) * normalX + (y - 60) * normalY;
      levels.at<float>(y, x) =
          static_cast<float>(40 + 160 * (1 + std::erf(distance / (2 * std::sqrt(2.0)))) / 2);
    }
  return Seen(levels, 0.01, Mat::ones(levels.size(), CV_32F), 2);
}

// A dark part that crosses a bench.
Mat Frame(int n) {
  Mat levels(480, 640, CV_8U, cv::Scalar(90));
  cv::rectangle(levels, {100, 300, 180, 90}, 140, cv::FILLED);
  cv::rectangle(levels, {40 + 40 * n, 120, 40, 60}, 220, cv::FILLED);
  return Seen(levels, 0.8, Light(levels.size(), 0.9), 3);
}

bool Draw(const std::string& folder) {
  std::filesystem::create_directories(folder);
  bool drawn = cv::imwrite(folder + "/coins.png", Coins()) &&
               cv::imwrite(folder + "/page.png", Page()) &&
               cv::imwrite(folder + "/edge.png", Edge());
  std::FILE* const stream = std::fopen((folder + "/frames.raw").c_str(), "wb");
  if (stream == nullptr) return false;
  for (int n = 0; n < 12; ++n) {
    const Mat frame = Frame(n);
    drawn = drawn && std::fwrite(frame.data, 1, frame.total(), stream) == frame.total();
  }
  return std::fclose(stream) == 0 && drawn;
}

}  // namespace

int main(int argc, char** argv) { return argc == 2 && Draw(argv[1]) ? 0 : 1; }
