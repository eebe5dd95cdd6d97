// What programs do in the frequency domain: look at a spectrum, take a pattern out of a picture,
// find how far a picture has moved; and a drawing to do it with. For builds with ky::frequency.
#pragma once

#include "ky/frequency.h"
#include "ky/image.h"

namespace frequencies {

/// A surface with a faint stain right of its middle, and over it, where `threads`, a weave that
/// repeats every 7.3 columns and 9.1 rows. Throws.
KyImage<KyBW8> Cloth(int width, int height, bool threads);

/// The spectrum as a picture, on a logarithmic scale, with frequency (0, 0) in the middle. Throws.
KyImage<KyBW8> Picture(const KyROI<KyComplex64>& spectrum);

/// The picture with its quadrants exchanged, which brings (0, 0) to (width / 2, height / 2).
KyImage<KyBW8> Centered(const KyROI<KyBW8>& picture);

/// Sets to 0 what stands out from its surroundings in the spectrum: the peaks of patterns that
/// repeat. The lowest frequencies, which are the picture itself, stay. Returns how many are set.
/// Throws.
int RemovePeaks(KyROI<KyComplex64>& spectrum);

struct Shift {
  int right, down;
};

/// How far the things in `picture` lie from where they lie in `reference`, by phase correlation:
/// the cross spectrum with all its moduli made equal belongs to a single bright point, which lies
/// at the shift. `correlation`, of the same size, gets 255 times the correlation. Throws.
Shift FindShift(const KyROI<KyBW8>& picture, const KyROI<KyBW8>& reference,
                KyROI<KyBW8>& correlation);

}  // namespace frequencies
