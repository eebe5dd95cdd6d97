// Pictures as plain arrays, the currency of the models, and canvases that show every stray write.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "ky/ky.h"

inline std::ostream& operator<<(std::ostream& out, KyC24 c) {
  return out << '(' << int{c.c0} << ", " << int{c.c1} << ", " << int{c.c2} << ')';
}

namespace ky::test {

using Random = std::mt19937;

template <class T>
struct Picture {
  int width = 0, height = 0;
  std::vector<T> pixels;

  Picture() = default;
  Picture(int w, int h, T value = T())
      : width(w),
        height(h),
        pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), value) {}
  T& At(int x, int y) { return pixels[Index(x, y)]; }
  const T& At(int x, int y) const { return pixels[Index(x, y)]; }
  bool Has(int x, int y) const { return x >= 0 && x < width && y >= 0 && y < height; }
  // The nearest pixel of the picture, for borders that repeat it.
  const T& Nearest(int x, int y) const {
    return At(std::clamp(x, 0, width - 1), std::clamp(y, 0, height - 1));
  }
  bool operator==(const Picture&) const = default;

 private:
  std::size_t Index(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(x);
  }
};

// Levels that bring out the edges of operations: one fill in four is near 0, one in four near the
// maximum, one in eight of a single level, the rest uniform.
template <class T>
Picture<T> RandomPicture(int width, int height, Random& random) {
  Picture<T> picture(width, height);
  using Byte = std::uint8_t;
  const unsigned kind = random() % 8;
  const Byte level = static_cast<Byte>(random());
  std::vector<Byte> bytes(picture.pixels.size() * sizeof(T));
  for (Byte& byte : bytes) {
    switch (kind) {
      case 0:
      case 1: byte = static_cast<Byte>(random() % 4); break;
      case 2:
      case 3: byte = static_cast<Byte>(255 - random() % 4); break;
      case 4: byte = level; break;
      default: byte = static_cast<Byte>(random());
    }
  }
  if (!bytes.empty())
    std::memcpy(static_cast<void*>(picture.pixels.data()), bytes.data(), bytes.size());
  return picture;
}

// Where an ROI lies in its image: pixels to its left, above it, and to its right. The last is what
// makes the rows of a view have gaps; with none on either side they are joined.
struct Placement {
  int left = 0, above = 0, right = 0;
};

// An ROI in an image that wraps a buffer of random bytes, which has bytes of its own before the
// image, so that rows start at odd addresses.
template <class T>
class Canvas {
 public:
  Canvas(const Picture<T>& picture, Placement place, Random& random)
      : Canvas(picture.width, picture.height, place, random) {
    Put(picture);
  }
  Canvas(int width, int height, Placement place, Random& random)
      : pitch_((place.left + width + place.right) * kSize),
        buffer_(static_cast<std::size_t>(kBefore + pitch_ * (place.above + height + 2) + 64)) {
    for (std::uint8_t& byte : buffer_) byte = static_cast<std::uint8_t>(random());
    image_.Attach(reinterpret_cast<T*>(buffer_.data() + kBefore), place.left + width + place.right,
                  place.above + height + 2, pitch_);
    roi_.emplace(&image_, place.left, place.above, width, height);
    Remember();
  }

  KyROI<T>* roi() { return &*roi_; }
  KyImage<T>* image() { return &image_; }
  void Put(const Picture<T>& picture) {
    for (int y = 0; y < picture.height && picture.width > 0; ++y)
      std::memcpy(roi_->GetPixelPtr(0, y), &picture.At(0, y),
                  static_cast<std::size_t>(picture.width) * sizeof(T));
    Remember();
  }
  Picture<T> Get() const { return Get(*roi_); }
  static Picture<T> Get(const KyROI<T>& roi) {
    Picture<T> picture(roi.GetWidth(), roi.GetHeight());
    for (int y = 0; y < picture.height && picture.width > 0; ++y)
      std::memcpy(static_cast<void*>(&picture.At(0, y)), roi.GetPixelPtr(0, y),
                  static_cast<std::size_t>(picture.width) * sizeof(T));
    return picture;
  }

  // True when nothing has changed since the last Put but, perhaps, the pixels of `roi`, one of this
  // image's.
  bool OnlyChanged(const KyROI<T>& roi) {
    std::vector<std::uint8_t> now = buffer_;
    for (int y = 0; y < roi.GetHeight(); ++y) {
      const auto* row = static_cast<const std::uint8_t*>(roi.GetPixelPtr(0, y));
      std::memcpy(now.data() + (row - buffer_.data()), before_.data() + (row - buffer_.data()),
                  static_cast<std::size_t>(roi.GetWidth()) * sizeof(T));
    }
    return now == before_;
  }
  bool Unchanged() const { return buffer_ == before_; }

 private:
  static constexpr int kSize = static_cast<int>(sizeof(T));
  static constexpr int kBefore = 64 + static_cast<int>(alignof(T)) * 5;

  void Remember() { before_ = buffer_; }

  int pitch_;
  std::vector<std::uint8_t> buffer_, before_;
  KyImage<T> image_;
  std::optional<KyROI<T>> roi_;
};

// Fails the running test with the first pixel that differs.
template <class T>
::testing::AssertionResult Same(const Picture<T>& expected, const Picture<T>& actual) {
  for (int y = 0; y < expected.height; ++y)
    for (int x = 0; x < expected.width; ++x)
      if (!(expected.At(x, y) == actual.At(x, y)))
        return ::testing::AssertionFailure()
               << "pixel (" << x << ", " << y << ") of " << expected.width << " x "
               << expected.height << " is " << ::testing::PrintToString(actual.At(x, y)) << ", not "
               << ::testing::PrintToString(expected.At(x, y));
  return ::testing::AssertionSuccess();
}

}  // namespace ky::test
