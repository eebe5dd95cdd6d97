// Following the border between an object and its background.
#pragma once

#include <cstddef>

#include "foundation/point.h"
#include "foundation/rows.h"
#include "ky/contour.h"
#include "ky/pixels.h"
#include "ky/status.h"

namespace ky {

// The levels from `low` to `low + span` belong to objects.
struct ObjectLevels {
  unsigned low, span;

  bool Has(KyBW8 level) const { return level - low <= span; }
};

// What is found in a direction from a pixel.
enum class Answer { kBackground, kObject, kStop };

enum class Turning { kClockwise = -1, kCounterClockwise = 1 };

// One contour. Inside, all of them turn counter-clockwise: going clockwise is the same on the
// picture turned upside down, which negates the steps down and the codes of the steps.
class Tracer {
 public:
  Tracer(Rows<const KyBW8> rows, ObjectLevels levels, CONNEXITY connexity, Turning turning,
         bool stopsAtBorder) noexcept
      : rows_(rows),
        levels_(levels),
        sense_(static_cast<int>(turning)),
        turn_(connexity == KY_CONNEXITY_8 ? 1 : 2),
        evenStepsAreStrict_(connexity != KY_CONNEXITY_4),
        outside_(stopsAtBorder ? Answer::kStop : Answer::kBackground) {
    for (unsigned d = 0; d < 8; ++d) offsets_[d] = Right(d) + Down(d) * rows.pitch;
  }

  // Gives `output.Add(point, level, code of the step)` the pixels from `at` on, until the contour
  // is complete or that returns an error. `at` becomes the last pixel reached.
  template <class Output>
  KY_ERRORS Follow(Point& at, Output& output) const noexcept {
    if (!Contains(at)) return KY_ERROR_CONTOUR_START;
    const KyBW8* pixel = rows_.Row(at.y) + at.x;
    if (!levels_.Has(*pixel)) return KY_ERROR_CONTOUR_START;
    unsigned direction;
    if (const KY_ERRORS error = FindFirstStep(pixel, at, direction)) return error;
    const Point start = at;
    const unsigned startDirection = direction;
    do {
      if (const KY_ERRORS error = output.Add(at, *pixel, sense_ * direction & 7)) return error;
      pixel += offsets_[direction];
      at.x += Right(direction);
      at.y += Down(direction);
      if (!FindNextStep(pixel, at, direction)) return KY_ERROR_PATH_STOPPED;
    } while (!(at == start && direction == startDirection));
    return KY_OK;
  }

 private:
  static constexpr int kRight[8] = {1, 1, 0, -1, -1, -1, 0, 1};
  static constexpr int kDown[8] = {0, -1, -1, -1, 0, 1, 1, 1};
  std::ptrdiff_t Right(unsigned direction) const { return kRight[direction]; }
  std::ptrdiff_t Down(unsigned direction) const { return sense_ * kDown[direction]; }

  bool Contains(Point at) const {
    return at.x >= 0 && at.x < rows_.width && at.y >= 0 && at.y < rows_.height;
  }
  // True when all neighbours are pixels too.
  bool IsInside(Point at) const {
    return at.x >= 1 && at.x < rows_.width - 1 && at.y >= 1 && at.y < rows_.height - 1;
  }
  Answer Test(const KyBW8* pixel, Point at, unsigned direction) const {
    if (!Contains({at.x + Right(direction), at.y + Down(direction)})) return outside_;
    return levels_.Has(pixel[offsets_[direction]]) ? Answer::kObject : Answer::kBackground;
  }

  KY_ERRORS FindFirstStep(const KyBW8* pixel, Point at, unsigned& direction) const {
    const auto test = [&](unsigned d) { return Test(pixel, at, d & 7); };
    direction = turn_;
    for (int round = 0; round < 8; ++round) {
      direction = (direction + turn_) & 7;
      const bool strict = evenStepsAreStrict_ && direction % 2 == 0;
      if (test(direction) == Answer::kObject && test(direction - turn_) == Answer::kBackground &&
          (!strict || test(direction - 2 * turn_) == Answer::kBackground))
        return KY_OK;
    }
    return test(direction) == Answer::kBackground ? KY_ERROR_CONTOUR_ISOLATED
                                                  : KY_ERROR_CONTOUR_NO_DIRECTION;
  }

  // Turns `direction`, that of the last step, into that of the next: to the first object met from a
  // quarter turn back on, of 8 directions an eighth more after a slanted step. What the last step
  // came from is one. False where the border stops the contour.
  bool FindNextStep(const KyBW8* pixel, Point at, unsigned& direction) const {
    const unsigned from = (direction + 4) & 7;
    direction = (direction - (turn_ == 1 ? 1 + direction % 2 : 2)) & 7;
    if (IsInside(at)) {
      while (direction != from && !levels_.Has(pixel[offsets_[direction]]))
        direction = (direction + turn_) & 7;
      return true;
    }
    Answer answer = Answer::kObject;
    while (direction != from && (answer = Test(pixel, at, direction)) == Answer::kBackground)
      direction = (direction + turn_) & 7;
    return direction == from || answer == Answer::kObject;
  }

  Rows<const KyBW8> rows_;
  ObjectLevels levels_;
  int sense_;
  unsigned turn_;
  bool evenStepsAreStrict_;
  Answer outside_;
  std::ptrdiff_t offsets_[8];
};

}  // namespace ky
