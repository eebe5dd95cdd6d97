// Pictures for the arguments of calls, in memory of exactly their size between guard pages.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <type_traits>

#include "tests/registry/arguments.h"

namespace ky::test {

// What the arguments of one call are made from.
struct Context {
  const Call& call;
  Draw& draw;
  Plan plan;
  std::size_t index = 0;  // of the argument being made
  std::map<const void*, std::shared_ptr<void>> sheets =
      {};                                          // by type of pixels, for those that share
  std::shared_ptr<class GuardedBytes> block = {};  // of the first image, and its pitch
  int pitch = 0;

  const Option* Find(Option::Kind kind) const {
    return call.Find(kind, call.parameters[index].name);
  }
  bool Hostile(unsigned oneIn) { return plan.hostile && draw.OneIn(oneIn); }
};

template <class T>
void Append(Bytes& bytes, const T* data, std::size_t count) {
  const auto* const first = reinterpret_cast<const unsigned char*>(data);
  if (count != 0) bytes.insert(bytes.end(), first, first + count * sizeof(T));
}
template <class T>
void Append(Bytes& bytes, const T& value) {
  Append(bytes, &value, 1);
}

// Memory between two pages that nobody may touch: it ends at the one, or begins at the other.
class GuardedBytes {
 public:
  GuardedBytes(std::size_t size, std::size_t alignment, bool atStart) : size_(size) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t middle = (size + page - 1) / page * page;
    mapped_ = middle + 2 * page;
    void* const memory =
        mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    first_ = static_cast<unsigned char*>(memory);
    if (middle != 0 && mprotect(first_ + page, middle, PROT_READ | PROT_WRITE) != 0) std::abort();
    data_ = first_ + page + (atStart ? 0 : (middle - size) / alignment * alignment);
  }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;
  ~GuardedBytes() { munmap(first_, mapped_); }
  unsigned char* data() const { return data_; }
  std::size_t size() const { return size_; }

 private:
  std::size_t size_, mapped_;
  unsigned char *first_, *data_;
};

// An image in memory of exactly its size. One with room for pixels of any type can share its memory
// with an image of another.
template <class T>
struct Sheet {
  std::shared_ptr<GuardedBytes> bytes;
  int pitch = 0;
  KyImage<T> image;

  Sheet(int width, int height, Context& context, bool anyType = false) {
    if (anyType) {
      constexpr int kAnyPixels = 12;
      pitch = (4 * width / kAnyPixels + 1) * kAnyPixels;
    } else {
      pitch = (width * KyPixelTraits<T>::kBits + 7) / 8 + 4 - kSize % 4;
      pitch = (pitch + kSize - 1) / kSize * kSize;
      if (alignof(T) == 4) pitch = (pitch + 3) / 4 * 4;
    }
    bytes =
        std::make_shared<GuardedBytes>(static_cast<std::size_t>(pitch * height),
                                       anyType ? 4 : alignof(Memory), (width + height) % 2 == 0);
    Fill(*bytes, context);
    Attach(anyType ? 8 * pitch / KyPixelTraits<T>::kBits : width, height);
  }
  Sheet(const std::shared_ptr<GuardedBytes>& others, int pitchOfOthers)
      : bytes(others), pitch(pitchOfOthers) {
    Attach(8 * pitch / KyPixelTraits<T>::kBits, static_cast<int>(bytes->size()) / pitch);
  }

 private:
  using Memory = typename KyPixelTraits<T>::Memory;
  static constexpr int kSize = static_cast<int>(sizeof(Memory));

  void Attach(int width, int height) {
    image.Attach(reinterpret_cast<Memory*>(bytes->data()), width, height, pitch);
  }
  // Any levels, or those near 0 or the maximum, or few different ones.
  void Fill(const GuardedBytes& block, Context& context) const {
    unsigned char* const memory = block.data();
    const std::size_t size = block.size();
    SeededDraw random(context.draw.Below(65536));
    const Option* const words = context.Find(Option::Kind::kWords);
    const unsigned kind = random.Below(8);
    const bool isNumbers =
        std::is_same_v<T, KyComplex64> && (kind < 4 || context.call.name.ends_with("DFT"));
    if (isNumbers) {
      for (std::size_t i = 0; i + sizeof(float) <= size; i += sizeof(float)) {
        const auto number = static_cast<float>(random.In(-2000, 2000)) / 8;
        std::memcpy(memory + i, &number, sizeof number);
      }
      return;
    }
    if (context.Find(Option::Kind::kBlobs) != nullptr) {
      for (std::size_t i = 0; i < size; ++i) {
        const std::size_t x = i % static_cast<std::size_t>(pitch) % 16,
                          y = i / static_cast<std::size_t>(pitch) % 12;
        memory[i] = x >= 4 && x < 12 && y >= 3 && y < 9 ? 200 : 0;
      }
      return;
    }
    for (std::size_t i = 0; i < size; ++i) {
      if (words != nullptr) {
        const int word = random.In(static_cast<int>(words->a), static_cast<int>(words->b));
        if (i % 2 == 0) memory[i] = static_cast<unsigned char>(word);
        if (i % 2 == 0 && i + 1 < size) memory[i + 1] = static_cast<unsigned char>(word >> 8);
        continue;
      }
      const unsigned any = random.Below(256);
      memory[i] = static_cast<unsigned char>(kind == 0   ? any % 4
                                             : kind == 1 ? 255 - any % 4
                                             : kind == 2 ? any / 128 * 200
                                                         : any);
    }
  }
};

}  // namespace ky::test
