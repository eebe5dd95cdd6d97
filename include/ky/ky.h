// The whole library.
#pragma once

#include "ky/angle.h"
#include "ky/color.h"
#include "ky/geometry.h"
#include "ky/histogram_vector.h"
#include "ky/image.h"
#include "ky/image_vector.h"
#include "ky/mirrors.h"
#include "ky/operators.h"
#include "ky/paths.h"
#include "ky/pixels.h"
#include "ky/processor.h"
#include "ky/roi.h"
#include "ky/status.h"
#include "ky/typed_vector.h"
#include "ky/vector.h"
#include "ky/version.h"
