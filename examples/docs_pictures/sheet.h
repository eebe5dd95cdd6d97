// Pictures of the documentation: panels side by side on one sheet.
#pragma once

#include <initializer_list>
#include <string>

#include "ky/ky.h"
#include "support/program.h"

namespace docs {

inline constexpr int kWidth = 200, kHeight = 150, kGap = 4;

using Grey = KyImage<KyBW8>;
using Color = KyImage<KyC24>;

/// An image of one panel's size.
template <class T = KyBW8>
KyImage<T> Panel() {
  return NewImage<T>(kWidth, kHeight);
}

/// Three parts on a background that is brighter on one side; `faulty` makes all of them faulty.
Grey Parts(bool faulty = false);

/// A washer, large.
Grey Washer();

/// Columns of `levels` as a chart: dark columns on a light ground, the highest as high as the
/// panel.
Grey Chart(const KyBW32Vector& counts);

/// A grey picture in colour, to draw on.
Color InColor(const Grey& picture);

/// Draws a square of `size` pixels around (x, y); what does not lie inside is left out.
void Mark(Color& picture, int x, int y, KyC24 color, int size = 1);

/// Writes the panels row by row, `columns` in each, as FOLDER/NAME.png: with their numbers, and
/// twice as large unless they are wider than Panel(). The low bits of grey levels are dropped: they
/// hold noise, which takes most of a file's room.
void Write(const std::string& folder, const char* name, int columns,
           std::initializer_list<const Grey*> panels);
void Write(const std::string& folder, const char* name, int columns,
           std::initializer_list<const Color*> panels);

}  // namespace docs
