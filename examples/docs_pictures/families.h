// The families that have pictures: each writes its own to a folder. They throw when a call fails.
#pragma once

#include <string>

namespace docs {

void Operators(const std::string& folder);
void Lookup(const std::string& folder);
void Thresholds(const std::string& folder);
void ThresholdModes(const std::string& folder);
void Frames(const std::string& folder);
void Kernels(const std::string& folder);
void Filters(const std::string& folder);
void Windows(const std::string& folder);
void Morphology(const std::string& folder);
void Shapes(const std::string& folder);
void Thinning(const std::string& folder);
void Medians(const std::string& folder);
void DistanceMaps(const std::string& folder);
void Geometry(const std::string& folder);
void Sizes(const std::string& folder);
void Mirrors(const std::string& folder);
void Histograms(const std::string& folder);
void Moments(const std::string& folder);
void Noise(const std::string& folder);
void Focus(const std::string& folder);
void Temporal(const std::string& folder);
void Profiles(const std::string& folder);
void Contours(const std::string& folder);
void Objects(const std::string& folder);
void Measuring(const std::string& folder);
void Accuracy(const std::string& folder);
void Gradients(const std::string& folder);
void TypedVectors(const std::string& folder);
void Transforms(const std::string& folder);
void Shading(const std::string& folder);
void Conversions(const std::string& folder);
// Of builds with ky::drawing.
void Drawing(const std::string& folder);
// Of builds with ky::frequency.
void Frequencies(const std::string& folder);

}  // namespace docs
