/// @file
/// @ingroup levels
/// Shading correction.
#pragma once

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/roi.h"
#include "ky/status.h"

/// These functions even out uneven light by pictures that the camera has taken of an evenly bright
/// (light reference) and of a dark scene (dark reference). All ROIs have the same size. Any source
/// may be the destination; one that overlaps it otherwise is copied first. Errors, checked in this
/// order before the destination is written: `KY_ERROR_NO_IMAGE` (1400) for an ROI without pixels,
/// `KY_ERROR_SIZE_MISMATCH` (1403) for different sizes, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).
/// Traces: "ImgUniformize (BW8)", "ImgUniformize (C24)".

/// Makes the light reference lightLevel everywhere: a pixel s over a reference l becomes
/// min(255, floor(s lightLevel / max(l, 1) + 1/2)); in colours, each component does.
KY_API KY_ERRORS ImgUniformize(const KyROI<KyBW8>* source, const KyROI<KyBW8>* light,
                               KyBW8 lightLevel, KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgUniformize(const KyROI<KyC24>* source, const KyROI<KyC24>* light,
                               KyC24 lightLevel, KyROI<KyC24>* destination) noexcept;

/// Makes the light reference L = lightLevel and the dark reference D = darkLevel everywhere: a
/// pixel s over references l and k becomes D where l <= k, else floor(D + (s - k) (L - D) / (l - k)
/// + 1/2), limited to 0..255; in colours, each component does.
KY_API KY_ERRORS ImgUniformize(const KyROI<KyBW8>* source, const KyROI<KyBW8>* light,
                               KyBW8 lightLevel, const KyROI<KyBW8>* dark, KyBW8 darkLevel,
                               KyROI<KyBW8>* destination) noexcept;
KY_API KY_ERRORS ImgUniformize(const KyROI<KyC24>* source, const KyROI<KyC24>* light,
                               KyC24 lightLevel, const KyROI<KyC24>* dark, KyC24 darkLevel,
                               KyROI<KyC24>* destination) noexcept;
