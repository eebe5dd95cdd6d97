// OpenCV and ky on the same pixels:
//
//   opencv [FOLDER]
//
// finds the parts in a drawn frame that comes as cv::Mat, lets OpenCV fit a turned rectangle to the
// pixels of each and draw it, and writes opencv.png to FOLDER (demo). No pixel is copied from one
// library to the other.
#include "ky/opencv.h"

#include <array>
#include <filesystem>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>

#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

// Stands for cv::VideoCapture.
cv::Mat Grab() {
  const KyImage<KyBW8> picture = scene::Draw(scene::Bundled(true));
  return KyAsMat(picture).clone();
}

void Run(const std::string& folder) {
  const cv::Mat frame = Grab();
  KyMatImage<KyBW8> image(frame);
  Must(KyGetError());

  // ky works on OpenCV's pixels.
  KyImage<KyBW8> mask = SameSize<KyBW8>(image);
  KyImage<KyBW32> labels = SameSize<KyBW32>(image);
  KyObjectsVector parts;
  Must(ImgMedian(&image, &mask, 2));
  Must(ImgWhiteTopHat(&mask, &mask, 80));  // what is brighter than its surroundings
  Must(ImgThreshold(&mask, &mask, static_cast<unsigned>(IMG_THRESHOLD_MIN_RESIDUE)));
  Must(ImgFindObjects(&mask, 255, 255, KY_CONNEXITY_8, &parts, &labels));
  Must(ImgSelectObjects(&parts, {.minArea = 200}));

  // OpenCV works on ky's pixels: on parts of the labels, and on the picture of the result.
  KyImage<KyC24> result = SameSize<KyC24>(image);
  Must(ImgConvert(&image, &result));
  cv::Mat canvas = KyAsMat(result);
  for (const KyObject& part : parts) {
    const KyROI<KyBW32> box(&labels, part.x, part.y, part.width, part.height);
    std::vector<cv::Point> pixels;
    cv::findNonZero(KyAsMat(box) == static_cast<int>(part.label), pixels);
    const cv::RotatedRect rectangle = cv::minAreaRect(pixels);
    std::array<cv::Point2f, 4> corners;
    rectangle.points(corners.data());
    for (std::size_t i = 0; i < 4; ++i) {
      const cv::Point2f origin(static_cast<float>(part.x), static_cast<float>(part.y));
      cv::line(canvas, corners[i] + origin, corners[(i + 1) % 4] + origin, {255, 60, 0}, 2);
    }
    std::printf("part %2u: %5.1f x %5.1f pixels\n", part.label, double{rectangle.size.width},
                double{rectangle.size.height});
  }
  std::filesystem::create_directories(folder);
  picture::Write(result, folder + "/opencv.png");

  // A matrix of another type is refused; the image then has no pixels, and calls fail.
  const KyMatImage<KyBW8> refused(canvas);
  std::printf("a colour matrix as a grey image: %s\n", KyGetErrorText(KyGetError()));
  if (image.GetPixelPtr(0, 0) != frame.data || canvas.data != result.GetPixelPtr(0, 0) ||
      refused.GetPixelPtr(0, 0) != nullptr)
    throw std::runtime_error("pixels have been copied");
  if (parts.GetNumElements() != 11) throw std::runtime_error("not all parts have been found");
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}
