// The check that all functions of objects share.
#pragma once

#include "foundation/frame.h"
#include "ky/contour.h"

namespace ky {

inline KY_ERRORS CheckConnexity(CONNEXITY connexity) noexcept {
  return connexity == KY_CONNEXITY_4 || connexity == KY_CONNEXITY_8
             ? KY_OK
             : Explain(KY_ERROR_UNSUPPORTED_OPERATION, "connexity");
}

}  // namespace ky
