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
#if KY_SANITIZED  // which see where an aligned block ends
    block_ = ::operator new (bytes, std::align_val_t{kAlignment}, std::nothrow);
#else  // aligned by hand, as the C library takes several times as long for aligned blocks
    block_ = ::operator new(bytes + kAlignment, std::nothrow);
#endif
    if (block_ == nullptr) return false;
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(block_) % kAlignment;
    data_ = reinterpret_cast<T*>(static_cast<std::uint8_t*>(block_) + before);
#ifdef __clang_analyzer__  // it cannot see what fills the array
    std::memset(static_cast<void*>(data_), 0, bytes);
#endif
    return true;
  }
  T* get() const noexcept { return data_; }
  T& operator[](std::ptrdiff_t i) const noexcept { return data_[i]; }

 private:
  static constexpr std::size_t kAlignment = 64;
  static constexpr std::ptrdiff_t kLimit = PTRDIFF_MAX / 2 / static_cast<std::ptrdiff_t>(sizeof(T));

  void Release() noexcept {
#if KY_SANITIZED
    ::operator delete (block_, std::align_val_t{kAlignment});
#else
    ::operator delete(block_);
#endif
    block_ = nullptr;
    data_ = nullptr;
  }

  void* block_ = nullptr;
  T* data_ = nullptr;
};

}  // namespace ky
