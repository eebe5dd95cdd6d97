// The choice of instruction set, once a public call.
//
// A row file is compiled once per instruction set. It ends with HWY_EXPORT of a function that
// returns its table of row kernels; KY_DISPATCH, inside namespace ky and after HWY_EXPORT, calls
// the right one. The plain path, KY_PLAIN, is the same text compiled for the scalar target.
#pragma once

#include <hwy/highway.h>

#include "ky/processor.h"

#define KY_PLAIN(Function) (*HWY_CHOOSE_FALLBACK(Function))
#define KY_DISPATCH(Function) \
  (KyGetMMX() != 0 ? HWY_DYNAMIC_DISPATCH(Function) : KY_PLAIN(Function))
