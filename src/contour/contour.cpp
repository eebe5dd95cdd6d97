#include "ky/contour.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <iterator>

#include "contour/tracer.h"
#include "foundation/arrays.h"
#include "foundation/frame.h"

namespace {

using ky::Call;
using ky::ObjectLevels;
using ky::Point;
using ky::Tracer;
using ky::Turning;

struct Mode {
  Turning turning;
  bool stopsAtBorder, bothWays;
};

// By CONTOUR_MODE.
constexpr Mode kModes[] = {
    {Turning::kClockwise, true, false},       {Turning::kClockwise, false, false},
    {Turning::kClockwise, true, true},        {Turning::kCounterClockwise, true, false},
    {Turning::kCounterClockwise, true, true}, {Turning::kCounterClockwise, false, false},
};

constexpr Turning Opposite(Turning turning) {
  return turning == Turning::kClockwise ? Turning::kCounterClockwise : Turning::kClockwise;
}

constexpr ObjectLevels LevelsOf(CONTOUR_THRESHOLD sense, unsigned threshold) {
  constexpr unsigned kHighest = 255;
  if (sense != KY_CONTOUR_ABOVE_THRESHOLD) return {0, std::min(threshold, kHighest)};
  if (threshold <= kHighest) return {threshold, kHighest - threshold};
  return {kHighest + 1, 0};  // no level at all
}

// What a contour is recorded in. `Array` is its memory. `Open` empties it, `Add` appends a pixel,
// `Close` makes the number of pixels known, and leaves the trace alone when a failure of Add has
// done that before.

KyPath ElementOf(const KyPath*, Point at, unsigned) {
  return {static_cast<std::int16_t>(at.x), static_cast<std::int16_t>(at.y)};
}
KyBW8Path ElementOf(const KyBW8Path*, Point at, unsigned value) {
  return {static_cast<std::int16_t>(at.x), static_cast<std::int16_t>(at.y),
          static_cast<KyBW8>(value)};
}

// Elements go straight into the array; the vector is asked only when that is full.
template <class T>
class PathOutput {
 public:
  PathOutput(KyPathVectorTemplate<T>* path, bool steps) noexcept : path_(path), steps_(steps) {}

  void SetClosed(bool closed) noexcept {
    if (path_ != nullptr) path_->SetClosed(closed ? 1 : 0);
  }
  ky::Rows<const KyBW8> Array() const noexcept {
    return path_ != nullptr ? ky::ArrayOf(*path_) : ky::Rows<const KyBW8>();
  }
  KY_ERRORS Open(const ky::Rows<const KyBW8>&) noexcept {
    if (path_ == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    path_->Empty();
    FindRoom();
    return KY_OK;
  }
  KY_ERRORS Add(Point at, KyBW8 level, unsigned step) noexcept {
    const T element = ElementOf(next_, at, steps_ ? step : level);
    if (next_ == end_) return Grow(element);
    *next_++ = element;
    return KY_OK;
  }
  void Close() noexcept {
    const auto count = static_cast<unsigned>(next_ - path_->begin());
    if (count != path_->GetNumElements()) path_->SetNumElements(count);
  }

 private:
  void FindRoom() noexcept {
    next_ = path_->end();
    end_ = path_->begin() + path_->GetMaxElements();
  }
  KY_ERRORS Grow(const T& element) noexcept {
    Close();
    if (const KY_ERRORS error = path_->AddElement(element)) return error;
    FindRoom();
    return KY_OK;
  }

  KyPathVectorTemplate<T>* path_;
  bool steps_;
  T *next_ = nullptr, *end_ = nullptr;
};

// Groups x, y, step.
class GroupOutput {
 public:
  explicit GroupOutput(KyVector* vector) noexcept : vector_(vector) {}

  void SetClosed(bool) noexcept {}
  ky::Rows<const KyBW8> Array() const noexcept {
    return vector_ != nullptr ? ky::ArrayOf(*vector_) : ky::Rows<const KyBW8>();
  }
  KY_ERRORS Open(const ky::Rows<const KyBW8>& rows) noexcept {
    constexpr int kType = 1, kFirstGroups = 2000;
    if (vector_ == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (!vector_->IsSameVectType(kType) || vector_->GetGroupLength() != kLength)
      if (const KY_ERRORS error = vector_->SetType(kType, kFirstGroups, kLength)) return error;
    vector_->SetNbGroup(0);
    if (vector_->GetDataPtr() == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    count_ = 0;
    limit_ = rows.width * rows.height / 8;
    FindRoom();
    return KY_OK;
  }
  KY_ERRORS Add(Point at, KyBW8, unsigned step) noexcept {
    if (count_ == limit_) return KY_ERROR_CONTOUR_TOO_LONG;
    if (count_ == room_)
      if (const KY_ERRORS error = Grow()) return error;
    std::int32_t* const group = groups_ + count_++ * kLength;
    group[0] = static_cast<std::int32_t>(at.x);
    group[1] = static_cast<std::int32_t>(at.y);
    group[2] = static_cast<std::int32_t>(step);
    return KY_OK;
  }
  void Close() noexcept {
    const int count = static_cast<int>(count_);
    if (count != vector_->GetNbGroup()) vector_->SetNbGroup(count);
  }

 private:
  static constexpr int kLength = 3;

  void FindRoom() noexcept {
    groups_ = static_cast<std::int32_t*>(vector_->GetDataPtr());
    room_ = vector_->GetNbMaxGroup();
  }
  KY_ERRORS Grow() noexcept {
    constexpr int kMoreBytes = 2048 * kLength * static_cast<int>(sizeof(std::int32_t));
    Close();
    const int bytes = vector_->GetAllocatedSize();
    if (bytes > INT_MAX - kMoreBytes) return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (const KY_ERRORS error = vector_->Reallocate(bytes + kMoreBytes)) return error;
    FindRoom();
    return KY_OK;
  }

  KyVector* vector_;
  std::int32_t* groups_ = nullptr;
  std::ptrdiff_t count_ = 0, room_ = 0, limit_ = 0;
};

template <class Output>
KY_ERRORS Contour(const char* name, const KyROI<KyBW8>* source, CONTOUR_MODE contourMode, int x,
                  int y, CONTOUR_THRESHOLD sense, unsigned threshold, CONNEXITY connexity,
                  Output output) noexcept {
  return Call(name, [&] {
    if (static_cast<unsigned>(contourMode) >= std::size(kModes)) return KY_ERROR_BAD_MODE;
    const Mode mode = kModes[contourMode];
    Point at = {x, y};
    ky::Input<KyBW8> in;
    const auto open = [&] {
      ky::Rows<const KyBW8> rows;
      if (const KY_ERRORS error = ky::Open(source, rows)) return error;
      return in.OpenApart(rows, output.Array()) ? KY_OK : KY_ERROR_NOT_ENOUGH_MEMORY;
    };
    const auto follow = [&](Turning turning) {
      if (const KY_ERRORS error = output.Open(in.rows())) return error;
      const Tracer tracer(in.rows(), LevelsOf(sense, threshold), connexity, turning,
                          mode.stopsAtBorder);
      const KY_ERRORS error = tracer.Follow(at, output);
      output.Close();
      return error;
    };
    KY_ERRORS error = open();
    if (error == KY_OK) error = follow(mode.turning);
    const bool stopped = error == KY_ERROR_PATH_STOPPED;
    output.SetClosed(!stopped);
    return stopped && mode.bothWays ? follow(Opposite(mode.turning)) : error;
  });
}

}  // namespace

KY_ERRORS ImgContour(const KyROI<KyBW8>* source, CONTOUR_MODE mode, int x, int y,
                     CONTOUR_THRESHOLD sense, unsigned int threshold, CONNEXITY connexity,
                     KyPathVector* path) noexcept {
  return Contour("ImgContour (KyPathVector)", source, mode, x, y, sense, threshold, connexity,
                 PathOutput<KyPath>(path, false));
}
KY_ERRORS ImgContour(const KyROI<KyBW8>* source, CONTOUR_MODE mode, int x, int y,
                     CONTOUR_THRESHOLD sense, unsigned int threshold, CONNEXITY connexity,
                     KyBW8PathVector* path, int storeSteps) noexcept {
  return Contour("ImgContour (KyBW8PathVector)", source, mode, x, y, sense, threshold, connexity,
                 PathOutput<KyBW8Path>(path, storeSteps != 0));
}
KY_ERRORS ImgContour(const KyROI<KyBW8>* source, CONTOUR_MODE mode, int x, int y,
                     CONTOUR_THRESHOLD sense, unsigned int threshold, CONNEXITY connexity,
                     KyVector* contour) noexcept {
  return Contour("ImgContour (KyVector)", source, mode, x, y, sense, threshold, connexity,
                 GroupOutput(contour));
}
