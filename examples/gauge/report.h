// What a measurement tells: a picture, a CSV file, a table on the terminal.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "gauge/measuring.h"
#include "ky/ky.h"

namespace gauge {

/// True values by the name of the task and the measure, as plate::Truth gives them; may be empty.
using Truth = std::map<std::string, double>;

/// The picture, enlarged, with the calipers, the points and the fit of each feature, and the number
/// of its line in the plan. Points that a fit leaves out are red.
KyImage<KyC24> Annotate(const KyROI<KyBW8>& picture, const std::vector<Task>& plan,
                        const Measurement& measurement);

/// One line a measure, after one of names.
std::string Csv(const std::vector<Task>& plan, const Measurement& measurement, const Truth& truth);

/// The same for people.
std::string Table(const std::vector<Task>& plan, const Measurement& measurement,
                  const Truth& truth);

/// The largest distance of a measure from its true value.
double LargestError(const std::vector<Task>& plan, const Measurement& measurement,
                    const Truth& truth);

}  // namespace gauge
