// Combines a picture with itself, with constants and with another: operators and regions of
// interest.
//
//   blend [PICTURE [FOLDER]]
//
// writes PNG files to FOLDER (demo). PICTURE is a PNG, PGM or PPM file; without one, a scene of
// machined parts is drawn and compared with one that has faults.
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "ky/ky.h"
#include "support/picture_file.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

using Grey = KyImage<KyBW8>;

// White in the middle, black in the corners.
Grey Spotlight(const KyGenericROI& size) {
  Grey mask = SameSize<KyBW8>(size);
  const double cx = size.GetWidth() / 2.0, cy = size.GetHeight() / 2.0;
  for (int y = 0; y < mask.GetHeight(); ++y) {
    for (int x = 0; x < mask.GetWidth(); ++x) {
      const double dx = (x - cx) / cx, dy = (y - cy) / cy;
      mask.SetPixel(static_cast<KyBW8>(255 * std::max(0.0, 1 - (dx * dx + dy * dy) / 2)), x, y);
    }
  }
  return mask;
}

// a where the mask is white, b where it is black, a mixture between: a m / 256 + b (255 - m) / 256.
Grey Blend(const Grey& a, const Grey& b, const Grey& mask) {
  Grey result = SameSize<KyBW8>(a), rest = SameSize<KyBW8>(a);
  Must(ImgOper(KY_OPER_INVERT, &mask, &rest));
  Must(ImgOper(KY_OPER_SCALED_MULTIPLY, &b, &rest, &rest));
  Must(ImgOper(KY_OPER_SCALED_MULTIPLY, &a, &mask, &result));
  Must(ImgOper(KY_OPER_ADD, &result, &rest, &result));
  return result;
}

// Edges as the difference of two regions of one picture, which lie a pixel apart.
Grey Edges(Grey& picture) {
  const int width = picture.GetWidth() - 1, height = picture.GetHeight() - 1;
  const KyROI<KyBW8> here(&picture, 0, 0, width, height), there(&picture, 1, 1, width, height);
  Grey result = SameSize<KyBW8>(here);
  Must(ImgOper(KY_OPER_ABS_DIFFERENCE, &here, &there, &result));
  Must(ImgOper(KY_OPER_MULTIPLY, &result, KyBW8{4}, &result));
  return result;
}

// The first picture, in red where the second differs by more than `tolerance`.
KyImage<KyC24> MarkDifferences(const Grey& picture, const Grey& other, KyBW8 tolerance) {
  Grey differs = SameSize<KyBW8>(picture);
  Must(ImgOper(KY_OPER_ABS_DIFFERENCE, &picture, &other, &differs));
  Must(ImgOper(KY_OPER_GREATER, &differs, tolerance, &differs));
  auto marked = SameSize<KyC24>(picture);
  ImgSetOverlayColor({255, 0, 0});
  Must(ImgOper(KY_OPER_OVERLAY, &picture, &differs, &marked));
  return marked;
}

class Output {
 public:
  explicit Output(std::string folder) : folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
    std::printf("%-30s %11s  %s\n", "file", "size", "what it shows");
  }
  template <class T>
  void Write(const KyROI<T>& roi, const char* name, const char* what) const {
    const std::string path = folder_ + '/' + name + ".png";
    picture::Write(roi, path);
    std::printf("%-30s %4d x %4d  %s\n", path.c_str(), roi.GetWidth(), roi.GetHeight(), what);
  }

 private:
  std::string folder_;
};

void Run(const char* path, const char* folder) {
  Grey picture = path != nullptr ? picture::Read<KyBW8>(path) : scene::Draw(scene::Bundled(false));
  Must(KyGetError());
  if (picture.GetWidth() < 2 || picture.GetHeight() < 2)
    throw std::runtime_error("the picture must have at least 2 x 2 pixels");

  Grey inverse = SameSize<KyBW8>(picture), steps = SameSize<KyBW8>(picture);
  Must(ImgOper(KY_OPER_INVERT, &picture, &inverse));
  Must(ImgOper(KY_OPER_AND, &picture, KyBW8{0xC0}, &steps));
  // The other picture: the scene with faults, or the given one with its middle darkened.
  Grey other = SameSize<KyBW8>(picture);
  if (path == nullptr) {
    other = scene::Draw(scene::Bundled(true));
    Must(KyGetError());
  } else {
    Must(ImgCopy(&picture, &other));
    KyROI<KyBW8> middle(&other, other.GetWidth() / 4, other.GetHeight() / 4, other.GetWidth() / 2,
                        other.GetHeight() / 2);
    Must(ImgOper(KY_OPER_SUBTRACT, &middle, KyBW8{40}, &middle));
  }

  const Output output(folder);
  output.Write(picture, "picture", "the picture");
  output.Write(other, "other", path == nullptr ? "the same with faults" : "its middle darkened");
  output.Write(inverse, "inverse", "255 - picture");
  output.Write(steps, "steps", "the two upper bits of every level");
  output.Write(Blend(picture, inverse, Spotlight(picture)), "blend",
               "picture and inverse, mixed by a mask");
  output.Write(Edges(picture), "edges", "4 |picture - picture moved by a pixel|");
  output.Write(MarkDifferences(picture, other, 30), "differences",
               "|picture - other| > 30, in red on the picture");
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 2, "[PICTURE [FOLDER]]",
                    [&] { Run(argc > 1 ? argv[1] : nullptr, argc > 2 ? argv[2] : kOutputFolder); });
}
