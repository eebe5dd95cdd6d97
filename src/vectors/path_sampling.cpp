#include "ky/path_sampling.h"

#include <type_traits>

#include "foundation/arrays.h"
#include "foundation/frame.h"
#include "vectors/line_segment.h"

namespace {

using ky::Call;
using ky::LineSegment;

// Runs `body(pixel, element)` for the elements that lie inside. If any lie outside, the result is
// KY_ERROR_PATH_STOPPED (106), which is no failure and leaves no trace.
template <class Roi, class Path, class Body>
KY_ERRORS AlongPath(const char* name, Roi* roi, Path* path, Body body) noexcept {
  bool left = false;
  const KY_ERRORS error = ky::CallUntraced([&] {
    decltype(ky::RowsOf(roi)) rows;
    if (const KY_ERRORS missing = ky::Open(roi, rows)) return missing;
    if (path == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    ky::Input<typename Roi::Pixel> in;
    if constexpr (std::is_const_v<Roi>) {
      if (!in.OpenApart(rows, ky::ArrayOf(*path))) return KY_ERROR_NOT_ENOUGH_MEMORY;
      rows = in.rows();
    }
    for (auto& element : *path) {
      if (element.x >= 0 && element.x < rows.width && element.y >= 0 && element.y < rows.height)
        body(rows.Row(element.y)[element.x], element);
      else
        left = true;
    }
    return left ? KY_ERROR_PATH_STOPPED : KY_OK;
  });
  return error == KY_OK || left ? error : KyTraceError(name);
}

template <class Roi, class T>
KY_ERRORS ImageToPath(const char* name, Roi* source, T* path) noexcept {
  return AlongPath(name, source, path,
                   [](const auto& pixel, auto& element) { element.pixel = pixel; });
}
template <class Roi, class T>
KY_ERRORS PathToImage(const char* name, Roi* destination, T* path) noexcept {
  return AlongPath(name, destination, path,
                   [](auto& pixel, const auto& element) { pixel = element.pixel; });
}
template <class T>
KY_ERRORS PathToImage(const char* name, KyROI<T>* destination, const KyPathVector* path,
                      T value) noexcept {
  return AlongPath(name, destination, path, [&](T& pixel, const KyPath&) { pixel = value; });
}

// Runs `body(rows, line)` on a segment both of whose ends lie inside.
template <class Roi, class Body>
KY_ERRORS AlongSegment(const char* name, Roi* roi, int x0, int y0, int x1, int y1,
                       Body body) noexcept {
  return Call(name, [&] {
    decltype(ky::RowsOf(roi)) rows;
    if (const KY_ERRORS error = ky::Open(roi, rows)) return error;
    if (x0 < 0 || x0 >= rows.width) return ky::OutOfRange(KY_ERROR_PARAMETER_3_OUT_OF_RANGE, "x0");
    if (y0 < 0 || y0 >= rows.height) return ky::OutOfRange(KY_ERROR_PARAMETER_4_OUT_OF_RANGE, "y0");
    if (x1 < 0 || x1 >= rows.width) return ky::OutOfRange(KY_ERROR_PARAMETER_5_OUT_OF_RANGE, "x1");
    if (y1 < 0 || y1 >= rows.height) return ky::OutOfRange(KY_ERROR_PARAMETER_6_OUT_OF_RANGE, "y1");
    return body(rows, LineSegment({x0, y0}, {x1, y1}));
  });
}

template <class T>
KY_ERRORS ImageToLineSegment(const char* name, const KyROI<T>* source,
                             KyPixelVectorTemplate<T>* pixels, int x0, int y0, int x1,
                             int y1) noexcept {
  return AlongSegment(name, source, x0, y0, x1, y1, [&](const auto& rows, const auto& line) {
    if (pixels == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    const auto count = static_cast<unsigned>(line.Count());
    ky::Input<T> in;
    if (!in.OpenApart(rows, ky::ArrayOf(*pixels))) return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (const KY_ERRORS error = pixels->SetMaxElements(count)) return error;
    pixels->SetNumElements(count);
    ky::ReadSegment(in.rows(), line, 0, line.Count(), pixels->GetDataPtr());
    return KY_OK;
  });
}

template <class T>
KY_ERRORS LineSegmentToImage(const char* name, KyROI<T>* destination,
                             const KyPixelVectorTemplate<T>* pixels, int x0, int y0, int x1,
                             int y1) noexcept {
  return AlongSegment(name, destination, x0, y0, x1, y1, [&](const auto& rows, const auto& line) {
    if (pixels == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (pixels->GetNumElements() != line.Count()) return KY_ERROR_NOT_256_ENTRIES;
    ky::WriteSegment(rows, line, 0, line.Count(), pixels->GetDataPtr());
    return KY_OK;
  });
}
template <class T>
KY_ERRORS LineSegmentToImage(const char* name, KyROI<T>* destination, T pixel, int x0, int y0,
                             int x1, int y1) noexcept {
  return AlongSegment(name, destination, x0, y0, x1, y1, [&](const auto& rows, const auto& line) {
    ky::FillSegment(rows, line, 0, line.Count(), pixel);
    return KY_OK;
  });
}

}  // namespace

KY_ERRORS ImgImageToPath(const KyROI<KyBW8>* source, KyBW8PathVector* path) noexcept {
  return ImageToPath("ImgImageToPath (BW8)", source, path);
}
KY_ERRORS ImgImageToPath(const KyROI<KyC24>* source, KyC24PathVector* path) noexcept {
  return ImageToPath("ImgImageToPath (C24)", source, path);
}
KY_ERRORS ImgPathToImage(KyROI<KyBW8>* destination, const KyBW8PathVector* path) noexcept {
  return PathToImage("ImgPathToImage (BW8)", destination, path);
}
KY_ERRORS ImgPathToImage(KyROI<KyC24>* destination, const KyC24PathVector* path) noexcept {
  return PathToImage("ImgPathToImage (C24)", destination, path);
}
KY_ERRORS ImgPathToImage(KyROI<KyBW8>* destination, const KyPathVector* path,
                         KyBW8 level) noexcept {
  return PathToImage("ImgPathToImage (BW8, const)", destination, path, level);
}
KY_ERRORS ImgPathToImage(KyROI<KyC24>* destination, const KyPathVector* path,
                         KyC24 color) noexcept {
  return PathToImage("ImgPathToImage (C24, const)", destination, path, color);
}

KY_ERRORS ImgImageToLineSegment(const KyROI<KyBW8>* source, KyBW8Vector* levels, int x0, int y0,
                                int x1, int y1) noexcept {
  return ImageToLineSegment("ImgImageToLineSegment (BW8)", source, levels, x0, y0, x1, y1);
}
KY_ERRORS ImgImageToLineSegment(const KyROI<KyC24>* source, KyC24Vector* colors, int x0, int y0,
                                int x1, int y1) noexcept {
  return ImageToLineSegment("ImgImageToLineSegment (C24)", source, colors, x0, y0, x1, y1);
}
KY_ERRORS ImgImageToLineSegment(const KyROI<KyBW16>* source, KyBW16Vector* levels, int x0, int y0,
                                int x1, int y1) noexcept {
  return ImageToLineSegment("ImgImageToLineSegment (BW16)", source, levels, x0, y0, x1, y1);
}

KY_ERRORS ImgLineSegmentToImage(KyROI<KyBW8>* destination, const KyBW8Vector* levels, int x0,
                                int y0, int x1, int y1) noexcept {
  return LineSegmentToImage("ImgLineSegmentToImage (BW8, vector)", destination, levels, x0, y0, x1,
                            y1);
}
KY_ERRORS ImgLineSegmentToImage(KyROI<KyBW8>* destination, KyBW8 level, int x0, int y0, int x1,
                                int y1) noexcept {
  return LineSegmentToImage("ImgLineSegmentToImage (BW8, const)", destination, level, x0, y0, x1,
                            y1);
}
KY_ERRORS ImgLineSegmentToImage(KyROI<KyC24>* destination, const KyC24Vector* colors, int x0,
                                int y0, int x1, int y1) noexcept {
  return LineSegmentToImage("ImgLineSegmentToImage (C24, vector)", destination, colors, x0, y0, x1,
                            y1);
}
KY_ERRORS ImgLineSegmentToImage(KyROI<KyC24>* destination, KyC24 color, int x0, int y0, int x1,
                                int y1) noexcept {
  return LineSegmentToImage("ImgLineSegmentToImage (C24, const)", destination, color, x0, y0, x1,
                            y1);
}
