// The noise of a drawn camera.
#pragma once

#include <cstdint>

/// Numbers of about normal distribution around 0 with a standard deviation of kDeviation. The
/// engine is a linear congruential one, so that every machine draws the same.
class Noise {
 public:
  static constexpr float kDeviation = 2.4633f;

  explicit Noise(unsigned seed) : state_(seed) {}
  float Next() {
    int sum = 0;
    for (int i = 0; i < 4; ++i) {
      state_ = state_ * 1664525u + 1013904223u;
      sum += static_cast<int>(state_ >> 24);
    }
    return static_cast<float>(sum - 510) / 60;
  }

 private:
  std::uint32_t state_;
};
