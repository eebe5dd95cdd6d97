/// @file
/// @ingroup opencv
/// Images on the pixels of OpenCV's matrices, and matrices on the pixels of regions, without a
/// copy. For those who have OpenCV: ky.h does not include this header, and no library needs it.
#pragma once

#include <climits>
#include <opencv2/core.hpp>
#include <type_traits>

#include "ky/image.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// Both libraries then work on the same pixels, each with rectangles and rows of its own. OpenCV
/// keeps colours as blue, green, red: component c0 of a `KyC24` on such a matrix is blue. That does
/// not matter to filters and operators; functions that take the components as red, green and blue,
/// such as `ImgConvert` to grey levels, want a matrix in the order of cv::COLOR_BGR2RGB.

/// Returns the type of a matrix whose elements are pixels of type T: CV_8UC1 for `KyBW8`, CV_16UC1
/// for `KyBW16`, CV_32SC1 for `KyBW32` (OpenCV has no unsigned type of 32 bits; levels of 2^31 and
/// above read as negative there), CV_8UC3 for `KyC24`, CV_8UC4 for `KyC24A`, CV_8UC2 for `KyC15`
/// and `KyC16`, CV_32FC2 for `KyComplex64`. There is none for one-bit pixels, for which it does not
/// compile.
template <class T>
constexpr int KyMatType() noexcept {
  static_assert(!std::is_same_v<T, KyBW1>, "OpenCV has no matrices of bits");
  if constexpr (std::is_same_v<T, KyBW8>)
    return CV_8UC1;
  else if constexpr (std::is_same_v<T, KyBW16>)
    return CV_16UC1;
  else if constexpr (std::is_same_v<T, KyBW32>)
    return CV_32SC1;
  else if constexpr (std::is_same_v<T, KyC24>)
    return CV_8UC3;
  else if constexpr (std::is_same_v<T, KyC24A>)
    return CV_8UC4;
  else if constexpr (std::is_same_v<T, KyComplex64>)
    return CV_32FC2;
  else
    return CV_8UC2;
}

/// An image on the pixels of a matrix, which may be part of a larger one:
///
///     cv::Mat frame = cv::imread("part.png", cv::IMREAD_GRAYSCALE);
///     KyMatImage<KyBW8> image(frame);
///     KyMatImage<KyBW8> middle(frame(cv::Rect(100, 100, 200, 80)));
///     ImgMedian(&image, nullptr, 2);                        // frame is filtered
///
/// The object shares the matrix, so that pixels that OpenCV has allocated live at least as long as
/// the object; it may be made from a temporary. Pixels that a matrix only refers to must outlive
/// the use of both. `cv::Mat::create` gives a matrix of another size other pixels, and the object
/// keeps the old ones; likewise, `SetSize` gives the object pixels of its own, which are not those
/// of the matrix any more.
template <class T>
class KyMatImage : public KyImage<T> {
 public:
  /// Makes an image without pixels.
  KyMatImage() noexcept = default;
  /// Makes an image on the pixels of `mat`. After an error of Attach, which the status tells, it
  /// has no pixels, and every function refuses it with `KY_ERROR_NO_IMAGE` (1400).
  explicit KyMatImage(const cv::Mat& mat) noexcept { Attach(mat); }
  KyMatImage(KyMatImage&&) noexcept = default;
  KyMatImage& operator=(KyMatImage&&) noexcept = default;

  using KyImage<T>::Attach;
  /// Moves the image onto the pixels of `mat`, for example to the next frame of a stream. Errors,
  /// after which the image is as it was: `KY_ERROR_BAD_IMAGE_TYPE` (1419) for a type other than
  /// KyMatType<T>() or more than two dimensions; `KY_ERROR_NO_IMAGE` (1400) for an empty matrix;
  /// `KY_ERROR_PARAMETER_4_OUT_OF_RANGE` (1014) for rows 2^31 bytes apart or more; those of
  /// KyImage::Attach for pixels that are misaligned or the image's own. Trace:
  /// "KyMatImage::Attach".
  KY_ERRORS Attach(const cv::Mat& mat) noexcept {
    KyOk();
    if (mat.dims > 2 || (mat.type() != KyMatType<T>() && !mat.empty())) {
      KySetError(KY_ERROR_BAD_IMAGE_TYPE);
      KyNameParameter(
          "the matrix has another type than KyMatType<T>(), or more than two dimensions");
    } else if (mat.empty()) {
      KySetError(KY_ERROR_NO_IMAGE);
      KyNameParameter("the matrix is empty");
    } else if (mat.step[0] > INT_MAX) {
      KySetError(KY_ERROR_PARAMETER_4_OUT_OF_RANGE);
    } else if (this->Attach(reinterpret_cast<typename KyImage<T>::Memory*>(mat.data), mat.cols,
                            mat.rows, static_cast<int>(mat.step[0])) == KY_OK) {
      mat_ = mat;
    }
    return KyTraceError("KyMatImage::Attach");
  }

  /// Returns the matrix whose pixels the image was put on last; an empty one before that.
  const cv::Mat& GetMat() const noexcept { return mat_; }

 private:
  cv::Mat mat_;
};

/// Returns a matrix on the pixels of `roi`, of the type KyMatType<T>(), for the functions of OpenCV
/// to read and write:
///
///     KyImage<KyBW8> image(640, 480);
///     KyROI<KyBW8> top(&image, 0, 0, 640, 100);
///     cv::Mat lines = KyAsMat(top);
///     cv::line(lines, {0, 0}, {639, 99}, 255);
///
/// The pixels remain the image's: the image must outlive the use of the matrix, and must not be
/// resized while the matrix is in use, as that frees its pixels. An output of OpenCV lands in them
/// only when it has the size and the type of the matrix, because `cv::Mat::create` allocates others
/// otherwise. As with all ROIs, `const` protects the rectangle, not the pixels. Error:
/// `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels, and the matrix is empty. Trace: "KyAsMat".
template <class T>
cv::Mat KyAsMat(const KyROI<T>& roi) noexcept {
  KyOk();
  int pitch = 0;
  void* const pixels = roi.FindPixels(pitch);
  if (pixels == nullptr) {
    KySetError(KY_ERROR_NO_IMAGE);
    KyTraceError("KyAsMat");
    return {};
  }
  return {roi.GetHeight(), roi.GetWidth(), KyMatType<T>(), pixels, static_cast<std::size_t>(pitch)};
}
