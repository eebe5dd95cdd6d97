// The options of the lines of the registry.
#pragma once

#include <utility>

#include "tests/registry/calls.h"

namespace ky::test::options {

using Kind = Option::Kind;
using Name = std::string_view;

inline Option Range(Name name, double least, double most) {
  return {Kind::kRange, name, least, most};
}
inline Option Measured(Name name, double least, double most) {
  return {Kind::kMeasured, name, least, most};
}
inline Option OneOf(Name name, std::vector<int> numbers) {
  return {Kind::kOneOf, name, 0, 0, 0, std::move(numbers)};
}
inline Option Interpolations(Name name) { return OneOf(name, {0, 4, 8}); }
inline Option Elements(Name name, int count) { return {Kind::kElements, name, double(count)}; }
inline Option Groups(Name name, int type, int count, int use = 0) {
  return {Kind::kGroups, name, double(type), double(count), double(use)};
}
inline Option Size(Name name, int width, int height) {
  return {Kind::kSize, name, double(width), double(height)};
}
inline Option HalfRows(Name name) { return {Kind::kHalfRows, name}; }
inline Option Words(Name name, int least, int most) {
  return {Kind::kWords, name, double(least), double(most)};
}
inline Option Blobs(Name name) { return {Kind::kBlobs, name}; }
inline Option AtLeast(int width, int height) {
  return {Kind::kAtLeast, "", double(width), double(height)};
}
inline Option EvenHeight() { return {Kind::kEvenHeight, ""}; }
inline Option KeepsSources(Name name) { return {Kind::kKeepsSources, name}; }
// A null destination stands for the source.
inline Option NullIs(Name name, KY_ERRORS code) { return {Kind::kNull, name, double(code)}; }
inline Option NullMeansInPlace(Name name = "destination") { return NullIs(name, KY_OK); }
inline Option UnequalIs(Name name, KY_ERRORS code) { return {Kind::kUnequal, name, double(code)}; }
inline Option AnySize(Name name) { return UnequalIs(name, KY_OK); }
inline Option NoImageIs(Name name, KY_ERRORS code) { return {Kind::kNoImage, name, double(code)}; }
inline Option OffParentIs(Name name, KY_ERRORS code) {
  return {Kind::kOffParent, name, double(code)};
}
inline Option NoMemoryIs(KY_ERRORS code) { return {Kind::kNoMemory, "", double(code)}; }
inline Option NotAccelerated() { return {Kind::kPlain, ""}; }
inline Option ChecksInTurn() { return {Kind::kInTurn, ""}; }
inline Option NeverSucceeds() { return {Kind::kNever, ""}; }
// After this code, or after any failure.
inline Option Partial(Name name, KY_ERRORS code = KY_OK) {
  return {Kind::kPartial, name, double(code)};
}
inline Option Spills(Name name) { return {Kind::kSpills, name}; }

}  // namespace ky::test::options
