// Counts levels two at a time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/kernels/counts.h"
#include "foundation/scratch.h"

namespace ky {

// Processors store once a cycle, and a table of levels takes one store a pixel. One of pairs of
// neighbours takes half of them. It is large, but neighbours are alike in most pictures, so that
// few of its places are in use; of noise all are, and levels are faster. Where all pixels of a step
// are as before, only the steps are counted: an increment would have to wait for the one before.
class PairCounter {
 public:
  // Pixels are counted in steps of so many.
  static constexpr std::ptrdiff_t kStep = 32;
  // Of fewer pixels, clearing the table and adding it up would take most of what pairs save.
  static constexpr std::int64_t kFewest = 1 << 17;

  bool Allocate() noexcept {
    if (!pairs_.Allocate(kLevels * kLevels)) return false;
    std::memset(pairs_.get(), 0, kLevels * kLevels * sizeof *pairs_.get());
    return true;
  }
  // Counts up to so many steps. Fewer, or none, once the picture has turned out to be noise. How
  // many they are.
  std::ptrdiff_t Count(const KyBW8* pixels, std::ptrdiff_t steps) noexcept {
    std::ptrdiff_t counted = 0;
    while (counted < steps) {
      if (room_ == 0) TakePairs();
      if (isNoise_) break;
      const std::ptrdiff_t n = std::min(steps - counted, room_);
      CountSteps(pixels + counted * kStep, n);
      counted += n;
      room_ -= n;
    }
    return counted;
  }
  void AddTo(Counts& counts) noexcept {
    TakePairs();
    TakeRepeats();
    for (int level = 0; level < kLevels; ++level) counts[level] += counts_[level];
  }

 private:
  static constexpr int kWords = kStep / 8, kPairs = kStep / 2;

  void CountSteps(const KyBW8* pixels, std::ptrdiff_t steps) noexcept {
    std::uint16_t* const pairs = pairs_.get();
    for (; steps > 0; --steps, pixels += kStep) {
      std::uint64_t words[kWords];
      for (int k = 0; k < kWords; ++k) std::memcpy(&words[k], pixels + 8 * k, 8);
      if (words[0] == repeated_ && AreEqual(words)) {
        ++repeats_;
        continue;
      }
      if (repeats_ > 0) TakeRepeats();
      repeated_ = words[kWords - 1];
      for (std::uint64_t word : words)
        for (int k = 0; k < 4; ++k, word >>= 16) ++pairs[static_cast<std::uint16_t>(word)];
    }
  }
  static bool AreEqual(const std::uint64_t (&words)[kWords]) noexcept {
    std::uint64_t differences = 0;
    for (int k = 1; k < kWords; ++k) differences |= words[k] ^ words[0];
    return differences == 0;
  }
  void TakeRepeats() noexcept {
    for (int k = 0; k < 8; ++k) counts_[repeated_ >> 8 * k & 0xFF] += kWords * repeats_;
    repeats_ = 0;
  }
  // Of no more pairs than one place can count, so that any sum of places fits 16 bits, too.
  void TakePairs() noexcept {
    std::uint16_t seconds[kLevels] = {};
    int used = 0;
    for (int first = 0; first < kLevels; ++first) {
      std::uint16_t* const pairs = pairs_.get() + first * kLevels;
      std::uint16_t sum = 0, usedHere = 0;
      for (int second = 0; second < kLevels; ++second) {
        const std::uint16_t count = pairs[second];
        seconds[second] = static_cast<std::uint16_t>(seconds[second] + count);
        sum = static_cast<std::uint16_t>(sum + count);
        usedHere = static_cast<std::uint16_t>(usedHere + (count != 0));
        pairs[second] = 0;
      }
      counts_[first] += sum;
      used += usedHere;
    }
    for (int level = 0; level < kLevels; ++level) counts_[level] += seconds[level];
    isNoise_ = used > kLevels * kLevels / 4;
    room_ = kRoom;
  }

  static constexpr std::ptrdiff_t kRoom = 0xFFFF / kPairs;  // of steps
  std::ptrdiff_t room_ = kRoom;
  bool isNoise_ = false;
  Scratch<std::uint16_t> pairs_;
  Counts counts_ = {};
  // The last eight pixels that were counted in pairs, and how many steps of nothing else followed.
  std::uint64_t repeated_ = 0;
  std::uint32_t repeats_ = 0;
};

}  // namespace ky
