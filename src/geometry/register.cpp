#include <cmath>

#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "geometry/solve.h"
#include "ky/angle.h"
#include "ky/geometry.h"

namespace {

struct Point {
  float x, y;
};

double Direction(Point from, Point to) noexcept {
  return ky::Atan2(double{to.y} - from.y, double{to.x} - from.x);
}
double Distance(Point from, Point to) noexcept {
  const double dx = double{to.x} - from.x, dy = double{to.y} - from.y;
  return std::sqrt(dx * dx + dy * dy);
}

template <class T>
KY_ERRORS Translate(const KyROI<T>* source, KyROI<T>* destination, Point from, Point to,
                    int interpolation) noexcept {
  return ImgScaleRotate(source, from.x, from.y, to.x, to.y, 1.0f, 1.0f, 0.0f, destination,
                        interpolation);
}

template <class T>
KY_ERRORS RegisterPairs(const KyROI<T>* source, KyROI<T>* destination, const Point (&from)[2],
                        const Point (&to)[2], int interpolation, int scaling) noexcept {
  const float angle =
      KyFromRadians(static_cast<float>(Direction(to[0], to[1]) - Direction(from[0], from[1])));
  const float scale =
      scaling != 0 ? static_cast<float>(Distance(to[0], to[1]) / Distance(from[0], from[1])) : 1.0f;
  return ImgScaleRotate(source, from[0].x, from[0].y, to[0].x, to[0].y, scale, scale, -angle,
                        destination, interpolation);
}

template <class T>
KY_ERRORS RegisterTriples(const char* name, const KyROI<T>* source, KyROI<T>* destination,
                          const Point (&from)[3], const Point (&to)[3],
                          int interpolation) noexcept {
  return ky::Call(name, [&] {
    const float pivots[3][3] = {
        {from[0].x, from[1].x, from[2].x}, {from[0].y, from[1].y, from[2].y}, {1, 1, 1}};
    float x[3] = {to[0].x, to[1].x, to[2].x}, y[3] = {to[0].y, to[1].y, to[2].y};
    for (auto* solution : {&x, &y})
      if (const KY_ERRORS error = ky::SolveCramer3(pivots[0], 3, *solution))
        return ky::Explain(error, "the pivots lie on one line");
    return ImgLinearTransform(source, x[0], x[1], x[2], y[0], y[1], y[2], destination,
                              interpolation);
  });
}

}  // namespace

KY_ERRORS ImgRegister(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float sourceX,
                      float sourceY, float destinationX, float destinationY,
                      int interpolation) noexcept {
  return Translate(source, destination, {sourceX, sourceY}, {destinationX, destinationY},
                   interpolation);
}
KY_ERRORS ImgRegister(const KyROI<KyC24>* source, KyROI<KyC24>* destination, float sourceX,
                      float sourceY, float destinationX, float destinationY,
                      int interpolation) noexcept {
  return Translate(source, destination, {sourceX, sourceY}, {destinationX, destinationY},
                   interpolation);
}

KY_ERRORS ImgRegister(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float source1X,
                      float source1Y, float source2X, float source2Y, float destination1X,
                      float destination1Y, float destination2X, float destination2Y,
                      int interpolation, int scaling) noexcept {
  return RegisterPairs(source, destination, {{source1X, source1Y}, {source2X, source2Y}},
                       {{destination1X, destination1Y}, {destination2X, destination2Y}},
                       interpolation, scaling);
}
KY_ERRORS ImgRegister(const KyROI<KyC24>* source, KyROI<KyC24>* destination, float source1X,
                      float source1Y, float source2X, float source2Y, float destination1X,
                      float destination1Y, float destination2X, float destination2Y,
                      int interpolation, int scaling) noexcept {
  return RegisterPairs(source, destination, {{source1X, source1Y}, {source2X, source2Y}},
                       {{destination1X, destination1Y}, {destination2X, destination2Y}},
                       interpolation, scaling);
}

KY_ERRORS ImgRegister(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, float source1X,
                      float source1Y, float source2X, float source2Y, float source3X,
                      float source3Y, float destination1X, float destination1Y, float destination2X,
                      float destination2Y, float destination3X, float destination3Y,
                      int interpolation) noexcept {
  return RegisterTriples("ImgRegister (BW8, 3 pivots)", source, destination,
                         {{source1X, source1Y}, {source2X, source2Y}, {source3X, source3Y}},
                         {{destination1X, destination1Y},
                          {destination2X, destination2Y},
                          {destination3X, destination3Y}},
                         interpolation);
}
KY_ERRORS ImgRegister(const KyROI<KyC24>* source, KyROI<KyC24>* destination, float source1X,
                      float source1Y, float source2X, float source2Y, float source3X,
                      float source3Y, float destination1X, float destination1Y, float destination2X,
                      float destination2Y, float destination3X, float destination3Y,
                      int interpolation) noexcept {
  return RegisterTriples("ImgRegister (C24, 3 pivots)", source, destination,
                         {{source1X, source1Y}, {source2X, source2Y}, {source3X, source3Y}},
                         {{destination1X, destination1Y},
                          {destination2X, destination2Y},
                          {destination3X, destination3Y}},
                         interpolation);
}
