// The row kernels of pixel statistics.
#pragma once

#include "foundation/reduce.h"
#include "ky/pixels.h"

namespace ky {

template <class Result>
struct OfComponents {
  Result of[3];

  OfComponents& operator+=(const OfComponents& more) noexcept {
    for (int i = 0; i < 3; ++i) of[i] += more.of[i];
    return *this;
  }
};

// The smallest and the largest of rows of at least one element, and the sum of the rows' means in
// their order, where the mean of a row is of its sum modulo 2^32.
struct ExtremesAndMeans {
  KyBW8 smallest, largest;
  float means;
};
using ExtremesKernel = ExtremesAndMeans (*)(const Rows<const KyBW8>& rows);

// The number of elements from `low` to `high`, where low <= high.
using BetweenKernel = std::uint64_t (*)(const KyBW8* row, std::size_t n, KyBW8 low, KyBW8 high);

// The number of elements in which two rows differ.
template <class T>
using DifferenceKernel = std::uint64_t (*)(const T* a, const T* b, std::size_t n);

// What depends on the type of the pixels. Extremes are of at least one element.
template <class T>
struct LevelKernels {
  ReduceKernel<T, T> smallest, largest;
};

struct StatisticsKernels {
  ReduceAllKernel<std::uint64_t, KyBW8> sum;
  ReduceAllKernel<Moments, KyBW8> moments;
  ReduceAllKernel<OfComponents<std::uint64_t>, KyC24> componentSum;
  ReduceAllKernel<OfComponents<Moments>, KyC24> componentMoments;
  ExtremesKernel extremes;
  LevelKernels<KyBW8> grey;
  LevelKernels<KyBW16> deep;
  BetweenKernel between;
  DifferenceKernel<KyBW8> differentGrey;
  DifferenceKernel<KyBW16> differentDeep;
  DifferenceKernel<KyC24> differentColor;
};

// The kernels of the instruction set that this call may use.
const StatisticsKernels& ChooseStatisticsKernels() noexcept;

}  // namespace ky
