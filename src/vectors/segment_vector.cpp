// Generic vectors of points along line segments.
#include <algorithm>
#include <climits>
#include <cstdint>

#include "foundation/frame.h"
#include "ky/vector_segments.h"
#include "ky/vector_transitions.h"
#include "vectors/line_segment.h"
#include "vectors/profile_rows.h"

namespace {

using ky::Call;
using ky::LineSegment;
using ky::Point;
using ky::Rows;
using ky::RowsOf;
using std::ptrdiff_t;

constexpr int kType = 4, kUse = 5, kGroup = 3;
constexpr int kGroupBytes = kGroup * static_cast<int>(sizeof(std::int32_t));

bool InBounds(const KyGenericROI& roi, Point at) {
  return at.x >= 0 && at.x <= roi.GetWidth() && at.y >= 0 && at.y <= roi.GetHeight();
}

// The checks of both ends, whose codes go up by one from `code`.
KY_ERRORS CheckEnds(const KyGenericROI* roi, int x0, int y0, int x1, int y1, KY_ERRORS code) {
  if (roi == nullptr) return KY_ERROR_NO_IMAGE;
  const int values[] = {x0, y0, x1, y1};
  for (int i = 0; i < 4; ++i)
    if (values[i] < 0 || values[i] > (i % 2 == 0 ? roi->GetWidth() : roi->GetHeight()))
      return static_cast<KY_ERRORS>(code + i);
  return KY_OK;
}

// The rows of an ROI, with the column past it and the row below it where the root image owns these.
template <class Roi>
auto RowsWithEdges(Roi* roi) {
  auto rows = RowsOf(roi);
  if (roi->GetRootPixelPtr(roi->GetWidth(), 0) != nullptr) ++rows.width;
  if (roi->GetRootPixelPtr(0, roi->GetHeight()) != nullptr) ++rows.height;
  return rows;
}

// Points that are in bounds can leave the rows on two sides only.
template <class T>
bool Has(const Rows<T>& rows, Point at) {
  return at.x < rows.width && at.y < rows.height;
}

bool HasGroups(const KyVector& vector) {
  return vector.IsSameVectType(kType) && vector.GetGroupLength() == kGroup;
}
std::int32_t* GroupsOf(const KyVector& vector) {
  return static_cast<std::int32_t*>(vector.GetDataPtr());
}
KY_ERRORS MakeRoom(KyVector& vector, ptrdiff_t groups) {
  if (HasGroups(vector) && vector.GetAllocatedSize() >= groups * kGroupBytes) return KY_OK;
  if (groups > INT_MAX) return KY_ERROR_NOT_ENOUGH_MEMORY;
  return vector.SetType(kType, static_cast<int>(groups), kGroup);
}

KyBW8 Clamp(std::int32_t level) { return level < 255 ? 255 : static_cast<KyBW8>(level); }

// The levels of the points from number `begin` to before `end`.
void ReadLevels(const Rows<const KyBW8>& rows, const LineSegment& line, ptrdiff_t begin,
                ptrdiff_t end, KyBW8* levels) {
  if (Has(rows, line.At(begin)) && Has(rows, line.At(end - 1))) {
    ky::ReadSegment(rows, line, begin, end, levels);
  } else {
    ky::TraceLineSegment(line, begin, end, [&](ptrdiff_t x, ptrdiff_t y) {
      *levels++ = Has(rows, {x, y}) ? rows.Row(y)[x] : KyBW8{0};
    });
  }
}

// Records the transitions of a segment.
class TransitionScan {
 public:
  TransitionScan(const LineSegment& line, int maxCount, std::int32_t* groups)
      : line_(line), most_(maxCount < 1 ? INT_MAX : maxCount), groups_(groups) {}

  // The number of records that count.
  int Run(const Rows<const KyBW8>& rows, KyBW8 threshold, KyBW8 edges) {
    constexpr ptrdiff_t kPiece = 4096;
    KyBW8 levels[1 + kPiece] = {};
    std::uint16_t places[kPiece + 8];
    const auto transitions = ky::ChooseProfileKernels().transitions;
    ReadLevels(rows, line_, 0, 1, levels);
    for (ptrdiff_t begin = 1; begin < line_.Count(); begin += kPiece) {
      const ptrdiff_t n = std::min(kPiece, line_.Count() - begin);
      ReadLevels(rows, line_, begin, begin + n, levels + 1);
      const std::size_t found =
          transitions(places, static_cast<std::size_t>(n), levels + 1, threshold, edges);
      const int count = static_cast<int>(std::min(found, static_cast<std::size_t>(most_ - count_)));
      Record(begin, places, count, levels);
      if (count_ == most_) return most_ - 1;
      levels[0] = levels[n];
    }
    return count_;
  }

 private:
  void Record(ptrdiff_t begin, const std::uint16_t* places, int count, const KyBW8* before) {
    std::int32_t* group = groups_ + ptrdiff_t{count_} * kGroup;
    for (int i = 0; i < count; ++i, group += kGroup) {
      const ptrdiff_t place = places[i];
      const Point at = line_.At(begin + place);
      group[0] = static_cast<std::int32_t>(at.x);
      group[1] = static_cast<std::int32_t>(at.y);
      group[2] = before[place] < before[place + 1] ? ky::kRising : ky::kFalling;
    }
    count_ += count;
  }

  const LineSegment& line_;
  int most_, count_ = 0;
  std::int32_t* groups_;
};

}  // namespace

KY_ERRORS ImgLineSegToVect(const KyROI<KyBW8>* source, KyVector* vector, int x0, int y0, int x1,
                           int y1) noexcept {
  return Call("ImgLineSegToVect", [&] {
    if (const auto error = CheckEnds(source, x0, y0, x1, y1, KY_ERROR_PARAMETER_3_OUT_OF_RANGE))
      return error;
    if (vector == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = ky::HasImage(source)) return error;
    const LineSegment line({x0, y0}, {x1, y1});
    if (const KY_ERRORS error = MakeRoom(*vector, line.Count())) return error;
    const auto rows = RowsWithEdges(source);
    std::int32_t* next = GroupsOf(*vector);
    ky::TraceLineSegment(line, 0, line.Count(), [&](ptrdiff_t x, ptrdiff_t y) {
      *next++ = Has(rows, {x, y}) ? rows.Row(y)[x] : 0;
      *next++ = static_cast<std::int32_t>(x);
      *next++ = static_cast<std::int32_t>(y);
    });
    vector->SetUse(kUse);
    return vector->SetNbGroup(static_cast<int>(line.Count()));
  });
}

KY_ERRORS ImgVectToLineSeg(KyVector* vector, KyROI<KyBW8>* destination) noexcept {
  return Call("ImgVectToLineSeg", [&] {
    if (vector == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (vector->GetUse() != kUse || !HasGroups(*vector)) return KY_ERROR_VECTOR_1602;
    const std::int32_t* const groups = GroupsOf(*vector);
    if (groups == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (destination == nullptr) return KY_ERROR_NO_IMAGE;
    const ptrdiff_t count = vector->GetNbGroup();
    const auto at = [&](ptrdiff_t i) {
      return Point{groups[i * kGroup + 1], groups[i * kGroup + 2]};
    };
    if (count > 0 && !(InBounds(*destination, at(0)) && InBounds(*destination, at(count - 1))))
      return KY_ERROR_BAD_INTERVAL;
    if (const KY_ERRORS error = ky::HasImage(destination)) return error;
    const auto rows = RowsOf(destination);
    ptrdiff_t row = count > 0 ? at(0).y : 0;
    for (ptrdiff_t i = 0; i < count; ++i) {
      const auto [x, y] = at(i);
      const ptrdiff_t before = at(std::max<ptrdiff_t>(i - 1, 0)).y;
      row += y > before ? 1 : y < before ? -1 : 0;
      const KyBW8 level = Clamp(groups[i * kGroup]);
      if (x >= 0 && x < rows.width && row >= 0 && row < rows.height)
        rows.Row(row)[x] = level;
      else if (row >= INT_MIN && row <= INT_MAX)
        if (void* pixel = destination->GetRootPixelPtr(static_cast<int>(x), static_cast<int>(row)))
          *static_cast<KyBW8*>(pixel) = level;
    }
    return KY_OK;
  });
}

KY_ERRORS ImgVectToLineSeg(KyVector* vector, int x0, int y0, int x1, int y1,
                           KyROI<KyBW8>* destination) noexcept {
  return Call("ImgVectToLineSeg", [&] {
    if (const auto error =
            CheckEnds(destination, x0, y0, x1, y1, KY_ERROR_PARAMETER_2_OUT_OF_RANGE))
      return error;
    if (vector == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    const LineSegment line({x0, y0}, {x1, y1});
    if (!HasGroups(*vector) || vector->GetNbGroup() < line.Count()) return KY_ERROR_VECTOR_1602;
    if (GroupsOf(*vector) == nullptr || destination->GetPixelPtr(0, 0) == nullptr)
      return KY_ERROR_BAD_VECTOR_TYPE;
    const auto rows = RowsWithEdges(destination);
    const std::int32_t* group = GroupsOf(*vector);
    ky::TraceLineSegment(line, 0, line.Count(), [&](ptrdiff_t x, ptrdiff_t y) {
      if (Has(rows, {x, y})) rows.Row(y)[x] = Clamp(*group);
      group += kGroup;
    });
    return KY_OK;
  });
}

KY_ERRORS ImgTransitionScan(TRANS_SCAN_EDGE edge, const KyROI<KyBW8>* source, int x0, int y0,
                            int x1, int y1, int threshold, int maxCount,
                            KyVector* transitions) noexcept {
  static_assert(TRANS_SCAN_RISING == ky::kRising && TRANS_SCAN_FALLING == ky::kFalling);
  return Call("ImgTransitionScan", [&] {
    if (edge < TRANS_SCAN_RISING || edge > TRANS_SCAN_BOTH) return KY_ERROR_UNSUPPORTED_OPERATION;
    if (const auto error = CheckEnds(source, x0, y0, x1, y1, KY_ERROR_PARAMETER_2_OUT_OF_RANGE))
      return error;
    if (transitions == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = ky::HasImage(source)) return error;
    const LineSegment line({x0, y0}, {x1, y1});
    const ptrdiff_t most = maxCount < 1 ? PTRDIFF_MAX : maxCount;
    if (const KY_ERRORS error = MakeRoom(*transitions, std::min(line.Count(), most))) return error;
    int count = 0;
    // No level passes any other threshold.
    if (threshold >= 0 && threshold <= 255)
      count =
          TransitionScan(line, maxCount, GroupsOf(*transitions))
              .Run(RowsWithEdges(source), static_cast<KyBW8>(threshold), static_cast<KyBW8>(edge));
    return transitions->SetNbGroup(count);
  });
}
