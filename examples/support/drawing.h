// Lines, boxes, contours and numbers on colour pictures. What does not lie inside is left out.
#pragma once

#include "ky/pixels.h"
#include "ky/records.h"
#include "ky/roi.h"

namespace draw {

struct Point {
  int x, y;
};

struct Box {
  int x = 0, y = 0, width = 0, height = 0;
};

void Line(KyROI<KyC24>& picture, Point from, Point to, KyC24 color);
void Frame(KyROI<KyC24>& picture, const Box& box, KyC24 color);
/// Fills the part of the box that lies inside the picture.
void Fill(KyROI<KyC24>& picture, const Box& box, KyC24 color);
void Contour(KyROI<KyC24>& picture, const KyPathVector& contour, KyC24 color);

/// The size of a number in pixels.
int NumberWidth(unsigned int number);
inline constexpr int kNumberHeight = 9;

/// Draws a number with its upper left pixel at `at`.
void Number(KyROI<KyC24>& picture, unsigned int number, Point at, KyC24 color);

/// Draws a number on a plate with its left edge and its middle at `at`, moved into the picture.
void Label(KyROI<KyC24>& picture, unsigned int number, Point at, KyC24 plate, KyC24 ink);

}  // namespace draw
