// The argument of everything that draws: a context of Cairo.
#pragma once

#include <cairo.h>

#include "tests/registry/holders.h"

namespace ky::test {

// A context on a small picture, in any transformation and pen; a hostile one may be in an error.
template <>
class Holder<cairo_t*> : public ObjectHolder<cairo_t> {
 public:
  explicit Holder(Context& context)
      : Holder(context, cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 120, 90)) {}
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() override {
    cairo_destroy(context_);
    cairo_surface_destroy(surface_);
  }
  Bytes State() const override {
    cairo_surface_flush(surface_);
    const unsigned char* const first = cairo_image_surface_get_data(surface_);
    return {first, first + cairo_image_surface_get_stride(surface_) *
                               cairo_image_surface_get_height(surface_)};
  }

 private:
  Holder(Context& context, cairo_surface_t* surface)
      : Holder(context, surface, cairo_create(surface)) {}
  Holder(Context& context, cairo_surface_t* surface, cairo_t* cairo)
      : ObjectHolder<cairo_t>(context, cairo), surface_(surface), context_(cairo) {
    cairo_set_source_rgba(cairo, 0.2, 0.4, 0.6, 0.5);
    const int x = context.draw.In(-20, 60), y = context.draw.In(-20, 40);
    cairo_translate(cairo, x, y);
    cairo_rotate(cairo, context.draw.In(0, 6));
    const int quarters = context.draw.In(1, 12), quartersDown = context.draw.In(1, 12);
    cairo_scale(cairo, quarters / 4.0, quartersDown / 4.0);
    cairo_set_line_width(cairo, context.draw.In(0, 5));
    if (context.draw.OneIn(3)) {
      const double dashes[] = {3, 2};
      cairo_set_dash(cairo, dashes, 2, 1);
    }
    if (context.Hostile(32)) cairo_restore(cairo);  // nothing has been saved
  }

  cairo_surface_t* surface_;
  cairo_t* context_;
};

}  // namespace ky::test
