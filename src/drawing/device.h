// The pixels of the surface that a context draws on.
#pragma once

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace ky {

// From the user space of a context to the pixels of its surface, and from the space that
// cairo_set_matrix takes, which differs from pixels by the surface's own scale and offset.
struct Device {
  cairo_matrix_t fromUser, fromBase;

  // False for surfaces that consist of no pixels, such as PDF, or do not tell.
  bool Open(cairo_t* context) noexcept {
    cairo_surface_t* const surface = cairo_get_group_target(context);
    const cairo_surface_type_t type = cairo_surface_get_type(surface);
    if (type != CAIRO_SURFACE_TYPE_IMAGE && type != CAIRO_SURFACE_TYPE_XLIB &&
        type != CAIRO_SURFACE_TYPE_XCB)
      return false;
    fromBase = {};
    cairo_surface_get_device_scale(surface, &fromBase.xx, &fromBase.yy);
    cairo_surface_get_device_offset(surface, &fromBase.x0, &fromBase.y0);
    cairo_get_matrix(context, &fromUser);
    cairo_matrix_multiply(&fromUser, &fromUser, &fromBase);
    return true;
  }

  // Makes the pixels the context's user space.
  void UsePixels(cairo_t* context) const noexcept {
    cairo_matrix_t toBase = fromBase;
    cairo_matrix_invert(&toBase);
    cairo_set_matrix(context, &toBase);
  }
};

// One axis of a picture on a device: pixel i of the picture begins at origin + i scale. The
// device's pixels from `first` to before `last` have their centres in it.
struct Axis {
  double origin, scale;
  std::ptrdiff_t size;
  std::ptrdiff_t first = 0, last = 0;

  // The place in the picture of the centre of a device's pixel.
  double At(std::ptrdiff_t pixel) const noexcept {
    return (static_cast<double>(pixel) + 0.5 - origin) / scale;
  }

  // Finds first and last between the pixels low and high.
  void ConfineTo(double low, double high) noexcept {
    const double end = origin + scale * static_cast<double>(size);
    const auto confined = [&](double pixel) {
      return static_cast<std::ptrdiff_t>(std::clamp(pixel, std::floor(low), std::ceil(high)));
    };
    const auto isInside = [&](std::ptrdiff_t pixel) {
      return At(pixel) >= 0 && At(pixel) < static_cast<double>(size);
    };
    first = confined(std::floor(std::min(origin, end)) - 1);
    last = confined(std::ceil(std::max(origin, end)) + 1);
    while (first < last && !isInside(first)) ++first;
    while (first < last && !isInside(last - 1)) --last;
  }
};

}  // namespace ky
