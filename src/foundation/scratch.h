// Memory for the duration of a call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

namespace ky {

// An array of plain elements, at a 64-byte boundary, not initialised. Released with the object.
template <class T>
class Scratch {
  static_assert(std::is_trivially_destructible_v<T>);

 public:
  Scratch() = default;
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch() { Release(); }

  // False when the memory cannot be had; 0 elements always can.
  bool Allocate(std::ptrdiff_t count) noexcept {
    Release();
    if (count < 0 || count > kLimit) return false;
    const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(T) + 1;
    data_ = static_cast<T*>(::operator new(bytes, kAlignment, std::nothrow));
#ifdef __clang_analyzer__  // it cannot see what fills the array
    if (data_ != nullptr) std::memset(static_cast<void*>(data_), 0, bytes);
#endif
    return data_ != nullptr;
  }
  T* get() const noexcept { return data_; }
  T& operator[](std::ptrdiff_t i) const noexcept { return data_[i]; }

 private:
  static constexpr std::align_val_t kAlignment{64};
  static constexpr std::ptrdiff_t kLimit = PTRDIFF_MAX / 2 / static_cast<std::ptrdiff_t>(sizeof(T));

  void Release() noexcept {
    ::operator delete(data_, kAlignment);
    data_ = nullptr;
  }

  T* data_ = nullptr;
};

}  // namespace ky
