// Counts levels two at a time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/cache_size.h"
#include "foundation/kernels/counts.h"
#include "foundation/scratch.h"

namespace ky {

// Processors store once a cycle, and a table of levels takes one store a pixel. A table of pairs of
// neighbours takes half as many. Its places are bytes, so that it fits the larger first caches;
// whenever a place has come round to 0, the pair's levels get the 256 that it has counted.
// Neighbours are alike in most pictures, so that few places are in use; of noise all are, and
// levels are faster where the first cache is small. Where all pixels of a step are as before, only
// the steps are counted: an increment would have to wait for the one before.
class PairCounter {
 public:
  // Pixels are counted in steps of so many.
  static constexpr std::ptrdiff_t kStep = 32;
  // Of fewer pixels, clearing the table and adding it up would take most of what pairs save.
  static constexpr std::int64_t kFewest = 1 << 16;

  // Probing asks every so often whether levels are faster. They never are where the first cache
  // holds most of the table.
  explicit PairCounter(bool probes = SizesOfCaches().firstOfData < kPlaces * 3 / 4) noexcept
      : room_(probes ? kProbe : PTRDIFF_MAX) {}
  bool Allocate() noexcept {
    if (!pairs_.Allocate(kPlaces)) return false;
    std::memset(pairs_.get(), 0, kPlaces);
    return true;
  }
  // Counts up to so many steps, and returns how many it has counted: fewer, or none, once levels
  // have turned out to be faster.
  std::ptrdiff_t Count(const KyBW8* pixels, std::ptrdiff_t steps) noexcept {
    std::ptrdiff_t counted = 0;
    while (counted < steps) {
      if (room_ == 0) {
        areLevelsFaster_ = TakePairs() > kPlaces / 4;
        room_ = kProbe;
      }
      if (areLevelsFaster_) break;
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
  static constexpr std::ptrdiff_t kPlaces = kLevels * kLevels;
  static constexpr int kWords = kStep / 8;
  // So many pixels ahead are prefetched, without a place in the second cache, where most of the
  // table is that the first one cannot hold.
  static constexpr std::ptrdiff_t kAhead = 2048;

  void CountSteps(const KyBW8* pixels, std::ptrdiff_t steps) noexcept {
    std::uint8_t* const pairs = pairs_.get();
    for (; steps > 0; --steps, pixels += kStep) {
      __builtin_prefetch(pixels + kAhead, 0, 0);
      std::uint64_t words[kWords];
      for (int k = 0; k < kWords; ++k) std::memcpy(&words[k], pixels + 8 * k, 8);
      if (words[0] == repeated_ && AreEqual(words)) {
        ++repeats_;
        continue;
      }
      if (repeats_ > 0) TakeRepeats();
      repeated_ = words[kWords - 1];
      for (std::uint64_t word : words)
        for (int k = 0; k < 4; ++k, word >>= 16) {
          const auto place = static_cast<std::uint16_t>(word);
          if (++pairs[place] == 0) [[unlikely]]
            AddPair(place, 256);
        }
    }
  }
  static bool AreEqual(const std::uint64_t (&words)[kWords]) noexcept {
    std::uint64_t differences = 0;
    for (int k = 1; k < kWords; ++k) differences |= words[k] ^ words[0];
    return differences == 0;
  }
  void AddPair(std::uint16_t place, std::uint32_t count) noexcept {
    counts_[place & 0xFF] += count;
    counts_[place >> 8] += count;
  }
  void TakeRepeats() noexcept {
    for (int k = 0; k < 8; ++k) counts_[repeated_ >> 8 * k & 0xFF] += kWords * repeats_;
    repeats_ = 0;
  }
  // Empties the table, and returns how many of its places were in use.
  int TakePairs() noexcept {
    // 256 places of a byte each add up to less than 65536.
    std::uint16_t seconds[kLevels] = {};
    int used = 0;
    for (int first = 0; first < kLevels; ++first) {
      std::uint8_t* const pairs = pairs_.get() + first * kLevels;
      std::uint16_t sum = 0, usedHere = 0;
      for (int second = 0; second < kLevels; ++second) {
        const std::uint8_t count = pairs[second];
        seconds[second] = static_cast<std::uint16_t>(seconds[second] + count);
        sum = static_cast<std::uint16_t>(sum + count);
        usedHere = static_cast<std::uint16_t>(usedHere + (count != 0));
        pairs[second] = 0;
      }
      counts_[first] += sum;
      used += usedHere;
    }
    for (int level = 0; level < kLevels; ++level) counts_[level] += seconds[level];
    return used;
  }

  // How many steps there are before the places in use tell whether to go on.
  static constexpr std::ptrdiff_t kProbe = 4096;
  std::ptrdiff_t room_;
  bool areLevelsFaster_ = false;
  Scratch<std::uint8_t> pairs_;
  Counts counts_ = {};
  // The last eight pixels that were counted in pairs, and how many steps of nothing else followed.
  std::uint64_t repeated_ = 0;
  std::uint32_t repeats_ = 0;
};

}  // namespace ky
