// An array of plain elements that grows while a call goes on.
#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>

namespace ky {

template <class T>
class Growing {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  Growing() = default;
  Growing(const Growing&) = delete;
  Growing& operator=(const Growing&) = delete;
  ~Growing() { ::operator delete(data_); }

  // Makes room for `more` elements after those in use; false when there is no memory. Addresses of
  // elements are valid until then.
  bool Reserve(std::size_t more) noexcept {
    if (more <= room_ - size_) return true;
    const std::size_t room = size_ + more + room_ / 2;
    auto* const data = static_cast<T*>(::operator new(room * sizeof(T), std::nothrow));
    if (data == nullptr) return false;
    if (size_ != 0) std::memcpy(data, data_, size_ * sizeof(T));
    ::operator delete(data_);
    data_ = data;
    room_ = room;
    return true;
  }
  // Takes another element into use, for which there is room.
  void Append(const T& element) noexcept { data_[size_++] = element; }
  // Takes the first `count` elements into use, for which there is room.
  void Resize(std::size_t count) noexcept { size_ = count; }

  std::size_t size() const noexcept { return size_; }
  T& operator[](std::size_t i) noexcept { return data_[i]; }
  T* begin() noexcept { return data_; }
  T* end() noexcept { return data_ + size_; }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0, room_ = 0;
};

}  // namespace ky
