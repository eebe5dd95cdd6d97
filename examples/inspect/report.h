// What an inspection tells: pictures, a CSV file, a table on the terminal.
#pragma once

#include <string>
#include <vector>

#include "inspect/measuring.h"
#include "ky/ky.h"

namespace inspect {

/// The picture, with the contour, the box, the axes and the number of each object of the mask. The
/// axes are as long as those of an ellipse that has the object's moments.
KyImage<KyC24> Annotate(const KyROI<KyBW8>& grey, const KyROI<KyBW8>& mask,
                        const std::vector<Measured>& objects);

/// The histogram, the square roots of its counts as bars; those from `level` on are objects.
KyImage<KyC24> DrawHistogram(const KyBW8HistogramVector& histogram, unsigned int level);

/// One line an object, after one of names.
std::string Csv(const std::vector<Measured>& objects);

/// The same for people.
std::string Table(const std::vector<Measured>& objects);

}  // namespace inspect
