#include "ky/vector_transitions.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "foundation/arrays.h"
#include "foundation/frame.h"
#include "vectors/elements.h"
#include "vectors/line_segment.h"
#include "vectors/profile_rows.h"
#include "vectors/segment_groups.h"

namespace {

using ky::Call;
using ky::kGroup;
using ky::LineSegment;
using ky::Point;
using ky::Rows;
using std::ptrdiff_t;

// The levels of the points from number `begin` to before `end`.
void ReadLevels(const Rows<const KyBW8>& rows, const LineSegment& line, ptrdiff_t begin,
                ptrdiff_t end, KyBW8* levels) {
  if (ky::Has(rows, line.At(begin)) && ky::Has(rows, line.At(end - 1))) {
    ky::ReadSegment(rows, line, begin, end, levels);
  } else {
    ky::TraceLineSegment(line, begin, end, [&](ptrdiff_t x, ptrdiff_t y) {
      *levels++ = ky::Has(rows, {x, y}) ? rows.Row(y)[x] : KyBW8{0};
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

KY_ERRORS ImgTransitionScan(TRANS_SCAN_EDGE edge, const KyROI<KyBW8>* source, int x0, int y0,
                            int x1, int y1, int threshold, int maxCount,
                            KyVector* transitions) noexcept {
  static_assert(TRANS_SCAN_RISING == ky::kRising && TRANS_SCAN_FALLING == ky::kFalling);
  return Call("ImgTransitionScan", [&] {
    if (edge < TRANS_SCAN_RISING || edge > TRANS_SCAN_BOTH)
      return ky::Explain(KY_ERROR_UNSUPPORTED_OPERATION, "edge");
    if (const auto error =
            ky::CheckEnds("source", source, x0, y0, x1, y1, KY_ERROR_PARAMETER_2_OUT_OF_RANGE))
      return error;
    if (transitions == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = ky::CheckImage(source, "source")) return error;
    const LineSegment line({x0, y0}, {x1, y1});
    const ptrdiff_t most = maxCount < 1 ? PTRDIFF_MAX : maxCount;
    ky::Input<KyBW8> in;
    if (!in.OpenApart(ky::RowsWithEdges(source), ky::ArrayOf(*transitions)))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (const KY_ERRORS error = ky::MakeRoom(*transitions, std::min(line.Count(), most)))
      return error;
    int count = 0;
    // No level passes any other threshold.
    if (threshold >= 0 && threshold <= 255)
      count = TransitionScan(line, maxCount, ky::GroupsOf(*transitions))
                  .Run(in.rows(), static_cast<KyBW8>(threshold), static_cast<KyBW8>(edge));
    return transitions->SetNbGroup(count);
  });
}

namespace {

// The transitions of a vector of elements of one data type.
KY_ERRORS FindTransitions(const KyVector* vector, KyVector* transitions, int dataType,
                          std::int64_t threshold) noexcept {
  constexpr int kDataSize = 8, kPair = 2, kUse = 7;
  return Call("ImgGetVectTransition", [&] {
    if (vector == nullptr || transitions == nullptr || vector == transitions)
      return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = ky::CheckElements(*vector, dataType)) return error;
    const int length = vector->GetGroupLength();
    const int allocated = transitions->GetAllocatedSize();
    const int most = (allocated != 0 ? allocated : length / 2) / 8;
    if (most == 0 || vector->GetDataPtr() == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = transitions->SetStructure(kDataSize, most, kPair, ky::kSigned))
      return error;
    transitions->SetUse(kUse);
    auto* const records = static_cast<std::uint32_t*>(transitions->GetDataPtr());
    return ky::ForElements(*vector, [&](auto type) {
      const auto* const v = static_cast<const decltype(type)*>(vector->GetDataPtr());
      int count = 0;
      for (int i = 0; i + 1 < length; ++i) {
        if ((std::int64_t{v[i]} > threshold) == (std::int64_t{v[i + 1]} > threshold)) continue;
        if (count == most) return KY_ERROR_VECTOR_1608;
        records[kPair * count] = static_cast<std::uint32_t>(i);
        records[kPair * count + 1] =
            static_cast<std::uint32_t>(v[i + 1]) - static_cast<std::uint32_t>(v[i]);
        ++count;
      }
      return transitions->SetNbGroup(count);
    });
  });
}

}  // namespace

KY_ERRORS ImgGetVectTransition(const KyVector* vector, KyVector* transitions,
                               int threshold) noexcept {
  return FindTransitions(vector, transitions, ky::kSigned, threshold);
}
KY_ERRORS ImgGetVectTransition(const KyVector* vector, KyVector* transitions,
                               unsigned int threshold) noexcept {
  return FindTransitions(vector, transitions, ky::kUnsigned, std::int64_t{threshold});
}
