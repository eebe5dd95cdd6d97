// The frame of every drawing: checks of the context, which keeps its state, and Cairo's failures.
#pragma once

#include <cairo.h>

#include "foundation/frame.h"

namespace ky {

inline KY_ERRORS CheckContext(cairo_t* context) noexcept {
  const bool usable = context != nullptr && cairo_status(context) == CAIRO_STATUS_SUCCESS;
  return usable ? KY_OK : Explain(KY_ERROR_NO_IMAGE, "context is null or in an error");
}

// Calls `draw`, which draws on the context, starting without a path, and restores the context's
// state and path. KY_ERROR_NOT_ENOUGH_MEMORY (1303) when that leaves the context in an error or,
// as one that has been finished, its surface.
template <class Draw>
KY_ERRORS DrawKeepingState(cairo_t* context, const Draw& draw) noexcept {
  cairo_path_t* const path = cairo_copy_path(context);
  bool drawn = path->status == CAIRO_STATUS_SUCCESS;
  if (drawn) {
    cairo_save(context);
    cairo_new_path(context);
    draw();
    cairo_restore(context);
    cairo_new_path(context);
    cairo_append_path(context, path);
    drawn = cairo_status(context) == CAIRO_STATUS_SUCCESS &&
            cairo_surface_status(cairo_get_group_target(context)) == CAIRO_STATUS_SUCCESS;
  }
  cairo_path_destroy(path);
  return drawn ? KY_OK : KY_ERROR_NOT_ENOUGH_MEMORY;
}

}  // namespace ky
