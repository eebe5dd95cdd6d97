// Following the border between an object and its background.
#pragma once

#include <bit>
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

// What stands around a pixel, one bit a direction: objects, and where the ROI's border stops the
// contour.
struct Around {
  unsigned objects, stops;
};

enum class Turning { kClockwise = -1, kCounterClockwise = 1 };

// One contour. Inside, all of them turn counter-clockwise: going clockwise is the same on the
// picture turned upside down, which negates the pitch and the codes of the steps.
class Tracer {
 public:
  Tracer(Rows<const KyBW8> rows, ObjectLevels levels, CONNEXITY connexity, Turning turning,
         bool stopsAtBorder) noexcept
      : rows_(rows),
        levels_(levels),
        pitch_(static_cast<int>(turning) * rows.pitch),
        sense_(static_cast<int>(turning)),
        turn_(connexity == KY_CONNEXITY_8 ? 1 : 2),
        evenStepsAreStrict_(connexity != KY_CONNEXITY_4),
        stopsAtBorder_(stopsAtBorder) {
    for (unsigned d = 0; d < 8; ++d)
      steps_[d] = {kRight[d], sense_ * kDown[d], kRight[d] + kDown[d] * pitch_};
  }

  // Gives `output.Add(point, level, code of the step)` the pixels from `at` on, until the contour
  // is complete or that answers an error. `at` becomes the last pixel reached.
  template <class Output>
  KY_ERRORS Follow(Point& at, Output& output) const noexcept {
    if (!Contains(at)) return KY_ERROR_CONTOUR_START;
    const KyBW8* pixel = rows_.Row(at.y) + at.x;
    if (!levels_.Has(*pixel)) return KY_ERROR_CONTOUR_START;
    unsigned direction;
    if (const KY_ERRORS error = FindFirstStep(LookAround(pixel, at), direction)) return error;
    const Point start = at;
    const unsigned startDirection = direction;
    do {
      if (const KY_ERRORS error = output.Add(at, *pixel, sense_ * direction & 7)) return error;
      const Step& step = steps_[direction];
      at.x += step.right;
      at.y += step.down;
      pixel += step.offset;
      const Around around = LookAround(pixel, at);
      // There is an object at least where the last step came from.
      direction = FirstFrom(Restart(direction), around.objects | around.stops);
      if (around.stops >> direction & 1) return KY_ERROR_PATH_STOPPED;
    } while (!(at == start && direction == startDirection));
    return KY_OK;
  }

 private:
  struct Step {
    std::ptrdiff_t right, down, offset;
  };
  static constexpr int kRight[8] = {1, 1, 0, -1, -1, -1, 0, 1};
  static constexpr int kDown[8] = {0, -1, -1, -1, 0, 1, 1, 1};

  bool Contains(Point at) const {
    return at.x >= 0 && at.x < rows_.width && at.y >= 0 && at.y < rows_.height;
  }

  Around LookAround(const KyBW8* pixel, Point at) const {
    const bool inside = at.x >= 1 && at.x < rows_.width - 1 && at.y >= 1 && at.y < rows_.height - 1;
    const Around all = inside ? Around{ObjectsInside(pixel), 0} : LookOverBorder(pixel, at);
    const unsigned connected = turn_ == 1 ? 0xFF : 0x55;
    return {all.objects & connected, all.stops & connected};
  }
  unsigned ObjectsInside(const KyBW8* pixel) const {
    const KyBW8 *const above = pixel - pitch_, *const below = pixel + pitch_;
    const auto bit = [&](KyBW8 level, int d) { return unsigned{levels_.Has(level)} << d; };
    return bit(pixel[1], 0) | bit(above[1], 1) | bit(above[0], 2) | bit(above[-1], 3) |
           bit(pixel[-1], 4) | bit(below[-1], 5) | bit(below[0], 6) | bit(below[1], 7);
  }
  Around LookOverBorder(const KyBW8* pixel, Point at) const {
    Around around = {0, 0};
    for (unsigned d = 0; d < 8; ++d) {
      const Step& step = steps_[d];
      if (!Contains({at.x + step.right, at.y + step.down}))
        around.stops |= unsigned{stopsAtBorder_} << d;
      else
        around.objects |= unsigned{levels_.Has(pixel[step.offset])} << d;
    }
    return around;
  }

  // The direction in which to look first after a step.
  unsigned Restart(unsigned direction) const {
    return (direction - (turn_ == 1 ? 1 + (direction & 1) : 2)) & 7;
  }
  // The first direction from `from` on whose bit is set.
  static unsigned FirstFrom(unsigned from, unsigned bits) {
    return (from + static_cast<unsigned>(std::countr_zero(bits * 0x101 >> from))) & 7;
  }

  KY_ERRORS FindFirstStep(const Around& around, unsigned& direction) const {
    const unsigned answers = around.objects | around.stops;
    const auto background = [&](unsigned d) { return (answers >> (d & 7) & 1) == 0; };
    direction = turn_;
    for (int round = 0; round < 8; ++round) {
      direction = (direction + turn_) & 7;
      const bool strict = evenStepsAreStrict_ && direction % 2 == 0;
      if ((around.objects >> direction & 1) != 0 && background(direction - turn_) &&
          (!strict || background(direction - 2 * turn_)))
        return KY_OK;
    }
    return background(direction) ? KY_ERROR_CONTOUR_ISOLATED : KY_ERROR_CONTOUR_NO_DIRECTION;
  }

  Rows<const KyBW8> rows_;
  ObjectLevels levels_;
  std::ptrdiff_t pitch_;
  int sense_;
  unsigned turn_;
  bool evenStepsAreStrict_, stopsAtBorder_;
  Step steps_[8];
};

}  // namespace ky
